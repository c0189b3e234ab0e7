// The double-precision clipping passes of sloped lines.
//
// The doubles are SoftDouble values: binary64 computed on integers, so that
// each move is the exactly rounded fused multiply-add on every target and the
// clipped end points, hence the pixels, are the same everywhere.
#include "lineClip.h"

#include "softDouble.h"
#include "../core/surface.h"

namespace {

using ui::SoftDouble;

constexpr int kMaxPasses = 5;

struct Edges {
    SoftDouble left, top, right, bottom;
};

struct Point {
    SoftDouble x, y;
};

bool below(const SoftDouble &a, const SoftDouble &b) { return SoftDouble::compare(a, b) < 0; }

uint32_t outcodeOf(const Point &p, const Edges &e) {
    return (below(p.x, e.left) ? ui::kOutLeft : 0) | (below(e.right, p.x) ? ui::kOutRight : 0) |
           (below(p.y, e.top) ? ui::kOutAbove : 0) | (below(e.bottom, p.y) ? ui::kOutBelow : 0);
}

// Moves p onto the first edge that code names, in the order left, right,
// top, bottom: on a vertical edge y += (edge - x) x ky, on a horizontal one
// x += (edge - y) x kx, each product and sum rounded once.
void moveOntoEdge(Point &p, uint32_t code, const Edges &e, const SoftDouble &kx, const SoftDouble &ky) {
    if (code & ui::kOutLeft) {
        p.y = ui::fusedMultiplyAdd(ui::difference(e.left, p.x), ky, p.y);
        p.x = e.left;
    } else if (code & ui::kOutRight) {
        p.y = ui::fusedMultiplyAdd(ui::difference(e.right, p.x), ky, p.y);
        p.x = e.right;
    } else if (code & ui::kOutAbove) {
        p.x = ui::fusedMultiplyAdd(ui::difference(e.top, p.y), kx, p.x);
        p.y = e.top;
    } else if (code & ui::kOutBelow) {
        p.x = ui::fusedMultiplyAdd(ui::difference(e.bottom, p.y), kx, p.x);
        p.y = e.bottom;
    }
}

// An accepted point lies inside the clip rectangle, whose edges are 32-bit
// integers, so its truncation fits 32 bits.
int32_t truncated(const SoftDouble &v) { return int32_t(v.truncate()); }

}  // namespace

ui::ClipResult ui::clipLine(LineSegment &line, const UiClipRect &clip) {
    uint32_t c1 = outcode(line.x1, line.y1, clip);
    uint32_t c2 = outcode(line.x2, line.y2, clip);
    if ((c1 | c2) == 0) return ClipResult::accepted;
    if ((c1 & c2) != 0) return ClipResult::rejected;

    // The slopes come from the order's own 32-bit differences.
    const int32_t dx = wrapSub(line.x2, line.x1);
    const int32_t dy = wrapSub(line.y2, line.y1);
    if (dx == 0 || dy == 0) return ClipResult::rejected;  // not a sloped line: no slope to clip along
    const SoftDouble kx = quotient(dx, dy);
    const SoftDouble ky = quotient(dy, dx);
    const Edges edges{SoftDouble::fromInt(clip.left), SoftDouble::fromInt(clip.top), SoftDouble::fromInt(clip.right),
                      SoftDouble::fromInt(clip.bottom)};
    Point start{SoftDouble::fromInt(line.x1), SoftDouble::fromInt(line.y1)};
    Point end{SoftDouble::fromInt(line.x2), SoftDouble::fromInt(line.y2)};

    for (int pass = 1; pass <= kMaxPasses; ++pass) {
        if (c1 != 0) moveOntoEdge(start, c1, edges, kx, ky);
        if (c2 != 0) moveOntoEdge(end, c2, edges, kx, ky);
        const uint32_t m1 = outcodeOf(start, edges);
        const uint32_t m2 = outcodeOf(end, edges);
        if ((m1 | m2) == 0) {
            line = LineSegment{truncated(start.x), truncated(start.y), truncated(end.x), truncated(end.y)};
            return ClipResult::accepted;
        }
        if ((m1 & c2) != 0 || (m2 & (m1 | c1)) != 0) return ClipResult::rejected;
        c1 = m1;
        c2 = m2;
    }
    return ClipResult::unsettled;
}
