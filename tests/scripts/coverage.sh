#!/bin/sh
# Builds the library and the tests so that they count what they run, runs the tests, and tells for each source of the
# library how many of its lines and branches were reached, and which were not. With "libcxx", does so for the one source
# that only builds with libc++ have. usage: tests/scripts/coverage.sh [libcxx]
set -eu
cd "$(dirname "$0")/../.."

if [ "${1:-}" = libcxx ]; then
  build=build/coverage_libcxx
  # The tests of what compiles patterns.
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
    grep -e '^Filename' -e zn_pattern_libcxx
  exit 0
fi

cmake --preset coverage
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
# Without a test that sees _exit() write what is buffered: the one that counts does.
ctest --preset coverage
report() { # report OPTION...: no branches that only an exception takes, since nearly every call has one
  gcovr --root . --filter src/udf --filter include --exclude-throw-branches --exclude-unreachable-branches "$@" \
    build/coverage
}
report
report --branches
report --html-details build/coverage/coverage.html
echo "Line by line: build/coverage/coverage.html"
