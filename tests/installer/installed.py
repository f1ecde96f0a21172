"""The base of the tests that install packages."""
import functools
import pathlib
import re
import shutil
import tempfile
import unittest

import package
import registry_listing
from windows import INSTALLER_KEYS, Windows

FOLDER = r"C:\Program Files\Quill\PDF for Internet Explorer"
FOLDER_ON_DISK = "Program Files/Quill/PDF for Internet Explorer"
MODULE = "QuillPDF.IE.dll"
OLDER_VERSION = "13.9.7"
CONTENT_TYPES = r"HKLM\SOFTWARE\Classes\MIME\Database\Content Type"
UNINSTALL = r"hklm\software\microsoft\windows\currentversion\uninstall"
DOCUMENT_CLASS = r"HKLM\SOFTWARE\Classes\CLSID\{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15}"
HELPER_CLASS = r"HKLM\SOFTWARE\Classes\CLSID\{8D41F0B2-6C7A-4E93-B5D8-2A0F19C6E4D7}"
# Type libraries are shared by 32-bit and 64-bit programs: their keys are listed in either view.
OTHER_VIEW = re.compile(r"wow6432node\\(classes\\)?typelib\\")


class InstallerTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="installer-test-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.windows = Windows(self.folder)
        self.package = package.build(self.folder / "package.msi")
        self.before = self.windows.registry()

    @functools.cached_property
    def older(self):
        """A package of an older version."""
        return package.build(self.folder / "older.msi", OLDER_VERSION)

    def expect(self, code, what, package_file, arguments=""):
        self.assertEqual(self.windows.msiexec(what, package_file, arguments), code, self.windows.log[-3000:])

    def install(self, arguments="", package_file=None):
        self.expect(0, "/i", package_file or self.package, arguments)

    def remove(self, package_file=None):
        self.expect(0, "/x", package_file or self.package)

    def assert_module(self, expected, folder=FOLDER_ON_DISK):
        """Expects the installed module to be a copy of the file."""
        self.assertTrue(self.module_on_disk(folder).read_bytes() == expected.read_bytes(), "another file")

    def assert_files(self, before):
        """Expects the disk to be as before."""
        after = self.windows.files()
        names = before.keys() | after.keys()
        self.assertEqual(sorted(name for name in names if before.get(name) != after.get(name)), [])

    def entries(self, listing):
        """The product's entries in the list of installed programs."""
        return [values for values in registry_listing.below(listing, UNINSTALL).values()
                if values.get("displayname") == "s Quill PDF for Internet Explorer"]

    def module_on_disk(self, folder=FOLDER_ON_DISK):
        return self.windows.drive / folder / MODULE

    def assert_listing(self, listing, features=("ActiveDocument", "SharePoint"), folder=FOLDER):
        """Expects that of what regsvr32 writes the registry holds what belongs to the features, and nothing else."""
        regsvr32 = registry_listing.expected_from_regsvr32(package.LISTING.read_text(), rf"{folder}\{MODULE}")
        expected = {key: values for key, values in regsvr32.items() if feature_of(key) in features}
        written = self.own_part(listing)
        self.assertEqual(registry_listing.difference(
            expected, {key: values for key, values in written.items() if key not in regsvr32 or feature_of(key)}), [])

    def own_part(self, listing):
        """What the product has added to the registry."""
        added = registry_listing.added(self.before, listing)
        return {key: values for key, values in registry_listing.without(
            added, *INSTALLER_KEYS, UNINSTALL, r"hklm\software\quill").items() if not OTHER_VIEW.search(key)}

    def assert_registry(self, before):
        """Expects the registry to be as before, but for empty keys of Windows Installer itself."""
        changes = registry_listing.difference(before, self.windows.registry())
        empty_keys = tuple(f"+ {key}" for key in INSTALLER_KEYS)
        self.assertEqual([line for line in changes
                          if not line.startswith(empty_keys) or ": " in line or "products\\" in line], [])


def feature_of(key):
    """The feature to which a key of the listing belongs; nothing for the keys above those of the product."""
    if "{8d41f0b2" in key:
        return "SharePoint"
    own = ("{5e2c7a90", "{c2a95e14", "{a4e19c37", "quillpdf", r"database\content type" + "\\")
    return "ActiveDocument" if any(part in key for part in own) else ""
