"""Runs that are broken off in the middle."""
import os
import pathlib
import shutil
import signal
import time

import package
from kit import KitTest, write_contents
from windows import windows_path

DEADLINE_S = 60
# Where a run is broken off: in a step whose program waits instead of testing, or in the installation before it.
PHASES = {
    "tests": ("plain", "test_plain.exe"),
    "installation": ("engine", "test_installed.exe"),
    "installed": ("engine", "test_installed.exe"),
}


class BrokenOffRun(KitTest):
    def programs(self, name, argument=""):
        """The process identifiers of a program in this test's prefix."""
        found = []
        for folder in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                command = (folder / "cmdline").read_bytes()
                environment = (folder / "environ").read_bytes()
            except OSError:
                continue
            words = command.decode(errors="replace").split("\0")
            if name in words[0] and (not argument or argument in words) and f"WINEPREFIX={self.windows.prefix}".encode() in environment:
                found.append(int(folder.name))
        return found

    def wait_for(self, condition, what):
        end = time.monotonic() + DEADLINE_S
        while not condition():
            self.assertLess(time.monotonic(), end, what)
            time.sleep(0.02)

    def replace(self, name, by):
        shutil.copy(package.bin_folder / by, self.kit / "bin" / name)
        write_contents(self.kit)

    def start_and_wait_for(self, phase):
        (self.kit / "report.txt").unlink(missing_ok=True)
        step, program = PHASES[phase]
        self.replace(program, "waiting.exe")
        process = self.start("--only", step)
        self.addCleanup(process.kill)
        output = self.kit / "work/output.txt"

        def is_there():
            if phase == "installation":
                return (self.kit / "report.txt").exists() and "\nInstallation" in self.report() and self.programs(
                    "msiexec.exe", "/i")
            return output.exists() and "waiting" in output.read_text(errors="replace")

        self.wait_for(lambda: process.poll() is not None or is_there(), phase)
        return process

    def put_back(self, phase):
        program = PHASES[phase][1]
        self.replace(program, program)

    def set_editor(self, path):
        self.windows.reg("add", r"HKLM\SOFTWARE\Quill\DocStudio\14\Settings", "/v", "exepath", "/d", path, "/f")

    def run_ended(self):
        return not self.programs("QuillAcceptance.exe") and not self.programs("msiexec.exe", "/i")

    def expect_refused_restorations(self, journal):
        """What a start says that restores a state, or fails to, and is refused."""
        report = self.report()
        (self.kit / "journal.txt").write_bytes(journal)
        code, output = self.windows.run_reporting(package.bin_folder / "denied_key.exe", "HKLM", r"SOFTWARE\Quill", "cmd", "/c",
                                                  windows_path(self.kit / "accept.cmd"))
        self.assertEqual(code, 18, output)
        self.assertIn("REFUSED: the state before an earlier run is not restored\n", output)
        self.assertIn(r"HKLM\SOFTWARE\Quill cannot be opened", self.report("report-refused.txt"))
        self.assertEqual((self.kit / "journal.txt").read_bytes(), journal)
        self.set_editor("of a test that was ended")
        key = r"HKLM\SOFTWARE\Classes\MIME\Database\Content Type\text/html"
        self.windows.reg("add", key, "/v", "CLSID", "/d", "{00000000-1111-2222-3333-444444444444}", "/f")
        output = self.expect(12)
        self.assertIn("REFUSED: the state before an earlier run was restored\n", output)
        self.assertIn("restored after the tests: ~ HKLM\\SOFTWARE\\Quill", self.report("report-refused.txt"))
        self.assertEqual(self.report(), report)
        self.windows.reg("add", key, "/v", "CLSID", "/d", self.html_class, "/f")
        self.assert_as_before()

    def AKilledRunIsRestoredByTheNext(self):
        self.html_class = self.windows.text(r"HKLM\SOFTWARE\Classes\MIME\Database\Content Type\text/html", "CLSID")
        self.set_editor("editor")
        self.registry_before = self.registry()
        for phase in PHASES:
            with self.subTest(phase):
                process = self.start_and_wait_for(phase)
                if phase == "tests":
                    code, output = self.accept()
                    self.assertEqual(code, 17, output)
                    self.assertIn("another run of the kit is in progress", output)
                    self.assertFalse((self.kit / "report-refused.txt").exists())
                self.set_editor("of a test that was ended too")
                self.windows.reg("add", r"HKCU\SOFTWARE\QuillPDF.IE tests\1234\machine", "/f")  # as such a test leaves it
                for program in self.programs("QuillAcceptance.exe"):
                    os.kill(program, signal.SIGKILL)
                process.wait(DEADLINE_S)
                # Wine lets two installations run at the same time.
                self.wait_for(self.run_ended, "the programs of the run did not end")
                journal = (self.kit / "journal.txt").read_bytes()
                self.assertEqual(self.programs("test_"), [], "a program of the run goes on")
                self.put_back(phase)
                self.expect(0, "--only", "integrity")
                self.assertIn("An earlier run was broken off; restoring the state before it", self.report())
                self.assertEqual("msiexec /x: exit code 0" in self.report().split("Kit\n")[0], phase != "tests")
                self.assert_as_before()
        self.expect_refused_restorations(journal)

    def ARunThatTheUserInterruptsRestoresItself(self):
        for phase in PHASES:
            with self.subTest(phase):
                process = self.start_and_wait_for(phase)
                for program in self.programs("QuillAcceptance.exe"):
                    os.kill(program, signal.SIGINT)  # Ctrl+C
                self.assertEqual(process.wait(DEADLINE_S), 3, self.report())
                self.assertIn("BROKEN OFF by the user", self.report())
                self.assertIn("RESULT: broken off", self.report())
                self.assertEqual(self.programs("test_"), [], "a program of the run goes on")
                self.put_back(phase)
                self.assert_as_before()
