"""The kit as a test gets it: made by packaging/make-acceptance-kit, unpacked elsewhere."""
import fcntl
import hashlib
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest
import zipfile

import package
import registry_listing
from windows import INSTALLER_KEYS, Windows, windows_path

MAKE_KIT = package.ROOT / "packaging/make-acceptance-kit"
FOLDER_NAME = "Quill kit ä"  # with a blank and a letter that is not ASCII
# What WinINet and WinVerifyTrust write for a user at their first use.
SYSTEM_DEFAULTS = (r"+ hkcu\software\microsoft\windows\currentversion\internet settings: proxyenable",
                   r"+ hkcu\software\microsoft\windows\currentversion\wintrust")
# Wine copies the machine's authorities to the registry at the first use of TLS.
CERTIFICATE_STORES = tuple(rf"+ {root}\microsoft\systemcertificates"
                           for root in (r"hkcu\software", r"hklm\software", r"hklm\software\wow6432node"))
OWN_SUBJECT = ",".join(f"{byte:02x}" for byte in b"localhost")
# The parents of the key that Wine keeps a key container in.
PARENTS_OF_CONTAINERS = (r"+ hkcu\software\wine\crypto", r"+ hkcu\software\wine\crypto\rsa")


def make_kit():
    """The archive of the kit. Compressing takes seconds, so the tests share it until a file of the build changes."""
    parts = [package.bin_folder / "QuillPDF.IE.dll", *sorted(package.bin_folder.glob("*.exe")), MAKE_KIT]
    for folder in ("acceptance", "packaging/msi", "samples", "module"):
        parts += sorted(path for path in (package.ROOT / folder).rglob("*") if path.is_file())
    key = hashlib.sha256(repr([(str(path), path.stat().st_size, path.stat().st_mtime_ns) for path in parts]).encode())
    cache = package.ROOT / "build/acceptance-tests"
    cache.mkdir(parents=True, exist_ok=True)
    folder = cache / key.hexdigest()[:16]
    with open(cache / "lock", "w") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        if not (folder / "kit.zip").exists():
            for older in cache.glob("*/"):
                shutil.rmtree(older)
            folder.mkdir()
            installer = package.build(folder / f"QuillPDF.IE-{package.version()}-x64.msi",
                                      files=[package.bin_folder / "QuillDiagnose.exe"])
            subprocess.run([MAKE_KIT, "--bin", package.bin_folder, "--installer", installer, "--out",
                            folder / "new.zip"], check=True)
            (folder / "new.zip").rename(folder / "kit.zip")
    return folder / "kit.zip"


def write_contents(folder):
    """Updates the list of checksums after a test has replaced a file."""
    listed = [line[66:] for line in (folder / "contents.txt").read_text().splitlines()]
    (folder / "contents.txt").write_text("".join(
        f"{hashlib.sha256((folder / name).read_bytes()).hexdigest()}  {name}\n" for name in listed))


class KitTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.scratch = pathlib.Path(tempfile.mkdtemp(prefix="acceptance-test-"))
        self.addCleanup(shutil.rmtree, self.scratch)
        self.windows = Windows(self.scratch)
        self.archive = make_kit()
        self.kit = self.unpack(FOLDER_NAME)
        # The prefix has no engine for HTML pages. Its stand-in is no part of the kit.
        self.assertEqual(self.windows.run("regsvr32", "/s", package.bin_folder / "QuillPages.dll")[0], 0)
        self.registry_before = self.registry()
        self.files_before = self.windows.files()

    def unpack(self, name):
        folder = self.scratch / name
        with zipfile.ZipFile(self.archive) as archive:
            archive.extractall(folder)
        return folder

    def registry(self):
        return {**self.windows.registry(), **self.windows.registry("HKEY_CURRENT_USER")}

    def start(self, *arguments):
        """accept.cmd, with its output in a file of the kit's folder."""
        self.output_file = open(self.scratch / "output.txt", "w")
        self.addCleanup(self.output_file.close)
        return self.windows.start("cmd", "/c", windows_path(self.kit / "accept.cmd"), *arguments,
                                  stdout=self.output_file, stderr=subprocess.STDOUT)

    def accept(self, *arguments):
        """(exit code, output) of accept.cmd."""
        return self.windows.run_reporting("cmd", "/c", windows_path(self.kit / "accept.cmd"), *arguments)

    def report(self, name="report.txt"):
        return (self.kit / name).read_text("utf-8-sig")

    def fact(self, name):
        """The value of a line "  name: value" of the report."""
        match = re.search(rf"(?m)^ +{re.escape(name)}: (.*)$", self.report())
        self.assertIsNotNone(match, f"no line {name} in:\n{self.report()}")
        return match[1]

    def expect(self, code, *arguments):
        actual, output = self.accept(*arguments)
        self.assertEqual(actual, code, output)
        if code in (0, 1):
            self.assertFalse((self.kit / "report-refused.txt").exists(), "a run that is not refused has one report")
        return output

    def assert_as_before(self):
        """Expects registry and disk to be as before, but for empty keys of Windows Installer itself."""
        empty_keys = tuple(f"+ {key}" for key in INSTALLER_KEYS)
        changes = [line for line in registry_listing.difference(self.registry_before, self.registry())
                   if not line.startswith(SYSTEM_DEFAULTS) and line not in PARENTS_OF_CONTAINERS and
                   (not line.startswith(CERTIFICATE_STORES) or OWN_SUBJECT in line)]
        self.assertEqual([line for line in changes
                          if not line.startswith(empty_keys) or ": " in line or "products\\" in line], [])
        files = self.windows.files()
        names = self.files_before.keys() | files.keys()
        self.assertEqual(sorted(name for name in names if self.files_before.get(name) != files.get(name)), [])
        self.assert_clean()

    def assert_clean(self):
        left = sorted(path.name for path in self.kit.iterdir())
        self.assertNotIn("journal.txt", left)
        self.assertNotIn("work", left)
