"""Installing, choosing features, repairing and removing."""
import re

import package
import registry_listing
from installed import (CONTENT_TYPES, DOCUMENT_CLASS, FOLDER, FOLDER_ON_DISK, HELPER_CLASS, UNINSTALL,
                       InstallerTest)
from registry_listing import SETTINGS, below

PROGRAM = "QuillDiagnose.exe"


class Installation(InstallerTest):
    def WritesWhatRegsvr32WritesAndRemovesIt(self):
        user, files_before = self.windows.registry("HKEY_CURRENT_USER"), self.windows.files()
        notices = self.folder / "NOTICES of others.txt"
        notices.write_text("notices")
        program = package.bin_folder / PROGRAM
        self.package = package.build(self.package, files=[notices, program])
        self.install()
        installed = self.windows.registry()
        self.assert_listing(installed)
        self.assertEqual(registry_listing.difference(user, self.windows.registry("HKEY_CURRENT_USER")), [])
        self.assert_module(package.module())
        self.assertEqual(self.module_on_disk().with_name(notices.name).read_text(), "notices")
        self.assertTrue(self.module_on_disk().with_name(PROGRAM).read_bytes() == program.read_bytes(), "another file")
        self.assertIn("INSTALL", self.windows.log)
        entries = self.entries(installed)
        self.assertEqual(len(entries), 1)
        expected = {"displayversion": f"s {package.version()}", "publisher": "s Quill",
                    "installlocation": f"s {FOLDER}\\"}
        self.assertEqual({name: entries[0].get(name) for name in expected}, expected)

        # What others wrote below the product's own keys is removed, as by regsvr32.
        self.windows.set_value(DOCUMENT_CLASS + r"\of another", "x", "y")
        self.remove()
        self.assert_registry(self.before)
        self.assertEqual(registry_listing.difference(user, self.windows.registry("HKEY_CURRENT_USER")), [])
        self.assert_files(files_before)

    def diagnosis(self):
        """The state of each check of the installed diagnosis program."""
        code, output = self.windows.run_reporting(self.module_on_disk().with_name(PROGRAM))
        self.assertEqual(code, 1, output)
        return {line[8:]: line[:8].strip() for line in output.splitlines() if re.match("OK |NOTE |PROBLEM ", line)}

    def OfOneFeatureWritesOnlyItsRows(self):
        self.package = package.build(self.package, files=[package.bin_folder / PROGRAM])
        self.install("ADDLOCAL=SharePoint")
        self.assert_listing(self.windows.registry(), ("SharePoint",))
        self.assertEqual(self.diagnosis()["Installation"], "NOTE")
        self.install("ADDLOCAL=ActiveDocument")
        self.assert_listing(self.windows.registry())
        found = self.diagnosis()
        # What the package does not bring: the viewer, and 64-bit tabs.
        self.assertEqual({check for check, state in found.items() if state == "PROBLEM"},
                         {"Viewer, ProgID", "Viewer, server", "64-bit tabs", "Zones in which a PDF opens"})
        self.assertEqual((found["Installation"], found["Helper object, registration"]), ("OK", "OK"))
        self.install("REMOVE=SharePoint")
        self.assert_listing(self.windows.registry(), ("ActiveDocument",))
        self.assertTrue(self.module_on_disk().exists(), "the other feature needs it")
        self.remove()
        self.assert_registry(self.before)
        self.assertFalse(self.module_on_disk().parent.parent.exists())

    def IsRepairedInAnotherFolder(self):
        files_before = self.windows.files()
        self.install(r'INSTALLDIR="C:\Another folder"')
        module = self.module_on_disk("Another folder")
        installed = self.windows.registry()
        self.assert_listing(installed, folder=r"C:\Another folder")

        module.write_bytes(b"damaged")
        self.windows.reg("delete", DOCUMENT_CLASS + r"\InprocServer32", "/f")
        self.windows.reg("delete", CONTENT_TYPES + r"\application/pdf", "/v", "CLSID", "/f")
        self.windows.reg("delete", SETTINGS, "/f")
        self.windows.reg("add", HELPER_CLASS + r"\InprocServer32", "/ve", "/d", "damaged", "/f")
        self.install("REINSTALL=ALL REINSTALLMODE=amus")
        self.assert_module(package.module(), "Another folder")
        self.assertFalse((self.windows.drive / FOLDER_ON_DISK).exists())
        repaired = self.windows.registry()
        self.assert_listing(repaired, folder=r"C:\Another folder")
        self.assertEqual(below(repaired, SETTINGS), below(installed, SETTINGS))

        module.unlink()
        self.install("REINSTALL=ALL REINSTALLMODE=omus")
        self.assert_module(package.module(), "Another folder")
        self.remove()
        self.assert_registry(self.before)
        self.assert_files(files_before)

    def IsRefusedOnUnsuitableSystems(self):
        files = self.windows.files()
        for name in ("VersionNT64", "Privileged"):
            refused = package.build(self.folder / f"without-{name}.msi")
            # As if the system had not set the property.
            package.change(refused,
                           "INSERT INTO `CustomAction` (`Action`, `Type`, `Source`, `Target`) "
                           f"VALUES ('Clear', 51, '{name}', '[NotSet]')",
                           "INSERT INTO `InstallExecuteSequence` (`Action`, `Sequence`) VALUES ('Clear', 90)")
            with self.subTest(name):
                self.expect(1603, "/i", refused)
        with self.subTest("ALLUSERS"):
            self.expect(1603, "/i", self.package, 'ALLUSERS=""')
        self.assert_registry(self.before)
        self.assert_files(files)
