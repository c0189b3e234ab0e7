#!/bin/bash
# make fuzz: builds the fuzz targets and runs them one after another, each for
# FUZZ_SECONDS (default 60), then prints per target the executions, the
# coverage (edges and features) and the crashes.  Exit status 1 on a crash.
#   FUZZ_SECONDS=<n>        seconds per target
#   FUZZ_TARGETS="a b"      only these targets (default: fuzz/targets.txt)
#   FUZZ_ARCH=x86_64|i386   build to run (see fuzz/build.sh)
#   FUZZ_SOURCE=<dir>       tree to fuzz (see fuzz/build.sh)
#   FUZZ_WORK=<dir>         working corpora, crash inputs and logs
#                           (default build/fuzz-runs/<arch>)
# The working corpus of a target starts from its seeds (fuzz/corpus/<target>)
# and its regression inputs (fuzz/regressions/<target>); the seed directories
# are only read.  Crashing inputs land in <work>/artifacts/<target>/: fix the
# fault, then keep the input in fuzz/regressions/<target>/ so that the unit
# tests replay it.
set -uo pipefail
fuzz=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$fuzz")
seconds=${FUZZ_SECONDS:-60}
arch=${FUZZ_ARCH:-x86_64}
targets=${FUZZ_TARGETS:-$(grep -E '^[a-z0-9_]+$' "$fuzz/targets.txt")}
work=${FUZZ_WORK:-$root/build/fuzz-runs/$arch}
build=${FUZZ_BUILD:-$root/build/fuzz-$arch}

FUZZ_ARCH=$arch FUZZ_BUILD=$build "$fuzz/build.sh" >"$root/build/fuzz-build-$arch.log" 2>&1 ||
    { tail -40 "$root/build/fuzz-build-$arch.log"; echo "fuzz: build failed"; exit 2; }

mkdir -p "$work"
results="$work/results.txt"
printf '%-14s %12s %9s %8s %9s %8s %7s\n' target executions seconds edges features corpus crashes | tee "$results"
status=0
for target in $targets; do
    corpus="$work/corpus/$target"
    artifacts="$work/artifacts/$target"
    log="$work/$target.log"
    mkdir -p "$corpus" "$artifacts"
    inputs=("$corpus" "$fuzz/corpus/$target")
    [ -d "$fuzz/regressions/$target" ] && inputs+=("$fuzz/regressions/$target")
    stamp="$work/.started-$target"
    touch "$stamp"
    start=$(date +%s)
    # One process at a time; a call that takes 10 s is a hang.
    "$build/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$artifacts/" "${inputs[@]}" >"$log" 2>&1
    code=$?
    elapsed=$(($(date +%s) - start))
    crashes=$(find "$artifacts" -type f -newer "$stamp" | wc -l)
    [ "$code" != 0 ] && [ "$crashes" = 0 ] && crashes=1  # died without leaving an input
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
    status_line=$(grep -E '^#[0-9]+.*cov: ' "$log" | tail -1)
    edges=$(echo "$status_line" | sed -n 's/.* cov: \([0-9]*\).*/\1/p')
    features=$(echo "$status_line" | sed -n 's/.* ft: \([0-9]*\).*/\1/p')
    size=$(echo "$status_line" | sed -n 's/.* corp: \([0-9]*\)\/.*/\1/p')
    printf '%-14s %12s %9s %8s %9s %8s %7s\n' "$target" "${executions:-?}" "$elapsed" "${edges:-?}" \
        "${features:-?}" "${size:-?}" "$crashes" | tee -a "$results"
    if [ "$crashes" != 0 ]; then
        status=1
        grep -E 'ERROR|runtime error|harness check failed|SUMMARY' "$log" | head -5 | sed 's/^/    /'
        find "$artifacts" -type f -newer "$stamp" | head -3 | sed 's/^/    input: /'
    fi
done
[ "$status" = 0 ] && echo "fuzz: no crash" || echo "fuzz: CRASHES (inputs in $work/artifacts)"
exit $status
