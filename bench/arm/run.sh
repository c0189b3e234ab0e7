#!/bin/sh
# make bench-arm: instruction counts of every workload on 32-bit ARM, for the
# armhf (no NEON) and armhf-neon builds of the library, under qemu-arm with an
# instruction-counting plug-in.  Writes the ARM section of bench/RESULTS.md
# and bench/results-arm.png.
#
#   bench/arm/run.sh [NAME=BUILD_DIR[:LIBRARY] ...]
#
# Extra arguments add builds to measure beside the two presets, e.g.
# before=build/bench-armhf:/tmp/old/ui32.so measures another ui32.so with the
# armhf driver and CPU; the results then go to the host build directory
# (arm-results.md, results-arm.png) instead of bench/.
#   UI32_BENCH_BUILD=<dir>       host build directory (default build/bench)
#   UI32_BENCH_FILTER=<text>     only the workloads whose name contains it
set -eu
cd "$(dirname "$0")/../.."

tools/install-deps.sh

host=${UI32_BENCH_BUILD:-build/bench}
filter=${UI32_BENCH_FILTER:-}

# Host side: the qemu plug-in and the input files (same configuration as
# bench/run.sh, so the two share one build directory).
mkdir -p "$host"
if ! cmake --preset native -B "$host" -DCMAKE_BUILD_TYPE=Release -DUI32_BUILD_BENCH=ON \
        -DUI32_BUILD_TESTS=OFF -DUI32_BUILD_TOOLS=OFF >"$host/bench-configure.log" 2>&1; then
    cat "$host/bench-configure.log"
    echo "bench-arm: host configure failed" >&2
    exit 1
fi
cmake --build "$host" --target ui32-icount ui32-armbench-inputs -j2
mkdir -p "$host/arm-inputs"
"$host/bench/ui32-armbench-inputs" "$host/arm-inputs" >"$host/arm-inputs.log"

# ARM side: the library and the driver of each preset, optimised as shipped.
builds=""
for preset in armhf armhf-neon; do
    dir="build/bench-$preset"
    mkdir -p "$dir"
    if ! cmake --preset "$preset" -B "$dir" -DCMAKE_BUILD_TYPE=Release -DUI32_BUILD_BENCH=ON \
            -DUI32_BUILD_TESTS=OFF -DUI32_BUILD_TOOLS=OFF >"$dir/bench-configure.log" 2>&1; then
        cat "$dir/bench-configure.log"
        echo "bench-arm: configure failed for $preset" >&2
        exit 1
    fi
    cmake --build "$dir" --target ui32 ui32-armbench -j2
    builds="$builds $preset=$dir"
done

counts="$host/arm-counts.json"
# shellcheck disable=SC2086 # builds is a list of words without spaces
python3 bench/arm/count.py --plugin "$host/bench/ui32-icount.so" --inputs "$host/arm-inputs" \
    --filter "$filter" --out "$counts" $builds "$@"

compiler=$(arm-linux-gnueabihf-gcc --version | head -n 1)
qemu=$(qemu-arm --version | head -n 1)
if [ $# -gt 0 ] || [ -n "$filter" ]; then
    bench/report --arm "$counts" --md "$host/arm-results.md" --png "$host/results-arm.png" \
        --machine "Compiler=$compiler" --machine "Emulator=$qemu"
else
    bench/report --arm "$counts" --notes bench/arm/notes.md --machine "Compiler=$compiler" --machine "Emulator=$qemu"
fi
