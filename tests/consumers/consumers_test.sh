#!/bin/sh
# Tests projects of hosts that use the installed library, and projects that build it as a part of themselves.
# usage: consumers_test.sh SOURCE_DIR BUILD_DIR COMPILER [FLAGS]
set -eu
source=$1
build=$2
shift 2
compiler=$1
flags="$*"
consumers=$source/tests/consumers
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"

# expect_host WHAT PROGRAM: expects the output of the program, which finds the library itself.
expect_host() {
  env -u LD_LIBRARY_PATH "$2" >"$work/printed" 2>&1 || fail "$1 does not run" "$work/printed"
  diff "$consumers/host.out" "$work/printed" || fail "$1"
  echo "$1"
}

# ---- Installed files

quietly "installing" cmake --install "$build" --prefix "$work/first"
quietly "installing below DESTDIR" env DESTDIR="$work/stage" cmake --install "$build" --prefix /opt/zn
(cd "$work/first" && find . ! -type d | LC_ALL=C sort) >"$work/files"
(cd "$work/stage/opt/zn" && find . ! -type d | LC_ALL=C sort) | diff "$work/files" - || fail "DESTDIR"
[ -z "$(find "$work/stage" ! -type d ! -path "$work/stage/opt/zn/*")" ] || fail "files outside of the prefix"
sed -n 's|^\./include/zn_udf/||p' "$work/files" >"$work/headers"
(cd "$source/include" && LC_ALL=C ls) | diff - "$work/headers" || fail "the installed headers"
for name in cmake/zn_udf/zn_udf-config.cmake cmake/zn_udf/zn_udf-config-version.cmake pkgconfig/zn_udf.pc libzn_udf.so \
  libzn_udf.so.1 man/man3/zn_udf.3; do
  grep -q "/$name\$" "$work/files" || fail "$name is not installed" "$work/files"
done
if grep -rIlF -e "$source" -e "$build" -e "$work/first" "$work/first" >"$work/named"; then
  fail "these files name a directory of the machine that built them" "$work/named"
fi
echo "installed files"

# An installation can be moved.
mkdir "$work/moved"
mv "$work/first" "$work/moved/prefix"
prefix=$work/moved/prefix

# ---- The installed library

quietly "find_package" cmake -S "$consumers/find_package" -B "$work/find_package" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror"
quietly "building with find_package" cmake --build "$work/find_package"
expect_host "find_package" "$work/find_package/host"

pc_dir=$(dirname "$(find "$prefix" -name zn_udf.pc)")
export PKG_CONFIG_PATH="$pc_dir"
# shellcheck disable=SC2046
echo ZN_UDF_VERSION_MAJOR.ZN_UDF_VERSION_MINOR |
  "$compiler" -std=c++17 $(pkg-config --cflags zn_udf) -include zn_common.h -E -P -x c++ - |
  tail -n 1 | tr -d ' ' >"$work/version"
[ "$(pkg-config --modversion zn_udf)" = "$(cat "$work/version")" ] || fail "the version of pkg-config" "$work/version"
pkg-config --exists 'zn_udf >= 1.0' 'zn_udf < 2' || fail "pkg-config rejects the version"
if pkg-config --exists 'zn_udf >= 1.2'; then fail "pkg-config accepts a later version"; fi
library_dir=$(pkg-config --variable=libdir zn_udf)
# The flags are separate words.
# shellcheck disable=SC2046,SC2086
quietly "pkg-config" $flags -std=c++17 "$consumers/host.cpp" $(pkg-config --cflags --libs zn_udf) \
  "-Wl,-rpath,$library_dir" -o "$work/by_pkg_config"
expect_host "pkg-config" "$work/by_pkg_config"

echo '<root> text<leaf/></root>' >"$work/read.xml"
# shellcheck disable=SC2046,SC2086
quietly "without exceptions" $flags -std=c++17 -fno-exceptions -D_GLIBCXX_ASSERTIONS "$consumers/no_exceptions.cpp" \
  $(pkg-config --cflags --libs zn_udf) "-Wl,-rpath,$library_dir" -o "$work/no_exceptions"
env -u LD_LIBRARY_PATH "$work/no_exceptions" "$work/read.xml" >"$work/printed" 2>&1 ||
  fail "the program without exceptions does not run" "$work/printed"
printf 'element root\nelement leaf\ntext text\n' | diff - "$work/printed" || fail "a program without exceptions"
echo "a program without exceptions"

# A program finds the library in `libs` beside its own directory, and both can be moved.
mkdir -p "$work/made/bin" "$work/made/libs"
cp "$library_dir"/libzn_udf.so.1 "$work/made/libs/"
# shellcheck disable=SC2046,SC2086,SC2016
quietly "libs beside the program" $flags -std=c++17 "$consumers/host.cpp" $(pkg-config --cflags --libs zn_udf) \
  '-Wl,-rpath,$ORIGIN/../libs' -o "$work/made/bin/host"
mv "$work/made" "$work/shipped"
mv "$prefix" "$work/gone"
expect_host "libs beside the program's directory" "$work/shipped/bin/host"
rm "$work/shipped/libs/libzn_udf.so.1"
if "$work/shipped/bin/host" >"$work/log" 2>&1; then fail "the program runs without the library"; fi

# ---- Uninstalling

quietly "installing" cmake --install "$build" --prefix "$work/removed"
touch "$work/removed/include/zn_udf/other.h"
quietly "uninstalling" cmake --build "$build" --target uninstall
find "$work/removed" ! -type d -o -name 'zn_udf*' | LC_ALL=C sort >"$work/files"
printf '%s\n' "$work/removed/include/zn_udf" "$work/removed/include/zn_udf/other.h" | diff - "$work/files" ||
  fail "other files than those of the library are left, or missing"
if cmake --build "$build" --target uninstall >"$work/log" 2>&1; then fail "uninstalling twice"; fi
grep -q "Nothing has been installed from $build" "$work/log" || fail "the message of uninstalling twice" "$work/log"
quietly "installing below DESTDIR" env DESTDIR="$work/removed" cmake --install "$build" --prefix /opt/zn
quietly "uninstalling below DESTDIR" env DESTDIR="$work/removed" cmake --build "$build" --target uninstall
find "$work/removed/opt" ! -type d -o -name 'zn_udf*' >"$work/files"
[ ! -s "$work/files" ] || fail "files are left below DESTDIR" "$work/files"
echo "uninstalling"

# ---- The installed examples

quietly "installing the examples" sh -c "cmake --install '$build' --prefix '$work/examples' &&
  cmake --install '$build' --component examples --prefix '$work/examples'"
for example in almanac logturn; do
  if env -u LD_LIBRARY_PATH HOME="$work" "$work/examples/bin/$example" --bogus 2>"$work/log"; then
    fail "$example takes any option"
  fi
  grep -q '^ERROR: #1	.*option "--bogus"; try --help' "$work/log" || fail "$example without its messages" "$work/log"
  [ -e "$work/examples/share/man/man1/$example.1" ] || fail "$example without its manual"
done
echo "the examples"

# ---- The library as a part of another project

for fetch in OFF ON; do
  quietly "add_subdirectory, FetchContent $fetch" cmake -S "$consumers/add_subdirectory" -B "$work/sub_$fetch" \
    -DZN_UDF_SOURCE="$source" -DFETCH=$fetch -DCMAKE_CXX_COMPILER="$compiler"
done
quietly "building with add_subdirectory" cmake --build "$work/sub_OFF" -j 2
expect_host "add_subdirectory" "$work/sub_OFF/host"
quietly "installing the other project" cmake --install "$work/sub_OFF" --prefix "$work/none"
[ ! -e "$work/none" ] || fail "the library is installed with the other project"

# ---- The library as an installed part of another project, which exports a library that links it

refuses_static() { # refuses_static PROJECT [OPTION...]
  project=$1
  shift
  if cmake -S "$project" -B "$work/static" -DBUILD_SHARED_LIBS=OFF -DCMAKE_CXX_COMPILER="$compiler" "$@" \
    >"$work/log" 2>&1; then fail "$project accepts BUILD_SHARED_LIBS=OFF"; fi
  grep -q 'zn_udf is always a shared library' "$work/log" || fail "the message for BUILD_SHARED_LIBS=OFF" "$work/log"
  rm -r "$work/static"
}
refuses_static "$source"
refuses_static "$consumers/add_subdirectory" -DZN_UDF_SOURCE="$source"
echo "BUILD_SHARED_LIBS=OFF"

quietly "the exporting project" cmake -S "$consumers/exporting_host" -B "$work/exporting" -DZN_UDF_SOURCE="$source" \
  -DBUILD_SHARED_LIBS=OFF -DCMAKE_CXX_COMPILER="$compiler"
quietly "building the exporting project" cmake --build "$work/exporting" -j 2
quietly "installing the exporting project" cmake --install "$work/exporting" --prefix "$work/exported"
if grep -rIlF -e "$source" -e "$work" "$work/exported" >"$work/named"; then
  fail "these files of the exporting project name a directory of the machine that built them" "$work/named"
fi
[ ! -e "$work/exporting/CPackConfig.cmake" ] || fail "the exporting project has packages of the library"
[ -e "$work/exported/share/doc/zn_udf/README.md" ] || fail "the documentation is not in the library's directory"
rm -r "$work/exporting"
quietly "the client" cmake -S "$consumers/exporting_host/client" -B "$work/client" \
  -DCMAKE_PREFIX_PATH="$work/exported" -DCMAKE_CXX_COMPILER="$compiler"
quietly "building the client" cmake --build "$work/client"
expect_host "a library that another project exports" "$work/client/host"
