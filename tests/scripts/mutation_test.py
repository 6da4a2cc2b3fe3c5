#!/usr/bin/env python3
"""Mutation testing: changes one place of the library at a time and runs the tests of the family.

A mutant differs from the library in one line: another comparison, another operator, another constant or text, swapped
arguments, an early or empty return, or a missing statement. A test that fails kills the mutant. If none does, so does a
row of the family's benchmarks whose instructions grow by more than bench/instructions allows. All others survive.
Mutants that do not compile are discarded, and so are those whose optimised object code is the original's.
tests/data/surviving_mutants.txt explains the survivors.

usage: tests/scripts/mutation_test.py [--count N] [--jobs N] [--family STEM]... [--fresh]
       tests/scripts/mutation_test.py --list | --check | --report

--list prints the mutants and tests none. --check tests only that the explained survivors are still mutants. --report
prints the results so far. Each run writes the survivors to build/mutants/survivors.txt.

Every run makes the same choice of mutants, from each file in proportion to their number; `--count 0` takes all.
Requires clang++, libc++, Google Benchmark and valgrind, and is faster with lld. Results are kept in build/mutants: that
of a killed mutant until its file or the test that killed it changes, that of a survivor until its file or a test program
changes that ran. --fresh repeats them all.

Exits with status 1 if fewer than 95 of 100 mutants are killed, if a survivor is not explained, or if an explained one
is killed.
"""
import argparse
import collections
import concurrent.futures
import functools
import hashlib
import json
import os
import pathlib
import queue
import random
import re
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import threading

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "bench"))
import instructions  # noqa: E402

WORK = ROOT / "build/mutants"
EXPLAINED = ROOT / "tests/data/surviving_mutants.txt"

# The tests that run after the test program of the same stem.
MORE_TESTS = {
    "tokenizer": ["zn_datetime_test", "zn_ip_test", "out_of_memory_test"],
    "zn_dir": ["zn_seqfile_test", "out_of_memory_test", "failing_calls_test"],
    "zn_error": ["hostile_xml_test", "zn_readfile_test", "zn_writefile_test", "out_of_memory_test"],
    "zn_file": ["failing_reads_test", "zn_dir_test"],
    "zn_readfile": ["failing_reads_test"],
    "zn_setcfg": ["hostile_xml_test", "out_of_memory_test"],
    "zn_xmlparser": ["hostile_xml_test", "zn_readxml_test", "zn_error_test"],
    "zn_readxml": ["zn_error_test", "zn_setcfg_test", "failing_reads_test", "out_of_memory_test"],
    # src/udf/internal
    "calendar": ["zn_datetime_test", "zn_daylength_test", "zn_moonphase_test"],
    "child": ["zn_process_test", "zn_shell_test", "failing_calls_test"],
    "copy": ["zn_file_test", "failing_calls_test", "failing_reads_test"],
    "definitions": ["zn_str_test", "zn_ip_test", "zn_datetime_test", "zn_seqfile_test", "zn_file_test"],
    "descriptor": ["zn_file_test", "staged_file_test", "failing_calls_test", "failing_reads_test", "zn_output_test"],
    "expat": ["zn_xmlparser_test"],
    "files": ["zn_file_test", "zn_dir_test"],
    "literals": ["zn_dir_test", "tokenizer_test", "zn_seqfile_test"],
    "maps": ["zn_setcfg_test", "zn_error_test", "out_of_memory_test"],
    "numbers": ["zn_str_test", "zn_datetime_test", "zn_daylength_test"],
    "patterns": ["zn_dir_test", "zn_file_test", "zn_seqfile_test", "tokenizer_test", "zn_str_test"],
    "staged_file": ["zn_setcfg_test", "failing_calls_test"],
    "text": ["zn_str_test", "zn_datetime_test", "zn_output_test", "tokenizer_test", "zn_dir_test",
             "zn_file_test", "zn_seqfile_test"],
}
# Not mutated: machine.h has only static assertions, which refuse other machines; refusals_test.sh tests these.
LEFT_OUT = ("src/udf/internal/machine.h",)

# The mutants of these run as the preset `libcxx` builds: it compares each scan with its definition.
DEFINITIONS = ("src/udf/internal/definitions.h", "src/udf/internal/definitions.cpp")

LINKER = "-fuse-ld=lld" if shutil.which("ld.lld") else ""

