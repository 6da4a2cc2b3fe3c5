#!/usr/bin/env python3
"""Runs the tests that docs/RELIABILITY.md reports on, records their figures, and writes the page from the records.

usage: tools/reliability.py run NAME...   runs the command of each line and records its figures
       tools/reliability.py list          lists all lines: the date of the record, and whether the code has changed since
       tools/reliability.py write         writes docs/RELIABILITY.md
       tools/reliability.py check         fails if docs/RELIABILITY.md is not what `write` would write

docs/reliability/commands.json names the lines and their commands. A GoogleTest program reports a figure by
RecordProperty(), a script by printing "figure NAME VALUE". Printed figures replace those of the programs, whose reports
are only complete if no program runs twice at the same time. A run that fails leaves the last record as it was. The
records are docs/reliability/NAME.json. A line without a record has never run in its present form, and the page says so.

In docs/reliability/RELIABILITY.md.in, %LINE.FIGURE% stands for a figure. Where several tests report figures of this
name, it is their sum; %LINE.TEST.FIGURE% is the figure of one test. %LINE.command% is the command of the line, and
"%table NAME%" is a table that this script makes.
"""
import datetime
import hashlib
import json
import os
import pathlib
import platform
import re
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
RECORDS = ROOT / "docs/reliability"
PAGE = ROOT / "docs/RELIABILITY.md"
PLACEHOLDER = re.compile(r"%(\w+)\.([^%\n]+)%")
TABLE = re.compile(r"^%table (\w+)%$", re.MULTILINE)
COMMENT = re.compile(r"//.*")


def commands():
    return json.loads((RECORDS / "commands.json").read_text())


def record_of(line):
    """Returns the record of the last run, and None if the line has never run."""
    path = RECORDS / f"{line}.json"
    return json.loads(path.read_text()) if path.exists() else None


# ---- Runs

def digest_of_code():
    """Returns a digest of the library's code, which comments and empty lines do not change."""
    digest = hashlib.sha256()
    for path in sorted([*(ROOT / "src").rglob("*.*"), *(ROOT / "include").glob("*.h")]):
        lines = (COMMENT.sub("", line).strip() for line in path.read_text().splitlines())
        digest.update("\n".join([path.name, *filter(None, lines)]).encode())
    return digest.hexdigest()[:16]


def system():
    """Returns the name of the operating system and the machine."""
    return f"{platform.freedesktop_os_release()['PRETTY_NAME']}, {platform.machine()}, {os.cpu_count()} processors"


def figures_of_tests(directory):
    """Returns the figures in GoogleTest's reports, with the number of programs, test cases and skipped ones."""
    figures = {"programs": 0, "cases": 0, "skipped": 0}
    for path in sorted(directory.glob("*.json")):
        report = json.loads(path.read_text())
        figures["programs"] += 1
        for suite in report["testsuites"]:
            for test in suite["testsuite"]:
                if test["status"] != "RUN":
                    continue
                known = {"name", "file", "line", "status", "result", "timestamp", "time", "classname", "failures",
                         "skipped", "type_param", "value_param"}
                figures["cases"] += 1
                figures["skipped"] += test["result"] == "SKIPPED"
                figures.update({f"{test['name']}.{name}": value for name, value in test.items() if name not in known})
    return figures if figures["programs"] else {}


def run(line):
    command = commands()[line]
    print(f"== {line}: {command}", flush=True)
    start = time.time()
    code = digest_of_code()
    with tempfile.TemporaryDirectory() as directory:
        environment = {**os.environ, "GTEST_OUTPUT": f"json:{directory}/"}
        process = subprocess.Popen(command, shell=True, cwd=ROOT, env=environment, stdout=subprocess.PIPE, text=True,
                                   errors="replace")
        printed = {}
        for text in process.stdout:
            print(text, end="", flush=True)
            words = text.rstrip("\n").split(" ", 2)
            if words[0] == "figure" and len(words) == 3:
                printed[words[1]] = words[2]
        if process.wait() != 0:
            print(f"== {line}: failed, so nothing is recorded", flush=True)
            return False
        figures = printed or figures_of_tests(pathlib.Path(directory))
    if not figures:
        print(f"== {line}: reported no figure, so nothing is recorded", flush=True)
        return False
    record = {"command": command, "date": datetime.date.today().isoformat(), "seconds": round(time.time() - start),
              "system": system(), "code": code, "figures": figures}
    (RECORDS / f"{line}.json").write_text(json.dumps(record, indent=2, ensure_ascii=False) + "\n")
    return True


