#!/bin/sh
# Builds the library and the tests so that they count what they run, runs the tests, and tells for each source of the
# library how many of its lines and branches were reached, and which were not. usage: tests/coverage.sh
set -eu
cd "$(dirname "$0")/.."
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