# The builds that mutants come from. The second is that of the preset `libcxx`; the last one counts instructions.
FLAGS = {
    "libstdcxx": [],
    "libcxx": ["-DCMAKE_CXX_FLAGS=-stdlib=libc++", "-DZN_UDF_CHECK_DEFINITIONS=ON",
               "-DZN_UDF_GOOGLETEST_SOURCE=/usr/src/googletest"],
    "optimised": ["-DCMAKE_CXX_FLAGS_DEBUG=-O2 -DNDEBUG", "-DZN_UDF_BENCHMARKS=ON", "-DZN_UDF_TESTS=OFF"],
}

# Seconds of processor time. A test case runs after all those that take no longer than such a time.
SLOW = (0.1, 1.0)
LAST_LEVEL = 2 + len(SLOW)  # that of instructions
BATCH = 400

# The environment of all tests, and what the foreign one adds.
ENVIRONMENT = {name: value for name, value in os.environ.items() if not name.startswith("GTEST_")}
FOREIGN = {"ZN_UDF_TEST_GROUPING": "1", "TZ": "Asia/Kolkata"}

SWAPS = [
    (r" < ", " <= "), (r" <= ", " < "), (r" > ", " >= "), (r" >= ", " > "), (r" == ", " != "), (r" != ", " == "),
    (r" && ", " || "), (r" \|\| ", " && "), (r" \+ ", " - "), (r" - ", " + "), (r" \* ", " / "), (r" / ", " * "),
    (r" % ", " * "), (r" \+= ", " -= "), (r" -= ", " += "), (r"\+\+", "--"), (r"--", "++"), (r" \? ", " ? !"),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"(?<=[( ])!(?=[\w(])", ""), (r" & ", " | "), (r" \| ", " & "),
    (r" >> ", " << "), (r"(?<=[( ])-(?=[\w(])", ""), (r"\bcontinue;", "break;"), (r"\bbreak;", "continue;"),
]
NUMBER = re.compile(r"(?<![\w.])(0x[\da-fA-F]+|\d+(?:\.\d+)?)(?=(?:e-?\d+)?[uUlLfF]*(?![\w.]))")
ARGUMENT = r"[\w.:>\-*&\[\]\0]+(?:\(\))?"
ARGUMENTS = re.compile(rf"(?<=[\w>])\(({ARGUMENT}), ({ARGUMENT})(?=[,)])")
RETURN = re.compile(r"\breturn (?!(?:0|false|nullptr|std::nullopt|\{\}|\0\0|\*this)?;)[^;]+;")
STATEMENT = re.compile(r"^\s+(?:(?!return|const|auto|using|break|case|default|static|struct|std::\w+(<.*>)? \w+[;({=])"
                       r"[\w.:>\-\[\]*&()]+(\(.*\)| [-+*/|&]?= .*|\+\+|--)[^{}]*;|(?:if|while) \(.*;|return;)$")
LITERAL = re.compile(r'"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])\'')


def without_literals(line):
    """Returns the line with strings, characters and comments replaced by NULs."""
    line = LITERAL.sub(lambda match: "\0" * len(match.group()), line)
    return re.sub(r"//.*", lambda match: "\0" * len(match.group()), line)


def other_numbers(text):
    """Returns the constants that replace the constant `text`."""
    if text.startswith("0x"):
        return [hex(int(text, 16) + 1)]
    if "." in text:
        # One of the first nine digits of a coefficient counts, and so does its size.
        at = [match.start() for match in re.finditer(r"\d", text)][:9][-1]
        other = text[:at] + ("8" if text[at] == "9" else str(int(text[at]) + 1)) + text[at + 1:]
        whole, fraction = text.split(".")
        return [other, f"{int(whole) + 1}.{fraction}"]
    value = int(text, 8 if text.startswith("0") and len(text) > 1 else 10)
    write = "0{:o}".format if text.startswith("0") and len(text) > 1 else str
    return [write(other) for other in (value + 1, value - 1) if other >= 0]


def other_literal(text):
    if text.startswith("'"):
        return "'!'" if text == "'~'" else "'~'"
    return '"~"' if text == '""' else '""'


