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

# Debian packages: each one checked (lintian without errors or warnings,
# contents, the packed plug-in's ABI), and the runtime and -dev packages used
# by a C client from a temporary root, the ARM ones under qemu-arm on a CPU
# without NEON (baseline) and with it.
echo "=== packages"
if UI32_PACKAGE_CHECK=0 tools/package.sh >build/package.log 2>&1; then
    for deb in build/packages/*.deb; do
        if tools/check-package.sh "$deb"; then passed=$((passed + 1)); else failed=$((failed + 1)); status=1; fi
    done
    v=$(dpkg-deb -f build/packages/ui32-dev_*_amd64.deb Version)
    arm="qemu-arm -L /usr/arm-linux-gnueabihf"
    for test in "ui32_${v}_amd64.deb ui32-dev_${v}_amd64.deb gcc" \
                "ui32_${v}_armhf.deb ui32-dev_${v}_armhf.deb arm-linux-gnueabihf-gcc $arm -cpu cortex-r5f" \
                "ui32-neon_${v}_armhf.deb ui32-dev_${v}_armhf.deb arm-linux-gnueabihf-gcc $arm -cpu cortex-a15"; do
        set -- $test
        runtime=build/packages/$1
        dev=build/packages/$2
        shift 2
        if tools/install-test/deb.sh "$runtime" "$dev" "$@"; then
            passed=$((passed + 1))
        else
            failed=$((failed + 1)); status=1
        fi
    done
else
    cat build/package.log
    echo "packaging failed"; failed=$((failed + 1)); status=1
fi

echo "check: $passed passed, $failed failed"
exit $status
