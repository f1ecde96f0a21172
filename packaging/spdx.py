"""The bill of materials as an SPDX 2.3 document. The licence of the product itself is not stated."""
import hashlib
import re
import urllib.parse
import uuid

PRODUCT = "SPDXRef-Package-QuillPDF.IE"
UNSTATED = "NOASSERTION"


def checksums(path):
    data = path.read_bytes()
    return [{"algorithm": name.upper(), "checksumValue": hashlib.new(name, data).hexdigest()}
            for name in ("sha1", "sha256")]


def identifier(kind, name):
    return f"SPDXRef-{kind}-" + re.sub(r"[^A-Za-z0-9.-]", "-", name)


def distribution():
    fields = dict(re.findall(r'^(ID|VERSION_ID)="?([^"\n]*)', open("/etc/os-release").read(), re.M))
    return f"{fields.get('ID', 'debian')}-{fields.get('VERSION_ID', 'unknown')}"


def package_url(package):
    version = urllib.parse.quote(package.version, safe=".-~_")
    name = urllib.parse.quote(package.name, safe=".-~_")
    return f"pkg:deb/debian/{name}@{version}?arch={package.architecture}&distro={distribution()}"


def product_package(version, installer):
    package = {
        "SPDXID": PRODUCT,
        "name": "QuillPDF.IE",
        "versionInfo": version,
        "supplier": "Organization: Quill",
        "downloadLocation": UNSTATED,
        "filesAnalyzed": False,
        "licenseConcluded": UNSTATED,
        "licenseDeclared": UNSTATED,
        "copyrightText": UNSTATED,
        "primaryPackagePurpose": "LIBRARY",
    }
    if installer:
        package["packageFileName"] = installer.name
        package["checksums"] = checksums(installer)
    return package


def component_package(component, package):
    comment = []
    if package.linked:
        comment.append("linked: " + ", ".join(package.linked))
    if package.included:
        comment.append(f"headers included: {len(package.included)}")
    return {
        "SPDXID": identifier("Package", package.name),
        "name": package.name,
        "versionInfo": package.version,
        "supplier": "Organization: Debian",
        "downloadLocation": UNSTATED,
        "filesAnalyzed": False,
        "licenseConcluded": component.licence,
        "licenseDeclared": component.licence,
        "copyrightText": UNSTATED,
        "sourceInfo": f"Debian source package {package.source} {package.source_version}",
        "comment": f"{component.name}; " + "; ".join(comment),
        "externalRefs": [{
            "referenceCategory": "PACKAGE-MANAGER",
            "referenceType": "purl",
            "referenceLocator": package_url(package),
        }],
    }


def image_file(image):
    return {
        "SPDXID": identifier("File", image.name),
        "fileName": f"./{image.name}",
        "fileTypes": ["BINARY"],
        "checksums": checksums(image),
        "licenseConcluded": UNSTATED,
        "licenseInfoInFiles": [UNSTATED],
        "copyrightText": UNSTATED,
    }


def document(version, date, images, installer, components):
    files = [image_file(image) for image in images]
    relationships = [("SPDXRef-DOCUMENT", "DESCRIBES", PRODUCT)]
    # A package whose files were not analysed may not contain any, so the document describes them beside it.
    for file in files:
        relationships += [("SPDXRef-DOCUMENT", "DESCRIBES", file["SPDXID"]),
                          (file["SPDXID"], "GENERATED_FROM", PRODUCT)]
    packages = [product_package(version, installer)]
    extracted = []
    for component in components:
        for reference in re.findall(r"LicenseRef-[A-Za-z0-9.-]+", component.licence):
            extracted.append({"licenseId": reference, "name": component.name,
                              "extractedText": component.licence_text()})
        for package in component.packages:
            packages.append(component_package(component, package))
            kind = "STATIC_LINK" if package.linked else "DEPENDS_ON"
            relationships.append((PRODUCT, kind, packages[-1]["SPDXID"]))
    contents = "".join(file["checksums"][1]["checksumValue"] for file in files)
    identity = uuid.uuid5(uuid.NAMESPACE_OID, contents)
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"QuillPDF.IE-{version}",
        "documentNamespace": f"https://spdx.org/spdxdocs/QuillPDF.IE-{version}-{identity}",
        "creationInfo": {"created": date, "creators": ["Organization: Quill", "Tool: make-notices"]},
        "packages": packages,
        "files": files,
        "hasExtractedLicensingInfos": extracted,
        "relationships": [{"spdxElementId": first, "relationshipType": kind, "relatedSpdxElement": second}
                          for first, kind, second in relationships],
    }
