#!/bin/sh
# Each public header compiles as the first include of a program, with both compilers, as C++17 and C++20, without a
# warning, and brings no <regex> with it. It declares the same where the host has macros of its own with the names of
# headers. Every macro that a public or private header defines begins with ZN_.
# usage: headers_test.sh INCLUDE_DIR
set -u
include=$1
checked=0
failed=0

# The guards that a host may have in headers of the same names: TOKENIZER_H, STR_H_, ...
host_guards() {
  for header in "$include"/*.h; do
    stem=$(basename "$header" .h | tr '[:lower:]' '[:upper:]')
    for name in "$stem" "${stem#ZN_}"; do
      printf '%s\n' "${name}_H" "${name}_H_" "${name}_HPP" "${name}_H_INCLUDED" "INCLUDED_${name}_H"
    done
  done | grep -v '^ZN_'
}

# The macros that the public and the private headers define, one a line.
own_macros() {
  find "$include" "$include/../src" -name '*.h' \
    -exec sed -n 's/^[[:blank:]]*#[[:blank:]]*define[[:blank:]]\{1,\}\([A-Za-z0-9_]*\).*/\1/p' {} +
}

# What a host sees of all headers, with the options given.
declarations() {
  for header in "$include"/*.h; do printf '#include <%s>\n' "${header##*/}"; done |
    "$compiler" -std=c++17 "$@" -I"$include" -E -P -x c++ -
}

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

# shellcheck disable=SC2046
for compiler in g++ clang++; do
  checked=$((checked + 1))
  plain=$(declarations) || failed=$((failed + 1))
  guarded=$(declarations $(host_guards | sed 's/^/-D/')) || failed=$((failed + 1))
  if [ -z "$plain" ] || [ "$plain" != "$guarded" ]; then
    echo "FAILED: a macro of the host's hides a header ($compiler)"
    failed=$((failed + 1))
  fi
done

macros=$(own_macros)
foreign=$(printf '%s\n' "$macros" | grep -v '^ZN_')
if [ -z "$macros" ] || [ -n "$foreign" ]; then
  echo "FAILED: macros that do not begin with ZN_: $foreign"
  failed=$((failed + 1))
fi
echo "$checked compilations, $failed failed"
[ "$checked" -gt 0 ] && [ "$failed" -eq 0 ]
