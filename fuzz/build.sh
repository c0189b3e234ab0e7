#!/bin/bash
# Builds the fuzz targets with clang into build/fuzz-<arch>/: one binary,
# `fuzz`, and a link to it named after each line of fuzz/targets.txt.
#   FUZZ_ARCH=x86_64|i386   target architecture (default x86_64; i386 gives
#                           32-bit pointers and size_t, as on the device)
#   FUZZ_SOURCE=<dir>       tree whose ui/ and include/ are fuzzed (default
#                           this checkout)
#   FUZZ_BUILD=<dir>        build directory
# The differential targets need FreeRDP 2 for the target architecture: they
# compare on x86-64 and only decode on i386.
set -euo pipefail
fuzz=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$fuzz")
arch=${FUZZ_ARCH:-x86_64}
source=${FUZZ_SOURCE:-$root}
build=${FUZZ_BUILD:-$root/build/fuzz-$arch}
cxx=${FUZZ_CXX:-clang++-14}

command -v "$cxx" >/dev/null || { echo "fuzz: $cxx not found (install clang-14 and libclang-rt-14-dev)" >&2; exit 2; }
case "$arch" in
    x86_64) archflags="" ;;
    # <asm/...> from the host kernel headers, as in the i386 preset.
    i386) archflags="-m32 -idirafter /usr/include/x86_64-linux-gnu" ;;
    *) echo "fuzz: unknown FUZZ_ARCH $arch" >&2; exit 2 ;;
esac

cmake -S "$fuzz" -B "$build" -DCMAKE_BUILD_TYPE= -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_CXX_FLAGS="$archflags" -DCMAKE_EXE_LINKER_FLAGS="$archflags" \
    -DUI32_SOURCE_DIR="$source" >"$build.configure.log" 2>&1 ||
    { cat "$build.configure.log"; exit 1; }
cmake --build "$build" -j2
