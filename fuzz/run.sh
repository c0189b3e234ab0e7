#!/bin/bash
# make fuzz: builds the fuzz targets for each architecture and runs them one
# after another, each for FUZZ_SECONDS (default 60), then prints per target
# the executions, seconds, edges, features, corpus size, findings and, for
# the differential targets, the agreement counts.  Exit status 1 on a finding.
#   FUZZ_ARCHS="x86_64 i386" architectures (i386: 32-bit pointers and size_t,
#                           as on the device)
#   FUZZ_TARGETS="a b"      only these targets (default: fuzz/targets.txt)
#   FUZZ_SOURCE=<dir>       tree to fuzz (see fuzz/build.sh)
#   FUZZ_WORK=<dir>         working corpora, finding inputs and logs
#                           (default build/fuzz-runs)
# A target's working corpus starts from its seeds (fuzz/corpus/<target>) and
# regression inputs (fuzz/regressions/<target>), which are only read.  Inputs
# of findings land in <work>/<arch>/artifacts/<target>/: once the fault is
# fixed, keep the input in fuzz/regressions/<target>/ for the replay test.
# The table is also written to <work>/results.md.
set -uo pipefail
fuzz=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$fuzz")
targets=${FUZZ_TARGETS:-$(grep -E '^[a-z0-9_]+$' "$fuzz/targets.txt")}
work=${FUZZ_WORK:-$root/build/fuzz-runs}
mkdir -p "$work"
results="$work/results.md" status=0
{ echo "| Arch | Target | Executions | Seconds | Edges | Features | Corpus | Findings | Agreement (both / ui32 only / peer only / neither / refused form) |"
  echo "|---|---|---:|---:|---:|---:|---:|---:|---|"; } | tee "$results"
for arch in ${FUZZ_ARCHS:-x86_64 i386}; do
    build=$root/build/fuzz-$arch
    FUZZ_ARCH=$arch FUZZ_BUILD=$build "$fuzz/build.sh" >"$work/build-$arch.log" 2>&1 ||
        { tail -40 "$work/build-$arch.log"; echo "fuzz: $arch build failed"; exit 2; }
    for target in $targets; do
        corpus=$work/$arch/corpus/$target artifacts=$work/$arch/artifacts/$target log=$work/$arch/$target.log
        mkdir -p "$corpus" "$artifacts"
        inputs=("$corpus" "$fuzz/corpus/$target")
        [ -d "$fuzz/regressions/$target" ] && inputs+=("$fuzz/regressions/$target")
        before=$(ls "$artifacts" | wc -l) start=$(date +%s)
        # One process at a time; a call that takes 10 s is a hang.
        "$build/$target" -max_total_time="${FUZZ_SECONDS:-60}" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
            -artifact_prefix="$artifacts/" "${inputs[@]}" >"$log" 2>&1
        code=$? elapsed=$(($(date +%s) - start))
        found=$(($(ls "$artifacts" | wc -l) - before))
        [ "$code" != 0 ] && [ "$found" = 0 ] && found=1  # died without leaving an input
        line=$(grep -E '^#[0-9]+.*cov: ' "$log" | tail -1)
        field() { echo "$line" | sed -n "s/.* $1 \([0-9]*\).*/\1/p"; }
        agreement=$(sed -n 's/^agreement: both \([0-9]*\) ui32-only \([0-9]*\) peer-only \([0-9]*\) neither \([0-9]*\) refused-form \([0-9]*\)/\1 \/ \2 \/ \3 \/ \4 \/ \5/p' "$log" | tail -1)
        echo "| $arch | \`$target\` | $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") | $elapsed | $(field cov:) | $(field ft:) | $(field corp:) | $found | $agreement |" | tee -a "$results"
        if [ "$found" != 0 ]; then
            status=1
            grep -E 'ERROR|runtime error|harness check failed|SUMMARY' "$log" | head -5 | sed 's/^/    /'
            ls -t "$artifacts" | head -"$found" | sed "s|^|    input: $artifacts/|"
        fi
    done
done
[ "$status" = 0 ] && echo "fuzz: no finding" || echo "fuzz: FINDINGS (inputs in $work/<arch>/artifacts)"
exit $status
