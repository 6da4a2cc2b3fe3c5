#!/bin/sh
# Each public header compiles as the first include of a program, with both compilers, as C++17 and C++20, without a
# warning, and brings no <regex> with it.
# usage: headers_test.sh INCLUDE_DIR
set -u
include=$1
checked=0
failed=0
for header in "$include"/*.h; do
  name=${header##*/}
  for compiler in g++ clang++; do
    for standard in c++17 c++20; do
      checked=$((checked + 1))
      # -M lists every file that was read.
      if ! files=$(printf '#include <%s>\nint main() {}\n' "$name" |
        "$compiler" -std=$standard -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -I"$include" \
          -fsyntax-only -x c++ - 2>&1 &&
        printf '#include <%s>\n' "$name" | "$compiler" -std=$standard -I"$include" -M -x c++ - 2>&1); then
        echo "FAILED: $name, $compiler -std=$standard: $files"
        failed=$((failed + 1))
      elif printf '%s\n' "$files" | tr ' ' '\n' | grep -qx '.*/regex'; then
        echo "FAILED: $name includes <regex> ($compiler -std=$standard)"
        failed=$((failed + 1))
      fi
    done
  done
done
echo "$checked compilations, $failed failed"
[ "$checked" -gt 0 ] && [ "$failed" -eq 0 ]
