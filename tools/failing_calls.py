#!/usr/bin/env python3
"""Writes docs/reliability/failing_calls.md from what the long run of failing_calls_test recorded.

usage: failing_calls.py [RECORD]
RECORD is build/release/failing_calls.txt by default. `ctest --preset long -R failing_calls_test.long` writes it.
"""
import collections
import pathlib
import sys
import textwrap

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/reliability/failing_calls.md"
ERRORS = ROOT / "tests/data/system_call_errors.txt"

INTRODUCTION = """\
# Failing system calls

This page lists what each function of the library answers if a system call that it makes fails. It is generated from the
results of `failing_calls_test`: run `ctest --preset long -R failing_calls_test.long`, and then
`tools/failing_calls.py`.

The test runs each function in a process that it traces with ptrace. Each system call of the function fails with each
error that its manual page lists: first only the first call, then only the second, and so on, and then all calls from
the first on, from the second on, and so on. Reads and writes also transfer only half of the bytes, or one. After each
run, the test compares the answer with the files and the output, and expects that the process neither hangs nor crashes
and that no descriptor is left open.

- **Errors** are those of man-pages {version}. A read, a write, a wait, a synchronisation or a request for random
  numbers that is interrupted (EINTR) for good is left out, because it is repeated until it succeeds.
- **System calls** are those of this library with glibc and libstdc++ on x86-64. Calls that allocate memory (such as
  `mmap`) and locks of the C++ library (`futex`) are left out; `out_of_memory_test` tests failing allocations. Of the
  calls of a child process, only `execve` fails, always for good. `sendfile` is not in the table: it is called only
  after `copy_file_range` has failed, and other tests let it fail, too.
- **Answers**: several answers with "or" depend on which of several calls failed, on whether it failed for good, and on
  the situation, such as whether a target exists. Some errors occur only if the system gives wrong information. If it
  says that an existing file is missing (ENOENT), the functions believe it. `Configuration::save` leaves no file only
  where there was none, or where the old settings are in the backup.
- **{aborts}**: glibc does so if it gets no random numbers for expat, or if the system rejects
  the buffer that glibc has allocated for the name of the working directory.
"""

ABORTS = "the C library aborts the process"


def documented_errors():
    """Returns the errors that the manual page of each call lists, and the version of the pages."""
    pages = {}
    version = ""
    for line in ERRORS.read_text().splitlines():
        if line.startswith("# System calls"):
            version = line.split("(man-pages ")[1].split(")")[0]
        if not line.startswith("#"):
            call, _, *errors = line.split()
            pages[call] = {error.split("=")[0] for error in errors}
    return pages, version


def read_record(name):
    """Returns {function: {call: {error: answers}}}, and the number of failures."""
    functions = collections.defaultdict(lambda: collections.defaultdict(lambda: collections.defaultdict(set)))
    failures = 0
    for line in name.read_text().splitlines():
        function, *fields = line.split("\t")
        if not fields:
            functions[function] = {}
            continue
        call, error, count, answer = fields
        functions[function][call][error].add(answer)
        failures += int(count)
    return functions, failures


def describe(answers_of, documented):
    """Returns the answers to the errors of a call. Errors with the same answers are grouped, and the largest group is
    called the others."""
    groups = collections.defaultdict(list)
    for error, answers in sorted(answers_of.items()):
        groups[" *or* ".join(sorted(answers))].append(error)
    if len(groups) == 1 and documented <= set(answers_of):
        return [("any error", next(iter(groups)))]
    ordered = sorted(groups.items(), key=lambda group: (len(group[1]), group[1]))
    rows = [(", ".join(errors), answers) for answers, errors in ordered]
    if len(ordered[-1][1]) > 3:
        rows[-1] = ("any other error", rows[-1][1])
    return rows


def page_of(record):
    functions, failures = read_record(record)
    pages, version = documented_errors()
    lines = [INTRODUCTION.format(version=version, aborts=ABORTS[0].upper() + ABORTS[1:])]
    with_calls = sorted(name for name, calls in functions.items() if calls)
    without_calls = sorted(name for name, calls in functions.items() if not calls)
    calls = {call for name in with_calls for call in functions[name]}
    summary = (f"{len(with_calls)} functions make system calls. The table shows the answers to {failures:,} failures of "
               f"one of {len(calls)} different system calls at a time. The other {len(without_calls)} functions make no "
               "system call.")
    lines += [*textwrap.wrap(summary, 120), ""]
    lines += ["## Functions with system calls", "", "| Function | System call | Error | Answer |",
              "| --- | --- | --- | --- |"]
    # Functions with the same rows share them.
    same = collections.defaultdict(list)
    for name in with_calls:
        rows = tuple((call, *row) for call, answers_of in sorted(functions[name].items())
                     for row in describe(answers_of, pages[call]))
        same[rows].append(f"`{name}`")
    for rows, names in same.items():
        shown_names = ", ".join(names)
        shown_call = ""
        for call, errors, answers in rows:
            lines.append(f"| {shown_names} | {'' if call == shown_call else f'`{call}`'} | {errors} | {answers} |")
            shown_names = ""
            shown_call = call
    listed = ", ".join(f"`{name}`" for name in without_calls)
    lines += ["", "## Functions without system calls", "",
              *textwrap.wrap(listed + ".", 120, break_long_words=False, break_on_hyphens=False)]
    return "\n".join(lines) + "\n"


def main():
    record = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else ROOT / "build/release/failing_calls.txt"
    PAGE.parent.mkdir(exist_ok=True)
    PAGE.write_text(page_of(record))


if __name__ == "__main__":
    main()
