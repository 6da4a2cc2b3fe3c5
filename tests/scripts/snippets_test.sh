#!/bin/sh
# Tests that each program of a directory such as examples/snippets, run in an empty directory, prints the .out file
# beside its source. Standard input is the .in file, if there is one.
# usage: snippets_test.sh SOURCE_DIR PROGRAM_DIR
set -eu
sources=$(CDPATH='' cd -- "$1" && pwd)
programs=$(CDPATH='' cd -- "$2" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C

checked=0
for source in "$sources"/*.cpp; do
  name=$(basename "$source" .cpp)
  fail() { echo "FAILED: $name $1"; cat "$work/$name.err"; exit 1; }
  : >"$work/$name.err"
  [ -f "$sources/$name.out" ] || fail "has no $name.out"
  mkdir "$work/$name"
  input=/dev/null
  if [ -f "$sources/$name.in" ]; then input=$sources/$name.in; fi
  (cd "$work/$name" && HOME=$work/$name "$programs/$name") >"$work/$name.out" 2>"$work/$name.err" <"$input" ||
    fail "ended with status $?"
  diff -u "$sources/$name.out" "$work/$name.out" || fail "prints another text"
  checked=$((checked + 1))
done
[ "$checked" -gt 0 ] || { echo "FAILED: no programs in $sources"; exit 1; }
echo "$checked programs print the expected text"
