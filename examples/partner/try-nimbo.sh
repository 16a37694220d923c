#!/bin/sh
# try-nimbo.sh: FileMaker (fmhost) and a NIMBO stand-in talk. Puts PROGRAM into a
# temporary Applications folder as "NIMBO Folder/NIMBO" and runs nimbo.fmh with fmhost
# on a private session bus of its own, which fmhost hands to NIMBO when it launches it.
# Usage: try-nimbo.sh PROGRAM     PROGRAM: ./nimbo, nimbo.py or nimbo.sh
#        FMHOST=/path/to/fmhost   (default: fmhost on the PATH)
set -eu
[ $# -eq 1 ] || { echo "usage: try-nimbo.sh PROGRAM" >&2; exit 2; }
here=$(cd "$(dirname "$0")" && pwd)
apps=$(mktemp -d /tmp/tpx1-nimbo.XXXXXX)
trap 'rm -rf "$apps"' EXIT INT TERM
mkdir "$apps/NIMBO Folder"
cp "$1" "$apps/NIMBO Folder/NIMBO"
env -u DBUS_SESSION_BUS_ADDRESS TPX1_APPLICATIONS_FOLDER="$apps" "${FMHOST:-fmhost}" "$here/nimbo.fmh"
