#!/bin/sh
# Tests that the examples in the comments of the public headers have the results shown there, and that a header whose
# examples are wrong, missing or not extracted is reported.
# usage: header_examples_test.sh SOURCE_DIR PYTHON LIBRARY_DIR COMPILER [FLAG]...
set -eu
source=$1
python=$2
shift 2
examples=$source/tools/header_examples.py
files=$source/tests/data/examples
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"

compiler="$*"
# The library, the compiler and its flags are separate words.
# shellcheck disable=SC2086
"$python" "$examples" run "$source/include" "$files" $compiler || fail "the headers show other results"

# A header with what the programs expect of the library.
mkdir "$work/include"
cat >"$work/header" <<'END'
#include <string>

namespace zn_lib {
class String : public std::string {};
struct name_of_file {
  std::string path, name, extension;
};
struct date_time_record {
  int day, month, year, hour, minute, second;
};
}  // namespace zn_lib
END

# expect STATUS COMMENT: runs the examples of a header that begins with this comment. Each line of standard input must
# be part of the output.
expect() {
  printf '%s\n' "$2" | cat - "$work/header" >"$work/include/shown.h"
  status=0
  # shellcheck disable=SC2086
  "$python" "$examples" run "$work/include" "$files" $compiler >"$work/log" 2>&1 || status=$?
  [ "$status" -eq "$1" ] || fail "exit status $status instead of $1 for: $2" "$work/log"
  while read -r line; do
    grep -qF -- "$line" "$work/log" || fail "the output lacks: $line" "$work/log"
  done
}

expect 0 '/// \file
///
///     std::string shown = "x";
///     shown             ->  "x"
///     std::cout << "a\nb\n";   // standard output:
///     // a
///     // b
///     std::cerr << 7;   // standard error: 7
///     2.0 / 3.0         ->  0.667   // rounded
///     "varies"          ->  "other"   // for instance' <<'END'
Ran 6 lines of the examples in 1 headers
END
expect 1 '///
///     std::string shown = "x";
///     shown             ->  "y"
///     2.0 / 3.0         ->  0.666
///     std::cout << "a";
///     std::cout << "a";   // standard error: a
///
/// ```xml
/// <a/>
/// ```' <<'END'
shown.h:3: the result is "x"
shown.h:4: the result is 0.667
shown.h:5: the standard output is ['a']
shown.h:6: the standard output is ['a']
shown.h:6: the standard error is []
shown.h:8: no file has this text
END
expect 1 '/// Without an example.' <<'END'
shown.h:1: the header has no example
END
expect 1 '///
///     unknown()  ->  7' <<'END'
shown.h:1: the examples do not compile
END
expect 1 '///
///     std::exit(3);' <<'END'
shown.h:1: the examples end early, with status 3
END
expect 1 '///
///     shown is true' <<'END'
shown.h:2: neither a statement nor an expression with its result: shown is true
END
expect 1 '///
///     // a' <<'END'
shown.h:2: a line of output belongs to no statement
END
expect 1 '///
/// 1 + 1  ->  2' <<'END'
shown.h:2: an example that is not indented
END
expect 1 '///
/// ```text' <<'END'
shown.h:2: a block of anything but XML
END
echo "Every wrong example is reported"
