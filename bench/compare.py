#!/usr/bin/env python3
"""Runs all benchmarks and writes docs/PERFORMANCE.md and docs/performance_growth.svg with its figures.

usage: bench/compare.py [--quick] [--runs N] [--repetitions N] [--programs DIRECTORY] [--report]

Builds the preset "bench" first, unless --programs names a directory of programs that are already built. All programs
run three times, one after another. The time of a row is the median of the runs, and that of a run is the median of its
repetitions. The repetitions of all rows of a program run in random order. An aim is met if every run meets it. The
script rewrites only the blocks of PERFORMANCE.md between the "generated" marks.
"""
import argparse
import datetime
import json
import math
import os
import pathlib
import platform
import re
import statistics
import subprocess
import sys
import tempfile
import textwrap

sys.dont_write_bytecode = True  # the source tree stays clean
import growth_plot  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parent.parent
OURS = "zn_udf"
BASELINE = "baseline:"
NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
DOUBLINGS = 6  # the last sizes of a growth row, which determine its exponent
STEEP = 1.15  # the report names rows with a larger exponent
SIMILAR = 0.05  # relative difference up to which two times count as similar
UNEQUAL = {"libnova"}  # peers that compute more than the library does, left out of the summary
WIDTH = 120  # columns of the report's text

# The Debian packages whose versions the report lists.
PACKAGES = ["libc6", "libstdc++6", "libexpat1", "libabsl-dev", "libboost-dev", "libfmt-dev",
            "libhowardhinnant-date-dev", "libnova-dev", "libpugixml-dev", "libre2-dev", "libtinyxml2-dev", "xxd",
            "coreutils", "libbenchmark-dev"]

WHO = {
    "bare_expat": "bare expat",
    "boost_asio": "boost::asio",
    "boost_replace_first_copy": "boost::replace_first_copy",
    "boost_split": "boost::split",
    "cin_getline": "std::cin, getline",
    "cout_endl": "std::cout, endl",
    "date": "Hinnant's date",
    "empty_library": "empty library",
    "erase_remove": "erase-remove",
    "expat_alone": "expat alone",
    "expat_and_map": "bare expat and a map",
    "expat_without_callbacks": "expat without callbacks",
    "find_replace": "find, replace",
    "find_without_copy": "find without a copy",
    "fork_exec": "fork, exec",
    "gmtime_r_strftime": "gmtime_r, strftime",
    "hand_loop": "hand-written loop",
    "localtime_r_strftime": "localtime_r, strftime",
    "localtime_strftime": "localtime, strftime",
    "no_library": "no library",
    "printf_fflush": "printf, fflush",
    "pugixml_and_fsync": "pugixml and fsync",
    "push_back_loop": "push_back loop",
    "read_write": "read, write",
    "readdir_RE2": "readdir with RE2",
    "readdir_find": "readdir with find",
    "readdir_std_regex": "readdir with std::regex",
    "result_alone": "result alone",
    "std_copy_file": "std::filesystem::copy_file",
    "std_directory_iterator": "std::filesystem::directory_iterator",
    "std_filesystem_path": "std::filesystem::path",
    "strptime_strftime": "strptime, strftime",
    "trigonometry": "trigonometry alone",
    "write_and_fsync": "write and fsync",
}


def plain_name(who):
    """Returns the common spelling of an implementation, the second part of a row's name."""
    who = who.removeprefix(BASELINE)
    return WHO.get(who) or re.sub("^(absl|std)_", r"\1::", who)


# ---- Measurement

class Section:
    def __init__(self, program, heading):
        self.program, self.heading, self.rows = program, heading, []


class Row:
    def __init__(self, name, words, rest):
        self.name, self.words, self.rest = name, words, rest

    def aims(self):
        for aim in filter(None, (part.strip() for part in self.rest.split(","))):
            who, bound = aim.split()
            yield who, float(bound)


