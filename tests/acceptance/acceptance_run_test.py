"""Runs of the kit to their end."""
import re
import shutil
import subprocess

import package
from kit import KitTest, write_contents
from windows import windows_path

# As tools/wine-environment finds it.
WINE = shutil.which("/usr/lib/wine/wine64") or "wine64"

ZONE = r"HKCU\SOFTWARE\Microsoft\Windows\CurrentVersion\Internet Settings\Zones\3"
ENHANCED_SECURITY = r"HKLM\SOFTWARE\Microsoft\Active Setup\Installed Components\{A509B1A7-37EF-4b3f-8CFC-4F3A74704073}"

HANDLER = r"HKLM\SOFTWARE\Classes\{}\shell\open\command"
OLD_LOGS = ("failed-document.txt", "failed-of another version.txt", "msiexec-image.log")
OTHER_FILES = ("failed-plain.log", "failed-plain.txt.old", "my failed-plain.txt", "msiexec-install.txt", "msiexec.log",
               "my msiexec-install.log", "earlier/failed-plain.txt", "bin/msiexec-install.log")


class AcceptanceRun(KitTest):
    def ReportsWhatItMeasuresAndLeavesNothing(self):
        (self.kit / "report-refused.txt").write_text("of a start that was refused")
        self.expect(0, "--only", "platform,framework,engine,embedded,library,download,integrity,"
                    "system,repair,rollback,admin-image")
        report = self.report()
        self.assertIn("RESULT: passed, the steps of --only", report)
        wine = subprocess.run([WINE, "--version"], capture_output=True, text=True).stdout.split()[0]
        self.assertIn("Wine " + wine.removeprefix("wine-") + ", NOT Windows", self.fact("system"))
        self.assertIn("ieframe.dll", self.fact("WebBrowser control"))
        self.assertIn("QuillPages.dll", self.fact("HTML engine"))
        self.assertEqual(self.fact("security zone of http://127.0.0.1/"), "3, internet")
        self.assertEqual(self.fact("ActiveX controls there (URL action 0x1200)"), "allowed (0)")
        self.assertNotRegex(report, "(?m)^  NOTE: ")
        self.assertEqual(self.fact("version"), package.version())
        self.assertTrue(self.fact("installed").startswith(package.version() + ".0 "))
        self.assertIn(r"C:\Program Files\Quill\PDF for Internet Explorer", self.fact("installed"))
        # Without the suite's viewer no PDF opens.
        self.assertRegex(report, r"QuillDiagnose\.exe\n  result: exit code 1\n  It ran as administrator, .*\n    QuillDiagnose \S+\n")
        self.assertRegex(report, r"(?m)^    OK      DLL, file$")
        self.assertRegex(report, r"(?m)^    PROBLEM Viewer, ProgID$")
        # The count is the program's, not the kit's.
        _, listed = self.windows.run(package.bin_folder / "test_platform.exe", "--gtest_list_tests")
        tests = len(re.findall(r"(?m)^  \w", listed))
        self.assertIn(f"platform (settings, files, temporary folders, locks): {tests} passed, 0 failed", report)
        self.assertRegex(report, r"the viewer got .*\\bracket\.pdf\), 4\(I4 1\), 9\(R8 1\.5\)")
        self.assertIn("GET /embedded.html", report)
        self.assertRegex(report, r'started with /pdf "sharepoint://http://127\.0\.0\.1:\d+/sites/.*bracket%202291-B\.pdf"')
        self.assertIn("plain: left out by --only", report)
        # What was left out, and what Wine does.
        self.assert_answer("ie-mode", "not answered: IE mode needs Edge")
        # Wine 8 has no server side of TLS.
        wine_8 = re.escape("not measured: this system cannot be a TLS server, AcceptSecurityContext fails with 0x80090302")
        self.assertRegex(self.answer("untrusted-server"),
                         f"^(?:{wine_8}$|seen: .* fails with error 12045 without the option, .* passes with status 200 with "
                         "it on the request; of 3 handshakes 1 led to a request$)")
        self.assert_answer("caller-object", "seen: references added during the download: 0")
        self.assert_answer("low-integrity", "seen: a process whose level was set to 0x1000: level 0x3000")
        self.assert_answer("per-user-class", "seen: CoCreateInstance of a class that only the user has registered "
                                             "returns 0x80040154")
        self.assert_answer("signatures", "seen: QuillPDF.IE.dll: 0x800b0100, not signed")
        self.assert_answer("msi-install", "seen: installation: exit code 0; removal: exit code 0")
        # With results that differ from Wine's: installer_answers_test.py.
        self.assert_answer("msi-rollback", "seen: msiexec's exit code is 16")
        self.assert_answer("msi-repair", "seen: a value was deleted; msiexec's exit code is ")
        self.assert_answer("msi-admin-image", "seen: msiexec's exit code is ")
        self.assertEqual({log.name for log in self.kit.glob("msiexec-*.log")},
                         {f"msiexec-{action}.log" for action in ("image", "install", "remove", "repair", "rollback")})
        self.assert_as_before()

    def answer(self, question):
        match = re.search(rf"(?m)^  {question}: .*\n(?:    measured by: .*\n)?    (.*)$", self.report())
        self.assertIsNotNone(match, question)
        return match[1]

    def assert_answer(self, question, beginning):
        self.assertTrue(self.answer(question).startswith(beginning), f"{question}: {self.answer(question)}")

    def default_handler_times(self):
        """When the keys were last written."""
        times = [self.windows.run_reporting(package.bin_folder / "key_time.exe", *HANDLER.format(scheme).split("\\", 1))
                 for scheme in ("http", "https")]
        self.assertEqual([code for code, _ in times], [0, 0])
        return times

    def NamesWhatFailsAndRemovesTheProduct(self):
        shutil.copy(package.bin_folder / "quill_browser.exe", self.kit / "bin/test_plain.exe")  # prints its usage
        shutil.copy(package.bin_folder / "quill_editor.exe", self.kit / "bin/test_platform.exe")  # prints nothing
        write_contents(self.kit)
        # What another product has registered stays.
        self.windows.reg("add", r"HKLM\SOFTWARE\Classes\MIME\Database\Content Type\application/pdf", "/v", "CLSID",
                         "/d", "{00000000-1111-2222-3333-444444444444}", "/f")
        self.windows.reg("add", r"HKLM\SOFTWARE\Quill\DocStudio\14\Settings", "/v", "exepath", "/d", "editor", "/f")
        for scheme in ("http", "https"):
            self.windows.reg("add", HANDLER.format(scheme), "/ve", "/d",
                             rf'cmd /c "echo %1>{windows_path(self.scratch)}\handled.txt"', "/f")
        # As under Enhanced Security Configuration. Wine's engine does not ask for these settings.
        for action, policy in (("1200", "3"), ("1803", "1")):
            self.windows.reg("add", ZONE, "/v", action, "/t", "REG_DWORD", "/d", policy, "/f")
        self.windows.reg("add", ENHANCED_SECURITY, "/v", "IsInstalled", "/t", "REG_DWORD", "/d", "1", "/f")
        self.registry_before = self.registry()
        # As a terminated step leaves its key container.
        self.windows.reg("add", r"HKCU\Software\Wine\Crypto\RSA\QuillPDF.IE acceptance", "/f")
        (self.kit / "report.txt").write_text("the report of an earlier run")
        for name in (*OLD_LOGS, *OTHER_FILES):
            (self.kit / name).parent.mkdir(exist_ok=True)
            (self.kit / name).write_text("of an earlier run")
        handler_times = self.default_handler_times()
        self.expect(1, "--only", "plain,library")
        self.assertEqual(self.default_handler_times(), handler_times, "a key was written, and may be as before only now")
        self.assertFalse((self.scratch / "handled.txt").exists(), "the default handler was started")
        report = self.report()
        self.assertTrue(report.startswith("Quill PDF for Internet Explorer: acceptance report\n"), report[:100])
        self.assertEqual(self.fact("ActiveX controls there (URL action 0x1200)"), "not allowed (3)")
        self.assertEqual(self.fact("file downloads there (URL action 0x1803)"), "the user is asked (1)")
        self.assertEqual(self.fact("Enhanced Security Configuration for administrators (registry)"), "on (1)")
        self.assertIn("engine, embedded and download", self.fact("NOTE"))
        failures = report[report.index("RESULT: FAILED"):]
        self.assertRegex(failures, r"plain \(.*\): 0 passed, 0 failed, 0 skipped, exit code 2")
        self.assertNotIn("platform", failures)
        self.assertEqual([name for name in OLD_LOGS if (self.kit / name).exists()], [])
        self.assertEqual([(self.kit / name).read_text() for name in OTHER_FILES], ["of an earlier run"] * len(OTHER_FILES))
        self.assertIn("usage: quill_browser", (self.kit / "failed-plain.txt").read_text())
        self.assertIn("passed: library", report)
        self.assert_answer("caller-object", "not answered: its step was left out")
        self.assertRegex(report, 'the editor\'s stand-in was started with /pdf "sharepoint://')
        self.assert_as_before()
