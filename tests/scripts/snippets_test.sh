#!/bin/sh
# Tests that each program of examples/snippets, run in an empty directory, prints the .out file beside its source.
# usage: snippets_test.sh SOURCE_DIR PROGRAM_DIR
set -eu
sources=$(CDPATH='' cd -- "$1" && pwd)
programs=$(CDPATH='' cd -- "$2" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME="$work" LC_ALL=C

checked=0
for source in "$sources"/*.cpp; do
  name=$(basename "$source" .cpp)
  fail() { echo "FAILED: $name $1"; cat "$work/$name.err"; exit 1; }
  : >"$work/$name.err"
  [ -f "$sources/$name.out" ] || fail "has no $name.out"
  mkdir "$work/$name"
  (cd "$work/$name" && "$programs/$name") >"$work/$name.out" 2>"$work/$name.err" </dev/null ||
    fail "ended with status $?"
  diff -u "$sources/$name.out" "$work/$name.out" || fail "prints another text"
  checked=$((checked + 1))
done
[ "$checked" -gt 0 ] || { echo "FAILED: no snippets in $sources"; exit 1; }
echo "$checked snippets print the expected text"
