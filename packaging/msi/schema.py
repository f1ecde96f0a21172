"""The columns of the tables that the package uses, in the notation of exported tables; the first ones are the key."""

# table: (number of key columns, columns and their types)
TABLES = {
    "AdminExecuteSequence": (1, "Action:s72 Condition:S255 Sequence:I2"),
    "AdminUISequence": (1, "Action:s72 Condition:S255 Sequence:I2"),
    "AdvtExecuteSequence": (1, "Action:s72 Condition:S255 Sequence:I2"),
    "AppSearch": (2, "Property:s72 Signature_:s72"),
    "Component": (1, "Component:s72 ComponentId:S38 Directory_:s72 Attributes:i2 Condition:S255 KeyPath:S72"),
    "Condition": (2, "Feature_:s38 Level:i2 Condition:S255"),
    "CustomAction": (1, "Action:s72 Type:i2 Source:S72 Target:S255 ExtendedType:I4"),
    "Directory": (1, "Directory:s72 Directory_Parent:S72 DefaultDir:l255"),
    "Feature": (1, "Feature:s38 Feature_Parent:S38 Title:L64 Description:L255 Display:I2 Level:i2 Directory_:S72 "
                   "Attributes:i2"),
    "FeatureComponents": (2, "Feature_:s38 Component_:s72"),
    "File": (1, "File:s72 Component_:s72 FileName:l255 FileSize:i4 Version:S72 Language:S20 Attributes:I2 Sequence:i4"),
    "InstallExecuteSequence": (1, "Action:s72 Condition:S255 Sequence:I2"),
    "InstallUISequence": (1, "Action:s72 Condition:S255 Sequence:I2"),
    "LaunchCondition": (1, "Condition:s255 Description:l255"),
    "Media": (1, "DiskId:i2 LastSequence:i4 DiskPrompt:L64 Cabinet:S255 VolumeLabel:S32 Source:S72"),
    "MsiFileHash": (1, "File_:s72 Options:i2 HashPart1:i4 HashPart2:i4 HashPart3:i4 HashPart4:i4"),
    "Property": (1, "Property:s72 Value:l0"),
    "RegLocator": (1, "Signature_:s72 Root:i2 Key:s255 Name:S255 Type:I2"),
    "Registry": (1, "Registry:s72 Root:i2 Key:l255 Name:L255 Value:L0 Component_:s72"),
    "RemoveFile": (1, "FileKey:s72 Component_:s72 FileName:L255 DirProperty:s72 InstallMode:i2"),
    "Upgrade": (5, "UpgradeCode:s38 VersionMin:S20 VersionMax:S20 Language:S255 Attributes:i4 Remove:S255 "
                   "ActionProperty:s72"),
}


class TableError(Exception):
    pass


def columns(table):
    """(name, type) of each column."""
    return [tuple(column.split(":")) for column in TABLES[table][1].split()]


def row_text(table, row):
    """A row as a line of an exported table."""
    fields = columns(table)
    if len(row) != len(fields):
        raise TableError(f"{table}: {len(row)} values for {len(fields)} columns")
    cells = []
    for (name, kind), value in zip(fields, row):
        text = "" if value is None else str(value)
        width = int(kind[1:])
        if not text and kind[0].islower():
            raise TableError(f"{table}.{name} of {row[0]} is empty")
        if kind[0] in "sSlL" and width and len(text) > width:
            raise TableError(f"{table}.{name} of {row[0]} is longer than {width}: {text}")
        if not all(" " <= character <= "~" for character in text):
            raise TableError(f"{table}.{name} of {row[0]} is not printable ASCII")
        cells.append(text)
    return "\t".join(cells)


def table_text(table, rows):
    """A whole table in the form in which it is imported, rows sorted by their key."""
    keys, _ = TABLES[table]
    names, types = zip(*columns(table))
    lines = [row_text(table, row) for row in rows]
    if len({tuple(line.split("\t")[:keys]) for line in lines}) != len(lines):
        raise TableError(f"{table}: two rows have the same key")
    head = ["\t".join(names), "\t".join(types), "\t".join([table, *names[:keys]])]
    return "\r\n".join([*head, *sorted(lines)]) + "\r\n"
