"""The sample output of docs/diagnosis.md against a run of the installed program."""
import re
import shutil

import package
from installed import DOCUMENT_CLASS, InstallerTest

PROGRAM = "QuillDiagnose.exe"
PAGE = package.ROOT / "docs/diagnosis.md"
LEFT_OUT = "[...]"  # a line that stands for any number of entries
SUITE = r"C:\Suite"
SETTINGS = r"HKLM\SOFTWARE\Quill\DocStudio\14\Settings"
BROWSER = r"HKCU\SOFTWARE\Microsoft\Internet Explorer\Main"
ADD_ONS = r"HKCU\SOFTWARE\Microsoft\Windows\CurrentVersion\Ext\Settings"
# What differs between versions of the product and of Wine.
VARIABLE = [(re.compile(r"\b\d+\.\d+\.\d+(\.0)?\b"), "VERSION"),
            (re.compile(r"^1 problem, \d+ notes, \d+ OK$"), "COUNTS")]


def normalised(lines):
    for pattern, replacement in VARIABLE:
        lines = [pattern.sub(replacement, line) for line in lines]
    return lines


def sample():
    """The parts of the sample, each of which is printed without a gap."""
    blocks = re.findall(r"(?ms)^```\n(.*?)^```$", PAGE.read_text())
    [text] = [block for block in blocks if block.startswith("QuillDiagnose ")]
    parts = [[]]
    for line in text.splitlines():
        if line == LEFT_OUT:
            parts.append([])
        else:
            parts[-1].append(line)
    return [normalised(part) for part in parts]


class DiagnosisPage(InstallerTest):
    def copy_to_suite(self, *names):
        folder = self.windows.drive / "Suite"
        folder.mkdir()
        for name in names:
            shutil.copy(package.bin_folder / name, folder)

    def SampleIsTheOutputOfTheInstalledProgram(self):
        self.package = package.build(self.package, files=[package.bin_folder / PROGRAM])
        self.install()
        self.copy_to_suite("QuillPDFCtrl.dll", "quill_editor.exe")
        self.assertEqual(self.windows.run("regsvr32", "/s", rf"{SUITE}\QuillPDFCtrl.dll")[0], 0)
        self.windows.set_value(SETTINGS, "exepath", rf"{SUITE}\quill_editor.exe")
        self.windows.reg("add", BROWSER, "/v", "TabProcGrowth", "/t", "REG_DWORD", "/d", "0", "/f")
        clsid = DOCUMENT_CLASS.rpartition("\\")[2]
        self.windows.reg("add", rf"{ADD_ONS}\{clsid}", "/v", "Flags", "/t", "REG_DWORD", "/d", "1", "/f")
        code, output = self.windows.run_reporting(self.module_on_disk().with_name(PROGRAM))
        self.assertEqual(code, 1, output)
        lines = normalised(output.splitlines())
        parts = sample()
        self.assertGreater(len(parts), 3)
        position = 0
        for part in parts:
            places = [i for i in range(position, len(lines)) if lines[i:i + len(part)] == part]
            self.assertTrue(places, "not printed in this order:\n" + "\n".join(part) + "\n\nprinted:\n" + output)
            position = places[0] + len(part)
        self.assertEqual(position, len(lines), "the sample has the end of the output")
