#!/bin/sh
# Measures which lines and branches of the library the tests reach. With "libcxx", measures the source that differs in
# builds with libc++.
# usage: tests/scripts/coverage.sh [libcxx]
set -eu
cd "$(dirname "$0")/../.."

if [ "${1:-}" = libcxx ]; then
  build=build/coverage_libcxx
  # The tests of functions that compile patterns.
  tests="tokenizer_test zn_dir_test zn_ip_test"
  cmake --preset libcxx -B $build -DZN_UDF_EXAMPLES=OFF \
    -DCMAKE_CXX_FLAGS="-stdlib=libc++ -fprofile-instr-generate -fcoverage-mapping"
  # shellcheck disable=SC2086
  cmake --build $build -j 2 --target $tests
  for test in $tests; do
    LLVM_PROFILE_FILE=$build/$test.profraw "$build/tests/$test"
  done
  "$(clang++ -print-prog-name=llvm-profdata)" merge -o $build/all.profdata $build/*.profraw
  "$(clang++ -print-prog-name=llvm-cov)" report $build/libzn_udf.so.1 -instr-profile=$build/all.profdata |
    grep -e '^Filename' -e internal/patterns
  exit 0
fi

cmake --preset coverage
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
# The preset leaves out a test that expects _exit() not to write buffered output, since this _exit() does.
ctest --preset coverage
report() { # report OPTION...: leaves out branches that only exceptions take, since nearly every call has one
  gcovr --root . --filter src/udf --filter include --exclude-throw-branches --exclude-unreachable-branches "$@" \
    build/coverage
}
report
report --branches
report --html-details build/coverage/coverage.html
echo "Details: build/coverage/coverage.html"
