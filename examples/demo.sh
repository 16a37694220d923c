#!/bin/sh
# demo.sh: the README's demo. Runs every example with fmhost against the plug-in:
# a first look, globals with an attached script, files and report files, map object
# lists with a stand-in TOPOLUX, and a message round trip with a partner the plug-in
# launches itself.
# Usage: examples/demo.sh [BUILD-FOLDER]   (default: build/ beside examples/)
set -u
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-$here/../build}
status=0
run() {
    echo
    echo "==== $1"
    shift
    "$@" || { echo "==== FAILED: $*"; status=1; }
}
run "A first look (demo.fmh)" "$build/fmhost" "$here/demo.fmh"
run "Globals and an attached script (globals.fmh)" "$build/fmhost" "$here/globals.fmh"
run "Paths, files and report files (files.sh)" "$here/files.sh" "$build"
run "Map object lists with a stand-in TOPOLUX (lst2.sh)" "$here/lst2.sh" "$build"
[ -x "$here/roundtrip.sh" ] && run "A message round trip (roundtrip.sh)" "$here/roundtrip.sh" "$build"
echo
[ $status -eq 0 ] && echo "All examples ran as expected." || echo "Some examples failed."
exit $status
