#!/bin/sh
# Tests that bench/instructions.py fails for rows that have grown, and that it says so if it compared nothing.
# usage: instructions_test.sh SOURCE_DIR PYTHON
set -eu
source=$1
python=$2
instructions=$source/bench/instructions.py
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"

cat >"$work/counts" <<'END'
# A comment.

[machine A]
long 1000
short 100

[machine B]
short 90
END

# expect STATUS TEXT MEASURED: compares the section MEASURED with the counts above.
expect() {
  printf '%s\n' "$3" >"$work/measured"
  status=0
  "$python" "$instructions" --counts "$work/counts" --measured "$work/measured" >"$work/log" 2>&1 || status=$?
  [ "$status" -eq "$1" ] || fail "exit status $status instead of $1 for: $3" "$work/log"
  grep -qF -- "$2" "$work/log" || fail "the output lacks: $2" "$work/log"
}

expect 0 "Compared the instructions of 2 rows" "[machine A]
long 1000
short 100"
expect 0 "Compared the instructions of 2 rows" "[machine A]
long 1030
short 103"
expect 1 "short: 100 -> 104 instructions (+4.0 %)" "[machine A]
long 1000
short 104"
expect 1 "long: 1,000 -> 1,031 instructions (+3.1 %)" "[machine A]
long 1031
short 50"
expect 0 "long: 1,000 -> 960 instructions (-4.0 %)" "[machine A]
long 960
short 100"
expect 1 "long: is listed, but was not counted" "[machine A]
short 100"
expect 1 "new: was counted (7), but is not listed" "[machine A]
long 1000
new 7
short 100"
expect 1 "bench/instructions --renew" "[machine A]
long 1000
short 104"
expect 77 "COMPARED NOTHING" "[machine C]
long 1000
short 104"

# The counts are renewed for the machine that measured, and kept for others.
printf '[machine A]\nshort 104\n' >"$work/measured"
"$python" "$instructions" --counts "$work/counts" --measured "$work/measured" --renew >"$work/log"
sed '/^#/d; /^$/d' "$work/counts" >"$work/renewed"
printf '[machine A]\nshort 104\n[machine B]\nshort 90\n' >"$work/expected"
diff -u "$work/expected" "$work/renewed" || fail "--renew wrote other counts"
echo "Every change of a count is reported"
