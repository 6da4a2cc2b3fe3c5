#!/bin/sh
# Tests that ZN_UDF_ASSERTIONS enables or disables assertions in each build type.
# usage: assertions_test.sh SOURCE_DIR COMPILER
set -eu
source=$1
compiler=$2
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"

for build_type in Debug Release; do
  for option in ON OFF; do
    build=$work/$build_type$option
    quietly "configuring" cmake -S "$source" -B "$build" -DCMAKE_CXX_COMPILER="$compiler" \
      -DCMAKE_BUILD_TYPE=$build_type -DZN_UDF_ASSERTIONS=$option -DZN_UDF_TESTS=OFF -DZN_UDF_EXAMPLES=OFF
    quietly "compiling" make -C "$build" src/udf/zn_xmlparser.cpp.o
    object=$(find "$build" -name zn_xmlparser.cpp.o)
    if nm "$object" | grep -q 'U .*assert'; then found=ON; else found=OFF; fi
    [ $found = $option ] || fail "$build_type with ZN_UDF_ASSERTIONS=$option has assertions $found"
  done
done
echo "ZN_UDF_ASSERTIONS works in each build type"
