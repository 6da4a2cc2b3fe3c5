# The catalog of messages. almanac_test.sh sources this file last, since `seen` contains the numbers of all earlier
# errors.

catalog=$(dirname "$almanac")/almanac.xml
# A longer file would be read in two blocks, and a message that both contain would lose its beginning.
xmllint --noout "$catalog" && [ "$(wc -c <"$catalog")" -le 8192 ]
report "the catalog is well-formed and read in one piece" $?
xmllint --xpath '//ID/text()' "$catalog" | sort -n >expected
sort -nu seen | diff expected - >why
report "every message of the catalog occurs, and no other number" $? why

# expect_message NAME EXPECTED COMMAND [ARGUMENT...]: expects this error for an invalid date.
expect_message() {
  name=$1
  printf 'ERROR: #20\t%s\n' "$2" >expected
  shift 2
  "$@" --latitude 5 --from '%2 %1' 2>err
  diff expected err >why
  report "$name" $? why
}

# The program reads the catalog in its own directory, wherever that is and however the program is called.
mkdir moved
cp "$almanac" moved/
expect_message "no catalog" "the message is missing in $work/moved/almanac.xml; \"%2 %1\"" moved/almanac
sed 's/cannot read the date [^<]*</%1 ist kein Datum</' "$catalog" >moved/almanac.xml
expect_message "another catalog" '"%2 %1" ist kein Datum' moved/almanac
ln -s ../moved/almanac home/almanac
expect_message "called by a link" '"%2 %1" ist kein Datum' home/almanac
PATH=$work/moved:$PATH
expect_message "called by the search path" '"%2 %1" ist kein Datum' almanac
# Placeholders in an inserted text are not replaced.
expect_error "two values" 2 'unknown word "%2%1%2" for --order; try --help$' --latitude 5 --order '%2%1%2'