def read_rows():
    sections = []
    for line in (ROOT / "bench/rows.txt").read_text().splitlines():
        heading = re.fullmatch(r"\[(\w+)\] (.*)", line)
        if heading:
            sections.append(Section(*heading.groups()))
        elif line and not line.startswith("#"):
            name, words, rest = (line.split(" | ") + [""])[:3]
            sections[-1].rows.append(Row(name.strip(), words.strip(), rest.strip()))
    return sections


def build():
    for command in (["cmake", "--preset", "bench"], ["cmake", "--build", "--preset", "bench"]):
        subprocess.run(command, cwd=ROOT, check=True)
    return ROOT / "build/bench/bench"


def run_program(program, rows, repetitions, seconds):
    """Returns the JSON of the rows of `program` that the filter `rows` selects, or None if it selects none."""
    command = [program, f"--benchmark_filter={rows}", f"--benchmark_repetitions={repetitions}",
               f"--benchmark_min_time={seconds}", "--benchmark_enable_random_interleaving=true",
               "--benchmark_format=json"]
    done = subprocess.run(command, capture_output=True, text=True)
    if done.returncode != 0:
        raise SystemExit(f"{program.name} failed:\n{done.stderr}")
    return json.loads(done.stdout) if done.stdout.strip() else None


def run_once(programs, sections, options):
    results = []
    families = [section.program for section in sections if section.program != "growth"]
    for number, family in enumerate(families, 1):
        print(f"[{number}/{len(families)}] {family}", file=sys.stderr)
        program = programs / f"{family}_bench"
        results.append(run_program(program, "-^growth_", options.repetitions, 0.01 if options.quick else 0.15))
        # A growth row has many sizes, so each size needs fewer repetitions.
        results.append(run_program(program, "^growth_", 1, 0.01 if options.quick else 0.05))
    return [result for result in results if result is not None]


class Figures:
    """Holds the time of each row in nanoseconds, and its counters."""

    def __init__(self, times, counters):
        self.times, self.counters = times, counters

    def time(self, what, who):
        return self.times.get((what, who, None))

    def peak(self, what, who):
        return self.counters.get((what, who, "peak_MiB"))

    def peak_above_idle(self, what, who):
        """Returns the peak of a row without the memory of a process that does nothing."""
        peak = self.peak(what, who)
        return None if peak is None else peak - self.peak("memory_nothing", OURS)

    def compared(self, what, who):
        """Returns the two figures that the aim of a row compares: times, or peaks of memory in MiB."""
        if not what.startswith("memory_"):
            return self.time(what, OURS), self.time(what, who)
        if who == "input":
            return self.peak(what, OURS), self.counters.get((what, OURS, "input_MiB"))
        return self.peak_above_idle(what, OURS), self.peak_above_idle(what, who)


class Run(Figures):
    """Holds the medians of the repetitions in one run of all programs."""

    def __init__(self, results):
        times, counters, self.orders = {}, {}, {}
        for entry in (entry for result in results for entry in result["benchmarks"]):
            what, who, *options = entry["run_name"].split("/")
            if entry.get("aggregate_name") == "BigO":
                self.orders[what] = entry["big_o"]
            if entry["run_type"] != "iteration":
                continue
            if entry.get("error_occurred"):
                raise SystemExit(f"{entry['run_name']}: {entry['error_message']}")
            size = next((int(option) for option in options if option.isdigit()), None)
            clock = "real_time" if "real_time" in options else "cpu_time"
            times.setdefault((what, who, size), []).append(entry[clock] * NANOSECONDS[entry["time_unit"]])
            for counter in ("peak_MiB", "input_MiB"):
                if counter in entry:
                    counters.setdefault((what, who, counter), []).append(entry[counter])
        super().__init__({key: statistics.median(values) for key, values in times.items()},
                         {key: statistics.median(values) for key, values in counters.items()})
        self.repetitions = min(len(values) for (what, _, _), values in times.items() if not what.startswith("growth_"))


