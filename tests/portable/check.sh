#!/bin/sh
# Builds the library and the tests for other machines and runs them there, natively where this machine's kernel can, else
# under qemu-user. Lists by name what cannot run so. usage: check.sh [PRESET...]   (default: i386 armhf arm64)
set -eu
cd "$(dirname "$0")/../.."
. .ci/packages

if [ "$(uname -m)" != x86_64 ]; then
  echo "The other machines' answers are compared with those of x86-64, and this is $(uname -m)." >&2
  exit 1
fi
[ $# -gt 0 ] || set -- i386 armhf arm64

packages="googletest qemu-user"
for preset in "$@"; do
  case $preset in
    arm64) compiler=aarch64-linux-gnu ;;
    armhf) compiler=arm-linux-gnueabihf ;;
    i386) compiler=i686-linux-gnu ;;
    *) echo "$preset is no other machine" >&2; exit 2 ;;
  esac
  packages="$packages g++-$compiler libexpat1-dev:$preset libedit-dev:$preset libstdc++6:$preset"
done
need_architectures "$@"
# shellcheck disable=SC2086
need_packages $packages

echo "== x86-64, its answers"
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
  echo "== $preset, what did not run"
  sed 's/^/the test /' "build/$preset/left_out.txt"
  # GoogleTest's lines, each a "file:line: Skipped", the reason, and the name.
  awk '
    /: Skipped$/ {getline reason}
    /^\[  SKIPPED \] [^ ]+ \(/ {print $4 ": " reason}' "build/$preset/Testing/Temporary/LastTest.log" | sort -u
done
if [ -n "$failed" ]; then
  echo "Failed:$failed" >&2
  exit 1
fi
