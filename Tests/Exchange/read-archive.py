#!/usr/bin/env python3
# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT
"""Prints the content of a keyed archive as JSON with tags (Tests/Platform/data/archives/README.md).

Strict on purpose: it takes what the original platform writes and nothing else, so that it shows where our
archives differ from that.
"""

import base64
import datetime
import json
import plistlib
import sys

HIERARCHIES = {
    "NSDictionary": ["NSDictionary", "NSObject"],
    "NSMutableDictionary": ["NSMutableDictionary", "NSDictionary", "NSObject"],
    "NSArray": ["NSArray", "NSObject"],
    "NSMutableArray": ["NSMutableArray", "NSArray", "NSObject"],
    "NSMutableString": ["NSMutableString", "NSString", "NSObject"],
    "NSDate": ["NSDate", "NSObject"],
    "NSNull": ["NSNull", "NSObject"],
}


def check(condition, complaint):
    if not condition:
        sys.exit(complaint)


class Archive:
    def __init__(self, data):
        check(data.startswith(b"bplist00"), "not in the binary form")
        content = plistlib.loads(data, fmt=plistlib.FMT_BINARY)
        check(set(content) == {"$version", "$archiver", "$top", "$objects"}, "other keys than the four")
        check(content["$version"] == 100000, "another version")
        check(content["$archiver"] == "NSKeyedArchiver", "another archiver")
        check(list(content["$top"]) == ["root"], "another top than root")
        self.objects = content["$objects"]
        check(self.objects[0] == "$null", "object 0 is not the null marker")
        check("$null" not in self.objects[1:], "a bare null marker")
        self.root = content["$top"]["root"]
        self.reached = {0}
        scalars = [(type(o), repr(o)) for o in self.objects if not isinstance(o, dict)]
        check(len(scalars) == len(set(scalars)), "equal scalars that are not shared")

    def at(self, uid):
        check(isinstance(uid, plistlib.UID), f"no reference: {uid!r}")
        check(uid.data < len(self.objects), f"reference {uid.data} of {len(self.objects)}")
        self.reached.add(uid.data)
        return self.objects[uid.data]

    def class_of(self, thing):
        described = self.at(thing["$class"])
        check(set(described) == {"$classname", "$classes"}, "a class with other fields")
        name = described["$classname"]
        check(described["$classes"] == HIERARCHIES.get(name), f"class {name} of {described['$classes']}")
        return name

    def content(self, uid):
        thing = self.at(uid)
        if isinstance(thing, (bool, str)):
            check(uid.data != 0, "a null reference in a container")
            return thing
        if isinstance(thing, int):
            return {"$int": str(thing)}
        if isinstance(thing, float):
            return {"$real": repr(thing)}
        if isinstance(thing, bytes):
            return {"$data": base64.b64encode(thing).decode()}
        check(not isinstance(thing, datetime.datetime), "a date that is no object")
        name = self.class_of(thing)
        if name in ("NSDictionary", "NSMutableDictionary"):
            check(set(thing) == {"$class", "NS.keys", "NS.objects"}, "a dictionary with other fields")
            check(len(thing["NS.keys"]) == len(thing["NS.objects"]), "keys and values differ in number")
            keys = [self.content(key) for key in thing["NS.keys"]]
            check(len(keys) == len(set(keys)), "a repeated key")
            return dict(zip(keys, map(self.content, thing["NS.objects"])))
        if name in ("NSArray", "NSMutableArray"):
            check(set(thing) == {"$class", "NS.objects"}, "an array with other fields")
            return [self.content(element) for element in thing["NS.objects"]]
        if name == "NSMutableString":
            check(set(thing) == {"$class", "NS.string"}, "a string with other fields")
            return thing["NS.string"]
        if name == "NSDate":
            check(set(thing) == {"$class", "NS.time"}, "a date with other fields")
            return {"$date": repr(float(thing["NS.time"]))}
        return {"$null": True}


def main():
    with open(sys.argv[1], "rb") as file:
        archive = Archive(file.read())
    content = archive.content(archive.root)
    check(archive.reached == set(range(len(archive.objects))), "objects that nothing refers to")
    print(json.dumps(content))


if __name__ == "__main__":
    main()
