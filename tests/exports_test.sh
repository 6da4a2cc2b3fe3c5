#!/bin/sh
# The library exports exactly its documented interface: the symbols listed in the second argument.
# usage: exports_test.sh LIBRARY EXPECTED_FILE
set -eu
library=$1
expected=$2
found=$(mktemp)
trap 'rm -f "$found"' EXIT
nm -D --defined-only "$library" | cut -d' ' -f3- | c++filt | LC_ALL=C sort -u >"$found"
if ! diff -u "$expected" "$found"; then
  echo "FAILED: the exported symbols are not those of $expected (-: lost, +: new)"
  exit 1
fi
echo "$(wc -l <"$found") exported symbols, as listed"
