"""What the administrator's page says, followed to the letter in a new prefix."""
import os
import re
import time

import package
import page
import registry_listing
from browsing import BrowsingTest
from windows import INSTALLER_KEYS, windows_path

TIME = re.compile(r"^[\d:]+ \[t:\d+\] ", re.M)
# What differs from run to run.
VARIABLE = [(TIME, ""), (re.compile(r"0x[0-9a-f]{4,}"), "OBJECT"), (re.compile(r"127\.0\.0\.1:\d+"), "SERVER"),
            (re.compile(r"C:\\users\\\w+\\(?:AppData\\Local\\)?Temp\\qll\d+"), "FOLDER"),
            (re.compile(r"(Default - \d) \d+"), r"\1 ERROR")]


def normalised(log):
    for pattern, replacement in VARIABLE:
        log = pattern.sub(replacement, log)
    return [line.rstrip() for line in log.splitlines()]


class Page(BrowsingTest):
    modules = ("QuillPDFCtrl.dll", "QuillPages.dll")  # the package installs the product

    def run_lines(self, block):
        """[(line, exit code, output)] of a block's commands, run as a batch file in the folder of the package."""
        lines = [re.sub(r"QuillPDF\.IE-\d+\.\d+\.\d+-x64", f"QuillPDF.IE-{package.version()}-x64", line)
                 for line in block.text.splitlines()]
        script = ["@echo off"] + [part for line in lines for part in (line, "echo exit code %errorlevel%")]
        (self.folder / "page.cmd").write_text("".join(f"{line}\r\n" for line in script))
        _, output = self.windows.run_reporting("cmd", "/c", "page.cmd", cwd=self.folder)
        parts = re.split(r"(?m)^exit code (-?\d+)\r?\n?", output)
        self.assertEqual(len(parts), 2 * len(lines) + 1, parts)
        return list(zip(lines, map(int, parts[1::2]), parts[::2]))

    def import_file(self, block):
        file = self.folder / "page.reg"
        file.write_bytes(block.text.replace("\n", "\r\n").encode("utf-16"))
        code, output = self.windows.run("reg", "import", windows_path(file))  # prints nothing if it succeeds
        self.assertEqual(code, 0, output)
        for key, values in page.registry_file(block).items():
            for name, (kind, data) in values.items():
                _, output = self.windows.run_reporting("reg", "query", key, "/v", name)
                self.assertRegex(output, rf"(?m)^ +{re.escape(name)} +{kind} +{re.escape(data)}\r?$")

    def CommandsWorkInANewPrefix(self):
        package.build(self.folder / f"QuillPDF.IE-{package.version()}-x64.msi",
                      files=[package.bin_folder / "QuillDiagnose.exe"])
        machine, user = self.windows.registry(), self.environment()
        before = {"--clean-downloads": self.leave_downloads}
        after = {"msiexec /i": self.check_installed, 'mkdir "%USERPROFILE%': self.check_log_folder,
                 r'Session Manager\Environment" /v QUILL_LOG_LEVEL /d': self.check_log,
                 r'HKCU\Environment" /v QUILL_LOG_LEVEL /d': self.check_log,
                 "--clean-downloads": self.check_clean_downloads,
                 'QuillDiagnose.exe"\n': self.check_diagnosis, "msiexec /x": self.check_removed}
        for block in page.blocks():
            if block.language == "bat" and block.runs_in_wine():
                for words in [words for words in before if words in block.text]:
                    before.pop(words)()
                for line, code, output in self.run_lines(block):
                    if line.endswith('QuillDiagnose.exe"'):
                        self.assertEqual(code, 1 if "\nPROBLEM" in output else 0, output)
                    # Wine 10 makes it an error that there is nothing to delete; what is left is checked below.
                    may_fail = line.startswith(("reg delete", "del ")) or line.endswith('QuillDiagnose.exe"')
                    self.assertIn(code, (0, 1) if may_fail else (0,), f"{line}: {output}")
                    for words in [words for words in after if words in line + "\n"]:
                        after.pop(words)(output)
            elif block.language == "reg":
                self.import_file(block)
            elif block.language == "xml" and "<Task " in block.text:
                (self.folder / "downloads.xml").write_text(block.text)
        self.assertEqual((before, after), ({}, {}), "what was not run")
        self.assert_cleaned(machine, user)

    def LogLinesAreThoseOfTheModule(self):
        self.register("QuillPDF.IE.dll")
        level = {"QUILL_LOG_LEVEL": "debug"}
        shown = self.open_document(**level).log
        logs = {"shown": shown, "library": self.click_in_library(**level)[0].log}
        logs["folder"] = self.browse(self.document, "--wait", "2", expected=1, QUILL_TMP_FOLDER=r"C:\missing", **level).log
        self.block_log_folder()
        self.assertIsNone(self.open_document(**level).log)
        self.unblock_log_folder()
        self.register("QuillPDFCtrl.dll", "/u")
        logs["viewer"] = self.browse(self.document, "--wait", "2", expected=1, **level).log

        [example] = [block.text for block in page.blocks() if "[debug]" in block.text]
        lines = iter(normalised(shown))
        for line in normalised(example):
            self.assertIn(line, lines)  # in this order
        rows = [text for heading, text in page.statements() if heading == "Reading the log" and text.startswith("| `")]
        seen = [row for row in rows if "S37" in row or "S15" in row]
        self.assertGreater(len(seen), 6)
        everything = "\n".join(line for log in logs.values() for line in normalised(log))
        for row in seen:
            words = normalised(re.match(r"\| `(.*?)`", row)[1])[0]
            if words != "KIEBrowserPlugin: WinINet":  # policies.Policies.SwitchBetweenTheDownloadPaths
                self.assertIn(words, everything)
        self.assertIn("FAILED TO CREATE TEMP DIRECTORY", logs["folder"])
        self.assertIn("OnCreate [#1]", logs["viewer"])
        self.assertNotIn("OnCreate [#2]", logs["viewer"])
        self.assertRegex(logs["library"], r"PDF Editor: \r\n")

    def block_log_folder(self):
        self.company = self.profile / "AppData/Roaming/Quill"
        self.company.rename(self.company.with_name("Quill of before"))
        self.company.write_text("a file in the way")

    def unblock_log_folder(self):
        self.company.unlink()
        self.company.with_name("Quill of before").rename(self.company)

    def check_installed(self, _):
        self.open_document()

    def check_log_folder(self, _):
        self.open_document(QUILL_LOG_LEVEL="debug")
        self.assertEqual(self.log_file.parent, self.profile / ".quill/test")

    def check_log(self, _):
        self.assertIn("debug", self.open_document().levels())

    def leave_downloads(self):
        for name, file, days in (("qll90", "old.pdf", 31), ("qll91", "new.pdf", 29)):
            folder = self.temp_on_disk / name
            folder.mkdir()
            (folder / file).write_text("x")
            for path in (folder / file, folder):
                os.utime(path, (time.time() - days * 86400,) * 2)

    def check_clean_downloads(self, _):
        names = {path.name for path in self.downloads()}
        self.assertEqual(names & {"qll90", "qll91"}, {"qll91"})

    def check_diagnosis(self, output):
        self.assertRegex(output, r'(?m)^    found: +.*TabProcGrowth.*: 0')
        self.assertEqual(re.findall(r"(?m)^PROBLEM (.*?)\r?$", output), [])
        self.assertIn("RESULT: a PDF would open", output)

    def check_removed(self, _):
        module = self.windows.drive / "Program Files/Quill/PDF for Internet Explorer/QuillPDF.IE.dll"
        self.assertFalse(module.exists())
        self.assertTrue(self.downloads(), "downloads stay")
        self.assertTrue(self.logs(), "logs stay")
        # What a tab in protected mode would have left.
        low = self.profile / "AppData/LocalLow/Temp/qll3"
        low.mkdir(parents=True)
        (low / "a.pdf").write_text("x")

    def downloads(self):
        return [path for folder in (self.temp_on_disk, self.profile / "AppData/LocalLow/Temp")
                for path in folder.glob("qll*")]

    def environment(self):
        return self.windows.run_reporting("reg", "query", r"HKCU\Environment")[1]

    def assert_cleaned(self, machine, user):
        changes = [line for line in registry_listing.difference(machine, self.windows.registry())
                   if ": " in line and not line[2:].startswith(tuple(INSTALLER_KEYS))]
        self.assertEqual(changes, [])
        self.assertEqual(self.environment(), user)
        self.assertEqual(self.windows.run("reg", "query", r"HKCU\SOFTWARE\Quill")[0], 1)
        self.assertEqual(self.downloads(), [])
        self.assertEqual(self.logs(), [])
