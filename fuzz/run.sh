#!/bin/bash
# make fuzz: builds the fuzz targets for each architecture and runs them one
# after another, each for FUZZ_SECONDS (default 60), then prints per target
# the executions, edges, features, corpus size, findings and, for the
# differential targets, the agreement counts.  Exit status 1 on a finding.
#   FUZZ_SECONDS=<n>        seconds per target and architecture
#   FUZZ_ARCHS="x86_64 i386" architectures (i386: 32-bit pointers and size_t,
#                           as on the device)
#   FUZZ_TARGETS="a b"      only these targets (default: fuzz/targets.txt)
#   FUZZ_SOURCE=<dir>       tree to fuzz (see fuzz/build.sh)
#   FUZZ_WORK=<dir>         working corpora, finding inputs and logs
#                           (default build/fuzz-runs)
# The working corpus of a target starts from its seeds (fuzz/corpus/<target>)
# and its regression inputs (fuzz/regressions/<target>), which are only read.
# Inputs of findings land in <work>/<arch>/artifacts/<target>/: once the
# fault is fixed, keep the input in fuzz/regressions/<target>/ so that the
# unit tests replay it.  The table is also written to <work>/results.md.
set -uo pipefail
fuzz=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$fuzz")
seconds=${FUZZ_SECONDS:-60}
targets=${FUZZ_TARGETS:-$(grep -E '^[a-z0-9_]+$' "$fuzz/targets.txt")}
work=${FUZZ_WORK:-$root/build/fuzz-runs}
mkdir -p "$work"
results="$work/results.md"
echo "| Arch | Target | Executions | Seconds | Edges | Features | Corpus | Findings | Agreement (both / ui32 only / peer only / neither / refused form) |" | tee "$results"
echo "|---|---|---:|---:|---:|---:|---:|---:|---|" | tee -a "$results"
status=0
for arch in ${FUZZ_ARCHS:-x86_64 i386}; do
    build=$root/build/fuzz-$arch
    FUZZ_ARCH=$arch FUZZ_BUILD=$build "$fuzz/build.sh" >"$work/build-$arch.log" 2>&1 ||
        { tail -40 "$work/build-$arch.log"; echo "fuzz: $arch build failed"; exit 2; }
    for target in $targets; do
        dir="$work/$arch"
        corpus="$dir/corpus/$target" artifacts="$dir/artifacts/$target" log="$dir/$target.log"
        mkdir -p "$corpus" "$artifacts"
        inputs=("$corpus" "$fuzz/corpus/$target")
        [ -d "$fuzz/regressions/$target" ] && inputs+=("$fuzz/regressions/$target")
        touch "$dir/.started-$target"
        start=$(date +%s)
        # One process at a time; a call that takes 10 s is a hang.
        "$build/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
            -artifact_prefix="$artifacts/" "${inputs[@]}" >"$log" 2>&1
        code=$?
        elapsed=$(($(date +%s) - start))
        found=$(find "$artifacts" -type f -newer "$dir/.started-$target" | wc -l)
        [ "$code" != 0 ] && [ "$found" = 0 ] && found=1  # died without leaving an input
        executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
        line=$(grep -E '^#[0-9]+.*cov: ' "$log" | tail -1)
        field() { echo "$line" | sed -n "s/.* $1 \([0-9]*\).*/\1/p"; }
        agreement=$(sed -n 's/^agreement: both \([0-9]*\) ui32-only \([0-9]*\) peer-only \([0-9]*\) neither \([0-9]*\) refused-form \([0-9]*\)/\1 \/ \2 \/ \3 \/ \4 \/ \5/p' "$log" | tail -1)
        echo "| $arch | $target | ${executions:-?} | $elapsed | $(field cov:) | $(field ft:) | $(echo "$line" | sed -n 's/.* corp: \([0-9]*\)\/.*/\1/p') | $found | $agreement |" | tee -a "$results"
        if [ "$found" != 0 ]; then
            status=1
            grep -E 'ERROR|runtime error|harness check failed|SUMMARY' "$log" | head -5 | sed 's/^/    /'
            find "$artifacts" -type f -newer "$dir/.started-$target" | head -3 | sed 's/^/    input: /'
        fi
    done
done
[ "$status" = 0 ] && echo "fuzz: no finding" || echo "fuzz: FINDINGS (inputs in $work/<arch>/artifacts)"
exit $status
