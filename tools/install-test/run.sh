#!/bin/sh
# Installs a build tree into a temporary prefix and uses it as an outside
# client would: header and flags from pkg-config, plug-in from its
# plugindir variable.
#   usage: run.sh BUILD_DIR C_COMPILER LIBDIR CLIENT_SOURCE
set -eu
build=$1
cc=$2
libdir=$3
client=$4

fail() {
    echo "install test: $*" >&2
    exit 1
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"

cmake --install "$build" --prefix "$prefix" >"$work/install.log" 2>&1 || {
    cat "$work/install.log" >&2
    fail "cmake --install failed"
}

# The plug-in alone in its directory: a regular file, no lib prefix, no
# versioned names or symbolic links.
plugin_files=$(cd "$prefix/$libdir/ui32" && ls -A)
[ "$plugin_files" = "ui32.so" ] || fail "$libdir/ui32 holds [$plugin_files], expected [ui32.so]"
[ -f "$prefix/$libdir/ui32/ui32.so" ] && [ ! -L "$prefix/$libdir/ui32/ui32.so" ] || fail "ui32.so is not a plain file"
[ -f "$prefix/include/ui32.h" ] || fail "include/ui32.h not installed"
[ -f "$prefix/$libdir/pkgconfig/ui32.pc" ] || fail "$libdir/pkgconfig/ui32.pc not installed"

command -v pkg-config >/dev/null || fail "pkg-config is not installed"
# Only the temporary tree: a ui32 installed on the machine must not answer.
PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
PKG_CONFIG_LIBDIR="$prefix/$libdir/pkgconfig"
export PKG_CONFIG_PATH PKG_CONFIG_LIBDIR

cflags=$(pkg-config --cflags ui32) || fail "pkg-config does not know ui32"
cflags=$(printf '%s' "$cflags" | sed 's/[[:space:]]*$//')
plugindir=$(pkg-config --variable=plugindir ui32)
case "$plugindir" in
    "$prefix"/*) ;;
    *) fail "plugindir [$plugindir] is not inside the prefix [$prefix]" ;;
esac
[ "$cflags" = "-I$prefix/include" ] || fail "cflags [$cflags], expected [-I$prefix/include]"

# shellcheck disable=SC2086 # cflags is a list of options
"$cc" -std=c99 -pedantic -Wall -Wextra -Werror $cflags "$client" -o "$work/client" -ldl ||
    fail "the client does not build with the installed header"
"$work/client" "$plugindir/ui32.so" || fail "the client failed with the installed plug-in"
echo "install test: prefix, pkg-config, header and plug-in work"
