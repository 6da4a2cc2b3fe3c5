#!/bin/sh
# Measures which lines and branches of the library the tests reach, and fails if they miss any. With "libcxx", measures
# the source that differs in builds with libc++. Run it as root: otherwise, the tests of owners and mounts are skipped.
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
  rm -f $build/*.profraw
  for test in $tests; do
    LLVM_PROFILE_FILE=$build/$test.profraw "$build/tests/$test"
  done
  "$(clang++ -print-prog-name=llvm-profdata)" merge -o $build/all.profdata $build/*.profraw
  "$(clang++ -print-prog-name=llvm-cov)" report $build/libzn_udf.so.1 -instr-profile=$build/all.profdata |
    awk '
      /^Filename/ || /internal\/patterns/
      /internal\/patterns/ {
        lines = $8; lines_reached = $8 - $9
        branches = $11; branches_reached = $11 - $12
      }
      END {
        print "figure libcxx_lines " lines_reached " of " lines
        print "figure libcxx_branches " branches_reached " of " branches
        exit !lines || lines_reached < lines || branches_reached < branches
      }'
  exit
fi

cmake --preset coverage
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
# Tests run parts of the library without the privileges of root, and those processes write their counters too.
(umask 0 && build/coverage/tests/zn_moonphase_test --gtest_list_tests >build/coverage/tests.txt)
# The preset leaves out a test that expects _exit() not to write buffered output, since this _exit() does, and tests that
# kill processes at any time: one that is killed while it writes its counters leaves a file that no other can add to.
ctest --preset coverage

# Left out are branches that cannot be measured:
# - those that only exceptions take, since nearly every call has one;
# - those of compiler-generated code on lines without source code;
# - those of assertions. A test triggers each of them, but abort() ends the process without writing the counters.
# A comment beside each mark "GCOVR_EXCL_" in the source gives the reason for the branches that it leaves out.
gcovr --root . --filter src/udf --filter include --exclude-throw-branches --exclude-unreachable-branches \
  --exclude-branches-by-pattern ' *assert\(' --json build/coverage/coverage.json build/coverage
report() {
  gcovr --root . --add-tracefile build/coverage/coverage.json "$@"
}
report --html-details build/coverage/coverage.html
report
status=0
report --branches --print-summary --fail-under-line 100 --fail-under-branch 100 >build/coverage/summary.txt || status=$?
cat build/coverage/summary.txt
echo "Details: build/coverage/coverage.html"
sed -n 's/^\(lines\|branches\): .*(\([0-9]*\) out of \([0-9]*\)).*/figure \1 \2 of \3/p' build/coverage/summary.txt
count() { # count PATTERN: prints in how many lines of the measured files the pattern occurs
  grep -Er "$1" src/udf include | wc -l
}
echo "figure excluded_marks $(count 'GCOVR_EXCL_(BR_)?(LINE|START)')"
echo "figure excluded_assertions $(count '^ *assert\(')"
exit "$status"
