// Conversion of stored pixels (bytesPerPixel bytes each, the first three
// making the colour, first byte lowest) into 32-bit frame-buffer pixels.
// Shared by the colour-image orders and the uncompressed bitmap paths.
#pragma once

#include <cstddef>
#include <cstdint>

#include "../sourcePixel.h"

namespace ui {

inline uint32_t storedPixel(const uint8_t *p) {
    return uint32_t(p[0]) | (uint32_t(p[1]) << 8) | (uint32_t(p[2]) << 16);
}

// A pixel of four bytes or more is read as one word: the fourth byte exists
// and is masked off.
template <int Bpp>
inline uint32_t storedPixelOf(const uint8_t *p) {
    if constexpr (Bpp >= 4) return lowFirstWord(littleWord(p));
    return storedPixel(p);
}

// count pixels from src (count x Bpp bytes) to out, eight per step.
template <int Bpp>
inline void convertPixelsOf(uint32_t *__restrict out, const uint8_t *__restrict src, int32_t count) {
    int32_t i = 0;
    for (; i + 8 <= count; i += 8, src += 8 * Bpp) {
#pragma GCC unroll 8
        for (int k = 0; k < 8; ++k) out[i + k] = storedPixelOf<Bpp>(src + k * Bpp);
    }
    for (; i < count; ++i, src += Bpp) out[i] = storedPixelOf<Bpp>(src);
}

// The same for any depth of at least 3 bytes; src holds count x bytesPerPixel
// bytes.
inline void convertPixels(uint32_t *out, const uint8_t *src, int32_t count, int32_t bytesPerPixel) {
    if (bytesPerPixel == 3) return convertPixelsOf<3>(out, src, count);
    if (bytesPerPixel == 4) return convertPixelsOf<4>(out, src, count);
    for (int32_t i = 0; i < count; ++i) out[i] = storedPixel(src + size_t(i) * size_t(bytesPerPixel));
}

}  // namespace ui
