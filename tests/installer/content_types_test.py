"""The values of content types, which other products write too."""
from installed import CONTENT_TYPES, DOCUMENT_CLASS, InstallerTest

PDF = CONTENT_TYPES + r"\application/pdf"
SHORT_PDF = CONTENT_TYPES + r"\pdf"
OURS = DOCUMENT_CLASS.rpartition("\\")[2]
OTHER = "{00000000-1111-2222-3333-444444444444}"
THIRD = "{99999999-1111-2222-3333-444444444444}"


class ContentTypes(InstallerTest):
    def OfAnotherProductAreRestored(self):
        self.windows.set_value(PDF, "CLSID", OTHER)
        self.windows.set_value(PDF, "Extension", ".pdf")
        self.windows.set_value(PDF, "Encoding", "of another")
        self.windows.set_value(SHORT_PDF, "Extension", ".other")
        before = self.windows.registry()
        self.install(package_file=self.older)
        self.assertEqual(self.windows.text(PDF, "CLSID"), OURS)
        self.assertEqual(self.windows.text(SHORT_PDF, "Extension"), ".pdf")
        # Neither a repair nor an upgrade takes the product's own values for former ones.
        self.install("REINSTALL=ALL REINSTALLMODE=amus", self.older)
        self.install()
        self.assertEqual(self.windows.text(PDF, "CLSID"), OURS)
        self.install("REMOVE=ActiveDocument")
        self.assertEqual(self.windows.text(PDF, "CLSID"), OTHER)
        self.assertEqual(self.windows.text(SHORT_PDF, "Extension"), ".other")
        self.install("ADDLOCAL=ActiveDocument")
        self.assertEqual(self.windows.text(PDF, "CLSID"), OURS)
        self.remove()
        self.assert_registry(before)

    def WrittenLaterByAnotherProductStay(self):
        self.windows.set_value(PDF, "CLSID", OTHER)
        # Left by regsvr32; the class goes, so its registration is not to be restored.
        self.windows.set_value(CONTENT_TYPES + r"\application/ppdf", "CLSID", OURS)
        self.install()
        self.windows.set_value(PDF, "CLSID", THIRD)
        self.install("REINSTALL=ALL REINSTALLMODE=omus")
        self.assertEqual(self.windows.text(PDF, "CLSID"), OURS)
        self.windows.set_value(SHORT_PDF, "Extension", ".other")
        self.windows.reg("delete", SHORT_PDF, "/v", "CLSID", "/f")
        self.windows.set_value(CONTENT_TYPES + r"\ppdf", "CLSID", OTHER)
        self.remove()
        registry = self.windows.registry()
        found = {key.rpartition("\\")[2]: values for key, values in registry.items()
                 if key.startswith(CONTENT_TYPES.lower() + "\\")}
        # The first one was replaced by the repair, and is the one to be restored.
        self.assertEqual(found, {"application/pdf": {"clsid": "s " + THIRD}, "pdf": {"extension": "s .other"},
                                 "ppdf": {"clsid": "s " + OTHER}})
