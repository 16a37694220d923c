#!/bin/sh
# lst2.sh: runs the map object list examples against a stand-in TOPOLUX: starts a
# private D-Bus session bus and "vesk partner" as TPX1 with lst2-rules.txt, runs
# lst2-outgoing.fmh and lst2-incoming.fmh with fmhost, prints what the partner received,
# and stops both processes.
# Usage: examples/lst2.sh [BUILD-FOLDER]   (default: build/ beside examples/)
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-$here/../build}
work=$(mktemp -d /tmp/tpx1-lst2-example.XXXXXX)
bus_pid=
partner_pid=
cleanup() {
    [ -n "$partner_pid" ] && { kill "$partner_pid" 2>/dev/null; wait "$partner_pid" 2>/dev/null; } || true
    [ -n "$bus_pid" ] && kill "$bus_pid" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT INT TERM

dbus-daemon --session --print-address=3 --print-pid=4 --fork 3>"$work/address" 4>"$work/pid"
bus_pid=$(cat "$work/pid")
DBUS_SESSION_BUS_ADDRESS=$(head -n 1 "$work/address")
export DBUS_SESSION_BUS_ADDRESS

"$build/vesk" partner --as TPX1 --name TOPOLUX --rules "$here/lst2-rules.txt" --log "$work/partner.log" &
partner_pid=$!
tries=0
until "$build/vesk" ps | grep -q '^TPX1'; do
    tries=$((tries + 1))
    [ "$tries" -lt 50 ] || { echo "lst2.sh: the stand-in TOPOLUX did not start" >&2; exit 1; }
    sleep 0.1
done

status=0
echo "== lst2-outgoing.fmh"
"$build/fmhost" "$here/lst2-outgoing.fmh" || status=1
echo "== lst2-incoming.fmh"
"$build/fmhost" "$here/lst2-incoming.fmh" || status=1
echo "== what the stand-in TOPOLUX received"
cat "$work/partner.log"
exit $status
