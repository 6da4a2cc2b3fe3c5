#!/bin/sh
# Tests that the API reference builds without a warning: everything public is documented, and no link is broken. The
# diagram in docs/ARCHITECTURE.md must show the includes.
# usage: docs_test.sh DOXYGEN DOXYFILE SOURCE_DIR
set -eu
doxygen=$1
doxyfile=$2
source=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The last value of a setting counts.
{ cat "$doxyfile"; printf 'OUTPUT_DIRECTORY = "%s"\n' "$work"; } >"$work/Doxyfile"
if ! "$doxygen" "$work/Doxyfile" >"$work/log" 2>&1 || [ -s "$work/log" ]; then
  cat "$work/log"
  echo "FAILED: the reference does not build without warnings"
  exit 1
fi
[ -s "$work/html/index.html" ] || { echo "FAILED: there is no index.html"; exit 1; }
echo "The reference builds without warnings"

# Writes "a --> b & c" as "a b" and "a c".
sed -n 's/ -->//p' "$source/docs/ARCHITECTURE.md" | tr -d '&' |
  awk '{for (i = 2; i <= NF; ++i) print $1, $i}' | sort -u >"$work/drawn"
for file in "$source"/src/udf/*.cpp "$source"/include/*.h; do
  stem=$(basename "${file%.*}")
  sed -n 's/^#include "\(.*\)\.h"$/\1/p' "$file" | while read -r other; do
    if [ -f "$source/include/$other.h" ] && [ "$other" != "$stem" ] && [ "$other" != zn_common ]; then
      echo "$stem $other"
    fi
  done
done | sort -u >"$work/included"
[ -s "$work/drawn" ] || { echo "FAILED: docs/ARCHITECTURE.md has no diagram"; exit 1; }
diff -u "$work/drawn" "$work/included" ||
  { echo "FAILED: the diagram in docs/ARCHITECTURE.md has other arrows"; exit 1; }
echo "The diagram in docs/ARCHITECTURE.md shows the includes"
