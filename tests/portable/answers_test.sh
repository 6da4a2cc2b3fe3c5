#!/bin/sh
# Tests that the results of this machine are those of the machine that printed EXPECTED.
# usage: answers_test.sh PROGRAM EXPECTED
set -eu
found=$(mktemp)
trap 'rm -f "$found"' EXIT
"$1" >"$found"
if ! cmp "$2" "$found"; then
  diff "$2" "$found" | head -40
  echo "FAILED: $(diff "$2" "$found" | grep -c '^>') of $(wc -l <"$found") results differ (<: expected, >: here)"
  exit 1
fi
echo "$(wc -l <"$found") results are the same"
