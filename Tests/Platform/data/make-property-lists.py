#!/usr/bin/env python3
# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT
#
# usage: make-property-lists.py SEEDS-BINARY SEEDS-XML BROKEN
# Writes small property lists of every type, as another program writes them, into the first two folders, and
# into the third broken ones, each named by its defect.
import datetime
import pathlib
import plistlib
import struct
import sys

binary_seeds, xml_seeds, broken = map(pathlib.Path, sys.argv[1:4])

EVERYTHING = {
    "text": "plain", "empty": "", "unicode": "gr\u00fc\u00df \U0001F4C1", "long": "x" * 300,
    "yes": True, "no": False, "numbers": [0, 1, 255, 256, 65536, 2**32, 2**63 - 1, -1, -2**63],
    "big": 2**64 - 1, "real": 1.5, "date": datetime.datetime(2024, 2, 29, 12, 30, 15),
    "data": bytes(range(32)), "array": [], "dictionary": {}, "nested": [[{"a": [1]}]],
}


def binary(objects, top=0, offset_size=1, reference_size=1, count=None, table=None):
    """A binary property list of encoded objects, with what the trailer says open to lies."""
    body = b"bplist00"
    offsets = []
    for encoded in objects:
        offsets.append(len(body))
        body += encoded
    table = len(body) if table is None else table
    body += b"".join(offset.to_bytes(offset_size, "big") for offset in offsets)
    count = len(objects) if count is None else count
    return body + struct.pack(">5xBBBQQQ", 0, offset_size, reference_size, count, top, table)


def xml(body, encoding="UTF-8"):
    return f'<?xml version="1.0" encoding="{encoding}"?>\n<plist version="1.0">{body}</plist>\n'.encode(encoding)


