#!/bin/sh
# Tests the example program almanac: its tables, settings, files, pictures, errors and exit statuses. The scripts beside
# this one contain the cases.
# usage: almanac_test.sh PATH_TO_ALMANAC
set -u
if [ $# -ne 1 ] || [ ! -x "$1" ]; then
  echo "usage: $0 PATH_TO_ALMANAC" >&2
  exit 2
fi
almanac=$(CDPATH='' cd -- "$(dirname -- "$1")" && pwd)/$(basename -- "$1")
data=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
mkdir home
export HOME="$work/home"
unset XDG_CONFIG_HOME

checked=0
failed=0

# report NAME STATUS [FILE]: counts a case, which succeeds with status 0. The file describes a failure.
report() {
  checked=$((checked + 1))
  [ "$2" -eq 0 ] && return
  failed=$((failed + 1))
  echo "FAILED: $1"
  if [ $# -gt 2 ]; then cat "$3"; fi
}

# run ARGUMENT...: leaves the output in `out`, the messages in `err` and the exit status in `status`.
run() {
  "$almanac" "$@" >out 2>err
  status=$?
}

# expect_table NAME EXPECTED_FILE ARGUMENT...: expects success with exactly this output, and no message.
expect_table() {
  name=$1
  expected=$2
  shift 2
  run "$@"
  { echo "exit status $status"; cat err; diff "$expected" out; } >why 2>&1
  [ "$status" -eq 0 ] && [ ! -s err ] && cmp -s "$expected" out
  report "$name" $? why
}

# expect_stored NAME ARGUMENT...: expects the output NAME.txt.
expect_stored() {
  name=$1
  shift
  expect_table "$name" "$data/$name.txt" "$@"
}

# expect_error NAME STATUS PATTERN ARGUMENT...: expects this exit status, no output, and on standard error one line with
# an error that matches the pattern.
expect_error() {
  name=$1
  expected_status=$2
  pattern=$3
  shift 3
  run "$@"
  { echo "exit status $status, standard error:"; cat err; echo "standard output:"; head -n 3 out; } >why
  [ "$status" -eq "$expected_status" ] && [ ! -s out ] && is_error "$pattern"
  report "$name" $? why
}

# is_error PATTERN: succeeds if `err` is one line with a numbered error that matches the pattern.
is_error() {
  sed -n 's/^ERROR: #\([0-9]*\)	.*/\1/p' err >>seen
  [ "$(wc -l <err)" -eq 1 ] && [ -z "$(tail -c 1 err)" ] && grep -q '^ERROR: #[0-9][0-9]*	' err && grep -qe "$1" err
}

# expect_silent_pipe NAME: expects that a pipeline left one row in `first` and ended by SIGPIPE without a message.
expect_silent_pipe() {
  { echo "exit status $(cat status)"; cat err first; } >why
  [ "$(cat status)" -eq 141 ] && [ ! -s err ] && cmp -s first one_row
  report "$1" $? why
}

# shellcheck disable=SC2034  # The parts use it.
places=$data/places.tab
for part in tables places command_line settings files pictures messages; do
  # shellcheck source=/dev/null
  . "$data/$part.sh"
done

echo "$checked cases, $failed failed"
[ "$failed" -eq 0 ]
