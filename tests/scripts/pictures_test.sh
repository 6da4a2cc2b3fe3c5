#!/bin/sh
# Tests that the picture in docs/PERFORMANCE.md is what bench/growth_plot.py draws from the figures beside it. The
# picture of almanac is tested with README.md.
# usage: pictures_test.sh SOURCE_DIR PYTHON
set -eu
source=$1
python=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$python" -B "$source/bench/growth_plot.py" "$source/docs/performance_growth.json" "$work/growth.svg"
cmp "$source/docs/performance_growth.svg" "$work/growth.svg" ||
  { echo "FAILED: docs/performance_growth.svg does not show docs/performance_growth.json"; exit 1; }
echo "docs/performance_growth.svg shows docs/performance_growth.json"
