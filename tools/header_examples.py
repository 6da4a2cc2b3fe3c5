#!/usr/bin/env python3
"""Runs the examples in the comments of the public headers, and fills in the cheat sheet from them.

usage: tools/header_examples.py run INCLUDE_DIR FILES_DIR LIBRARY_DIR COMPILER [FLAG]...
       tools/header_examples.py cheatsheet [--write]

An example is the indented code of a `///` comment. Each of its lines is a statement or an expression with its result:

    statement;
    statement;                       // a remark
    statement;                       // standard output: one line
    statement;                       // standard output:
    // each line of the output
    expression  ->  result           // a remark
    statement; expression  ->  result

"standard error" stands for the other stream. A statement may span several lines. A result is a C++ expression; a
floating-point number is compared with as many decimals as are shown. A remark that begins with "for instance" says that
the result or output differs from run to run: the line is run, but nothing is compared. A fenced block contains XML.

`run` compiles the examples of each header into one program. It begins with the example of the file comment, whose
variables the other comments may use, and includes all public headers. The program runs in a copy of the directory
FILES_DIR/STEM, if there is one, with the home directory /home/ada. It fails if a result or an output differs, if a
header has no example, if an example cannot be extracted, or if an XML block is not the text of a file in the working
directory at the end, digits apart.

`cheatsheet` compares the rows of docs/reference/cheatsheet.md with the headers, and fails if they differ or if the page
lacks an exported function. The first cell of a row, and the order of the rows, are written by hand. The others are the
first example of the first function in that cell, or the declaration of a callback without one. With --write, it writes
these cells.
"""
import dataclasses
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[1]
SHEET = ROOT / "docs/reference/cheatsheet.md"
EXPORTS = ROOT / "tests/data/exports.txt"
NAME = re.compile(r"\\(?:zn\{|xml\{|ref zn_lib::)([\w:<]+)")
STREAMS = ("standard output", "standard error")
QUOTED = re.compile(r""""(?:\\.|[^"\\])*"|'(?:\\.|[^'\\])*'""")
INDENTATION = " " * 4
TYPE = r"(?:template <[^>]*> )?(?:class|struct) (?:ZN_UDF_API )?(\w+)"
FUNCTION = r"(operator\W+|[\w~]+)\("
VARIABLE = r"(\w+)(?:\[\d*\])?(?: = .*)?;$"

PROGRAM = r"""
#include <arpa/inet.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace {

std::FILE* report;

template <class T>
std::string show(const T& value, int decimals);

template <class... T>
std::string list(const T&... value) {
  std::string text;
  ((text += (text.empty() ? "{" : ", ") + show(value, -1)), ...);
  return text + "}";
}

// Returns the value as C++ writes it. Numbers have their number of decimals, or all digits if that is negative.
template <class T>
std::string show(const T& value, int decimals) {
  if constexpr (std::is_same_v<T, bool>) {
    return value ? "true" : "false";
  } else if constexpr (std::is_same_v<T, char>) {
    return std::string("'") + value + "'";
  } else if constexpr (std::is_enum_v<T>) {
    return std::to_string(static_cast<int>(value));
  } else if constexpr (std::is_integral_v<T>) {
    return std::to_string(value);
  } else if constexpr (std::is_floating_point_v<T>) {
    char text[400];
    std::snprintf(text, sizeof text, decimals < 0 ? "%.*g" : "%.*f", decimals < 0 ? 17 : decimals, value);
    return std::isnan(value) ? "NAN" : text;
  } else if constexpr (std::is_same_v<T, const char*>) {
    return value == nullptr ? "nullptr" : show(std::string(value), decimals);
  } else if constexpr (std::is_convertible_v<const T&, std::string>) {
    std::string text;
    for (const char c : std::string(value)) {
      char code[8];
      std::snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned char>(c));
      text += c >= ' ' && c <= '~' ? std::string(1, c) : code;
    }
    return '"' + text + '"';
  } else if constexpr (std::is_same_v<T, zn_lib::name_of_file>) {
    return list(value.path, value.name, value.extension);
  } else if constexpr (std::is_same_v<T, zn_lib::date_time_record>) {
    return list(value.day, value.month, value.year, value.hour, value.minute, value.second);
  } else if constexpr (std::is_same_v<T, std::vector<std::string>>) {
    std::string text;
    for (const std::string& element : value) text += (text.empty() ? "{" : ", ") + show(element, -1);
    return text + "}";
  } else {
    std::string text;
    for (const auto& [key, element] : value) text += (text.empty() ? "{" : ", ") + list(key, element);
    return text + "}";
  }
}

// The type of a result, which may be written as "{...}".
template <class T>
struct Result {
  using Type = T;
};

template <>
struct Result<zn_lib::String> {
  using Type = std::string;
};

template <class T>
void check(int line, const T& value, const typename Result<T>::Type& expected, int decimals) {
  const std::string actual = show(value, decimals);
  if (actual != show(expected, decimals)) std::fprintf(report, "%d: the result is %s\n", line, actual.c_str());
}

// Marks the place in both streams where the output of the line begins.
void begin(int line) {
  std::cout.flush();
  std::cerr.flush();
  std::fflush(nullptr);
  dprintf(STDOUT_FILENO, "\x1e%d\n", line);
  dprintf(STDERR_FILENO, "\x1e%d\n", line);
}

}  // namespace

int main(int, char** arguments) {
  report = std::fopen(arguments[1], "w");
  using namespace zn_lib;
"""


