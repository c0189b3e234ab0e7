#include "library.h"

#include <cstdlib>

#include "log_capture.h"
#include "ui.h"

extern "C" void *__real_malloc(size_t size);

namespace ui32test {

namespace {
int failingMallocs = 0;
}

void failNextMallocs(int count) { failingMallocs = count; }

const uint8_t kHatchPatterns[48] = {
    0x00, 0x00, 0x00, 0xff, 0x00, 0x00, 0x00, 0x00,  // horizontal
    0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08,  // vertical
    0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01,  // forward diagonal
    0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80,  // backward diagonal
    0x08, 0x08, 0x08, 0xff, 0x08, 0x08, 0x08, 0x08,  // cross
    0x81, 0x42, 0x24, 0x18, 0x18, 0x24, 0x42, 0x81,  // diagonal cross
};

Library::Library(int32_t bytesPerPixel) {
    // The library never frees its fragment store; the tests do, so that each
    // test starts from an empty one without leaking.
    std::free(ui::settings.scratchBuffer);
    ui::settings = ui::Settings{};
    const UiConfig config{kHatchPatterns, bytesPerPixel};
    srn_get(table, &LogCapture::callback, &config);
}

Library::~Library() {
    std::free(ui::settings.scratchBuffer);
    ui::settings = ui::Settings{};
}

}  // namespace ui32test

extern "C" void *__wrap_malloc(size_t size) {
    if (ui32test::failingMallocs > 0) {
        --ui32test::failingMallocs;
        return nullptr;
    }
    return __real_malloc(size);
}