def mutants_of_line(line):
    """Yields each mutant of a line, some of them twice."""
    code = without_literals(line)
    if code.lstrip().startswith(("#", "template", "namespace", "static_assert", "extern")) or "= delete" in code:
        return
    for pattern, replacement in SWAPS:
        for match in re.finditer(pattern, code):
            yield line[:match.start()] + replacement + line[match.end():]
    for match in NUMBER.finditer(code):
        for other in other_numbers(match.group(1)):
            yield line[:match.start(1)] + other + line[match.end(1):]
    for match in LITERAL.finditer(line):
        if code[match.start()] == "\0" and "//" not in line[:match.start()] and 'R"' not in line:
            yield line[:match.start()] + other_literal(match.group()) + line[match.end():]
    for match in ARGUMENTS.finditer(code):
        called = re.search(r"std::(max|min)(<[\w ]+>)?$", code[:match.start()])
        if called:  # The order of the arguments makes no difference.
            other = "min" if called.group(1) == "max" else "max"
            yield line[:called.start(1)] + other + line[called.end(1):]
            continue
        first, second = (line[match.start(i):match.end(i)] for i in (1, 2))
        yield line[:match.start()] + f"({second}, {first}" + line[match.end():]
    for match in RETURN.finditer(code):
        yield line[:match.start()] + "return {};" + line[match.end():]
    if STATEMENT.match(code):
        yield ""


# `line` is the number of the line, from 0; `which` tells apart lines with the same text, from 1.
Mutant = collections.namedtuple("Mutant", "file line which original text")


def sources():
    files = sorted((ROOT / "src/udf").rglob("*.*")) + sorted((ROOT / "include").glob("*.h"))
    return [name for name in (str(file.relative_to(ROOT)) for file in files) if name not in LEFT_OUT]


@functools.lru_cache(None)
def content(name):
    return (ROOT / name).read_text()


def mutants_of(name):
    """Returns all mutants of a file."""
    mutants, seen = [], collections.Counter()
    for number, line in enumerate(content(name).splitlines()):
        seen[line.strip()] += 1
        for text in dict.fromkeys(mutants_of_line(line)):
            if text != line:
                mutants.append(Mutant(name, number, seen[line.strip()], line.strip(), text))
    return mutants


def chosen(mutants, count):
    """Returns `count` of the mutants, from each file in proportion to their number."""
    if count == 0 or count >= len(mutants):
        return mutants
    by_file = collections.defaultdict(list)
    for mutant in mutants:
        by_file[mutant.file].append(mutant)
    plan = []
    for name in sorted(by_file):
        share = max(1, round(count * len(by_file[name]) / len(mutants)))
        plan += sorted(random.Random(name).sample(by_file[name], min(share, len(by_file[name]))))
    return plan


def identity(mutant):
    """What surviving_mutants.txt knows of a mutant."""
    return mutant.file, mutant.which, mutant.original, mutant.text.strip()


def entry_text(mutant, reason):
    which = f" {mutant.which}" if mutant.which > 1 else ""
    return f"{mutant.file}{which}\n- {mutant.original}\n+ {mutant.text.strip()}".rstrip() + f"\n  {reason}\n"


def explained_survivors():
    """Returns the reason for each explained survivor, and what is wrong with the file."""
    reasons, errors = {}, []
    if not EXPLAINED.exists():
        return reasons, errors
    for block in re.split(r"\n{2,}", EXPLAINED.read_text().strip()):
        lines = [line for line in block.splitlines() if not line.startswith("#")]
        if not lines:
            continue
        match = re.fullmatch(r"(\S+)(?: (\d+))?\n- (.+)\n\+(?: (.+))?\n  (\S.*)", "\n".join(lines))
        if not match:
            errors.append("not an entry with a reason:\n" + block)
            continue
        name, which, original, text, reason = match.groups()
        key = (name, int(which or 1), original, text or "")
        if key in reasons:
            errors.append("twice:\n" + block)
        reasons[key] = reason
    return reasons, errors


def check_explained():
    """Tests that every explained survivor is a mutant of the present source. Returns the exit status."""
    reasons, errors = explained_survivors()
    possible = {identity(mutant) for name in sources() for mutant in mutants_of(name)}
    errors += [f"no mutant of the present source: {key}" for key in reasons if key not in possible]
    print("\n".join(errors) or f"{len(reasons)} explained survivors, all of them mutants of the present source")
    return 1 if errors else 0


def run(command, **options):
    return subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors="replace", **options)


