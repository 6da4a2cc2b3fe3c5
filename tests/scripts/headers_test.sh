#!/bin/sh
# Tests that each public header compiles as the first include of a program, with both compilers, as C++17 and C++20,
# with and without exceptions, without a warning, and does not include <regex>. Each header rejects _GLIBCXX_DEBUG.
# Include guards of the host do not change what the headers declare. Every macro that a public or private header defines
# begins with ZN_.
# usage: headers_test.sh INCLUDE_DIR
set -u
include=$1
log=$(mktemp)
trap 'rm -f "$log"' EXIT
checked=0
failed=0

# Prints the include guards that a host may have in headers of the same names: TOKENIZER_H, STR_H_, ...
host_guards() {
  for header in "$include"/*.h; do
    stem=$(basename "$header" .h | tr '[:lower:]' '[:upper:]')
    for name in "$stem" "${stem#ZN_}"; do
      printf '%s\n' "${name}_H" "${name}_H_" "${name}_HPP" "${name}_H_INCLUDED" "INCLUDED_${name}_H"
    done
  done | grep -v '^ZN_'
}

# Prints the macros that the public and the private headers define, one on each line.
own_macros() {
  find "$include" "$include/../src" -name '*.h' \
    -exec sed -n 's/^[[:blank:]]*#[[:blank:]]*define[[:blank:]]\{1,\}\([A-Za-z0-9_]*\).*/\1/p' {} +
}

# Prints all headers as a host sees them that compiles with the given options.
declarations() {
  for header in "$include"/*.h; do printf '#include <%s>\n' "${header##*/}"; done |
    "$compiler" -std=c++17 "$@" -I"$include" -E -P -x c++ -
}

# compile HEADER OPTION...: compiles a program that includes the header, with warnings as errors.
compile() {
  header_name=$1
  shift
  printf '#include <%s>\nint main() {}\n' "$header_name" |
    "$compiler" -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Weffc++ -Wnon-virtual-dtor -Wundef -Werror "$@" \
      -I"$include" -fsyntax-only -x c++ -
}

for header in "$include"/*.h; do
  name=${header##*/}
  for compiler in g++ clang++; do
    for standard in c++17 c++20; do
      checked=$((checked + 1))
      # -M lists every file that the compiler reads.
      if ! files=$(compile "$name" -std=$standard 2>&1 &&
        printf '#include <%s>\n' "$name" | "$compiler" -std=$standard -I"$include" -M -x c++ - 2>&1); then
        echo "FAILED: $name, $compiler -std=$standard: $files"
        failed=$((failed + 1))
      elif printf '%s\n' "$files" | tr ' ' '\n' | grep -qx '.*/regex'; then
        echo "FAILED: $name includes <regex> ($compiler -std=$standard)"
        failed=$((failed + 1))
      fi
    done
    checked=$((checked + 2))
    if ! compile "$name" -std=c++17 -fno-exceptions -D_GLIBCXX_ASSERTIONS >"$log" 2>&1; then
      echo "FAILED: $name, $compiler -fno-exceptions -D_GLIBCXX_ASSERTIONS: $(cat "$log")"
      failed=$((failed + 1))
    fi
    if compile "$name" -std=c++17 -D_GLIBCXX_DEBUG >"$log" 2>&1 ||
      ! grep -q 'error: .*zn_udf cannot be used with _GLIBCXX_DEBUG' "$log"; then
      echo "FAILED: $name does not reject _GLIBCXX_DEBUG ($compiler)"
      failed=$((failed + 1))
    fi
  done
done

# shellcheck disable=SC2046
for compiler in g++ clang++; do
  checked=$((checked + 1))
  plain=$(declarations) || failed=$((failed + 1))
  guarded=$(declarations $(host_guards | sed 's/^/-D/')) || failed=$((failed + 1))
  if [ -z "$plain" ] || [ "$plain" != "$guarded" ]; then
    echo "FAILED: an include guard of the host hides a header ($compiler)"
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
