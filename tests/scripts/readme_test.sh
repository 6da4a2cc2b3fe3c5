#!/bin/sh
# Tests the examples in README.md: almanac prints the table and draws the picture, and the host program compiles and
# prints its line.
# usage: readme_test.sh SOURCE_DIR ALMANAC LIBRARY_DIR COMPILER [FLAGS]
set -eu
source=$1
readme=$source/README.md
include=$1/include
almanac=$2
library=$3
shift 3
compiler="$*"
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"
# Ignore the settings of the user.
export HOME="$work"
unset XDG_CONFIG_HOME

# block LANGUAGE NUMBER: prints a block of README.md in this language, counted from 1.
block() { code_block "$readme" "$@"; }

# compare WHAT: compares the output with README.md.
compare() {
  [ -s "$work/shown" ] || { echo "FAILED: README.md does not show $1"; exit 1; }
  diff -u "$work/shown" "$work/printed" || { echo "FAILED: $1 differs from README.md"; exit 1; }
}

block text 1 | sed 1d >"$work/shown"
# The command line is above its output.
# shellcheck disable=SC2046
"$almanac" $(block text 1 | sed -n '1s/^[^ ]* [^ ]* //p') >"$work/printed"
compare "the table of almanac"

cp "$source/docs/almanac.svg" "$work/shown"
rm "$work/printed"
# shellcheck disable=SC2046
"$almanac" $(sed -n 's|^build/quickstart/examples/almanac/almanac \(.*--svg\) almanac.svg$|\1|p' "$readme") "$work/printed"
compare "the picture of almanac"

block cpp 1 >"$work/host.cpp"
block text 2 >"$work/shown"
# The compiler and its flags are separate words.
# shellcheck disable=SC2086
$compiler -std=c++17 -Wall -Wextra -I"$include" "$work/host.cpp" -L"$library" -lzn_udf -Wl,-rpath,"$library" \
  -o "$work/host"
"$work/host" >"$work/printed"
compare "the line of the host program"
echo "README.md shows the output of its programs"
