# The pictures of --svg, read by another XML program. Sourced by almanac_test.sh.

# expect_picture NAME FILE ARGUMENT...: expects success without output, and a well-formed picture without NaN.
expect_picture() {
  name=$1
  file=$2
  shift 2
  run --svg "$file" "$@"
  { echo "exit status $status"; cat err out; xmllint --noout "$file"; } >why 2>&1
  [ "$status" -eq 0 ] && [ ! -s err ] && [ ! -s out ] && xmllint --noout "$file" && ! grep -qi nan "$file"
  report "$name" $? why
}

# moons FILE: prints the date and the name of each quarter of the moon.
moons() {
  xmllint --xpath "//*[local-name()='g']/*[local-name()='title']/text()" "$1"
}

# day_of_epoch DATE: prints the days since 1970.
day_of_epoch() {
  echo $(($(date -u -d "$1" +%s) / 86400))
}

# No new or full moon of these years is within an hour of midnight, where the error of the model may change its date.
for year in 2011 2020 2029; do
  expect_picture "a picture of $year" $year.svg --latitude 52 --from $year
  first=$(day_of_epoch $year-01-01)
  last=$(day_of_epoch $year-12-31)
  # The reference counts days since 31 December 1979, which is day 3651 since 1970.
  awk -F, -v first="$first" -v last="$last" '/^[0-9]/ && $1 + 3651 >= first && $1 + 3651 < last + 1 {
    print int(($1 + 3651) * 86400), $2 == 0 ? "new moon" : "full moon" }' "$data/../data/moon_instants_reference.csv" |
    while read -r seconds name; do echo "$(date -u -d "@$seconds" +%Y-%m-%d) $name"; done >expected
  moons $year.svg | grep -E ' (new|full) moon$' | diff expected - >why
  report "new and full moons of $year" $? why
  points=$(xmllint --xpath "string(//*[local-name()='polyline']/@points)" $year.svg | wc -w)
  [ "$points" -eq $((last - first + 1)) ]
  report "a point for each day of $year" $?
done
expect_picture "a picture of the south" south.svg --latitude -52 --from 2029-07-15

for file in 2029.svg south.svg; do
  moons $file | cut -d' ' -f2- >quarters
  awk '
    BEGIN { next_of["new moon"] = "first quarter"; next_of["first quarter"] = "full moon"
            next_of["full moon"] = "last quarter"; next_of["last quarter"] = "new moon" }
    NR > 1 && $0 != next_of[before] { bad = 1 }
    { before = $0 }
    END { exit bad || NR < 49 }' quarters
  report "the quarters alternate in $file" $? quarters
done

# lit QUARTER FILE: prints the lit part: "none", "whole", or the sweep flag of its arc, 0 for right and 1 for left.
lit() {
  xmllint --xpath "(//*[local-name()='g'][contains(*[local-name()='title'], '$1')])[1]" "$2" |
    sed -n 's/.*<circle[^>]*class="lit".*/whole/p; t
            s/.*class="lit" d="[^"]* 0 0 \([01]\) .*/\1/p; t
            s/.*/none/p'
}
for file in 2029.svg south.svg; do
  for quarter in "new moon" "first quarter" "full moon" "last quarter"; do
    echo "$quarter: $(lit "$quarter" $file)"
  done
done >sides
cat >expected <<'END'
new moon: none
first quarter: 0
full moon: whole
last quarter: 1
new moon: none
first quarter: 1
full moon: whole
last quarter: 0
END
diff expected sides >why
report "the lit sides of the quarters" $? why

for latitude in 90 80 -75 -90 0; do
  expect_picture "a picture for latitude $latitude" latitude.svg --latitude $latitude --from 2028 --backup
done
for year in 0001 9999; do
  expect_picture "a picture of the year $year" $year.svg --latitude 52 --from $year-01-01
done
run --place Europe/Amsterdam --places "$places" --svg both.svg --output both.txt --from 2026-06-01
[ ! -s out ] && cmp -s both.txt "$data/week.txt" &&
  grep -q '<title>Day length and moon in 2026 at Europe/Amsterdam, latitude 52:22 N<' both.svg
report "table and picture" $? err

for verbose in '' --verbose; do
  run --place Europe/Amsterdam --places "$places" --svg - --from 2026-06-01 --save $verbose
  [ "$status" -eq 0 ] && [ ! -s err ] && cmp -s both.svg out && [ ! -e ./- ]
  report "a picture in standard output $verbose" $? err
done
rm home/.config/almanac.cfg*
