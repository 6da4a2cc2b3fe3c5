#!/usr/bin/env python3
"""Mutation testing: changes one token of the library at a time and runs the tests of the family.

A mutant differs from the library by one token: another comparison, another operator, a constant that is one more, an
inverted condition, or a missing statement. A test that fails kills the mutant; if none does, it survives. Mutants that
do not compile are discarded. Each is built in a copy of the tree. Every run makes the same choice of mutants.

usage: tests/scripts/mutation_test.py [--count N] [--jobs N] [--family STEM]... [--list]

Prints each mutant with the test that killed it, then the survivors. Exits with status 1 if fewer than nine mutants of
ten are killed.
"""
import argparse
import concurrent.futures
import os
import pathlib
import queue
import random
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]

# The tests that run after the test program of the same stem.
MORE_TESTS = {
    "tokenizer": ["zn_datetime_test", "zn_ip_test"],
    "zn_dir": ["zn_seqfile_test", "out_of_memory_test"],
    "zn_error": ["hostile_xml_test", "zn_readfile_test", "zn_writefile_test"],
    "zn_file": ["failing_reads_test", "zn_dir_test"],
    "zn_readfile": ["failing_reads_test"],
    "zn_setcfg": ["hostile_xml_test", "out_of_memory_test"],
    "zn_xmlparser": ["hostile_xml_test", "zn_readxml_test"],
    "zn_readxml": ["zn_error_test", "zn_setcfg_test", "failing_reads_test", "out_of_memory_test"],
    # src/udf/internal
    "files": ["zn_file_test", "zn_dir_test"],
    "literals": ["zn_dir_test", "tokenizer_test", "zn_seqfile_test"],
    "numbers": ["zn_str_test", "zn_datetime_test", "zn_daylength_test"],
    "patterns": ["zn_file_test", "zn_seqfile_test", "tokenizer_test", "zn_dir_test", "zn_str_test"],
    "staged_file": ["zn_setcfg_test", "failing_calls_test"],
    "text": ["zn_str_test", "zn_datetime_test", "zn_output_test", "tokenizer_test", "zn_dir_test"],
}
# Not mutated: constants, and code that depends on the version of expat or on the machine.
LEFT_OUT = ("zn_common", "expat", "machine")
SECONDS_PER_TEST = 120

SWAPS = [
    (r" < ", " <= "), (r" <= ", " < "), (r" > ", " >= "), (r" >= ", " > "), (r" == ", " != "), (r" != ", " == "),
    (r" && ", " || "), (r" \|\| ", " && "), (r" \+ ", " - "), (r" - ", " + "), (r" \* ", " / "), (r" / ", " * "),
    (r" % ", " * "), (r" \+= ", " -= "), (r" -= ", " += "), (r"\+\+", "--"), (r"--", "++"), (r" \? ", " ? !"),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"(?<=[( ])!(?=[\w(])", ""), (r" & ", " | "), (r" >> ", " << "),
]
NUMBER = re.compile(r"(?<![\w.])(\d+)(\.\d+)?(?![\w.])")
STATEMENT = re.compile(r"^\s+(?!return|const|auto|using|break|case|default|static|struct|std::\w+(<.*>)? \w+[;({=])"
                       r"[\w.:>\-\[\]*&]+(\(.*\)| [-+*/|&]?= .*|\+\+|--)[^{}]*;$")


def without_literals(line):
    """Returns the line with strings, characters and comments replaced by NULs, so that they are not mutated."""
    line = re.sub(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])\'', lambda match: "\0" * len(match.group()), line)
    return re.sub(r"//.*", lambda match: "\0" * len(match.group()), line)


def mutants_of(path):
    """Yields all mutants of a file: the number of the line and its new text."""
    for number, line in enumerate(path.read_text().splitlines()):
        code = without_literals(line)
        if code.lstrip().startswith(("#", "template", "namespace", "static_assert")) or "compilePattern(" in code \
                or "= delete" in code:
            continue
        for pattern, replacement in SWAPS:
            for match in re.finditer(pattern, code):
                yield number, line[:match.start()] + replacement + line[match.end():]
        for match in NUMBER.finditer(code):
            more = str(int(match.group(1)) + 1) + (match.group(2) or "")
            yield number, line[:match.start()] + more + line[match.end():]
        if STATEMENT.match(code):
            yield number, ""


