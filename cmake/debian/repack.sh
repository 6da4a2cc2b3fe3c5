#!/bin/sh
# Completes a package that cpack has created, because cpack has no options for what follows. The result does not depend
# on the umask of the user.
# usage: repack.sh PACKAGE
set -eu
package=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root
dpkg-deb -R "$package" "$root"
name=$(dpkg-deb -f "$package" Package)

# These call ldconfig, which the trigger does.
rm -f "$root/DEBIAN/postinst" "$root/DEBIAN/postrm"
# cpack leaves a section that dh_strip removes.
find "$root" -name '*.so.*' -type f -print0 | xargs -0 -r -n 1 objcopy --remove-section=.comment
case $name in
  *-dbgsym)
    # As debhelper does, the package refers to the changelog and the copyright of its library.
    mkdir -p "$root/usr/share/doc"
    ln -s "${name%-dbgsym}" "$root/usr/share/doc/$name"
    ;;
esac
(cd "$root" && find . -type f ! -path './DEBIAN/*' -printf '%P\0' | LC_ALL=C sort -z | xargs -0 md5sum) >"$work/md5sums"
cp "$work/md5sums" "$root/DEBIAN/md5sums"

find "$root" -type d -exec chmod 755 {} +
find "$root" -type f -exec chmod 644 {} +
find "$root" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
dpkg-deb --root-owner-group -Zxz -b "$root" "$package"
