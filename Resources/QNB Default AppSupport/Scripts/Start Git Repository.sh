#!/bin/sh
# Makes the new folder a Git repository, after the blanks of its documents have been filled in. Nothing is
# committed: what belongs into the first commit is yours to say.
#
#   Start Git Repository.sh FOLDER PRESET
set -eu

folder=${1:?"usage: $0 FOLDER [PRESET]"}
preset=${2:-}
[ -d "$folder" ] || { echo "$0: no such folder: $folder" >&2; exit 1; }
folder=$(cd -- "$folder" && pwd -P)

# A repository around everything one owns helps nobody.
home=$(cd -- "${HOME:-/}" && pwd -P)
if [ "$folder" = / ] || [ "$folder" = "$home" ]; then
    echo "$0: $folder is no place for a repository" >&2
    exit 1
fi
command -v git >/dev/null || { echo "$0: git is not installed" >&2; exit 1; }
fill=$(dirname -- "$0")/"Fill In Templates.sh"
if [ -x "$fill" ]; then
    "$fill" "$folder" "$preset"
fi

if git -C "$folder" rev-parse --git-dir >/dev/null 2>&1; then
    echo "$folder is in a repository already."
    exit 0
fi
git -C "$folder" init --quiet
echo "Made a repository in $folder."
