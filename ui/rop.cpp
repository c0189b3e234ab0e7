// Instantiates every raster operation once per form: the per-pixel table and
// the row functions used by the fills and blits.
#include "rop.h"

#include <utility>

namespace {

using Indexes = std::make_integer_sequence<int, 16>;

template <int Index>
void ropPixel(const uint32_t *s, uint32_t *d) {
    *d = ui::rop2(Index, *s, *d);
}

template <int Index>
void ropSolid(uint32_t *d, uint32_t s, int32_t n) {
    for (int32_t i = 0; i < n; ++i) d[i] = ui::rop2(Index, s, d[i]);
}

template <int Index>
void ropForward(uint32_t *d, const uint32_t *s, int32_t n) {
    for (int32_t i = 0; i < n; ++i) d[i] = ui::rop2(Index, s[i], d[i]);
}

template <int Index>
void ropBackward(uint32_t *d, const uint32_t *s, int32_t n) {
    for (int32_t i = n - 1; i >= 0; --i) d[i] = ui::rop2(Index, s[i], d[i]);
}

template <int... I>
constexpr std::array<ui::Rop2Fn, 16> pixelTable(std::integer_sequence<int, I...>) { return {ropPixel<I>...}; }
template <int... I>
constexpr std::array<ui::RopSolidSpan, 16> solidTable(std::integer_sequence<int, I...>) { return {ropSolid<I>...}; }
template <int... I>
constexpr std::array<ui::RopSpan, 16> forwardTable(std::integer_sequence<int, I...>) { return {ropForward<I>...}; }
template <int... I>
constexpr std::array<ui::RopSpan, 16> backwardTable(std::integer_sequence<int, I...>) { return {ropBackward<I>...}; }

}  // namespace

namespace ui {

const std::array<Rop2Fn, 16> rop2Table = pixelTable(Indexes{});
const std::array<RopSolidSpan, 16> ropSolidSpans = solidTable(Indexes{});
const std::array<RopSpan, 16> ropForwardSpans = forwardTable(Indexes{});
const std::array<RopSpan, 16> ropBackwardSpans = backwardTable(Indexes{});

}  // namespace ui
