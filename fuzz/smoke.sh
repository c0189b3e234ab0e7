#!/bin/bash
# The fuzzing part of make check: when clang-14 with its fuzzer run-time is
# installed, builds the fuzz targets and runs each for 10 seconds from its
# seeds and regression inputs.  Without clang it says so and succeeds: the
# regression inputs are replayed by the unit tests on every preset anyway.
set -uo pipefail
fuzz=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$fuzz")
if ! command -v clang++-14 >/dev/null || ! ls /usr/lib/llvm-14/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a >/dev/null 2>&1; then
    echo "fuzz smoke: clang-14 / libclang-rt-14-dev not installed, skipped"
    exit 0
fi
work="$root/build/fuzz-smoke"
rm -rf "$work"
FUZZ_SECONDS=${FUZZ_SECONDS:-10} FUZZ_WORK="$work" "$fuzz/run.sh"
