#!/bin/sh
# Builds and runs the libFuzzer target of the order-to-record mapping
# (fuzz_mapping.cpp) with the library sources compiled in, under
# AddressSanitizer and UndefinedBehaviorSanitizer.
#   build-fuzz.sh [SECONDS]   run half the time as a 32-bit, half as a 24-bit
#                             session (default 60 s in all); 0 only builds
# Binary, corpus and crash inputs go to build/fuzz-rdpsnap/.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
out=$root/build/fuzz-rdpsnap
seconds=${1:-60}
mkdir -p "$out/corpus" "$out/artifacts"
clang++-14 -std=c++20 -g -O1 -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=all \
    -I"$root/include" -I"$root/ui" -I"$here" $(pkg-config --cflags freerdp2 winpr2) \
    "$here/fuzz_mapping.cpp" "$here/mapping.cpp" "$here/caches.cpp" "$here/canvas.cpp" \
    $(find "$root/ui" -name '*.cpp' | sort) -o "$out/fuzz_mapping"
[ "$seconds" -gt 0 ] || exit 0
for bpp in 32 24; do
    RDPSNAP_FUZZ_BPP=$bpp "$out/fuzz_mapping" -max_total_time=$((seconds / 2)) -print_final_stats=1 \
        -artifact_prefix="$out/artifacts/" "$out/corpus" 2>&1 | tee "$out/run-$bpp.log" | grep -E '^(stat::|#[0-9]+ +DONE|==)'
done
