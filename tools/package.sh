#!/bin/sh
# make package: Debian packages of the plug-in for amd64 (native preset) and
# armhf (armhf cross preset), written to build/packages/.
set -eu
cd "$(dirname "$0")/.."
out="$(pwd)/build/packages"
mkdir -p "$out"

tools/install-deps.sh

package() {
    preset=$1
    arch=$2
    build="build/package-$preset"
    mkdir -p "$build"
    if ! cmake --preset "$preset" -B "$build" -DUI32_BUILD_TESTS=OFF -DUI32_BUILD_TOOLS=OFF \
        >"$build/configure.log" 2>&1; then
        cat "$build/configure.log"
        echo "package: configure failed for $preset" >&2
        exit 1
    fi
    cmake --build "$build" --target ui32 -j2
    # The architecture is given explicitly: the packaging host is not the target.
    (cd "$build" && cpack -G DEB -B "$out" -D CPACK_DEBIAN_PACKAGE_ARCHITECTURE="$arch") >"$build/cpack.log" 2>&1 || {
        cat "$build/cpack.log"
        echo "package: cpack failed for $preset" >&2
        exit 1
    }
    deb=$(sed -n 's/.*package: \(.*\.deb\) generated.*/\1/p' "$build/cpack.log" | tail -1)
    [ -n "$deb" ] && [ -f "$deb" ] || {
        cat "$build/cpack.log"
        echo "package: no .deb for $preset" >&2
        exit 1
    }
    got=$(dpkg-deb -f "$deb" Architecture)
    [ "$got" = "$arch" ] || {
        echo "package: $deb is for $got, expected $arch" >&2
        exit 1
    }
    echo "package: $deb ($arch)"
    dpkg-deb -c "$deb" | awk '{print "    " $6}' | grep -v '/$'
}

package native amd64
package armhf armhf
rm -rf "$out/_CPack_Packages"
