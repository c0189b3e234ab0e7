// Fills: OpaqueRect, fillBufferRect, PatBlt with a solid, hatched and cached
// colour brush, DstBlt invert; against memset of the same rows.
#include <cstring>

#include "harness.h"

namespace bench {
namespace {

void memsetRows(benchmark::State &state, Size s) {
    const UiRect r = s.place();
    kit::Frame &f = desk();
    repeat(state, s.area(), [&] {
        for (int32_t y = 0; y < r.height; ++y) std::memset(&f.at(r.left, r.top + y), 0x5a, 4 * size_t(r.width));
    });
}

void opaqueRect(benchmark::State &state, Size s) {
    const UiRect r = s.place();
    const UiOpaqueRectOrder order{r.left, r.top, r.width, r.height, 0x34, 0x65, 0xa4};
    const kit::Table &t = table();
    UiSurface &surface = desk().surface();
    const UiClipRect clip = desk().all();
    repeat(state, s.area(), [&] { t.opaqueRect(surface, order, clip); });
}

void fillBufferRect(benchmark::State &state, Size s) {
    const UiRect r = s.place();
    const kit::Table &t = table();
    kit::Frame &f = desk();
    repeat(state, s.area(), [&] { t.fillBufferRect(&f.image(), &f.dirty(), r, 0x3465a4); });
}

// A colour brush as a client caches it: 8 x 8 pixels, a small dither.
const uint8_t *colourBrush() {
    static uint32_t brush[64];
    for (int i = 0; i < 64; ++i) brush[i] = ((i / 8 + i) & 1) ? 0xbabdb6 : 0x888a85;
    return reinterpret_cast<const uint8_t *>(brush);
}

enum class Brush { solid, hatch, colour };

void patBlt(benchmark::State &state, Size s, Brush brush) {
    const UiRect r = s.place();
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
    const kit::Table &t = table();
    UiSurface &surface = desk().surface();
    const UiClipRect clip = desk().all();
    repeat(state, s.area(), [&] { t.patBlt(surface, order, clip); });
}

void dstBltInvert(benchmark::State &state, Size s) {
    const UiRect r = s.place();
    const UiDstBltOrder order{r.left, r.top, r.width, r.height, kRopInvert};
    const kit::Table &t = table();
    UiSurface &surface = desk().surface();
    const UiClipRect clip = desk().all();
    repeat(state, s.area(), [&] { t.dstBlt(surface, order, clip); });
}

}  // namespace

void registerFills() {
    for (const Size s : kRectSizes) {
        const std::string ref = "fills/memset/" + s.name();
        // The target applies to full-screen fills with the copy operation.
        const double target = s.width == kScreenWidth ? 0.9 : 0;
        const auto fill = [&](const char *op, void (*run)(benchmark::State &, Size), double t) {
            add({std::string("fills/") + op + "/" + s.name(), [s, run](benchmark::State &st) { run(st, s); }, ref, t});
        };
        add({ref, [s](benchmark::State &st) { memsetRows(st, s); }});
        fill("opaqueRect", opaqueRect, target);
        fill("fillBufferRect", fillBufferRect, target);
        fill("patBlt solid", [](benchmark::State &st, Size z) { patBlt(st, z, Brush::solid); }, target);
        fill("patBlt hatch", [](benchmark::State &st, Size z) { patBlt(st, z, Brush::hatch); }, target);
        fill("patBlt colour brush", [](benchmark::State &st, Size z) { patBlt(st, z, Brush::colour); }, target);
        fill("dstBlt invert", dstBltInvert, 0);
    }
}

}  // namespace bench
