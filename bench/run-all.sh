#!/bin/sh
# run-all.sh: runs every benchmark program present in a build folder (it builds
# nothing): the map object lists (bench_lst2), file copy (bench_copy), Repform files
# (bench_repform), messaging (bench_messaging), receiving large events (bench_receive)
# and a short soak (bench_soak with 20 000 messages; run build/bench_soak alone for the
# full 1 000 000). Each prints its own
# baseline and ratio. A program missing from the folder is skipped with a note.
# Usage: bench/run-all.sh [BUILD-FOLDER]   (default: build/ beside bench/)
#        TPX1_BENCH_BYTES=N sets the file size of the copy and Repform benchmarks.
set -u
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "${1:-$here/../build}" 2>/dev/null && pwd) || { echo "no build folder ${1:-$here/../build}"; exit 2; }
status=0
ran=0
run() {
    program=$1
    shift
    if [ ! -x "$build/$program" ]; then
        echo "==== $program: not built, skipped"
        return
    fi
    echo
    echo "==== $program $*"
    ran=$((ran + 1))
    "$build/$program" "$@" || { echo "==== $program FAILED"; status=1; }
}
run bench_lst2
run bench_copy
run bench_repform
run bench_messaging
run bench_receive
run bench_soak 20000
echo
[ "$ran" -gt 0 ] || { echo "no benchmark programs in $build"; exit 2; }
[ $status -eq 0 ] && echo "$ran benchmarks ran." || echo "Some benchmarks failed."
exit $status
