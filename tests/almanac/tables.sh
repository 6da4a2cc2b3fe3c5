# The rows of tables and their values. Sourced by almanac_test.sh.

# ---- Tables

expect_stored week --place Europe/Amsterdam --places "$places" --from 2026-06-01
expect_stored verbose --place=Europe/Amsterdam --places="$places" --from=2026-06-01 --days=3 --verbose
expect_stored verbose_latitude --latitude -36.8667 --from 2026-09-29 --days 3 --verbose --format full --order dmy
expect_stored southern --place Pacific/Auckland --places "$places" --from 2026-12-18 --days 8
expect_stored seconds --place America/New_York --places "$places" --from 2024-02-27 --days 4
expect_stored new_year --latitude 52 --from 2023-12-29 --days 5
expect_stored polar_day --latitude 80 --from 2026-06-20 --days 3
expect_stored polar_night --latitude 80 --from 2026-12-20 --days 3
expect_stored into_polar_night --latitude 70 --from 2026-11-22 --days 8
expect_stored into_polar_day --place Arctic/Longyearbyen --places "$places" --from 2026-04-15 --days 8
expect_stored southern_polar_night --latitude -80 --from 2026-06-20 --days 2
expect_stored southern_polar_day --latitude -80 --from 2026-12-20 --days 2
expect_stored first_year --latitude 0 --from 0001-01-01 --days 2
expect_stored help --help
expect_table "-h" "$data/help.txt" -h

for format in iso number short full; do
  for order in dmy mdy ymd; do
    echo "$format $order"
    "$almanac" --latitude 45 --from 2024-09-30 --days 2 --format $format --order $order || echo "exit status $?"
  done
done >formats 2>&1
diff "$data/formats.txt" formats >why
report formats $? why

# Each printed date is read as the same day, in the same order.
for format in iso number short full; do
  for order in dmy mdy ymd; do
    run --latitude 45 --from 2024-03-05 --days 1 --format $format --order $order
    mv out expected
    printed=$(sed 's/  .*//' expected)
    expect_table "round trip, $format $order: $printed" expected \
      --latitude 45 --from "$printed" --days 1 --format $format --order $order
  done
done

run --version
[ $status -eq 0 ] && [ ! -s err ] && [ "$(wc -l <out)" -eq 1 ] && grep -q '^almanac, with zn_udf [0-9][0-9]*\.[0-9]' out
report version $? out
mv out expected
expect_table "-V" expected -V

for days in 1 31 366 36600; do
  run --latitude 52 --from 2000-01-01 --days $days
  [ $status -eq 0 ] && [ ! -s err ] && [ "$(wc -l <out)" -eq $days ]
  report "$days days are $days rows" $? err
done
run --latitude 52
[ "$(wc -l <out)" -eq 7 ]
report "a week without --days" $?

# Today depends on the time zone. These two zones never have the same date.
for zone in EAST-14 WEST+12; do
  earliest=$(TZ=$zone date +%Y-%m-%d)
  TZ=$zone "$almanac" --latitude 52 --days 1 >out 2>err
  printed=$(cut -d' ' -f1 out)
  latest=$(TZ=$zone date +%Y-%m-%d)
  echo "printed $printed, today is $latest" >why
  [ "$printed" = "$earliest" ] || [ "$printed" = "$latest" ]
  report "today, TZ=$zone" $? why
done

# ---- Consistency of the columns

