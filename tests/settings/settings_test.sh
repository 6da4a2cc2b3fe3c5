#!/bin/sh
# Three runs of the example that keeps settings, each beginning with what the one before left.
# usage: settings_test.sh PATH_TO_SETTINGS
set -eu
settings=$(CDPATH='' cd -- "$(dirname -- "$1")" && pwd)/$(basename -- "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/run"
cd "$work/run"

# compare WHAT FILE: standard input with a file, in which the date of the first save counts as "STAMP".
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

"$settings" 'colour=deep red' size=7 none 'x=1<2' a=b=c >out 2>err
compare "the second run" out <<'END_OF_FILE'
This is run 2.

[ EXAMPLE ]
Description               Value
-----------               -----
Date of update in ISO9601 STAMP
colour                    deep red
How often this ran        2
size                      7

END_OF_FILE
compare "errors of the second run" err <<'END_OF_FILE'
ERROR: not KEY=VALUE without < and &: "none"
ERROR: not KEY=VALUE without < and &: "x=1<2"
ERROR: not KEY=VALUE without < and &: "a=b=c"
END_OF_FILE
cmp first settings.cfg~
[ "$(xmllint --xpath 'string(//UPDATE)' settings.cfg)" = "$(xmllint --xpath 'string(//UPDATE)' first)" ]

"$settings" runs=1e+9 >out
"$settings" >out
compare "a count that is none" out <<'END_OF_FILE'
This is run 1.

[ EXAMPLE ]
Description               Value
-----------               -----
Date of update in ISO9601 STAMP
colour                    deep red
How often this ran        1
size                      7

END_OF_FILE
echo "The settings are read, changed, listed and saved"