class Build:
    """A build of the unmutated library with its tests, whose commands also build the mutants."""

    def __init__(self, name, flags):
        self.directory = WORK / name
        self.lock = threading.RLock()
        self.make_lock = threading.Lock()
        self.headers = {}
        self.originals = {}
        self.active = {}
        self.stages = {}
        self.counts = {}
        self.program_locks = collections.defaultdict(threading.Lock)
        run(["cmake", "-S", ROOT, "-B", self.directory, "-DCMAKE_CXX_COMPILER=clang++", "-DCMAKE_BUILD_TYPE=Debug",
             "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DCMAKE_CXX_COMPILER_LAUNCHER=", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON",
             f"-DCMAKE_EXE_LINKER_FLAGS={LINKER}", f"-DCMAKE_SHARED_LINKER_FLAGS={LINKER}",
             "-DZN_UDF_EXAMPLES=OFF", "-DZN_UDF_HARDENING=OFF", *flags], check=True)
        self.make("zn_udf")
        self.commands = {}
        for entry in json.loads((self.directory / "compile_commands.json").read_text()):
            command = shlex.split(entry["command"])
            self.commands[command[command.index("-o") + 1]] = command

    def make(self, *targets):
        # Two runs in one directory would build the same files.
        with self.make_lock:
            made = run(["cmake", "--build", self.directory, "-j2", "--target", *targets])
        if made.returncode != 0:
            sys.exit(made.stdout)

    @functools.lru_cache(None)
    def objects_with(self, name, target):
        """Returns the objects of a target that a source file or header is part of."""
        folder = self.directory / ("" if target == "zn_udf" else "tests")
        path, objects = str(ROOT / name), []
        for dependencies in sorted((folder / f"CMakeFiles/{target}.dir").rglob("*.o.d")):
            words = dependencies.read_text().replace("\\\n", " ").split()[1:]
            if any(os.path.normpath(folder / word) == path for word in words):
                objects.append(str(dependencies.relative_to(folder))[:-2])
        return objects

    def precompiled(self, command):
        """Returns the option for the precompiled standard headers that fit the command."""
        flags = [part for part in command[1:-4] if not part.startswith(("-W", "-I"))]
        key = hashlib.sha256(" ".join(flags).encode()).hexdigest()[:16]
        with self.lock:
            if key not in self.headers:
                header = self.directory / f"{key}.h"
                names = set()
                for name in sources():
                    names.update(re.findall(r"^#include <(?:[a-z_]+|expat\.h)>$", content(name), re.MULTILINE))
                header.write_text("\n".join(sorted(names)) + "\n")
                output = self.directory / f"{key}.pch"
                run([command[0], *flags, "-w", "-fpch-instantiate-templates", "-x", "c++-header", header, "-o", output],
                    check=True)
                self.headers[key] = output
        return ["-include-pch", str(self.headers[key])]

    def compile(self, target, name, output, overlay=None, optimised=False):
        folder = self.directory / ("" if target == "zn_udf" else "tests")
        command = list(self.commands[name])
        command[command.index("-o") + 1] = str(output)
        if target == "zn_udf":
            if optimised:
                command[command.index("-O0")] = "-O2"
            command[1:1] = self.precompiled(command)
        command.append("-w")
        if overlay:
            command += ["-ivfsoverlay", str(overlay)]
        return run(command, cwd=folder, env=ENVIRONMENT).returncode == 0

    def original(self, target, name):
        """Returns the optimised object code of the unmutated source."""
        with self.lock:
            if (target, name) not in self.originals:
                with tempfile.TemporaryDirectory() as directory:
                    output = pathlib.Path(directory) / "object.o"
                    if not self.compile(target, name, output, optimised=True):
                        sys.exit(f"{name} does not compile")
                    self.originals[target, name] = output.read_bytes()
            return self.originals[target, name]

    def link(self, target, objects, output):
        """Links a target, with other objects in place of some of its own."""
        folder = self.directory / ("" if target == "zn_udf" else "tests")
        command = shlex.split((folder / f"CMakeFiles/{target}.dir/link.txt").read_text())
        command = [str(objects.get(part, part)) for part in command]
        command[command.index("-o") + 1] = str(output)
        return run(command, cwd=folder, env=ENVIRONMENT).returncode == 0

    def counting_programs(self, name):
        """Returns the programs that count the instructions of a file's family, or of those that use it."""
        tests = [test for test in all_tests(name) if test in own_tests(name)] or all_tests(name)
        programs = [test[:-len("_test")] + "_instructions" for test in tests]
        return [program for program in programs if (self.directory / f"bench/CMakeFiles/{program}.dir").exists()]

    def instructions_of(self, program, library=None):
        """Returns the instructions of each row of a program, with this build's library or that in another directory."""
        path = self.directory / "bench" / program
        if library:
            return instructions.counts_of(path, library)
        with self.program_locks[program]:
            if program not in self.counts:
                self.make(program)
                self.counts[program] = instructions.counts_of(path)
            return self.counts[program]

    def active_lines(self, name):
        """Returns the numbers of the lines that this build compiles, or None if it compiles all."""
        if len(re.findall(r"^#if(?!ndef ZN_)", content(name), re.MULTILINE)) == 0:
            return None
        with self.lock:
            if name not in self.active:
                command = list(self.commands[self.objects_with(name, "zn_udf")[0]])
                command[command.index("-c")] = "-E"
                command[command.index("-o") + 1] = "-"
                self.active[name] = lines = set()
                at, is_there = 0, False
                for line in run([*command, "-w"], cwd=self.directory).stdout.splitlines():
                    marker = re.match(r'# (\d+) "(.*?)"', line)
                    if marker:
                        at, is_there = int(marker.group(1)) - 1, marker.group(2) == str(ROOT / name)
                        continue
                    if is_there and line.strip():
                        lines.add(at)
                    at += 1
            return self.active[name]

    def stages_of(self, program):
        """Returns the stages of a test program, the fast test cases first: each with its cases, and its limits in
        seconds of processor time and of time. Runs the program once to measure it."""
        with self.program_locks[program]:
            if program not in self.stages:
                self.make(program)
                self.stages[program] = self.measured(program)
            return self.stages[program]

    def measured(self, program):
        path = self.directory / "tests" / program
        record = self.directory / f"{program}.json"
        digest = hashlib.sha256(path.read_bytes()).hexdigest()
        if not record.exists() or json.loads(record.read_text())["program"] != digest:
            output = self.directory / f"{program}.output.json"
            before = os.times()
            output.unlink(missing_ok=True)
            environment = {"GTEST_OUTPUT": f"json:{output}", "GTEST_FAIL_FAST": "0"}
            failure = run_test(path, self.directory, "*", (600, 1200), environment)
            after = os.times()
            if not output.exists():
                sys.exit(f"{program} does not end without a mutant: {failure}")
            if failure:
                print(f"left out, since it fails without a mutant: {failure}", flush=True)
            cases = {f"{suite['name']}.{case['name']}": float(case["time"].rstrip("s"))
                     for suite in json.loads(output.read_text())["testsuites"] for case in suite["testsuite"]
                     if "failures" not in case}
            busy = after.children_user + after.children_system - before.children_user - before.children_system
            share = min(1.0, busy / (after.elapsed - before.elapsed))
            record.write_text(json.dumps({"program": digest, "cases": cases, "share": share}))
        known = json.loads(record.read_text())
        speed = {case: sum(seconds * known["share"] > slow for slow in SLOW)
                 for case, seconds in known["cases"].items()}
        stages = []
        for stage in range(1 + len(SLOW)):
            part = [case for case in speed if speed[case] == stage]
            seconds = sum(known["cases"][case] for case in part)
            limits = (max(3, round(10 * seconds * known["share"])), max(30, round(10 * seconds)))
            stages.append((program, ":".join(part), limits) if part else None)
        return stages


