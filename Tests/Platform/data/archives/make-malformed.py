#!/usr/bin/env python3
# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT
"""Writes the archives of malformed/: one defect each, named by it, everything else as it should be."""

import pathlib
import plistlib
from plistlib import UID

FOLDER = pathlib.Path(__file__).resolve().parent / "malformed"


def described(*names):
    return {"$classname": names[0], "$classes": [*names, "NSObject"]}


DICTIONARY = described("NSDictionary")
ARRAY = described("NSArray")


def archive(*objects, **changes):
    """An archive whose root is object 1; of the changes, None removes the key."""
    content = {
        "$version": 100000,
        "$archiver": "NSKeyedArchiver",
        "$top": {"root": UID(1)},
        "$objects": ["$null", *objects],
    }
    for key, value in changes.items():
        if value is None:
            del content["$" + key]
        else:
            content["$" + key] = value
    return content


def array(*elements):
    return archive({"NS.objects": list(elements), "$class": UID(2)}, ARRAY)


def wrapped(class_name, **fields):
    """The root is an object of that class with these fields."""
    return archive(
        {"$class": UID(2), **{name.replace("_", "."): value for name, value in fields.items()}},
        described(class_name),
    )


def exponential(levels):
    """Every array holds the next one twice."""
    arrays = [{"NS.objects": [UID(i + 2), UID(i + 2)], "$class": UID(levels + 2)} for i in range(levels)]
    return archive(*arrays, "leaf", ARRAY)


def dictionary(keys, values, *objects):
    return archive({"NS.keys": keys, "NS.objects": values, "$class": UID(2)}, DICTIONARY, *objects)


CASES = {
    # The frame
    "top-level-an-array": ["$null"],
    "no-objects": archive("x", objects=None),
    "objects-empty": archive(objects=[]),
    "objects-a-dictionary": archive(objects={"0": "$null", "1": "x"}),
    "no-top": archive("x", top=None),
    "top-an-array": archive("x", top=[UID(1)]),
    "top-empty": archive("x", top={}),
    "top-of-two-without-root": archive("x", top={"one": UID(1), "two": UID(1)}),
    "root-out-of-range": archive("x", top={"root": UID(2)}),
    "other-version": archive("x", version=100001),
    "version-a-string": archive("x", version="100000"),
    "archiver-a-number": archive("x", archiver=7),
    # References
    "uid-out-of-range": array(UID(99)),
    "uid-of-eight-bytes": array(UID(2**64 - 1)),
    "reference-to-a-reference": archive(UID(2), "x"),
    "array-in-itself": array(UID(1)),
    "cycle-in-objects": archive(
        {"NS.keys": [UID(4)], "NS.objects": [UID(2)], "$class": UID(5)},
        {"NS.objects": [UID(3)], "$class": UID(6)},
        {"NS.keys": [UID(4)], "NS.objects": [UID(1)], "$class": UID(5)},
        "children",
        DICTIONARY,
        ARRAY,
    ),
    "exponential-sharing": exponential(64),
    # Classes
    "unknown-class": wrapped("NSAttributedString", NSString=UID(0)),
    "unknown-class-deep": dictionary([UID(3)], [UID(4)], "key", {"$class": UID(5)}, described("XYZPreset")),
    "no-class": archive({"NS.objects": []}),
    "class-null": archive({"NS.objects": [], "$class": UID(0)}),
    "class-out-of-range": archive({"NS.objects": [], "$class": UID(9)}),
    "class-a-string": archive({"NS.objects": [], "$class": UID(2)}, "NSArray"),
    "class-without-names": archive({"NS.objects": [], "$class": UID(2)}, {"$hints": []}),
    "superclasses-a-string": archive(
        {"NS.objects": [], "$class": UID(2)}, {"$classname": "NSArray", "$classes": "NSArray"}
    ),
    "class-as-a-value": archive(ARRAY),
    # Containers
    "elements-a-string": archive({"NS.objects": "abc", "$class": UID(2)}, ARRAY),
    "keys-a-string": dictionary("abc", []),
    "more-keys-than-values": dictionary([UID(3), UID(4)], [UID(3)], "a", "b"),
    "more-values-than-keys": dictionary([UID(3)], [UID(3), UID(4)], "a", "b"),
    "keys-without-values": archive({"NS.keys": [], "$class": UID(2)}, DICTIONARY),
    "key-a-number": dictionary([UID(3)], [UID(3)], 7),
    "key-null": dictionary([UID(0)], [UID(3)], "x"),
    "key-an-array": dictionary([UID(3)], [UID(3)], {"NS.objects": [], "$class": UID(4)}, ARRAY),
    "counted-set": archive(
        {"NS.count": 1, "NS.object0": UID(3), "NS.count0": 2, "$class": UID(2)},
        described("NSCountedSet", "NSMutableSet", "NSSet"),
        "x",
    ),
    "numbered-elements-with-a-gap": archive(
        {"NS.object.0": UID(3), "NS.object.2": UID(3), "$class": UID(2)}, ARRAY, "x"
    ),
    "numbered-elements-not-numbers": archive(
        {"NS.object.x": UID(3), "$class": UID(2)}, ARRAY, "x"
    ),
    "numbered-elements-twice": archive(
        {"NS.object.0": UID(3), "NS.object.00": UID(3), "$class": UID(2)}, ARRAY, "x"
    ),
    "numbered-keys-without-values": archive(
        {"NS.key.0": UID(3), "$class": UID(2)}, DICTIONARY, "x"
    ),
    # Scalars
    "string-without-content": wrapped("NSString"),
    "string-of-a-number": wrapped("NSString", NS_string=7),
    "string-bytes-not-utf8": wrapped("NSString", NS_bytes=b"ab\xc3"),
    "data-without-content": wrapped("NSMutableData"),
    "data-of-a-string": wrapped("NSData", NS_data="abc"),
    "date-without-time": wrapped("NSDate"),
    "date-of-a-string": wrapped("NSDate", NS_time="now"),
    "number-without-content": wrapped("NSNumber"),
    "number-of-a-string": wrapped("NSNumber", NS_intval="7"),
}


def main():
    FOLDER.mkdir(exist_ok=True)
    for name, content in CASES.items():
        data = plistlib.dumps(content, fmt=plistlib.FMT_BINARY, sort_keys=False)
        (FOLDER / f"{name}.archive").write_bytes(data)
    whole = plistlib.dumps(array("x"), fmt=plistlib.FMT_BINARY, sort_keys=False)
    (FOLDER / "empty.archive").write_bytes(b"")
    (FOLDER / "truncated-trailer.archive").write_bytes(whole[:-20])
    (FOLDER / "no-property-list.archive").write_bytes(b"PK\x03\x04 something else")


if __name__ == "__main__":
    main()
