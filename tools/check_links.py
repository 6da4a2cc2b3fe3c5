#!/usr/bin/env python3
"""Checks the relative links of Markdown and HTML files: the file exists, and so does what a "#..." names in it.

usage: tools/check_links.py FILE...

Prints "file:line: reason" for each broken link. Links to other sites are not followed. Exit status 1 when a link is
broken.
"""
import functools
import html.parser
import pathlib
import re
import sys
import urllib.parse

# [text](target "title"), ![alt](target), [label]: target, <a href="target">, <img src="target">
LINK = re.compile(r"""\]\(\s*<?([^)\s>]+)>?(?:\s+["'(][^)]*)?\)"""
                  r"""|^\s{0,3}\[[^\]^][^\]]*\]:\s*<?(\S+?)>?(?:\s|$)"""
                  r"""|<(?:a|img)\s[^>]*?(?:href|src)\s*=\s*["']([^"']+)["']""")
FENCE = re.compile(r"^ {0,3}(```+|~~~+)")
HEADING = re.compile(r"^ {0,3}#{1,6}\s+(.*?)(?:\s+#+)?\s*$")
UNDERLINE = re.compile(r"^ {0,3}(=+|-+)\s*$")
LABEL = re.compile(r"\{#([\w-]+)\}\s*$")
NAMED = re.compile(r"""<\w+\s[^>]*?(?:id|name)\s*=\s*["']([^"']+)["']""")
SCHEME = re.compile(r"^[A-Za-z][A-Za-z0-9+.-]*:|^//")


def prose(path):
    """The lines of the file outside of fenced code, each with its number; what is in `backquotes` is left out."""
    fence = None
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), start=1):
        mark = FENCE.match(line)
        if fence is None and mark:
            fence = mark.group(1)
        elif fence is not None:
            if mark and mark.group(1).startswith(fence):
                fence = None
        else:
            yield number, line


def without_code(line):
    return re.sub(r"(`+)(?!`).*?(?<!`)\1(?!`)", "", line)


def anchor_of(heading):
    """The name that forges give to a heading."""
    text = re.sub(r"!?\[([^\]]*)\]\([^)]*\)", r"\1", heading)
    text = re.sub(r"[^\w\- ]", "", text.strip().lower())
    return text.replace(" ", "-")


class HtmlPage(html.parser.HTMLParser):
    """Collects the links of a page, each with its line, and all that "#..." may name in it."""

    def __init__(self, text):
        super().__init__()
        self.links, self.anchors = [], set()
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        for name, value in attrs:
            if name in ("href", "src") and value:
                self.links.append((self.getpos()[0], value))
            elif name == "id" or (name == "name" and tag == "a"):
                self.anchors.add(value)


@functools.lru_cache(maxsize=None)
def html_page(path):
    return HtmlPage(path.read_text(encoding="utf-8"))


@functools.lru_cache(maxsize=None)
def anchors(path):
    """All that "#..." may name in the file."""
    if path.suffix == ".html":
        return html_page(path).anchors
    found = set()
    above = ""
    for _, line in prose(path):
        found.update(NAMED.findall(line))
        heading = HEADING.match(line)
        title = heading.group(1) if heading else above if above and UNDERLINE.match(line) else None
        above = line.strip() if not heading else ""
        if title is None:
            continue
        label = LABEL.search(title)
        if label:
            found.add(label.group(1))
            title = title[:label.start()].strip()
        name = anchor_of(title)
        # A heading that appears again gets a number.
        count, unique = 0, name
        while unique in found:
            count += 1
            unique = f"{name}-{count}"
        found.add(unique)
    return found


def links(path):
    """The links of the file, each with its line."""
    if path.suffix == ".html":
        yield from html_page(path).links
        return
    for number, line in prose(path):
        for groups in LINK.findall(without_code(line)):
            yield number, next(group for group in groups if group)


def broken_links(path):
    for number, target in links(path):
        if SCHEME.match(target):
            continue
        file_name, _, fragment = urllib.parse.unquote(target).partition("#")
        file_name = file_name.partition("?")[0]
        file = path.parent / file_name if file_name else path
        if not file.exists():
            yield number, f"{target}: no such file"
        elif fragment and file.suffix in (".md", ".html") and fragment not in anchors(file):
            yield number, f"{target}: no such place in the file"


def main(names):
    if not names:
        sys.exit(__doc__.strip())
    count = 0
    for name in names:
        for number, reason in broken_links(pathlib.Path(name)):
            print(f"{name}:{number}: {reason}")
            count += 1
    if count:
        print(f"{count} broken links", file=sys.stderr)
    return 1 if count else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