# The dates are consecutive, the change is the difference of the lengths, each hour has a mark, and the phase matches
# the lit fraction.
for latitude in -60 -0.5 23.4 52.366666666666667 65; do
  run --latitude $latitude --from 2023-12-31 --days 400
  awk -v rows=400 '
    function bad(what) { print "row " NR ": " what ": " $0; failures++ }
    BEGIN { split("31 29 31 30 31 30 31 31 30 31 30 31", last, " ") }
    {
      split($1, ymd, "-"); split($2, hm, ":"); split(substr($3, 2), ms, ":")
      minutes = hm[1] * 60 + hm[2]
      change = (ms[1] * 60 + ms[2]) * (substr($3, 1, 1) == "-" ? -1 : 1)
      marks = gsub(/#/, "#", $NF)
      lit = $(NF - 1) + 0
      phase = NF == 7 ? $4 " " $5 : $4
      if (NR > 1) {
        day++
        if (day > last[month]) { day = 1; month++ }
        if (month > 12) { month = 1; year++ }
        if ($1 != sprintf("%04d-%02d-%02d", year, month, day)) bad("date")
        difference = (minutes - before) * 60 - change
        if (difference > 61 || difference < -61) bad("change")
      }
      year = ymd[1] + 0; month = ymd[2] + 0; day = ymd[3] + 0
      before = minutes
      if (hm[2] !~ /^[0-5][0-9]$/ || ms[2] !~ /^[0-5][0-9]$/) bad("time")
      if (length($NF) != 24 || marks * 60 - minutes > 30 || minutes - marks * 60 > 30) bad("bar")
      least["new moon"] = 0; most["new moon"] = 4
      least["waxing crescent"] = least["waning crescent"] = 4
      most["waxing crescent"] = most["waning crescent"] = 31
      least["first quarter"] = least["last quarter"] = 31; most["first quarter"] = most["last quarter"] = 69
      least["waxing gibbous"] = least["waning gibbous"] = 69; most["waxing gibbous"] = most["waning gibbous"] = 96
      least["full moon"] = 96; most["full moon"] = 100
      if (!(phase in most) || lit < least[phase] || lit > most[phase]) bad("moon")
    }
    END { if (NR != rows) { print NR " rows"; failures++ }; exit failures > 0 }' out >why
  report "the columns agree, latitude $latitude" $? why
done

# ---- Dates

# Each line has the order, a text, and the same date in ISO 8601.
cat >dates <<'END'
ymd|20240305|2024-03-05
ymd|2024-03|2024-03-01
ymd|2024|2024-01-01
dmy|2024-03-05|2024-03-05
mdy|20240305|2024-03-05
dmy|5 March 2024|2024-03-05
dmy|05/03/2024|2024-03-05
dmy|05-03-2024|2024-03-05
dmy|5.3.2024|2024-03-05
dmy|5. Mar. 2024|2024-03-05
dmy|  5  march  2024  |2024-03-05
dmy|31 DECEMBER 2024|2024-12-31
dmy|1 Dec 2024|2024-12-01
dmy|1 may 2024|2024-05-01
mdy|Dec 25, 2024|2024-12-25
mdy|Sept 1, 2024|2024-09-01
mdy|03/05/2024|2024-03-05
ymd|2024/3/5|2024-03-05
ymd|2024-3-5|2024-03-05
ymd|2024 Mar 5|2024-03-05
ymd|2024/2/29|2024-02-29
ymd|0024/2/29|0024-02-29
END
while IFS='|' read -r order text iso; do
  run --latitude 52 --from "$iso" --days 1
  mv out expected
  if [ "$(cut -d' ' -f1 expected)" != "$iso" ]; then echo 'a row of that date' >expected; fi
  expect_table "date $order $text" expected --latitude 52 --from "$text" --days 1 --order "$order"
done <dates

while IFS='|' read -r order text pattern; do
  expect_error "date $order '$text'" 1 "$pattern" --latitude 52 --from "$text" --order "$order"
done <<'END'
ymd|2023-02-29|there is no date
ymd|2024-02-30|there is no date
ymd|20241301|there is no date
ymd|2024-13-45|there is no date
dmy|31/4/2024|there is no date
mdy|Feb 29, 1900|there is no date
mdy|13/1/2024|there is no date
ymd|0000/1/1|there is no date
ymd|0000-01-01|there is no date
ymd|2024-00-10|cannot read the date
ymd|2024-01-00|cannot read the date
ymd|2024-03-05T14:07|cannot read the date
ymd|2024-0305|cannot read the date
ymd|2024-03-|cannot read the date
ymd||cannot read the date
ymd|hello|cannot read the date
ymd|5 March 2024|cannot read the date
ymd|24/3/5|cannot read the date
dmy|3/5/24|cannot read the date
dmy|5 Ma 2024|cannot read the date
dmy|5 Marx 2024|cannot read the date
dmy|5 Decembers 2024|cannot read the date
dmy|5 xyz 2024|cannot read the date
dmy|5//3/2024|cannot read the date
dmy|5/3/2024/|cannot read the date
dmy|-5/3/2024|cannot read the date
dmy|5/3|cannot read the date
dmy|1/5/3/2024|cannot read the date
dmy|65541/3/2024|cannot read the date
dmy|1e+0/3/2024|cannot read the date
dmy|5/3/12024|cannot read the date
END
expect_error "date of many bytes" 1 "cannot read the date" --latitude 52 --from "$(printf '%100000s' x | tr ' ' -)"
expect_error "date in two lines" 1 "cannot read the date" --latitude 52 --from "2024
03 05"

run --latitude 52 --from 9999-12-30 --days 2
[ $status -eq 0 ] && [ "$(cut -d' ' -f1 out | tail -n 1)" = 9999-12-31 ]
report "the last possible day" $? err
expect_error "a day after the last" 1 "31 December 9999" --latitude 52 --from 9999-12-30 --days 3

# ---- Numbers

for latitude in '' - . 1. +5 5,5 5x 90.01 -90.01 nan inf 0x10 1e5 1e+5 1e+ e+1 1e-999 '5 ' '5
6'; do
  expect_error "latitude '$latitude'" 1 "the latitude is -90 to 90 degrees" --latitude "$latitude"
done
for latitude in 90 -90 .5 -.5 0 -0 5e-1 1e+1; do
  run --latitude "$latitude" --from 2026-06-01 --days 1
  [ $status -eq 0 ] && [ ! -s err ] && [ "$(wc -l <out)" -eq 1 ]
  report "latitude $latitude" $? err
done
for days in '' - 0 -1 +1 1.5 1e+1 1,000 36601 99999999999999999999 7x ' 7'; do
  expect_error "days '$days'" 1 "the number of days is 1 to 36600" --latitude 52 --days "$days"
done
