#!/usr/bin/env python3
# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT
"""Says how the presets of a domain differ from what a day of work makes of those that come along; nothing if
in nothing.

day.py DEFAULTS FILE
"""

import plistlib
import sys

from domain import differences, folder, item


def wedding():
    planning = folder(
        "Planning",
        item("Guests.csv"),
        item("Budget.csv", color="red"),
        item("Schedule.md", permissions="744"),
    )
    photos = folder(
        "Photos",
        folder("Raw", item("notes.txt", permissions="760"), permissions="760"),
        item("Shot List.csv", permissions="760", contentFilename="Photo/Shot List.csv"),
        color="blue",
        permissions="760",
    )
    return {
        "label": "Wedding",
        "presetDescription": "From planning to photos.",
        "scriptFile": "Start Git Repository.sh",
        "fileHierarchy": item("", children=[planning, photos]),
    }


def main(defaults_path, path):
    with open(defaults_path, "rb") as defaults_file, open(path, "rb") as file:
        defaults = plistlib.load(defaults_file)
        domain = plistlib.load(file)
    expected = [defaults[0], wedding()] + defaults[1:]
    found = list(differences(expected, domain["QNBPresets"]))
    print("\n".join(found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
