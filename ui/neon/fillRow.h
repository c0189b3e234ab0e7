// Solid rows with NEON.  Rows of eight pixels or more go in 32-byte stores,
// sixteen pixels per step, then eight, and the last eight of the row (stored
// again where they overlap: the same colour); shorter rows as the plain form
// stores them.  Inline, as the plain form: most calls store a few pixels.
#pragma once

#if defined(__ARM_NEON)

#include <arm_neon.h>

#include <cstdint>
#include <cstring>

#include "../core/fills.h"

namespace ui::neon {

// n >= 8 pixels of the colour in both registers of pair.
inline void storeRow(uint32_t *p, int32_t n, uint32x4x2_t pair) {
    uint32_t *end = p + n;
    for (uint32_t *stop = p + (n & ~15); p != stop; p += 16) vst2q_u32(p, pair), vst2q_u32(p + 8, pair);
    if (n & 8) vst2q_u32(p, pair);
    if (n & 7) vst2q_u32(end - 8, pair);
}

inline void fillRow(uint32_t *p, int32_t n, uint32_t colour) {
    if (n < 8) return ui::fillRow(p, n, colour);
    const uint32x4_t c = vdupq_n_u32(colour);
    storeRow(p, n, uint32x4x2_t{{c, c}});
}

// A pattern's row: its eight colours in two registers, stored eight pixels a
// step; the last n mod 8 copied (they start the pattern again).
inline void repeatRow(uint32_t *p, int32_t n, const uint8_t *colours) {
    if (n < 8) return ui::repeatRow(p, n, colours);
    const uint32x4_t low = vreinterpretq_u32_u8(vld1q_u8(colours));
    const uint32x4_t high = vreinterpretq_u32_u8(vld1q_u8(colours + 16));
    for (uint32_t *stop = p + (n & ~7); p != stop; p += 8) vst1q_u32(p, low), vst1q_u32(p + 4, high);
    if ((n & 7) != 0) std::memcpy(p, colours, 4 * size_t(n & 7));
}

// Rectangles of rows of eight pixels or more: every row stored from
// registers (fill.cpp), where the plain form copies the first row into the
// others (libc's block copy loads as much as it stores).  Narrower ones as
// the plain form stores them.
void fillWideArea(uint32_t *p, uint32_t stride, int32_t width, int32_t height, uint32_t colour);
inline void fillArea(uint32_t *p, uint32_t stride, int32_t width, int32_t height, uint32_t colour) {
    if (width < 8) return ui::fillArea(p, stride, width, height, colour);
    fillWideArea(p, stride, width, height, colour);
}

}  // namespace ui::neon

#endif
