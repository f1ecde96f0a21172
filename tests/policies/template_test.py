"""The templates: the rules of their format, and the settings that the product reads."""
import unittest

import settings
import template

FOLDER = settings.ROOT / "packaging/policies"
ENVIRONMENT = {"Machine": r"SYSTEM\CurrentControlSet\Control\Session Manager\Environment", "User": "Environment"}

# (name of the file, text, replacement, what the check must say)
DAMAGES = [
    ("admx", "</policyDefinitions>", "", "no element found"),
    ("admx", "2006/07/PolicyDefinitions", "2005/07/PolicyDefinitions", "another root element or namespace"),
    ("adml", "2006/07/PolicyDefinitions", "2005/07/PolicyDefinitions", "another root element or namespace"),
    ("admx", 'encoding="utf-8"', 'encoding="ascii"', "no declaration of UTF-8"),
    ("admx", 'revision="1.0"', 'revision="one"', "revision is not a version"),
    ("admx", ' minRequiredRevision="1.0"', "", "minRequiredRevision is missing"),
    ("admx", 'minRequiredRevision="1.0"', 'minRequiredRevision="1.1"', "greater than the revision of the texts"),
    ("admx", '<target prefix="quillpdf" namespace="Quill.Policies.QuillPDF" />', "", "not one target"),
    ("admx", '<target prefix="quillpdf" ', "<target ", "target: prefix is missing"),
    ("admx", 'policy name="LogSinksUser"', 'policy name="LOGLEVELUSER"', "policy LogLevelUser: not unique"),
    ("admx", 'id="LogSinksUser_Sinks"', 'id="LogLevelUser_Level"', "element LogLevelUser_Level: not unique"),
    ("admx", '<category name="Quill" ', '<category name="Qu ill" ', "category Qu ill: not a name"),
    ("admx", '<category name="Quill" ', '<category name="QuillPDF" ', "category QuillPDF: not unique"),
    ("admx", '<parentCategory ref="Quill" />', '<parentCategory ref="windows:Windows" />', "not defined"),
    ("admx", '<supportedOn ref="SUPPORTED_QuillPDF_14" />', '<supportedOn ref="SUPPORTED_X" />', "not defined"),
    ("admx", '      <supportedOn ref="SUPPORTED_QuillPDF_14" />\n', "", "policy WinINetDownload: not one supportedOn"),
    ("admx", "$(string.EditorPath)", "$(string.Editor)", "string Editor: not defined"),
    ("admx", "$(string.EditorPath)", "Editor", "displayName is not a reference to a string"),
    ("admx", "$(presentation.EditorPath)", "$(presentation.Editor)", "presentation Editor: not defined"),
    ("admx", ' presentation="$(presentation.EditorPath)"', "", "policy EditorPath: not one presentation"),
    ("adml", '<string id="Level_error">', '<string id="Level_errors">', "string Level_error: not defined"),
    ("adml", '<string id="Level_error">', '<string id="Level_errors">', "string Level_errors: not used"),
    ("adml", '<string id="Level_error">', '<string id="LEVEL_CRITICAL">', "string Level_critical: not unique"),
    ("adml", '">critical</string>', '"> </string>', "string Level_critical: empty"),
    ("adml", '<presentation id="LogSinksUser">', '<presentation id="LogSinks">', "presentation LogSinks: not used"),
    ("adml", 'refId="LogSinksUser_Sinks"', 'refId="LogSinks_Sinks"', "are not those of its elements"),
    ("adml", '<dropdownList refId="LogSinksUser_Sinks" noSort="true" defaultItem="0">Destination:</dropdownList>',
     '<textBox refId="LogSinksUser_Sinks"><label>x</label></textBox>', "are not those of its elements"),
    ("adml", 'defaultItem="4"', 'defaultItem="6"', "the list has no item 6"),
    ("admx", 'class="Both"', 'class="both"', "class both"),
    ("admx", 'key="Environment"', r'key="HKCU\Environment"', "not the path of a key below a root key"),
    ("admx", 'key="Environment"', 'key="Environment\\"', "not the path of a key below a root key"),
    ("admx", ' valueName="kIEBrowserPluginWinINet"', "", "policy WinINetDownload: needs elements, or"),
    ("admx", "<disabledValue>\n        <string>/b 0</string>\n      </disabledValue>", "", "needs elements, or"),
    ("admx", "<string>/b 0</string>", "<string></string>", "not a string of 1 to 255"),
    ("admx", "<string>/b 0</string>", f"<string>{'x' * 256}</string>", "not a string of 1 to 255"),
    ("admx", "<string>error</string>", "<string>critical</string>", "not one value for each item"),
    ("admx", 'maxLength="259"', 'maxLength="1024"', "no length from 1 to 1023"),
    ("admx", 'required="true" maxLength="259"', 'maxLength="259"', "element EditorPath_Path: not required"),
    ("admx", 'expandable="true"', 'expandable="yes"', "expandable is neither"),
    ("admx", "<elements>", "<elements><boolean />", "boolean: not an element of this template"),
    ("admx", 'class="Both"', 'class="Both" clientExtension="x"', "unknown attribute clientExtension"),
    ("admx", "<enabledValue>", "<elements /><enabledValue>", "the order of its elements is wrong"),
    ("adml", "Disabled: the variable is deleted.", "", "the explanation has nothing on Disabled:"),
    ("adml", "This is a preference: the value stays", "It", "does not say that the value stays"),
]


