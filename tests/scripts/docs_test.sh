#!/bin/sh
# Tests that the API reference builds without a warning: everything public is documented, and no link is broken. Its
# pages must link to each other, and its search must find them. The diagram in docs/ARCHITECTURE.md must show the
# includes.
# usage: docs_test.sh DOXYGEN DOXYFILE SOURCE_DIR PYTHON [DUK LUNR WRITE_INDEX...]
# Without the optional arguments, the search is not tested.
set -eu
doxygen=$1
doxyfile=$2
source=$3
python=$4
shift 4
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"
html=$work/html

# The last value of a setting counts.
{ cat "$doxyfile"; printf 'OUTPUT_DIRECTORY = "%s"\n' "$work"; } >"$work/Doxyfile"
if ! "$doxygen" "$work/Doxyfile" >"$work/log" 2>&1 || [ -s "$work/log" ]; then
  fail "the reference does not build without warnings" "$work/log"
fi
[ -s "$html/index.html" ] || fail "there is no index.html"
echo "The reference builds without warnings"

if grep -E '\\(ingroup|ref|see) ' "$html"/*.html >"$work/commands"; then
  fail "Doxygen shows commands as text" "$work/commands"
fi

# expect_links PAGE...: expects links from each page to a family and to the surprises.
expect_links() {
  for page in "$@"; do
    [ -e "$page" ] || fail "no page matches $page"
    case $page in *-members.html) continue ;; esac
    for link in 'group__family__[a-z]*\.html' 'behaviour\.html#behaviour_[a-z]*'; do
      grep -q "href=\"$link\"" "$page" || fail "$(basename "$page") has no link to $link"
    done
  done
}
expect_links "$html"/classzn*.html "$html"/classXML*.html "$html"/struct*.html "$html"/*_8h.html

# Each description on the page of a family ends with links to the header and to the family.
for page in "$html"/group__family__*.html; do
  grep -q "$(basename "$page")" "$html/index.html" || fail "index.html does not link to $(basename "$page")"
  awk '
    /class="memitem"/ { ++items }
    /class="section see"/ { see = 1 }
    see && /_8h\.html"/ && /group__family__/ && /behaviour\.html#/ { ++linked }
    /<\/dl>/ { see = 0 }
    END { exit items != linked }' "$page" || fail "a description in $(basename "$page") does not end with links"
done

# Each row that names a declaration has a link from its description.
grep -o '<td[^>]*><a class="anchor" id="behaviour_[a-z]*_[0-9]*"></a> *<a class="el"' "$html/behaviour.html" |
  grep -o 'behaviour_[a-z]*_[0-9]*' | sort >"$work/rows"
grep -oh 'href="behaviour\.html#behaviour_[a-z]*_[0-9]*"' "$html"/group*.html "$html"/class*.html "$html"/struct*.html |
  grep -o 'behaviour_[a-z]*_[0-9]*' | sort -u >"$work/linked"
[ "$(wc -l <"$work/rows")" -gt 200 ] || fail "few rows in behaviour.html" "$work/rows"
comm -23 "$work/rows" "$work/linked" >"$work/unlinked"
[ ! -s "$work/unlinked" ] || fail "rows of behaviour.html without a link to them" "$work/unlinked"
echo "The pages link to each other"

if [ $# -gt 0 ]; then
  duk=$1
  lunr=$2
  shift 2
  for file in search.html lunr.min.js reference_search.js; do
    [ -s "$html/$file" ] || fail "there is no $file"
  done
  if grep -L 'id="search-form"' "$html"/*.html | grep . >"$work/without"; then
    fail "pages without the form of the search" "$work/without"
  fi
  quietly "the texts of the search" "$@" "$html"
  "$duk" "$lunr" "$html/search_texts.js" "$source/docs/reference_search.js" \
    "$source/tests/scripts/docs_search_test.js" || fail "the search"
fi

"$python" -B "$source/tools/check_links.py" "$html"/*.html >"$work/broken" || fail "broken links" "$work/broken"
echo "No link of the pages is broken"

# Writes "a --> b & c" as "a b" and "a c".
sed -n 's/ -->//p' "$source/docs/ARCHITECTURE.md" | tr -d '&' |
  awk '{for (i = 2; i <= NF; ++i) print $1, $i}' | sort -u >"$work/drawn"
for file in "$source"/src/udf/*.cpp "$source"/include/*.h; do
  stem=$(basename "${file%.*}")
  sed -n 's/^#include "\(.*\)\.h"$/\1/p' "$file" | while read -r other; do
    if [ -f "$source/include/$other.h" ] && [ "$other" != "$stem" ] && [ "$other" != zn_common ]; then
      echo "$stem $other"
    fi
  done
done | sort -u >"$work/included"
[ -s "$work/drawn" ] || fail "docs/ARCHITECTURE.md has no diagram"
diff -u "$work/drawn" "$work/included" || fail "the diagram in docs/ARCHITECTURE.md has other arrows"
echo "The diagram in docs/ARCHITECTURE.md shows the includes"
