// Source pixels whose byte order follows the sourceByteOrder setting: the
// four-byte pixels of putPixels, importImage32 and Hextile (the fourth byte is
// ignored) and the raw ZRLE tile's three-byte pixels.  Callers read the
// setting once per call and take the converter for it.
#pragma once

#include <cstdint>

namespace ui {

// Non-zero sourceByteOrder: b0 to bits 0-7, b2 to bits 16-23.
inline uint32_t lowFirstPixel(const uint8_t *b) {
    return uint32_t(b[0]) | (uint32_t(b[1]) << 8) | (uint32_t(b[2]) << 16);
}

// Zero sourceByteOrder: b0 to bits 16-23, b2 to bits 0-7.
inline uint32_t highFirstPixel(const uint8_t *b) {
    return (uint32_t(b[0]) << 16) | (uint32_t(b[1]) << 8) | uint32_t(b[2]);
}

using PixelFn = uint32_t (*)(const uint8_t *);
inline PixelFn pixelFor(uint8_t sourceByteOrder) { return sourceByteOrder != 0 ? lowFirstPixel : highFirstPixel; }

// n packed source pixels of Step bytes each into n words.
using RowFn = void (*)(uint32_t *dst, const uint8_t *src, int32_t n);

template <PixelFn Pixel, int Step>
void convertRow(uint32_t *dst, const uint8_t *src, int32_t n) {
    for (int32_t i = 0; i < n; ++i, src += Step) dst[i] = Pixel(src);
}

template <int Step>
RowFn rowFor(uint8_t sourceByteOrder) {
    return sourceByteOrder != 0 ? convertRow<lowFirstPixel, Step> : convertRow<highFirstPixel, Step>;
}

}  // namespace ui
