# The files of --output. Sourced by almanac_test.sh.

run --latitude -20.5 --from 2026-06-01
mv out south

# write ANSWER ARGUMENT...: runs the almanac for a southern place with the answer on standard input.
write() {
  # The answer may contain \n.
  # shellcheck disable=SC2059
  printf "$1" >answer
  shift
  run --latitude -20.5 --from 2026-06-01 "$@" <answer
}

# expect_files NAME OUTPUT FILE...: expects success without a message, this output, and these files in `files`.
expect_files() {
  name=$1
  output=$2
  shift 2
  { echo "exit status $status"; cat err out; ls files; } >why
  [ "$status" -eq 0 ] && [ ! -s err ] && [ "$(cat out)" = "$output" ] && [ "$(cd files && echo *)" = "$*" ]
  report "$name" $? why
}

# expect_kept_file NAME MESSAGE FILE: expects an error, and a file that still contains "old".
expect_kept_file() {
  { echo "exit status $status"; cat err out "$3"; } >why
  [ "$status" -eq 1 ] && is_error "$2" && [ "$(cat "$3")" = old ]
  report "$1" $? why
}

mkdir files
write '' --output files/t.txt
expect_files "a new file" '' t.txt
cmp -s files/t.txt south
report "the table is in the file" $? files/t.txt

for answer in '' '\n' 'n\n' 'maybe\n' ' y\n'; do
  echo old >files/t.txt
  write "$answer" --output files/t.txt
  expect_kept_file "kept when the answer is '$answer'" 'kept "files/t.txt" as it was$' files/t.txt
done
for answer in 'y\n' 'Y' 'yes\n'; do
  echo old >files/t.txt
  write "$answer" --output files/t.txt
  expect_files "overwritten after the answer '$answer'" '' t.txt
  cmp -s files/t.txt south
  report "the table is in the file after the answer '$answer'" $? files/t.txt
done

echo old >files/t.txt
write '' --output files/t.txt --backup
expect_files "with a backup" '' t.txt t.txt~
cmp -s files/t.txt south && [ "$(cat files/t.txt~)" = old ]
report "the backup contains the old file" $?
rm files/t.txt~
mkdir -p files/t.txt~/full
echo old >files/t.txt
write '' --output files/t.txt --backup
expect_kept_file "a backup that cannot be made" 'cannot move "files/t.txt" to its backup' files/t.txt
rm -r files/t.txt~

write '' --output files/t.txt --number
expect_files "with a number" files/t-1.txt t-1.txt t.txt
cmp -s files/t-1.txt south && [ "$(cat files/t.txt)" = old ]
report "the numbered file contains the table" $?
echo old >files/t-1.txt
# The name is written to standard output before the question.
write 'n' --output files/t.txt --number
: >out
expect_kept_file "a numbered file that exists" 'kept "files/t-1.txt" as it was$' files/t-1.txt
write '' --output files/t.txt --number --backup
expect_files "with a number and a backup" files/t-1.txt t-1.txt t-1.txt~ t.txt
[ "$(cat files/t-1.txt~)" = old ] && [ "$(cat files/t.txt)" = old ]
report "the backup contains the old numbered file" $?
rm -r files
mkdir -p files/sub
write '' --output files/new.txt --number --verbose
expect_files "no number if the name is free" 'Wrote "files/new.txt"' new.txt sub
[ "$(head -n 1 files/new.txt)" = '[Day length and moon at latitude 20:30 S]' ] && [ "$(wc -l <files/new.txt)" -eq 9 ]
report "a heading in the file with --verbose" $? files/new.txt
# The program, not the shell, finds the home directory.
# shellcheck disable=SC2088
write '' --output '~/t.txt'
cmp -s "$HOME/t.txt" south
report "a file in the home directory" $? err
write '' --output 'files\sub\t.txt'
cmp -s files/sub/t.txt south
report "a backslash separates directories" $? err

expect_error "a file in a missing directory" 1 'cannot open "missing/t.txt": No such file' --latitude 5 --output missing/t.txt
expect_error "a directory as a file" 1 'cannot open "files/sub/": Is a directory' --latitude 5 --output files/sub/
expect_error "no name" 1 'cannot open "": No such file' --latitude 5 --output ''
expect_error "a name in two lines" 1 'cannot open "": No such file' --latitude 5 --output 'a
b'
for days in 1 36600; do
  expect_error "a full device, $days days" 1 'cannot write all of "/dev/full"$' \
    --latitude 5 --from 2026-06-01 --days $days --output /dev/full --backup
done
expect_error "a full device, picture" 1 'cannot write all of "/dev/full"$' --latitude 5 --svg /dev/full
expect_error "invalid values are reported before files" 1 'the number of days' --latitude 5 --days 0 --output files/none.txt
[ ! -e files/none.txt ]
report "an invalid value writes nothing" $?
expect_error "--backup without a file" 2 'need a file' --latitude 5 --backup
expect_error "--number without a file" 2 'need a file' --latitude 5 --number
expect_error "--backup of standard output" 2 'need a file' --latitude 5 --svg - --backup
expect_error "table in a file and picture in standard output" 2 'cannot be combined' \
  --latitude 5 --svg - --output files/none.txt
