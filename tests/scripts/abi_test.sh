#!/bin/sh
# Tests that programs that were linked with version 1.1 still run with this library: nothing that they use has changed
# or is missing. Additions do not matter. The library must have debug information.
# usage: abi_test.sh LIBRARY BASELINE
#        abi_test.sh --record LIBRARY BASELINE   (writes the baseline; for a new major version only)
set -eu
if [ "$1" = --record ]; then
  exec abidw --drop-undefined-syms --exported-interfaces-only --no-corpus-path --no-comp-dir-path --no-show-locs \
    --type-id-style hash --out-file "$3" "$2"
fi
if ! readelf -S "$1" | grep -q '\.debug_info'; then
  echo "FAILED: $1 has no debug information" >&2
  exit 1
fi
abidiff --no-added-syms --no-show-locs "$2" "$1" || {
  echo "FAILED: programs that were linked with version 1.1 may not run with this library"
  exit 1
}
