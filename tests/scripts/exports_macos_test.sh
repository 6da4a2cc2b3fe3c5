#!/bin/sh
# Tests that the list of exports for macOS matches all symbols that this library exports, and that each of its patterns
# matches a symbol.
# usage: exports_macos_test.sh LIBRARY LIST [NM]
set -eu
library=$1
list=$2
nm=${3:-nm}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$nm" -D --defined-only "$library" | sed 's/^[^ ]* [^ ]* //; s/@.*//' | grep -v '^ZN_UDF' | sed 's/^/_/' | sort -u \
  >"$work/symbols"
grep -v '^#' "$list" >"$work/patterns"

# The patterns of the linker are patterns of the shell.
: >"$work/matched"
while read -r pattern; do
  before=$(wc -l <"$work/matched")
  while read -r symbol; do
    # shellcheck disable=SC2254
    case $symbol in $pattern) echo "$symbol" >>"$work/matched" ;; esac
  done <"$work/symbols"
  [ "$(wc -l <"$work/matched")" -gt "$before" ] || { echo "FAILED: $pattern matches no symbol"; exit 1; }
  # shellcheck disable=SC2194,SC2254
  case __ZNSt6vectorIiSaIiEE4dataEv in $pattern) echo "FAILED: $pattern matches the standard library"; exit 1 ;; esac
done <"$work/patterns"
sort -u "$work/matched" | diff "$work/symbols" - ||
  { echo "FAILED: $list does not match all exported symbols"; exit 1; }
echo "$(wc -l <"$work/symbols") symbols would be exported on macOS, too"
