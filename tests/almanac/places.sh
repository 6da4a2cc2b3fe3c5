# Tables of places. Sourced by almanac_test.sh.

if [ -r /usr/share/zoneinfo/zone.tab ]; then
  run --latitude 52.366666666666667 --from 2026-01-01 --days 366
  mv out expected
  expect_table "the system's places" expected --place Europe/Amsterdam --from 2026-01-01 --days 366
else
  echo "the system has no /usr/share/zoneinfo/zone.tab" >why
  report "the system's places" 1 why
fi

expect_error "unknown place" 1 'there is no place "Europe/Atlantis" in "[^"]*"$' \
  --place Europe/Atlantis --places "$places"
expect_error "empty place" 1 'there is no place "" in ".*"$' --place '' --places "$places"
expect_error "place in two lines" 1 'there is no place "a?b"' --place 'a
b' --places "$places"
expect_error "no such file" 1 'cannot open "none.tab"' --place X --places none.tab
expect_error "file without a name" 1 'cannot open ""' --place X --places ''
expect_error "file below a file" 1 'cannot open' --place X --places "$places/x"
expect_error "directory" 1 'cannot read' --place X --places "$work"
: >empty.tab
expect_error "empty file" 1 'there is no place' --place X --places empty.tab
expect_error "program as places" 1 'malformed line: .*, line 1$' --place X --places "$almanac"
expect_error "endless line" 1 'too long: "/dev/zero", line 1$' --place X --places /dev/zero

# Each of these lines makes a file invalid whose second line is the requested place.
while IFS= read -r line; do
  { printf '# test\nNL\t+5222+00454\tEurope/Amsterdam\n'; printf '%b\n' "$line"; } >bad.tab
  expect_error "malformed line '$line'" 1 'malformed line: "bad.tab", line 3$' \
    --place Europe/Amsterdam --places bad.tab
done <<'END'
NL
NL\t+5222+00454
NL\t+5222+00454\t
NL\t+5222+00454\t\tcomment
NL\t+5222+00454\tA/B\tcomment\tmore
NL +5222+00454 A/B
\tNL\t+5222+00454\tA/B
 NL\t+5222+00454\tA/B
 # comment
nl\t+5222+00454\tA/B
N\t+5222+00454\tA/B
NLD\t+5222+00454\tA/B
N1\t+5222+00454\tA/B
NL\t\tA/B
NL\t5222+00454\tA/B
NL\t+522200454\tA/B
NL\t+5222+00454+\tA/B
NL\t+5222+00454-00454\tA/B
NL\t++5222+00454\tA/B
NL\t+522+00454\tA/B
NL\t+05222+00454\tA/B
NL\t+5222+0454\tA/B
NL\t+522200+00454\tA/B
NL\t+5222+0045400\tA/B
NL\t+5260+00454\tA/B
NL\t+522260+0045400\tA/B
NL\t+5222+00460\tA/B
NL\t+9001+00454\tA/B
NL\t+900001+0045400\tA/B
NL\t+9100+00454\tA/B
NL\t+5222+18001\tA/B
NL\t+5222+18100\tA/B
NL\t+52.2+00454\tA/B
NL\t+52e2+00454\tA/B
NL\t+5222 +00454\tA/B
NL\t+5222+00454\tA B
NL\t+5222+00454\tA/B\0000
NL\t+5222+00454\tA/B\tcomm\0000ent
NL\t+5222+00454\tA/B\tcomm\0033ent
NL\t+5222+00454\rA/B
END

# Each of these lines is equivalent to the one in the file of places.
run --place Europe/Amsterdam --places "$places" --from 2026-06-01 --days 2
mv out amsterdam
while IFS= read -r line; do
  printf '%b' "$line" >good.tab
  expect_table "well-formed line '$line'" amsterdam --place Europe/Amsterdam --places good.tab --from 2026-06-01 --days 2