class Measured(Figures):
    """Holds the medians of the runs."""

    def __init__(self, runs):
        self.runs = [Run(results) for results in runs]
        super().__init__(self.medians([run.times for run in self.runs]),
                         self.medians([run.counters for run in self.runs]))
        self.orders = self.runs[0].orders
        self.repetitions = min(run.repetitions for run in self.runs)

    @staticmethod
    def medians(values):
        return {key: statistics.median(value[key] for value in values) for key in values[0]}

    def worst_ratio(self, what, who):
        """Returns the largest ratio of our figure to the other one in any run."""
        return max(ours / theirs for ours, theirs in (run.compared(what, who) for run in self.runs))

    def fastest(self, what, is_wanted):
        found = [(time, who) for (row, who, size), time in self.times.items()
                 if row == what and size is None and who != OURS and is_wanted(who)]
        return min(found, default=(None, None))

    def points(self, what):
        return sorted((size, time) for (row, _, size), time in self.times.items() if row == what)


# ---- Report

def figure_text(row, figure):
    return f"{figure:.1f} MiB" if row.name.startswith("memory_") and figure is not None else time_text(figure)


def time_text(nanoseconds):
    if nanoseconds is None:
        return ""
    for unit, scale in (("ns", 1.0), ("µs", 1e3), ("ms", 1e6), ("s", 1e9)):
        if nanoseconds < 999.5 * scale or unit == "s":
            value = nanoseconds / scale
            return f"{value:.{max(0, 2 - int(math.log10(max(value, 1))))}f} {unit}"


def ratio_text(ours, theirs):
    if ours is None or theirs is None:
        return ""
    return f"{ours / theirs:.2f}" if ours >= 0.1 * theirs else f"{ours / theirs:.1g}"


def table(head, rows):
    right = [all(re.match(r"[-\d.]*( \S+)?$", row[i]) for row in rows) and i > 0 for i in range(len(head))]
    lines = ["| " + " | ".join(head) + " |", "|" + "|".join(" ---: " if r else " --- " for r in right) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows])


