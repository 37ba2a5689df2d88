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

fill=$(dirname -- "$0")/"Fill In Templates.sh"
case $fill in
/*) ;;
*) fill=$OLDPWD/$fill ;;
esac
if [ -x "$fill" ]; then
    "$fill" . "$preset"
fi

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
