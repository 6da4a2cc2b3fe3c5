#!/bin/sh
# A machine on which the answers would differ is refused as the library is compiled, with a message that says why; others
# are not. Takes no headers of these machines, only a compiler that knows them all.
# usage: refusals_test.sh SOURCE_DIR
set -eu
source=$1
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"

compile() { # compile TARGET [FLAG...]
  target=$1
  shift
  clang++ "--target=$target" "$@" -std=c++17 -fsyntax-only -x c++ "$source/src/udf/internal/machine.h" >"$work/log" 2>&1
}

refuses() { # refuses MESSAGE TARGET [FLAG...]
  message=$1
  shift
  if compile "$@"; then fail "$* is not refused"; fi
  grep -q "error:.*zn_udf $message" "$work/log" || fail "the message for $*" "$work/log"
}

takes() { # takes TARGET [FLAG...]
  compile "$@" || fail "$* is refused" "$work/log"
}

for target in s390x-linux-gnu powerpc64-linux-gnu armeb-linux-gnueabi mips-linux-gnu; do
  refuses "supports little-endian hosts only" $target
done
refuses "needs double arithmetic without excess precision" i386-linux-gnu -mno-sse
refuses "needs double arithmetic without excess precision" i686-linux-gnu -mno-sse2
for target in x86_64-apple-macos10.15 x86_64-apple-macos12.0 arm64-apple-macos13.2; do
  refuses "needs macOS 13.3 or later" $target
done

for target in aarch64-linux-gnu arm-linux-gnueabihf powerpc64le-linux-gnu riscv64-linux-gnu; do
  refuses "orders the bytes in a pattern as signed characters" "$target"
  takes "$target" -fsigned-char
done
takes i686-linux-gnu -msse2 -mfpmath=sse
for target in x86_64-linux-gnu x86_64-unknown-freebsd13 x86_64-apple-macos13.3 arm64-apple-macos14.0; do
  takes $target
done
echo "Machines are refused, and taken, as they should be"
