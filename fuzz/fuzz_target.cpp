// One libFuzzer target: the harness named by UI32_FUZZ_TARGET, reached
// through srn_get and the drawing table of the statically linked library.
#include <cstdio>
#include <cstdlib>

#include "harness/harness.h"

#ifndef UI32_FUZZ_TARGET
#error "UI32_FUZZ_TARGET names the harness"
#endif

namespace {
const fuzzharness::Target *target = nullptr;
}

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    target = fuzzharness::findTarget(UI32_FUZZ_TARGET);
    if (target == nullptr) {
        std::fprintf(stderr, "no harness named %s\n", UI32_FUZZ_TARGET);
        std::abort();
    }
    fuzzharness::startLibrary(3);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    target->run(data, size);
    return 0;
}
