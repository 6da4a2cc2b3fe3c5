#!/bin/sh
# Tests the commands by which README.md installs the library under a prefix, uses it and uninstalls it. They run as they
# are, in a copy of the source tree and in a home directory of their own.
# usage: readme_install_test.sh SOURCE_DIR
set -eu
source=$1
readme=$source/README.md
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"

home=$work/home
mkdir -p "$home" "$work/copy"
(cd "$source" && tar --exclude=./build --exclude=./.git -cf - .) | tar -xf - -C "$work/copy"

# in_home WHAT: runs the commands of the script $work/commands in the copy of the source tree.
in_home() {
  (cd "$work/copy" &&
    quietly "$1" env -i HOME="$home" PATH="$PATH" CMAKE_BUILD_PARALLEL_LEVEL=2 sh -eu "$work/commands")
  echo "$1"
}

# install_block NUMBER WORD: stores a block of commands below "Install it", which contains this word, in $work/commands.
install_block() {
  code_block "$readme" sh "$1" "Install it" >"$work/commands"
  grep -q -e "$2" "$work/commands" || fail "block $1 below \"Install it\" in README.md has no $2" "$work/commands"
}

code_block "$readme" cpp 1 >"$work/copy/host.cpp"
code_block "$readme" text 2 >"$work/shown"
[ -s "$work/shown" ] || fail "README.md does not show the output of the program"

install_block 2 'cmake --install'
in_home "installed under a prefix"

install_block 4 rpath
grep '^export' "$work/commands" >"$work/settings"
echo "./host >'$work/printed'" >>"$work/commands"
in_home "a program is built with pkg-config"
diff "$work/shown" "$work/printed" || fail "the output of the program that is built with pkg-config"

# The commands for CMake are in the table, between backquotes.
row=$(grep '^| CMake, library installed ' "$readme") || fail "README.md does not say how CMake finds the library"
mkdir "$work/copy/with_cmake"
{
  echo 'cmake_minimum_required(VERSION 3.16)'
  echo 'project(host LANGUAGES CXX)'
  echo 'add_executable(host ../host.cpp)'
  echo "$row" | tr '`' '\n' | grep '^[a-z_]*(.*)$'
} >"$work/copy/with_cmake/CMakeLists.txt"
{
  cat "$work/settings"
  echo 'cmake -S with_cmake -B with_cmake/build && cmake --build with_cmake/build'
  echo "with_cmake/build/host >'$work/printed'"
} >"$work/commands"
in_home "a program is built with CMake"
diff "$work/shown" "$work/printed" || fail "the output of the program that is built with CMake"

# `man` need not be installed: it looks in the directories of MANPATH for this file.
{
  cat "$work/settings"
  # The second script expands it.
  # shellcheck disable=SC2016
  echo '[ -f "${MANPATH%:}/man3/zn_udf.3" ]'
} >"$work/commands"
in_home "MANPATH leads to the manual page"

install_block 3 uninstall
in_home "uninstalled"
left=$(find "$home/.local" ! -type d -o -name '*zn_udf*')
[ -z "$left" ] || fail "files remain: $left"