def sources():
    files = sorted((ROOT / "src/udf").rglob("*.*")) + [ROOT / "include/zn_readxml.h"]
    return [file for file in files if file.stem not in LEFT_OUT]


def chosen(count, families):
    """Returns the mutants to test, from each file in proportion to their number, and the number of all mutants."""
    random.seed(1)
    everything = {file: list(mutants_of(file)) for file in sources() if not families or file.stem in families}
    total = sum(len(mutants) for mutants in everything.values())
    plan = []
    for file, mutants in everything.items():
        share = max(1, round(count * len(mutants) / total))
        plan += [(file, number, line) for number, line in random.sample(mutants, min(share, len(mutants)))]
    return plan, total


def described(mutant):
    file, number, line = mutant
    return f"{file.name}:{number + 1}: {line.strip() or '(statement removed)'}"


class Workshop:
    """A copy of the tree and its build."""

    def __init__(self, directory):
        self.directory = pathlib.Path(directory)
        self.tree = self.directory / "tree"
        shutil.copytree(ROOT, self.tree, ignore=shutil.ignore_patterns("build", ".git"))
        self.build = self.directory / "build"
        self.run(["cmake", "-S", self.tree, "-B", self.build, "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS=-O1",
                  "-DZN_UDF_EXAMPLES=OFF", "-DZN_UDF_WERROR=OFF"], check=True)
        self.run(["cmake", "--build", self.build], check=True)

    def run(self, command, check=False, timeout=None):
        return subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              stdin=subprocess.DEVNULL, check=check, timeout=timeout, start_new_session=True)

    def test_mutant(self, mutant):
        """Returns the test that kills the mutant, "" for a survivor, None if it does not compile."""
        file, number, line = mutant
        copy = self.tree / file.relative_to(ROOT)
        original = copy.read_text()
        lines = original.splitlines()
        lines[number] = line
        copy.write_text("\n".join(lines) + "\n")
        try:
            if self.run(["cmake", "--build", self.build, "--target", "zn_udf"]).returncode != 0:
                return None
            own = [test.stem for test in (ROOT / "tests").rglob(file.stem + "_test.cpp")]
            for test in own + MORE_TESTS.get(file.stem, []):
                if not self.passes(test):
                    return test
            return ""
        finally:
            copy.write_text(original)

    def passes(self, test):
        # A mutant may fill the disk or the memory in an endless loop.
        limited = (f"ulimit -v 16000000 -f 2000000; "
                   f"exec timeout -k 1 {SECONDS_PER_TEST} {self.build}/tests/{test} --gtest_fail_fast")
        return self.run(["bash", "-c", limited]).returncode == 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=220)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--family", action="append", default=[])
    parser.add_argument("--list", action="store_true", help="print the mutants and test none")
    options = parser.parse_args()
    plan, total = chosen(options.count, options.family)
    print(f"{len(plan)} of {total} mutants", flush=True)
    if options.list:
        for mutant in plan:
            print(described(mutant))
        return 0

    with tempfile.TemporaryDirectory() as directory:
        workshops = queue.Queue()
        for job in range(options.jobs):
            workshops.put(Workshop(pathlib.Path(directory) / str(job)))

        def attempt(mutant):
            workshop = workshops.get()
            try:
                return mutant, workshop.test_mutant(mutant)
            finally:
                workshops.put(workshop)

        killed, survivors, discarded = 0, [], 0
        with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
            for mutant, killer in pool.map(attempt, plan):
                if killer is None:
                    discarded += 1
                elif killer:
                    killed += 1
                    print(f"killed by {killer}: {described(mutant)}", flush=True)
                else:
                    survivors.append(mutant)
                    print(f"SURVIVED: {described(mutant)}", flush=True)

    tested = killed + len(survivors)
    print(f"\n{killed} of {tested} mutants killed; {discarded} more did not compile")
    for mutant in survivors:
        file, number, _ = mutant
        print(f"survivor: {described(mutant)}\noriginal: {file.read_text().splitlines()[number].strip()}")
    return 0 if killed >= 0.9 * tested else 1


if __name__ == "__main__":
    sys.exit(main())
