#!/bin/sh
# Tests that two major versions of the library work in one process: two plugins, each linked with one of them, get the
# results of their own version, in whatever order they are linked or loaded.
# usage: majors_test.sh SOURCE_DIR LIBRARY_DIR COMPILER [FLAGS]
set -eu
source=$1
first=$2
shift 2
compiler="$* -std=c++17 -I$source/include"
majors=$source/tests/majors
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"

printf 'ZN_UDF_2 {\n  global: *;\n};\n' >"$work/second.map"
# The compiler and its flags are separate words.
# shellcheck disable=SC2086
quietly "the second major version" $compiler -shared -fPIC "$majors/second_major.cpp" -Wl,-soname,libzn_udf.so.2 \
  "-Wl,--version-script=$work/second.map" -o "$work/libzn_udf.so"
ln -s libzn_udf.so "$work/libzn_udf.so.2"
for plugin in first second; do
  if [ $plugin = first ]; then directory=$first; else directory=$work; fi
  # shellcheck disable=SC2086
  quietly "the plugin of the $plugin version" $compiler -shared -fPIC -DZN_UDF_TEST_ANSWER=${plugin}Answer \
    "$majors/plugin.cpp" "-L$directory" -lzn_udf "-Wl,-rpath,$directory" -o "$work/lib$plugin.so"
done
readelf -d "$work/libfirst.so" | grep -q 'NEEDED.*libzn_udf\.so\.1\]' || fail "the first plugin needs another library"
readelf -d "$work/libsecond.so" | grep -q 'NEEDED.*libzn_udf\.so\.2\]' || fail "the second plugin needs another library"

printf 'TEXT, name\nsecond text, second name\n' >"$work/expected"
# expect_both WHAT COMMAND...: expects the answer of each plugin.
expect_both() {
  what=$1
  shift
  env -u LD_LIBRARY_PATH "$@" >"$work/printed" 2>&1 || fail "$what: the host does not run" "$work/printed"
  diff "$work/expected" "$work/printed" || fail "$what"
  echo "$what"
}
for order in "first second" "second first"; do
  # shellcheck disable=SC2086
  quietly "linking $order" $compiler "$majors/host.cpp" "-L$work" -Wl,--no-as-needed \
    "-l${order% *}" "-l${order#* }" "-Wl,-rpath,$work" -ldl -o "$work/linked"
  expect_both "linked: $order" "$work/linked"
done
# shellcheck disable=SC2086
quietly "the loading host" $compiler "$majors/host.cpp" -ldl -o "$work/loading"
expect_both "loaded: first second" "$work/loading" "$work/libfirst.so" "$work/libsecond.so"
expect_both "loaded: second first" "$work/loading" "$work/libsecond.so" "$work/libfirst.so"
