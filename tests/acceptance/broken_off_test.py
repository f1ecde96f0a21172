"""Runs that are broken off in the middle."""
import os
import pathlib
import signal
import time

from kit import KitTest

DEADLINE_S = 60
# Where a run is broken off: a text of the report, and the steps of the run.
PHASES = {
    "tests": ("Test programs, with the DLL of the kit", "document"),
    "installation": ("\nInstallation", "engine"),
    "installed": ("passed: engine", "engine,embedded,library,download"),
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

    def start_and_wait_for(self, phase):
        (self.kit / "report.txt").unlink(missing_ok=True)
        process = self.start("--only", PHASES[phase][1])
        self.addCleanup(process.kill)
        self.wait_for(lambda: process.poll() is not None or (self.kit / "report.txt").exists() and PHASES[phase][0] in self.report(), phase)
        return process

    def set_editor(self, path):
        self.windows.reg("add", r"HKLM\SOFTWARE\Quill\DocStudio\14\Settings", "/v", "exepath", "/d", path, "/f")

    def run_ended(self):
        return not self.programs("QuillAcceptance.exe") and not self.programs("msiexec.exe", "/i")

    def AKilledRunIsRestoredByTheNext(self):
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
                for program in self.programs("QuillAcceptance.exe"):
                    os.kill(program, signal.SIGKILL)
                process.wait(DEADLINE_S)
                # Wine lets two installations run at the same time.
                self.wait_for(self.run_ended, "the programs of the run did not end")
                self.assertTrue((self.kit / "journal.txt").exists())
                self.assertEqual(self.programs("test_"), [], "a program of the run goes on")
                self.expect(0, "--only", "integrity")
                self.assertIn("An earlier run was broken off; restoring the state before it", self.report())
                self.assertEqual("msiexec /x: exit code 0" in self.report().split("Kit\n")[0], phase != "tests")
                self.assert_as_before()

    def ARunThatTheUserInterruptsRestoresItself(self):
        for phase in PHASES:
            with self.subTest(phase):
                process = self.start_and_wait_for(phase)
                for program in self.programs("QuillAcceptance.exe"):
                    os.kill(program, signal.SIGINT)  # Ctrl+C
                self.assertEqual(process.wait(DEADLINE_S), 3, self.report())
                self.assertIn("BROKEN OFF by the user", self.report())
                self.assertIn("RESULT: broken off", self.report())
                self.assert_as_before()
