#!/bin/sh
# make bench: builds the native preset in Release with the benchmarks into its
# own build directory, runs every benchmark (repeated, in random order, JSON
# output); then the same for the benchmarks that need no peer on the i386
# preset (-m32, timed by bench/lite); and writes bench/RESULTS.md and
# bench/results.png with bench/report.
#   UI32_BENCH_BUILD=<dir>        build directory (default build/bench)
#   UI32_BENCH_BUILD_I386=<dir>   i386 build directory (default build/bench-i386)
#   UI32_BENCH_I386=no            x86-64 only
#   UI32_BENCH_REPETITIONS=<n>    repetitions per benchmark (default 3; medians reported)
#   UI32_BENCH_MIN_TIME=<s>       least time per repetition (default 0.2)
#   UI32_BENCH_FILTER=<regex>     run only the matching benchmarks
set -eu
cd "$(dirname "$0")/.."

tools/install-deps.sh

build=${UI32_BENCH_BUILD:-build/bench}
build_i386=${UI32_BENCH_BUILD_I386:-build/bench-i386}
repetitions=${UI32_BENCH_REPETITIONS:-3}
min_time=${UI32_BENCH_MIN_TIME:-0.2}
filter=${UI32_BENCH_FILTER:-.}

# configure PRESET DIR: Release, benchmarks on, tests and tools off.
configure() {
    mkdir -p "$2"
    if ! cmake --preset "$1" -B "$2" -DCMAKE_BUILD_TYPE=Release -DUI32_BUILD_BENCH=ON \
            -DUI32_BUILD_TESTS=OFF -DUI32_BUILD_TOOLS=OFF >"$2/bench-configure.log" 2>&1; then
        cat "$2/bench-configure.log"
        echo "bench: configure failed for $1" >&2
        exit 1
    fi
    cmake --build "$2" --target ui32_bench -j2
}
# measure DIR: runs its benchmarks into DIR/bench-results.json; the load
# average before / after in $load.
measure() {
    before=$(cut -d ' ' -f 1-3 /proc/loadavg)
    "$1/bench/ui32_bench" \
        --benchmark_filter="$filter" \
        --benchmark_repetitions="$repetitions" \
        --benchmark_enable_random_interleaving=true \
        --benchmark_min_time="$min_time" \
        --benchmark_display_aggregates_only=true \
        --benchmark_out="$1/bench-results.json" --benchmark_out_format=json
    load="$before / $(cut -d ' ' -f 1-3 /proc/loadavg) ($(nproc) cores, shared)"
}
compiler() {
    cxx=$(sed -n 's/^set(CMAKE_CXX_COMPILER "\(.*\)")$/\1/p' "$1"/CMakeFiles/*/CMakeCXXCompiler.cmake)
    flags=$(sed -n 's/^CMAKE_CXX_FLAGS:[A-Z]*=//p' "$1/CMakeCache.txt")
    release=$(sed -n 's/^CMAKE_CXX_FLAGS_RELEASE:[A-Z]*=//p' "$1/CMakeCache.txt")
    echo "$("$cxx" --version | head -n 1), Release build ($(echo "$flags $release" | xargs)), library objects as in ui32.so"
}
version() { dpkg-query -W -f='${Version}' "$1" 2>/dev/null || echo "?"; }

configure native "$build"
measure "$build"
load_x86=$load

set --
if [ "${UI32_BENCH_I386:-yes}" != no ]; then
    configure i386 "$build_i386"
    measure "$build_i386"
    set -- --i386 "$build_i386/bench-results.json" --i386-machine "Compiler=$(compiler "$build_i386")" \
        --i386-machine "Load average (1, 5, 15 min) before / after=$load" \
        --i386-machine "Timing=$repetitions repetitions in random order, at least $min_time s each"
fi

bench/report "$build/bench-results.json" --notes bench/notes.md \
    --machine "Compiler=$(compiler "$build")" \
    --machine "Load average (1, 5, 15 min) before / after=$load_x86" \
    --machine "Peer=Debian freerdp2 $(version freerdp2-dev), public decompress API, contexts made once" \
    --machine "Benchmark library=Debian libbenchmark $(version libbenchmark-dev), CPU time, \
$repetitions repetitions in random order, at least $min_time s each" "$@"
