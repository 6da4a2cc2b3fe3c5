#!/bin/sh
# Tests that the optimised library is built with the hardening of Debian packages.
# usage: hardening_test.sh LIBRARY
set -eu
expect() { # expect WHAT PATTERN OPTION: the output of readelf with this option matches the pattern.
  readelf -W "$3" "$library" >"$out"
  grep -qE "$2" "$out" || { echo "FAILED: $1"; exit 1; }
}
library=$1
out=$(mktemp)
trap 'rm -f "$out"' EXIT
expect "read-only relocations" 'GNU_RELRO' -l
expect "all symbols bound at load" 'BIND_NOW' -d
expect "stack protector" 'UND __stack_chk_fail' --dyn-syms
expect "no executable stack" 'GNU_STACK .* RW ' -l
echo "$library is hardened"
