#!/bin/sh
# The Debian packages that cpack makes: their files, what they depend on, and a program built from what they hold. With a
# directory that holds a bare Debian system, as debootstrap makes it, they are installed and removed there as well.
# usage: packages_test.sh SOURCE_DIR [BARE_SYSTEM]
set -eu
source=$1
# shellcheck source=tests/scripts/functions.sh
. "$source/tests/scripts/functions.sh"

(cd "$source" && quietly "configuring" cmake --preset package -B "$work/build")
quietly "building" cmake --build "$work/build" -j 2
(cd "$work/build" && quietly "packaging" cpack)
library=$(echo "$work"/build/libzn-udf1_*.deb)
development=$(echo "$work"/build/libzn-udf-dev_*.deb)
multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH)

# files PACKAGE: those in it, one a line, the machine's directory by another name, and one page for all of the reference.
files() {
  dpkg-deb --fsys-tarfile "$1" | tar -t | awk '!/\/$/ && (!/\/html\// || /\/html\/index\.html$/)' |
    sed "s|$multiarch|MULTIARCH|" | LC_ALL=C sort
}
{ echo libzn-udf1; files "$library"; echo libzn-udf-dev; files "$development"; } >"$work/files"
diff -u "$source/tests/data/packages.txt" "$work/files" || fail "the files in the packages"

# depends PACKAGE PATTERN...: it depends on what each pattern matches, and on nothing else.
depends() {
  dpkg-deb -f "$1" Depends | tr ',' '\n' | sed 's/^ *//' | LC_ALL=C sort >"$work/depends"
  shift
  printf '%s\n' "$@" >"$work/patterns"
  if grep -vxEf "$work/patterns" "$work/depends"; then fail "unexpected dependencies"; fi
  [ "$(wc -l <"$work/depends")" -eq $# ] || fail "missing dependencies" "$work/depends"
}
depends "$library" 'libc6 .*' 'libedit2 .*' 'libexpat1 .*' 'libgcc-s1 .*' 'libstdc\+\+6 .*'
depends "$development" "libzn-udf1 \(= $(dpkg-deb -f "$library" Version)\)" 'libexpat1-dev'
dpkg-deb -I "$library" shlibs | grep -q '^libzn_udf 1 libzn-udf1 (>= ' || fail "the shlibs file"

mkdir "$work/root"
dpkg-deb -x "$library" "$work/root"
dpkg-deb -x "$development" "$work/root"
library_dir=$work/root/usr/lib/$multiarch
export PKG_CONFIG_PATH="$library_dir/pkgconfig"
# A list of words.
# shellcheck disable=SC2046
quietly "a program" c++ -std=c++17 "$source/tests/consumers/host.cpp" $(pkg-config --cflags --libs zn_udf) \
  "-Wl,-rpath,$library_dir" -o "$work/host"
"$work/host" | diff "$source/tests/consumers/host.out" - || fail "what the program prints"
echo "The packages hold what they should"

[ $# -gt 1 ] || exit 0

bare=$2
inside=/tmp/packages
mkdir -p "$bare$inside"
cp "$library" "$development" "$source/tests/consumers/host.cpp" "$bare$inside/"
# A format of dpkg-query's, not an expansion of the shell's.
# shellcheck disable=SC2016
format='${Package}\n'
before=$(chroot "$bare" dpkg-query -W -f "$format" | sort)
chroot "$bare" sh -eu -c "
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -q
  apt-get install -q -y --no-install-recommends $inside/libzn-udf1_*.deb
  ldconfig -p | grep -q libzn_udf.so.1
  apt-get install -q -y --no-install-recommends $inside/libzn-udf-dev_*.deb g++ pkg-config
  c++ -std=c++17 $inside/host.cpp \$(pkg-config --cflags --libs zn_udf) -o $inside/host
  $inside/host >$inside/printed" >"$work/log" 2>&1 || fail "installing on a bare system" "$work/log"
diff "$source/tests/consumers/host.out" "$bare$inside/printed" || fail "what the program prints on a bare system"
chroot "$bare" sh -eu -c "
  export DEBIAN_FRONTEND=noninteractive
  apt-get purge -q -y libzn-udf-dev libzn-udf1 g++ pkg-config
  apt-get autoremove --purge -q -y" >"$work/log" 2>&1 || fail "removing from a bare system" "$work/log"
left=$(find "$bare/usr" "$bare/etc" "$bare/var/lib/dpkg/info" -iname '*zn[-_]udf*')
[ -z "$left" ] || fail "left behind: $left"
[ "$(chroot "$bare" dpkg-query -W -f "$format" | sort)" = "$before" ] || fail "packages are left behind"
rm -r "$bare$inside"
echo "The packages install on a bare system and leave nothing behind"
