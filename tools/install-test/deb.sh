#!/bin/sh
# Unpacks a runtime package and the -dev package of tools/package.sh into a
# temporary root and uses them as a client on the target would: header and
# flags from the packaged ui32.pc (prefix moved to the temporary root), the
# plug-in from its plugindir, in the multiarch directory of the package's
# architecture.
#   usage: deb.sh RUNTIME.deb DEV.deb C_COMPILER [RUNNER ...]
# RUNNER runs the client (e.g. qemu-arm -L /usr/arm-linux-gnueabihf).
set -eu
runtime=$1
dev=$2
cc=$3
shift 3
client="$(dirname "$0")/client.c"

fail() {
    echo "package install test: $*" >&2
    exit 1
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root="$work/root"
dpkg-deb -x "$runtime" "$root"
dpkg-deb -x "$dev" "$root"
[ "$(dpkg-deb -f "$dev" Version)" = "$(dpkg-deb -f "$runtime" Version)" ] || fail "versions differ"

pc=$(cd "$root" && ls usr/lib/*/pkgconfig/ui32.pc) || fail "no ui32.pc in $dev"
triplet=$(echo "$pc" | cut -d/ -f3)
[ -f "$root/usr/lib/$triplet/ui32/ui32.so" ] || fail "no usr/lib/$triplet/ui32/ui32.so in $runtime"

command -v pkg-config >/dev/null || fail "pkg-config is not installed"
PKG_CONFIG_LIBDIR="$root/usr/lib/$triplet/pkgconfig"
PKG_CONFIG_PATH=""
export PKG_CONFIG_LIBDIR PKG_CONFIG_PATH
moved="--define-variable=prefix=$root/usr"
cflags=$(pkg-config "$moved" --cflags ui32 | sed 's/[[:space:]]*$//') || fail "pkg-config does not know ui32"
plugindir=$(pkg-config "$moved" --variable=plugindir ui32)
[ "$cflags" = "-I$root/usr/include" ] || fail "cflags [$cflags], expected [-I$root/usr/include]"
[ "$plugindir" = "$root/usr/lib/$triplet/ui32" ] || fail "plugindir [$plugindir], expected [$root/usr/lib/$triplet/ui32]"

# shellcheck disable=SC2086 # cflags is a list of options
"$cc" -std=c99 -pedantic -Wall -Wextra -Werror $cflags "$client" -o "$work/client" -ldl ||
    fail "the client does not build with the packaged header"
"$@" "$work/client" "$plugindir/ui32.so" || fail "the client failed with the packaged plug-in"
echo "package install test: $(basename "$runtime") and $(basename "$dev") work ($triplet)"
