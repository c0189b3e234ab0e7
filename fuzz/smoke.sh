#!/bin/bash
# The fuzzing part of make check: when clang-14 with its fuzzer run-times is
# installed, builds the fuzz targets for x86-64 and i386 and runs each for
# FUZZ_SECONDS (default 5) from its seeds and regression inputs.  Without
# clang it says so and succeeds: the unit tests replay the seeds and the
# regression inputs on every preset anyway.
fuzz=$(cd "$(dirname "$0")" && pwd)
runtimes=/usr/lib/llvm-14/lib/clang/*/lib/linux
if ! command -v clang++-14 >/dev/null || ! ls $runtimes/libclang_rt.fuzzer-{x86_64,i386}.a >/dev/null 2>&1; then
    echo "fuzz smoke: clang-14 / libclang-rt-14-dev not installed, skipped"
    exit 0
fi
rm -rf "$fuzz/../build/fuzz-smoke"
FUZZ_SECONDS=${FUZZ_SECONDS:-5} FUZZ_WORK="$fuzz/../build/fuzz-smoke" exec "$fuzz/run.sh"