def list_lines():
    code = digest_of_code()
    for line, command in commands().items():
        record = record_of(line)
        if record is None:
            print(f"{line:24} never ran")
            continue
        state = "of this code" if record["code"] == code else "of other code"
        changed = "" if record["command"] == command else ", by another command"
        print(f"{line:24} {record['date']} {state}{changed}")


# ---- The page

def readable(value):
    """Returns the figure with a comma after each third digit."""
    return f"{int(value):,}" if re.fullmatch(r"\d+", str(value)) else str(value)


def value_of(line, name):
    if name == "command":
        return commands()[line].replace("|", "\\|")  # It stands in a table.
    record = record_of(line)
    if record is None:
        return "(not run)"
    figures = record["figures"]
    values = [value for key, value in figures.items() if key == name or key.endswith("." + name)]
    if not values:
        sys.exit(f"the record of {line} has no figure {name}")
    return str(sum(int(value) for value in values)) if len(values) > 1 else values[0]


def table(heading, alignment, rows):
    lines = [heading, alignment, *rows]
    return "\n".join("| " + " | ".join(cells) + " |" for cells in lines)


def duration(seconds):
    return f"{seconds} s" if seconds < 100 else f"{round(seconds / 60)} min"


def table_of_runs():
    rows = []
    for line, command in commands().items():
        record = record_of(line)
        shown = f"`{command}`".replace("|", "\\|")
        if record is None:
            rows.append([shown, "not run", ""])
            continue
        if record["command"] != command:
            sys.exit(f"the command of {line} has changed since its record")
        rows.append([shown, record["date"], duration(record["seconds"])])
    return table(["Command", "Date", "Time"], ["---", "---", "---:"], rows)


def table_of_short_texts():
    record = record_of("every_text")
    if record is None:
        return "(not run)"
    figures = record["figures"]
    rows = []
    for key, texts in figures.items():
        if not key.endswith(".texts"):
            continue
        form = key[:-len(".texts")]
        alphabet = figures[form + ".alphabet"].replace("|", "\\|")
        rows.append([form.split(".")[1], f"`` {alphabet} ``", figures[form + ".length"], readable(texts)])
    return table(["Form or function", "Alphabet", "Length up to", "Texts"], ["---", "---", "---:", "---:"], rows)


def table_of_fuzzers():
    rows = []
    for line, sanitizers in [("fuzzers_fast", "at the end"), ("fuzzer_of_output", "at the end"), ("fuzzers", "yes")]:
        for fuzzer in re.findall(r"\w+_fuzz\b", commands()[line]):
            rows.append([f"`{fuzzer}`", readable(value_of(line, fuzzer + "_inputs")), sanitizers])
    return table(["Fuzzer", "Inputs", "With sanitizers"], ["---", "---:", "---"], rows)


TABLES = {"fuzzers": table_of_fuzzers, "runs": table_of_runs, "short_texts": table_of_short_texts}


def page():
    text = (RECORDS / "RELIABILITY.md.in").read_text()
    text = TABLE.sub(lambda match: TABLES[match.group(1)](), text)
    return PLACEHOLDER.sub(lambda match: readable(value_of(match.group(1), match.group(2))), text)


def main(arguments):
    match arguments:
        case ["run", *lines] if lines and set(lines) <= set(commands()):
            return 0 if all([run(line) for line in lines]) else 1
        case ["list"]:
            list_lines()
        case ["write"]:
            PAGE.write_text(page())
        case ["check"]:
            if PAGE.read_text() != page():
                print("docs/RELIABILITY.md is not what `tools/reliability.py write` writes")
                return 1
            print("docs/RELIABILITY.md shows the records in docs/reliability")
        case _:
            print(__doc__, file=sys.stderr)
            return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
