"""The settings that the product reads, taken from its sources: registry keys, value names, variables, words."""
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = ("module", "active_doc", "sharepoint", "retrieval", "logging", "platform")
# One or more string literals that the compiler joins.
LITERALS = re.compile(r'L?"(?:[^"\\\n]|\\.)*"(?:\s*L?"(?:[^"\\\n]|\\.)*")*')
LITERAL = re.compile(r'L?"((?:[^"\\\n]|\\.)*)"')


def sources():
    """{path: text} of the product's C++ files, without comments."""
    paths = [path for folder in FOLDERS for path in sorted((ROOT / folder).rglob("*")) if path.suffix in (".cpp", ".h")]
    return {path.relative_to(ROOT).as_posix(): re.sub(r"(?m)(^|\s)//.*$", "", path.read_text()) for path in paths}


def literals():
    """Every string in the product's sources, with the backslashes that it has at run time."""
    return {"".join(LITERAL.findall(match)).replace("\\\\", "\\")
            for text in sources().values() for match in LITERALS.findall(text)}


def variables():
    """The environment variables that are the product's own."""
    return {text for text in literals() if re.fullmatch(r"QUILL_[A-Z_]+", text)}


def registry_readers():
    """The files that read values of the registry."""
    reading = re.compile(r"\bReg(?:Query|Get|Enum)\w*Value\w*\(|\bRegQueryMultipleValues\w*\(|\bSHGetValue\w*\(")
    return {path for path, text in sources().items() if reading.search(text)}


def text_of(path):
    return (ROOT / path).read_text()


def words(path, pattern):
    """The single group of the one place in a file that the pattern describes."""
    found = re.findall(pattern, text_of(path), re.S)
    assert len(found) == 1, f"{path}: {pattern} was found {len(found)} times"
    return found[0]


def log_levels():
    return [name for name in re.findall(r"\w+", words("logging/log_level.h", r"enum class log_level[^{]*\{([^}]*)\}"))
            if name != "off"]


def log_sinks():
    """The words that select a destination, without the standard output, which a browser has not."""
    found = re.findall(r'names\("(\w+)"\)', text_of("logging/logger_choice.cpp"))
    assert "stdout" in found
    return [word for word in found if word != "stdout"]


def clsids():
    """The classes of both registry scripts: the document and the helper object."""
    return [words(f"module/{script}.rgs", pattern) for script, pattern in (
        ("active_doc", r"ForceRemove '(\{[^']*\})' = s 'QuillPDF.IE.ActiveDoc'"),
        ("sharepoint", r"NoRemove 'CLSID'\s*\{\s*ForceRemove '(\{[^']*\})'"))]
