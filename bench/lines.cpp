// Lines: LineTo orders with the copy operation, horizontal, vertical, at 45
// degrees, shallow and steep, one clipped by a window's clip rectangle, and
// one with xor; the solid hLine / vLine primitives beside them.  Each sloped
// line is compared with a plain per-pixel stepper drawing the same pixels.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <utility>
#include <vector>

#include "harness.h"

namespace bench {
namespace {

constexpr int32_t kX = kMargin + 40;
constexpr int32_t kY = kMargin + 40;
constexpr uint32_t kPen = 0x204a87;

// Sloped lines should run at least as fast as the plain stepper; the target
// is set for i386, where they did not.
#if defined(__i386__)
constexpr double kStepperTarget = 1.0;
#else
constexpr double kStepperTarget = 0;
#endif

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
    // The same with a slope that is not a round number, as most lines have:
    // it crosses the edges between pixels rather than on one.
    {"clipped 6001:1799", kMargin - 2000, kMargin - 300, kMargin + 4001, kMargin + 1499, kRopCopy, kWindowClip},
    {"shallow 1000:150 xor", kX, kY, kX + 1000, kY + 150, kRopXor, kScreenClip},
};

bool sloped(const Line &l) { return l.x1 != l.x2 && l.y1 != l.y2; }

// Pixels a line draws: its major extent (the end point is not drawn), cut to
// the clip rectangle's columns for the x-major clipped line.
int64_t drawn(const Line &l) {
    const int64_t dx = std::llabs(int64_t(l.x2) - l.x1), dy = std::llabs(int64_t(l.y2) - l.y1);
    if (dx > dy && (l.x1 < l.clip.left || l.x2 > l.clip.right)) return int64_t(l.clip.right) - l.clip.left + 1;
    return dx > dy ? dx : dy;
}

// The reference: a plain Bresenham stepper, one store (or xor) per pixel,
// along the same line for as many pixels.  No clipping: it starts at the
// first visible pixel.
template <bool kXor>
__attribute__((noinline)) void stepLine(uint32_t *p, ptrdiff_t stride, int32_t dx, int32_t dy, int32_t n,
                                        uint32_t colour) {
    const int32_t ax = std::abs(dx), ay = std::abs(dy);
    const ptrdiff_t stepX = dx > 0 ? 1 : -1, stepY = dy > 0 ? stride : -stride;
    const bool xMajor = ax > ay;
    const ptrdiff_t major = xMajor ? stepX : stepY, minor = xMajor ? stepY : stepX;
    const int32_t length = xMajor ? ax : ay, rise = xMajor ? ay : ax;
    int32_t error = length / 2;
    for (int32_t i = 0; i < n; ++i) {
        if (kXor)
            *p ^= colour;
        else
            *p = colour;
        p += major;
        error -= rise;
        if (error < 0) {
            error += length;
            p += minor;
        }
    }
}

// The stepper's call for the line: from its first visible pixel, as many
// pixels as drawLine draws.
std::function<void()> stepFor(const Line &l) {
    const int32_t dx = l.x2 - l.x1, dy = l.y2 - l.y1;
    int32_t x = l.x1, y = l.y1;
    if (x < l.clip.left) {  // the clipped line enters through the left edge
        y += int32_t((int64_t(l.clip.left) - x) * dy / dx);
        x = l.clip.left;
    }
    kit::Frame &f = desk();
    uint32_t *start = &f.at(x, y);
    const ptrdiff_t stride = f.image().stride / 4;
    const int32_t n = int32_t(drawn(l));
    if (l.rop == kRopXor) return [=] { stepLine<true>(start, stride, dx, dy, n, kPen); };
    return [=] { stepLine<false>(start, stride, dx, dy, n, kPen); };
}

void stepper(benchmark::State &state, const Line &l) {
    const std::function<void()> step = stepFor(l);
    repeat(state, drawn(l), step);
}

// Before anything is measured: the stepper must draw as many pixels as
// drawLine along the same line, each at most one step across it from
// drawLine's (the two may round differently), else the comparison is
// meaningless.
void requireSameLine(const Line &l) {
    kit::Frame &f = desk();
    const bool xMajor = std::abs(l.x2 - l.x1) > std::abs(l.y2 - l.y1);
    const auto drawnBy = [&](auto draw) {
        f.fill(0);
        draw();
        std::vector<std::pair<int32_t, int32_t>> pixels;  // (major, minor), by major
        for (int32_t y = 0; y < f.height(); ++y)
            for (int32_t x = 0; x < f.width(); ++x)
                if (f.at(x, y) != 0) pixels.push_back(xMajor ? std::pair{x, y} : std::pair{y, x});
        std::sort(pixels.begin(), pixels.end());
        return pixels;
    };
    const auto ours = drawnBy([&] {
        const UiLineOrder order{l.x1, l.y1, l.x2, l.y2, l.rop, {kPen >> 16, (kPen >> 8) & 0xff, kPen & 0xff}};
        table().drawLine(f.surface(), order, l.clip);
    });
    const auto reference = drawnBy([&] { stepFor(l)(); });
    bool same = ours.size() == reference.size() && int64_t(ours.size()) == drawn(l);
    for (size_t i = 0; same && i < ours.size(); ++i)
        same = ours[i].first == reference[i].first && std::abs(ours[i].second - reference[i].second) <= 1;
    if (!same) {
        std::fprintf(stderr, "bench: the plain stepper does not draw the line %s as drawLine does\n", l.name);
        std::exit(1);
    }
}

void drawLine(benchmark::State &state, const Line &l) {
    const UiLineOrder order{l.x1, l.y1, l.x2, l.y2, l.rop, {kPen >> 16, (kPen >> 8) & 0xff, kPen & 0xff}};
    const kit::Table &t = table();
    UiSurface &surface = desk().surface();
    repeat(state, drawn(l), [&] { t.drawLine(surface, order, l.clip); });
}

void primitiveLine(benchmark::State &state, bool vertical) {
    const kit::Table &t = table();
    kit::Frame &f = desk();
    repeat(state, 1000, [&] {
        if (vertical)
            t.vLine(&f.image(), &f.dirty(), kX, kY, 1000, kPen);
        else
            t.hLine(&f.image(), &f.dirty(), kX, kY, 1000, kPen);
    });
}

}  // namespace

void registerLines() {
    for (const Line &l : kLines) {
        const std::string size = std::string("/").append(std::to_string(drawn(l))).append(" px");
        const std::string name = std::string("lines/drawLine ") + l.name + size;
        const auto draw = [&l](benchmark::State &st) { drawLine(st, l); };
        if (!sloped(l)) {
            add({name, draw});
            continue;
        }
        requireSameLine(l);
        const std::string ref = std::string("lines/plain stepper ") + l.name + size;
        add({ref, [&l](benchmark::State &st) { stepper(st, l); }});
        add({name, draw, ref, l.rop == kRopCopy ? kStepperTarget : 0});
    }
    add({"lines/hLine/1000 px", [](benchmark::State &st) { primitiveLine(st, false); }});
    add({"lines/vLine/1000 px", [](benchmark::State &st) { primitiveLine(st, true); }});
}

}  // namespace bench
