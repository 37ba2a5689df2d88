#!/bin/sh
# Fills in the blanks of freshly made documents: [[PROJECT NAME]], [[TODAY]] and [[YOUR NAME]].
#
#   Fill In Templates.sh FOLDER PRESET
#
# The project's name is the name of FOLDER. Only text documents that changed in the last ten minutes and hold a
# blank are touched, so that what already lay in FOLDER stays as it is; links are not followed, hidden folders
# not entered.
set -eu

folder=${1:?"usage: $0 FOLDER [PRESET]"}
[ -d "$folder" ] || { echo "$0: no such folder: $folder" >&2; exit 1; }

fill_in() {
    root=$(cd -- "$1" && pwd -P)
    name=$(basename -- "$root")
    today=$(date +%Y-%m-%d)
    author=$(getent passwd "$(id -u)" 2>/dev/null | cut -d: -f5 | cut -d, -f1) || author=
    [ -n "$author" ] || author=$(id -un)

    # A name may hold what sed takes for its own in a replacement.
    quote() { printf '%s\n' "$1" | sed -e 's/[\\&|]/\\&/g' -e '$!s/$/\\/'; }
    QUENBY_BLANKS="s|\[\[PROJECT NAME]]|$(quote "$name")|g
s|\[\[TODAY]]|$today|g
s|\[\[YOUR NAME]]|$(quote "$author")|g"
    export QUENBY_BLANKS

    find "$root" -xdev -mindepth 1 -type d -name '.*' -prune -o -type f -mmin -10 -size -1024k \
        \( -name '*.md' -o -name '*.txt' -o -name '*.csv' -o -name '*.html' -o -name '*.tex' -o -name '*.fountain' \) \
        -exec sh -c '
            for document do
                grep -q -e "\[\[PROJECT NAME]]" -e "\[\[TODAY]]" -e "\[\[YOUR NAME]]" -- "$document" || continue
                copy=$(mktemp "$document.XXXXXX") || continue
                # cat instead of mv: the document keeps its permissions, owner and colour.
                if sed -e "$QUENBY_BLANKS" -- "$document" >"$copy" && [ -w "$document" ]; then
                    cat -- "$copy" >"$document"
                fi
                rm -f -- "$copy"
            done
        ' sh {} +
}

fill_in "$folder"
