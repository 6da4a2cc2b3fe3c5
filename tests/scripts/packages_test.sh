#!/bin/sh
# Tests the Debian packages that cpack creates: that they are reproducible, lintian's findings, their files, their
# dependencies, the list of symbols, the debug information, and a program that is built with them.
# With the directory of a bare Debian system, as debootstrap creates it, also installs and removes them there.
# usage: packages_test.sh SOURCE_DIR [BARE_SYSTEM]
set -eu
source=$1
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"

# package SOURCE_DIR BUILD_DIR: builds the packages.
package() {
  (cd "$1" && quietly "configuring" cmake --preset package -B "$2")
  quietly "building" cmake --build "$2" -j 2
  (cd "$2" && quietly "packaging" cpack)
}
unset SOURCE_DATE_EPOCH
export CCACHE_DISABLE=1
package "$source" "$work/build"

# A copy of the tree yields the same packages in another directory, at another time, for another user.
copy=$work/a/directory/with/a/longer/name
mkdir -p "$copy"
tar -C "$source" --exclude=./build --exclude=./.git -cf - . | tar -C "$copy" -xmf -
(umask 077 && export TZ=Asia/Kolkata && package "$copy" "$copy/build/package")
(cd "$work/build" && ls ./*deb) >"$work/packages"
(cd "$copy/build/package" && ls ./*deb) | diff "$work/packages" - || fail "the names of the packages"
while read -r name; do
  cmp "$work/build/$name" "$copy/build/package/$name" || fail "the copy of the tree yields another $name"
done <"$work/packages"
rm -r "$copy"
echo "The packages are the same, wherever and whenever they are built"

library=$(echo "$work"/build/libzn-udf1_*.deb)
development=$(echo "$work"/build/libzn-udf-dev_*.deb)
debug=$(echo "$work"/build/libzn-udf1-dbgsym_*.ddeb)
quietly "lintian" lintian --fail-on error,warning "$library" "$development" "$debug"
echo "lintian has no errors and no warnings"

multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH)

# files PACKAGE: prints its name and its files, one on each line. The directory of the machine and the file of debug
# information have other names, and one page stands for the reference.
files() {
  dpkg-deb -f "$1" Package
  dpkg-deb --fsys-tarfile "$1" | tar -t | awk '!/\/$/ && (!/\/html\// || /\/html\/index\.html$/)' |
    sed "s|$multiarch|MULTIARCH|; s|/[0-9a-f]*/[0-9a-f]*\.debug$|/BUILD_ID.debug|" | LC_ALL=C sort
}
{ files "$library"; files "$development"; files "$debug"; } >"$work/files"
diff -u "$source/tests/data/packages.txt" "$work/files" || fail "the files in the packages"

