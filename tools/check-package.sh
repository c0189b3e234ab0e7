#!/bin/sh
# Checks one Debian package of tools/package.sh: lintian reports no error and
# no warning, the package holds exactly the expected files for its
# architecture, and a packed plug-in is stripped and passes the ABI check.
#   usage: tools/check-package.sh build/packages/<name>_<version>_<arch>.deb
set -eu
deb=$1
name=$(dpkg-deb -f "$deb" Package)
arch=$(dpkg-deb -f "$deb" Architecture)
fail=0

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Lintian as a terminal image's build would run it (its note about running
# as root left out).
lintian_status=0
lintian --fail-on error,warning "$deb" >"$work/lintian.log" 2>&1 || lintian_status=$?
grep -v 'running with root privileges' "$work/lintian.log" || true
if [ $lintian_status != 0 ]; then
    echo "FAIL $deb: lintian"
    fail=1
fi

case "$arch" in
    amd64) triplet=x86_64-linux-gnu ;;
    i386) triplet=i386-linux-gnu ;;
    armhf) triplet=arm-linux-gnueabihf ;;
    *) echo "FAIL $deb: unexpected architecture $arch"; exit 1 ;;
esac
case "$name" in
    ui32 | ui32-neon) expected="usr/lib/$triplet/ui32/ui32.so" ;;
    ui32-dev) expected="usr/include/ui32.h usr/lib/$triplet/pkgconfig/ui32.pc" ;;
    *) echo "FAIL $deb: unexpected package $name"; exit 1 ;;
esac
expected=$(printf '%s\n' $expected "usr/share/doc/$name/changelog.gz" "usr/share/doc/$name/copyright" | LC_ALL=C sort)
files=$(dpkg-deb -c "$deb" | awk '$6 !~ /\/$/ {sub(/^\.\//, "", $6); print $6}' | LC_ALL=C sort)
if [ "$files" != "$expected" ]; then
    echo "FAIL $deb: holds [$(echo $files)], expected [$(echo $expected)]"
    fail=1
fi

dpkg-deb -x "$deb" "$work/root"
so="$work/root/usr/lib/$triplet/ui32/ui32.so"
if [ -f "$so" ]; then
    if readelf -S -W "$so" | grep -Eq '\.(symtab|debug_|comment)'; then
        echo "FAIL $deb: ui32.so is not stripped"
        fail=1
    fi
    tools/check-abi.sh "$so" >/dev/null || { tools/check-abi.sh "$so" || true; fail=1; }
fi
pc="$work/root/usr/lib/$triplet/pkgconfig/ui32.pc"
if [ -f "$pc" ] && ! grep -qx "libdir=\${prefix}/lib/$triplet" "$pc"; then
    echo "FAIL $deb: ui32.pc does not name the multiarch libdir"
    fail=1
fi

[ $fail = 0 ] && echo "package ok: $deb ($name, $arch, Depends: $(dpkg-deb -f "$deb" Depends))"
exit $fail
