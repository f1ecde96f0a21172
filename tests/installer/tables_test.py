"""The tables of the package, without Windows Installer."""
import re
import struct
import subprocess

import build_test
import package
import product
import registry_listing
import schema

MODULE = r"C:\Folder\QuillPDF.IE.dll"
SETTINGS = registry_listing.SETTINGS


def written(rows, features):
    """What the rows write for the components of the features: {key: {name: data}}."""
    listing = {}
    for row in rows:
        if row["Component_"] not in features:
            continue
        key, name, value = (_formatted(row[column]) for column in ("Key", "Name", "Value"))
        path = ""
        for part in rf"HKLM\{key}".lower().split("\\"):
            path = f"{path}\\{part}".lstrip("\\")
            listing.setdefault(path, {})
        if name in ("+", "-", "*") and not row["Value"]:
            continue
        data = f"d {value[1:]}" if re.fullmatch(r"#\d+", value) else f"s {value}"
        listing[path][name.lower() or "@"] = data
    return listing


def _formatted(text):
    text = text.replace("[#QuillPDF.IE.dll]", MODULE).replace("[INSTALLDIR]", MODULE.rpartition("\\")[0] + "\\")
    return re.sub(r"\[[A-Za-z0-9_]+\]", "", text)


def removed_with_everything(rows):
    """The keys that are deleted with everything below them."""
    return {rf"hklm\{row['Key']}".lower() for row in rows if row["Name"] in ("-", "*") and not row["Value"]}


def problems(rows):
    """What the rows of the Registry table lack, or have too much, of what regsvr32 writes and removes."""
    components = {row["Component_"] for row in rows}
    listing = written(rows, components)
    expected = registry_listing.expected_from_regsvr32(package.LISTING.read_text(), MODULE)
    found = registry_listing.difference(expected, registry_listing.without(listing, r"hklm\software\quill"))
    left = registry_listing.parse_listing(package.LISTING_REMOVED.read_text(), {})
    goes = [key for key in expected if key not in left]
    topmost = {key for key in goes if key.rpartition("\\")[0] in left}
    forced = removed_with_everything(rows)
    found += [f"not removed: {key}" for key in sorted(topmost - forced)]
    found += [f"removed, but left by regsvr32: {key}" for key in sorted(forced - set(goes))]
    found += [f"no row: {key}" for key in own_values(expected) if key[1] not in listing.get(key[0], {})]
    return found


def own_values(expected):
    """The installer's own records: folder, features, and the former contents of each shared value."""
    yield from ((SETTINGS, name) for name in ("installdir", "activedocument", "sharepoint"))
    for key, values in registry_listing.below(expected, r"hklm\software\classes\mime").items():
        yield from ((rf"{SETTINGS}\former content types\{key.rpartition(chr(92))[2]}", name) for name in values)


