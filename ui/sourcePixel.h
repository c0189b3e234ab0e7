// Source pixels whose byte order follows the sourceByteOrder setting: the
// four-byte pixels of putPixels, importImage32 and Hextile (the fourth byte is
// ignored) and the raw ZRLE tile's three-byte pixels.  Callers read the
// setting once per call and take the converter for it.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

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

// Four-byte pixels are read as whole little-endian words (the fourth byte
// exists and is dropped) and rearranged with shifts and masks, eight per
// step, a loop the compiler can vectorise.  Also used for the stored pixels
// of four-byte bitmaps (codec/pixelRows.h).
inline uint32_t littleWord(const uint8_t *b) {
    uint32_t v;
    std::memcpy(&v, b, 4);
    if constexpr (std::endian::native == std::endian::big) v = __builtin_bswap32(v);
    return v;
}
inline uint32_t lowFirstWord(uint32_t w) { return w & 0xFFFFFF; }
inline uint32_t highFirstWord(uint32_t w) { return ((w & 0xFF) << 16) | (w & 0xFF00) | ((w >> 16) & 0xFF); }

using WordFn = uint32_t (*)(uint32_t);

template <WordFn Word>
void convertWordRow(uint32_t *dst, const uint8_t *src, int32_t n) {
    int32_t i = 0;
    for (; i + 8 <= n; i += 8, src += 32) {
        for (int k = 0; k < 8; ++k) dst[i + k] = Word(littleWord(src + 4 * k));
    }
    for (; i < n; ++i, src += 4) dst[i] = Word(littleWord(src));
}

template <int Step>
RowFn rowFor(uint8_t sourceByteOrder) {
    if constexpr (Step == 4)
        return sourceByteOrder != 0 ? convertWordRow<lowFirstWord> : convertWordRow<highFirstWord>;
    return sourceByteOrder != 0 ? convertRow<lowFirstPixel, Step> : convertRow<highFirstPixel, Step>;
}

}  // namespace ui
