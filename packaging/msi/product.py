"""Names and identifiers of the product that never change between versions."""
import uuid

NAME = "Quill PDF for Internet Explorer"
PUBLISHER = "Quill"
LANGUAGE = 1033
MODULE_FILE = "QuillPDF.IE.dll"
UPGRADE_CODE = "{14127976-0BB3-4DFC-92AB-92E56C2B9B95}"
# Title and description of each feature; the name is used on command lines.
FEATURES = {
    "ActiveDocument": ("PDF documents in the browser", "Opens PDF documents inside Internet Explorer and IE mode."),
    "SharePoint": ("PDF documents of SharePoint libraries",
                   "Starts the desktop editor for PDFs of SharePoint libraries."),
}
# The installer's own values: the folder, the installed features, and what the shared values held before.
# diagnose/check_settings.cpp reads them.
SETTINGS_KEY = r"SOFTWARE\Quill\QuillPDF.IE"
FORMER_KEY = rf"{SETTINGS_KEY}\Former content types"
# The entry under Add or Remove Programs.
UNINSTALL_KEY = r"SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\[ProductCode]"

NAMESPACE = uuid.UUID("f6874b0d-ef04-48e2-aa77-6d2ddc019f8b")


def derived_guid(*what):
    """The same identifier for the same words."""
    return "{" + str(uuid.uuid5(NAMESPACE, "/".join(what))).upper() + "}"
