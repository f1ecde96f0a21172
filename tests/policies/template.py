"""Reads a group policy template, checks it against the rules of the format, and says what a setting writes.

The rules are those of Microsoft's reference of the ADMX format that these templates touch; anything else is refused,
so that a new kind of element needs a new rule."""
import dataclasses
import re
import xml.etree.ElementTree as ElementTree

NAMESPACE = "{http://schemas.microsoft.com/GroupPolicy/2006/07/PolicyDefinitions}"
NAME = re.compile(r"[A-Za-z]\w*", re.A)
REFERENCE = re.compile(r"\$\((string|presentation)\.([^)]*)\)")
HIVES = ("HKEY_", "HKLM", "HKCU", "HKCR", "HKU")
MAX_STRING = 255  # of a policy's or an item's value
MAX_TEXT = 1023
# The keys below which group policy removes values that no longer apply.
POLICIES_KEYS = ("software\\policies\\", "software\\microsoft\\windows\\currentversion\\policies\\")
# Each element with its attributes and its children, in their order. "*" marks attributes that must exist.
SCHEMA = {
    "policyDefinitions": ("revision* schemaVersion*",
                          "policyNamespaces resources supportedOn categories policies"),
    "policyNamespaces": ("", "target"),
    "target": ("prefix* namespace*", ""),
    "resources": ("minRequiredRevision", "stringTable presentationTable"),
    "supportedOn": ("ref", "definitions"),
    "definitions": ("", "definition"),
    "definition": ("name* displayName*", ""),
    "categories": ("", "category"),
    "category": ("name* displayName* explainText", "parentCategory"),
    "parentCategory": ("ref*", ""),
    "policies": ("", "policy"),
    "policy": ("name* class* displayName* explainText* key* valueName presentation",
               "parentCategory supportedOn enabledValue disabledValue elements"),
    "enabledValue": ("", "string"),
    "disabledValue": ("", "string"),
    "elements": ("", "enum text"),
    "enum": ("id* valueName* required", "item"),
    "item": ("displayName*", "value"),
    "value": ("", "string"),
    "text": ("id* valueName* required maxLength expandable", ""),
    "policyDefinitionResources": ("revision* schemaVersion*", "displayName description resources"),
    "displayName": ("", ""),
    "description": ("", ""),
    "stringTable": ("", "string"),
    "string": ("id", ""),
    "presentationTable": ("", "presentation"),
    "presentation": ("id*", "dropdownList textBox"),
    "dropdownList": ("refId* noSort defaultItem", ""),
    "textBox": ("refId*", "label"),
    "label": ("", ""),
}
CONTROLS = {"enum": "dropdownList", "text": "textBox"}


@dataclasses.dataclass
class Element:
    kind: str  # enum or text
    name: str
    value_name: str
    expandable: bool
    max_length: int
    items: list  # of an enum: the strings


@dataclasses.dataclass
class Policy:
    name: str
    classes: tuple  # Machine, User
    key: str
    value_name: str  # empty if it has elements
    enabled: str
    disabled: str
    elements: list
    explanation: str  # the name of the string


@dataclasses.dataclass(frozen=True)
class Change:
    """What the group policy client does to one value. No type: it is deleted."""
    root: str  # HKLM or HKCU
    key: str
    name: str
    type: str = ""
    data: str = ""


def _tag(node):
    return node.tag.removeprefix(NAMESPACE)


def _find(node, path):
    return node.findall("/".join(NAMESPACE + step for step in path.split("/")))


def policies(definitions):
    """The policies of a template that is free of errors."""
    root = ElementTree.fromstring(definitions)
    return [_policy(node) for node in _find(root, "policies/policy")]


def strings(resources):
    root = ElementTree.fromstring(resources)
    return {node.get("id"): node.text or "" for node in _find(root, "resources/stringTable/string")}


def _policy(node):
    def text(path):
        return "".join(found.text or "" for found in _find(node, path))

    elements = [Element(_tag(element), element.get("id"), element.get("valueName"),
                        element.get("expandable") == "true", int(element.get("maxLength", MAX_TEXT)),
                        [value.text for value in _find(element, "item/value/string")])
                for group in _find(node, "elements") for element in group]
    classes = ("Machine", "User") if node.get("class") == "Both" else (node.get("class"),)
    return Policy(node.get("name"), classes, node.get("key"), node.get("valueName", ""), text("enabledValue/string"),
                  text("disabledValue/string"), elements, REFERENCE.fullmatch(node.get("explainText"))[2])


