#!/bin/sh
# Tests the example program settings: runs that continue from each other, settings that its file cannot contain, and
# files that it must not change.
# usage: settings_test.sh PATH_TO_SETTINGS
set -eu
settings=$(CDPATH='' cd -- "$(dirname -- "$1")" && pwd)/$(basename -- "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/run"
cd "$work/run"

# compare WHAT FILE: compares standard input with a file in which the date of the first save becomes "STAMP".
compare() {
  cat >"$work/expected"
  sed 's/[0-9]\{4\}-[0-9][0-9]-[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9]/STAMP/' "$2" | diff -u "$work/expected" - || {
    echo "FAILED: $1"
    exit 1
  }
}

"$settings" colour=blue >out 2>err
compare "the first run" out <<'END_OF_FILE'
This is run 1.

[ EXAMPLE ]
Description        Value
-----------        -----
colour             blue
How often this ran 1

END_OF_FILE
compare "errors of the first run" err </dev/null
[ "$(echo *)" = "err out settings.cfg" ]
compare "the first file" settings.cfg <<'END_OF_FILE'
<?xml version="1.0" encoding="UTF-8"?>
<CONFIGURATION type='EXAMPLE'>
<UPDATE data_type='DATE' describe='Date of update in ISO9601'>STAMP</UPDATE>
<colour data_type='TEXT' describe='colour'>blue</colour>
<runs data_type='NUMBER' describe='How often this ran'>1</runs>
</CONFIGURATION>
END_OF_FILE
cp settings.cfg first

status=0
"$settings" 'colour=deep red' size=7 none 'x=1<2' a=b=c >out 2>err || status=$?
[ "$status" -eq 1 ]
compare "the second run" out <<'END_OF_FILE'
This is run 2.

[ EXAMPLE ]
Description               Value
-----------               -----
Date of update in ISO9601 STAMP
a                         b=c
colour                    deep red
How often this ran        2
size                      7

END_OF_FILE
compare "errors of the second run" err <<'END_OF_FILE'
ERROR: cannot keep "none": it is not KEY=VALUE
ERROR: cannot keep "x=1<2": its value holds "<" or "&"
END_OF_FILE
cmp first settings.cfg~
[ "$(xmllint --xpath 'string(//UPDATE)' settings.cfg)" = "$(xmllint --xpath 'string(//UPDATE)' first)" ]

"$settings" runs=1e+9 >out
"$settings" >out
compare "an invalid count" out <<'END_OF_FILE'
This is run 1.

[ EXAMPLE ]
Description               Value
-----------               -----
Date of update in ISO9601 STAMP
a                         b=c
colour                    deep red
How often this ran        1
size                      7

END_OF_FILE

rm settings.cfg settings.cfg~
"$settings" >out 2>err
compare "an empty store" out <<'END_OF_FILE'
This is run 1.
You have stored no settings yet. "settings KEY=VALUE" stores one.

[ EXAMPLE ]
Description        Value
-----------        -----
How often this ran 1

END_OF_FILE
"$settings" >out 2>>err
compare "a store with a date" out <<'END_OF_FILE'
This is run 2.
You have stored no settings yet. "settings KEY=VALUE" stores one.

[ EXAMPLE ]
Description               Value
-----------               -----
Date of update in ISO9601 STAMP
How often this ran        2

END_OF_FILE
compare "errors of an empty store" err </dev/null

# value KEY: prints the value in the settings file, read by another XML program.
value() {
  xmllint --xpath "string(/CONFIGURATION/*[name()='$1'])" settings.cfg
}

# fail WHAT: ends the test.
fail() {
  echo "FAILED: $1"
  [ -e err ] && cat err
  exit 1
}

# start: creates a file with a setting before all others and one after them.
start() {
  rm -f settings.cfg settings.cfg~
  "$settings" Aaa=first zzz=last >out 2>err
}

# expect_both WHAT RUNS: expects these two settings after this number of runs.
expect_both() {
  [ "$(value Aaa) $(value zzz) $(value runs)" = "first last $2" ] || fail "$1: a setting is lost"
}

# A setting that cannot be stored is rejected with the reason. All others are kept.
while IFS='|' read -r argument reason; do
  start
  argument=$(printf '%b.' "$argument")
  argument=${argument%.}
  status=0
  "$settings" "$argument" last=kept >out 2>err || status=$?
  [ "$status" -eq 1 ] || fail "exit status $status after '$argument'"
  [ "$(value last)" = kept ] || fail "the setting after '$argument'"
  [ "$(grep -a "^ERROR: cannot keep " err | grep -acF "$reason")" -eq 1 ] || fail "refusing '$argument'"
  "$settings" >out 2>err
  "$settings" >out 2>err
  [ ! -s err ] || fail "errors after '$argument'"
  expect_both "$argument" 4
done <<'END_OF_CASES'
none|it is not KEY=VALUE
my key=3|its key is not a letter
1x=3|its key is not a letter
a'b=5|its key is not a letter
-a=3|its key is not a letter
a/=3|its key is not a letter
=3|its key is not a letter
k\0377=3|its key is not a letter
<a=3|its key is not a letter
CONFIGURATION=3|its key is the name of the whole file
k=1<2|its value holds "<" or "&"
k=a&b|its value holds "<" or "&"
k=a&amp;b|its value holds "<" or "&"
k=<b/>|its value holds "<" or "&"
k=</k><k>|its value holds "<" or "&"
k=a]]>b|its value holds "]]>"
k=\n|a line break or another control character
k=a\nb|a line break or another control character
k=a\rb|a line break or another control character
k=a\0033b|a line break or another control character
k= a|its value begins with whitespace
k=\ta|its value begins with whitespace
k=a\0377|not XML characters in UTF-8
k=\0355\0240\0200|not XML characters in UTF-8
k=\0357\0277\0277|not XML characters in UTF-8
END_OF_CASES

