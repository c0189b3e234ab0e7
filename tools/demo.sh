#!/bin/sh
# make demo: builds the library and the demo client with the native preset,
# draws the demo desktop through the plug-in and writes demo.png and
# demo-tiles.png in the repository root.  It installs only the build
# essentials and the demo's own packages (tools/packages/demo.txt); the peers
# are not needed.
#   UI32_DEMO_BUILD=<dir>  build directory (default build/native)
set -eu
cd "$(dirname "$0")/.."
root=$(pwd)

tools/install-deps.sh core demo

build=${UI32_DEMO_BUILD:-build/native}
mkdir -p "$build"
if ! cmake --preset native -B "$build" >"$build/demo-configure.log" 2>&1; then
    cat "$build/demo-configure.log"
    echo "demo: configure failed" >&2
    exit 1
fi
cmake --build "$build" --target ui32 ui32-demo -j2
"$build/tools/ui32-demo" --plugin "$build/ui32.so" --out "$root"
