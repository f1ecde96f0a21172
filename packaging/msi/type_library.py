"""The registry values of a type library's registration, from its IDL file.

They are those of RegisterTypeLib: version numbers are hexadecimal, and an interface is marshalled by the system's
proxy for automation if it derives from IDispatch."""
import re

AUTOMATION_PROXY = "{00020424-0000-0000-C000-000000000046}"
FLAG_HAS_DISK_IMAGE = 8  # LIBFLAG_FHASDISKIMAGE


class IdlError(Exception):
    pass


def _find(pattern, text, what):
    match = re.search(pattern, text, re.S)
    if not match:
        raise IdlError(f"no {what}")
    return match


def _guid(attributes, what):
    return "{" + _find(r"\buuid\(\s*([0-9A-Fa-f-]{36})\s*\)", attributes, f"uuid of the {what}")[1].upper() + "}"


def values(idl, module, folder):
    """Key below SOFTWARE\\Classes, value name and text of each value that registers the library of the file `module`
    in `folder`."""
    text = re.sub(r"//[^\n]*|/\*.*?\*/", "", idl, flags=re.S)
    library = _find(r"\[([^\]]*)\]\s*library\s+\w+\s*\{", text, "library")
    guid = _guid(library[1], "library")
    version = _find(r"\bversion\(\s*(\d+)\.(\d+)\s*\)", library[1], "version of the library")
    number = f"{int(version[1]):x}.{int(version[2]):x}"
    name = _find(r'\bhelpstring\("([^"]*)"\)', library[1], "help string of the library")[1]
    yield rf"TypeLib\{guid}\{number}", "", name
    yield rf"TypeLib\{guid}\{number}\0\win64", "", module
    yield rf"TypeLib\{guid}\{number}\FLAGS", "", str(FLAG_HAS_DISK_IMAGE)
    yield rf"TypeLib\{guid}\{number}\HELPDIR", "", folder
    interfaces = re.findall(r"\[([^\]]*)\]\s*interface\s+(\w+)\s*:\s*(\w+)\s*\{", text[library.end():])
    if not interfaces:
        raise IdlError("no interface")
    for attributes, interface, base in interfaces:
        if base != "IDispatch" or not re.search(r"\bdual\b", attributes):
            raise IdlError(f"{interface} is not a dual interface")
        key = rf"Interface\{_guid(attributes, interface)}"
        yield key, "", interface
        yield rf"{key}\ProxyStubClsid", "", AUTOMATION_PROXY
        yield rf"{key}\ProxyStubClsid32", "", AUTOMATION_PROXY
        yield rf"{key}\TypeLib", "", guid
        yield rf"{key}\TypeLib", "Version", number
