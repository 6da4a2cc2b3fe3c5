#!/usr/bin/env python3
"""Compares the instructions of one call of each counted row with bench/instructions.txt.

usage: bench/instructions.py (--programs DIRECTORY | --measured FILE) [--counts FILE] [--renew]

The exit status is 0 if no row has grown by more than 3 %, 77 if the file has no counts for this toolchain, so that
nothing was compared, and 1 otherwise. `bench/instructions` builds the programs and runs this script.
"""
import argparse
import concurrent.futures
import os
import pathlib
import platform
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
COUNTS = ROOT / "bench/instructions.txt"
TOLERANCE = 0.03
COMPARED_NOTHING = 77
RENEW = "bench/instructions --renew"

HEADER = f"""\
# The instructions of one call of each row, as callgrind counts them. `{RENEW}` rewrites the section
# of the toolchain that it runs with. The counts of a section hold for the versions in its name.
"""

# The C library chooses functions by the processor. These settings leave it those that every x86-64 processor has, so
# that the counts are the same on every machine.
TUNABLES = "glibc.cpu.hwcaps=" + ",".join(
    "-" + feature for feature in ("AVX", "AVX2", "AVX_Fast_Unaligned_Load", "BMI2", "ERMS", "FMA",
                                  "Fast_Unaligned_Copy", "SSE4_2", "SSSE3"))
ENVIRONMENT = {"GLIBC_TUNABLES": TUNABLES, "LC_ALL": "C", "PATH": os.environ["PATH"], "TZ": "UTC0"}


def read_counts(file):
    """Returns the counts of each section: {toolchain: {row: count}}."""
    sections, rows = {}, None
    for line in file.read_text().splitlines() if file.exists() else []:
        if line.startswith("["):
            rows = sections.setdefault(line.strip("[]"), {})
        elif line and not line.startswith("#"):
            row, count = line.split()
            rows[row] = int(count)
    return sections


def write_counts(file, sections):
    texts = [f"[{toolchain}]\n" + "".join(f"{row} {count}\n" for row, count in sorted(rows.items()))
             for toolchain, rows in sorted(sections.items())]
    file.write_text("\n".join([HEADER] + texts))


# ---- Measurement

def output_of(command, library=None):
    environment = {**ENVIRONMENT, "LD_LIBRARY_PATH": str(library)} if library else ENVIRONMENT
    done = subprocess.run(command, env=environment, capture_output=True, text=True)
    if done.returncode != 0:
        raise SystemExit(f"{' '.join(map(str, command))} failed:\n{done.stdout}{done.stderr}")
    return done.stdout.strip()


def counts_of(program, library=None):
    """Returns the counts of the rows of `program`, with the library in the directory `library` if given. The empty
    program is a row as a whole."""
    is_empty = not program.name.endswith("_instructions")
    with tempfile.TemporaryDirectory() as directory:
        out = pathlib.Path(directory) / "out"
        output_of(["valgrind", "-q", "--tool=callgrind", f"--instr-atstart={'yes' if is_empty else 'no'}",
                   f"--callgrind-out-file={out}", program], library)
        counts = {}
        for dump in pathlib.Path(directory).iterdir():
            text = dump.read_text()
            row = re.search(r"^desc: Trigger: Client Request: (\S+)$", text, re.MULTILINE)
            if row or is_empty:
                counts[row.group(1) if row else "startup"] = int(re.search(r"^totals: (\d+)$", text,
                                                                            re.MULTILINE).group(1))
    if not counts:
        raise SystemExit(f"{program} has no rows")
    return counts


def measure(programs):
    """Returns the toolchain and the counts of all rows."""
    counted = sorted(programs.glob("*_instructions"))
    if not counted:
        raise SystemExit(f"{programs} contains no programs that count")
    toolchain = ", ".join([platform.machine(), output_of([counted[0], "--toolchain"]),
                           output_of(["valgrind", "--version"]).replace("-", " ", 1)])
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        rows = {}
        for counts in pool.map(counts_of, counted + [programs / "startup_with_library"]):
            rows.update(counts)
    return toolchain, rows


# ---- Comparison

def compare(listed, measured):
    """Prints the rows that differ, and returns whether the measured counts pass."""
    failures, shrunk = [], []
    for row in sorted(listed.keys() | measured.keys()):
        if row not in measured:
            failures.append(f"{row}: is listed, but was not counted")
        elif row not in listed:
            failures.append(f"{row}: was counted ({measured[row]:,}), but is not listed")
        else:
            old, new = listed[row], measured[row]
            change = f"{row}: {old:,} -> {new:,} instructions ({100 * (new - old) / old:+.1f} %)"
            if new > old * (1 + TOLERANCE):
                failures.append(change)
            elif new < old * (1 - TOLERANCE):
                shrunk.append(change)
    if shrunk:
        print(f"Fewer instructions; `{RENEW}` keeps the gain:")
        print("".join(f"  {line}\n" for line in shrunk), end="")
    if failures:
        print(f"FAILED: {len(failures)} of {len(measured)} rows. If this is intended, `{RENEW}` lists the new counts:")
        print("".join(f"  {line}\n" for line in failures), end="")
    else:
        print(f"Compared the instructions of {len(measured)} rows: none has grown by more than {TOLERANCE:.0%}")
    return not failures


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    source = parser.add_mutually_exclusive_group(required=True)
    source.add_argument("--programs", type=pathlib.Path, help="directory of the programs that count")
    source.add_argument("--measured", type=pathlib.Path, help="file with one section, which is compared instead")
    parser.add_argument("--counts", type=pathlib.Path, default=COUNTS, help="file of listed counts")
    parser.add_argument("--renew", action="store_true", help="write the counts to the file, compare nothing")
    options = parser.parse_args()

    if options.measured:
        (toolchain, measured), = read_counts(options.measured).items()
    else:
        toolchain, measured = measure(options.programs.resolve())
    sections = read_counts(options.counts)
    if options.renew:
        sections[toolchain] = measured
        write_counts(options.counts, sections)
        print(f"Wrote the instructions of {len(measured)} rows to {options.counts}")
    elif toolchain not in sections:
        print(f"COMPARED NOTHING: {options.counts} has no counts for {toolchain}, only for:")
        print("".join(f"  {known}\n" for known in sections), end="")
        return COMPARED_NOTHING
    elif not compare(sections[toolchain], measured):
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