# All other settings are kept.
while IFS='|' read -r argument key kept; do
  start
  "$settings" "$argument" >out 2>err
  [ ! -s err ] || fail "keeping '$argument'"
  "$settings" >out 2>err
  "$settings" >out 2>err
  expect_both "$argument" 4
  [ "$(value "$key"; echo .)" = "$kept
." ] || fail "the value of '$argument' is '$(value "$key")'"
done <<'END_OF_CASES'
url=http://h/?q=1|url|http://h/?q=1
k=|k|
k==|k|=
k=a>b]]|k|a>b]]
k=it's "so"|k|it's "so"
k=a%26b;~\|k|a%26b;~\
k=größer als 日本|k|größer als 日本
größe=3|größe|3
_a-b.c1=x|_a-b.c1|x
 k =x|k|x
UPDATE=never|UPDATE|never
END_OF_CASES
start
"$settings" runs=41 >out
"$settings" >out
grep -q "^This is run 42.$" out || fail "the number of runs can be set"
start
long=$(printf '%9000s' '' | tr ' ' x)
"$settings" "k=$long" >out 2>err
"$settings" >out 2>err
[ "$(value k)" = "$long" ] || fail "a long value"

# Files of more than 8192 bytes are read in blocks. A space at any position is kept or reported.
for length in 7970 7975 7980 7985 7990 7995 8000 8005; do
  rm -f settings.cfg settings.cfg~
  "$settings" >out
  many=$(printf "%${length}s" '' | tr ' ' x)
  "$settings" "k=$many a b c d e f" >out 2>err || { [ -z "$(value k)" ] && continue; }
  "$settings" >out 2>err
  "$settings" >out 2>err
  [ "$(value k)" = "$many a b c d e f" ] || fail "spaces after $length characters"
done

# A file that cannot be written again without loss is not changed.
while IFS='|' read -r text reason; do
  rm -f settings.cfg~
  printf '%s\n' "$text" >settings.cfg
  cp settings.cfg before
  ! "$settings" k=1 >out 2>err || fail "no exit status for '$text'"
  grep -q "^ERROR: cannot change settings.cfg: .*$reason" err || fail "the reason for '$text'"
  cmp -s before settings.cfg || fail "the file '$text' has changed"
  [ ! -e settings.cfg~ ] || fail "a backup of '$text'"
done <<'END_OF_CASES'
<CONFIGURATION><a x='1'>1</a><my key>2</my key><b x='1'>3</b></CONFIGURATION>|it is malformed
<CONFIGURATION><a x='1'>1</a>|it is malformed
<CONFIGURATION><a x='1'>1 &amp; 2</a><b x='1'>3</b></CONFIGURATION>|"a" in it cannot be written again
<CONFIGURATION><a x='1'><![CDATA[<]]></a><b x='1'>3</b></CONFIGURATION>|"a" in it cannot be written again
<CONFIGURATION><a x='1' y="it's">1</a><b x='1'>3</b></CONFIGURATION>|"a" in it cannot be written again
<CONFIGURATION><a x="'">1</a><b x='1'>3</b></CONFIGURATION>|"a" in it cannot be written again
END_OF_CASES

start
cp settings.cfg before
# shellcheck disable=SC3045
(trap '' XFSZ; ulimit -f 0; "$settings" k=1 2>&1 >/dev/null) | cat >err
grep -q "^ERROR: cannot change settings.cfg: not all was written" err || fail "a full disk is reported"
cmp -s before settings.cfg || fail "a full disk keeps the old settings"
echo "The settings are read, changed, listed and saved"