def run_test(path, library, cases, limits, environment=None):
    """Returns the name of the test that fails, or "" if none does."""
    processor, seconds = limits
    with tempfile.TemporaryDirectory(prefix="mutant.") as directory:
        log = pathlib.Path(directory) / "log"
        own = pathlib.Path(directory) / "tmp"
        own.mkdir()
        # A mutant may fill the disk or the memory in an endless loop.
        limited = f"ulimit -v 16000000 -f 2000000 -t {processor} -c 0; exec {path}"
        variables = {"LD_LIBRARY_PATH": str(library), "ZN_UDF_TESTED_LIBRARY": str(library / "libzn_udf.so.1"),
                     "TMPDIR": str(own), "GTEST_FILTER": cases,
                     "GTEST_FAIL_FAST": "1", **(environment or {})}
        with log.open("wb") as output, subprocess.Popen(
                ["bash", "-c", limited], cwd=own, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                start_new_session=True, env={**ENVIRONMENT, **variables}) as process:
            try:
                status = process.wait(timeout=seconds)
            except subprocess.TimeoutExpired:
                status = -1
            finally:
                try:
                    os.killpg(process.pid, signal.SIGKILL)
                except ProcessLookupError:
                    pass
        if status == 0:
            return ""
        text = log.read_bytes()[:1000000].decode(errors="replace")
        found = re.findall(r"\[  FAILED  \] (\S+\.\w+)", text) or re.findall(r"\[ RUN      \] (\S+\.\w+)", text)[-1:]
        return found[0] if found else "no test"


