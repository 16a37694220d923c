#!/bin/sh
# The include graph between the folders of the plug-in: platform/ includes none of the
# core, no core folder includes plugin/ (the frame sits on top), and the core folders
# include one another without a cycle.
#   check_layers.sh SOURCE_DIR
cd "$1" || exit 2
core="text store ui iac maplist files"
edges=$(for dir in platform plugin $core; do
  grep -Ho '^#include "[a-z]*/' "$dir"/*.h "$dir"/*.cpp 2>/dev/null |
    sed 's|^\([a-z]*\)/\([^:]*\):#include "\([a-z]*\)/$|\1 \3 \1/\2|'
done | awk -v known="platform plugin $core" '
  BEGIN { n = split(known, k, " "); for (i = 1; i <= n; i++) isKnown[k[i]] = 1 }
  $1 != $2 && isKnown[$2] { print }')
status=0
bad=$(echo "$edges" | awk '($1 == "platform") || ($2 == "plugin") { print "  " $3 " includes " $2 "/" }')
if [ -n "$bad" ]; then
  echo "includes against the layering (platform/ at the bottom, plugin/ on top):"; echo "$bad"
  status=1
fi
# tsort takes "before after" pairs: an included folder comes before its includer.
if ! echo "$edges" | awk 'NF { print $2, $1 }' | sort -u | tsort >/dev/null 2>"${TMPDIR:-/tmp}/layers.$$"; then
  echo "the core folders include one another in a cycle:"
  sed -n 's/^tsort: /  /p' "${TMPDIR:-/tmp}/layers.$$"
  status=1
fi
rm -f "${TMPDIR:-/tmp}/layers.$$"
[ $status -eq 0 ] && echo "include layers ok: $(echo "$edges" | awk 'NF { print $2, $1 }' | sort -u | tsort | tr '\n' ' ')"
exit $status
