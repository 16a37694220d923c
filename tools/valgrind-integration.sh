#!/bin/sh
# valgrind-integration.sh: runs the integration tests with every fmhost under
#   valgrind --leak-check=full --error-exitcode=1
# the fmhost script tests (tests/host/scripts/*.fmh, through run_fmhost_scripts.sh),
# examples/demo.fmh, examples/globals.fmh and the message round trip
# (examples/roundtrip.sh, with a vesk partner the plug-in launches), and, when built, the
# faults between processes (test_ipc_faults, which hosts the plug-in). A run passes when
# fmhost exits as the test expects and valgrind's log says "ERROR SUMMARY: 0 errors"
# (memory errors and definite or possible leaks are errors). Prints one line per run and
# exits 0 when all passed. Use a RelWithDebInfo build for readable reports.
# Usage: tools/valgrind-integration.sh [BUILD-FOLDER]   (default: build/)
set -u
here=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-$here/build}" && pwd) || exit 2
command -v valgrind >/dev/null 2>&1 || { echo "valgrind is not installed (apt-get install valgrind)"; exit 2; }
for f in fmhost vesk tpx1.fmx; do
    [ -e "$build/$f" ] || { echo "no $build/$f: build fmhost, vesk and tpx1fmx first"; exit 2; }
done
work=$(mktemp -d /tmp/tpx1-valgrind.XXXXXX) || exit 2
trap 'rm -rf "$work"' EXIT INT TERM

# A build folder whose fmhost is the real one under valgrind, one log per process.
mkdir -p "$work/bin" "$work/logs"
cat > "$work/bin/fmhost" <<EOS
#!/bin/sh
exec valgrind --leak-check=full --error-exitcode=1 --child-silent-after-fork=yes --log-file="$work/logs/vg.%p.log" \\
    "$build/fmhost" --plugin "$build/tpx1.fmx" "\$@"
EOS
chmod +x "$work/bin/fmhost"
ln -s "$build/vesk" "$work/bin/vesk"
ln -s "$build/tpx1.fmx" "$work/bin/tpx1.fmx"
ln -s "$build/tpx1.fmx.rsrc" "$work/bin/tpx1.fmx.rsrc"

status=0
step() {
    name=$1
    shift
    if "$@" > "$work/out" 2>&1; then
        echo "ok   $name"
    else
        echo "FAIL $name"
        sed 's/^/    /' "$work/out"
        status=1
    fi
}
# Script files in a folder of their own, with dialogs logged there, as the test does.
run_fmh() {
    mkdir -p "$work/run"
    (cd "$work/run" && HOME="$work/run" TPX1_DIALOG_LOG="$work/run/dialogs.jsonl" "$work/bin/fmhost" "$1")
}
step "fmhost script tests (tests/host/scripts)" sh "$here/tests/host/run_fmhost_scripts.sh" "$work/bin/fmhost" \
    "$here/tests/host/scripts"
step "examples/demo.fmh" run_fmh "$here/examples/demo.fmh"
step "examples/globals.fmh" run_fmh "$here/examples/globals.fmh"
step "examples/roundtrip.sh" sh "$here/examples/roundtrip.sh" "$work/bin"
# The faults between processes, when built: the test process itself hosts the plug-in.
if [ -x "$build/test_ipc_faults" ]; then
    step "tests/ipc_faults (test_ipc_faults)" valgrind --leak-check=full --error-exitcode=1 \
        --child-silent-after-fork=yes --log-file="$work/logs/vg.%p.log" "$build/test_ipc_faults"
fi

# Every valgrind log: the command it ran and its verdict.
runs=0
for log in "$work"/logs/vg.*.log; do
    # (a process fmhost starts, such as dbus-daemon or a partner, leaves an empty log)
    [ -s "$log" ] || continue
    runs=$((runs + 1))
    what=$(sed -n 's/^==[0-9]*== Command: //p' "$log" | sed "s|$build/||; s|$here/||g")
    summary=$(sed -n 's/^==[0-9]*== ERROR SUMMARY: //p' "$log")
    leaks=$(sed -n 's/^==[0-9]*==  *\(definitely lost: .*\)/\1/p' "$log")
    case "$summary" in
    "0 errors"*) echo "ok   valgrind: $what: ${leaks:-no leaks possible (all heap blocks freed)}" ;;
    *) echo "FAIL valgrind: $what: $summary"; sed 's/^/    /' "$log"; status=1 ;;
    esac
done
[ "$runs" -gt 0 ] || { echo "FAIL nothing ran under valgrind"; status=1; }
echo "$runs runs under valgrind; $([ $status -eq 0 ] && echo "all clean" || echo "some failed")"
exit $status
