"""What the installer writes to the registry, from the files with which the module registers itself."""
import dataclasses
import re

import registry_script
import type_library

# Stand for the path of the module and its folder.
MODULE = "\ue000"
FOLDER = "\ue001"

CLASSES = r"SOFTWARE\Classes"
SCRIPTS = {"ActiveDocument": "active_doc.rgs", "SharePoint": "sharepoint.rgs"}
TYPE_LIBRARY = ("ActiveDocument", "quill_pdf_ie.idl")
# The category that both classes have in their category maps.
APP_CONTAINER_COMPATIBLE = "{59FB2056-D625-48D0-A944-1A85B5AB2640}"


class RegistrationError(Exception):
    pass


@dataclasses.dataclass(frozen=True)
class Value:
    feature: str
    key: str  # below HKEY_LOCAL_MACHINE
    name: str  # empty: the default value
    type: str
    data: object
    shared: bool  # in a key that other products use too


@dataclasses.dataclass(frozen=True)
class Key:
    feature: str
    key: str
    owned: bool  # removed with everything below it


def read(folder):
    """The keys and values of all features: (keys, values), in the order of the files in `folder`."""
    keys, values = [], []
    for feature, name in SCRIPTS.items():
        try:
            _read_script(feature, (folder / name).read_text("utf-8-sig"), keys, values)
        except (registry_script.ScriptError, RegistrationError) as error:
            raise RegistrationError(f"{name}: {error}") from None
    feature, name = TYPE_LIBRARY
    try:
        for key, value_name, text in type_library.values((folder / name).read_text("utf-8-sig"), MODULE, FOLDER):
            values.append(Value(feature, rf"{CLASSES}\{key}", value_name, "s", text, False))
            library = re.match(rf"{re.escape(CLASSES)}\\(?:TypeLib|Interface)\\[^\\]+", values[-1].key)[0]
            if Key(feature, library, True) not in keys:
                keys.append(Key(feature, library, True))
    except type_library.IdlError as error:
        raise RegistrationError(f"{name}: {error}") from None
    _check(values)
    return keys, values


def _read_script(feature, text, keys, values):
    found = set()
    for root, content in registry_script.parse(registry_script.expand(text, {"MODULE": MODULE})):
        if root == "HKCU":
            continue  # would be written for the installing account, and take precedence over the machine's
        if root not in ("HKLM", "HKCR"):
            raise RegistrationError(f"the installer writes nothing to {root}")
        _walk(feature, content, CLASSES if root == "HKCR" else "", False, keys, values)
        found.add(root)
    if not found:
        raise RegistrationError("nothing to register")
    for key in [key for key in keys if key.feature == feature and key.owned]:
        if re.fullmatch(re.escape(CLASSES) + r"\\CLSID\\\{[^\\]*\}", key.key):
            keys.append(Key(feature, rf"{key.key}\Implemented Categories\{APP_CONTAINER_COMPATIBLE}", False))


def _walk(feature, key, path, owned, keys, values):
    for value in key.values:
        values.append(Value(feature, path, value.name, value.type, value.data, not owned))
    for child in key.keys:
        if child.kind == "Delete":
            raise RegistrationError(f"the installer does not delete keys: {child.name}")
        child_path = rf"{path}\{child.name}" if path else child.name
        if child.kind != "NoRemove" and not owned:
            if child.kind != "ForceRemove":
                raise RegistrationError(f"neither NoRemove nor ForceRemove: {child_path}")
            keys.append(Key(feature, child_path, True))
        elif child.kind != "NoRemove" and not child.values and not child.keys:
            keys.append(Key(feature, child_path, False))
        _walk(feature, child, child_path, owned or child.kind == "ForceRemove", keys, values)


def _check(values):
    seen = set()
    for value in values:
        name = (value.key.lower(), value.name.lower())
        if name in seen:
            raise RegistrationError(f"written twice: {value.key}, value '{value.name}'")
        seen.add(name)
        text = value.key + value.name + (value.data if value.type == "s" else "")
        if not all(" " <= character <= "~" or character in (MODULE, FOLDER) for character in text):
            raise RegistrationError(f"not printable ASCII: {value.key}, value '{value.name}'")
