#!/bin/sh
# Compiles the call block header for a 32-bit target, where its static assertions check
# the classic offsets. Only compiles: nothing 32-bit is linked or run, so a kernel without
# 32-bit support passes too. Skipped (77) when the 32-bit C library headers are missing.
cc="$1"; src="$2"
tmp=$(mktemp -d); trap 'rm -rf "$tmp"' EXIT
printf '#include <stddef.h>\n#include <stdint.h>\n' > "$tmp/probe.c"
"$cc" -m32 -fsyntax-only "$tmp/probe.c" 2>/dev/null || { echo "no 32-bit headers: skipped"; exit 77; }
printf '#include "text/FMXExtern.h"\n_Static_assert(UINTPTR_MAX == 0xFFFFFFFFu, "32-bit");\n' > "$tmp/layout.c"
"$cc" -m32 -fsyntax-only -I"$src" "$tmp/layout.c" && echo "32-bit layout ok"
