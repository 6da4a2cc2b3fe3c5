#!/bin/sh
# Tests that the library exports exactly its documented interface: the symbols in EXPECTED_FILE, which are those of
# 64-bit machines, each with the symbol version ZN_UDF_1.
# usage: exports_test.sh LIBRARY EXPECTED_FILE [NM]
set -eu
library=$1
expected=$2
nm=${3:-nm}
found=$(mktemp)
listed=$(mktemp)
trap 'rm -f "$found" "$listed"' EXIT
# The absolute symbol is the symbol version itself.
symbols=$("$nm" -D --defined-only "$library" | awk '$2 != "A" {print $3}')
if printf '%s\n' "$symbols" | grep -v '@@ZN_UDF_1$'; then
  echo "FAILED: these symbols do not have the symbol version ZN_UDF_1"
  exit 1
fi
printf '%s\n' "$symbols" | sed 's/@@ZN_UDF_1$//' | c++filt | LC_ALL=C sort -u >"$found"
cp "$expected" "$listed"
if grep -q 'std::__1::' "$found"; then
  # With libc++ only the namespaces of the standard types differ.
  for names in "$found" "$listed"; do
    sed -i 's/std::__1::/std::/g; s/std::__cxx11::/std::/g; s/\[abi:cxx11\]//g' "$names"
    LC_ALL=C sort -u -o "$names" "$names"
  done
fi
if readelf -h "$library" | grep -q 'Class: *ELF32'; then
  # On this machine std::size_t is unsigned int.
  sed -i 's/unsigned long long/WIDE/g; s/unsigned long/unsigned int/g; s/WIDE/unsigned long long/g' "$listed"
  LC_ALL=C sort -u -o "$listed" "$listed"
fi
if ! diff -u "$listed" "$found"; then
  echo "FAILED: the exported symbols are not those of $expected (-: missing, +: new)"
  exit 1
fi
echo "$(wc -l <"$found") exported symbols, as listed"
