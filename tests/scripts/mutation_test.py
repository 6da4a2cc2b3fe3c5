#!/usr/bin/env python3
"""Plants faults in the library, one at a time, and runs the tests of the family: do they notice?

A fault is one token: another comparison, another operator, a constant that is one more, a condition turned round, a
statement left out. Every fault is planted in a copy of the tree; those that do not compile do not count. The choice is
the same in every run.

usage: tests/scripts/mutation_test.py [--count N] [--jobs N] [--family STEM]... [--list]

Prints each fault with the test that caught it, then what survived. Exit status 1 when fewer than nine of ten are caught.
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

# What runs beside the test program of the same stem.
MORE_TESTS = {
    "tokenizer": ["zn_datetime_test", "zn_ip_test"],
    "zn_dir": ["zn_seqfile_test", "out_of_memory_test"],
    "zn_error": ["hostile_xml_test", "zn_readfile_test", "zn_writefile_test"],
    "zn_file": ["failing_reads_test", "zn_dir_test"],
    "zn_readfile": ["failing_reads_test"],
    "zn_setcfg": ["hostile_xml_test", "out_of_memory_test"],
    "zn_xmlparser": ["hostile_xml_test", "zn_readxml_test"],
    # Private headers and templates have no test program of their own stem.
    "zn_ascii": ["zn_str_test", "zn_datetime_test", "zn_output_test"],
    "zn_decimal": ["zn_str_test", "zn_datetime_test"],
    "zn_exists": ["zn_file_test", "zn_dir_test"],
    "zn_find": ["zn_str_test", "tokenizer_test", "zn_dir_test"],
    "zn_pattern": ["zn_file_test", "zn_seqfile_test", "tokenizer_test", "zn_dir_test", "zn_str_test"],
    "zn_readxml": ["zn_error_test", "zn_setcfg_test", "failing_reads_test", "out_of_memory_test"],
    "zn_truncate": ["zn_datetime_test", "zn_daylength_test"],
}
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


def blanked(line):
    """The line with strings, characters and comments blanked out, so that nothing is planted there."""
    line = re.sub(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])\'', lambda match: "\0" * len(match.group()), line)
    return re.sub(r"//.*", lambda match: "\0" * len(match.group()), line)


def faults_of(path):
    """All faults of a file: line number, what the line becomes."""
    for number, line in enumerate(path.read_text().splitlines()):
        code = blanked(line)
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
    return [file for file in files if file.stem not in ("zn_common", "zn_expat", "zn_pattern_libcxx")]


def chosen(count, families):
    """The faults to plant, from each file in proportion to how many it has."""
    random.seed(1)
    everything = {file: list(faults_of(file)) for file in sources() if not families or file.stem in families}
    total = sum(len(faults) for faults in everything.values())
    plan = []
    for file, faults in everything.items():
        share = max(1, round(count * len(faults) / total))
        plan += [(file, number, line) for number, line in random.sample(faults, min(share, len(faults)))]
    return plan, total


class Workshop:
    """A copy of the tree with a build of its own."""

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

    def try_fault(self, fault):
        """The test that caught the fault, "" when none did, None when it does not compile."""
        file, number, line = fault
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
        # A test may end up in a loop that fills the disk or the memory.
        limits = f"ulimit -v 16000000 -f 2000000; exec timeout -k 1 {SECONDS_PER_TEST} {self.build}/tests/{test} --gtest_fail_fast"
        return self.run(["bash", "-c", limits]).returncode == 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=220)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--family", action="append", default=[])
    parser.add_argument("--list", action="store_true", help="print the faults and plant none")
    options = parser.parse_args()
    plan, total = chosen(options.count, options.family)
    print(f"{len(plan)} of {total} faults", flush=True)
    if options.list:
        for file, number, line in plan:
            print(f"{file.name}:{number + 1}: {line.strip() or 'left out'}")
        return 0

    with tempfile.TemporaryDirectory() as directory:
        workshops = queue.Queue()
        for job in range(options.jobs):
            workshops.put(Workshop(pathlib.Path(directory) / str(job)))

        def attempt(fault):
            workshop = workshops.get()
            try:
                return fault, workshop.try_fault(fault)
            finally:
                workshops.put(workshop)

        caught, survivors, discarded = 0, [], 0
        with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
            for fault, result in pool.map(attempt, plan):
                file, number, line = fault
                where = f"{file.name}:{number + 1}: {line.strip() or 'left out'}"
                if result is None:
                    discarded += 1
                elif result:
                    caught += 1
                    print(f"{result}: {where}", flush=True)
                else:
                    survivors.append((where, file.read_text().splitlines()[number].strip()))
                    print(f"SURVIVED: {where}", flush=True)

    planted = caught + len(survivors)
    print(f"\n{planted} faults planted, {caught} caught; {discarded} more did not compile")
    for where, original in survivors:
        print(f"survived: {where}\n     was: {original}")
    return 0 if caught >= 0.9 * planted else 1


if __name__ == "__main__":
    sys.exit(main())
