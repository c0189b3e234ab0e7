// Rectangle fills in buffer coordinates.  They neither translate, clip nor
// mark tiles: their callers clip first and mark after.
#pragma once

#include <cstdint>
#include <cstring>

#include "ui32.h"

namespace ui {

// Plain loops where the compiler spreads them over vector units (x86); four
// pixels per step where it cannot (ARM without NEON: the stores pair up).
#if defined(__SSE2__)
inline constexpr bool kVectorLoops = true;
#else
inline constexpr bool kVectorLoops = false;
#endif

// n pixels of one colour from p.
inline void fillRow(uint32_t *p, int32_t n, uint32_t colour) {
    if constexpr (!kVectorLoops) {
        for (uint32_t *end = p + (n & ~3); p != end; p += 4) p[0] = colour, p[1] = colour, p[2] = colour, p[3] = colour;
        n &= 3;
    }
    for (int32_t i = 0; i < n; ++i) p[i] = colour;
}

// op(pixel) for n >= 1 pixels down a column from p, rows stride bytes apart:
// four rows a step, as a column costs little more than its stores; p is
// stepped only between pixels.
template <typename Op>
inline void downColumn(uint32_t *p, uint32_t stride, uint32_t n, Op op) {
    const auto next = [stride](uint32_t *q) {
        return reinterpret_cast<uint32_t *>(reinterpret_cast<uint8_t *>(q) + stride);
    };
    for (; n > 4; n -= 4) op(p), p = next(p), op(p), p = next(p), op(p), p = next(p), op(p), p = next(p);
    for (op(p); --n != 0;) p = next(p), op(p);
}

// A pattern's row: its eight colours (32 bytes of native words, any
// alignment) laid across n pixels from p, colour k at every pixel k mod 8.
inline void repeatRow(uint32_t *p, int32_t n, const uint8_t *colours) {
    if (n == 8) return static_cast<void>(std::memcpy(p, colours, 32));  // a fixed size: written out
    if (n < 8) return static_cast<void>(std::memcpy(p, colours, 4 * size_t(n)));
    uint32_t c[8];  // a copy the stores cannot alias: kept in registers
    std::memcpy(c, colours, sizeof c);
    int32_t x = 0;
    for (; x + 8 <= n; x += 8)
        for (int32_t k = 0; k < 8; ++k) p[x + k] = c[k];
    for (int32_t k = 0; x < n; ++x, ++k) p[x] = c[k];
}

// The one solid-fill loop: width x height pixels from p, rows stride bytes
// apart.  Wide rows: the first is stored and copied into the others, one
// block copy per row, which libc does at memset speed; narrow rows are
// stored directly.
void fillArea(uint32_t *p, uint32_t stride, int32_t width, int32_t height, uint32_t colour);

// width x height pixels from p (rows stride bytes apart) in rows of eight
// colours: row i takes the 32 bytes at colours + 32 x (i mod 8).
void fillPatternRows(uint32_t *p, uint32_t stride, int32_t width, int32_t height, const uint8_t *colours);

// Stores colour into every pixel of rect; false after "imgbuf" 99, "ui" 1250.
bool fillSolid(const imgbuf &image, const UiRect &rect, uint32_t colour);

// rop2Table[index] with colour as the source over rect; index 12 is fillSolid.
// Failure: 1274 (1250 for 12).
bool fillRop(const imgbuf &image, const UiRect &rect, uint32_t colour, int32_t index);

// An 8x8 monochrome pattern (byte r is row r, MSB column 0): 1 bits take the
// order's backColor, 0 bits its foreColor, through order.rop & 15.  xPhase /
// yPhase: the pattern column / row on the rectangle's left column / top row.
// Reports 1308, then 1315, 1316, 1318, 1319 for phases outside 0-7.
void fillPattern8x8(const imgbuf &image, const UiPatBltOrder &order, const UiRect &rect, int32_t xPhase,
                    int32_t yPhase, const uint8_t *pattern);

}  // namespace ui
