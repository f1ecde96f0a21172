"""The reader of registry scripts and of the type library's IDL file."""
import pathlib
import tempfile
import unittest

import registration
import registry_script
import type_library
from package import ROOT

BAD_SCRIPTS = {
    "HKXX { }": "not a root key",
    "'HKLM'": "a root key without a block",
    "HKLM": "a root key without a block",
    "HKLM { 'a'": "a block without its end",
    "HKLM { 'a' { }": "a block without its end",
    "HKLM { 'a }": "a quoted word without its end",
    "HKLM { 'a' = s }": "a block without its end",
    "HKLM { 'a' = s": "a value without its data",
    "HKLM { 'a' = x 'b' }": "not a type of value",
    "HKLM { 'a' = 's' 'b' }": "not a type of value",
    "HKLM { 'a' = d 'b' }": "not a value of type d",
    "HKLM { 'a' = d '4294967296' }": "not a value of type d",
    "HKLM { 'a' = d '-1' }": "not a value of type d",
    "HKLM { 'a' = d '' }": "not a value of type d",
    "HKLM { 'a' = b '123' }": "not a value of type b",
    "HKLM { 'a' = b 'xy' }": "not a value of type b",
    "HKLM { val 'a' }": "has no data",
    "HKLM { val = s 'a' }": "a name is missing",
    "HKLM { '' }": "a name is missing",
    "HKLM { NoRemove }": "a name is missing",
    "HKLM { = s 'a' }": "a name is missing",
    "HKLM { } }": "not a root key",
    "HKLM " + "{ 'a' " * 201 + "}" * 201: "keys are nested too deeply",
}
# What the language permits and the installer cannot do.
UNSUITABLE_SCRIPTS = {
    "": "nothing to register",
    "HKCU { NoRemove 'SOFTWARE' { ForceRemove 'a' = s 'b' } }": "nothing to register",
    "HKU { 'a' }": "the installer writes nothing to HKU",
    "HKLM { Delete 'a' }": "the installer does not delete keys",
    "HKLM { NoRemove 'SOFTWARE' { 'a' = s 'b' } }": "neither NoRemove nor ForceRemove",
    "HKLM { ForceRemove 'a' = s '%OTHER%' }": "unknown replacement %OTHER%",
    "HKLM { ForceRemove 'a' = s '100%' }": "a % without its pair",
}


class Script(unittest.TestCase):
    def IsReadAsTheModuleReadsIt(self):
        sections = registry_script.parse("""hklm { noremove 'SOFTWARE' { ForceRemove 'it''s' = s ''
            { val 'N' = d '0x10' val 'B' = b '00fF' sub = s x 'val' } } } HKEY_CLASSES_ROOT { }""")
        key = registry_script.Key
        value = registry_script.Value
        self.assertEqual(sections, [
            ("HKLM", key("", "NoRemove", [], [key("SOFTWARE", "NoRemove", [], [
                key("it's", "ForceRemove", [value("", "s", ""), value("N", "d", 16), value("B", "b", b"\x00\xff")], [
                    key("sub", "", [value("", "s", "x")]), key("val")])])])),
            ("HKCR", key("", "NoRemove"))])

    def IsRefusedWithItsLineIfItIsNotOne(self):
        for text, reason in BAD_SCRIPTS.items():
            with self.subTest(text[:60]), self.assertRaisesRegex(registry_script.ScriptError, f"^line 1: .*{reason}"):
                registry_script.parse(text)
        with self.assertRaisesRegex(registry_script.ScriptError, "^line 3: "):
            registry_script.parse("HKLM\n{\n'a' = x ''\n}\n")

    def IsExpandedOnce(self):
        self.assertEqual(registry_script.expand("%MODULE%%%%MODULE%", {"MODULE": "%a%"}), "%a%%%a%")


class Registration(unittest.TestCase):
    def registration_of(self, script, idl=None):
        with tempfile.TemporaryDirectory() as folder:
            folder = pathlib.Path(folder)
            for name in ("active_doc.rgs", "sharepoint.rgs", "quill_pdf_ie.idl"):
                (folder / name).write_text((ROOT / "module" / name).read_text())
            (folder / "sharepoint.rgs").write_text(script)
            if idl is not None:
                (folder / "quill_pdf_ie.idl").write_text(idl)
            return registration.read(folder)

    def RefusesWhatTheInstallerCannotDo(self):
        for text, reason in UNSUITABLE_SCRIPTS.items():
            with self.subTest(text), self.assertRaisesRegex(registration.RegistrationError,
                                                            "sharepoint.rgs: .*" + reason):
                self.registration_of(text)

    def RefusesTheSameValueTwice(self):
        with self.assertRaisesRegex(registration.RegistrationError, "written twice: A, value 'n'"):
            self.registration_of("HKLM { ForceRemove 'a' { val 'N' = s '' } ForceRemove 'A' { val 'n' = s '' } }")

    def RefusesTextThatIsNotAscii(self):
        with self.assertRaisesRegex(registration.RegistrationError, "not printable ASCII"):
            self.registration_of("HKLM { ForceRemove 'a' = s 'ä' }")

    def RefusesAnIdlFileWithoutALibrary(self):
        script = (ROOT / "module/sharepoint.rgs").read_text()
        idl = (ROOT / "module/quill_pdf_ie.idl").read_text()
        for found, replaced, reason in (("library", "libary", "no library"), ("version(14.0)", "", "no version"),
                                        ("dual,", "", "not a dual interface"),
                                        ("uuid(A4E19C37", "uuid(A4E19C3", "no uuid of the IQuillPDF_IE_ActiveDoc")):
            with self.subTest(reason), self.assertRaisesRegex(registration.RegistrationError, reason):
                self.registration_of(script, idl.replace(found, replaced))

    def WritesVersionsOfTheTypeLibraryInHexadecimal(self):
        idl = (ROOT / "module/quill_pdf_ie.idl").read_text().replace("version(14.0)", "version(26.11)")
        keys = [key for key, _, _ in type_library.values(idl, "m", "f")]
        self.assertIn(r"TypeLib\{C2A95E14-7F38-4B60-9D1A-E5B7084F2C63}\1a.b", keys)
