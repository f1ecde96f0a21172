"""The Windows side of a test: programs, msiexec, the registry and the disk of the session's prefix."""
import os
import pathlib
import re
import subprocess

import registry_listing
from package import ROOT

# Written by Windows Installer itself. Its empty keys remain after a removal.
INSTALLER_KEYS = (r"hklm\software\classes\installer", r"hklm\software\microsoft\windows\currentversion\installer")
PROGRAM_LIMIT_S = 240
NOT_STARTED = "ShellExecuteEx failed"  # start.exe, through which Wine starts programs by their names


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


class Windows:
    def __init__(self, scratch):
        self.scratch = scratch
        self.prefix = pathlib.Path(os.environ["QUILL_WINEPREFIX"])
        self.drive = self.prefix / "drive_c"
        self.log = ""

    def start(self, *command, **options):
        return subprocess.Popen([ROOT / "tools/wine-run", *map(str, command)], stdin=subprocess.DEVNULL, **options)

    def run(self, *command, **options):
        """(exit code, output) of a program. It is started once more if Wine's start.exe could not start it."""
        code, output = self.run_once(*command, **options)
        if output.startswith(NOT_STARTED):
            self.report_repeated(command, code)
            code, output = self.run_once(*command, **options)
        return code, output

    def run_once(self, *command, **options):
        with self.start(*command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace",
                        **options) as process:
            try:
                output, _ = process.communicate(timeout=PROGRAM_LIMIT_S)
            except subprocess.TimeoutExpired:
                process.kill()
                raise
        return process.returncode, output

    def run_reporting(self, *command, **options):
        """The same for a program that always prints something. Under Wine a program occasionally fails before its
        first instruction: without any output it is started once more, which ./test reports."""
        code, output = self.run(*command, **options)
        if not output.strip():
            self.report_repeated(command, code)
            code, output = self.run(*command, **options)
        return code, output

    @staticmethod
    def report_repeated(command, code):
        """Notes that a program is started once more; ./test prints the notes."""
        with open(ROOT / "build/repeated-starts.txt", "a") as repeated:
            repeated.write(f"{' '.join(map(str, command))}: exit code {code}\n")

    def msiexec(self, what, package, arguments=""):
        """The exit code of msiexec, all bits of it: outside cmd Wine passes on eight."""
        script, log = self.scratch / "msiexec.cmd", self.scratch / "msiexec.log"
        log.unlink(missing_ok=True)
        command = f'msiexec {what} "{windows_path(package)}" /qn /l*v "{windows_path(log)}" {arguments}'
        script.write_text(f"@{command}\r\n@echo exit code %errorlevel%\r\n")
        _, output = self.run_reporting("cmd", "/c", windows_path(script))
        data = log.read_bytes() if log.exists() else b""
        self.log = data.decode("utf-16" if data[:2] == b"\xff\xfe" else "latin-1")
        for line in output.splitlines():
            if line.startswith("exit code "):
                return int(line.split()[-1])
        raise AssertionError(f"msiexec: no exit code: {output}")

    def registry(self, root="HKEY_LOCAL_MACHINE"):
        """Everything below Software."""
        export = self.scratch / "export.reg"
        export.unlink(missing_ok=True)
        self.run("regedit", "/E", windows_path(export), root + r"\Software")
        return registry_listing.parse_export(export.read_text("utf-16"))

    def text(self, key, name):
        """The text of a value; nothing if there is no such value."""
        code, output = self.run_reporting("reg", "query", key, "/v", name)
        match = re.search(rf"(?m)^ +{re.escape(name)} +REG_SZ +(.*?)\r?$", output)
        return match[1] if code == 0 and match else None

    def set_value(self, key, name, text):
        self.reg("add", key, "/v", name, "/d", text, "/f")

    def reg(self, *arguments):
        # These print nothing in Wine if they succeed.
        run = self.run if arguments[0] in ("copy", "import") else self.run_reporting
        code, output = run("reg", *arguments)
        assert code == 0, f"reg {arguments}: {output}"

    def files(self):
        """Folders, and files with their sizes and times, without what Windows itself writes all the time."""
        found = {}
        for folder, folders, files in os.walk(self.drive):
            relative = pathlib.Path(folder).relative_to(self.drive)
            if relative.as_posix() in ("users", "windows/temp"):
                folders.clear()
                continue
            found[relative.as_posix().lower()] = "folder"
            for name in files:
                status = os.lstat(os.path.join(folder, name))
                found[(relative / name).as_posix().lower()] = (status.st_size, status.st_mtime_ns)
        # The folder of the cached packages is created by the first installation.
        found.pop("windows/installer", None)
        return found
