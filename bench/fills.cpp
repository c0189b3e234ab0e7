// Fills: OpaqueRect, fillBufferRect, PatBlt with a solid, hatched and cached
// colour brush, DstBlt invert; against memset of the same rows.
#include <cstring>

#include "harness.h"

namespace bench {
namespace {

constexpr int32_t kRopCopy = 12;
constexpr int32_t kRopInvert = 5;  // not destination

// Where a rectangle of the given size lands: full-screen sizes at the
// screen's corner, smaller ones at an odd place inside it.
UiRect place(Size s) {
    const int32_t offset = s.width >= kScreenWidth ? 0 : 101;
    return UiRect{kMargin + offset, kMargin + offset, s.width, s.height};
}

void memsetRows(benchmark::State &state, Size s) {
    Screen &screen = desk();
    const UiRect r = place(s);
    for (auto _ : state) {
        for (int32_t y = 0; y < r.height; ++y) std::memset(screen.at(r.left, r.top + y), 0x5a, 4 * size_t(r.width));
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(int64_t(s.width) * s.height));
}

void opaqueRect(benchmark::State &state, Size s) {
    Screen &screen = desk();
    const UiRect r = place(s);
    const UiOpaqueRectOrder order{r.left, r.top, r.width, r.height, 0x34, 0x65, 0xa4};
    const UiClipRect clip = screen.fullClip();
    const auto draw = Plugin::get().slot<UiOpaqueRectFn>(UI_SLOT_OPAQUE_RECT);
    for (auto _ : state) {
        draw(&screen.surface(), &order, &clip);
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(int64_t(s.width) * s.height));
}

void fillBufferRect(benchmark::State &state, Size s) {
    Screen &screen = desk();
    const UiRect r = place(s);
    const auto fill = Plugin::get().slot<UiFillBufferRectFn>(UI_SLOT_FILL_BUFFER_RECT);
    for (auto _ : state) {
        fill(&screen.image(), &screen.dirty(), &r, 0x3465a4);
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(int64_t(s.width) * s.height));
}

// A colour brush as a client caches it: 8 x 8 pixels, a small dither.
const uint8_t *colourBrush() {
    static uint32_t brush[64];
    for (int i = 0; i < 64; ++i) brush[i] = ((i / 8 + i) & 1) ? 0xbabdb6 : 0x888a85;
    return reinterpret_cast<const uint8_t *>(brush);
}

enum class Brush { solid, hatch, colour };

void patBlt(benchmark::State &state, Size s, Brush brush) {
    Screen &screen = desk();
    const UiRect r = place(s);
    UiPatBltOrder order{};
    order.left = r.left;
    order.top = r.top;
    order.width = r.width;
    order.height = r.height;
    order.rop = kRopCopy;
    order.backColor[0] = 0x2e, order.backColor[1] = 0x34, order.backColor[2] = 0x36;
    order.foreColor[0] = 0xee, order.foreColor[1] = 0xee, order.foreColor[2] = 0xec;
    switch (brush) {
        case Brush::solid: order.brushStyle = 0; break;
        case Brush::hatch:
            order.brushStyle = 2;
            order.brushBytes[0] = 5;  // diagonal cross
            break;
        case Brush::colour:
            order.brushStyle = 0x85;
            order.brushData = colourBrush();
            break;
    }
    const UiClipRect clip = screen.fullClip();
    const auto draw = Plugin::get().slot<UiPatBltFn>(UI_SLOT_PAT_BLT);
    for (auto _ : state) {
        draw(&screen.surface(), &order, &clip);
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(int64_t(s.width) * s.height));
}

void dstBltInvert(benchmark::State &state, Size s) {
    Screen &screen = desk();
    const UiRect r = place(s);
    const UiDstBltOrder order{r.left, r.top, r.width, r.height, kRopInvert};
    const UiClipRect clip = screen.fullClip();
    const auto draw = Plugin::get().slot<UiDstBltFn>(UI_SLOT_DST_BLT);
    for (auto _ : state) {
        draw(&screen.surface(), &order, &clip);
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(int64_t(s.width) * s.height));
}

}  // namespace

void registerFills() {
    for (const Size s : kRectSizes) {
        const std::string size = sizeName(s.width, s.height);
        const std::string ref = "fills/memset/" + size;
        // The target applies to full-screen fills with the copy operation.
        const double target = s.width == kScreenWidth ? 0.9 : 0;
        add({ref, [s](benchmark::State &st) { memsetRows(st, s); }});
        add({"fills/opaqueRect/" + size, [s](benchmark::State &st) { opaqueRect(st, s); }, ref, target});
        add({"fills/fillBufferRect/" + size, [s](benchmark::State &st) { fillBufferRect(st, s); }, ref, target});
        add({"fills/patBlt solid/" + size, [s](benchmark::State &st) { patBlt(st, s, Brush::solid); }, ref, target});
        add({"fills/patBlt hatch/" + size, [s](benchmark::State &st) { patBlt(st, s, Brush::hatch); }, ref, target});
        add({"fills/patBlt colour brush/" + size, [s](benchmark::State &st) { patBlt(st, s, Brush::colour); }, ref,
             target});
        add({"fills/dstBlt invert/" + size, [s](benchmark::State &st) { dstBltInvert(st, s); }, ref});
    }
}

}  // namespace bench
