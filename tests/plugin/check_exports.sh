#!/bin/sh
# The plug-in must export FMExternCallProc and nothing else.
set -e
symbols=$(nm -D --defined-only "$1" | awk '{print $3}')
if [ "$symbols" != "FMExternCallProc" ]; then
  echo "exported symbols of $1:"; echo "$symbols"
  exit 1
fi
echo "only FMExternCallProc is exported"
