"""What the kit refuses: a message, an exit code, and nothing is changed."""
import shutil

import package
from installed import DOCUMENT_CLASS
from kit import KitTest
from windows import windows_path

CONTROL_CLASS = r"HKLM\SOFTWARE\Classes\CLSID\{8856F961-340A-11D0-A96B-00C04FD705A2}"
EARLIER_REPORT = "the report of an earlier run"
HTML_TYPE = r"HKLM\SOFTWARE\Classes\MIME\Database\Content Type\text/html"


class AcceptanceKit(KitTest):
    def refused(self, code, text, *command):
        """Expects a refusal by a command line, "accept.cmd" if there is none, and that report and logs of an earlier
        run stay as they are."""
        if not (self.kit / "report.txt").exists():
            (self.kit / "report.txt").write_text(EARLIER_REPORT)
        (self.kit / "failed-plain.txt").write_text(EARLIER_REPORT)
        actual, output = self.windows.run_reporting(*command) if command else self.accept()
        self.assertEqual(actual, code, output)
        self.assertRegex(output, "REFUSED: (nothing was changed\n|.* Nothing was changed\.)")
        self.assertIn(text, output)
        if (self.kit / "report.txt").is_file():
            self.assertEqual(self.report(), EARLIER_REPORT)
        self.assertEqual((self.kit / "failed-plain.txt").read_text(), EARLIER_REPORT)
        self.assertIn(text, self.report("report-refused.txt"))
        self.assert_clean()

    def run_script(self, *lines):
        """(exit code, output) of a script of commands for cmd."""
        script = self.kit / "script.cmd"
        script.write_text("".join(f"@{line}\r\n" for line in lines))
        return self.windows.run_reporting("cmd", "/c", windows_path(script))

    def RefusesUnsuitableMachines(self):
        accept = '"%~dp0accept.cmd"'  # without "call": the script ends with its exit code
        with self.subTest("32-bit Windows"):
            code, output = self.run_script("set PROCESSOR_ARCHITEW6432=", "set PROCESSOR_ARCHITECTURE=x86", accept)
            self.assertEqual(code, 10, output)
            text = "64-bit Windows on an x64 processor is needed; this is x86"
            self.assertIn(text, output)
            self.assertIn(text, self.report())
            (self.kit / "report.txt").write_text(EARLIER_REPORT)
            self.assertEqual(self.run_script("set PROCESSOR_ARCHITEW6432=", "set PROCESSOR_ARCHITECTURE=x86", accept)[0], 10)
            self.assertEqual(self.report(), EARLIER_REPORT)
            self.assertIn(text, self.report("report-refused.txt"))
            (self.kit / "report-refused.txt").unlink()
            (self.kit / "report.txt").unlink()
        with self.subTest("a 32-bit cmd on 64-bit Windows"):
            code, output = self.run_script("set PROCESSOR_ARCHITEW6432=AMD64", "set PROCESSOR_ARCHITECTURE=x86", accept + " --help")
            self.assertEqual(code, 2, output)
        with self.subTest("no administrator's rights"):
            code, output = self.windows.run_reporting(package.bin_folder / "limited_start.exe", "cmd", "/c",
                                                      windows_path(self.kit / "accept.cmd"))
            self.assertEqual(code, 11, output)
            self.assertIn("run accept.cmd as administrator", self.report())
            self.assertFalse((self.kit / "report-refused.txt").exists(), "there was no earlier report")
            self.assert_clean()
            (self.kit / "report.txt").unlink()
        for key in (CONTROL_CLASS, HTML_TYPE):
            with self.subTest(key):
                self.windows.reg("copy", key, r"HKLM\SOFTWARE\Moved", "/s", "/f")
                self.windows.reg("delete", key, "/f")
                self.refused(12, "Internet Explorer's engine is missing")
                self.windows.reg("copy", r"HKLM\SOFTWARE\Moved", key, "/s", "/f")
                self.windows.reg("delete", r"HKLM\SOFTWARE\Moved", "/f")
        self.assert_as_before()

    def RefusesAnInstalledOrRegisteredProduct(self):
        installer = next(self.archive.parent.glob("*.msi"))
        self.assertEqual(self.windows.msiexec("/i", installer), 0)
        self.registry_before, self.files_before = self.registry(), self.windows.files()
        self.refused(13, "The product is installed already")
        self.assert_as_before()
        self.assertEqual(self.windows.msiexec("/x", installer), 0)
        for options in ((), ("/n", "/i:user")):
            with self.subTest(options):
                module = package.bin_folder / "QuillPDF.IE.dll"
                self.assertEqual(self.windows.run("regsvr32", "/s", *options, module)[0], 0)
                self.registry_before, self.files_before = self.registry(), self.windows.files()
                self.refused(14, "registered already")
                self.assert_as_before()
                self.assertEqual(self.windows.run("regsvr32", "/s", "/u", *options, module)[0], 0)

    def refused_without(self, root, key):
        """Expects a refusal while a key admits no access."""
        self.refused(19, rf"{root}\{key} cannot be opened: error 5", package.bin_folder / "denied_key.exe", root, key,
                     "cmd", "/c", windows_path(self.kit / "accept.cmd"))

    def RefusesAMachineWhoseKeysItCannotRead(self):
        self.windows.set_value(r"HKCU\SOFTWARE\QuillTest\Below", "value", "of another program")
        self.windows.set_value(DOCUMENT_CLASS, "value", "of another program")
        self.registry_before = self.registry()
        self.refused_without("HKLM", DOCUMENT_CLASS.removeprefix("HKLM\\"))  # must not exist
        self.windows.reg("delete", DOCUMENT_CLASS, "/f")
        self.refused_without("HKCU", r"SOFTWARE\QuillTest\Below")  # would be saved
        self.windows.set_value(DOCUMENT_CLASS, "value", "of another program")
        self.assert_as_before()

    def RefusesADamagedKitAndAFolderThatCannotBeWritten(self):
        complete = self.kit
        for name, damage, text in (
                ("missing program", lambda kit: (kit / "bin/QuillAcceptance.exe").unlink(), "QuillAcceptance.exe"),
                ("missing file", lambda kit: (kit / "bin/samples/care.pdf").unlink(), r"bin\samples\care.pdf is missing"),
                ("damaged file", lambda kit: (kit / "bin/test_plain.exe").write_bytes(b"MZ"),
                 r"bin\test_plain.exe is damaged"),
                ("damaged list", lambda kit: (kit / "contents.txt").write_text("x"), "contents.txt is missing or damaged"),
                ("no list", lambda kit: (kit / "contents.txt").unlink(), "contents.txt is missing or damaged")):
            with self.subTest(name):
                self.kit = self.unpack(name)
                damage(self.kit)
                self.refused(15, text)
                shutil.rmtree(self.kit)
        self.kit = complete
        for name in ("bin/test_installed.exe", "bin/QuillPDF.IE.dll", "bin/registered_per_machine.txt",
                     next(self.kit.glob("*.msi")).name):
            with self.subTest("missing file", name=name):
                (self.kit / name).rename(self.scratch / "moved")
                self.refused(15, name.replace("/", "\\") + " is missing")
                (self.scratch / "moved").rename(self.kit / name)
        with self.subTest("report"):
            (self.kit / "report.txt").unlink(missing_ok=True)
            (self.kit / "report.txt").mkdir()
            self.refused(16, "report.txt cannot be replaced")
            (self.kit / "report.txt").rmdir()
        with self.subTest("report that a program has opened"):
            (self.kit / "report.txt").write_text(EARLIER_REPORT)
            code, output = self.run_script('"%~dp0accept.cmd" <"%~dp0report.txt"')
            self.assertEqual(code, 16, output)
            self.assertIn("report.txt cannot be replaced", self.report("report-refused.txt"))
            self.assertEqual(self.report(), EARLIER_REPORT)
            self.assert_clean()
        with self.subTest("report of a refusal"):
            (self.kit / "report-refused.txt").unlink()
            (self.kit / "report-refused.txt").mkdir()
            output = self.expect(16)
            self.assertIn("report-refused.txt cannot be written", output)
            self.assertEqual(self.report(), EARLIER_REPORT)
            (self.kit / "report-refused.txt").rmdir()
        with self.subTest("journal"):
            (self.kit / "journal.txt.new").mkdir()
            self.refused(16, "journal.txt, which would hold the state of the machine, cannot be written")
            (self.kit / "journal.txt.new").rmdir()
        product = "{162DB887-D266-5794-B691-094FDA428AD5}".encode().hex()
        for tree in ("", "tree HKLM 64 " + "SOFTWARE".encode().hex() + "\nend\n"):
            with self.subTest("journal of an earlier run", tree=tree):
                (self.kit / "journal.txt").write_text(f"quill acceptance journal 1\nproduct {product}\n{tree}")
                output = self.expect(18)
                self.assertIn("journal.txt, which holds the state before that run, is damaged", output)
                self.assertIn("REFUSED: the state before an earlier run is not restored", output)
                self.assertEqual(self.report(), EARLIER_REPORT)
                (self.kit / "journal.txt").unlink()
        with self.subTest("options"):
            for arguments in (("--only", "nothing"), ("--only",), ("--help",)):
                output = self.expect(2, *arguments)
                self.assertIn("steps: plain platform", output)
        with self.subTest("code page of the console"):
            _, output = self.windows.run_reporting(package.bin_folder / "in_console.exe", "850", "cmd", "/c",
                                                   windows_path(self.kit / "accept.cmd"), "--help")
            self.assertIn("steps: plain platform", output)
            self.assertIn("code page 850, afterwards 850", output)
        self.assert_as_before()
