#!/bin/sh
# Makes the new folder a Git repository, after the blanks of its documents have been filled in. Nothing is
# committed: what belongs into the first commit is yours to say.
#
#   Start Git Repository.sh FOLDER PRESET
set -eu

folder=${1:?"usage: $0 FOLDER [PRESET]"}
[ -d "$folder" ] || { echo "$0: no such folder: $folder" >&2; exit 1; }
folder=$(cd -- "$folder" && pwd -P)

# A repository around everything one owns helps nobody.
home=$(cd -- "${HOME:-/}" && pwd -P)
if [ "$folder" = / ] || [ "$folder" = "$home" ]; then
    echo "$0: $folder is no place for a repository" >&2
    exit 1
fi
command -v git >/dev/null || { echo "$0: git is not installed" >&2; exit 1; }

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

fill_in "$folder"

if git -C "$folder" rev-parse --git-dir >/dev/null 2>&1; then
    echo "$folder is in a repository already."
    exit 0
fi
git -C "$folder" init --quiet
echo "Made a repository in $folder."
