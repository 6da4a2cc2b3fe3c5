#!/bin/sh
# The list of what is exported on macOS admits all that this build's library exports, and each line of it something.
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

# A pattern of the linker's is one of the shell's.
: >"$work/admitted"
while read -r pattern; do
  before=$(wc -l <"$work/admitted")
  while read -r symbol; do
    # shellcheck disable=SC2254
    case $symbol in $pattern) echo "$symbol" >>"$work/admitted" ;; esac
  done <"$work/symbols"
  [ "$(wc -l <"$work/admitted")" -gt "$before" ] || { echo "FAILED: $pattern admits nothing"; exit 1; }
  # shellcheck disable=SC2194,SC2254
  case __ZNSt6vectorIiSaIiEE4dataEv in $pattern) echo "FAILED: $pattern admits the standard library"; exit 1 ;; esac
done <"$work/patterns"
sort -u "$work/admitted" | diff "$work/symbols" - || { echo "FAILED: exported, and not in $list"; exit 1; }
echo "$(wc -l <"$work/symbols") symbols are exported on macOS as here"
