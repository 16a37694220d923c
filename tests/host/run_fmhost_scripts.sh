#!/bin/sh
# run_fmhost_scripts.sh: runs the real fmhost on every script file (*.fmh) in the given
# folders, each in a fresh temporary folder with dialogs logged there and a private
# D-Bus session bus when dbus-daemon is installed. A script passes when fmhost exits
# with status 0 (--leaks: a leak fails it too). A script whose first line is
#   # fmhost-expect-status: N
# must exit with status N instead. Usage: run_fmhost_scripts.sh FMHOST DIR...
set -u
fmhost=$1
shift
work_name=fmhost-scripts
. "$(dirname "$0")/../common/private-bus.sh"
private_bus

total=0
failed=0
for dir in "$@"; do
    [ -d "$dir" ] || continue
    for script in "$dir"/*.fmh; do
        [ -f "$script" ] || continue
        total=$((total + 1))
        expected=$(sed -n '1s/^# fmhost-expect-status: *\([0-9]*\).*/\1/p' "$script")
        [ -n "$expected" ] || expected=0
        run="$work/run$total"
        mkdir -p "$run"
        script_path=$(cd "$(dirname "$script")" && pwd)/$(basename "$script")
        (cd "$run" && HOME="$run" TPX1_DIALOG_LOG="$run/dialogs.jsonl" "$fmhost" --leaks "$script_path" \
            > "$run/out" 2> "$run/err")
        status=$?
        if [ "$status" -ne "$expected" ]; then
            failed=$((failed + 1))
            echo "FAIL $script (status $status, expected $expected)"
            sed 's/^/    out: /' "$run/out"
            sed 's/^/    err: /' "$run/err"
        else
            echo "ok   $script"
        fi
    done
done
echo "$((total - failed)) of $total fmhost scripts passed"
[ "$failed" -eq 0 ]
