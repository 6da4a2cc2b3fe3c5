#!/bin/sh
# Builds the library and the tests for other machines. Runs them natively if the kernel can, otherwise by qemu-user.
# Lists the tests that cannot run. usage: check.sh [PRESET...]   (default: i386 armhf arm64)
set -eu
cd "$(dirname "$0")/../.."
. .ci/packages

if [ "$(uname -m)" != x86_64 ]; then
  echo "The results of other machines are compared with those of x86-64, and this machine is $(uname -m)." >&2
  exit 1
fi
[ $# -gt 0 ] || set -- i386 armhf arm64

packages="googletest qemu-user"
for preset in "$@"; do
  case $preset in
    arm64) compiler=aarch64-linux-gnu ;;
    armhf) compiler=arm-linux-gnueabihf ;;
    i386) compiler=i686-linux-gnu ;;
    *) echo "unknown machine: $preset" >&2; exit 2 ;;
  esac
  packages="$packages g++-$compiler libexpat1-dev:$preset libedit-dev:$preset libstdc++6:$preset"
done
need_architectures "$@"
# shellcheck disable=SC2086
need_packages $packages

echo "== x86-64: results"
cmake --preset release
cmake --build --preset release --target answers
build/release/tests/answers >build/release/answers.txt

failed=""
for preset in "$@"; do
  echo "== $preset"
  cmake --preset "$preset"
  cmake --build --preset "$preset"
  ctest --preset "$preset" || failed="$failed $preset"
done

for preset in "$@"; do
  echo "== $preset: tests that did not run"
  sed 's/^/the test /' "build/$preset/left_out.txt"
  # GoogleTest prints "file:line: Skipped", then the reason, then the name.
  awk '
    /: Skipped$/ {getline reason}
    /^\[  SKIPPED \] [^ ]+ \(/ {print $4 ": " reason}' "build/$preset/Testing/Temporary/LastTest.log" | sort -u
done
if [ -n "$failed" ]; then
  echo "Failed:$failed" >&2
  exit 1
fi
