#!/bin/sh
# Tests logturn: what it does to logs and their copies, names of every kind, errors, settings and messages.
# usage: logturn_test.sh PATH_TO_LOGTURN
set -u
if [ $# -ne 1 ] || [ ! -x "$1" ]; then
  echo "usage: $0 PATH_TO_LOGTURN" >&2
  exit 2
fi
logturn=$(CDPATH='' cd -- "$(dirname -- "$1")" && pwd)/$(basename -- "$1")
source=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
work=$(mktemp -d) || exit 1
trap 'chmod -R u+rwx "$work"; rm -rf "$work"' EXIT
mkdir "$work/home" "$work/logs"
export HOME="$work/home"
unset XDG_CONFIG_HOME
cd "$work/logs" || exit 1
out=$work/out
err=$work/err
why=$work/why

checked=0
failed=0

# report NAME STATUS: counts a case, which succeeds with status 0. The file `why` describes a failure.
report() {
  checked=$((checked + 1))
  [ "$2" -eq 0 ] && return
  failed=$((failed + 1))
  echo "FAILED: $1"
  cat "$why"
}

# fresh [NAME=TEXT...]: leaves only these files, each with one line.
fresh() {
  chmod u+rwx .
  find . -mindepth 1 -delete
  for pair in "$@"; do printf '%s\n' "${pair#*=}" >"${pair%%=*}"; done
}

# state: prints the name and the text of each file, in the order of the names.
state() {
  for file in * .[!.]*; do
    if [ -f "$file" ]; then echo "$file=$(cat <"./$file")"; elif [ -e "$file" ]; then echo "$file"; fi
  done | LC_ALL=C sort
}

# run ARGUMENT...: leaves the output in `out`, the messages in `err` and the exit status in `status`.
run() {
  "$logturn" "$@" >"$out" 2>"$err"
  status=$?
}

# expect NAME LINE...: expects success without a message, and these files afterwards.
expect() {
  name=$1
  shift
  printf '%s\n' "$@" | LC_ALL=C sort >"$work/expected"
  state >"$work/found"
  { echo "exit status $status"; cat "$err"; diff "$work/expected" "$work/found"; } >"$why" 2>&1
  [ "$status" -eq 0 ] && [ ! -s "$err" ] && cmp -s "$work/expected" "$work/found"
  report "$name" $?
}

# expect_table NAME LINE...: expects this output.
expect_table() {
  name=$1
  shift
  printf '%s\n' "$@" | diff - "$out" >"$why"
  report "$name" $?
}

# expect_error NAME STATUS MESSAGE ARGUMENT...: expects one message with this text and this exit status, no output, and
# the same files as before.
expect_error() {
  name=$1
  expected_status=$2
  message=$3
  shift 3
  state >"$work/before"
  run "$@"
  is_error "$expected_status" "$message" && [ ! -s "$out" ] && state | diff "$work/before" - >>"$why"
  report "$name" $?
}

# is_error STATUS MESSAGE: succeeds if the last run printed this message only, after its number.
is_error() {
  { echo "exit status $status, standard error:"; cat "$err"; echo "standard output:"; cat "$out"; } >"$why"
  [ "$status" -eq "$1" ] && [ "$(wc -l <"$err")" -eq 1 ] &&
    sed -n 's/^ERROR: #[0-9][0-9]*	//p' "$err" | grep -qxF -e "$2"
}

# ---- Turning

fresh app.log=one
run app.log
expect "the first turn" app.log= app.log.1=one
expect_table "the table" 'file       action  name         bytes' '"app.log"  turned  "app.log.1"      4'
echo two >>app.log
run app.log
expect "the second turn" app.log= app.log.1=two app.log.2=one
run app.log
expect "an empty log" app.log= app.log.1=two app.log.2=one
expect_table "the table of an empty log" 'file       action      name       bytes' \
  '"app.log"  left empty  "app.log"      0'

fresh a.log=three a.log.1=two a.log.2=one
run --keep 2 --dry-run a.log
expect "a dry run" a.log=three a.log.1=two a.log.2=one
expect_table "the table of a dry run" 'file     action            name       bytes' \
  '"a.log"  would be turned   "a.log.1"      6' '"a.log"  would be removed  "a.log.3"      4'
touch -t 202403051407.09 time a.log a.log.1 a.log.2 .
run --dry-run a.log
find . -newer time >"$why"
[ ! -s "$why" ]
report "a dry run leaves the times" $?
rm time
run --keep 2 a.log
expect "the oldest copy is removed" a.log= a.log.1=three a.log.2=two
expect_table "the table of a removal" 'file     action   name       bytes' \
  '"a.log"  turned   "a.log.1"      6' '"a.log"  removed  "a.log.3"      4'
run --keep 1 a.log
expect "copies of an empty log are removed" a.log= a.log.1=three

fresh a.log=new a.log.1=1 a.log.2=2 a.log.3=3 a.log.4=4 a.log.5=5
run --keep 2 --verbose a.log
expect "several copies are removed" a.log= a.log.1=new a.log.2=1
expect_table "each step" 'Renamed "a.log.5" to "a.log.6"' 'Renamed "a.log.4" to "a.log.5"' \
  'Renamed "a.log.3" to "a.log.4"' 'Renamed "a.log.2" to "a.log.3"' 'Renamed "a.log.1" to "a.log.2"' \
  'Renamed "a.log.logturn" to "a.log.0"' 'Emptied "a.log"' 'Renamed "a.log.0" to "a.log.1"' \
  'Removed "a.log.6"' 'Removed "a.log.5"' 'Removed "a.log.4"' 'Removed "a.log.3"' \
  'file     action   name       bytes' \
  '"a.log"  turned   "a.log.1"      4' '"a.log"  removed  "a.log.6"      2' '"a.log"  removed  "a.log.5"      2' \
  '"a.log"  removed  "a.log.4"      2' '"a.log"  removed  "a.log.3"      2'

fresh a.log=new a.log.1=1 a.log.3=3 a.log.4=4
run a.log
expect "a missing number is filled" a.log= a.log.1=new a.log.2=1 a.log.3=3 a.log.4=4
fresh a.log=new a.log.1=1 a.log.3=3
run --keep 1 a.log
expect "the copies after a missing number count again" a.log= a.log.1=new
fresh a.log=new a.log.01=x a.log.20240305=x a.log.2024030520240305=x a.log.1.gz=x a.log.x=x a.log.=x a.log-1=x b.log.1=x
run --keep 1 a.log
expect "other files are kept" a.log= a.log-1=x a.log.=x a.log.01=x a.log.1=new a.log.1.gz=x a.log.20240305=x \
  a.log.2024030520240305=x a.log.x=x b.log.1=x

fresh a.log=one
exec 3>>a.log
run a.log
echo two >&3
run a.log
echo three >&3
exec 3>&-
expect "a program that appends continues in the log" a.log=three a.log.1=two a.log.2=one

fresh a.log=one
chmod 640 a.log
touch -t 202403051407.09 a.log
touch -r a.log time
run a.log
ls -l >"$why"
[ "$(find a.log.1 -perm 640 ! -newer time)" = a.log.1 ] && [ -z "$(find time -newer a.log.1)" ]
report "a copy has the permissions and the time of the log" $?

fresh
head -c 3000000 /dev/urandom >a.log
cp a.log a.log.copy
run a.log
cmp a.log.copy a.log.1 >"$why" && [ ! -s a.log ]
report "a long log" $?

fresh a=1 b=2 c=3
mkdir d
run a missing b d c
{ cat "$err"; state; } >"$why"
[ "$status" -eq 1 ] && [ "$(wc -l <"$err")" -eq 2 ] && [ "$(cat a.1 b.1 c.1)" = "$(printf '1\n2\n3')" ]
report "an error does not stop the other logs" $?
fresh a=1
run a a ./a "$PWD/a" ../logs/a
expect "a log with several names" a= a.1=1

# ---- Names

for name in 'a+b' 'a[b' 'a(b' '^a$' 'a\b' '.*' '.log' '..log' 'a b' ' a' 'a ' '~' '~a' '-a' '--keep' '--' '%1' '*' '?' \
  'é' '"a"' "it's" '<dir>' '1' '.1' 'a.1' 'a.logturn' 'a
b'; do
  fresh
  mkdir -p 'in~/ +[/x'
  printf 'old\n' >"./$name"
  cp "./$name" "in~/ +[/x/$name"
  run -- "$name" "in~/ +[/x/$name"
  { cat "$err" "$out"; find . -type f; } >"$why"
  [ "$status" -eq 0 ] && [ ! -s "$err" ] && [ "$(wc -l <"$out")" -eq 3 ] && [ ! -s "./$name" ] &&
    [ "$(cat "./$name.1" "in~/ +[/x/$name.1")" = "$(printf 'old\nold')" ] &&
    [ "$(find . -type f -print0 | tr -dc '\0' | wc -c)" -eq 4 ]
  report "the name $name" $?
done
fresh
long=$(printf '%0255d' 0)
echo text >"$long"
expect_error "the longest name" 1 "cannot write \"$long.logturn\": File name too long" "$long"
fresh
long=$(printf '%0247d' 0)
echo text >"$long"
run "$long"
expect "a long name" "$long=" "$long.1=text"

# ---- Files that are not turned

fresh target=text a.log=new
mkdir directory
mkfifo pipe
ln -s target link
ln -s missing dangling
expect_error "a missing file" 1 'cannot open "missing": No such file or directory' missing
expect_error "a missing directory" 1 'cannot open "missing/a": No such file or directory' missing/a
expect_error "a file as a directory" 1 'cannot open "target/a": Not a directory' target/a
expect_error "a directory" 1 '"directory" is not a regular file' directory
expect_error "a directory with a slash" 1 '"directory/" is not a regular file' directory/
expect_error "the working directory" 1 '"." is not a regular file' .
expect_error "a pipe" 1 '"pipe" is not a regular file' pipe
expect_error "a link" 1 '"link" is not a regular file' link
expect_error "a dangling link" 1 '"dangling" is not a regular file' dangling
expect_error "a device" 1 '"/dev/null" is not a regular file' /dev/null
expect_error "the empty name" 1 '"" is not a regular file' ''

for number in 0 1 logturn; do
  fresh a.log=new target=x
  mkdir "a.log.$number"
  expect_error "a directory as copy $number" 1 "\"a.log.$number\" is not a regular file" a.log
  rmdir "a.log.$number"
  ln -s target "a.log.$number"
  expect_error "a link as copy $number" 1 "\"a.log.$number\" is not a regular file" a.log
done
fresh a.log=new a.log.1=1
mkdir a.log.2
expect_error "a directory above the copies" 1 '"a.log.2" is not a regular file' a.log

fresh a.log=new a.log.1=one a.log.2=two
expect_error "a copy" 1 '"./a.log.1" is a copy of "./a.log" and is not turned itself' ./a.log.1

fresh a.log=new
flock -x a.log "$logturn" a.log >"$out" 2>"$err"
status=$?
is_error 1 'cannot lock "a.log", which another process may be turning: Resource temporarily unavailable'
report "a log that another process is turning" $?
run a.log
expect "after the other process" a.log= a.log.1=new

# The permissions do not bind root.
unprivileged=
if [ "$(id -u)" -eq 0 ]; then
  unprivileged='setpriv --reuid=65534 --regid=65534 --clear-groups'
  chmod 755 "$work"
fi
# run_unprivileged ARGUMENT...: runs the program as a user whom permissions bind.
run_unprivileged() {
  # The command consists of several words.
  # shellcheck disable=SC2086
  $unprivileged "$logturn" "$@" >"$out" 2>"$err"
  status=$?
}
fresh a.log=new
if $unprivileged "$logturn" --version >"$why" 2>&1; then
  chmod 666 a.log
  chmod 555 .
  run_unprivileged a.log
  is_error 1 'cannot write "a.log.logturn": Permission denied' && [ "$(state)" = a.log=new ]
  report "a directory that cannot be written" $?
  chmod 755 .
  chmod 444 a.log
  run_unprivileged a.log
  is_error 1 'cannot open "a.log": Permission denied' && [ "$(state)" = a.log=new ]
  report "a log that cannot be written" $?
  chmod 666 a.log
  chmod 333 .
  run_unprivileged a.log
  is_error 1 'cannot list the directory of "a.log"' && chmod 755 . && [ "$(state)" = a.log=new ]
  report "a directory that cannot be listed" $?
  chmod 755 .
else
  echo "Left out: permissions, because another user cannot run $logturn"
fi

# ---- After a turn that was killed, or on a full disk

fresh a.log=new a.log.1=old a.log.logturn=ne
run a.log
expect "an incomplete copy is removed" a.log= a.log.1=new a.log.2=old
expect_table "the table after an incomplete copy" 'file     action     name             bytes' \
  '"a.log"  discarded  "a.log.logturn"      3' '"a.log"  turned     "a.log.1"            4'
fresh a.log=new a.log.2=old
cp -p a.log a.log.0
run a.log
expect "a copy of a log that was not emptied" a.log= a.log.1=new a.log.2=old
fresh a.log.0=new a.log.2=old
: >a.log
run a.log
expect "a copy of a log that was emptied" a.log= a.log.1=new a.log.2=old
expect_table "the table of a copy that was finished" 'file     action      name       bytes' \
  '"a.log"  finished    "a.log.1"      4' '"a.log"  left empty  "a.log"        0'
fresh a.log.0=new a.log.1=old
printf 'new\nnewer\n' >a.log
run --keep 3 a.log
expect "a copy of a log that has grown" a.log= "a.log.1=new
newer" a.log.2=new a.log.3=old

fresh a.log.1=old
head -c 100000 /dev/zero >a.log
cp a.log before
(
  ulimit -f 16
  run a.log
  is_error 1 'cannot write "a.log.logturn": File too large'
) && [ "$(echo *)" = 'a.log a.log.1 before' ] && cmp a.log before >>"$why"
report "a limit on the size of files" $?

# ---- Numbers of copies and settings

for number in 0 -1 +1 1000001 4294967297 99999999999999999999 abc 5x ' 5' 0x5 1.5 ''; do
  fresh a.log=new
  expect_error "--keep $number" 1 "the number of copies to keep is 1 to 1000000, not \"$number\"" --keep="$number" a.log
done
fresh a.log=new a.log.1=1
run --keep 1000000 a.log
expect "a huge number" a.log= a.log.1=new a.log.2=1

kept=$HOME/.config/logturn.cfg
fresh a.log=new a.log.1=1 a.log.2=2 a.log.3=3
run --save --keep 3
expect "saving a number" a.log=new a.log.1=1 a.log.2=2 a.log.3=3
run a.log
expect "the saved number" a.log= a.log.1=new a.log.2=1 a.log.3=2
run --keep 2 a.log
expect "--keep comes before the saved number" a.log= a.log.1=new a.log.2=1
run --save
grep -q "<keep data_type='NUMBER' describe='Copies to keep'>3</keep>" "$kept" >"$why"
report "saving without a number" $?
for text in '' 'text' '<C><keep x="1">0</keep></C>' '<C><keep x="1">3'; do
  printf %s "$text" >"$kept"
  expect_error "the settings $text" 1 \
    "the file \"$kept\" has no valid setting \"keep\"; correct the file or use --keep" a.log
done
run --save --keep 5
grep -q '>5</keep>' "$kept" && [ "$(cat "$kept~")" = '<C><keep x="1">3' ]
report "a malformed file becomes the backup" $?
rm -r "$HOME/.config"
export XDG_CONFIG_HOME="$work/own"
run --save --keep 4
grep -q '>4</keep>' "$work/own/logturn.cfg"
report "settings in XDG_CONFIG_HOME" $?
export XDG_CONFIG_HOME="$work/out"
expect_error "settings below a file" 1 "cannot save the settings to \"$work/out/logturn.cfg\"" --save --keep 4
unset XDG_CONFIG_HOME
run --save --keep 4
(ulimit -f 0; "$logturn" --save --keep 5 2>&1 >/dev/null) | grep -q '	cannot save the settings to ' &&
  grep -q '>4</keep>' "$kept"
report "a full disk keeps the old settings" $?
rm -r "$HOME/.config"

# ---- The command line and the output

fresh a.log=new
expect_error "no file" 2 'no file is given; try --help'
expect_error "no file after --" 2 'no file is given; try --help' --
expect_error "an unknown option" 2 'invalid option "--bogus"; try --help' a.log --bogus
expect_error "an ambiguous option" 2 'invalid option "--ver"; try --help' --ver a.log
expect_error "an unknown short option" 2 'invalid option "-b"; try --help' -bac -a
expect_error "an unexpected value" 2 'invalid option "--save=x"; try --help' --save=x a.log
expect_error "a missing argument" 2 'missing argument after "--keep"; try --help' a.log --keep
expect_error "a dry run that saves" 2 '--dry-run changes nothing, so --save cannot be used with it; try --help' \
  --dry-run --save a.log
run --help a.log --bogus
head -n 1 "$out" | grep -qx 'Usage: logturn \[OPTION\]... FILE...' && [ "$status" -eq 0 ]
report "--help" $?
run --version
grep -qx 'logturn, with zn_udf 1.1' "$out"
report "--version" $?

"$logturn" a.log >/dev/full 2>"$err"
status=$?
: >"$out"
is_error 1 'cannot write to standard output' && [ "$(cat a.log.1)" = new ]
report "a full device for the table" $?
echo newer >a.log
"$logturn" --verbose a.log 2>"$err" | head -c 0
[ "$(cat a.log.1)" = newer ] && [ ! -s a.log ]
report "the log is turned even if nobody reads the output" $?

# Each number has a message, which is read in one piece.
catalog=$(dirname "$logturn")/logturn.xml
sed -n 's/^  k.* = \([0-9]*\),.*/\1/p' "$source/errors.h" >"$work/numbers"
sed -n 's/.*<ID>\([0-9]*\)<.*<MESSAGE>.*<.*/\1/p' "$catalog" | diff "$work/numbers" - >"$why" &&
  [ -s "$work/numbers" ] && [ "$(wc -c <"$catalog")" -le 8192 ]
report "each error has a message" $?

echo "$checked cases, $failed failed"
[ "$failed" -eq 0 ]
