"""The base of the tests that open pages with the module in Wine: the browser program of the demo, its samples, the
stand-ins for viewer and editor, and what a run leaves behind."""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import time
import unittest

import package
import settings
from windows import Windows, windows_path

HANDLER = r"HKLM\SOFTWARE\Classes\http\shell\open\command"
SAMPLES = ("bracket.pdf", "sharepoint/library-2013.html")
LIMIT_S = 30
FAILED_START = 1  # of a program that Wine did not run; regsvr32 reports a failed registration by larger codes


def wait_for(condition):
    """The first result of the condition that is not empty."""
    end = time.monotonic() + LIMIT_S
    while not (result := condition()):
        assert time.monotonic() < end, "nothing within the time limit"
        time.sleep(0.02)
    return result


class Run:
    """What one run of the browser left."""

    def __init__(self, log, output):
        self.log = log  # nothing without a file
        self.output = output

    def levels(self):
        return set(re.findall(r"(?m)^[\d:]+ \[t:\d+\] \[(\w+)\] ", self.log or ""))


class BrowsingTest(unittest.TestCase):
    maxDiff = None
    modules = ("QuillPDF.IE.dll", "QuillPDFCtrl.dll", "QuillPages.dll")

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="policies-test-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.windows = Windows(self.folder)
        [profile] = [path for path in (self.windows.drive / "users").iterdir() if path.name != "Public"]
        self.profile = profile
        self.log_folders = [profile / "AppData/Roaming/Quill/DocStudio/14", profile / ".quill/test"]
        _, output = self.windows.run_reporting("cmd", "/c", "echo", "%TEMP%")
        self.temp = output.strip()  # as Windows names it: its place depends on Wine's version
        self.temp_on_disk = self.windows.drive / self.temp.partition("C:\\")[2].replace("\\", "/")
        for name in self.modules:
            self.register(name)
        self.record = self.folder / "starts.txt"
        self.editor = package.bin_folder / "quill_editor.exe"
        self.windows.reg("add", HANDLER, "/ve", "/d", f'"{windows_path(self.editor)}" --default "%1"', "/f")
        self.serve()

    def register(self, name, *options):
        command = ("regsvr32", "/s", *options, windows_path(package.bin_folder / name))
        code, output = self.windows.run(*command)
        if code == FAILED_START:
            self.windows.report_repeated(command, code)
            code, output = self.windows.run(*command)
        self.assertEqual(code, 0, output)  # Wine 10 reports success in spite of /s

    def serve(self):
        self.server = self.windows.start(
            package.bin_folder / "sample_server.exe",
            *(windows_path(settings.ROOT / "samples" / name) for name in SAMPLES), stdout=subprocess.PIPE, text=True)
        self.addCleanup(self.server.wait)
        self.addCleanup(self.server.stdout.close)
        self.addCleanup(self.server.kill)
        lines = [self.server.stdout.readline() for _ in SAMPLES]
        self.document, self.library = (line.removeprefix("serving ").strip() for line in lines)

    def browse(self, *arguments, expected=0, **variables):
        """Runs the browser program until it has shown what it opens; with the exit code 1 it shows nothing."""
        environment = {name: value for name, value in os.environ.items() if not name.startswith("QUILL_LOG_")}
        environment.update(QUILL_EDITOR_RECORD=windows_path(self.record), **variables)
        before = set(self.logs())
        self.record.unlink(missing_ok=True)
        code, output = self.windows.run_reporting(package.bin_folder / "quill_browser.exe", "--exit", *arguments,
                                                  env=environment)
        self.assertEqual(code, expected, output)
        new = [path for path in self.logs() if path not in before]
        self.assertLessEqual(len(new), 1)
        self.log_file = new[0] if new else None
        return Run(new[0].read_bytes().decode() if new else None, output)

    def open_document(self, **variables):
        return self.browse(self.document, **variables)

    def click_in_library(self, **variables):
        """Clicks on a PDF of a library; the run and the command line with which the editor, or the default handler of
        the URL, was started."""
        run = self.browse("--helpers", "--page", "--click", "bracket", self.library, **variables)
        record = wait_for(lambda: self.record.exists() and "show: " in self.record.read_text() and
                          self.record.read_text())
        return run, re.search(r"(?m)^command line: (.*?)\r?$", record)[1]

    def logs(self):
        return [path for folder in self.log_folders if folder.is_dir() for path in folder.iterdir()]