done <<'END'
NL\t+5222+00454\tEurope/Amsterdam
NL\t+5222+00454\tEurope/Amsterdam\n
NL\t+5222+00454\tEurope/Amsterdam\r\n
\n \t\n\r\nNL\t+5222+00454\tEurope/Amsterdam\n\n
NL\t+5222+00454\tEurope/Amsterdam\t\n
NL\t+5222+00454\tEurope/Amsterdam\tcomments, a few\n
NL\t+5222+00454\tEurope/Amsterdam\t\0303\0251t\0351\n
NL\t+5222-18000\tEurope/Amsterdam\n
NL\t+522200+0045400\tEurope/Amsterdam\n
#\n#\0000\0001\0377\nNL\t+5222+00454\tEurope/Amsterdam\n
AQ\t-9000+00000\tSouth\nNL\t+5222+00454\tEurope/Amsterdam\nAQ\t+9000+00000\tNorth\n
NL\t+5222+00454\tEurope/Amsterdam\nNL\t+0000+00000\tEurope/Amsterdam\n
END
{ printf '#%500000s\n' x; printf 'NL\t+5222+00454\tEurope/Amsterdam\t%500000s\n' x; } >long.tab
expect_table "long lines" amsterdam --place Europe/Amsterdam --places long.tab --from 2026-06-01 --days 2

# ---- Names

# Each line has a name and the place that it stands for.
cat >names.tab <<'END'
NL	+5222+00454	Europe/Amsterdam
TF	-3750+07732	Indian/Amsterdam_Island
US	+404251-0740023	America/New_York
US	+411745-0863730	America/Indiana/Knox
US	+384038-0872406	America/Indiana/Petersburg
RU	+5950+03020	Europe/Petersburg
CC	+0100+00100	Example/Case
CC	+0200+00100	Example/case
CC	+0300+00100	Port
CC	+0400+00100	Example/Port
CC	+0500+00100	Twice/Named
CC	+0600+00100	Twice/Named
END
while IFS='|' read -r name place; do
  run --place "$name" --places names.tab --days 1 --verbose
  grep -qF "[Day length and moon at $place, latitude " out && [ "$status" -eq 0 ] && [ ! -s err ]
  report "'$name' is $place" $? err
done <<'END'
Amsterdam|Europe/Amsterdam
amsterdam|Europe/Amsterdam
europe/AMSTERDAM|Europe/Amsterdam
New York|America/New_York
new_york|America/New_York
america/new york|America/New_York
Knox|America/Indiana/Knox
indiana/knox|America/Indiana/Knox
Indiana/Petersburg|America/Indiana/Petersburg
Example/Case|Example/Case
Example/case|Example/case
Port|Port
port|Port
Named|Twice/Named
END

# Each line has a name, and the end of the message.
while IFS='|' read -r name end; do
  expect_error "no place '$name'" 1 "there is no place \"$name\" in \"names.tab\"$end\$" \
    --place "$name" --places names.tab
done <<'END'
Amsterdm|; similar places: "Europe/Amsterdam"
Amsturdan|; similar places: "Europe/Amsterdam"
Amst|; similar places: "Europe/Amsterdam", "Indian/Amsterdam_Island"
amsterdam i|; similar places: "Indian/Amsterdam_Island", "Europe/Amsterdam"
Eurpe/Petersburg|; similar places: "Europe/Petersburg"
Petersberg|; similar places: "America/Indiana/Petersburg", "Europe/Petersburg"
Knx|; similar places: "America/Indiana/Knox"
Prt|; similar places: "Example/Port", "Port"
Ports|; similar places: "Example/Port", "Port"
Posts|
erdam|; similar places: "Europe/Amsterdam", "Indian/Amsterdam_Island"
york|; similar places: "America/New_York"
Amxxxrdam|
Am|
m|
END
expect_error "an ambiguous name" 1 \
  'the name "petersburg" stands for several places in "names.tab": "America/Indiana/Petersburg", "Europe/Petersburg"$' \
  --place petersburg --places names.tab
expect_error "an ambiguous case" 1 \
  'the name "EXAMPLE/CASE" stands for several places in "names.tab": "Example/Case", "Example/case"$' \
  --place EXAMPLE/CASE --places names.tab
for i in 1 2 3 4 5 6 7 8 9; do printf 'NL\t+5222+00454\tRegion_%d/Here\n' $i; done >nine.tab
expect_error "nine candidates" 1 'several places in "nine.tab": "Region_1/Here", .*, "Region_8/Here" and 1 more$' \
  --place here --places nine.tab
expect_error "nine similar places" 1 'similar places: "Region_1/Here", .*, "Region_8/Here" and 1 more$' \
  --place region --places nine.tab
long=$(printf '%100000s' x | tr ' ' x)
for letters in yyyy y; do printf 'NL\t+5222+00454\tA/%s%s\n' $letters "$long"; done >long.tab
expect_error "a long name" 1 'similar places: "A/yxx*"$' --place "b$long" --places long.tab
