"""The rows of the package's tables."""
import collections
import hashlib
import re
import struct

import image_version
import product
import registration
import schema
import shared_values

X64_COMPONENT = 256
REGISTRY_KEY_PATH = 4
VITAL_FILE = 512
NO_ADVERTISEMENT = 8
NOT_SELECTED = 2  # a feature's level above the default INSTALLLEVEL
HKLM = 2
MIGRATE_FEATURES, DETECT_ONLY = 1, 2
ON_REMOVAL = 2
# Not set: a text that contains it is not null in the table, and empty in the registry.
EMPTY_TEXT = "[EmptyText]"

COSTING = [("CostInitialize", 800), ("FileCost", 900), ("CostFinalize", 1000)]
# Searches are made once: their results are passed from the user interface to the execution.
SEARCHES = [("FindRelatedProducts", 25), ("AppSearch", 50)]
SEQUENCES = {
    "InstallExecuteSequence": [
        *SEARCHES, ("LaunchConditions", 100), ("ValidateProductID", 700), *COSTING, ("MigrateFeatureStates", 1200),
        ("InstallValidate", 1400), ("InstallInitialize", 1500), ("RemoveExistingProducts", 1501),
        ("ProcessComponents", 1600), ("UnpublishFeatures", 1800), ("RemoveRegistryValues", 2600), ("RemoveFiles", 3500),
        ("InstallFiles", 4000), ("WriteRegistryValues", 5000), ("RegisterUser", 6000), ("RegisterProduct", 6100),
        ("PublishFeatures", 6300), ("PublishProduct", 6400), ("InstallFinalize", 6600)],
    # Without launch conditions: the user is asked for an administrator's password after this sequence only.
    "InstallUISequence": [*SEARCHES, *COSTING, ("MigrateFeatureStates", 1200), ("ExecuteAction", 1300)],
    "AdminExecuteSequence": [
        *COSTING, ("InstallValidate", 1400), ("InstallInitialize", 1500), ("InstallAdminPackage", 3900),
        ("InstallFiles", 4000), ("InstallFinalize", 6600)],
    "AdminUISequence": [*COSTING, ("ExecuteAction", 1300)],
    "AdvtExecuteSequence": [
        ("CostInitialize", 800), ("CostFinalize", 1000), ("InstallValidate", 1400), ("InstallInitialize", 1500),
        ("PublishFeatures", 6300), ("PublishProduct", 6400), ("InstallFinalize", 6600)],
}
LAUNCH_CONDITIONS = {
    "VersionNT64": "[ProductName] needs a 64-bit edition of Windows.",
    "Privileged": "[ProductName] can be installed, repaired and removed by an administrator only.",
    "ALLUSERS = 1": "[ProductName] is installed for all users of the computer; ALLUSERS cannot be set.",
    "Installed OR NOT NEWERVERSIONFOUND": "A newer version of [ProductName] is already installed.",
}


def product_code(version):
    return product.derived_guid("product", version, "x64")


def make(version, files, registered_from):
    """table name -> rows. `files`: (file key, name, contents) of each file, the module first."""
    keys, values = registration.read(registered_from)
    tables = collections.defaultdict(list)
    for name, actions in SEQUENCES.items():
        tables[name] = [(action, None, number) for action, number in actions]
    _add_files(tables, files)
    _add_folders(tables)
    for feature, (title, description) in product.FEATURES.items():
        tables["Feature"].append((feature, None, title, description, len(tables["Feature"]) + 1, 1, "INSTALLDIR",
                                  NO_ADVERTISEMENT))
        _add_registration(tables, feature, keys, values)
    shared = [value for value in values if value.shared]
    _add_shared_values(tables, shared)
    own_classes = sorted({found for key in keys for found in re.findall(r"CLSID\\(\{[^\\]*\})", key.key)})
    secure = shared_values.add(tables, shared, own_classes, _installed(shared[0].feature))
    _add_upgrade(tables, version)
    tables["LaunchCondition"] += LAUNCH_CONDITIONS.items()
    tables["Property"] += {
        "ProductCode": product_code(version),
        "UpgradeCode": product.UPGRADE_CODE,
        "ProductName": product.NAME,
        "ProductVersion": version,
        "ProductLanguage": product.LANGUAGE,
        "Manufacturer": product.PUBLISHER,
        "ALLUSERS": 1,
        "ARPNOMODIFY": 1,  # features are chosen on the command line, there are no dialogs
        "REBOOT": "ReallySuppress",  # a restart is reported, never begun
        "MSIRESTARTMANAGERCONTROL": "DisableShutdown",  # nor is a browser closed
        "SecureCustomProperties": ";".join(["INSTALLDIR", "REMEMBERED_INSTALLDIR", "LISTED_INSTALLDIR",
                                            "NEWERVERSIONFOUND", "OLDERVERSIONFOUND", *map(_installed, product.FEATURES), *secure]),
    }.items()
    return tables


def _component(tables, name, features, attributes, key_path, folder="INSTALLDIR"):
    tables["Component"].append((name, product.derived_guid("component", name), folder, attributes | X64_COMPONENT,
                                None, key_path))
    tables["FeatureComponents"] += [(feature, name) for feature in features]


def _short_name(name, number):
    if re.fullmatch(r"[A-Za-z0-9_-]{1,8}(\.[A-Za-z0-9_-]{1,3})?", name):
        return name
    stem, _, extension = name.upper().rpartition(".") if "." in name else (name.upper(), "", "")
    stem, extension = re.sub(r"[^A-Z0-9_-]", "", stem), re.sub(r"[^A-Z0-9_-]", "", extension)
    return f"{stem[:6]}~{number}" + (f".{extension[:3]}" if extension else "") + f"|{name}"


