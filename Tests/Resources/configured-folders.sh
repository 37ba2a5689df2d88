#!/usr/bin/env bash
# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT
#
# usage: configured-folders.sh CMAKE SOURCES
# Configures SOURCES with other folders than usual, and follows the ways from one installed place to another. For the
# module of System Settings KDE's libraries need not be there: nothing is built.
set -euo pipefail

cmake=$1
sources=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

kde=$work/kde
mkdir "$kde"
echo 'set(PACKAGE_VERSION_COMPATIBLE TRUE)' >"$kde/KF6KCMUtilsConfigVersion.cmake"
cat >"$kde/KF6KCMUtilsConfig.cmake" <<'END'
add_library(KF6::KCMUtils INTERFACE IMPORTED)
function(kcmutils_generate_desktop_file)
endfunction()
END

expect() {
    [[ "$(realpath -m -s "$1")" == "$2" ]] || {
        echo "$3: $1 is not $2" >&2
        exit 1
    }
}

# The way that the code knows by the name $1, from the folder $2.
follow() {
    local way
    way=$(grep -m 1 -o "$1=[^ ]*" "$work/tree/compile_commands.json" | tr -d '\\"')
    echo "$2/${way#*=}"
}

check() {
    local programs=$1 panes=$2/PreferencePanes/Quenby.prefPane data=$3 plugins=$4 tree=$work/tree staged=$work/staged
    shift 4
    rm -rf "$tree" "$staged"
    "$cmake" -S "$sources" -B "$tree" -DCMAKE_INSTALL_PREFIX=/prefix -DKF6KCMUtils_DIR="$kde" "$@" \
        -DQUENBY_BUILD_TESTS=OFF -DQUENBY_BUILD_BENCHMARKS=OFF >"$work/said" 2>&1 || {
        cat "$work/said" >&2
        exit 1
    }
    expect "$programs/$(readlink "$tree/Helper/link/QNBHelper")" \
        "$panes/Contents/MacOS/QNBHelper.app/Contents/MacOS/QNBHelper" "The helper's link"
    expect "$(follow QUENBY_PROGRAMS_FROM_PANE "$panes")" "$programs" "The helper's way to the program that shows panes"
    expect "$(follow QUENBY_PANES_FROM_PROGRAMS "$programs")" "${panes%/*}" "The way of that program to the panes"
    expect "$(follow QUENBY_PANES_FROM_DATA "$data")" "${panes%/*}" "The way from the data to the panes"
    local module
    module=$(sed -n 's,.* DESTINATION "\([^"]*/plasma/kcms/[^"]*\)".*,\1,p' "$tree/SystemSettings/cmake_install.cmake" |
        head -n 1)
    # Below ${CMAKE_INSTALL_PREFIX}.
    [[ "$module" == /* ]] || module=/prefix${module#*\}}
    expect "$module" "$plugins/plasma/kcms/systemsettings_qwidgets" "The module of System Settings"
    expect "$(follow QUENBY_PANES_FROM_MODULE "$module")" "${panes%/*}" "The way of that module to the panes"
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

check /prefix/bin /prefix/lib /prefix/share /prefix/lib/qt6/plugins -DCMAKE_INSTALL_LIBDIR=lib \
    -DQUENBY_QT_PLUGINS_DIR=./lib/qt6/plugins
check /prefix/bin /prefix/lib/x86_64-linux-gnu /prefix/share /prefix/lib/qt6/plugins \
    -DCMAKE_INSTALL_LIBDIR=lib/x86_64-linux-gnu -DQUENBY_QT_PLUGINS_DIR=lib/qt6/plugins
check /else/programs /other/libraries /third/data /prefix/lib/qt6/plugins -DCMAKE_INSTALL_BINDIR=/else/programs \
    -DCMAKE_INSTALL_LIBDIR=/other/libraries -DCMAKE_INSTALL_DATADIR=/third/data -DQUENBY_QT_PLUGINS_DIR=lib/qt6/plugins
check /prefix/bin /prefix/lib /prefix/share /fourth/plugins -DCMAKE_INSTALL_LIBDIR=lib \
    -DQUENBY_QT_PLUGINS_DIR=/fourth/plugins
