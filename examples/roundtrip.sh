#!/bin/sh
# roundtrip.sh: runs roundtrip.fmh with a stand-in TOPOLUX that the plug-in launches
# itself. A temporary Applications folder holds "TOPOLUX Folder/TOPOLUX", a script that
# starts "vesk partner" as TPX1; fmhost runs without a session bus, so it starts a
# private one and hands its address to TOPOLUX. Prints what TOPOLUX saw.
# Usage: examples/roundtrip.sh [BUILD-FOLDER]   (default: build/ beside examples/)
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "${1:-$here/../build}" && pwd)
work=$(mktemp -d /tmp/tpx1-roundtrip-example.XXXXXX)
trap 'rm -rf "$work"' EXIT INT TERM

mkdir -p "$work/Applications/TOPOLUX Folder"
cat > "$work/Applications/TOPOLUX Folder/TOPOLUX" <<EOS
#!/bin/sh
exec "$build/vesk" partner --as TPX1 --name TOPOLUX --rules "$here/roundtrip-rules.txt" --log "$work/partner.log" "\$@"
EOS
chmod +x "$work/Applications/TOPOLUX Folder/TOPOLUX"

status=0
env -u DBUS_SESSION_BUS_ADDRESS TPX1_APPLICATIONS_FOLDER="$work/Applications" \
    "$build/fmhost" "$here/roundtrip.fmh" || status=1
sleep 0.3
echo "== what the stand-in TOPOLUX saw"
cat "$work/partner.log" 2>/dev/null || echo "(nothing: it never started)"
exit $status
