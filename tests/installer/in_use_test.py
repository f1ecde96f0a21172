"""The installed module in a browser: with the package alone, and while it is replaced or removed."""
import re
import subprocess

import package
from installed import DOCUMENT_CLASS, FOLDER_ON_DISK, OLDER_VERSION, InstallerTest
from windows import windows_path

DEADLINE_S = 60


class InstalledModule(InstallerTest):
    def setUp(self):
        super().setUp()
        self.processes = []
        self.addCleanup(self.end_processes)

    def end_processes(self):
        for process in self.processes:
            process.kill()
            process.wait()

    def start_program(self, name, *arguments):
        process = self.windows.start(package.bin_folder / name, *arguments, stdout=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        self.processes.append(process)
        return process

    def wait_for_line(self, process, pattern):
        for line in process.stdout:
            match = re.search(pattern, line)
            if match:
                return match
        self.fail(f"the program ended without a line {pattern}")

    # The stand-in for the suite's viewer is no part of the package.
    def open_browser(self):
        self.assertEqual(self.windows.run("regsvr32", "/s", package.bin_folder / "QuillPDFCtrl.dll")[0], 0)
        server = self.start_program("sample_server.exe", windows_path(package.ROOT / "samples/bracket.pdf"))
        url = self.wait_for_line(server, r"^serving (\S+)")[1]
        return self.start_program("quill_browser.exe", url + "#page=2")

    def close_browser(self):
        self.windows.run("taskkill", "/f", "/im", "quill_browser.exe")
        self.assertIsNotNone(self.processes[-1].wait(DEADLINE_S))

    def restart(self):
        self.windows.run("wineboot", "--restart")

    def module_files(self):
        return sorted(path.name for path in (self.windows.drive / FOLDER_ON_DISK).glob("*"))

    def ShowsAPdfAndIsReplacedAtTheRestart(self):
        self.install(package_file=self.older)
        browser = self.open_browser()
        self.assertEqual(self.wait_for_line(browser, r"shown: (page 2 of \d+)")[1], "page 2 of 5")
        self.expect(3010, "/i", self.package)
        self.assert_module(package.module_of_version(self.folder, OLDER_VERSION))
        self.close_browser()
        self.restart()
        self.assertEqual(self.module_files(), ["QuillPDF.IE.dll"])
        self.assert_module(package.module())
        self.remove()
        self.assertFalse(self.module_on_disk().parent.parent.exists())

    def IsUnregisteredWhileItIsInUse(self):
        self.install()
        self.wait_for_line(self.open_browser(), r"shown: page 2")
        # Windows returns 3010 and deletes the file at the restart; Wine returns 0 and leaves it.
        self.assertIn(self.windows.msiexec("/x", self.package), (0, 3010))
        registry = self.windows.registry()
        self.assertEqual(self.entries(registry), [])
        self.assertNotIn(DOCUMENT_CLASS.lower(), registry)
        self.close_browser()
        self.restart()
        self.install()
        self.remove()
        self.assertFalse(self.module_on_disk().parent.parent.exists())