TEXT = b"\x51a"
SEEDS_BINARY = {
    "everything": plistlib.dumps(EVERYTHING, fmt=plistlib.FMT_BINARY),
    "uid": plistlib.dumps([plistlib.UID(1), plistlib.UID(70000)], fmt=plistlib.FMT_BINARY),
    "wide-references": binary([b"\xd1" + b"\0\0\1" + b"\0\0\2", TEXT, b"\x09"], offset_size=5, reference_size=3),
    "float-and-null": binary([b"\xa4\1\2\3\4", b"\x22\x3f\xc0\0\0", b"\0", b"\x33\x7f\xf0" + bytes(6),
                              b"\x14" + b"\xff" * 16]),
    "lone-surrogate": binary([b"\x61\xd8\x00"]),
    "repeated-key": binary([b"\xd2\1\1\2\3", TEXT, b"\x08", b"\x09"]),
    "shared-container": binary([b"\xa2\1\1", b"\xa2\2\2", b"\xa1\3", TEXT]),
}
SEEDS_XML = {
    "everything": plistlib.dumps(EVERYTHING, fmt=plistlib.FMT_XML),
    "utf-16": xml("<string>gr\u00fc\u00df</string>", "UTF-16"),
    "byte-order-mark": b"\xef\xbb\xbf" + xml("<true/>"),
    "no-plist-element": b"<array><integer>0x10</integer><real>nan</real></array>",
    "character-data": xml("<dict><key/><string><![CDATA[<&>]]>&amp;&#13;<!-- c --></string></dict>"),
    "uid-as-dictionary": xml("<dict><key>CF$UID</key><integer>3</integer></dict>"),
}
# An array and three strings of 40 characters, each of which begins three bytes into the one before.
OVERLAPPING = b"bplist00" + b"\xa3\1\2\3" + b"\x5f\x10\x28" * 3 + b"o" * 40
BROKEN = {
    "empty.plist": b"",
    "blank.plist": b" \n",
    "truncated-trailer.plist": binary([TEXT])[:-1],
    "header-only.plist": b"bplist00",
    "no-objects.plist": binary([], count=0),
    "top-object-outside.plist": binary([TEXT], top=1),
    "more-objects-than-bytes.plist": binary([TEXT], count=2**63),
    "offset-table-outside.plist": binary([TEXT], table=2**64 - 8),
    "offset-size-zero.plist": binary([TEXT], offset_size=1)[:-26] + b"\0" + binary([TEXT])[-25:],
    "reference-size-nine.plist": binary([b"\xa0"], reference_size=9),
    "object-outside.plist": binary([TEXT])[:10] + b"\xff" + binary([TEXT])[11:],
    "reference-outside.plist": binary([b"\xa1\5"]),
    "cycle-in-objects.plist": binary([b"\xa1\1", b"\xa1\0"]),
    "cycle-through-dictionary.plist": binary([b"\xd1\1\0", TEXT]),
    "key-not-a-string.plist": binary([b"\xd1\1\1", b"\x10\1"]),
    "key-a-container.plist": binary([b"\xd1\1\1", b"\xa0"]),
    "count-beyond-file.plist": binary([b"\xaf\x13\x7f" + b"\xff" * 7]),
    "count-overflows.plist": binary([b"\x6f\x13\x80" + bytes(7)]),
    "count-not-an-integer.plist": binary([b"\x5f\x51a"]),
    "count-of-16-bytes.plist": binary([b"\x5f\x14" + bytes(15) + b"\1a"]),
    "integer-of-32-bytes.plist": binary([b"\x15" + bytes(32)]),
    "integer-over-64-bits.plist": binary([b"\x14" + bytes(7) + b"\1" + bytes(8)]),
    "real-of-1-byte.plist": binary([b"\x20\0"]),
    "date-of-4-bytes.plist": binary([b"\x32" + bytes(4)]),
    "uid-of-9-bytes.plist": binary([b"\x88" + bytes(9)]),
    "set.plist": binary([b"\xc1\1", TEXT]),
    "unknown-marker.plist": binary([b"\x0c"]),
    "ascii-string-with-high-byte.plist": binary([b"\x51\xe9"]),
    "overlapping-strings.plist": OVERLAPPING + b"\x08\x0c\x0f\x12"
    + struct.pack(">5xBBBQQQ", 0, 1, 1, 4, 0, len(OVERLAPPING)),
    "shared-arrays-without-end.plist": binary([bytes([0xa2, i + 1, i + 1]) for i in range(60)] + [b"\xa0"]),
    "shared-dictionaries-without-end.plist": binary(
        [bytes([0xd2, 40, 41, i + 1, i + 1]) for i in range(39)] + [b"\xa0", TEXT, b"\x51b"]),
    "entity-declared.plist": b'<!DOCTYPE plist [<!ENTITY a "aaaa">]><plist><string>&a;</string></plist>',
    "entity-unknown.plist": xml("<string>&nbsp;</string>"),
    "invalid-utf-8.plist": xml("<string>@@</string>").replace(b"@@", b"\xc3\x28"),
    "overlong-utf-8.plist": xml("<string>@@</string>").replace(b"@@", b"\xc0\xaf"),
    "surrogate-reference.plist": xml("<string>&#xD800;</string>"),
    "surrogate-in-utf-8.plist": xml("<string>@@</string>").replace(b"@@", b"\xed\xa0\x80"),
    "nul-reference.plist": xml("<string>&#0;</string>"),
    "control-character.plist": xml("<string>\1</string>"),
    "text-between-elements.plist": xml("<array>text</array>"),
    "key-without-value.plist": xml("<dict><key>a</key></dict>"),
    "value-without-key.plist": xml("<dict><true/></dict>"),
    "two-keys.plist": xml("<dict><key>a</key><key>b</key><true/></dict>"),
    "key-in-array.plist": xml("<array><key>a</key></array>"),
    "two-roots.plist": xml("<true/><false/>"),
    "no-root.plist": xml(""),
    "plist-in-plist.plist": xml("<plist><true/></plist>"),
    "unknown-element.plist": xml("<set/>"),
    "element-in-string.plist": xml("<string>a<b/></string>"),
    "unclosed.plist": b"<plist><array>",
    "mismatched-end.plist": xml("<array></dict>"),
    "integer-empty.plist": xml("<integer/>"),
    "integer-with-letters.plist": xml("<integer>12x</integer>"),
    "integer-over-64-bits-xml.plist": xml("<integer>18446744073709551616</integer>"),
    "integer-under-64-bits.plist": xml("<integer>-9223372036854775809</integer>"),
    "integer-two-signs.plist": xml("<integer>--1</integer>"),
    "real-no-number.plist": xml("<real>one</real>"),
    "date-no-date.plist": xml("<date>yesterday</date>"),
    "date-february-30.plist": xml("<date>2024-02-30T00:00:00Z</date>"),
    "date-hour-25.plist": xml("<date>2024-02-20T25:00:00Z</date>"),
    "data-not-base64.plist": xml("<data>!!!!</data>"),
    "true-with-text.plist": xml("<true>no</true>"),
    "html.plist": b"<!DOCTYPE html><html><body>Not found</body></html>",
    "old-style.plist": b'{ key = "value"; }',
}

for folder, files in ((binary_seeds, SEEDS_BINARY), (xml_seeds, SEEDS_XML), (broken, BROKEN)):
    folder.mkdir(parents=True, exist_ok=True)
    for name, content in files.items():
        (folder / name).write_bytes(content)