def changes(policy, policy_class, state, choices=None):
    """What the client does for "Enabled", with the choice for each element, "Disabled" or "Not Configured"."""
    root = {"Machine": "HKLM", "User": "HKCU"}[policy_class]
    if state == "Not Configured":
        return []
    if policy.value_name:
        data = policy.enabled if state == "Enabled" else policy.disabled
        return [Change(root, policy.key, policy.value_name, "REG_SZ", data)]
    # The editor stores "**Del." and the value's name for each element of a disabled policy.
    return [Change(root, policy.key, element.value_name) if state == "Disabled" else
            Change(root, policy.key, element.value_name, "REG_EXPAND_SZ" if element.expandable else "REG_SZ",
                   choices[element.name])
            for element in policy.elements]


def errors(definitions, resources):
    """What is wrong with a template (.admx) and its texts (.adml), both as bytes."""
    found = []
    roots = []
    for data, name in ((definitions, "policyDefinitions"), (resources, "policyDefinitionResources")):
        if not data.startswith(b'<?xml version="1.0" encoding="utf-8"?>'):
            found.append(f"{name}: no declaration of UTF-8")
        try:
            root = ElementTree.fromstring(data)
        except ElementTree.ParseError as error:
            return [f"{name}: {error}"]
        if root.tag != NAMESPACE + name:
            return [f"{root.tag}: another root element or namespace"]
        roots.append(root)
        _check_schema(root, found)
    if not found:
        _check_names(*roots, found)
        _check_texts(*roots, found)
        for node in _find(roots[0], "policies/policy"):
            _check_policy(node, roots[1], found)
    return found


def _check_schema(node, found):
    tag = _tag(node)
    if tag not in SCHEMA:
        found.append(f"{tag}: not an element of this template")
        return
    attributes, children = (words.split() for words in SCHEMA[tag])
    known = {name.rstrip("*") for name in attributes}
    found += [f"{tag}: unknown attribute {name}" for name in node.keys() if name not in known]
    found += [f"{tag}: {name[:-1]} is missing" for name in attributes if name.endswith("*") and not node.get(name[:-1])]
    order = [children.index(_tag(child)) if _tag(child) in children else -1 for child in node]
    if -1 in order:
        found.append(f"{tag}: {_tag(node[order.index(-1)])} does not belong there")
    elif order != sorted(order) and tag not in ("elements", "presentation"):
        found.append(f"{tag}: the order of its elements is wrong")
    for child in node:
        _check_schema(child, found)


def _unique(what, names, found):
    lower = [name.lower() for name in names]
    found += [f"{what} {name}: not unique" for name in names if lower.count(name.lower()) > 1]
    found += [f"{what} {name}: not a name" for name in names if not NAME.fullmatch(name)]


def _check_names(definitions, resources, found):
    for root in (definitions, resources):
        for attribute in ("revision", "schemaVersion"):
            if not re.fullmatch(r"\d+\.\d+", root.get(attribute)):
                found.append(f"{_tag(root)}: {attribute} is not a version")
    needed = [node.get("minRequiredRevision", "") for node in _find(definitions, "resources")]
    if len(needed) != 1 or not re.fullmatch(r"\d+\.\d+", needed[0]):
        found.append("resources: minRequiredRevision is missing")
    elif tuple(map(int, needed[0].split("."))) > tuple(map(int, resources.get("revision").split("."))):
        found.append("resources: minRequiredRevision is greater than the revision of the texts")
    if len(_find(definitions, "policyNamespaces/target")) != 1:
        found.append("policyNamespaces: not one target")
    names = {}
    for what, path in (("definition", "supportedOn/definitions/definition"), ("category", "categories/category"),
                       ("policy", "policies/policy")):
        names[what] = [node.get("name") for node in _find(definitions, path)]
        _unique(what, names[what], found)
    elements = [node for group in definitions.iter(NAMESPACE + "elements") for node in group]
    _unique("element", [node.get("id") for node in elements], found)
    for tag, what in (("parentCategory", "category"), ("supportedOn", "definition")):
        references = [node.get("ref") for node in definitions.iter(NAMESPACE + tag) if node.get("ref")]
        found += [f"{tag} {name}: not defined" for name in references if name not in names[what]]
        found += [f"{what} {name}: not used" for name in names[what] if name not in references]