def _add_files(tables, files):
    for number, (key, name, contents) in enumerate(files, 1):
        try:
            version, language = image_version.read(contents)
        except image_version.NoVersion:
            version = language = None
            # By its hash an unversioned file is recognised as changed or unchanged.
            hash_parts = struct.unpack("<4i", hashlib.md5(contents).digest())
            tables["MsiFileHash"].append((key, 0, *hash_parts))
        tables["File"].append((key, key, _short_name(name, number), len(contents), version, language, VITAL_FILE,
                               number))
        _component(tables, key, product.FEATURES, 0, key)
    tables["Media"].append((1, len(files), None, "#product.cab", None, None))


def _add_folders(tables):
    tables["Directory"] += [
        ("TARGETDIR", None, "SourceDir"),
        ("ProgramFiles64Folder", "TARGETDIR", "."),
        ("System64Folder", "TARGETDIR", "."),
        ("PublisherFolder", "ProgramFiles64Folder", "Quill"),
        ("INSTALLDIR", "PublisherFolder", "PDFIE|PDF for Internet Explorer"),
    ]
    # The folder of the last installation, for a repair or an upgrade that does not name it again.
    shared_values.search(tables, "REMEMBERED_INSTALLDIR", product.SETTINGS_KEY, "InstallDir")
    # The entry under Add or Remove Programs, if that record was deleted.
    shared_values.search(tables, "LISTED_INSTALLDIR", product.UNINSTALL_KEY, "InstallLocation")
    tables["CustomAction"] += [
        ("SetInstallDir", shared_values.SET_PROPERTY, "INSTALLDIR", "[REMEMBERED_INSTALLDIR]", None),
        ("SetListedInstallDir", shared_values.SET_PROPERTY, "INSTALLDIR", "[LISTED_INSTALLDIR]", None),
        ("SetInstallLocation", shared_values.SET_PROPERTY, "ARPINSTALLLOCATION", "[INSTALLDIR]", None),
    ]
    for sequence in ("InstallExecuteSequence", "InstallUISequence"):
        tables[sequence].append(("SetInstallDir", "REMEMBERED_INSTALLDIR AND NOT INSTALLDIR", 101))
        tables[sequence].append(("SetListedInstallDir", "LISTED_INSTALLDIR AND NOT INSTALLDIR", 102))
    tables["InstallExecuteSequence"].append(("SetInstallLocation", None, 1010))
    _registry(tables, "Settings", product.SETTINGS_KEY, "InstallDir", "[INSTALLDIR]")
    _component(tables, "Settings", product.FEATURES, REGISTRY_KEY_PATH, tables["Registry"][-1][0], "PublisherFolder")
    # Removed if they are empty then.
    tables["RemoveFile"] += [(folder, "Settings", None, folder, ON_REMOVAL) for folder in
                             ("INSTALLDIR", "PublisherFolder")]


def _registry(tables, component, key, name, text):
    number = sum(row[5] == component for row in tables["Registry"]) + 1
    tables["Registry"].append((f"{component}{number:03}", HKLM, key, name or None, text, component))


def _literal(text):
    """Text in which the installer replaces nothing but the module's path and folder."""
    text = re.sub(r"[\[\]]", lambda bracket: rf"[\{bracket[0]}]", text)
    return text.replace(registration.MODULE, f"[#{product.MODULE_FILE}]").replace(registration.FOLDER, "[INSTALLDIR]")


def _data(value):
    if value.type == "d":
        return f"#{value.data}"
    if value.type == "b":
        return f"#x{value.data.hex()}"
    if not value.data:
        return EMPTY_TEXT
    return ("#" if value.data.startswith("#") else "") + _literal(value.data)


def _installed(feature):
    return f"{feature.upper()}_INSTALLED"


def _add_registration(tables, feature, keys, values):
    # Also the record of the installed features. An upgrade selects the features of the old version: this condition
    # raises the level of the others, as MigrateFeatureStates does where it is implemented.
    _registry(tables, feature, product.SETTINGS_KEY, feature, "[ProductVersion]")
    shared_values.search(tables, _installed(feature), product.SETTINGS_KEY, feature)
    tables["Condition"].append((feature, NOT_SELECTED, f"OLDERVERSIONFOUND AND NOT {_installed(feature)}"))
    for key in keys:
        if key.feature == feature:
            # "*": created with the component, and removed with everything below it.
            _registry(tables, feature, _literal(key.key), "*", None)
    for value in values:
        if value.feature == feature and not value.shared:
            _registry(tables, feature, _literal(value.key), _literal(value.name), _data(value))
    _component(tables, feature, [feature], REGISTRY_KEY_PATH, f"{feature}001")


def _add_shared_values(tables, values):
    features = sorted({value.feature for value in values})
    for number, value in enumerate(values, 1):
        _registry(tables, shared_values.COMPONENT, *shared_values.former_row(number, value))
    for number, value in enumerate(values, 1):
        _registry(tables, shared_values.COMPONENT, _literal(value.key), shared_values.name_column(number, value),
                  _data(value))
    _component(tables, shared_values.COMPONENT, features, REGISTRY_KEY_PATH, f"{shared_values.COMPONENT}001")


def _add_upgrade(tables, version):
    tables["Upgrade"] += [
        (product.UPGRADE_CODE, None, version, None, MIGRATE_FEATURES, None, "OLDERVERSIONFOUND"),
        (product.UPGRADE_CODE, version, None, None, DETECT_ONLY, None, "NEWERVERSIONFOUND"),
    ]


def text(tables):
    """table name -> its text for the import, in a fixed order."""
    return {table: schema.table_text(table, tables[table]) for table in sorted(tables)}
