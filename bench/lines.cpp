// Lines: LineTo orders with the copy operation, horizontal, vertical, at 45
// degrees, shallow and steep, one clipped by a window's clip rectangle, and
// one with xor; the solid hLine / vLine primitives beside them.
#include <cstdlib>

#include "harness.h"

namespace bench {
namespace {

constexpr int32_t kRopCopy = 12;
constexpr int32_t kRopXor = 6;
constexpr int32_t kX = kMargin + 40;
constexpr int32_t kY = kMargin + 40;

struct Line {
    const char *name;
    int32_t x1, y1, x2, y2;
    int32_t rop;
    UiClipRect clip;  // screen coordinates, inclusive
};

const UiClipRect kScreenClip{kMargin, kMargin, kMargin + kScreenWidth - 1, kMargin + kScreenHeight - 1};
const UiClipRect kWindowClip{kMargin + 100, kMargin + 100, kMargin + 1800, kMargin + 1000};

const Line kLines[] = {
    {"horizontal", kX, kY, kX + 1000, kY, kRopCopy, kScreenClip},
    {"vertical", kX, kY, kX, kY + 1000, kRopCopy, kScreenClip},
    {"45 degrees", kX, kY, kX + 1000, kY + 1000, kRopCopy, kScreenClip},
    {"shallow 1000:150", kX, kY, kX + 1000, kY + 150, kRopCopy, kScreenClip},
    {"shallow 1000:999", kX, kY, kX + 1000, kY + 999, kRopCopy, kScreenClip},
    {"steep 150:1000", kX, kY, kX + 150, kY + 1000, kRopCopy, kScreenClip},
    // Crosses the window's clip rectangle from outside the screen to outside
    // it: x-major, 0.3 rows per column, entering and leaving through the left
    // and right edges (1701 columns).
    {"clipped 6000:1800", kMargin - 2000, kMargin - 300, kMargin + 4000, kMargin + 1500, kRopCopy, kWindowClip},
    {"shallow 1000:150 xor", kX, kY, kX + 1000, kY + 150, kRopXor, kScreenClip},
};

// Pixels a line draws: its major extent (the end point is not drawn), cut to
// the clip rectangle's columns for the x-major clipped line.
int64_t pixelsOf(const Line &l) {
    const int64_t dx = std::llabs(int64_t(l.x2) - l.x1), dy = std::llabs(int64_t(l.y2) - l.y1);
    if (dx > dy && (l.x1 < l.clip.left || l.x2 > l.clip.right))
        return int64_t(l.clip.right) - l.clip.left + 1;
    return dx > dy ? dx : dy;
}

void drawLine(benchmark::State &state, const Line &l) {
    Screen &screen = desk();
    const UiLineOrder order{l.x1, l.y1, l.x2, l.y2, l.rop, {0x20, 0x4a, 0x87}};
    const auto draw = Plugin::get().slot<UiDrawLineFn>(UI_SLOT_DRAW_LINE);
    for (auto _ : state) {
        draw(&screen.surface(), &order, &l.clip);
        benchmark::ClobberMemory();
    }
    count(state, bench::pixelsOf(pixelsOf(l)));
}

void primitiveLine(benchmark::State &state, bool vertical) {
    Screen &screen = desk();
    const auto h = Plugin::get().slot<UiHLineFn>(UI_SLOT_H_LINE);
    const auto v = Plugin::get().slot<UiVLineFn>(UI_SLOT_V_LINE);
    for (auto _ : state) {
        if (vertical)
            v(&screen.image(), &screen.dirty(), kX, kY, 1000, 0x204a87);
        else
            h(&screen.image(), &screen.dirty(), kX, kY, 1000, 0x204a87);
        benchmark::ClobberMemory();
    }
    count(state, bench::pixelsOf(1000));
}

}  // namespace

void registerLines() {
    for (const Line &l : kLines)
        add({std::string("lines/drawLine ") + l.name + "/" + std::to_string(pixelsOf(l)) + " px",
             [&l](benchmark::State &st) { drawLine(st, l); }});
    add({"lines/hLine/1000 px", [](benchmark::State &st) { primitiveLine(st, false); }});
    add({"lines/vLine/1000 px", [](benchmark::State &st) { primitiveLine(st, true); }});
}

}  // namespace bench
