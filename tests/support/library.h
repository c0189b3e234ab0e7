// Sets the statically linked library up as a client would: srn_get with the
// report capture and a configuration, and the table it fills.
#pragma once

#include "imgbuf.h"  // ui32.h with the library's accessors

namespace ui32test {

// Standard hatch patterns for tests: horizontal, vertical, two diagonals,
// cross, diagonal cross.
extern const uint8_t kHatchPatterns[48];

class Library {
public:
    // Fresh settings: byte order 0, depth `bytesPerPixel`, empty fragment store.
    explicit Library(int32_t bytesPerPixel = 3);
    ~Library();
    UiDrawTable table{};

    template <typename Fn>
    Fn slot(int index) const {
        return reinterpret_cast<Fn>(table[index]);
    }
};

// Makes the next `count` malloc calls of the process fail.
void failNextMallocs(int count);

}  // namespace ui32test
