#!/usr/bin/env python3
"""Collects the texts of the API reference for its search page.

usage: reference_search.py HTML_DIR

Writes search_texts.js into the directory. The file sets `searchTexts`, a list of entries: one for each page, and one
for each function, section and table row that a link can lead to.
"""
import html.parser
import json
import pathlib
import re
import sys

# Lists that Doxygen generates from the other pages, and the search page itself.
LISTS = re.compile(r"(.*-members|annotated|classes|files|functions(_.*)?|globals(_.*)?|hierarchy|modules|topics|pages|"
                   r"namespace.*|search)\.html")
HEADINGS = {"h1", "h2", "h3", "h4"}
INLINE = {"a", "b", "code", "em", "span", "strong", "tt"}
WITHOUT_END = {"area", "br", "col", "hr", "img", "input", "link", "meta", "wbr"}
# Headings that Doxygen adds, links from each function to its family, lists that repeat the first sentence of each
# function, marks beside a function's name, and hints that appear at a link.
LEFT_OUT = {"groupheader", "ingroups", "memberdecls", "mlabels-right", "overload", "permalink", "script", "see",
            "style", "summary", "ttc"}


class Page(html.parser.HTMLParser):
    """Reads a page into `entries`."""

    def __init__(self, url):
        super().__init__()
        self.url = url
        self.title = []
        self.entries = [{"url": url, "title": self.title, "text": []}]
        self.open = []  # the tag and the classes of each open element
        self.anchor = None  # the last place that a link can lead to
        self.target = self.entries[0]["text"]  # the list that receives the text

    def inside(self, name):
        return any(name in names for names in self.open)

    def begin(self, anchor, title):
        self.entries.append({"url": f"{self.url}#{anchor}", "title": title, "text": []})

    def handle_startendtag(self, tag, attributes):
        pass

    def handle_starttag(self, tag, attributes):
        if tag in WITHOUT_END:
            return
        attributes = dict(attributes)
        self.open.append({tag, *(attributes.get("class") or "").split()})
        if self.open[-1] == {"div", "title"}:
            self.target = self.title
        elif tag in HEADINGS:
            if "memtitle" not in self.open[-1]:
                self.anchor = None
            self.target = []
        elif tag == "a" and "id" in attributes:
            self.anchor = attributes["id"]
            if self.inside("markdownTable"):
                self.target = []
                self.begin(self.anchor, self.target)

    def handle_endtag(self, tag):
        names = set()
        while self.open and tag not in names:
            names = self.open.pop()
        if tag in HEADINGS and self.anchor and "groupheader" not in names:
            self.begin(self.anchor, self.target)
        elif tag in HEADINGS:
            self.entries[-1]["text"] += self.target
        if tag in HEADINGS or tag == "td" or names == {"div", "title"}:
            self.target = self.entries[-1]["text"]
        if tag not in INLINE:
            self.target.append(" ")

    def handle_data(self, data):
        if self.inside("header") or self.inside("contents"):
            if not any(self.inside(name) for name in LEFT_OUT):
                self.target.append(data)


def text_of(parts):
    return " ".join("".join(parts).split())


def entries_of(path):
    page = Page(path.name)
    page.feed(path.read_text(encoding="utf-8"))
    title = text_of(page.title)
    return [{"url": entry["url"], "title": text_of(entry["title"]), "page": title, "text": text_of(entry["text"])}
            for entry in page.entries]


def main(arguments):
    if len(arguments) != 1:
        sys.exit(__doc__.strip())
    directory = pathlib.Path(arguments[0])
    entries = [entry for path in sorted(directory.glob("*.html")) if not LISTS.fullmatch(path.name)
               for entry in entries_of(path)]
    if not entries:
        sys.exit(f"{directory} contains no pages")
    lines = ",\n".join(json.dumps(entry) for entry in entries)
    (directory / "search_texts.js").write_text(f"var searchTexts = [\n{lines}\n];\n", encoding="ascii")


if __name__ == "__main__":
    main(sys.argv[1:])
