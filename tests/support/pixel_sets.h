// Pixel positions as sets, for comparing what a drawing call painted.
#pragma once

#include <cstdint>
#include <set>
#include <utility>

#include "frame.h"

namespace ui32test {

using PixelSet = std::set<std::pair<int32_t, int32_t>>;

// Every (x, y) of the frame holding colour.
inline PixelSet pixelsOf(const Frame &frame, uint32_t colour) {
    PixelSet out;
    for (int32_t y = 0; y < frame.height(); ++y)
        for (int32_t x = 0; x < frame.width(); ++x)
            if (frame.at(x, y) == colour) out.emplace(x, y);
    return out;
}

// The pixels of the rectangle [l, r) x [t, b).
inline PixelSet rect(int32_t l, int32_t t, int32_t r, int32_t b) {
    PixelSet out;
    for (int32_t y = t; y < b; ++y)
        for (int32_t x = l; x < r; ++x) out.emplace(x, y);
    return out;
}

}  // namespace ui32test
