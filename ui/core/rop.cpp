// Every raster operation instantiated once per form.
#include "rop.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "fills.h"

namespace {

template <int I>
void pixel(const uint32_t *s, uint32_t *d) {
    *d = ui::rop2(I, *s, *d);
}

// Without vector units, four pixels per step, all loads first (kVectorLoops).
// A source row that overlaps the destination is walked in the direction that
// reads every pixel before it is overwritten; within a step the loads come
// before the stores that could reach them (vector loops check for overlap).
template <int I>
inline void four(uint32_t *d, const uint32_t *s, bool solid) {
    uint32_t sv[4], dv[4];
    for (int k = 0; k < 4; ++k) sv[k] = solid ? s[0] : s[k], dv[k] = d[k];
    for (int k = 0; k < 4; ++k) d[k] = ui::rop2(I, sv[k], dv[k]);
}

template <int I>
void solid(uint32_t *d, uint32_t s, int32_t n) {
    if constexpr (I == ui::kRopCopy) return ui::fillRow(d, n, s);
    if constexpr (!ui::kVectorLoops) {
        for (uint32_t *end = d + (n & ~3); d != end; d += 4) four<I>(d, &s, true);
        n &= 3;
    }
    for (int32_t i = 0; i < n; ++i) d[i] = ui::rop2(I, s, d[i]);
}

template <int I>
void forward(uint32_t *d, const uint32_t *s, int32_t n) {
    if constexpr (I == ui::kRopCopy) return void(std::memmove(d, s, 4 * size_t(n)));
    if constexpr (!ui::kVectorLoops) {
        for (uint32_t *end = d + (n & ~3); d != end; d += 4, s += 4) four<I>(d, s, false);
        n &= 3;
    }
    for (int32_t i = 0; i < n; ++i) d[i] = ui::rop2(I, s[i], d[i]);
}

template <int I>
void backward(uint32_t *d, const uint32_t *s, int32_t n) {
    if constexpr (I == ui::kRopCopy) return void(std::memmove(d, s, 4 * size_t(n)));
    d += n, s += n;
    if constexpr (!ui::kVectorLoops) {
        for (uint32_t *end = d - (n & ~3); d != end;) four<I>(d -= 4, s -= 4, false);
        n &= 3;
    }
    for (int32_t i = 1; i <= n; ++i) d[-i] = ui::rop2(I, s[-i], d[-i]);
}

template <int... I>
constexpr std::array<ui::Rop2Fn, 16> pixels(std::integer_sequence<int, I...>) {
    return {pixel<I>...};
}
template <int... I>
constexpr std::array<ui::RopSpans, 16> spans(std::integer_sequence<int, I...>) {
    return {ui::RopSpans{solid<I>, forward<I>, backward<I>}...};
}

}  // namespace

const std::array<ui::Rop2Fn, 16> ui::rop2Table = pixels(std::make_integer_sequence<int, 16>{});
const std::array<ui::RopSpans, 16> ui::ropSpans = spans(std::make_integer_sequence<int, 16>{});
