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

// The one solid-fill loop: width x height pixels from p, rows stride bytes
// apart.  Wide rows: the first is stored and copied into the others, one
// block copy per row, which libc does at memset speed; narrow rows are
// stored directly.
void fillArea(uint32_t *p, uint32_t stride, int32_t width, int32_t height, uint32_t colour);

// Lays the `unit` pixels at row[0] repeatedly across row[0 .. width - 1] by
// doubling what the row already holds (row[0 .. unit - 1] must be in place).
inline void repeatAcross(uint32_t *row, int32_t unit, int32_t width) {
    for (int32_t done = unit; done < width; done *= 2)
        std::memcpy(row + done, row, 4 * size_t(done < width - done ? done : width - done));
}

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