def _check_texts(definitions, resources, found):
    referenced = {"string": set(), "presentation": set()}
    for node in definitions.iter():
        for name, value in node.items():
            match = REFERENCE.fullmatch(value)
            if match:
                referenced[match[1]].add(match[2])
            if name in ("displayName", "explainText") and not (match and match[1] == "string"):
                found.append(f"{_tag(node)} {node.get('name')}: {name} is not a reference to a string")
            if name == "presentation" and not (match and match[1] == "presentation"):
                found.append(f"{_tag(node)} {node.get('name')}: no reference to a presentation")
    for kind, used in referenced.items():
        nodes = _find(resources, f"resources/{kind}Table/{kind}")
        names = [node.get("id") or "" for node in nodes]
        _unique(kind, names, found)
        found += [f"{kind} {name}: not defined" for name in used if name not in names]
        found += [f"{kind} {name}: not used" for name in names if name not in used]
        found += [f"{kind} {node.get('id')}: empty" for node in nodes if not "".join(node.itertext()).strip()]


def _check_policy(node, resources, found):
    name, key = f"policy {node.get('name')}", node.get("key")
    if node.get("class") not in ("Machine", "User", "Both"):
        found.append(f"{name}: class {node.get('class')}")
    if key.upper().startswith(HIVES) or key.strip("\\") != key or "\\\\" in key or "/" in key:
        found.append(f"{name}: not the path of a key below a root key")
    for tag in ("parentCategory", "supportedOn"):
        if len(_find(node, tag)) != 1:
            found.append(f"{name}: not one {tag}")
    values = [len(_find(node, tag + "/string")) for tag in ("enabledValue", "disabledValue")]
    elements = [element for group in _find(node, "elements") for element in group]
    if (values != [1, 1] or elements) if node.get("valueName") else (values != [0, 0] or not elements):
        found.append(f"{name}: needs elements, or a value's name with its data for enabled and disabled")
    found += [f"{name}: the value is not a string of 1 to {MAX_STRING} characters"
              for text in node.iter(NAMESPACE + "string") if not 1 <= len(text.text or "") <= MAX_STRING]
    for element in elements:
        _check_element(f"element {element.get('id')}", element, found)
    _check_presentation(name, node, elements, resources, found)
    text = strings(ElementTree.tostring(resources)).get(REFERENCE.fullmatch(node.get("explainText"))[2], "")
    states = [word for word in ("Enabled:", "Disabled:", "Not Configured:") if word not in text]
    found += [f"{name}: the explanation has nothing on {word}" for word in states]
    if not key.lower().startswith(POLICIES_KEYS) and "This is a preference:" not in text:
        found.append(f"{name}: the explanation does not say that the value stays")


def _check_element(name, element, found):
    if element.get("required") != "true":
        found.append(f"{name}: not required")  # an empty value would be written
    if _tag(element) == "text":
        if not re.fullmatch(r"\d+", element.get("maxLength", "")) or not 1 <= int(element.get("maxLength")) <= MAX_TEXT:
            found.append(f"{name}: no length from 1 to {MAX_TEXT}")
        if element.get("expandable", "false") not in ("true", "false"):
            found.append(f"{name}: expandable is neither true nor false")
    else:
        items = [value.text for value in _find(element, "item/value/string")]
        if not items or len(items) != len(element) or len(set(items)) != len(items):
            found.append(f"{name}: not one value for each item")


def _check_presentation(name, node, elements, resources, found):
    reference = REFERENCE.fullmatch(node.get("presentation", ""))
    if not elements:
        return
    shown = [presentation for presentation in _find(resources, "resources/presentationTable/presentation")
             if reference and presentation.get("id") == reference[2]]
    if len(shown) != 1:
        found.append(f"{name}: not one presentation")
        return
    controls = sorted((control.get("refId"), _tag(control)) for control in shown[0])
    if controls != sorted((element.get("id"), CONTROLS[_tag(element)]) for element in elements):
        found.append(f"{name}: the controls of its presentation are not those of its elements")
    sizes = {element.get("id"): len(element) for element in elements}
    found += [f"{name}: the list has no item {control.get('defaultItem')}" for control in shown[0]
              if _tag(control) == "dropdownList" and
              int(control.get("defaultItem", "0")) >= sizes.get(control.get("refId"), 0)]
