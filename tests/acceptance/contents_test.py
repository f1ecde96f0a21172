"""What is in the kit."""
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest
import zipfile

import package
from kit import MAKE_KIT, make_kit

# The installed program of the package, and libraries of the suite without which the module works.
NOT_IN_THE_KIT = {"QuillDiagnose.exe", "as_compat.dll", "crashguard14.dll", "pdfcore.dll"}


class KitContents(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="acceptance-test-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.archive = zipfile.ZipFile(make_kit())
        self.addCleanup(self.archive.close)

    def AreListedWithTheirChecksums(self):
        listed = dict(reversed(line.split("  ", 1)) for line in
                      self.archive.read("contents.txt").decode().splitlines())
        self.assertEqual({name: hashlib.sha256(self.archive.read(name)).hexdigest()
                          for name in self.archive.namelist() if name != "contents.txt"}, listed)

    def HaveEveryProgramOfTheSteps(self):
        steps = (package.ROOT / "acceptance/steps.cpp").read_text()
        programs = set(re.findall(r'"(test_\w+\.exe)"', steps))
        self.assertGreater(len(programs), 3)
        self.assertEqual({f"bin/{name}" for name in programs} - set(self.archive.namelist()), set())

    def HaveEveryFileThatTheirProgramsName(self):
        samples = package.ROOT / "samples"
        known = {path.name for path in package.bin_folder.iterdir() if path.suffix in (".exe", ".dll")}
        known |= {path.name for path in (package.ROOT / "tests/module").glob("*.txt")}
        known |= {path.relative_to(samples).as_posix() for path in samples.rglob("*") if path.suffix in (".pdf", ".html")}
        named = set()
        for program in self.archive.namelist():
            if program.endswith((".exe", ".dll", ".cmd")):
                text = self.archive.read(program)
                named |= {name for name in known - {pathlib.PurePosixPath(program).name}
                          if name.encode() in text or name.encode("utf-16-le") in text}
        packed = {name.removeprefix("bin/").removeprefix("samples/") for name in self.archive.namelist() if name.startswith("bin/")}
        self.assertEqual(named - packed, NOT_IN_THE_KIT & known)
        self.assertEqual(packed - named, set(), "no program needs it")

    def HaveTheLineEndsOfWindows(self):
        for name in ("accept.cmd", "readme.txt"):
            text = self.archive.read(name)
            self.assertEqual(text.count(b"\n"), text.count(b"\r\n"), name)
            self.assertGreater(text.count(b"\r\n"), 10)
            self.assertEqual(text.decode("ascii").count("\t"), 0)

    def DoNotDependOnTimes(self):
        # Small programs: compressing takes most of the time.
        archives = []
        for time in (1, 2_000_000_000):
            programs = self.folder / f"programs-{time}"
            programs.mkdir()
            for name in self.archive.namelist():
                path = pathlib.PurePosixPath(name)
                if path.parts[0] == "bin" and len(path.parts) == 2 and path.suffix != ".txt":
                    (programs / path.name).write_bytes(name.encode())
                    os.utime(programs / path.name, (time, time))
            installer = programs / "a.msi"
            installer.write_bytes(b"a package")
            archives.append(self.folder / f"{time}.zip")
            subprocess.run([MAKE_KIT, "--bin", programs, "--installer", installer, "--out", archives[-1]], check=True,
                           env={**os.environ, "TZ": f"UTC{len(archives)}"})
        self.assertTrue(archives[0].read_bytes() == archives[1].read_bytes(), "the archives differ")

    def AreExplainedByTheReadme(self):
        readme = self.archive.read("readme.txt").decode()
        document = (package.ROOT / "docs/acceptance.md").read_text()
        codes = dict(re.findall(r"(exit_\w+) = (\d+)", (package.ROOT / "acceptance/exit_codes.h").read_text()))
        self.assertGreater(len(codes), 10)
        for name, code in codes.items():
            self.assertRegex(readme, rf"(?m)^ +{code}  ", name)
            self.assertRegex(document, rf"(?m)^\| {code} \| ", name)
