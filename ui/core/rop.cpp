// Every raster operation instantiated once per form.
#include "rop.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

template <int I>
void pixel(const uint32_t *s, uint32_t *d) {
    *d = ui::rop2(I, *s, *d);
}

template <int I>
void solid(uint32_t *d, uint32_t s, int32_t n) {
    if constexpr (I == ui::kRopCopy)
        std::fill_n(d, n, s);
    else
        for (int32_t i = 0; i < n; ++i) d[i] = ui::rop2(I, s, d[i]);
}

template <int I>
void forward(uint32_t *d, const uint32_t *s, int32_t n) {
    if constexpr (I == ui::kRopCopy)
        std::memmove(d, s, 4 * size_t(n));
    else
        for (int32_t i = 0; i < n; ++i) d[i] = ui::rop2(I, s[i], d[i]);
}

template <int I>
void backward(uint32_t *d, const uint32_t *s, int32_t n) {
    if constexpr (I == ui::kRopCopy)
        std::memmove(d, s, 4 * size_t(n));
    else
        for (int32_t i = n - 1; i >= 0; --i) d[i] = ui::rop2(I, s[i], d[i]);
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
