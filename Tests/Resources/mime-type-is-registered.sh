#!/bin/sh
# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT
#
# usage: mime-type-is-registered.sh UPDATE-MIME-DATABASE DEFINITION
# Makes a MIME database of the definition alone and looks the extension up in it.
set -eu

database=$(mktemp -d)
trap 'rm -rf "$database"' EXIT
mkdir "$database/packages"
cp "$2" "$database/packages/"
XDG_DATA_DIRS=$database "$1" "$database"
grep -qx '50:application/x-quenby-preset:\*\.qnbp' "$database/globs2"
