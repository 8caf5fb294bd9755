"""The documented C interface, read from the XML that doxygen writes (its schema is compound.xsd beside that XML)."""
import re
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass, field
from pathlib import Path

OVERVIEW = "k740"


@dataclass
class Entry:
    """A function, a callback type or a record of the interface."""

    name: str
    kind: str  # "function", "typedef" or "struct"
    result: str = ""  # type of what it returns
    brief: str = ""
    description: list[str] = field(default_factory=list)  # paragraphs
    arguments: list[tuple[str, str]] = field(default_factory=list)  # declaration without the name, name
    meanings: dict[str, str] = field(default_factory=dict)  # of parameters or members
    returns: str = ""

    def gaps(self):
        """What the comment leaves out, one sentence each."""
        missing = [name for _, name in self.arguments if not self.meanings.get(name)]
        sentences = [f"{self.name}: {name} is not documented" for name in missing]
        if not self.brief:
            sentences.append(f"{self.name}: has no description")
        if self.kind == "function" and self.result != "void" and not self.returns:
            sentences.append(f"{self.name}: the result is not documented")
        return sentences


@dataclass
class Group:
    """A section of the header."""

    title: str
    description: list[str]
    entries: list[Entry]


def _text(node):
    """The words of a comment; a reference to a group says where its text is found."""
    words = node.text or ""
    for child in node:
        inner = _text(child)
        if child.tag == "ref" and child.get("kindref") == "compound" and "group__" in child.get("refid"):
            inner += f" in {OVERVIEW}(7)"
        words += inner + (child.tail or "")
    return re.sub(r"\s+", " ", words)


def _paragraphs(node):
    """The paragraphs of a comment without its lists of parameters and results."""
    found = []
    for paragraph in node.findall("para"):
        for part in paragraph.findall("parameterlist") + paragraph.findall("simplesect"):
            paragraph.remove(part)
        found.append(_text(paragraph).strip())
    return [words for words in found if words]


def _read_comment(entry, member):
    for item in member.iter("parameteritem"):
        entry.meanings[item.findtext(".//parametername")] = _text(item.find("parameterdescription")).strip()
    returns = member.find(".//simplesect[@kind='return']")
    entry.returns = "" if returns is None else _text(returns).strip()
    entry.brief = _text(member.find("briefdescription")).strip()
    entry.description = _paragraphs(member.find("detaileddescription"))


def _read_arguments(text):
    """Splits "(const char *files, int repeat)" into types and names."""
    if text == "(void)":
        return []
    return [tuple(re.match(r"\s*(.*?)(\w+)$", argument).groups()) for argument in text.strip("()").split(",")]


def _read_member(member):
    entry = Entry(member.findtext("name"), member.get("kind"))
    entry.result = _text(member.find("type")).split("(")[0].strip()
    entry.arguments = _read_arguments(member.findtext("argsstring").lstrip(")"))
    _read_comment(entry, member)
    return entry


def _read_record(compound):
    entry = Entry(compound.findtext("compoundname"), "struct")
    for member in compound.iter("memberdef"):
        name = member.findtext("name") + member.findtext("argsstring", "")
        entry.arguments.append((_text(member.find("type")) + " ", name))
        meaning = _text(member.find("briefdescription")) + _text(member.find("detaileddescription"))
        entry.meanings[name] = meaning.strip()
    entry.brief = _text(compound.find("briefdescription")).strip()
    entry.description = _paragraphs(compound.find("detaileddescription"))
    return entry


def _compound(directory, refid):
    return ElementTree.parse(directory / f"{refid}.xml").getroot().find("compounddef")


def _read_group(directory, compound):
    entries = [_read_record(_compound(directory, record.get("refid"))) for record in compound.findall("innerclass")]
    members = [member for member in compound.iter("memberdef") if member.get("kind") in ("function", "typedef")]
    # the typedef of a record says nothing that the record's own page does not
    entries += [_read_member(member) for member in members if member.findtext("argsstring")]
    brief = _text(compound.find("briefdescription")).strip()
    paragraphs = _paragraphs(compound.find("detaileddescription"))
    joined = [" ".join([brief, *paragraphs[:1]]).strip(), *paragraphs[1:]]
    return Group(compound.findtext("title"), [words for words in joined if words], entries)


def read_interface(directory: Path):
    """Reads the overview's paragraphs and the groups in the order of the header."""
    index = ElementTree.parse(directory / "index.xml").getroot()
    header = _compound(directory, index.find("compound[@kind='file'][name='k740.h']").get("refid"))
    overview = [_text(header.find("briefdescription")).strip(), *_paragraphs(header.find("detaileddescription"))]
    groups = [_compound(directory, found.get("refid")) for found in index.findall("compound[@kind='group']")]
    return overview, [_read_group(directory, group) for group in groups]
