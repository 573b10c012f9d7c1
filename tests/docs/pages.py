"""Reads the project's pages: which there are, their code blocks, headings, tables and links."""
import pathlib
import re
from typing import NamedTuple

TOP = pathlib.Path(__file__).resolve().parents[2]


def pages():
    """Every page of the documentation, as a path."""
    return sorted(TOP.glob("*.md")) + sorted((TOP / "docs").rglob("*.md"))


def name_of(path):
    return path.relative_to(TOP).as_posix()


class Block(NamedTuple):
    """A fenced block. `kind` is the first word behind its fence, `line` that of the fence, counted from 1."""
    page: str
    line: int
    kind: str
    text: str

    def __str__(self):
        return f"{self.page}:{self.line} ({self.kind or 'without a kind'})"


def split(path):
    """The blocks of a page, and its other lines as (number, text): a fenced line is never among them."""
    blocks, prose, fence = [], [], None
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if fence is None and line.startswith("```"):
            words = line[3:].split()
            fence, begin, kind = [], number, words[0] if words else ""
        elif fence is not None and line == "```":
            blocks.append(Block(name_of(path), begin, kind, "".join(text + "\n" for text in fence)))
            fence = None
        elif fence is not None:
            fence.append(line)
        else:
            prose.append((number, line))
    assert fence is None, f"{name_of(path)}:{begin}: the block is not closed"
    return blocks, prose


def blocks_of(path):
    return split(path)[0]


def indented_code(path):
    """The numbers of lines that begin a block of code by their indentation, which tells nobody what it is."""
    before, found = "", []
    for number, line in split(path)[1]:
        if line.startswith("    ") and line.strip() and not before.strip():
            found.append(number)
        before = line
    return found


def anchor_of(heading):
    """The anchor that a heading gets, here and on the web: its words in small letters with dashes between them."""
    text = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading)
    text = re.sub(r"[^\w\- ]", "", text.strip().lower())
    return text.replace(" ", "-")


def anchors_of(path):
    found = []
    for _, line in split(path)[1]:
        match = re.match(r"#+ (.*)", line)
        if match:
            found.append(anchor_of(match.group(1)))
    return found


def links_of(path):
    """The targets of a page's links, as (line number, target)."""
    found = []
    for number, line in split(path)[1]:
        for target in re.findall(r"\[[^\]]*\]\(([^)\s]+)\)", re.sub(r"`[^`]*`", "", line)):
            found.append((number, target))
    return found


def section_of(path, title):
    """The text of one section, up to the next heading of its level or above."""
    found, level, is_fenced = [], None, False
    for line in path.read_text().splitlines():
        is_fenced ^= line.startswith("```")
        heading = None if is_fenced else re.match(r"(#+) (.*)", line)
        if heading and level is not None and len(heading.group(1)) <= level:
            break
        if level is not None:
            found.append(line)
        if heading and heading.group(2) == title:
            level = len(heading.group(1))
    assert level is not None, f"{name_of(path)} has no section {title}"
    return "\n".join(found)


def rows_of(text):
    """The rows of the tables in a text, without heads and rulers; each is a list of cells."""
    rows, head = [], None
    for line in text.splitlines() + [""]:
        if not line.startswith("|"):
            head = None
            continue
        cells = [cell.strip().replace("\\|", "|") for cell in re.split(r"(?<!\\)\|", line.strip()[1:-1])]
        if head is None:
            head = cells
        elif not all(re.fullmatch(r":?-+:?", cell) for cell in cells):
            assert len(cells) == len(head), f"a row of {len(cells)} cells below {head}: {line}"
            rows.append(cells)
    return rows
