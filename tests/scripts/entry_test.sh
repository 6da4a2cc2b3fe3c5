#!/bin/sh
# Tests what ./quickstart and ./check print, and their exit statuses. Programs that do nothing take the place of the
# packages, the build and the tests.
# usage: entry_test.sh SOURCE_DIR PYTHON
set -eu
source=$1
python=$2
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"

mkdir -p "$work/tree/.ci" "$work/tree/tools" "$work/bin"
cp "$source/quickstart" "$source/check" "$work/tree"
cp "$source/.ci/packages" "$work/tree/.ci"
cd "$work/tree"
export FAILING=""

# program FILE: creates a program from standard input.
program() {
  { echo "#!/bin/sh"; cat; } >"$1"
  chmod +x "$1"
}
echo 'echo installed' | program "$work/bin/dpkg-query"
echo 'exit 1' | program "$work/bin/apt-get"
program "$work/bin/cmake" <<'END'
echo "cmake $*"
[ "$FAILING" != "$*" ] || { echo "error: $*" >&2; exit 1; }
[ "$1" = --build ] || exit 0
echo '[ 10%] Building CXX object src/first.cpp.o'
echo 'warning: [50%]'
echo '[ 90%] Linking CXX shared library library.so'
echo '[100%] Built target library'
mkdir -p build/quickstart/examples/almanac
printf '#!/bin/sh\necho "almanac: $*"\n' >build/quickstart/examples/almanac/almanac
chmod +x build/quickstart/examples/almanac/almanac
END
program "$work/bin/ctest" <<'END'
echo "ctest $*"
mkdir -p "build/$2/Testing/Temporary"
printf '[  PASSED  ] %d tests.\n' 2 3 >"build/$2/Testing/Temporary/LastTest.log"
[ "$FAILING" != "ctest $2" ]
END
echo 'echo lint' | program tools/lint
PATH=$work/bin:$PATH

# lines LINE...: prints lines as a terminal gets them.
lines() {
  printf '%s\r\n' "$@"
}

# expect WHAT STATUS COMMAND...: expects this exit status, and on standard output and standard error the lines of
# standard input. "N s" stands for every number of seconds.
expect() {
  what=$1
  expected_status=$2
  shift 2
  cat >"$work/expected"
  status=0
  "$@" >"$work/out" 2>&1 </dev/null || status=$?
  sed 's/ *[0-9][0-9]* s\(,\|$\|  \)/ N s\1/' "$work/out" | diff "$work/expected" - >"$work/difference" ||
    fail "$what" "$work/difference"
  [ "$status" -eq "$expected_status" ] || fail "$what: exit status $status"
}

almanac="build/quickstart/examples/almanac/almanac --place Europe/Amsterdam --from 2026-06-01 --days 14 --verbose"
expect "quickstart without a terminal" 0 ./quickstart <<END
Building (about a minute), log in build/quickstart.log ...
...
Built build/quickstart/libzn_udf.so.1 and the examples
\$ $almanac
almanac: ${almanac#* }
END
{
  lines "Building (about a minute), log in build/quickstart.log ..."
  printf '\r%s %-50s' '[ 10%]' first.cpp.o '[ 90%]' "Linking CXX shared library library.so" \
    '[100%]' "Built target library"
  lines "" "Built build/quickstart/libzn_udf.so.1 and the examples" "\$ $almanac" "almanac: ${almanac#* }"
} >terminal
expect "quickstart on a terminal" 0 "$python" "$source/tests/support/pseudo_terminal.py" ./quickstart <terminal
expect "the log" 0 cat build/quickstart.log <<'END'
cmake --preset quickstart
cmake --build --preset quickstart
[ 10%] Building CXX object src/first.cpp.o
warning: [50%]
[ 90%] Linking CXX shared library library.so
[100%] Built target library
The build is complete
END
expect "the reference" 0 ./quickstart docs <<'END'
Building (about a minute), log in build/quickstart.log ...
...
Built the API reference: build/quickstart/docs/html/index.html
END
FAILING="--preset quickstart"
expect "a failed configuration" 1 ./quickstart <<'END'
Building (about a minute), log in build/quickstart.log ...

cmake --preset quickstart
error: --preset quickstart
END
FAILING="--build --preset quickstart"
expect "a failed build" 1 ./quickstart <<'END'
Building (about a minute), log in build/quickstart.log ...

cmake --preset quickstart
cmake --build --preset quickstart
error: --build --preset quickstart
END
FAILING=""

expect "check of two presets" 0 ./check release clang <<'END'
== 2 to run: release clang
== release (1 of 2)
cmake --preset release
cmake --build --preset release
[ 10%] Building CXX object src/first.cpp.o
warning: [50%]
[ 90%] Linking CXX shared library library.so
[100%] Built target library
ctest --preset release
figure release_programs 2
figure release_cases 5
== release (1 of 2): N s, passed
== clang (2 of 2)
cmake --preset clang
cmake --build --preset clang
[ 10%] Building CXX object src/first.cpp.o
warning: [50%]
[ 90%] Linking CXX shared library library.so
[100%] Built target library
ctest --preset clang
figure clang_programs 2
figure clang_cases 5
== clang (2 of 2): N s, passed
== Summary
release N s  passed
clang N s  passed
END
FAILING="ctest release"
expect "check with a failed test" 1 ./check release lint <<'END'
== 2 to run: release lint
== release (1 of 2)
cmake --preset release
cmake --build --preset release
[ 10%] Building CXX object src/first.cpp.o
warning: [50%]
[ 90%] Linking CXX shared library library.so
[100%] Built target library
ctest --preset release
figure release_programs 2
figure release_cases 5
== release (1 of 2): N s, FAILED
== lint (2 of 2)
lint
== lint (2 of 2): N s, passed
== Summary
release N s  FAILED
lint N s  passed
Failed: release
END
echo "quickstart and check print their progress"
