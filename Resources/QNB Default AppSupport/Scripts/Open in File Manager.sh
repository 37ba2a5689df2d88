#!/bin/sh
# Shows the new folder in the desktop's file manager.
#
#   Open in File Manager.sh FOLDER PRESET
set -eu

folder=${1:?"usage: $0 FOLDER [PRESET]"}
[ -d "$folder" ] || { echo "$0: no such folder: $folder" >&2; exit 1; }
folder=$(cd -- "$folder" && pwd -P)
command -v xdg-open >/dev/null || { echo "$0: xdg-open is not installed" >&2; exit 1; }
# Without us: a file manager stays open for longer than a script may run, and whatever it has to say is not for
# the program that runs scripts.
exec setsid --fork xdg-open "$folder" </dev/null >/dev/null 2>&1
