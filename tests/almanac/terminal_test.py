#!/usr/bin/env python3
"""Tests the example program almanac on a pseudo-terminal: the width of its table, and colours.

usage: terminal_test.py PATH_TO_ALMANAC
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import pseudo_terminal  # noqa: E402

ALMANAC = os.path.abspath(sys.argv.pop())
COLOUR = re.compile(rb"\x1b\[33m(#+)\x1b\[0m")
BARS = [  # columns of the terminal, marks of the bar with ISO dates
    (200, 24), (80, 24), (79, 12), (68, 12), (67, 8), (64, 8), (63, 6), (62, 6), (61, 0), (54, 0), (20, 0), (1, 0)]
DAYS = ["--latitude", "52", "--from", "2026-01-01", "--days", "366"]
WEEK = ["--latitude", "52", "--from", "2026-06-01"]


class Terminal(unittest.TestCase):
    def setUp(self):
        self.home = tempfile.TemporaryDirectory()
        self.addCleanup(self.home.cleanup)

    def environment(self, changes):
        """Returns the environment of the program. A change to None removes a variable."""
        variables = {**os.environ, "HOME": self.home.name, "TERM": "xterm"}
        for name in ["COLUMNS", "NO_COLOR", "XDG_CONFIG_HOME"]:
            variables.pop(name, None)
        variables.update(changes)
        return {name: value for name, value in variables.items() if value is not None}

    def on_terminal(self, arguments, columns=80, **changes):
        """Returns what the program writes to a terminal of this width."""
        output, status = pseudo_terminal.run([ALMANAC, *arguments], columns, self.environment(changes))
        self.assertEqual(status, 0, arguments)
        return output.replace(b"\r\n", b"\n")

    def to_pipe(self, arguments, **changes):
        return subprocess.run([ALMANAC, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=True,
                              env=self.environment(changes)).stdout

    def check_bar(self, row, marks):
        """Checks that a row ends with a bar of this many marks, which matches the length of the day."""
        fields = row.split()
        if marks == 0:
            self.assertRegex(row, r"%$")
            return
        bar = fields[-1]
        self.assertRegex(bar, "^#*[.]*$")
        self.assertEqual(len(bar), marks)
        minutes_per_mark = 24 * 60 // marks
        hours, minutes = fields[1].split(":")
        difference = bar.count("#") * minutes_per_mark - (int(hours) * 60 + int(minutes))
        # The printed length has no seconds.
        self.assertLessEqual(abs(difference), minutes_per_mark // 2 + 1, row)

    def test_rows_fit_the_terminal(self):
        whole = self.to_pipe(DAYS).decode().splitlines()
        for columns, marks in BARS:
            with self.subTest(columns=columns):
                rows = self.on_terminal(DAYS, columns, NO_COLOR="1").decode().splitlines()
                self.assertEqual(len(rows), 366)
                for row, whole_row in zip(rows, whole):
                    self.assertEqual(row[:54], whole_row[:54])
                    self.check_bar(row, marks)
                    if columns >= 54:
                        self.assertLessEqual(len(row), columns)

    def test_wide_dates_leave_less_room(self):
        dates = ["--format", "full", "--order", "dmy"]
        for columns, marks in [(87, 24), (86, 12), (80, 12), (61, 0)]:
            with self.subTest(columns=columns):
                rows = self.on_terminal([*WEEK, *dates], columns, NO_COLOR="1").decode().splitlines()
                self.assertEqual({len(row) for row in rows}, {61 + (marks + 2 if marks else 0)})

    def test_headings_of_the_bar(self):
        headings = "date         day length   change  moon             lit"
        for columns, hours in [(80, "  0     6     12    18"), (79, "  0  6  12 18"), (67, "  0   12"),
                               (63, "  0  12"), (61, "")]:
            with self.subTest(columns=columns):
                rows = self.on_terminal([*WEEK, "--verbose"], columns).decode().splitlines()
                self.assertEqual(rows[1], headings + hours)

    def test_width_of_columns_variable(self):
        for variable, columns, marks in [("100", 40, 24), ("60", 200, 0), ("79", 0, 12), ("", 79, 12), ("0", 79, 12),
                                         ("-5", 79, 12), ("80x", 79, 12), ("99999999999", 79, 12)]:
            with self.subTest(COLUMNS=variable):
                for row in self.on_terminal(WEEK, columns, NO_COLOR="1", COLUMNS=variable).decode().splitlines():
                    self.check_bar(row, marks)

    def test_unknown_width(self):
        self.assertEqual(self.on_terminal(WEEK, 0, NO_COLOR="1"), self.to_pipe(WEEK))

    def test_colours(self):
        plain = self.to_pipe(WEEK)
        for changes, expected in [({}, True), ({"NO_COLOR": ""}, True), ({"NO_COLOR": "1"}, False),
                                  ({"NO_COLOR": "0"}, False), ({"TERM": "dumb"}, False), ({"TERM": ""}, False),
                                  ({"TERM": None}, False), ({"TERM": "vt100"}, True)]:
            with self.subTest(changes=changes):
                output = self.on_terminal(WEEK, **changes)
                uncoloured, bars = COLOUR.subn(rb"\1", output)
                self.assertEqual(bars, 7 if expected else 0)
                self.assertEqual(uncoloured, plain)

    def test_colours_only_for_daylight(self):
        self.assertNotIn(b"\x1b", self.on_terminal(["--latitude", "80", "--from", "2026-12-20"]))
        whole = b"  \x1b[33m" + b"#" * 24 + b"\x1b[0m\n"
        self.assertIn(whole, self.on_terminal(["--latitude", "80", "--from", "2026-06-20"]))

    def test_pipe_and_file_are_not_a_terminal(self):
        plain = self.to_pipe(WEEK)
        self.assertNotIn(b"\x1b", plain)
        self.assertEqual(self.to_pipe(WEEK, COLUMNS="60"), plain)
        file = self.home.name + "/table"
        self.assertEqual(self.on_terminal([*WEEK, "--output", file], 60), b"")
        with open(file, "rb") as table:
            self.assertEqual(table.read(), plain)

    def test_picture(self):
        file = self.home.name + "/picture"
        self.to_pipe([*WEEK, "--svg", file])
        with open(file, "rb") as picture:
            self.assertEqual(self.on_terminal([*WEEK, "--svg", "-"], 60), picture.read())


if __name__ == "__main__":
    unittest.main()
