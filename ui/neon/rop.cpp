// The raster operations on rows with NEON: eight pixels per 32-byte load and
// store (two-element structure loads, whose lane order the stores undo; each
// operation works lane by lane), sixteen per step, then four and single
// pixels.  Overlapping rows: every load of a step comes before its stores,
// and forward steps walk right, backward steps left, as in the plain form.
// Copy (12) is the same loop: the destination loads are dead and dropped.
#if defined(__ARM_NEON)

#include <utility>

#include "rows.h"

namespace {

using ui::rop2;

// Eight pixels at d with the source s (eight more pixels, or one repeated).
template <int I, bool kSolid>
inline void eight(uint32_t *d, const uint32_t *s, uint32x4_t colour) {
    uint32x4x2_t dv = vld2q_u32(d);
    const uint32x4x2_t sv = kSolid ? uint32x4x2_t{{colour, colour}} : vld2q_u32(s);
    dv.val[0] = rop2(I, sv.val[0], dv.val[0]);
    dv.val[1] = rop2(I, sv.val[1], dv.val[1]);
    vst2q_u32(d, dv);
}

template <int I, bool kSolid>
inline void four(uint32_t *d, const uint32_t *s, uint32x4_t colour) {
    vst1q_u32(d, rop2(I, kSolid ? colour : vld1q_u32(s), vld1q_u32(d)));
}

template <int I>
void solid(uint32_t *d, uint32_t s, int32_t n) {
    const uint32x4_t c = vdupq_n_u32(s);
    for (uint32_t *end = d + (n & ~15); d != end; d += 16) eight<I, true>(d, nullptr, c), eight<I, true>(d + 8, nullptr, c);
    if (n & 8) eight<I, true>(d, nullptr, c), d += 8;
    if (n & 4) four<I, true>(d, nullptr, c), d += 4;
    for (int32_t i = 0; i < (n & 3); ++i) d[i] = rop2(I, s, d[i]);
}

template <int I>
void forward(uint32_t *d, const uint32_t *s, int32_t n) {
    const uint32x4_t none = vdupq_n_u32(0);
    for (uint32_t *end = d + (n & ~15); d != end; d += 16, s += 16) {
        eight<I, false>(d, s, none);
        eight<I, false>(d + 8, s + 8, none);
    }
    if (n & 8) eight<I, false>(d, s, none), d += 8, s += 8;
    if (n & 4) four<I, false>(d, s, none), d += 4, s += 4;
    for (int32_t i = 0; i < (n & 3); ++i) d[i] = rop2(I, s[i], d[i]);
}

// From the right end: the source of each step lies at or left of what the
// steps before it stored.
template <int I>
void backward(uint32_t *d, const uint32_t *s, int32_t n) {
    const uint32x4_t none = vdupq_n_u32(0);
    d += n, s += n;
    for (uint32_t *end = d - (n & ~15); d != end;) {
        d -= 16, s -= 16;
        eight<I, false>(d + 8, s + 8, none);
        eight<I, false>(d, s, none);
    }
    if (n & 8) d -= 8, s -= 8, eight<I, false>(d, s, none);
    if (n & 4) d -= 4, s -= 4, four<I, false>(d, s, none);
    for (int32_t i = 1; i <= (n & 3); ++i) d[-i] = rop2(I, s[-i], d[-i]);
}

template <int... I>
constexpr std::array<ui::RopSpans, 16> spans(std::integer_sequence<int, I...>) {
    return {ui::RopSpans{solid<I>, forward<I>, backward<I>}...};
}

}  // namespace

const std::array<ui::RopSpans, 16> ui::neon::ropSpans = spans(std::make_integer_sequence<int, 16>{});

#endif
