#!/bin/sh
# What a shared object exports.
#   check_exports.sh PLUGIN      the plug-in exports FMExternCallProc and nothing else
#   check_exports.sh --c-only LIB  the library exports C names only (no C++ symbols)
set -e
if [ "$1" = "--c-only" ]; then
  cxx=$(nm -D --defined-only "$2" | awk '{print $3}' | grep '^_Z' || true)
  if [ -n "$cxx" ]; then
    echo "C++ symbols exported by $2:"; echo "$cxx" | c++filt
    exit 1
  fi
  echo "only C names are exported by $2"
  exit 0
fi
symbols=$(nm -D --defined-only "$1" | awk '{print $3}')
if [ "$symbols" != "FMExternCallProc" ]; then
  echo "exported symbols of $1:"; echo "$symbols"
  exit 1
fi
echo "only FMExternCallProc is exported"
