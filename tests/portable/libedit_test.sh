#!/bin/sh
# Tests that libedit is found by the header of most systems and by that of the FreeBSD base system.
# usage: libedit_test.sh SOURCE_DIR
set -eu
source=$1
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"

mkdir "$work/project"
cat >"$work/project/CMakeLists.txt" <<EOF
cmake_minimum_required(VERSION 3.16)
project(prompts LANGUAGES NONE)
list(APPEND CMAKE_MODULE_PATH $source/cmake)
find_package(LibEdit)
get_target_property(include LibEdit::LibEdit INTERFACE_INCLUDE_DIRECTORIES)
file(WRITE \${CMAKE_BINARY_DIR}/found "\${include} \${LibEdit_LIBRARY}")
EOF

# found ROOT: prints what is found on a machine whose only files are in ROOT.
found() {
  rm -rf "$work/build"
  quietly "finding libedit in $1" cmake -S "$work/project" -B "$work/build" -DCMAKE_PREFIX_PATH="$1" \
    -DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF
  cat "$work/build/found"
}

for header in editline/readline.h edit/readline/readline.h; do
  root=$work/root/$header
  mkdir -p "$root/lib" "$root/include/$(dirname $header)"
  : >"$root/include/$header"
  : >"$root/lib/libedit.so"
  [ "$(found "$root")" = "$root/include $root/lib/libedit.so" ] || fail "$header: $(found "$root")"
  # The source includes the same header.
  grep -q "^#include <$header>" "$source/src/udf/zn_output.cpp" || fail "nothing includes $header"
done
echo "libedit is found by both names of its header"
