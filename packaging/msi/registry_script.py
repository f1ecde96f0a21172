"""Reads the registrar's script language, in which module/*.rgs say what a registration writes.

The grammar is the one that the module itself applies (atl/detail/registry_script.h)."""
import dataclasses
import re
import struct

ROOTS = {
    "HKCR": "HKCR", "HKEY_CLASSES_ROOT": "HKCR",
    "HKCU": "HKCU", "HKEY_CURRENT_USER": "HKCU",
    "HKLM": "HKLM", "HKEY_LOCAL_MACHINE": "HKLM",
    "HKU": "HKU", "HKEY_USERS": "HKU",
    "HKCC": "HKCC", "HKEY_CURRENT_CONFIG": "HKCC",
}
KINDS = {"NOREMOVE": "NoRemove", "FORCEREMOVE": "ForceRemove", "DELETE": "Delete"}
MAX_DEPTH = 200  # below the interpreter's limit for nested calls
WORD = re.compile(r"[ \t\r\n]*(?:'((?:[^']|'')*)'|([^' \t\r\n][^ \t\r\n]*))")
SPACE = re.compile(r"[ \t\r\n]*")


class ScriptError(Exception):
    pass


@dataclasses.dataclass
class Value:
    name: str  # empty: the key's default value
    type: str  # s: text, d: number, b: bytes
    data: object


@dataclasses.dataclass
class Key:
    name: str
    kind: str = ""  # NoRemove, ForceRemove, Delete or empty
    values: list = dataclasses.field(default_factory=list)
    keys: list = dataclasses.field(default_factory=list)


def expand(text, replacements):
    """Replaces each %NAME%; %% is a percent sign."""
    parts = text.split("%")
    if len(parts) % 2 == 0:
        raise ScriptError("a % without its pair")
    for index in range(1, len(parts), 2):
        name = parts[index]
        if name and name not in replacements:
            raise ScriptError(f"unknown replacement %{name}%")
        parts[index] = replacements[name] if name else "%"
    return "".join(parts)


def parse(text):
    """The sections of a script: pairs of a root ("HKLM") and a Key without a name."""
    return _Parser(text).sections()


class _Parser:
    def __init__(self, text):
        self.text = text
        self.position = 0
        self.word = ""
        self.quoted = False
        self.at_end = False
        self.next()

    def error(self, message):
        line = self.text.count("\n", 0, self.position) + 1
        return ScriptError(f"line {line}: {message}")

    def next(self):
        if SPACE.match(self.text, self.position).end() == len(self.text):
            self.position = len(self.text)
            self.word, self.quoted, self.at_end = "", False, True
            return
        match = WORD.match(self.text, self.position)
        if not match:
            raise self.error("a quoted word without its end")
        self.position = match.end()
        self.quoted = match[1] is not None
        self.word = match[1].replace("''", "'") if self.quoted else match[2]

    def is_word(self, word):
        return not self.quoted and not self.at_end and self.word.upper() == word.upper()

    def sections(self):
        sections = []
        while not self.at_end:
            root = ROOTS.get(self.word.upper())
            if not root:
                raise self.error(f"not a root key: {self.word}")
            self.next()
            if not self.is_word("{"):
                raise self.error("a root key without a block")
            key = Key("", "NoRemove")
            self.block(key, 0)
            sections.append((root, key))
        return sections

    # From the opening brace to the word after the closing one.
    def block(self, key, depth):
        if depth == MAX_DEPTH:
            raise self.error("keys are nested too deeply")
        self.next()
        while not self.is_word("}"):
            if self.at_end:
                raise self.error("a block without its end")
            self.entry(key, depth)
        self.next()

    def entry(self, parent, depth):
        if self.is_word("val"):
            self.next()
            name = self.name()
            if not self.is_word("="):
                raise self.error(f"the value '{name}' has no data")
            parent.values.append(self.assignment(name))
            return
        kind = "" if self.quoted else KINDS.get(self.word.upper(), "")
        if kind:
            self.next()
        key = Key(self.name(), kind)
        if self.is_word("="):
            key.values.append(self.assignment(""))
        if self.is_word("{"):
            self.block(key, depth + 1)
        parent.keys.append(key)

    # An empty key name would be the parent itself.
    def name(self):
        if not self.word or not self.quoted and self.word in "{}=":
            raise self.error("a name is missing")
        name = self.word
        self.next()
        return name

    def assignment(self, name):
        self.next()
        kind = "" if self.quoted else self.word.lower()
        if kind not in ("s", "d", "b"):
            raise self.error(f"not a type of value: {self.word}")
        self.next()
        if self.at_end:
            raise self.error("a value without its data")
        try:
            data = {"s": str, "d": _number, "b": _bytes}[kind](self.word)
        except (ValueError, struct.error):
            raise self.error(f"not a value of type {kind}: {self.word}") from None
        self.next()
        return Value(name, kind, data)


def _number(text):
    is_hex = re.fullmatch(r"(?:0x|&h)([0-9a-f]+)", text, re.I)
    if not is_hex and not re.fullmatch(r"[0-9]+", text):
        raise ValueError(text)
    number = int(is_hex[1], 16) if is_hex else int(text)
    struct.pack("<I", number)
    return number


def _bytes(text):
    if not re.fullmatch(r"(?:[0-9A-Fa-f]{2})*", text):
        raise ValueError(text)
    return bytes.fromhex(text)
