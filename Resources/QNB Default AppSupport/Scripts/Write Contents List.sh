#!/bin/sh
# Writes "Contents.txt": what is in the new folder, for the person who opens the disk in ten years. A file of
# that name that is there already stays as it is.
#
#   Write Contents List.sh FOLDER PRESET
set -eu

folder=${1:?"usage: $0 FOLDER [PRESET]"}
preset=${2:-}
[ -d "$folder" ] || { echo "$0: no such folder: $folder" >&2; exit 1; }
cd -- "$folder"

# As "Fill In Templates.sh" does it: a script runs alone, without those beside it.
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

fill_in .

list="Contents.txt"
if [ -e "$list" ] || [ -L "$list" ]; then
    echo "$0: $list is there already" >&2
    exit 0
fi
# set -C: should another program make the file meanwhile, it wins.
set -C
{
    printf '%s\n' "$(basename -- "$(pwd -P)")"
    [ -z "$preset" ] || printf 'Preset: %s\n' "$preset"
    printf 'Date: %s\n\n' "$(date +%Y-%m-%d)"
    # Sorted with the slash before every other character, so that a folder is followed by what is in it.
    find . -xdev -mindepth 1 -name .git -prune -o ! -path "./$list" -print | tr / '\001' | LC_ALL=C sort | tr '\001' / |
        sed -e 's|^\./||' -e 's|[^/]*/|    |g'
} >"$list"
