#!/bin/sh
# The plug-in core keeps its process-wide state in one object, gCoreState, which one
# reset puts back as at load. Any other writable data in the core library (a global, a
# static, a function's static) would escape that reset: list it and fail.
#   check_core_state.sh LIBTPX1CORE.a
# Symbols the compiler's instrumentation adds (AddressSanitizer's, coverage counters)
# begin with "__" or "." and are not the core's.
objdump -t "$1" | awk '
  / O / {
    section = ""; name = $NF
    for (i = 1; i <= NF; i++) if ($i ~ /^\./ && $i != ".hidden") { section = $i; break }
    if (section !~ /^\.(data|bss|tdata|tbss)/ || section ~ /^\.data\.rel\.ro/) next
    if (name ~ /^(__|\.|DW\.ref\.)/ || name == "gCoreState") next
    print name
  }' | sort -u >"${TMPDIR:-/tmp}/core-state.$$"
if [ -s "${TMPDIR:-/tmp}/core-state.$$" ]; then
  echo "writable data outside gCoreState (put it in the owner, plugin/CoreState.h):"
  c++filt <"${TMPDIR:-/tmp}/core-state.$$" | sed 's/^/  /'
  rm -f "${TMPDIR:-/tmp}/core-state.$$"
  exit 1
fi
rm -f "${TMPDIR:-/tmp}/core-state.$$"
echo "the core's only writable data is gCoreState"
