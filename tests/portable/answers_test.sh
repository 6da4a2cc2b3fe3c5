#!/bin/sh
# Tests that the answers of this machine are those of the machine that printed EXPECTED.
# usage: answers_test.sh EXPECTED PROGRAM [ARGUMENT...]
set -eu
expected=$1
shift
found=$(mktemp)
trap 'rm -f "$found"' EXIT
"$@" >"$found"
if ! cmp "$expected" "$found"; then
  diff "$expected" "$found" | head -40
  echo "FAILED: $(diff "$expected" "$found" | grep -c '^>') of $(wc -l <"$found") answers differ (<: expected, >: here)"
  exit 1
fi
echo "$(wc -l <"$found") answers are the same"