# depends PACKAGE PATTERN...: expects one dependency for each pattern, and no other.
depends() {
  dpkg-deb -f "$1" Depends | tr ',' '\n' | sed 's/^ *//' | LC_ALL=C sort >"$work/depends"
  shift
  printf '%s\n' "$@" >"$work/patterns"
  if grep -vxEf "$work/patterns" "$work/depends"; then fail "unexpected dependencies"; fi
  [ "$(wc -l <"$work/depends")" -eq $# ] || fail "missing dependencies" "$work/depends"
}
depends "$library" 'libc6 .*' 'libedit2 .*' 'libexpat1 .*' 'libgcc-s1 .*' 'libstdc\+\+6 .*'
version=$(dpkg-deb -f "$library" Version)
depends "$development" "libzn-udf1 \(= $version\)" 'libexpat1-dev'
depends "$debug" "libzn-udf1 \(= $version\)"

mkdir "$work/root"
dpkg-deb -R "$library" "$work/root"
for package in "$development" "$debug"; do dpkg-deb -x "$package" "$work/root"; done
library_dir=$work/root/usr/lib/$multiarch

# The package lists the version of each symbol, so a program depends on the oldest version that has what it uses. The
# build compares the list with the library; here, a list with another symbol or without one fails.
grep -q '^libzn_udf 1 libzn-udf1 (>= ' "$work/root/DEBIAN/shlibs" || fail "the shlibs file"
nm -D --defined-only --with-symbol-versions "$library_dir/libzn_udf.so.1" |
  sed 's/^[^ ]* . //; s/@@*/@/; s/^ZN_UDF_1$/&@ZN_UDF_1/' | LC_ALL=C sort >"$work/symbols"
sed -n 's/^ \([^ ]*\) 1\.1$/\1/p' "$work/root/DEBIAN/symbols" | LC_ALL=C sort | diff "$work/symbols" - ||
  fail "the symbols file"
symbols=$source/cmake/debian/libzn-udf1.symbols
mkdir "$work/debian"
printf 'Source: libzn-udf\n\nPackage: libzn-udf1\nArchitecture: any\n' >"$work/debian/control"
check_symbols() {
  (cd "$work" && dpkg-gensymbols -c4 -plibzn-udf1 -v"$version" -e"$library_dir/libzn_udf.so.1.1" -I"$1" -O/dev/null) \
    >"$work/log" 2>&1
}
check_symbols "$symbols" || fail "dpkg-gensymbols" "$work/log"
{ cat "$symbols"; echo ' missing@ZN_UDF_1 1.1'; } >"$work/longer.symbols"
if check_symbols "$work/longer.symbols"; then fail "dpkg-gensymbols accepts a symbol that the library lacks"; fi
grep -v 'zn_lib::yesOrNo' "$symbols" >"$work/shorter.symbols"
if check_symbols "$work/shorter.symbols"; then fail "dpkg-gensymbols accepts a library with another symbol"; fi

export PKG_CONFIG_PATH="$library_dir/pkgconfig"
# The flags are separate words.
# shellcheck disable=SC2046
quietly "a program" c++ -std=c++17 "$source/tests/consumers/host.cpp" $(pkg-config --cflags --libs zn_udf) \
  "-Wl,-rpath,$library_dir" -o "$work/host"
"$work/host" | diff "$source/tests/consumers/host.out" - || fail "the output of the program"
(cd "$work" && dpkg-shlibdeps -O -Sroot host 2>"$work/log") | grep -qE 'libzn-udf1 \(>= 1\.1\)' ||
  fail "the dependency of the program on the library" "$work/log"
echo "The packages have the expected files, dependencies and symbols"

# Debuggers find the debug information by the build ID of the library. It names no directory of this machine.
build_id=$(readelf -n "$library_dir/libzn_udf.so.1" | sed -n 's/.*Build ID: //p')
[ "$(dpkg-deb -f "$debug" Build-Ids)" = "$build_id" ] || fail "the build ID"
information=$work/root/usr/lib/debug/.build-id/$(echo "$build_id" | sed 's|..|&/|').debug
readelf --debug-dump=info "$information" >"$work/information" 2>&1
grep -q 'DW_AT_name.*: src/udf/zn_str\.cpp$' "$work/information" || fail "the names of the sources"
if grep -m 1 'DW_AT_comp_dir.*: /' "$work/information"; then fail "the debug information names a directory"; fi
echo "The debug information belongs to the library"

[ $# -gt 1 ] || exit 0

bare=$2
inside=/tmp/packages
mkdir -p "$bare$inside"
cp "$library" "$development" "$debug" "$source/tests/consumers/host.cpp" "$bare$inside/"
# A format of dpkg-query's, not an expansion of the shell's.
# shellcheck disable=SC2016
format='${Package}\n'
before=$(chroot "$bare" dpkg-query -W -f "$format" | sort)
chroot "$bare" sh -eu -c "
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -q
  apt-get install -q -y --no-install-recommends $inside/libzn-udf1_*.deb
  ldconfig -p | grep -q libzn_udf.so.1
  apt-get install -q -y --no-install-recommends $inside/libzn-udf-dev_*.deb $inside/*.ddeb g++ pkg-config
  c++ -std=c++17 $inside/host.cpp \$(pkg-config --cflags --libs zn_udf) -o $inside/host
  $inside/host >$inside/printed" >"$work/log" 2>&1 || fail "installing on a bare system" "$work/log"
diff "$source/tests/consumers/host.out" "$bare$inside/printed" || fail "the output of the program on a bare system"
chroot "$bare" sh -eu -c "
  export DEBIAN_FRONTEND=noninteractive
  apt-get purge -q -y libzn-udf-dev libzn-udf1-dbgsym libzn-udf1 g++ pkg-config
  apt-get autoremove --purge -q -y" >"$work/log" 2>&1 || fail "removing from a bare system" "$work/log"
left=$(find "$bare/usr" "$bare/etc" "$bare/var/lib/dpkg/info" -iname '*zn[-_]udf*')
[ -z "$left" ] || fail "files remain: $left"
[ "$(chroot "$bare" dpkg-query -W -f "$format" | sort)" = "$before" ] || fail "packages remain"
rm -r "$bare$inside"
echo "The packages are installed on a bare system and removed completely"
