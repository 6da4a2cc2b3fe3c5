#!/bin/sh
# Tests the Debian packages that cpack creates: their files, their dependencies, and a program that is built with them.
# With the directory of a bare Debian system, as debootstrap creates it, also installs and removes them there.
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

# files PACKAGE: prints its files, one on each line. The directory of the machine has another name, and one page stands
# for the reference.
files() {
  dpkg-deb --fsys-tarfile "$1" | tar -t | awk '!/\/$/ && (!/\/html\// || /\/html\/index\.html$/)' |
    sed "s|$multiarch|MULTIARCH|" | LC_ALL=C sort
}
{ echo libzn-udf1; files "$library"; echo libzn-udf-dev; files "$development"; } >"$work/files"
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
depends "$development" "libzn-udf1 \(= $(dpkg-deb -f "$library" Version)\)" 'libexpat1-dev'
dpkg-deb -I "$library" shlibs | grep -q '^libzn_udf 1 libzn-udf1 (>= ' || fail "the shlibs file"

mkdir "$work/root"
dpkg-deb -x "$library" "$work/root"
dpkg-deb -x "$development" "$work/root"
library_dir=$work/root/usr/lib/$multiarch
export PKG_CONFIG_PATH="$library_dir/pkgconfig"
# The flags are separate words.
# shellcheck disable=SC2046
quietly "a program" c++ -std=c++17 "$source/tests/consumers/host.cpp" $(pkg-config --cflags --libs zn_udf) \
  "-Wl,-rpath,$library_dir" -o "$work/host"
"$work/host" | diff "$source/tests/consumers/host.out" - || fail "the output of the program"
echo "The packages have the expected files and dependencies"

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
diff "$source/tests/consumers/host.out" "$bare$inside/printed" || fail "the output of the program on a bare system"
chroot "$bare" sh -eu -c "
  export DEBIAN_FRONTEND=noninteractive
  apt-get purge -q -y libzn-udf-dev libzn-udf1 g++ pkg-config
  apt-get autoremove --purge -q -y" >"$work/log" 2>&1 || fail "removing from a bare system" "$work/log"
left=$(find "$bare/usr" "$bare/etc" "$bare/var/lib/dpkg/info" -iname '*zn[-_]udf*')
[ -z "$left" ] || fail "files remain: $left"
[ "$(chroot "$bare" dpkg-query -W -f "$format" | sort)" = "$before" ] || fail "packages remain"
rm -r "$bare$inside"
echo "The packages are installed on a bare system and removed completely"
