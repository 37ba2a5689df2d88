#!/usr/bin/env bash
# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT
#
# usage: configured-folders.sh CMAKE SOURCES
# Configures SOURCES with other folders than usual, and follows the ways from one installed place to another.
set -euo pipefail

cmake=$1
sources=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

expect() {
    [[ "$(realpath -m -s "$1")" == "$2" ]] || {
        echo "$3: $1 is not $2" >&2
        exit 1
    }
}

check() {
    local programs=$1 panes=$2/PreferencePanes/Quenby.prefPane data=$3 tree=$work/tree staged=$work/staged
    shift 3
    rm -rf "$tree" "$staged"
    "$cmake" -S "$sources" -B "$tree" -DCMAKE_INSTALL_PREFIX=/prefix "$@" -DQUENBY_BUILD_TESTS=OFF \
        -DQUENBY_BUILD_BENCHMARKS=OFF >"$work/said" 2>&1 || {
        cat "$work/said" >&2
        exit 1
    }
    expect "$programs/$(readlink "$tree/Helper/link/QNBHelper")" \
        "$panes/Contents/MacOS/QNBHelper.app/Contents/MacOS/QNBHelper" "The helper's link"
    local way
    way=$(grep -m 1 -o 'QUENBY_PROGRAMS_FROM_PANE=[^ ]*' "$tree/compile_commands.json" | tr -d '\\"')
    expect "$panes/${way#*=}" "$programs" "The helper's way to the program that shows panes"
    # The one of these files that is built.
    local presets=Quenby.prefPane/Contents/Resources/DefaultPresets.plist
    mkdir -p "$(dirname "$tree/$presets")"
    : >"$tree/$presets"
    DESTDIR=$staged "$cmake" -P "$tree/Resources/cmake_install.cmake" >"$work/said"
    grep -qxF "Exec='$programs/QNBHelper'" "$staged$data/dbus-1/services/org.quenby.QNBHelper.service" || {
        echo "The service of the bus does not start $programs/QNBHelper" >&2
        exit 1
    }
    [[ -e "$staged${panes%/*}/$presets" ]] || {
        echo "Nothing is in $panes" >&2
        exit 1
    }
}

check /prefix/bin /prefix/lib /prefix/share -DCMAKE_INSTALL_LIBDIR=lib
check /prefix/bin /prefix/lib/x86_64-linux-gnu /prefix/share -DCMAKE_INSTALL_LIBDIR=lib/x86_64-linux-gnu
check /else/programs /other/libraries /third/data -DCMAKE_INSTALL_BINDIR=/else/programs \
    -DCMAKE_INSTALL_LIBDIR=/other/libraries -DCMAKE_INSTALL_DATADIR=/third/data
