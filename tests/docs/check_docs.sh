#!/bin/sh
# check_docs.sh: the documents users read match the program: the function reference
# names every external function with the synopsis of the table (mdman), the man pages
# made from the documents are there and format without a warning (when groff is
# installed), and the bash completions parse. Usage: check_docs.sh MDMAN SOURCE BUILD
set -u
mdman=$1
source=$2
build=$3
failed=0
"$mdman" --check-functions "$source/docs/functions.md" || failed=1
for page in fmhost.1 vesk.1 tpx1.7; do
    if [ ! -s "$build/man/$page" ]; then
        echo "FAILED: the man page $build/man/$page was not made"
        failed=1
    elif command -v groff > /dev/null 2>&1; then
        warnings=$(groff -man -ww -z -Tutf8 "$build/man/$page" 2>&1)
        [ -z "$warnings" ] || { echo "FAILED: groff on $page:"; echo "$warnings"; failed=1; }
    fi
done
for completion in fmhost vesk; do
    bash -n "$source/tools/completion/$completion" || failed=1
    bash -c ". '$source/tools/completion/$completion' && complete -p $completion" > /dev/null || failed=1
done
[ "$failed" -eq 0 ] && echo "docs: all checked"
exit $failed