class Tables(build_test.Scratch):
    def setUp(self):
        super().setUp()
        self.notices = self.folder / "THIRD-PARTY-NOTICES.txt"
        self.notices.write_text("notices")
        self.package = package.build(self.folder / "package.msi", files=[self.notices])

    def table(self, name):
        return package.table(self.package, name)

    def WriteAndRemoveWhatRegsvr32Does(self):
        self.assertEqual(problems(self.table("Registry")), [])

    def AreMissedByTheComparisonRowByRow(self):
        rows = self.table("Registry")
        self.assertGreater(len(rows), 60)
        for row in rows:
            others = [other for other in rows if other is not row]
            self.assertNotEqual(problems(others), [], f"not missed: {row}")
            if row["Value"] and not row["Key"].startswith(r"SOFTWARE\Quill"):
                self.assertNotEqual(problems([*others, {**row, "Value": row["Value"] + "x"}]), [], f"not seen: {row}")

    def WriteNothingForAUser(self):
        for table in ("Registry", "RegLocator"):
            self.assertEqual({row["Root"] for row in self.table(table)}, {"2"}, table)

    def DivideTheRowsBetweenTheFeatures(self):
        common = {"QuillPDF.IE.dll", "_THIRD_PARTY_NOTICES.txt", "Settings"}
        pairs = {(row["Feature_"], row["Component_"]) for row in self.table("FeatureComponents")}
        self.assertEqual(pairs, {("ActiveDocument", name) for name in common | {"ActiveDocument", "ContentTypes"}}
                         | {("SharePoint", name) for name in common | {"SharePoint"}})
        for row in self.table("Registry"):
            names_helper = "{8D41F0B2" in row["Key"] or row["Name"] == "SharePoint"
            if row["Component_"] != "Settings":
                self.assertEqual(row["Component_"] == "SharePoint", names_helper, row)

    def GiveTheFilesVersionsOrHashes(self):
        files = {row["File"]: row for row in self.table("File")}
        module, notices = files["QuillPDF.IE.dll"], files["_THIRD_PARTY_NOTICES.txt"]
        self.assertEqual((module["Version"], module["Language"]), (package.version() + ".0", "1033"))
        self.assertEqual(module["FileName"].split("|")[1], "QuillPDF.IE.dll")
        self.assertEqual(int(module["FileSize"]), package.module().stat().st_size)
        self.assertEqual((notices["Version"], notices["FileName"]), ("", "THIRD-~2.TXT|THIRD-PARTY-NOTICES.txt"))
        digest = subprocess.run(["md5sum", self.notices], check=True, stdout=subprocess.PIPE, text=True).stdout[:32]
        parts = [int(row[f"HashPart{number}"]) for row in self.table("MsiFileHash") for number in range(1, 5)]
        self.assertEqual(struct.pack("<4i", *parts).hex(), digest)

    def GiveAFurtherProgramItsVersion(self):
        self.package = package.build(self.folder / "program.msi", files=[package.bin_folder / "QuillDiagnose.exe"])
        files = {row["File"]: row for row in self.table("File")}
        self.assertEqual(files["QuillDiagnose.exe"]["Version"], package.version() + ".0")
        pairs = {(row["Feature_"], row["Component_"]) for row in self.table("FeatureComponents")}
        for feature in product.FEATURES:
            self.assertIn((feature, "QuillDiagnose.exe"), pairs)

    def HoldTheFilesUnchanged(self):
        subprocess.run(["msiextract", "-C", self.folder / "extracted", self.package], check=True,
                       stdout=subprocess.DEVNULL)
        extracted = {path.name: path for path in (self.folder / "extracted").rglob("*.*") if path.is_file()}
        self.assertEqual(extracted.keys(), {"QuillPDF.IE.dll", self.notices.name})
        for name, source in (("QuillPDF.IE.dll", package.module()), (self.notices.name, self.notices)):
            self.assertTrue(extracted[name].read_bytes() == source.read_bytes(), name)

    def HoldFilesWithAConstantTime(self):
        cabinet = subprocess.run(["msiinfo", "extract", self.package, "product.cab"], check=True,
                                 stdout=subprocess.PIPE).stdout
        at, = struct.unpack_from("<I", cabinet, 16)
        count, = struct.unpack_from("<H", cabinet, 28)
        times = []
        for _ in range(count):
            times.append(struct.unpack_from("<HH", cabinet, at + 10))
            at = cabinet.index(b"\0", at + 16) + 1
        self.assertEqual(times, [((2000 - 1980) << 9 | 1 << 5 | 1, 0)] * 2)

    def NameProductVersionAndPublisher(self):
        properties = {row["Property"]: row["Value"] for row in self.table("Property")}
        expected = {"ProductName": "Quill PDF for Internet Explorer", "Manufacturer": "Quill", "ALLUSERS": "1",
                    "ProductVersion": package.version(), "UpgradeCode": product.UPGRADE_CODE,
                    "REBOOT": "ReallySuppress", "MSIRESTARTMANAGERCONTROL": "DisableShutdown"}
        self.assertEqual({name: properties.get(name) for name in expected}, expected)
        other = package.build(self.folder / "other.msi", "14.0.1")
        codes = [row["Value"] for path in (self.package, other) for row in package.table(path, "Property")
                 if row["Property"] in ("ProductCode", "UpgradeCode")]
        self.assertEqual(len(set(codes)), 3, "one upgrade code and a product code for each version")

    def AreFor64BitWindows(self):
        information = subprocess.run(["msiinfo", "suminfo", self.package], check=True, stdout=subprocess.PIPE,
                                     text=True)
        self.assertRegex(information.stdout, r"(?m)^Template: x64;1033$")
        self.assertNotRegex(information.stdout, "(?m)^(Created|Last saved|Last printed)")
        # Of each component; registry rows of the others would go to the 32-bit view.
        self.assertEqual({int(row["Attributes"]) & 256 for row in self.table("Component")}, {256})
        self.assertEqual({int(row["Type"]) for row in self.table("RegLocator")}, {2 + 16})

    def RefuseUnsuitableSystems(self):
        conditions = {row["Condition"]: row["Description"] for row in self.table("LaunchCondition")}
        self.assertEqual(conditions, {
            "VersionNT64": "[ProductName] needs a 64-bit edition of Windows.",
            "Privileged": "[ProductName] can be installed, repaired and removed by an administrator only.",
            "ALLUSERS = 1": "[ProductName] is installed for all users of the computer; ALLUSERS cannot be set.",
            "Installed OR NOT NEWERVERSIONFOUND": "A newer version of [ProductName] is already installed."})

    def ReplaceOlderVersionsFirst(self):
        sequence = {row["Action"]: int(row["Sequence"]) for row in self.table("InstallExecuteSequence")}
        self.assertEqual((sequence["InstallInitialize"], sequence["RemoveExistingProducts"]), (1500, 1501))
        self.assertLess(sequence["FindRelatedProducts"], sequence["LaunchConditions"])
        rows = {row["ActionProperty"]: (row["UpgradeCode"], row["VersionMin"], row["VersionMax"], row["Attributes"])
                for row in self.table("Upgrade")}
        code, version = product.UPGRADE_CODE, package.version()
        self.assertEqual(rows, {"OLDERVERSIONFOUND": (code, "", version, "1"),
                                "NEWERVERSIONFOUND": (code, version, "", "2")})

    def PassTheRememberedFolderToTheExecution(self):
        properties = {row["Property"]: row["Value"] for row in self.table("Property")}
        searched = {row["Property"] for row in self.table("AppSearch")}
        self.assertEqual(searched - set(properties["SecureCustomProperties"].split(";")), set())
        for table in ("InstallUISequence", "InstallExecuteSequence"):
            sequence = {row["Action"]: int(row["Sequence"]) for row in self.table(table)}
            self.assertLess(sequence["AppSearch"], sequence["SetInstallDir"])
            self.assertLess(sequence["SetInstallDir"], sequence["SetListedInstallDir"])
            self.assertLess(sequence["SetListedInstallDir"], sequence["CostInitialize"])

    def RunNoCodeOfTheProduct(self):
        self.assertNotIn("SelfReg", package.tables(self.package))
        kinds = {row["Action"].rstrip("0123456789"): row["Type"] for row in self.table("CustomAction")}
        self.assertEqual(kinds, {"SetInstallDir": "51", "SetListedInstallDir": "51", "SetInstallLocation": "51",
                                 "SetFormer": "51", "SetKeep": "51", "RestoreFormer": "3106"})

    def ReferToRowsThatExist(self):
        existing = {table: {row[column] for row in self.table(table)} for table, column in
                    (("Component", "Component"), ("Feature", "Feature"), ("Directory", "Directory"), ("File", "File"),
                     ("RegLocator", "Signature_"), ("CustomAction", "Action"), ("Registry", "Registry"))}
        references = (("Registry", "Component_", "Component"), ("File", "Component_", "Component"),
                      ("FeatureComponents", "Component_", "Component"), ("FeatureComponents", "Feature_", "Feature"),
                      ("Component", "Directory_", "Directory"), ("RemoveFile", "DirProperty", "Directory"),
                      ("RemoveFile", "Component_", "Component"), ("Condition", "Feature_", "Feature"),
                      ("MsiFileHash", "File_", "File"), ("AppSearch", "Signature_", "RegLocator"),
                      ("Feature", "Directory_", "Directory"))
        for table, column, target in references:
            for row in self.table(table):
                self.assertIn(row[column], existing[target], f"{table}: {row}")
        for row in self.table("Component"):
            keys = existing["Registry"] if int(row["Attributes"]) & 4 else existing["File"]
            self.assertIn(row["KeyPath"], keys)
        own_actions = {row["Action"] for row in self.table("InstallExecuteSequence")} & existing["CustomAction"]
        self.assertEqual(own_actions, existing["CustomAction"])

    def AreRefusedWhenARowIsNotOne(self):
        for row, reason in ((("A",), "1 values for 2 columns"), (("", "b"), "Property of  is empty"),
                            (("A" * 73, "b"), "longer than 72"), (("A", "b\tc"), "not printable ASCII"),
                            (("A", "ä"), "not printable ASCII")):
            with self.subTest(reason), self.assertRaisesRegex(schema.TableError, reason):
                schema.table_text("Property", [row])
        with self.assertRaisesRegex(schema.TableError, "two rows have the same key"):
            schema.table_text("Property", [("A", "b"), ("A", "c")])
