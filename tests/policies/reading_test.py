"""What the group policy client writes for the templates' settings is what the module reads."""
import re

import template
import template_test
from browsing import BrowsingTest
from windows import windows_path

SWITCH = "ACTIVEDOC KIEBrowserPlugin: "
FROM_BROWSER = "Default - "  # a number follows: 1 no key, 2 no value, 3 no number, 4 zero
LEVELS = ("trace", "debug", "info", "warning", "error", "critical")


class Policies(BrowsingTest):
    def setUp(self):
        super().setUp()
        self.policies = {policy.name: policy for policy in template_test.policies()}

    def apply(self, name, policy_class, state, *choices):
        """Does what the group policy client does; "Not Configured" removes nothing, because no key is a policies
        key."""
        policy = self.policies[name]
        chosen = dict(zip((element.name for element in policy.elements), choices))
        for change in template.changes(policy, policy_class, state, chosen):
            key = rf"{change.root}\{change.key}"
            if change.type:
                self.windows.reg("add", key, "/v", change.name, "/t", change.type, "/d", change.data, "/f")
            else:
                self.windows.run_reporting("reg", "delete", key, "/v", change.name, "/f")

    def items(self, name):
        [element] = self.policies[name].elements
        return element.items

    def assert_download(self, expected):
        log = self.open_document(QUILL_LOG_LEVEL="debug").log
        self.assertIn(SWITCH + expected, log)

    def SwitchBetweenTheDownloadPaths(self):
        name = "WinINetDownload"
        self.assert_download(FROM_BROWSER + "1")
        self.apply(name, "Machine", "Enabled")
        self.assert_download("WinINet")
        self.apply(name, "Machine", "Not Configured")
        self.assert_download("WinINet")
        self.apply(name, "User", "Disabled")
        self.assert_download(FROM_BROWSER + "4")
        self.apply(name, "User", "Enabled")
        self.apply(name, "Machine", "Disabled")
        self.assert_download("WinINet")
        # The user's key hides the computer's value also without a value.
        self.apply(name, "Machine", "Enabled")
        policy = self.policies[name]
        self.windows.reg("delete", rf"HKCU\{policy.key}", "/v", policy.value_name, "/f")
        self.assert_download(FROM_BROWSER + "2")
        self.windows.reg("delete", rf"HKCU\{policy.key}", "/f")
        self.assert_download("WinINet")
        self.apply(name, "Machine", "Disabled")
        self.assert_download(FROM_BROWSER + "4")

    def SelectTheEditor(self):
        editor = windows_path(self.editor)
        url = self.library.rpartition("/")[0] + "/sites/workshop/Service%20manuals/Pivot%20bracket%202291-B.pdf"
        by_handler = f'"{editor}" --default "{url}"'
        self.assertEqual(self.click_in_library()[1], by_handler)
        self.apply("EditorPath", "Machine", "Enabled", editor)
        self.assertEqual(self.click_in_library()[1], f'/pdf "sharepoint://{url}"')
        self.apply("EditorPath", "Machine", "Not Configured")
        self.assertEqual(self.click_in_library()[1], f'/pdf "sharepoint://{url}"')
        self.apply("EditorPath", "Machine", "Disabled")
        self.assertEqual(self.click_in_library()[1], by_handler)

    def SelectTheLevelOfTheLog(self):
        self.assertIsNone(self.click_in_library()[0].log)
        present = {"debug", "info", "warning"}  # of the six levels, what this page causes
        for name, policy_class in (("LogLevelComputer", "Machine"), ("LogLevelUser", "User")):
            # The lists are the same (Templates.OfferTheWordsThatTheProductKnows), and so is what reads the variable.
            for level in self.items(name) if policy_class == "Machine" else self.items(name)[2::3]:
                with self.subTest(f"{name}: {level}"):
                    self.apply(name, policy_class, "Enabled", level)
                    run, _ = self.click_in_library()
                    self.assertIsNotNone(run.log)
                    self.assertEqual(run.levels(), present & set(LEVELS[LEVELS.index(level):]))
            # What was written stays until the setting is disabled.
            self.apply(name, policy_class, "Not Configured")
            self.assertIsNotNone(self.open_document().log)
            self.apply(name, policy_class, "Disabled")
            self.assertIsNone(self.open_document().log)
        # The user's variable takes precedence over the computer's.
        self.apply("LogLevelComputer", "Machine", "Enabled", "debug")
        self.apply("LogLevelUser", "User", "Enabled", "warning")
        self.assertEqual(self.click_in_library()[0].levels(), {"warning"})

    def SelectTheDestinationOfTheLog(self):
        device = "ProcmonDebugLogger"  # Wine's trace names each file and device that is opened
        self.apply("LogLevelUser", "User", "Enabled", "debug")
        for name, policy_class in (("LogSinksComputer", "Machine"), ("LogSinksUser", "User")):
            expected_of = list(zip(self.items(name), [(True, False), (False, True), (True, True)], strict=True))
            for choice, expected in expected_of if policy_class == "Machine" else expected_of[1:2]:
                with self.subTest(f"{name}: {choice}"):
                    self.apply(name, policy_class, "Enabled", choice)
                    run = self.open_document(WINEDEBUG="+file")
                    self.assertEqual((bool(run.log), device in run.output), expected)
            self.apply(name, policy_class, "Enabled", "procmon")
            self.apply(name, policy_class, "Disabled")
            self.assertTrue(self.open_document().log)

    def SelectTheFolderOfDownloads(self):
        folder = self.windows.drive / "of all users"
        other = self.profile / "of the user"
        default = self.temp + "\\"
        for path in (folder, other):
            path.mkdir()
        for name, policy_class, text, place in (
                ("DownloadFolderComputer", "Machine", r"%SystemDrive%\of all users", "C:\\of all users\\"),
                ("DownloadFolderUser", "User", r"%USERPROFILE%\of the user",
                 rf"C:\users\{self.profile.name}\of the user" + "\\")):
            self.apply(name, policy_class, "Enabled", text)
            self.assert_downloaded_to(place)
            self.apply(name, policy_class, "Not Configured")
            self.assert_downloaded_to(place)
        # The computer's variable is still set.
        self.apply("DownloadFolderUser", "User", "Disabled")
        self.assert_downloaded_to("C:\\of all users\\")
        self.apply("DownloadFolderComputer", "Machine", "Disabled")
        self.assert_downloaded_to(default)
        document = (template_test.settings.ROOT / "samples/bracket.pdf").read_bytes()
        for path in (folder, other):
            self.assertEqual([file.read_bytes() == document for file in path.glob("qll*/bracket.pdf")], [True] * len(
                list(path.glob("qll*"))))
            self.assertTrue(list(path.glob("qll*")))

    def assert_downloaded_to(self, place):
        log = self.open_document(QUILL_LOG_LEVEL="debug").log
        self.assertRegex(log, "CACHE:" + re.escape(place) + r"qll\d+\\bracket\.pdf\r\n")
