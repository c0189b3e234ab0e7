// Source pixels into words with NEON: sixteen pixels per step, loaded as
// byte planes (four- or three-element structure loads), the top byte set
// to zero and, for high-first pixels, the first and third planes swapped, then
// stored as four-element structures; eight more with half-width registers;
// the last few through the plain converter.
#if defined(__ARM_NEON)

#include <utility>

#include "rows.h"

namespace {

template <int Step, bool kLow>
void convert(uint32_t *__restrict dst, const uint8_t *__restrict src, int32_t n) {
    auto *out = reinterpret_cast<uint8_t *>(dst);
    for (; n >= 16; n -= 16, src += 16 * Step, out += 64) {
        uint8x16x4_t v;
        if constexpr (Step == 4) {
            v = vld4q_u8(src);
        } else {
            const uint8x16x3_t three = vld3q_u8(src);
            v.val[0] = three.val[0], v.val[1] = three.val[1], v.val[2] = three.val[2];
        }
        if (!kLow) std::swap(v.val[0], v.val[2]);
        v.val[3] = vdupq_n_u8(0);
        vst4q_u8(out, v);
    }
    if (n >= 8) {
        uint8x8x4_t v;
        if constexpr (Step == 4) {
            v = vld4_u8(src);
        } else {
            const uint8x8x3_t three = vld3_u8(src);
            v.val[0] = three.val[0], v.val[1] = three.val[1], v.val[2] = three.val[2];
        }
        if (!kLow) std::swap(v.val[0], v.val[2]);
        v.val[3] = vdup_n_u8(0);
        vst4_u8(out, v);
        n -= 8, src += 8 * Step, out += 32;
    }
    ui::rowFor(Step, kLow)(reinterpret_cast<uint32_t *>(out), src, n);
}

}  // namespace

ui::RowFn ui::neon::rowFor(int32_t step, bool low) {
    if (step == 4) return low ? convert<4, true> : convert<4, false>;
    if (step == 3) return low ? convert<3, true> : convert<3, false>;
    return nullptr;
}

#endif
