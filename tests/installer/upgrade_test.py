"""Newer and older versions over an installed one."""
import package
from installed import FOLDER_ON_DISK, OLDER_VERSION, InstallerTest


class Upgrade(InstallerTest):
    def versions(self):
        return [values["displayversion"] for values in self.entries(self.windows.registry())]

    def KeepsTheFolderAndTheFeatures(self):
        files_before = self.windows.files()
        self.install(r'ADDLOCAL=SharePoint INSTALLDIR="C:\Another folder"', self.older)
        self.assertEqual(self.versions(), [f"s {OLDER_VERSION}"])
        self.install()
        self.assertEqual(self.versions(), [f"s {package.version()}"])
        self.assert_module(package.module(), "Another folder")
        self.assertFalse((self.windows.drive / FOLDER_ON_DISK).exists())
        self.assert_listing(self.windows.registry(), ("SharePoint",), folder=r"C:\Another folder")
        self.remove()
        self.assert_registry(self.before)
        self.assert_files(files_before)

    def ReplacesTheOlderVersionAndRefusesIt(self):
        self.install(package_file=self.older)
        self.assert_module(package.module_of_version(self.folder, OLDER_VERSION))
        self.install()
        installed, files = self.windows.registry(), self.windows.files()
        self.assert_listing(installed)
        self.assertEqual([values["displayversion"] for values in self.entries(installed)], [f"s {package.version()}"])
        self.assert_module(package.module())

        self.expect(1603, "/i", self.older)
        self.assert_registry(installed)
        self.assert_files(files)