def read(folder=FOLDER):
    return (folder / "QuillPDF.admx").read_bytes(), (folder / "en-US/QuillPDF.adml").read_bytes()


def policies():
    return template.policies(read()[0])


class Templates(unittest.TestCase):
    def FollowTheRulesOfTheFormat(self):
        self.assertEqual(template.errors(*read()), [])

    def BreakARuleWhereverTheyAreDamaged(self):
        for kind, text, replacement, message in DAMAGES:
            with self.subTest(f"{kind}: {text} -> {replacement[:40]}"):
                files = dict(zip(("admx", "adml"), (data.decode() for data in read())))
                self.assertIn(text, files[kind])
                files[kind] = files[kind].replace(text, replacement, -1 if text.startswith("2006") else 1)
                self.assertRegex("\n".join(template.errors(*(file.encode() for file in files.values()))), message)

    def HaveEachSettingThatTheProductReads(self):
        written = {(name, policy_class, policy.key) for policy in policies() for policy_class in policy.classes
                   for name in [policy.value_name or policy.elements[0].value_name]}
        expected = {(variable, policy_class, key) for variable in settings.variables()
                    for policy_class, key in ENVIRONMENT.items()}
        self.assertEqual({name for name, _, _ in expected}, {"QUILL_LOG_LEVEL", "QUILL_LOG_SINKS", "QUILL_TMP_FOLDER"})
        # A file that begins to read the registry has a setting of which the templates know nothing.
        self.assertEqual(settings.registry_readers(),
                         {"platform/settings.cpp", "retrieval/download/download_switch.cpp"})
        switch_key = [text for text in settings.literals() if text.endswith(r"\kBrowserPlugin")]
        switch_name = [text for text in settings.literals() if text.startswith("kIEBrowserPlugin")]
        self.assertEqual((len(switch_key), len(switch_name)), (1, 1))
        expected |= {(switch_name[0], policy_class, switch_key[0]) for policy_class in ENVIRONMENT}
        settings_key = [text for text in settings.literals() if text.endswith(r"\14\Settings")]
        self.assertEqual(len(settings_key), 1)
        self.assertIn("exepath", settings.literals())
        expected.add(("exepath", "Machine", settings_key[0]))
        self.assertEqual(written, expected)

    def OfferTheWordsThatTheProductKnows(self):
        words = {"QUILL_LOG_LEVEL": [], "QUILL_LOG_SINKS": []}
        for element in (element for policy in policies() for element in policy.elements if element.kind == "enum"):
            words[element.value_name].append(element.items)
        # From the fewest lines to the most.
        self.assertEqual(words["QUILL_LOG_LEVEL"], [settings.log_levels()[::-1]] * 2)
        sinks = settings.log_sinks()
        self.assertEqual(words["QUILL_LOG_SINKS"], [sinks + [",".join(sinks)]] * 2)

    def LimitThePathOfTheEditorToWhatTheProductReads(self):
        [length] = [element.max_length for policy in policies() for element in policy.elements
                    if element.value_name == "exepath"]
        # The buffer also holds the terminating null, and MAX_PATH is 260.
        buffer = settings.words("platform/settings.cpp", r"wchar_t text\[(\w+)\]")
        self.assertEqual({"MAX_PATH": 260}[buffer], length + 1)
