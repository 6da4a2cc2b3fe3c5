# Invalid options, and output that cannot be written. Sourced by almanac_test.sh.

# ---- The command line

expect_error "no place" 2 'one of --place and --latitude'
expect_error "only the place is missing" 2 'one of --place and --latitude' --from 2026-06-01 --days 3 --places "$places"
expect_error "place and latitude" 2 'one of --place and --latitude' --place Europe/Amsterdam --latitude 52
expect_error "unknown option" 2 'unknown .*"--bogus"' --latitude 52 --bogus
expect_error "unknown short option" 2 'unknown .*"-x"' --latitude 52 -x
expect_error "unknown short options" 2 'unknown .*"-x"' -xyz --latitude 52
expect_error "ambiguous option" 2 'ambiguous .*"--ver"' --latitude 52 --ver
expect_error "option in two lines" 2 'unknown' --latitude 52 '--bo
gus'
expect_error "value for an option without one" 2 'no value .*"--verbose=yes"' --latitude 52 --verbose=yes
for option in place places latitude from order days format; do
  expect_error "missing argument of --$option" 2 "missing argument after \"--$option\"" --latitude 52 --$option
done
for order in '' DMY dym x; do
  expect_error "order '$order'" 2 'for --order' --latitude 52 --order "$order"
done
for format in '' ISO long x; do
  expect_error "format '$format'" 2 'for --format' --latitude 52 --format "$format"
done
expect_error "stray operand" 2 'stray argument "30"' --latitude 52 30
expect_error "stray operand before the options" 2 'stray argument "30"' 30 --latitude 52
expect_error "stray operand after --" 2 'stray argument "--days"' --latitude 52 -- --days
expect_error "wrong usage before wrong values" 2 'one of --place and --latitude' --days x --from y
expect_error "errors with --verbose" 1 'there is no date' --latitude 52 --from 2024-02-30 --verbose

# ---- Output that cannot be written

run --latitude 52 --from 2026-01-01 --days 1
mv out one_row
many="--latitude 52 --from 2026-01-01 --days 36600"
# shellcheck disable=SC2086
{ "$almanac" $many 2>err; echo $? >status; } | head -n 1 >first
expect_silent_pipe "broken pipe"
# shellcheck disable=SC2086
(trap '' PIPE; { "$almanac" $many 2>err; echo $? >status; } | head -n 1 >first)
expect_silent_pipe "broken pipe, signal ignored by the parent"

# expect_lost NAME: expects the error of a failed write in `err` and `status`.
expect_lost() {
  { echo "exit status $status"; cat err; } >why
  [ "$status" -eq 1 ] && is_error 'cannot write to standard output$'
  report "$1" $? why
}
for arguments in '--latitude 52' "$many" '--latitude 52 --verbose' '--latitude 52 --svg -' --help --version; do
  # shellcheck disable=SC2086
  "$almanac" $arguments >/dev/full 2>err
  status=$?
  expect_lost "full device: $arguments"
  # shellcheck disable=SC2086
  "$almanac" $arguments >&- 2>err
  status=$?
  expect_lost "closed standard output: $arguments"
done
{
  # The pipe has no reader when the picture is written.
  while [ ! -e closed ]; do :; done
  "$almanac" --latitude 52 --svg - 2>err
  echo $? >status
} | { exec <&-; : >closed; }
[ "$(cat status)" -eq 141 ] && [ ! -s err ]
report "broken pipe, picture" $? err

"$almanac" --place Europe/Amsterdam --places "$places" >&- 2>err
status=$?
expect_lost "closed standard output: --place"
