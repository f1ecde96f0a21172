"""Values that other products write too: the classes and extensions of content types.

Windows Installer removes a value unconditionally, whoever wrote it last. So each of these rows names its value as
"Name[PROPERTY]": the property is empty while the value is written, and at removal it is set if the value is not ours
any more, so that the row names a value that does not exist. What a value was before is kept in a key of the
product's own; if the value is still ours at removal, the system's reg.exe writes the former one back.

For each value N there are these properties:
  VALUEN_NOW     what the registry holds when the installer starts
  VALUEN_FORMER  what it held before the product was installed, or what another product wrote later
  VALUEN_KEEP    not empty if removal must leave the value alone"""
import re

import product

COMPONENT = "ContentTypes"
RAW_VALUE_64 = 2 + 16  # RegLocator: a value's data, in the 64-bit view
SET_PROPERTY = 51
# An executable by its path; in the execution script, as the system, failing the installation if it fails.
RUN_AS_SYSTEM = 34 + 1024 + 2048
REMOVED = f"${COMPONENT}=2"  # the component's action is "absent"
INSTALLED = f"?{COMPONENT}=3"  # the component is on the computer, known after CostFinalize


def _former_key(value):
    return rf"{product.FORMER_KEY}\{value.key.rpartition(chr(92))[2]}"


def name_column(number, value):
    """The Name column of a shared value's row."""
    return f"{value.name}[VALUE{number}_KEEP]"


def former_row(number, value):
    """Key, name and data of the row that keeps the former value."""
    return _former_key(value), value.name, f"[VALUE{number}_FORMER]"


def search(tables, name, key, value):
    """Sets the property `name` to a value of HKEY_LOCAL_MACHINE if it exists and is not empty."""
    tables["AppSearch"].append((name, name))
    tables["RegLocator"].append((name, 2, key, value, RAW_VALUE_64))


def add(tables, values, own_classes, recorded):
    """Adds the searches, the actions and their places in the sequence, and returns the properties of the searches.
    The property `recorded` is set if there is a record of the former values."""
    secure = []
    for number, value in enumerate(values, 1):
        now, former, keep = (f"VALUE{number}_{what}" for what in ("NOW", "FORMER", "KEEP"))
        secure += [now, former]
        search(tables, now, value.key, value.name)
        search(tables, former, *former_row(number, value)[:2])
        # A value that names one of the module's classes was not written by another product. An extension may be:
        # whether it was is known at the first installation only, also if the record of it was deleted since.
        others = f'{now} AND {now} ~<> "{value.data}"'
        if not re.search("|".join(map(re.escape, own_classes)), value.data, re.I):
            others = f"{now} AND ({now} ~<> \"{value.data}\" OR (NOT {recorded} AND NOT {INSTALLED}))"
        _action(tables, f"SetFormer{number}", SET_PROPERTY, former, f"[{now}]", others, 1020 + number)
        _action(tables, f"SetKeep{number}", SET_PROPERTY, keep, " (not removed)",
                f'{REMOVED} AND ({now} ~<> "{value.data}" OR {now} ~= {former})', 1510 + number)
        command = (f'"[System64Folder]reg.exe" add "HKLM\\{value.key}" /v "{value.name}" /t REG_SZ '
                   f'/d "[{former}]" /f /reg:64')
        _action(tables, f"RestoreFormer{number}", RUN_AS_SYSTEM, "System64Folder", command,
                f'{REMOVED} AND {former} AND {now} ~= "{value.data}" AND {now} ~<> {former}', 2610 + number)
    return secure


def _action(tables, name, kind, source, target, condition, sequence):
    tables["CustomAction"].append((name, kind, source, target, None))
    tables["InstallExecuteSequence"].append((name, condition, sequence))
