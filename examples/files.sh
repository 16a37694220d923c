#!/bin/sh
# files.sh: runs files.fmh in a fresh temporary folder that holds a stand-in host
# application with "BaseDirectoryList.txt" beside it, two data sites listed there, a
# Repform report file and a text file; removes the folder afterwards.
# Usage: examples/files.sh [BUILD-FOLDER]   (default: build/ beside examples/)
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-$here/../build}
volume=${TPX1_ROOT_VOLUME:-Linux}
work=$(mktemp -d /tmp/tpx1-files-example.XXXXXX)
trap 'rm -rf "$work"' EXIT INT TERM

classic() { printf '%s%s' "$volume" "$(printf '%s' "$1" | tr '/' ':')"; }

mkdir -p "$work/App" "$work/Site1" "$work/Site2/Out"
: > "$work/App/FileMaker"
# One folder per line, CR line ends; a trailing ':' is allowed.
printf '%s\r%s:\r' "$(classic "$work/Site1")" "$(classic "$work/Site2")" > "$work/App/BaseDirectoryList.txt"
: > "$work/Site2/site.ref"
: > "$work/Site1/both.ref"
: > "$work/Site2/both.ref"
printf 'Hello from the example data.\r' > "$work/Site2/notes.txt"
printf 'RPF header CKTR2004 body fdtR2007 PHTR2000 end of file\r' > "$work/Site2/report.rpf"

TPX1_APP_PATH="$work/App/FileMaker" "$build/fmhost" "$here/files.fmh"
