#!/bin/sh
# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT
#
# usage: shell-scripts-are-clean.sh SHELLCHECK TOP
# Has every shell script below TOP checked, those for the user included.
set -eu

cd "$2"
find .ci scripts Tests Resources packaging/debian/tests -type f ! -name control \
    \( -path '.ci/*' -o -path 'scripts/*' -o -path 'packaging/*' -o -name '*.sh' \) -exec "$1" -x {} +
