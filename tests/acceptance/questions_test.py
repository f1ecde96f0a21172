"""The questions that the kit answers are those of docs/known-limits.md."""
import re
import unittest

import package


class Questions(unittest.TestCase):
    def setUp(self):
        document = (package.ROOT / "docs/known-limits.md").read_text()
        section = re.search(r"(?ms)^## Only Windows can show\n(.*?)^## ", document)[1]
        self.documented = [(name, " ".join(text.split()))
                           for text, name in re.findall(r"(?s)\*\*([^*]+)\*\* \(`([\w-]+)`\)", section)]
        self.bold = len(re.findall(r"\*\*[^*]+\*\*", section))
        source = (package.ROOT / "acceptance/questions.cpp").read_text()
        table = source[source.index("all = {"):source.index("return all;")]
        # Each row: identifier, question, how it is measured, why it is not; long texts are in pieces.
        self.rows = [[re.sub(r'"\s*"', "", text)[1:-1] for text in re.findall(r'"[^"]*"(?:\s+"[^"]*")*', row)]
                     for row in re.findall(r"\{((?:\s*\"[^\"]*\",?)+)\s*\}", table)]

    def AreThoseOfTheDocumentInItsOrder(self):
        self.assertGreater(len(self.documented), 10)
        self.assertEqual(len(self.documented), self.bold, "a question without an identifier")
        self.assertEqual([(row[0], row[1]) for row in self.rows], self.documented)

    def AreMeasuredOrHaveAReason(self):
        self.assertEqual({len(row) for row in self.rows}, {4})
        self.assertEqual([row[0] for row in self.rows if bool(row[2]) == bool(row[3])], [])
        measured = {row[0] for row in self.rows if row[2]}
        sources = [path.read_text() for folder in ("acceptance", "tests/acceptance/installed")
                   for path in (package.ROOT / folder).glob("*.cpp")]
        printed = {name for source in sources
                   for name in re.findall(r'print_answer\(\s*"([\w-]+)"|answers_\["([\w-]+)"\]', source) for name in name if name}
        self.assertEqual(printed, measured)
