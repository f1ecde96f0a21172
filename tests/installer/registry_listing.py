"""Registry contents as {key: {value name: data}}, all in lower case but the data.

Data is "s TEXT", "d NUMBER" or another type in the notation of regedit; the default value is "@"."""
import re

SETTINGS = r"hklm\software\quill\quillpdf.ie"


def parse_listing(text, replacements):
    """A listing of tests/module, with its %NAMES% replaced."""
    for name, value in replacements.items():
        text = text.replace(f"%{name}%", value)
    listing, values = {}, None
    for line in text.splitlines():
        if not line.startswith("    "):
            values = listing.setdefault(line.lower(), {})
        else:
            name, _, data = line[4:].partition(" = ")
            values[name.lower()] = data
    return listing


def parse_export(text):
    """A file that regedit exported."""
    text = text.replace("HKEY_LOCAL_MACHINE", "HKLM").replace("HKEY_CURRENT_USER", "HKCU")
    text = re.sub(r"\\\r?\n\s*", "", text)
    listing, values = {}, None
    for line in text.splitlines():
        if line.startswith("["):
            values = listing.setdefault(line[1:-1].lower(), {})
        else:
            match = re.fullmatch(r'(@|"((?:[^"\\]|\\.)*)")=(.*)', line, re.S)
            if match:
                name = "@" if match[1] == "@" else re.sub(r"\\(.)", r"\1", match[2])
                values[name.lower()] = _data(match[3])
    return listing


def _data(text):
    if text.startswith('"'):
        return "s " + re.sub(r"\\(.)", r"\1", text[1:-1])
    if text.startswith("dword:"):
        return f"d {int(text[6:], 16)}"
    return text


def difference(before, after):
    """What differs: "+ " and "- " lines of keys and values."""
    lines = []
    for key in sorted(before.keys() | after.keys()):
        if (key in before) != (key in after):
            lines.append(("+ " if key in after else "- ") + key)
        old, new = before.get(key, {}), after.get(key, {})
        for name in sorted(old.keys() | new.keys()):
            if old.get(name) != new.get(name):
                lines += [f"{sign} {key}: {name} = {values[name]}"
                          for sign, values in (("-", old), ("+", new)) if name in values]
    return lines


def added(before, after):
    """The keys and values of `after` that `before` does not have."""
    result = {}
    for key, values in after.items():
        new = {name: data for name, data in values.items() if before.get(key, {}).get(name) != data}
        if new or key not in before:
            result[key] = new
    return result


def below(listing, *prefixes):
    return {key: values for key, values in listing.items()
            if any(key == prefix or key.startswith(prefix + "\\") for prefix in prefixes)}


def without(listing, *prefixes):
    dropped = below(listing, *prefixes)
    return {key: values for key, values in listing.items() if key not in dropped}


# Named exceptions: what regsvr32 writes and the installer does not.
NOT_INSTALLED = ["hkcu"]


def expected_from_regsvr32(text, module):
    """What the installer has to write, from the listing of what regsvr32 writes: its keys with their values."""
    folder = module.rpartition("\\")[0] + "\\"
    return without(parse_listing(text, {"MODULE": module, "FOLDER": folder}), *NOT_INSTALLED)
