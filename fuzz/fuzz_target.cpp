// One libFuzzer target: the harness target named by UI32_FUZZ_TARGET.  The
// differential targets print their agreement counts when the run ends.
#include <cstdio>
#include <cstdlib>

#include "harness.h"

namespace {
const fuzz::Target *target = nullptr;

void printAgreement() {
    for (int i = 0; i < 2; ++i) {
        const fuzz::Agreement &a = fuzz::agreement[i];
        if (a.both + a.ui32Only + a.peerOnly + a.neither + a.refusedForm != 0)
            std::fprintf(stderr, "agreement: both %ld ui32-only %ld peer-only %ld neither %ld refused-form %ld\n",
                         a.both, a.ui32Only, a.peerOnly, a.neither, a.refusedForm);
    }
}
}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    setenv("WLOG_LEVEL", "OFF", 0);  // the peer's own log
    target = fuzz::findTarget(UI32_FUZZ_TARGET);
    if (target == nullptr) std::abort();
    std::atexit(printAgreement);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Reader in(data, size);
    target->run(in);
    return 0;
}
