"""What a run reports about Windows Installer, with a script in the place of msiexec.exe."""
import re
import shutil

import package
from installed import DOCUMENT_CLASS
from kit import KitTest

SCRIPT = r"""@echo off
echo %*>>C:\msiexec-calls.txt
if "%1"=="/x" exit 3010
if "%1"=="/fa" goto repair
if "%1"=="/a" goto image
if not "%3"=="/qn" goto rollback
if exist C:\busy.txt goto busy
reg add KEY\InprocServer32 /ve /d "%~dp2bin\QuillPDF.IE.dll" /f
reg add KEY\InprocServer32 /v ThreadingModel /d Installed /f
exit 1641
:busy
del C:\busy.txt
exit 1618
:rollback
mkdir %4
reg add HKLM\SOFTWARE\Quill\Rollback /f
exit 1603
:repair
reg add KEY\InprocServer32 /v ThreadingModel /d Repaired /f
exit 5
:image
mkdir %4
copy "%~dp2bin\QuillPDF.IE.dll" %4\QuillPDF.IE.dll
exit 7
""".replace("KEY", DOCUMENT_CLASS)


class InstallerAnswers(KitTest):
    def AreWhatMsiexecDid(self):
        self.kit = self.unpack("kit")  # the script can name its files
        program = self.windows.drive / "windows/system32/msiexec.exe"
        program.unlink()  # a link to the file that all prefixes share
        shutil.copy(package.bin_folder / "scripted_msiexec.exe", program)
        # Wine has an msiexec of its own, which comes first otherwise.
        self.windows.reg("add", r"HKCU\Software\Wine\DllOverrides", "/v", "msiexec.exe", "/d", "native", "/f")
        self.registry_before = self.registry()
        (self.windows.drive / "msiexec.cmd").write_text(SCRIPT.replace("\n", "\r\n"))
        (self.windows.drive / "busy.txt").write_text("another installation is in progress")
        self.expect(0, "--only", "rollback,repair,admin-image")
        calls = (self.windows.drive / "msiexec-calls.txt").read_text().splitlines()
        self.assertEqual([call.split()[0] for call in calls], ["/i", "/i", "/i", "/fa", "/a", "/x"])
        self.assertEqual([call for call in calls if "/qn /norestart /l*v" not in call], [])
        report = self.report()
        self.assert_answer("msi-rollback", "msiexec's exit code is 1603; registry keys and values that differ: 2; "
                                           "the folder stayed; the product is not listed as installed")
        self.assert_answer("msi-repair", "a value was deleted; msiexec's exit code is 5; the value is there again: Repaired")
        self.assert_answer("msi-admin-image", "msiexec's exit code is 7; the image's folder was made, with the DLL")
        # The first attempt met another installation. What is left goes with the restart and is no failure.
        self.assert_answer("msi-install", "installation: exit code 1641, a restart is pending; "
                                          "removal: exit code 3010, a restart is pending")
        self.assertIn("  passed: msiexec /i: exit code 1641, a restart is pending (msiexec-install.log)\n", report)
        self.assertIn("  passed: msiexec /x: exit code 3010, a restart is pending (msiexec-remove.log)\n", report)
        self.assertRegex(report, r"(?m)^  pending: the next restart deletes the folder Z:\\.*\\kit\\bin$")
        self.assertRegex(report, r"(?m)^  pending: the registry was not as before, and a restart is pending; it is restored$")
        self.assertIn("    + HKLM\\SOFTWARE\\Classes\\CLSID\\", report)
        self.assertIn("QuillDiagnose.exe is not installed", report)
        for name in ("msiexec-calls.txt", "msiexec.cmd"):
            (self.windows.drive / name).unlink()
        self.files_before["windows/system32/msiexec.exe"] = self.windows.files()["windows/system32/msiexec.exe"]
        self.assert_as_before()

    def assert_answer(self, question, answer):
        match = re.search(rf"(?m)^  {question}: .*\n    measured by: .*\n    seen: (.*)$", self.report())
        self.assertIsNotNone(match, question)
        self.assertEqual(match[1], answer)