def outside_quotes(code):
    """Returns the code with blanks for the contents of its quotes."""
    return QUOTED.sub(lambda match: '"' + " " * (len(match.group()) - 2) + '"', code)


class Unreadable(Exception):
    """A comment that does not have the form of an example."""


@dataclasses.dataclass
class Step:
    """One statement, or one expression with its result."""
    line: int
    code: str
    result: str = None
    remark: str = ""
    stream: str = None
    output: list = dataclasses.field(default_factory=list)

    def varies(self):
        return self.remark.startswith("for instance")

    def parts(self):
        """Returns the statements, and the expression after them."""
        end = len(self.code) if self.result is None else outside_quotes(self.code).rfind(";") + 1
        return self.code[:end], self.code[end:].strip()

    def decimals(self):
        fraction = re.fullmatch(r"-?\d+\.(\d+)", self.result)
        return len(fraction.group(1)) if fraction else -1


@dataclasses.dataclass
class Comment:
    """A `///` comment with its examples and the declarations that it describes."""
    line: int
    text: str = ""
    is_file_comment: bool = False
    steps: list = dataclasses.field(default_factory=list)
    xml: list = dataclasses.field(default_factory=list)  # (line, text)
    declarations: dict = dataclasses.field(default_factory=dict)  # From name to text.


def cut(text, mark):
    """Splits the text at the first mark outside of quotes. The second part is None if there is no mark."""
    start = outside_quotes(text).find(mark)
    if start < 0:
        return text.rstrip(), None
    return text[:start].rstrip(), text[start + len(mark):].strip()


def is_complete(code):
    """Returns true for a statement whose brackets are closed."""
    bare = outside_quotes(code)
    return bare.count("{") == bare.count("}") and bare.count("(") == bare.count(")") and bare[-1:] in (";", "}")


def read_steps(path, lines):
    """Returns the steps of one example: lines of code, each with its number in the header."""
    steps = []
    pending = None
    for number, line in lines:
        code, remark = cut(line.strip(), "//")
        if pending is None and not code and remark is not None:
            if not steps or steps[-1].stream is None:
                raise Unreadable(f"{path}:{number}: a line of output belongs to no statement")
            steps[-1].output.append(re.sub("^// ?", "", line.strip()).rstrip())
            continue
        code, result = cut(code, "  ->  ")
        if pending is None:
            pending = Step(number, code)
        else:
            pending.code += "\n" + code
        if result is None and not is_complete(pending.code):
            continue
        pending.result = result
        pending.remark = remark or ""
        for stream in STREAMS:
            if f"{stream}:" in pending.remark:
                pending.stream = stream
                shown = pending.remark.split(f"{stream}:", 1)[1].strip()
                pending.output = [shown.replace("<tab>", "\t")] if shown else []
        steps.append(pending)
        pending = None
    if pending is not None:
        raise Unreadable(f"{path}:{pending.line}: neither a statement nor an expression with its result: "
                         f"{pending.code}")
    return steps


