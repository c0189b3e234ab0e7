// Raw planar pixels with NEON: sixteen bytes of each plane and a zero plane
// stored as four-element structures, sixteen pixels in two stores; eight more
// with half-width registers; the last few through the plain form.
#if defined(__ARM_NEON)

#include "../codec/rlecontext.h"
#include "rows.h"

void ui::neon::mergePlanes(uint32_t *out, const uint8_t *red, const uint8_t *green, const uint8_t *blue, int32_t n) {
    int32_t i = 0;
    for (; i + 16 <= n; i += 16)
        vst4q_u8(reinterpret_cast<uint8_t *>(out + i),
                 uint8x16x4_t{{vld1q_u8(blue + i), vld1q_u8(green + i), vld1q_u8(red + i), vdupq_n_u8(0)}});
    if (i + 8 <= n) {
        vst4_u8(reinterpret_cast<uint8_t *>(out + i),
                uint8x8x4_t{{vld1_u8(blue + i), vld1_u8(green + i), vld1_u8(red + i), vdup_n_u8(0)}});
        i += 8;
    }
    ui::mergePlanes(out + i, red + i, green + i, blue + i, n - i);
}

#endif
