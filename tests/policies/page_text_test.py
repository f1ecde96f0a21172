"""The administrator's page as a text: its marks, its sources, the constants and files that it names."""
import re
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree

import page
import settings
import template_test
from test_names import tests_of_programs

GUID = r"\{[0-9A-F]{8}(?:-[0-9A-F]{4}){3}-[0-9A-F]{12}\}"
INTRODUCTION = ":"  # at the end of what introduces a list, a table or a block


def existing_tests():
    names = {f"{program}.{test}" for program, tests in tests_of_programs().items() for test in tests}
    for folder in ("installer", "policies"):
        listed = subprocess.run([sys.executable, settings.ROOT / f"tests/{folder}/run.py", "--list"], check=True,
                                stdout=subprocess.PIPE, text=True).stdout
        names |= {f"{folder}.{line.split()[1]}" for line in listed.splitlines()}
    return names


class Statements(unittest.TestCase):
    maxDiff = None

    def HaveAMark(self):
        statements = page.statements()
        self.assertGreater(len(statements), 100)
        unmarked = [f"{heading}: {text}" for heading, text in statements
                    if not text.endswith(INTRODUCTION) and re.search(r"\w", page.MARK.split(text)[-1])]
        self.assertEqual(unmarked, [])

    def HaveSourcesThatExist(self):
        sources = page.sources()
        used = {mark for _, text in page.statements() for mark in page.marks(text)} - {"U"}
        introduction = dict(page.sections())[""]
        self.assertEqual(used | ({"S1"} & set(page.marks(introduction))), set(sources))
        for kind in "SM":
            numbers = [int(name[1:]) for name in sources if name[0] == kind]
            self.assertEqual(numbers, list(range(1, len(numbers) + 1)))
        named = {test for name, row in sources.items() if name[0] == "S" for test in page.tests_of(row)}
        self.assertEqual([name for name, row in sources.items() if name[0] == "S" and not page.tests_of(row)], [])
        self.assertEqual(sorted(named - existing_tests()), [])
        self.assertEqual([name for name, row in sources.items()
                          if name[0] == "M" and not re.search(r"\]\(https?://\S+\)", row)], [])

    def NameTheProductsConstants(self):
        text = page.text()
        [elevation] = re.findall(rf"ElevationPolicy\\({GUID})\]", text)
        self.assertEqual(set(re.findall(GUID, text)), {*settings.clsids(), elevation})
        self.assertNotIn(elevation, settings.clsids())
        self.assertEqual(set(re.findall(r"\bQUILL_[A-Z_]+\b", text)), settings.variables())
        literals = settings.literals()
        installer = r"SOFTWARE\Quill\QuillPDF.IE"
        self.assertIn(installer, (settings.ROOT / "packaging/msi/product.py").read_text() +
                      (settings.ROOT / "tests/installer/registry_listing.py").read_text().replace("\\\\", "\\") +
                      (settings.ROOT / "docs/installer.md").read_text())
        keys = {key.rstrip("\\") for key in re.findall(r"SOFTWARE\\Quill\\[\w\\.]+", text)}
        self.assertEqual(sorted(keys - literals), [installer])
        for name in ("exepath", "kIEBrowserPluginWinINet", "QuillPDF.QuillPDFCtrl", r"\.quill\test"):
            self.assertIn(name, text)
            self.assertTrue(any(name in literal for literal in literals), name)
        self.assertIn(settings.words("retrieval/download/folder_numbers.h", r'cache_folder_prefix = L"(\w+)"') + "0",
                      text)

    def SayWhichClassesDeclareAppContainers(self):
        listing = (settings.ROOT / "tests/module/registered_per_machine.txt").read_text()
        declared = {clsid for clsid in settings.clsids() if re.search(
            rf"CLSID\\{re.escape(clsid)}\\Implemented Categories\\\{{59FB2056-D625-48D0-A944-1A85B5AB2640\}}", listing)}
        self.assertEqual(declared, set(settings.clsids()))
        self.assertIn("Both classes declare it", " ".join(page.text().split()))

    def NameWhatTheTemplatesWrite(self):
        rows = {row.split("|")[1].strip(): row for _, row in page.statements() if row.startswith("|")}
        texts = template_test.template.strings(template_test.read()[1])
        for policy in template_test.policies():
            name = texts[policy.explanation.replace("Computer_Explain", "").replace("User_Explain", "").replace(
                "_Explain", "")]
            with self.subTest(policy.name):
                row = rows[name.partition(",")[0]]
                self.assertEqual({"computer": "Machine", "user": "User"}.keys() & set(
                    row.split("|")[2].replace(",", " ").split()), {"computer", "user"} if policy.name != "EditorPath"
                    else {"computer"})
                for element in policy.elements:
                    self.assertIn(f"`{element.value_name}`", row)
                    self.assertTrue(all(f"`{item}`" in row for item in element.items))
                for word in filter(None, (policy.value_name, policy.enabled, policy.disabled)):
                    self.assertIn(f"`{word}`", row)

    def LinkToWhatExists(self):
        for target in re.findall(r"\]\((?!https?:)([^)]+)\)", page.text()):
            with self.subTest(target):
                name, _, anchor = target.partition("#")
                path = settings.ROOT / "docs" / name if name else page.PATH
                self.assertTrue(path.is_file())
                anchors = {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-")
                           for heading in re.findall(r"(?m)^##* (.*)$", path.read_text())}
                self.assertTrue(not anchor or anchor in anchors)

    def HaveExamplesOfWellFormedXml(self):
        site_list, task = [ElementTree.fromstring(block.text.encode()) for block in page.blocks()
                           if block.language == "xml"]
        self.assertEqual(site_list.tag, "site-list")
        self.assertTrue(site_list.get("version").isdigit())
        for site in site_list:
            self.assertEqual(site.tag, "site")
            self.assertNotIn("//", site.get("url"))
            self.assertLessEqual({child.tag: child.text for child in site}.items(),
                                 {"compat-mode": "Default", "open-in": site.findtext("open-in")}.items())
            self.assertIn(site.findtext("open-in"), ("IE11", "None"))
        self.assertTrue(task.tag.endswith("}Task"))
