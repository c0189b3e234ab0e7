// The wide solid rectangles of fillArea with NEON (fillRow.h).
#if defined(__ARM_NEON)

#include "../core/surface.h"
#include "rows.h"

void ui::neon::fillWideArea(uint32_t *p, uint32_t stride, int32_t width, int32_t height, uint32_t colour) {
    const uint32x4_t c = vdupq_n_u32(colour);
    for (int32_t y = 0; y < height; ++y) storeRow(rowAt(p, stride, y), width, uint32x4x2_t{{c, c}});
}

#endif