def read_comment(path, lines):
    """Returns the comment that consists of these lines, each with its number in the header."""
    comment = Comment(lines[0][0], " ".join(text.strip() for _, text in lines), lines[0][1].strip() == "\\file")
    example = []
    fence = None
    for number, text in lines + [(0, "")]:
        if text.startswith("```"):
            if fence is None and text != "```xml":
                raise Unreadable(f"{path}:{number}: a block of anything but XML")
            if fence is not None:
                comment.xml.append((fence[0], "\n".join(fence[1:]) + "\n"))
            fence = [number] if fence is None else None
        elif fence is not None:
            fence.append(text)
        elif text.startswith(INDENTATION):
            example.append((number, text))
        elif example:
            comment.steps += read_steps(path, example)
            example = []
        elif "  ->  " in text:
            raise Unreadable(f"{path}:{number}: an example that is not indented")
    if fence is not None:
        raise Unreadable(f"{path}:{fence[0]}: a block without an end")
    return comment


def read_header(path):
    """Returns the comments of a header."""
    comments = []
    lines = []  # Those of the comment that is being read.
    current = None  # The comment of the next declaration.
    in_group = False
    owner = ""  # The class that is being read.
    declaration = ""
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines() + [""], start=1):
        text = re.match(r"\s*///(?!<) ?(.*)$", line)
        if text and text.group(1).strip() not in ("@{", "@}"):
            lines.append((number, text.group(1)))
            continue
        if lines:
            current = read_comment(path, lines)
            comments.append(current)
            lines = []
        if text:
            in_group = text.group(1).strip() == "@{"
            current = current if in_group else None
            continue
        if re.match(r"};", line):
            owner = ""
        declaration = f"{declaration} {line.split('//')[0].strip()}".strip()
        if declaration.startswith(("#", "namespace", "extern", "public:", "private:", "protected:")):
            declaration = re.sub(r"^(#.*|namespace.*|extern \"C\" {|(public|private|protected): ?)", "", declaration)
        if declaration[-1:] not in (";", "{", "}"):
            continue
        described = current
        if "///<" in line:
            described = Comment(number, line.split("///<")[1].strip())
            comments.append(described)
        match = re.match(TYPE, declaration) or re.search(FUNCTION, declaration) or re.search(VARIABLE, declaration)
        if match and described:
            name = match.group(1)
            described.declarations[f"{owner}::{name}" if owner else name] = declaration
        if re.match(TYPE, declaration) and declaration.endswith("{"):
            owner = match.group(1)
        if not in_group and declaration:
            current = None
        declaration = ""
    return comments


def read_headers(directory):
    """Returns the comments of each public header, by the path of the header."""
    return {path: read_header(path) for path in sorted(pathlib.Path(directory).glob("*.h"))}


def program_of(path, comments, headers):
    """Returns the C++ program that runs the examples of a header."""
    text = "".join(f"#include <{header.name}>\n" for header in headers) + PROGRAM
    for comment in sorted(comments, key=lambda comment: not comment.is_file_comment):
        if not comment.steps:
            continue
        text += "" if comment.is_file_comment else "{\n"
        for step in comment.steps:
            text += f'begin({step.line});\n#line {step.line} "{path}"\n'
            statements, expression = step.parts()
            text += f"{statements}\n"
            if step.varies() and step.result:
                text += f"show({expression}, -1);\n"
            elif step.result:
                text += f"check({step.line}, ({expression}), {step.result}, {step.decimals()});\n"
        text += "" if comment.is_file_comment else "}\n"
    return text + "begin(0);\nstd::fclose(report);\n}\n"


