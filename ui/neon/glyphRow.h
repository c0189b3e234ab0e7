// A glyph row with NEON: each whole byte of the bitmap spread into eight
// lane masks (a bit test per lane, widened by sign extension) that select
// the colour or the pixel already there, eight pixels loaded and stored at
// once.  Rows that start inside a byte, and the last partial byte, as the
// plain form draws them.  Inline, as the plain form: glyph rows are short.
#pragma once

#if defined(__ARM_NEON)

#include <arm_neon.h>

#include <cstdint>

#include "../text/glyph.h"

namespace ui::neon {

inline void glyphRow(uint32_t *d, const uint8_t *s, int32_t firstBit, int32_t width, uint32_t colour) {
    if (firstBit != 0) return ui::glyphRow(d, s, firstBit, width, colour);
    const uint8x8_t bits = {0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01};
    const uint32x4_t c = vdupq_n_u32(colour);
    for (; width >= 8; width -= 8, d += 8) {
        const uint8_t byte = *s++;
        if (byte == 0) continue;
        const int16x8_t set = vmovl_s8(vreinterpret_s8_u8(vtst_u8(vdup_n_u8(byte), bits)));
        const uint32x4_t low = vreinterpretq_u32_s32(vmovl_s16(vget_low_s16(set)));
        const uint32x4_t high = vreinterpretq_u32_s32(vmovl_s16(vget_high_s16(set)));
        vst1q_u32(d, vbslq_u32(low, c, vld1q_u32(d)));
        vst1q_u32(d + 4, vbslq_u32(high, c, vld1q_u32(d + 4)));
    }
    if (width > 0) ui::glyphRow(d, s, 0, width, colour);
}

}  // namespace ui::neon

#endif
