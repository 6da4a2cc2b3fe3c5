#!/bin/sh
# Tests the recipes in `packaging`. A Meson project builds the library with the wrap file. The files for Conan and vcpkg
# are only parsed, because Debian does not package their tools.
# usage: package_recipes_test.sh SOURCE_DIR
set -eu
source=$1
recipes=$source/packaging
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"

version=$(sed -n 's/^project(zn_udf VERSION \([^ ]*\) .*/\1/p' "$source/CMakeLists.txt")
for file in conan/conanfile.py vcpkg/zn-udf/vcpkg.json; do
  grep -qE "\"?version\"?( =|:) \"$version\"" "$recipes/$file" || fail "the version in $file"
done

# An archive stands in for the download of a release.
host=$work/host
cache=$host/subprojects/packagecache
mkdir -p "$cache" "$work/zn_udf-$version"
tar -C "$source" --exclude=./build --exclude=./.git -cf - . | tar -C "$work/zn_udf-$version" -xf -
tar -C "$work" -czf "$cache/zn_udf-$version.tar.gz" "zn_udf-$version"
checksum=$(sha256sum "$cache/zn_udf-$version.tar.gz" | cut -d' ' -f1)
sed "s/^source_hash = .*/source_hash = $checksum/" "$recipes/meson/zn_udf.wrap" >"$host/subprojects/zn_udf.wrap"
cp "$source/tests/consumers/meson/meson.build" "$source/tests/consumers/host.cpp" "$host/"
quietly "configuring with Meson" meson setup "$host/build" "$host"
quietly "building with Meson" meson compile -C "$host/build" -j 2
"$host/build/host" | diff "$source/tests/consumers/host.out" - || fail "the output of the program that Meson built"
echo "Meson built a program and the library"

for file in "$recipes/conan/conanfile.py" "$recipes/conan/test_package/conanfile.py"; do
  python3 -c 'import ast, sys; ast.parse(open(sys.argv[1]).read())' "$file" || fail "$file"
done
python3 -m json.tool "$recipes/vcpkg/zn-udf/vcpkg.json" >/dev/null || fail "vcpkg.json"
echo "Only parsed, not run: the recipe for Conan, and vcpkg.json. Not read at all: portfile.cmake"
