# The settings of --save. Sourced by almanac_test.sh.

# Prints the table of latitude -20.5, regardless of the settings.
run --latitude -20.5 --from 2026-06-01
mv out south
run --latitude -20.5 --from 2026-06-01 --order dmy --format full
mv out south_full
kept=home/.config/almanac.cfg

# expect_kept NAME FILE VALUE...: expects these values in the settings file, read by another XML program.
expect_kept() {
  name=$1
  file=$2
  shift 2
  printf '%s\n' "$@" >expected
  for key in place latitude order format; do
    xmllint --xpath "concat('$key=', /CONFIGURATION[@type='ALMANAC']/$key[@data_type='TEXT'])" "$file"
  done >found 2>&1
  diff expected found >why
  report "$name" $? why
}

expect_error "nothing is saved yet" 2 'unless --save has kept one' --from 2026-06-01
expect_table "the table is printed when settings are saved" "$data/week.txt" \
  --from 2026-06-01 --place Europe/Amsterdam --places "$places" --save
expect_kept "a place" $kept place=Europe/Amsterdam latitude= order= format=
expect_table "the saved place" "$data/week.txt" --from 2026-06-01 --places "$places"
run --place amsterdam --places "$places" --save
expect_kept "the whole name of a place" $kept place=Europe/Amsterdam latitude= order= format=
expect_table "a latitude replaces the saved place" south --from 2026-06-01 --latitude -20.5
expect_kept "only --save saves" $kept place=Europe/Amsterdam latitude= order= format=

expect_table "saving the rest" south_full --latitude -20.5 --order dmy --format full --save --from 2026-06-01
expect_kept "latitude, order and format" $kept place= latitude=-20.5 order=dmy format=full
expect_table "all settings" south_full --from 2026-06-01
expect_table "order and format replace the saved ones" south --from 2026-06-01 --format iso --order ymd
expect_table "a date in the saved order" south_full --from "1 June 2026"
run --order mdy --save
expect_kept "other settings are kept" $kept place= latitude=-20.5 order=mdy format=full
expect_kept "the backup has the old settings" $kept~ place= latitude=-20.5 order=dmy format=full

stamp=$(xmllint --xpath 'string(//UPDATE)' $kept)
cat >listed <<END

[ ALMANAC ]
Description               Value
-----------               -----
Date of update in ISO9601 $stamp
Format of a date          full
Latitude in degrees       -20.5
Order of a date           mdy
Place                     

END
expect_table "the list" listed --settings
expect_table "the list after saving" listed --settings --save
expect_table "the list needs no other option" listed --settings --place Nowhere --days x

# An invalid value in the file is only an error if it is used.
sed -i 's/>mdy</>mddy</' $kept
expect_error "an invalid order is saved" 1 'invalid value "mddy" for the setting "order" in ".*/home/.config/almanac.cfg"$' --days 1
expect_table "an invalid order that is not used" south_full --from 2026-06-01 --order dmy
sed -i 's/>full</>long</' $kept
expect_error "an invalid format is saved" 1 'invalid value "long" for the setting "format"' --order dmy
sed -i 's/>-20.5</>200</' $kept
expect_error "an invalid latitude is saved" 1 'not "200"$' --order dmy --format full
expect_table "saving repairs the file" south --from 2026-06-01 --latitude -20.5 --order ymd --format iso --save
expect_table "the repaired file" south --from 2026-06-01
sed -i "s|'Place'>|&Europe/Atlantis|" $kept
expect_error "place and latitude are saved" 2 'one of --place and --latitude' --days 1
sed -i 's/>-20.5</></' $kept
expect_error "the saved place is not in the file of places" 1 'no place "Europe/Atlantis"' --places "$places"
printf '<CONFIGURATION><latitude x="1">-20.5</latitude><format>iso</format><order>' >$kept
expect_table "a truncated file" south --from 2026-06-01
: >$kept
expect_error "an empty file" 2 'unless --save has kept one' --days 1
rm $kept
echo "No settings are kept in \"$HOME/.config/almanac.cfg\"." >listed
expect_table "the list without a file" listed --settings
[ ! -e $kept ]
report "listing writes nothing" $?

export XDG_CONFIG_HOME="$work/own"
expect_table "saving in XDG_CONFIG_HOME" south --from 2026-06-01 --latitude -20.5 --save
expect_kept "a latitude in XDG_CONFIG_HOME" own/almanac.cfg place= latitude=-20.5 order= format=
expect_table "settings from XDG_CONFIG_HOME" south --from 2026-06-01
export XDG_CONFIG_HOME=
expect_error "an empty XDG_CONFIG_HOME is ignored" 2 'unless --save has kept one' --days 1
export XDG_CONFIG_HOME="$data/places.tab"
expect_error "settings below a file" 1 'cannot save the settings to ".*/places.tab/almanac.cfg"$' --latitude 5 --save
expect_error "no list after settings that could not be saved" 1 'cannot save' --latitude 5 --save --settings