def output_of_steps(text):
    """Returns the output of each step, by its line."""
    parts = [part.split("\n", 1) for part in text.split("\x1e")[1:]]
    return {int(line): [line.rstrip() for line in output.removesuffix("\n").split("\n")] if output else []
            for line, output in parts}


def run_header(path, comments, headers, files, library, compiler):
    """Compiles and runs the examples of one header. Returns the number of steps, and the failures."""
    steps = [step for comment in comments for step in comment.steps]
    if not steps:
        return 0, [f"{path}:1: the header has no example"]
    with tempfile.TemporaryDirectory() as directory:
        work = pathlib.Path(directory)
        (work / "program.cpp").write_text(program_of(path, comments, headers), encoding="utf-8")
        built = subprocess.run(
            [*compiler, "-std=c++17", "-O0", f"-I{path.parent}", "program.cpp", f"-L{library}", "-lzn_udf", "-lexpat",
             f"-Wl,-rpath,{library}", "-o", "program"],
            cwd=work, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        if built.returncode != 0:
            return 0, [f"{path}:1: the examples do not compile\n{built.stdout}"]
        home = work / "files"
        if (files / path.stem).is_dir():
            shutil.copytree(files / path.stem, home)
        else:
            home.mkdir()
        run = subprocess.run([work / "program", work / "report"], cwd=home, stdin=subprocess.DEVNULL,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False,
                             env={**os.environ, "HOME": "/home/ada", "LC_ALL": "C"})
        streams = dict(zip(STREAMS, map(output_of_steps, (run.stdout, run.stderr))))
        if run.returncode != 0 or 0 not in streams["standard output"]:
            return 0, [f"{path}:1: the examples end early, with status {run.returncode}\n{run.stderr}"]
        failures = [f"{path}:{failure}" for failure in (work / "report").read_text(encoding="utf-8").splitlines()]
        for step in steps:
            for stream, outputs in streams.items():
                expected = step.output if step.stream == stream else []
                if not step.varies() and outputs[step.line] != expected:
                    failures.append(f"{path}:{step.line}: the {stream} is {outputs[step.line]}")
        written = {re.sub(r"\d", "0", file.read_text(encoding="utf-8")) for file in home.rglob("*.*") if file.is_file()}
        for comment in comments:
            failures += [f"{path}:{line}: no file has this text" for line, text in comment.xml
                         if re.sub(r"\d", "0", text) not in written]
        return len(steps), failures


def run(include, files, library, compiler):
    """Runs the examples of all headers. Returns the exit status."""
    headers = read_headers(include)
    if not headers:
        print(f"FAILED: there are no headers in {include}")
        return 1
    count = 0
    failures = []
    library = pathlib.Path(library).resolve()
    for path, comments in headers.items():
        steps, failed = run_header(path.resolve(), comments, headers, pathlib.Path(files), library, compiler)
        count += steps
        failures += failed
    for failure in failures:
        print(f"FAILED: {failure}")
    print(f"Ran {count} lines of the examples in {len(headers)} headers")
    return 1 if failures else 0


def exported_names():
    """Returns the names of the exported functions and data, without namespace, arguments and template arguments.

    A constructor is listed as its class. Hosts do not call destructors by name.
    """
    names = set()
    for line in EXPORTS.read_text(encoding="utf-8").splitlines():
        if line.startswith(("typeinfo", "vtable")):
            continue
        name = line.replace("[abi:cxx11]", "").removeprefix("zn_lib::")
        name = name.replace("operator<<", "operator_inserter").replace("operator()", "operator_call")
        while name != (name := re.sub(r"<[^<>]*>", "", name)):
            pass
        parts = name.split("(")[0].split("::")
        if parts[-1].startswith("~"):
            continue
        if parts[-1] == "operator_call" or parts[-1] == parts[-2:-1]:
            parts.pop()
        if len(parts) == 2 and parts[0] == parts[1]:
            parts.pop()
        names.add("::".join(parts).replace("operator_inserter", "operator<<"))
    return names


def mentions(code, name):
    """Returns true if the code calls the function, or names the class."""
    last = name.split("::")[-1]
    if last.startswith("operator"):
        return last.removeprefix("operator") in code
    return re.search(rf"\b{re.escape(last)}\b", code) is not None


def example_of(name, headers):
    """Returns the first step that shows the function, from the nearest comment, or None.

    The nearest comment is that of the function, then that of its class, that of the file, and any of the header.
    """
    owner = name.rpartition("::")[0]
    found = []
    for comments in headers.values():
        if not any(name in comment.declarations for comment in comments):
            continue
        for comment in comments:
            distance = (name not in comment.declarations, owner not in comment.declarations,
                        not comment.is_file_comment, comment.line)
            found += [(distance, step) for step in comment.steps
                      if mentions(step.code, name) and (step.result is not None or step.remark)]
    return min(found, key=lambda entry: (entry[0], entry[1].line))[1] if found else None


def callback_of(name, headers):
    """Returns the declaration of a virtual function and the first sentence of its comment, or None."""
    for comments in headers.values():
        for comment in comments:
            declaration = comment.declarations.get(name, "")
            if declaration.startswith("virtual "):
                return declaration, re.split(r"(?<=\.) ", comment.text)[0]
    return None


def code_cell(code):
    """Returns code for a cell of a table. Doxygen takes one backquote for a quotation mark if a "'" follows."""
    text = " ".join(code.replace("zn_lib::", "").replace("\t", "<tab>").splitlines())
    return f"``{text}``"


def cells_of(name, headers):
    """Returns the code and the result of a function. Raises KeyError if no example shows it."""
    example = example_of(name, headers)
    callback = callback_of(name, headers)
    if example is None and callback is not None:
        return code_cell(callback[0].replace("virtual ", "").replace(";", " override;")), callback[1]
    if example is None:
        raise KeyError(name)
    if example.stream:
        shown = next((line for line in example.output if line.strip()), "")
        more = " ..." if len(example.output) > 1 else ""
        return code_cell(example.code), f"{example.stream}: {code_cell(shown.strip())}{more}"
    result = [] if example.result is None else [code_cell(example.result)]
    remark = [example.remark.replace("<", "&lt;").replace("@", "\\@")] if example.remark else []
    return code_cell(example.code), ", ".join(result + remark)


def cheatsheet(is_written):
    """Compares the cheat sheet with the headers, or writes its cells. Returns the exit status."""
    headers = read_headers(ROOT / "include")
    old = SHEET.read_text(encoding="utf-8")
    lines = []
    listed = set()
    failures = []
    for line in old.splitlines():
        names = NAME.findall(line.split(" | ")[0]) if line.startswith("| \\") else []
        if names:
            listed.update(names)
            first = line.split(" | ")[0].removeprefix("| ").removesuffix(" |")
            try:
                line = f"| {first} | {' | '.join(cells_of(names[0], headers))} |"
            except KeyError:
                failures.append(f"no example shows {names[0]} with a result or a remark")
        lines.append(line)
    new = "\n".join(lines) + "\n"
    exported = exported_names()
    failures += [f"{SHEET.name} lacks {name}" for name in sorted(exported - listed)]
    if is_written:
        SHEET.write_text(new, encoding="utf-8")
    elif new != old:
        failures.append(f"{SHEET.name} differs from the headers; tools/header_examples.py cheatsheet --write renews it")
    for failure in failures:
        print(f"FAILED: {failure}")
    print(f"The cheat sheet lists {len(listed)} names; the library exports {len(exported)}")
    return 1 if failures else 0


def main(arguments):
    try:
        if len(arguments) >= 5 and arguments[0] == "run":
            return run(arguments[1], arguments[2], arguments[3], arguments[4:])
        if arguments in (["cheatsheet"], ["cheatsheet", "--write"]):
            return cheatsheet(len(arguments) == 2)
    except Unreadable as problem:
        print(f"FAILED: {problem}")
        return 1
    print(__doc__.split("\n\n")[1], file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