class Workshop:
    """A directory in which one mutant at a time is built and tested."""

    def __init__(self, directory):
        self.directory = directory
        directory.mkdir(parents=True, exist_ok=True)

    def build(self, build, mutant, with_tests=True):
        """Returns the objects of the mutant by target and name, or None if it does not compile."""
        lines = content(mutant.file).splitlines()
        lines[mutant.line] = mutant.text
        source = self.directory / "source"
        source.write_text("\n".join(lines) + "\n")
        self.overlay = self.directory / "overlay.yaml"
        self.overlay.write_text(json.dumps({"version": 0, "use-external-names": False, "roots": [
            {"name": str(ROOT / mutant.file), "type": "file", "external-contents": str(source)}]}))
        targets = ["zn_udf", *(programs_with(mutant.file) if with_tests else [])]
        objects = {}
        for target in targets:
            if target != "zn_udf":
                build.make(target)
            for number, name in enumerate(build.objects_with(mutant.file, target)):
                objects[target, name] = output = self.directory / f"{target}.{number}.o"
                if not build.compile(target, name, output, self.overlay):
                    return None
        for program in self.directory.glob("*_test"):
            program.unlink()
        for target in targets:
            replaced = {name: output for (of, name), output in objects.items() if of == target}
            if not build.link(target, replaced, self.directory / ("libzn_udf.so.1" if target == "zn_udf" else target)):
                return None
        return objects

    def is_original(self, build, objects):
        """Returns true if the optimised object code is that of the original."""
        output = self.directory / "optimised.o"
        for target, name in objects:
            if not build.compile(target, name, output, self.overlay, optimised=True):
                return False
            if output.read_bytes() != build.original(target, name):
                return False
        return True

    def killer(self, build, stage, environment=None):
        """Returns the program and the test that kills the mutant, or nothing. The test has to fail twice, since a
        busy machine may make one fail by itself."""
        if stage is None:
            return None
        program, cases, limits = stage
        path = self.directory / program
        if not path.exists():
            path = build.directory / "tests" / program
        case = run_test(path, self.directory, cases, limits, environment)
        if case and run_test(path, self.directory, case if case in cases else cases, limits, environment):
            return [program, case]
        return None


@functools.lru_cache(None)
def own_tests(name):
    return [test.stem for test in (ROOT / "tests").rglob(pathlib.Path(name).stem + "_test.cpp")]


def programs_with(name):
    """Returns the test programs that contain the code of a file themselves."""
    if name in DEFINITIONS:
        return ["definitions_test"]
    return own_tests(name) if name.startswith("include/") or name == "src/udf/internal/literals.cpp" else []


def all_tests(name):
    if name in DEFINITIONS:
        return ["definitions_test"] + MORE_TESTS["definitions"]
    return own_tests(name) + MORE_TESTS.get(pathlib.Path(name).stem, [])


