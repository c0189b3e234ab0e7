#!/bin/sh
# make bench: builds the native preset in Release with the benchmarks into its
# own build directory, runs every benchmark (repeated, in random order, JSON
# output) and writes bench/RESULTS.md and bench/results.png with bench/report.
#   UI32_BENCH_BUILD=<dir>        build directory (default build/bench)
#   UI32_BENCH_REPETITIONS=<n>    repetitions per benchmark (default 3; medians reported)
#   UI32_BENCH_MIN_TIME=<s>       least time per repetition (default 0.2)
#   UI32_BENCH_FILTER=<regex>     run only the matching benchmarks
set -eu
cd "$(dirname "$0")/.."

tools/install-deps.sh

build=${UI32_BENCH_BUILD:-build/bench}
repetitions=${UI32_BENCH_REPETITIONS:-3}
min_time=${UI32_BENCH_MIN_TIME:-0.2}
filter=${UI32_BENCH_FILTER:-.}

mkdir -p "$build"
if ! cmake --preset native -B "$build" -DCMAKE_BUILD_TYPE=Release -DUI32_BUILD_BENCH=ON \
        -DUI32_BUILD_TESTS=OFF -DUI32_BUILD_TOOLS=OFF >"$build/bench-configure.log" 2>&1; then
    cat "$build/bench-configure.log"
    echo "bench: configure failed" >&2
    exit 1
fi
cmake --build "$build" --target ui32_bench -j2

cxx=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$build/CMakeCache.txt")
flags=$(sed -n 's/^CMAKE_CXX_FLAGS_RELEASE:[A-Z]*=//p' "$build/CMakeCache.txt")
compiler=$("$cxx" --version | head -n 1)
version() { dpkg-query -W -f='${Version}' "$1" 2>/dev/null || echo "?"; }
load_before=$(cut -d ' ' -f 1-3 /proc/loadavg)

json="$build/bench-results.json"
"$build/bench/ui32_bench" \
    --benchmark_filter="$filter" \
    --benchmark_repetitions="$repetitions" \
    --benchmark_enable_random_interleaving=true \
    --benchmark_min_time="$min_time" \
    --benchmark_display_aggregates_only=true \
    --benchmark_out="$json" --benchmark_out_format=json

load_after=$(cut -d ' ' -f 1-3 /proc/loadavg)
cores=$(nproc)
bench/report "$json" --notes bench/notes.md \
    --machine "Compiler=$compiler, Release build ($flags), library objects as in ui32.so" \
    --machine "Load average (1, 5, 15 min) before / after=$load_before / $load_after ($cores cores, shared)" \
    --machine "Peer=Debian freerdp2 $(version freerdp2-dev), public decompress API, contexts made once" \
    --machine "Benchmark library=Debian libbenchmark $(version libbenchmark-dev), CPU time, \
$repetitions repetitions in random order, at least $min_time s each"
