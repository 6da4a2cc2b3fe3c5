#!/bin/sh
# Tests that the library does not compile for machines on which its results would differ, and that the error names the
# reason. Needs no headers of these machines, only a compiler that supports them all.
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

rejects() { # rejects MESSAGE TARGET [FLAG...]
  message=$1
  shift
  if compile "$@"; then fail "$* is not rejected"; fi
  grep -q "error:.*zn_udf $message" "$work/log" || fail "the message for $*" "$work/log"
}

accepts() { # accepts TARGET [FLAG...]
  compile "$@" || fail "$* is rejected" "$work/log"
}

for target in s390x-linux-gnu powerpc64-linux-gnu armeb-linux-gnueabi mips-linux-gnu; do
  rejects "supports little-endian hosts only" $target
done
rejects "needs double arithmetic without excess precision" i386-linux-gnu -mno-sse
rejects "needs double arithmetic without excess precision" i686-linux-gnu -mno-sse2
for target in x86_64-apple-macos10.15 x86_64-apple-macos12.0 arm64-apple-macos13.2; do
  rejects "needs macOS 13.3 or later" $target
done

for target in aarch64-linux-gnu arm-linux-gnueabihf powerpc64le-linux-gnu riscv64-linux-gnu; do
  rejects "orders the bytes in a pattern as signed characters" "$target"
  accepts "$target" -fsigned-char
done
accepts i686-linux-gnu -msse2 -mfpmath=sse
for target in x86_64-linux-gnu x86_64-unknown-freebsd13 x86_64-apple-macos13.3 arm64-apple-macos14.0; do
  accepts $target
done
echo "The expected machines are rejected"