# Variables that are no absolute paths are ignored. A "~" is a character like any other.
run --latitude 1.5 --from 2026-06-01 --days 1
mv out one_row
mkdir -p 'a~b~c' relative '~'
unset XDG_CONFIG_HOME
run --latitude -20.5 --save
# The program, not the shell, gets the "~".
# shellcheck disable=SC2088
for directory in relative ./relative '~' '~/.config' ''; do
  export XDG_CONFIG_HOME="$directory"
  expect_table "settings of HOME if XDG_CONFIG_HOME is '$directory'" south --from 2026-06-01
  expect_table "saving if XDG_CONFIG_HOME is '$directory'" south --from 2026-06-01 --latitude -20.5 --save
  [ "$(echo relative/* '~'/*)" = 'relative/* ~/*' ]
  report "no file in '$directory'" $?
done
rm $kept $kept~
export XDG_CONFIG_HOME="$work/a~b~c"
expect_table "saving in a directory with '~'" south --from 2026-06-01 --latitude -20.5 --save
expect_kept "the file in a directory with '~'" 'a~b~c/almanac.cfg' place= latitude=-20.5 order= format=
expect_table "settings from a directory with '~'" south --from 2026-06-01
unset XDG_CONFIG_HOME
[ ! -e $kept ]
report "nothing in another directory" $?

HOME="$work/a~b~c"
expect_table "saving in a home directory with '~'" south --from 2026-06-01 --latitude -20.5 --save
expect_kept "the file in a home directory with '~'" 'a~b~c/.config/almanac.cfg' place= latitude=-20.5 order= format=
expect_table "settings from a home directory with '~'" south --from 2026-06-01
for home in relative '~' '' unset; do
  if [ "$home" = unset ]; then unset HOME; else export HOME="$home"; fi
  expect_error "no settings without a directory, HOME=$home" 2 'unless --save has kept one' --days 1
  expect_table "a table without a directory, HOME=$home" one_row --latitude 1.5 --from 2026-06-01 --days 1
  expect_error "saving without a directory, HOME=$home" 1 'there is no directory for the settings: ' --latitude 5 --save
  expect_error "a list without a directory, HOME=$home" 1 'there is no directory for the settings: ' --settings
done
[ "$(echo relative/* '~'/* almanac.cfg*)" = 'relative/* ~/* almanac.cfg*' ]
report "no file in the working directory" $?
# The program finds HOME again after it has read the settings.
export HOME="$work/home"
# shellcheck disable=SC2088
run --latitude -20.5 --from 2026-06-01 --output '~/t.txt' --save
[ "$status" -eq 0 ] && cmp -s home/t.txt south
report "settings and a file in the home directory" $? err
rm home/t.txt $kept*

# A file that was edited by hand and cannot be written again without loss.
while IFS='|' read -r text pattern; do
  printf '%s\n' "$text" >$kept
  cp $kept before
  expect_error "saving over $text" 1 "$pattern" --latitude 7 --save
  cmp -s before $kept
  report "kept: $text" $? $kept
done <<'END'
<CONFIGURATION><note x="1">a &amp; b</note><order x="1">dmy</order></CONFIGURATION>|the setting "note" in ".*/almanac.cfg" cannot be written again
<CONFIGURATION><note x="1">&lt;</note></CONFIGURATION>|the setting "note" in
<CONFIGURATION><note x="1">]]&gt;</note></CONFIGURATION>|the setting "note" in
<CONFIGURATION><note x="'">1</note></CONFIGURATION>|the setting "note" in
<CONFIGURATION><note x="1" y="it's">1</note></CONFIGURATION>|the setting "note" in
<CONFIGURATION><UPDATE x="1">&lt;</UPDATE></CONFIGURATION>|the setting "UPDATE" in
<CONFIGURATION><order x="1">dmy</order><note></CONFIGURATION>|the file ".*/almanac.cfg" is malformed
<CONFIGURATION><my note>1</my note></CONFIGURATION>|the file ".*/almanac.cfg" is malformed
END
printf '<CONFIGURATION><place x="it%ss" y="&lt;">a &amp; b</place><note x="1" y="2">a > b</note></CONFIGURATION>' "'" >$kept
run --latitude 7 --save --days 1
[ "$status" -eq 0 ] && [ "$(xmllint --xpath 'string(//note)' $kept)" = 'a > b' ]
report "an invalid setting can be replaced" $? err
expect_kept "the rest is saved" $kept place= latitude=7 order= format=
rm $kept

run --latitude -20.5 --save
cp $kept before
(trap '' XFSZ; ulimit -f 0; "$almanac" --latitude 7 --save 2>&1 >/dev/null) | cat >err
is_error 'cannot save the settings' && cmp -s before $kept
report "a full disk keeps the old settings" $? err
rm $kept $kept~
(trap '' XFSZ; ulimit -f 0; "$almanac" --latitude 7 --save 2>&1 >/dev/null) | cat >err
is_error 'cannot save the settings'
report "a full disk without old settings" $? err
rm -f $kept
