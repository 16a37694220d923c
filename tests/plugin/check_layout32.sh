#!/bin/sh
# Compiles the call block header for a 32-bit target, where its static assertions check
# the classic offsets. Skipped (77) when the 32-bit C library headers are not installed.
cc="$1"; src="$2"
tmp=$(mktemp -d); trap 'rm -rf "$tmp"' EXIT
printf 'int main(void){return 0;}\n' > "$tmp/probe.c"
"$cc" -m32 -c "$tmp/probe.c" -o "$tmp/probe.o" 2>/dev/null || { echo "no 32-bit headers: skipped"; exit 77; }
printf '#include "plugin/FMXExtern.h"\nint main(void){return (int)sizeof(FMX_ExternCallBlock) - 68;}\n' > "$tmp/layout.c"
"$cc" -m32 -I"$src" "$tmp/layout.c" -o "$tmp/layout" && "$tmp/layout" && echo "32-bit layout ok"
