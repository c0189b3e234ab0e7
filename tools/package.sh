#!/bin/sh
# make package: Debian packages of the plug-in, written to build/packages/:
#
#   ui32_<v>_<arch>.deb        the plug-in, /usr/lib/<triplet>/ui32/ui32.so
#                              (Multi-Arch: same; amd64, i386, armhf)
#   ui32-dev_<v>_<arch>.deb    ui32.h and /usr/lib/<triplet>/pkgconfig/ui32.pc
#   ui32-neon_<v>_armhf.deb    the armhf-neon build of the plug-in, same file
#                              names; conflicts with, replaces and provides ui32
#
# Each preset's library is built (target ui32 only) in build/package-<preset>
# with the Debian paths, installed into a staging tree with the project's own
# install rules, split, stripped and packed with dpkg-deb.  Depends is computed
# from the module: the package of each NEEDED library (only libc.so.6 is
# allowed) at the highest GLIBC_ symbol version the module uses.  The
# changelog and machine-readable copyright are in cmake/debian/.
#
# Every package is then checked by tools/check-package.sh (lintian with no
# error or warning allowed, contents, ABI of the packed module) unless
# UI32_PACKAGE_CHECK=0 (tools/check.sh checks them itself and counts them).
set -eu
cd "$(dirname "$0")/.."
root=$(pwd)
out="$root/build/packages"
debian="$root/cmake/debian"

tools/install-deps.sh

