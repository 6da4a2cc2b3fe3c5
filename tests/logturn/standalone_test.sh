#!/bin/sh
# Tests that examples/logturn is a project of its own: a copy of the folder builds with an installed library, passes its
# tests, and can be installed.
# usage: standalone_test.sh SOURCE_DIR BUILD_DIR COMPILER [FLAGS]
set -eu
source=$1
build=$2
compiler=$3
shift 3
flags="$*"
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"

quietly "installing the library" cmake --install "$build" --prefix "$work/library"
cp -r "$source/examples/logturn" "$work/copy"
quietly "finding the library" cmake -S "$work/copy" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/library" \
  -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags -Werror"
quietly "building" cmake --build "$work/build" -j 2
(cd "$work/build" && quietly "the tests" ctest --output-on-failure)
grep -q '^[1-9][0-9]* cases, 0 failed$' "$work/build/Testing/Temporary/LastTest.log" || fail "no case was tested"
quietly "installing" cmake --install "$work/build" --prefix "$work/installed"
[ -e "$work/installed/share/man/man1/logturn.1" ] || fail "the manual is not installed"
echo "built, tested and installed"

# The installed program finds the library and its messages, and prints what the folder's README shows.
rm -r "$work/build" "$work/copy"
cd "$work"
printf '%052d' 0 >app.log
printf '%021d' 0 >app.log.1
printf '%017d' 0 >app.log.2
awk '/^```/ {inside = /^```text/; next} inside' "$source/examples/logturn/README.md" >shown
command=$(sed -n '1s/^\$ logturn //p' shown)
# The arguments are separate words.
# shellcheck disable=SC2086
env -u LD_LIBRARY_PATH HOME="$work" installed/bin/logturn $command >printed 2>&1 || fail "the installed program" printed
sed 1d shown | diff - printed || fail "the table in examples/logturn/README.md"
if env -u LD_LIBRARY_PATH HOME="$work" installed/bin/logturn missing >printed 2>&1; then
  fail "a missing log" printed
fi
grep -q '^ERROR: #23	cannot open "missing": No such file' printed || fail "the installed messages" printed
echo "the installed program"