class Results:
    """The results of earlier runs and of this one."""

    def __init__(self, is_fresh):
        self.lock = threading.Lock()
        self.path = WORK / "results.jsonl"
        self.known = {}
        if self.path.exists() and not is_fresh:
            for line in self.path.read_text().splitlines():
                key, result, witness = json.loads(line)
                self.known[key] = result, witness
        self.tests = {test.stem: test.read_text() for test in sorted((ROOT / "tests").rglob("*.cpp"))}
        self.support = "\n".join(file.read_text() for file in sorted((ROOT / "tests").rglob("*.h")))

    @staticmethod
    def key(mutant):
        return hashlib.sha256(f"{mutant}{content(mutant.file)}".encode()).hexdigest()[:24]

    def witness(self, mutant, result):
        """Returns what the result depends on besides the file of the mutant."""
        if result[0] == "killed":
            program, case = result[1:]
            if program == "instructions":
                return ""
            suite, _, name = case.partition(".")
            test = re.search(rf"^TEST\w*\({suite.split('/')[-1]}, {name}\).*?^}}", self.tests.get(program, ""),
                             re.MULTILINE | re.DOTALL)
            return hashlib.sha256((test.group() if test else self.tests.get(program, "")).encode()).hexdigest()
        if result[0] in ("alive", "survived"):
            tests = "\n".join(self.tests[program] for program in all_tests(mutant.file))
            return hashlib.sha256((self.support + tests).encode()).hexdigest()
        return ""

    def is_known(self, mutant):
        return self.key(mutant) in self.known

    def get(self, mutant):
        result, witness = self.known.get(self.key(mutant), (None, None))
        return result if result and self.witness(mutant, result) == witness else None

    def put(self, mutant, result):
        with self.lock:
            witness = self.witness(mutant, result)
            self.known[self.key(mutant)] = result, witness
            with self.path.open("a") as file:
                file.write(json.dumps([self.key(mutant), result, witness]) + "\n")


class Run:
    def __init__(self, plan, results, jobs):
        self.plan = plan
        self.results = results
        self.builds = {}
        self.build_locks = {name: threading.Lock() for name in FLAGS}
        self.kills = collections.Counter()
        self.jobs = jobs
        self.workshops = queue.Queue()
        for job in range(jobs):
            self.workshops.put(Workshop(WORK / f"job{job}"))

    def build(self, name):
        with self.build_locks[name]:
            if name not in self.builds:
                self.builds[name] = Build(name, FLAGS[name])
            return self.builds[name]

    def needs_libcxx(self, mutant):
        active = self.build("libstdcxx").active_lines(mutant.file)
        return mutant.file in DEFINITIONS or (active is not None and mutant.line not in active)

    def build_of(self, mutant):
        """Returns the build that contains the line of the mutant, if any on this machine does."""
        build = self.build("libcxx" if self.needs_libcxx(mutant) else "libstdcxx")
        active = build.active_lines(mutant.file)
        return build if active is None or mutant.line in active else None

    def tests_of(self, mutant, level):
        """Returns the tests of a level as programs, stages and environments: the fast tests of the family, all fast
        tests, and the slower ones."""
        own = own_tests(mutant.file)
        programs = sorted(all_tests(mutant.file), key=lambda program: -self.kills[mutant.file, program])
        if level == 0:
            return [(program, 0, None) for program in own or programs]
        if level == 1:
            others = [(program, 0, None) for program in programs if own and program not in own]
            return others + [(program, 0, FOREIGN) for program in programs[:1]]
        return [(program, level - 1, None) for program in programs]

    def attempt(self, mutant, level):
        build = self.build_of(mutant)
        if build is None:
            return ["not built here"]
        workshop = self.workshops.get()
        try:
            objects = workshop.build(build, mutant)
            if objects is None:
                return ["discarded"]
            if level == 1 and workshop.is_original(build, objects):
                return ["equivalent"]
            for program, stage, environment in self.tests_of(mutant, level):
                killer = workshop.killer(build, build.stages_of(program)[stage], environment)
                if killer:
                    self.kills[mutant.file, killer[0]] += 1
                    return ["killed", *killer]
            return ["alive", str(level)]
        finally:
            self.workshops.put(workshop)

    def count(self, mutant):
        """Counts the instructions of a mutant that the tests have not killed."""
        workshop = self.workshops.get()
        try:
            build = self.build("optimised")
            if not self.needs_libcxx(mutant) and workshop.build(build, mutant, with_tests=False):
                for program in build.counting_programs(mutant.file):
                    usual = build.instructions_of(program)
                    counted = build.instructions_of(program, workshop.directory)
                    for row, count in counted.items():
                        if count > usual[row] * (1 + instructions.TOLERANCE):
                            return ["killed", "instructions", row]
            return ["survived"]
        finally:
            self.workshops.put(workshop)

    def test(self):
        """Tests the mutants without a result. A batch passes a level before the next one begins, so that most mutants
        are killed before tests take long. What is expected to survive comes last."""
        reasons, _ = explained_survivors()
        plan = random.Random(1).sample(self.plan, len(self.plan))
        plan.sort(key=lambda mutant: (self.needs_libcxx(mutant), not self.results.is_known(mutant)))
        for start in range(0, len(plan), BATCH):
            for level in range(LAST_LEVEL + 1):
                before = ["alive", str(level - 1)] if level else None
                todo = [mutant for mutant in plan[start:start + BATCH] if self.results.get(mutant) == before]
                todo.sort(key=lambda mutant: identity(mutant) in reasons)
                print(f"batch {start // BATCH}, level {level}: {len(todo)} mutants", flush=True)
                with concurrent.futures.ThreadPoolExecutor(self.jobs) as pool:
                    list(pool.map(functools.partial(self.note, level=level), todo))

    def note(self, mutant, level):
        result = self.count(mutant) if level == LAST_LEVEL else self.attempt(mutant, level)
        self.results.put(mutant, result)
        print(f"{' '.join(result)}: {mutant.file}:{mutant.line + 1}: {mutant.text.strip()}", flush=True)