version=$(sed -n 's/^project(ui32 VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
changelog_version=$(sed -n '1s/^ui32 (\([^)]*\)).*/\1/p' "$debian/changelog")
[ "$version" = "$changelog_version" ] || {
    echo "package: the project is $version but cmake/debian/changelog starts at $changelog_version" >&2
    exit 1
}
maintainer=$(sed -n 's/^ -- \(.*>\)  .*/\1/p' "$debian/changelog" | head -n 1)

rm -rf "$out"
mkdir -p "$out"

# Doc directory of a package: copyright and the compressed changelog (native
# package: changelog.gz), byte-identical on every architecture.
docs() {
    mkdir -p "$1/usr/share/doc/$2"
    install -m 0644 "$debian/copyright" "$1/usr/share/doc/$2/copyright"
    gzip -9nc "$debian/changelog" >"$1/usr/share/doc/$2/changelog.gz"
    chmod 0644 "$1/usr/share/doc/$2/changelog.gz"
}

# Writes DEBIAN/control (fields on stdin, then the common ones) and
# DEBIAN/md5sums of a tree, and packs it.
pack() {
    tree=$1
    name=$2
    arch=$3
    mkdir -p "$tree/DEBIAN"
    {
        echo "Package: $name"
        echo "Source: ui32"
        echo "Version: $version"
        echo "Architecture: $arch"
        echo "Maintainer: $maintainer"
        echo "Installed-Size: $(du -sk --exclude=DEBIAN "$tree" | cut -f1)"
        cat
    } >"$tree/DEBIAN/control"
    (cd "$tree" && find usr -type f | LC_ALL=C sort | xargs md5sum) >"$tree/DEBIAN/md5sums"
    find "$tree" -type d -exec chmod 0755 {} +
    find "$tree" -type f -exec chmod 0644 {} +
    deb="$out/${name}_${version}_${arch}.deb"
    dpkg-deb --root-owner-group -Zxz --build "$tree" "$deb" >/dev/null
    echo "package: $deb"
    dpkg-deb -c "$deb" | awk '$6 !~ /\/$/ {print "    " $6}'
}

# The Depends of a module: NEEDED libraries and the highest GLIBC_ version.
depends_of() {
    needed=$(readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
    [ "$needed" = "libc.so.6" ] || {
        echo "package: $1 needs [$needed], only libc.so.6 is packaged for" >&2
        exit 1
    }
    glibc=$(readelf --version-info -W "$1" | grep -o 'GLIBC_[0-9][0-9.]*' | sed 's/GLIBC_//' | sort -V | tail -n 1)
    [ -n "$glibc" ] || {
        echo "package: $1 uses no versioned libc symbol" >&2
        exit 1
    }
    echo "libc6 (>= $glibc)"
}

# package PRESET ARCH TRIPLET STRIP RUNTIME_NAME
package() {
    preset=$1
    arch=$2
    triplet=$3
    strip=$4
    name=$5
    build="$root/build/package-$preset"
    stage="$build/stage"
    mkdir -p "$build"
    if ! cmake --preset "$preset" -B "$build" -DUI32_BUILD_TESTS=OFF -DUI32_BUILD_TOOLS=OFF \
        -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_LIBDIR="lib/$triplet" >"$build/configure.log" 2>&1; then
        cat "$build/configure.log"
        echo "package: configure failed for $preset" >&2
        exit 1
    fi
    cmake --build "$build" --target ui32 -j2
    rm -rf "$stage"
    DESTDIR="$stage/install" cmake --install "$build" >"$build/install.log"
    installed="$stage/install/usr"
    [ -f "$installed/lib/$triplet/ui32/ui32.so" ] && [ -f "$installed/include/ui32.h" ] &&
        [ -f "$installed/lib/$triplet/pkgconfig/ui32.pc" ] || {
        echo "package: $preset did not install the Debian layout" >&2
        find "$stage/install" >&2
        exit 1
    }

    runtime="$stage/$name"
    mkdir -p "$runtime/usr/lib/$triplet/ui32"
    "$strip" --strip-unneeded --remove-section=.comment --remove-section=.note \
        -o "$runtime/usr/lib/$triplet/ui32/ui32.so" "$installed/lib/$triplet/ui32/ui32.so"
    docs "$runtime" "$name"
    depends=$(depends_of "$runtime/usr/lib/$triplet/ui32/ui32.so")
    summary=$(head -n 1 "$debian/description")
    if [ "$name" = ui32 ]; then
        pack "$runtime" ui32 "$arch" <<EOF
Multi-Arch: same
Depends: $depends
Section: libs
Priority: optional
Description: $summary
$(tail -n +2 "$debian/description")
EOF
    else
        pack "$runtime" "$name" "$arch" <<EOF
Multi-Arch: same
Depends: $depends
Conflicts: ui32
Replaces: ui32
Provides: ui32 (= $version)
Section: libs
Priority: optional
Description: $summary (NEON build)
$(tail -n +2 "$debian/description")
 .
 This build uses the NEON unit of ARMv7 processors that have one; it
 installs the same files as ui32 and takes its place.
EOF
        return
    fi

    dev="$stage/ui32-dev"
    mkdir -p "$dev/usr/include" "$dev/usr/lib/$triplet/pkgconfig"
    install -m 0644 "$installed/include/ui32.h" "$dev/usr/include/ui32.h"
    install -m 0644 "$installed/lib/$triplet/pkgconfig/ui32.pc" "$dev/usr/lib/$triplet/pkgconfig/ui32.pc"
    docs "$dev" ui32-dev
    pack "$dev" ui32-dev "$arch" <<EOF
Multi-Arch: same
Depends: ui32 (= $version)
Section: libdevel
Priority: optional
Description: $summary (development files)
 The C interface ui32.h (the records, the slot types and srn_get) and the
 pkg-config file ui32.pc, whose variable plugindir names the directory of
 the plug-in. Clients compile with the flags of "pkg-config --cflags ui32"
 and load the plug-in at run time; they do not link to it.
EOF
}

package native amd64 x86_64-linux-gnu strip ui32
package i386 i386 i386-linux-gnu strip ui32
package armhf armhf arm-linux-gnueabihf arm-linux-gnueabihf-strip ui32
package armhf-neon armhf arm-linux-gnueabihf arm-linux-gnueabihf-strip ui32-neon

if [ "${UI32_PACKAGE_CHECK:-1}" != 0 ]; then
    status=0
    for deb in "$out"/*.deb; do
        tools/check-package.sh "$deb" || status=1
    done
    exit $status
fi
