#!/usr/bin/env python3
# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT
"""Writes a preference domain, and checks what became of it, by another implementation of property lists.

domain.py write xml|binary FILE    writes three presets and much that the pane does not know
domain.py check FILE               says what differs after a save; nothing if all is well
domain.py compare FILE OTHER       says what differs between two domains; nothing if they hold the same
domain.py labels FILE              prints the presets' labels, a line each
"""

import datetime
import plistlib
import sys

LONGEST_REPORT = 20
FORMS = {"xml": plistlib.FMT_XML, "binary": plistlib.FMT_BINARY}


def every_type():
    """One value of every property-list type, and the edges of their ranges."""
    return {
        "string": "text & <markup> \u00e4\u4e2d\U0001f600",
        "empty string": "",
        "true": True,
        "false": False,
        "zero": 0,
        "one": 1,
        "small": 200,
        "negative": -1,
        "smallest": -(2**63),
        "largest": 2**63 - 1,
        "unsigned": 2**64 - 1,
        "real": 0.1,
        "whole real": 1.0,
        "date": datetime.datetime(2009, 2, 13, 23, 31, 30),
        "date before the epoch": datetime.datetime(1969, 7, 20, 20, 17, 40),
        "data": bytes(range(256)),
        "empty data": b"",
        "array": ["a", 1, 1.5, True, b"x", ["nested", {}]],
        "empty array": [],
        "dictionary": {"key": {"key": ["value"]}, "": "empty key"},
        "empty dictionary": {},
        "cl\u00e9 \U0001f511": "a key beyond Latin",
    }


def item(name, permissions="764", **rest):
    """An item as it is stored: without what is empty."""
    return {**({"filename": name} if name else {}), "permissions": permissions, **rest}


def folder(name, *children, **rest):
    result = item(name, isFolder=True, **rest)
    if children:
        result["children"] = list(children)
    return result


def presets():
    client = folder(
        "",
        folder("Drafts", item("brief.md", contentFilename="Brief.md", permissions="640"), color="red"),
        folder("Empty", permissions="755"),
        item("notes", color="gray"),
    )
    deep = item("leaf", color="purple")
    for level in range(50):
        deep = folder("level %d" % level, deep)
    return [
        {"label": "Zebra", "fileHierarchy": client, "scriptFile": "Start Git Repository.sh", **every_type()},
        {"label": "\u00c4pfel / Birnen: \U0001f34e", "fileHierarchy": deep, "extra": every_type()},
        {"label": "Aardvark", "fileHierarchy": folder(""), "list": list(every_type().values())},
    ]


def with_identifiers(node):
    """As an older program stored them: every item with its identifier."""
    result = dict(node, uid="0123456789" * 4)
    if "children" in node:
        result["children"] = [with_identifiers(child) for child in node["children"]]
    return result


def domain():
    return {
        "QNBPresetsStored": {"loaded": True},
        "QNBPresets": presets(),
        "QNBShowMenubar": False,
        "QNBHotKeyCode": 36,
        "QNBHotKeyFlags": 1 << 20,
        "QNBLaunchHelperOnStart": False,
        "Another program's": every_type(),
        "Another list": list(every_type().values()),
        **{"top-level " + key: value for key, value in every_type().items()},
    }


def write(form, path):
    values = domain()
    values["QNBPresets"] = [
        dict(preset, fileHierarchy=with_identifiers(preset["fileHierarchy"])) for preset in values["QNBPresets"]
    ]
    with open(path, "wb") as file:
        plistlib.dump(values, file, fmt=FORMS[form], sort_keys=False)


def differences(expected, found, path=""):
    """Where two values differ, their types included: 1, 1.0 and True are three values."""
    if type(expected) is not type(found):
        yield "%s: %r became %r" % (path, expected, found)
    elif isinstance(expected, dict):
        for key in sorted(expected.keys() | found.keys()):
            if key not in found:
                yield "%s/%s is gone" % (path, key)
            elif key not in expected:
                yield "%s/%s is new: %r" % (path, key, found[key])
            else:
                yield from differences(expected[key], found[key], path + "/" + key)
    elif isinstance(expected, list):
        if len(expected) != len(found):
            yield "%s: %d elements became %d" % (path, len(expected), len(found))
        for index, (one, other) in enumerate(zip(expected, found)):
            yield from differences(one, other, "%s[%d]" % (path, index))
    elif expected != found:
        yield "%s: %r became %r" % (path, expected, found)


def check(path):
    with open(path, "rb") as file:
        data = file.read()
    yield from differences(domain(), plistlib.loads(data))
    if b"uid" in data or "uid".encode("utf-16-be") in data:
        yield "there is a uid somewhere"


def compare(path, other):
    with open(path, "rb") as one, open(other, "rb") as another:
        yield from differences(plistlib.load(one), plistlib.load(another))


def print_labels(path):
    with open(path, "rb") as file:
        for preset in plistlib.load(file)["QNBPresets"]:
            sys.stdout.buffer.write((preset["label"] + "\n").encode("utf-8"))


def print_value(path, key):
    with open(path, "rb") as file:
        value = plistlib.load(file).get(key)
    print("none" if value is None else "%s %s" % (type(value).__name__, value))


def main(arguments):
    if arguments[0] == "write":
        write(*arguments[1:])
        return 0
    if arguments[0] == "labels":
        print_labels(arguments[1])
        return 0
    if arguments[0] == "value":
        print_value(*arguments[1:])
        return 0
    found = list({"check": check, "compare": compare}[arguments[0]](*arguments[1:]))
    print("\n".join(found[:LONGEST_REPORT]))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
