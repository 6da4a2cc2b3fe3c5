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

packages="googletest libclang-rt-dev qemu-user"
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

echo "== x86-64: answers"
cmake --preset release
cmake --build --preset release --target record_answers

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

# ctest writes "N/M Testing: NAME" before the output of a test.
echo "figure corpus_files $(find fuzz/corpus -type f | wc -l)"
for preset in "$@"; do
  awk -v machine="$preset" '
    / Testing: / {test = $3}
    /^Test Passed/ {++tests}
    /^\[       OK \] / {++cases}
    / answers are the same$/ {answers[test ~ /_fuzz$/ ? "fuzzers" : substr(test, length("answers_") + 1)] += $1}
    END {
      print "figure " machine "_tests " tests + 0
      print "figure " machine "_test_cases " cases + 0
      for (group in answers) print "figure " machine "_answers_" group " " answers[group]
    }' "build/$preset/Testing/Temporary/LastTest.log"
done
if [ -n "$failed" ]; then
  echo "Failed:$failed" >&2
  exit 1
fi
