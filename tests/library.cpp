#include "library.h"

#include <cstdlib>

#include "core/settings.h"

extern "C" void *__real_malloc(size_t size);

namespace {
int failing = 0;
}

namespace test {

// The library never frees its fragment store; the tests do, so that each one
// starts from an empty store without leaking.
Library::Library(int32_t bytesPerPixel) {
    std::free(ui::settings.scratchBuffer);
    ui::settings = ui::Settings{};
    const UiConfig config{kit::kHatchPatterns, bytesPerPixel};
    get(srn_get, &kit::LogCapture::callback, &config);
}

Library::~Library() {
    std::free(ui::settings.scratchBuffer);
    ui::settings = ui::Settings{};
}

void failNextMallocs(int count) { failing = count; }

}  // namespace test

extern "C" void *__wrap_malloc(size_t size) {
    if (failing > 0) return --failing, nullptr;
    return __real_malloc(size);
}
