"""Writes the man pages of the C interface: man_pages.py XML_DIRECTORY OUTPUT_DIRECTORY VERSION DATE.

One page of section 3 for every function, callback type and record, and the overview k740(7). Fails when a parameter or
a result is not documented. The format is that of man(7); man-pages(7) tells what belongs in which section.
"""
import re
import sys
import textwrap
from pathlib import Path

from interface import OVERVIEW, read_interface

COLUMNS = 78


class Page:
    """A page that grows by sections. Texts are given as plain words."""

    def __init__(self, title, section, version, date, known):
        self._lines = [f'.TH {title} {section} {date} "K740 {version}" "K740 control library"', ".nh", ".ad l"]
        self._names = re.compile(r"\b(" + "|".join(sorted(known)) + r")\b(\([37]\))?")

    def heading(self, title):
        self._lines.append(f'.SH "{title.upper()}"')

    def raw(self, *lines):
        self._lines.extend(lines)

    def text(self, words):
        """One paragraph; names of the interface become bold references."""
        escaped = escape(words)
        escaped = self._names.sub(lambda name: rf"\fB{name[1]}\fP({'7' if name[1] == OVERVIEW else '3'})", escaped)
        wrapped = textwrap.wrap(escaped, COLUMNS, break_long_words=False, break_on_hyphens=False)
        self._lines.extend(rf"\&{line}" if line[0] in ".'" else line for line in wrapped)

    def paragraphs(self, paragraphs):
        for number, words in enumerate(paragraphs):
            if number > 0:
                self._lines.append(".PP")
            self.text(words)

    def definitions(self, pairs):
        for term, words in pairs:
            self._lines.extend([".TP", rf"\fI{term}\fP"])
            self.text(words)

    def write(self, path):
        path.write_text("\n".join(self._lines) + "\n", encoding="utf-8")


def escape(words):
    return words.replace("\\", r"\e").replace("-", r"\-")


def synopsis(entry):
    """The declaration as lines of roff, names of parameters in italics, wrapped below the opening parenthesis."""
    if entry.kind == "struct":
        members = [f'.BI "    {declaration}" {name} ;' for declaration, name in entry.arguments]
        return [".B typedef struct {", *members, f".B }} {entry.name};"]
    start = f"typedef {entry.result} (*{entry.name})(" if entry.kind == "typedef" else f"{entry.result} {entry.name}("
    if not entry.arguments:
        return [f".B {start}void);"]
    lines, indent = [], start
    for number, (declaration, name) in enumerate(entry.arguments):
        end = ");" if number + 1 == len(entry.arguments) else ","
        lines.append(f'.BI "{indent}{declaration}" {name} {end}')
        indent = " " * len(start)
    return lines


def fill(page, entry, group):
    """A page of section 3."""
    page.heading("Name")
    page.raw(rf"{entry.name} \- {escape(entry.brief.rstrip('.'))}")
    page.heading("Synopsis")
    page.raw(".nf", ".B #include <k740/k740.h>", ".PP", *synopsis(entry), ".fi")
    page.heading("Description")
    page.paragraphs([entry.brief, *entry.description])
    if entry.arguments:
        page.heading("Members" if entry.kind == "struct" else "Parameters")
        page.definitions((name, entry.meanings[name]) for _, name in entry.arguments)
    if entry.kind == "function":
        page.heading("Return value")
        page.text(entry.returns or "None.")
    if group.description:
        page.heading("Notes")
        page.paragraphs(group.description)
    page.heading("See also")
    others = [other.name for other in group.entries if other.name != entry.name]
    page.raw(*(f".BR {name} (3)," for name in others), f".BR {OVERVIEW} (7)")


def fill_overview(page, paragraphs, groups):
    page.heading("Name")
    page.raw(rf"{OVERVIEW} \- {escape(paragraphs[0].rstrip('.'))}")
    page.heading("Synopsis")
    page.raw(".nf", ".B #include <k740/k740.h>", ".PP", r".B cc host.c $(pkg\-config \-\-cflags \-\-libs k740)", ".fi")
    page.heading("Description")
    page.paragraphs(paragraphs[1:])
    for group in groups:
        page.heading(group.title)
        page.paragraphs(group.description)
        for entry in group.entries:
            page.raw(".TP", f".BR {entry.name} (3)")
            page.text(entry.brief)
    page.heading("See also")
    page.raw(r".BR k740\-sim (1),", r".BR k740\-wavmatch (1),", ".BR k740demo (1)")


def main():
    xml, output = Path(sys.argv[1]), Path(sys.argv[2])
    paragraphs, groups = read_interface(xml)
    entries = [entry for group in groups for entry in group.entries]
    gaps = [gap for entry in entries for gap in entry.gaps()]
    if gaps:
        sys.exit("\n".join(gaps))

    known = [entry.name for entry in entries] + [OVERVIEW]
    for folder in ("man3", "man7"):
        (output / folder).mkdir(parents=True, exist_ok=True)
    for group in groups:
        for entry in group.entries:
            page = Page(entry.name, 3, *sys.argv[3:5], known)
            fill(page, entry, group)
            page.write(output / "man3" / f"{entry.name}.3")
    overview = Page(OVERVIEW, 7, *sys.argv[3:5], known)
    fill_overview(overview, paragraphs, groups)
    overview.write(output / "man7" / f"{OVERVIEW}.7")


if __name__ == "__main__":
    main()
