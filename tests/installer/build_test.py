"""The command that builds the package."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

import package


class Scratch(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="installer-test-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)


class Build(Scratch):
    def GivesTheSameBytesInAnotherFolderAtAnotherTime(self):
        packages = []
        for number, name in enumerate(("a", "another folder")):
            tree = self.folder / name
            for part in ("packaging/msi", "module"):
                shutil.copytree(package.ROOT / part, tree / part)
            dll, notices = tree / f"module{number}.dll", tree / "notices.txt"
            shutil.copyfile(package.module(), dll)
            notices.write_text("notices")
            for file in tree.rglob("*"):
                os.utime(file, (10**9 * (number + 1),) * 2)
                if file.is_file():
                    file.chmod(0o755 if number else 0o700)
            out = tree / "package.msi"
            subprocess.run([tree / "packaging/msi/build-msi", "--version", package.version(), "--dll", dll, "--file",
                            notices, "--out", out], check=True,
                           env={**os.environ, "TZ": ["UTC", "Asia/Tokyo"][number], "LC_ALL": ["C", "C.UTF-8"][number]})
            packages.append(out.read_bytes())
        self.assertEqual(packages[0], packages[1])
        self.assertNotIn(str(self.folder).encode(), packages[0])

    def GivesAnotherPackageCodeForOtherContents(self):
        notices = self.folder / "notices.txt"
        codes = []
        for text in ("one", "two"):
            notices.write_text(text)
            path = package.build(self.folder / "package.msi", files=[notices])
            codes.append(subprocess.run(["msiinfo", "suminfo", path], check=True, stdout=subprocess.PIPE).stdout)
        self.assertNotEqual(codes[0], codes[1])

    def IsRefusedForBadArguments(self):
        good, out = package.version(), self.folder / "package.msi"
        text = self.folder / "text.dll"
        text.write_text("MZ, but without a version")
        truncated = self.folder / "truncated.dll"
        truncated.write_bytes(package.module().read_bytes()[:1000])
        upper = self.folder / "quillpdf.ie.DLL"
        upper.write_text("")
        cases = [(version, package.module(), [], "not a version") for version in
                 ("", "1", "14.0", "14.0.0.0", "v14.0.0", "14.0.x", "14.00.0", "256.0.0", "1.256.0", "1.0.65536")]
        cases += [
            ("99.0.0", package.module(), [], f"has version {good}.0, not 99.0.0.0"),
            (good, self.folder / "missing.dll", [], "no such file"),
            (good, self.folder, [], "no such file"),
            (good, text, [], "has no version resource"),
            (good, truncated, [], "has no version resource"),
            (good, package.module(), ["--file", self.folder / "missing.txt"], "no such file"),
            (good, package.module(), ["--file", upper], "two files are called"),
        ]
        for version, dll, more, reason in cases:
            with self.subTest(version=version, dll=dll.name, reason=reason):
                code, errors = package.run_build("--version", version, "--dll", dll, "--out", out, *more)
                self.assertEqual(code, 1)
                self.assertRegex(errors, f"^build-msi: .*{reason}.*\n$")
                self.assertEqual([path.name for path in self.folder.glob("*.msi*")], [])

    def LeavesTheOldPackageWhenItFails(self):
        out = self.folder / "package.msi"
        out.write_text("old")
        package.run_build("--version", "99.0.0", "--dll", package.module(), "--out", out)
        self.assertEqual(out.read_text(), "old")

    def SaysWhichToolIsMissing(self):
        result = subprocess.run(["/usr/bin/python3", package.BUILD_MSI, "--version", package.version(), "--dll",
                                 package.module(), "--out", self.folder / "package.msi"],
                                env={"PATH": "/nowhere"}, stderr=subprocess.PIPE, text=True)
        self.assertEqual((result.returncode, result.stderr),
                         (1, "build-msi: gcab is not installed (tools/install-packages)\n"))
