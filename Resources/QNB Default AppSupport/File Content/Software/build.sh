#!/bin/sh
# Builds the project from any directory it is called in.
set -eu
cd "$(dirname "$0")/.."

if [ -f CMakeLists.txt ]; then
    cmake -S . -B build
    cmake --build build
elif [ -f Makefile ]; then
    make
else
    echo "Nothing to build yet: add a CMakeLists.txt or a Makefile." >&2
    exit 1
fi