def first_line(command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()[0]
    except (OSError, subprocess.CalledProcessError, IndexError):
        return ""


def cpu_model():
    try:
        text = pathlib.Path("/proc/cpuinfo").read_text()
    except OSError:
        return platform.processor()
    model = re.search(r"model name\s*: (.*)", text)
    return (model.group(1) if model else platform.processor()) + (
        ", in a virtual machine" if re.search(r"flags.*\bhypervisor\b", text) else "")


def compiler(programs):
    cache = (programs.parent / "CMakeCache.txt").read_text()
    path = re.search(r"CMAKE_CXX_COMPILER:\w+=(.*)", cache).group(1)
    kind = re.search(r"CMAKE_BUILD_TYPE:\w+=(.*)", cache).group(1)
    return f"{first_line([path, '--version'])}, {kind}"


def file_system():
    """Returns the type of the file system that holds the benchmarks' files."""
    try:
        return subprocess.run(["df", "--output=fstype", tempfile.gettempdir()], capture_output=True, text=True,
                              check=True).stdout.split()[-1]
    except (OSError, subprocess.CalledProcessError):
        return "an unknown file system"


def versions():
    for package in PACKAGES:
        version = first_line(["dpkg-query", "-W", "-f=${Version}\n", package])
        if version:
            yield f"{package} {version}"


def bullets(lines):
    return "\n".join(textwrap.fill(line, WIDTH, initial_indent="- ", subsequent_indent="  ", break_long_words=False,
                                   break_on_hyphens=False) for line in lines)


def machine_text(runs, measured, programs):
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    load = runs[0][0]["context"].get("load_avg", [0.0])[0]
    system = platform.freedesktop_os_release().get("PRETTY_NAME", "") if sys.version_info >= (3, 10) else ""
    lines = [
        f"Date: {datetime.date.today().isoformat()}; medians of {len(runs)} runs with "
        f"{measured.repetitions} repetitions each",
        f"Processor: {cpu_model()}; {os.cpu_count()} processors, {memory:.0f} GiB; "
        f"load average {load:.1f} at the start",
        f"System: {system}, {platform.system()} {platform.release()}; files on {file_system()}",
        f"Compiler: {compiler(programs)}",
        f"Packages: {', '.join(versions())}",
    ]
    if load > 0.5 * os.cpu_count():
        lines.append("**The machine was busy: these times are not reliable.**")
    return bullets(lines)


def aim_rows(sections, measured):
    """Yields the cells of the table of aims: work, peer, two figures, two ratios, aim, whether the aim is met."""
    for row in (row for section in sections if section.program != "growth" for row in section.rows):
        for who, bound in row.aims():
            ours, theirs = measured.compared(row.name, who)
            worst, met = None, "not measured"
            if ours is not None and theirs is not None:
                worst = measured.worst_ratio(row.name, who)
                met = "yes" if worst <= bound else "**no**"
            words = f"memory to {row.words}" if row.name.startswith("memory_") else row.words
            yield [words, plain_name(who), figure_text(row, ours), figure_text(row, theirs), ratio_text(ours, theirs),
                   ratio_text(worst, 1), str(bound), met]


def aims_text(sections, measured):
    rows = list(aim_rows(sections, measured))
    missing = sum(row[-1] == "not measured" for row in rows)
    unmeasured = f" {missing} were not measured." if missing else ""
    return f"{aims_met(rows)}{unmeasured}\n\n" + table(
        ["Work", "Peer", "Ours", "Peer's", "Ratio", "Worst", "Aim", "Met"], rows)


def aims_met(rows):
    met = sum(row[-1] == "yes" for row in rows)
    missed = sum(row[-1] == "**no**" for row in rows)
    return f"The library meets {met} of its {met + missed} aims in every run."


def summary_text(by_program, sections, measured):
    """Returns the results in a few sentences."""
    ratios = []  # of our time to the fastest peer's, with the work and the peer
    for row in (row for section in sections if section.program not in ("memory", "growth") for row in section.rows):
        ours = measured.time(row.name, OURS)
        peer, peer_name = measured.fastest(row.name, lambda who: not who.startswith(BASELINE) and who not in UNEQUAL)
        if ours and peer:
            ratios.append((ours / peer, row.words, plain_name(peer_name)))
    faster = sum(ratio < 1 - SIMILAR for ratio, _, _ in ratios)
    slower = sum(ratio > 1 + SIMILAR for ratio, _, _ in ratios)
    slowest = [f"{words} ({ratio:.2f}, {peer})" for ratio, words, peer in sorted(ratios, reverse=True)[:3]]
    aims = list(aim_rows(sections, measured))
    missed = {}  # the peers of each work with a missed aim
    for row in (row for row in aims if row[-1] == "**no**"):
        missed.setdefault(row[0], []).append(row[1])
    missed = [f"{words} ({', '.join(peers)})" for words, peers in missed.items()]
    misses = f" It misses these, with the peer in parentheses: {'; '.join(missed)}." if missed else ""
    lines = [aims_met(aims) + misses,
             f"The library is faster than the fastest peer in {faster} of {len(ratios)} comparisons, "
             f"slower in {slower}, and within {100 * SIMILAR:.0f} % of it in {len(ratios) - faster - slower}.",
             f"The largest ratios of our time to the fastest peer's are: {'; '.join(slowest)}."]
    start, empty = measured.time("startup", OURS), measured.time("startup", "empty_library")
    if start and empty:
        lines.append(f"An empty program that links the library takes {time_text(start)} from exec to exit, "
                     f"{ratio_text(start, empty)} times as long as with an empty library.")
    peaks = [peak_over_result(row, measured) for row in by_program["memory"].rows[1:]]
    lines.append(f"Peak memory is {min(peaks):.2f} to {max(peaks):.2f} times the memory of the result alone.")
    powers = [power for _, power in exponents(by_program, measured)]
    lines.append(f"The exponents of growth at large sizes lie between {min(powers):.2f} and {max(powers):.2f}, "
                 "where 1 is linear. "
                 f"Plain copying of text has the exponent {exponent(measured.points('growth_copy')):.2f}.")
    return bullets(lines)


def rows_text(sections, measured):
    texts = []
    for section in sections:
        if section.program in ("memory", "growth"):
            continue
        rows = []
        for row in section.rows:
            ours = measured.time(row.name, OURS)
            peer, peer_name = measured.fastest(row.name, lambda who: not who.startswith(BASELINE))
            baseline, baseline_name = measured.fastest(row.name, lambda who: who.startswith(BASELINE))
            rows.append([row.words, time_text(ours), plain_name(peer_name or "none"), time_text(peer),
                         ratio_text(ours, peer), plain_name(baseline_name or "none"), time_text(baseline),
                         ratio_text(ours, baseline)])
        head = ["Work", "Ours", "Best peer", "Time", "Ours / peer", "Baseline", "Time", "Ours / baseline"]
        texts.append(f"### {section.heading}\n\n" + table(head, rows))
    return "\n\n".join(texts)


def result_alone(row, measured):
    """Returns the implementation that holds the result of the row and nothing else."""
    return next(who for (what, who, _) in measured.counters if what == row.name and who.startswith(BASELINE))


def peak_over_result(row, measured):
    """Returns the ratio of two peaks, without the memory of a process that does nothing."""
    ours, alone = measured.compared(row.name, result_alone(row, measured))
    return ours / alone


def memory_text(section, measured):
    idle = measured.peak("memory_nothing", OURS)
    rows = []
    for row in section.rows[1:]:
        ours, alone = measured.peak(row.name, OURS), result_alone(row, measured)
        peers = [f"{plain_name(who)} {measured.peak(row.name, who):.1f}" for (what, who, counter) in measured.counters
                 if what == row.name and counter == "peak_MiB" and who not in (OURS, alone)]
        size = measured.counters.get((row.name, OURS, "input_MiB"))
        rows.append([row.words, f"{size:.1f}" if size else "", f"{ours:.1f}", f"{ours / size:.2f}" if size else "",
                     f"{measured.peak(row.name, alone):.1f}", f"{peak_over_result(row, measured):.2f}",
                     ", ".join(peers)])
    head = ["Work", "Input", "Our peak", "Peak / input", "Peak of the result alone", "Ours / result alone", "Peers"]
    return (f"All sizes are in MiB. A process that does nothing uses {idle:.1f}; "
            "the ratio to the result alone excludes this amount.\n\n" + table(head, rows))


def exponent(points):
    """Returns the exponent of growth over the last doublings; 1 is linear."""
    (first, early), (last, late) = points[-1 - min(DOUBLINGS, len(points) - 1)], points[-1]
    return math.log(late / early) / math.log(last / first)


def exponents(by_program, measured):
    """Returns the growth rows with their exponents, except the row that copies text for comparison."""
    rows = by_program["growth"].rows
    for row in rows:
        if len(measured.points(row.name)) < 2:
            raise SystemExit(f"{row.name}: no growth was measured")
    return [(row, exponent(measured.points(row.name))) for row in rows if row.name != "growth_copy"]


def growth_text(by_program, measured):
    steep = [f"{row.words} ({power:.2f})" for row, power in exponents(by_program, measured) if power > STEEP]
    rows = []
    for row in by_program["growth"].rows:
        points = measured.points(row.name)
        rows.append([row.words, f"{points[0][0]:,} to {points[-1][0]:,} {row.rest}", time_text(points[0][1]),
                     time_text(points[-1][1]), f"{points[-1][1] / points[-1][0]:.2f} ns",
                     measured.orders.get(row.name, ""), f"{exponent(points):.2f}"])
    named = (f"Superlinear at large sizes: {', '.join(steep) or 'nothing'}. "
             f"Plain copying of text has the exponent {exponent(measured.points('growth_copy')):.2f}.")
    return table(["Work", "Sizes", "Time, smallest", "Time, largest", "Per unit, largest", "Best fit", "Exponent"],
                 rows) + "\n\n" + textwrap.fill(named, WIDTH)


def fill(text, name, content):
    """Returns `text` with `content` between the marks of that name."""
    marks = re.compile(rf"(<!-- generated: {name} -->\n).*?(\n?<!-- end -->)", re.DOTALL)
    if len(marks.findall(text)) != 1:
        raise SystemExit(f"docs/PERFORMANCE.md must contain one pair of marks for {name}")
    return marks.sub(lambda match: match.group(1) + content + "\n<!-- end -->", text)


def unknown_rows(sections, measured):
    known = {row.name for section in sections for row in section.rows}
    return sorted({what for (what, _, _) in measured.times} - known)


def write_report(runs, sections, programs, directory):
    measured = Measured(runs)
    for what in unknown_rows(sections, measured):
        print(f"bench/rows.txt has no row {what}", file=sys.stderr)
    by_program = {section.program: section for section in sections}
    text = (ROOT / "docs/PERFORMANCE.md").read_text()
    for name, content in (("summary", summary_text(by_program, sections, measured)),
                          ("machine", machine_text(runs, measured, programs)),
                          ("aims", aims_text(sections, measured)),
                          ("rows", rows_text(sections, measured)),
                          ("memory", memory_text(by_program["memory"], measured)),
                          ("growth", growth_text(by_program, measured))):
        text = fill(text, name, content)
    directory.mkdir(parents=True, exist_ok=True)
    (directory / "PERFORMANCE.md").write_text(text)
    panels = [(row.words, row.rest, [(size, float(f"{time:.4g}")) for size, time in measured.points(row.name)])
              for row in by_program["growth"].rows]
    figures = directory / "performance_growth.json"
    figures.write_text("[\n" + ",\n".join(json.dumps(panel) for panel in panels) + "\n]\n")
    picture = figures.with_suffix(".svg")
    picture.write_text(growth_plot.svg(panels))
    print(f"Wrote {directory / 'PERFORMANCE.md'}, {figures} and {picture}")
    print(growth_text(by_program, measured))
    for row in aim_rows(sections, measured):
        if row[-1] != "yes":
            outcome = "missed" if row[-1] == "**no**" else row[-1]
            print(f"aim {outcome}: {row[0]}: {row[4] or '?'} of {row[1]}, {row[5] or '?'} in the worst run, "
                  f"aim {row[6]}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--quick", action="store_true",
                        help="run a short smoke test and write its report to the build tree instead of docs")
    parser.add_argument("--runs", type=int, default=3, help="runs of all programs (default: 3)")
    parser.add_argument("--repetitions", type=int, default=3, help="repetitions of each row in a run (default: 3)")
    parser.add_argument("--programs", type=pathlib.Path, help="directory of programs that are already built")
    parser.add_argument("--report", action="store_true", help="run nothing, write the report of the last run again")
    options = parser.parse_args()
    if options.quick:
        options.runs, options.repetitions = 1, min(options.repetitions, 2)

    sections = read_rows()
    programs = options.programs or (ROOT / "build/bench/bench" if options.report else build())
    programs = programs.resolve()
    kept = programs / ("quick_results.json" if options.quick else "results.json")
    if not options.report:
        runs = []
        for number in range(1, options.runs + 1):
            print(f"Run {number} of {options.runs}", file=sys.stderr)
            runs.append(run_once(programs, sections, options))
        kept.write_text(json.dumps(runs))
    write_report(json.loads(kept.read_text()), sections, programs, programs if options.quick else ROOT / "docs")


if __name__ == "__main__":
    main()
