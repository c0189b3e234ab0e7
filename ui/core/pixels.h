// Source pixels into frame-buffer words.  "Low first": byte 0 to bits 0-7,
// byte 2 to bits 16-23 (bitmaps, CPIXELs, and sourceByteOrder non-zero);
// "high first" the other way round (sourceByteOrder zero).  Bytes past the
// third are ignored and bits 24-31 come out zero.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace ui {

static_assert(std::endian::native == std::endian::little, "pixel words are little-endian");

inline uint32_t lowFirst(const uint8_t *b) { return uint32_t(b[0]) | (uint32_t(b[1]) << 8) | (uint32_t(b[2]) << 16); }
inline uint32_t highFirst(const uint8_t *b) { return (uint32_t(b[0]) << 16) | (uint32_t(b[1]) << 8) | uint32_t(b[2]); }

using PixelFn = uint32_t (*)(const uint8_t *);
inline PixelFn pixelFor(uint8_t sourceByteOrder) { return sourceByteOrder != 0 ? lowFirst : highFirst; }

// Pixels of four bytes or more are loaded as whole words (the fourth byte
// exists and is dropped): a mask, or a byte reversal and a shift.
inline uint32_t wordAt(const uint8_t *b) {
    uint32_t w;
    std::memcpy(&w, b, 4);
    return w;
}
inline uint32_t lowFirstWord(const uint8_t *b) { return wordAt(b) & 0xffffff; }
inline uint32_t highFirstWord(const uint8_t *b) { return __builtin_bswap32(wordAt(b)) >> 8; }

// n packed source pixels of `step` bytes each into n words.
using RowFn = void (*)(uint32_t *dst, const uint8_t *src, int32_t n);

// Eight pixels per step, a loop the compiler unrolls and, where the core has
// vector units, vectorises.
template <PixelFn Pixel, int Step>
void convertRow(uint32_t *__restrict dst, const uint8_t *__restrict src, int32_t n) {
    int32_t i = 0;
    for (; i + 8 <= n; i += 8, src += 8 * Step)
        for (int k = 0; k < 8; ++k) dst[i + k] = Pixel(src + Step * k);
    for (; i < n; ++i, src += Step) dst[i] = Pixel(src);
}

// Three-byte pixels, four per step out of three whole words (the twelve
// bytes are all there), shifted into place.
template <bool kLow>
void convertRow3(uint32_t *__restrict dst, const uint8_t *__restrict src, int32_t n) {
    const auto put = [](uint32_t v) { return kLow ? v & 0xffffff : __builtin_bswap32(v << 8); };
    uint32_t *end = dst + (n & ~3);
    for (; dst != end; dst += 4, src += 12) {
        const uint32_t a = wordAt(src), b = wordAt(src + 4), c = wordAt(src + 8);
        dst[0] = put(a), dst[1] = put(a >> 24 | b << 8), dst[2] = put(b >> 16 | c << 16), dst[3] = put(c >> 8);
    }
    for (int32_t i = 0; i < (n & 3); ++i) dst[i] = kLow ? lowFirst(src + 3 * i) : highFirst(src + 3 * i);
}

// The row converter for pixels of `step` (3 or more) bytes.
inline RowFn rowFor(int32_t step, bool low) {
    if (step == 4) return low ? convertRow<lowFirstWord, 4> : convertRow<highFirstWord, 4>;
    if (step == 3) return low ? convertRow3<true> : convertRow3<false>;
    return nullptr;
}

}  // namespace ui
