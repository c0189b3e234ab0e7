#!/bin/bash
# Builds every preset, runs every test (the ARM ones under qemu-arm) and the ABI
# checks, and ends with one summary line.  Non-zero exit on any failure.
set -uo pipefail
cd "$(dirname "$0")/.."

presets=(native native-asan i386 armhf armhf-neon)
abi_presets=(native i386 armhf armhf-neon)
passed=0
failed=0
status=0

for preset in "${presets[@]}"; do
    echo "=== $preset"
    mkdir -p build
    if ! cmake --preset "$preset" >"build/configure-$preset.log" 2>&1; then
        cat "build/configure-$preset.log"; echo "configure failed: $preset"; status=1; failed=$((failed + 1)); continue
    fi
    if ! cmake --build --preset "$preset"; then
        echo "build failed: $preset"; status=1; failed=$((failed + 1)); continue
    fi
    log="build/$preset/ctest.log"
    ctest --preset "$preset" 2>&1 | tee "$log" | grep -E 'tests passed|FAILED|Failed|\*\*\*|Error' || true
    summary=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests failed out of [0-9]+' "$log" | tail -1)
    if [ -z "$summary" ]; then
        echo "no test summary: $preset"; status=1; failed=$((failed + 1)); continue
    fi
    total=$(echo "$summary" | sed -E 's/.* out of ([0-9]+).*/\1/')
    bad=$(echo "$summary" | sed -E 's/.* ([0-9]+) tests failed.*/\1/')
    passed=$((passed + total - bad))
    failed=$((failed + bad))
    [ "$bad" = 0 ] || status=1
done

# Fuzz targets: a short run each (skipped when clang is not installed); the
# regression inputs are replayed by the unit tests above on every preset.
if [ -x fuzz/smoke.sh ]; then
    echo "=== fuzz smoke"
    if fuzz/smoke.sh; then passed=$((passed + 1)); else echo "fuzz smoke failed"; failed=$((failed + 1)); status=1; fi
fi

for preset in "${abi_presets[@]}"; do
    if [ -f "build/$preset/ui32.so" ] && tools/check-abi.sh "build/$preset/ui32.so"; then
        passed=$((passed + 1))
    else
        echo "ABI check failed: $preset"; failed=$((failed + 1)); status=1
    fi
done

echo "check: $passed passed, $failed failed"
exit $status
