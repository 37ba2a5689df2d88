#!/bin/sh
# SPDX-FileCopyrightText: Quenby contributors
# SPDX-License-Identifier: MIT
#
# usage: users-helper-is-left-alone.sh TEST-PROGRAM
# Runs a test that starts and ends helpers while a process of the user has the helper's name, and expects that the
# test passes, or refuses to run where the system gives it no process namespace, and that the process lives on.
set -eu

folder=$(mktemp -d)
cp "$(command -v sleep)" "$folder/QNBHelper"
"$folder/QNBHelper" 300 &
helper=$!
trap 'kill "$helper"; rm -rf "$folder"' EXIT
QUENBY_TESTS_OWN_PROCESSES=1 "$1" --gtest_filter=HelperControlTest.StopEndsBothOfTwoHelpers \
    2>"$folder/messages" || {
    cat "$folder/messages" >&2
    grep -q 'no process namespace' "$folder/messages"
}
kill -0 "$helper"