def report(plan, results, total):
    """Prints the summary and the figures. Returns the exit status."""
    of = {mutant: results.get(mutant) or ["untested"] for mutant in plan}
    by_result = collections.defaultdict(list)
    for mutant in plan:
        by_result[of[mutant][0]].append(mutant)
    reasons, errors = explained_survivors()
    unexplained = [mutant for mutant in by_result["survived"] if identity(mutant) not in reasons]
    for mutant in plan:
        if identity(mutant) in reasons and of[mutant][0] == "killed":
            errors.append(f"explained, but {' '.join(of[mutant])}:\n" + entry_text(mutant, reasons[identity(mutant)]))
    for mutant in unexplained:
        errors.append("survivor without a reason:\n" + entry_text(mutant, "?"))
    alive = by_result["survived"] + by_result["alive"]
    (WORK / "survivors.txt").write_text("\n".join(
        entry_text(mutant, reasons.get(identity(mutant), f"? {mutant.line + 1} {' '.join(of[mutant])}"))
        for mutant in alive))
    for name in sorted({mutant.file for mutant in plan}):
        counts = collections.Counter(of[mutant][0] for mutant in plan if mutant.file == name)
        print(f"{name}: " + ", ".join(f"{count} {result}" for result, count in sorted(counts.items())))
    print("\n".join(errors))
    unfinished = len(by_result["alive"]) + len(by_result["untested"])
    # A mutant that is still alive may yet be killed, but does not count as if it were.
    killed, survived = len(by_result["killed"]), len(alive)
    rate = killed / max(1, killed + survived)
    for name, value in (("mutants_generated", total), ("mutants_chosen", len(plan)), ("mutants_unfinished", unfinished),
                        ("mutants_not_built_here", len(by_result["not built here"])),
                        ("mutants_that_do_not_compile", len(by_result["discarded"])),
                        ("mutants_with_the_same_object_code", len(by_result["equivalent"])),
                        ("mutants_that_differ", killed + survived), ("mutants_killed", killed),
                        ("mutants_only_slower", sum(of[mutant][1] == "instructions" for mutant in by_result["killed"])),
                        ("mutants_killed_percent", f"{int(1000 * rate) / 10}"),
                        ("mutants_survived", survived),
                        ("mutants_explained", sum(identity(mutant) in reasons for mutant in alive))):
        print(f"figure {name} {value}")
    return 1 if errors or unfinished or rate < 0.95 else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=1600)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--family", action="append", default=[])
    parser.add_argument("--fresh", action="store_true")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--report", action="store_true")
    options = parser.parse_args()
    if options.check:
        return check_explained()
    everything = [mutant for name in sources() for mutant in mutants_of(name)]
    plan = chosen(everything, options.count)
    if options.family:
        plan = [mutant for mutant in plan if pathlib.Path(mutant.file).stem in options.family]
    print(f"{len(plan)} of {len(everything)} mutants", flush=True)
    if options.list:
        for mutant in plan:
            print(f"{mutant.file}:{mutant.line + 1}: {mutant.original}  ->  {mutant.text.strip() or '(removed)'}")
        return 0
    WORK.mkdir(parents=True, exist_ok=True)
    os.nice(10)
    results = Results(options.fresh)
    if not options.report:
        Run(plan, results, options.jobs).test()
    return report(plan, results, len(everything))


if __name__ == "__main__":
    sys.exit(main())
