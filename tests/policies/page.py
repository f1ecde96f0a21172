"""Reads docs/administration.md: its statements with their marks, its code blocks, its sources."""
import dataclasses
import re

import settings

PATH = settings.ROOT / "docs/administration.md"
MARK = re.compile(r"\[([SM]\d+|U)\]")
FENCE = re.compile(r"(?ms)^```(\w*)\n(.*?)^```$")
NOT_IN_WINE = "rem Windows:"


@dataclasses.dataclass
class Block:
    language: str
    text: str

    def runs_in_wine(self):
        return not self.text.startswith(NOT_IN_WINE)


def text():
    return PATH.read_text()


def blocks():
    return [Block(language, body) for language, body in FENCE.findall(text())]


def sections():
    """(heading, text without code) of each section; the first one is the introduction."""
    without_code = FENCE.sub("", text())
    parts = re.split(r"(?m)^##+ (.*)$", without_code)
    return [("", parts[0])] + list(zip(parts[1::2], parts[2::2]))


def statements():
    """The paragraphs, points and rows of tables that need a mark: (heading, text)."""
    found = []
    for heading, body in sections():
        if heading in ("", "Sources"):
            continue
        for paragraph in re.split(r"\n\s*\n", body):
            lines = paragraph.strip().splitlines()
            if not lines:
                continue
            if lines[0].startswith("|"):
                found += [(heading, row) for row in lines[2:]]
            else:
                points = re.split(r"(?m)^(?:- |\d+\. )", paragraph.strip())
                found += [(heading, " ".join(point.split())) for point in points if point.strip()]
    return found


def marks(words):
    return MARK.findall(words)


def sources():
    """{mark: row} of the two tables at the end."""
    return {name: row for name, row in re.findall(r"(?m)^\| ([SM]\d+) \| (.*) \|$", dict(sections())["Sources"])}


def tests_of(row):
    return re.findall(r"`(\w+\.\w+\.\w+)`", row)


def registry_file(block):
    """{key: {name: ("REG_SZ" or "REG_DWORD", data)}} of a registry file."""
    lines = block.text.splitlines()
    assert lines[:2] == ["Windows Registry Editor Version 5.00", ""], lines[:2]
    keys = {}
    for line in filter(None, lines[2:]):
        if line.startswith("["):
            values = keys.setdefault(line[1:-1], {})
        elif match := re.fullmatch(r'"([^"]+)"="(.*)"', line):
            values[match[1]] = ("REG_SZ", match[2].replace("\\\\", "\\"))
        elif match := re.fullmatch(r'"([^"]+)"=dword:([0-9a-f]{8})', line):
            values[match[1]] = ("REG_DWORD", f"0x{int(match[2], 16):x}")
        else:
            raise AssertionError(f"not a line of a registry file: {line}")
    return keys
