// The double-precision clipping passes of sloped lines.
//
// The doubles are SoftDouble values: binary64 computed on integers, so that
// each move is the exactly rounded fused multiply-add on every target and the
// clipped end points, hence the pixels, are the same everywhere.
#include "lineClip.h"

#include <initializer_list>

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

// The first pass in exact integers, for the usual lines: ends and edges below
// 2^24 in magnitude, each outside point moved once, onto the clip's border.
// A point moved onto a vertical edge e lands at v = y + (e - x) x dy / dx;
// the double-precision move (dy / dx rounded, then the fused multiply-add)
// lies within 2^-27 of v, while a v that is not an integer lies at least
// 1 / |dx| >= 2^-25 from every integer, so the doubles compare with the
// edges and truncate exactly as v does.  An integer v (the rounded move may
// land just below it) and every other case are left to the doubles.
bool movedInside(int32_t &x, int32_t &y, uint32_t code, const UiClipRect &c, int32_t dx, int32_t dy) {
    const bool vertical = (code & (ui::kOutLeft | ui::kOutRight)) != 0;
    const int32_t edge = code & ui::kOutLeft    ? c.left
                         : code & ui::kOutRight ? c.right
                         : code & ui::kOutAbove ? c.top
                                                : c.bottom;
    int32_t &onEdge = vertical ? x : y, &moved = vertical ? y : x;
    const int32_t run = vertical ? dx : dy, sign = run < 0 ? -1 : 1;
    const int64_t num = sign * (int64_t(moved) * run + int64_t(edge - onEdge) * (vertical ? dy : dx));
    const int64_t den = sign * int64_t(run);
    const int64_t quotient = num / den, remainder = num % den, floor = remainder < 0 ? quotient - 1 : quotient;
    const bool inside = vertical ? c.top <= floor && floor < c.bottom && c.left <= edge && edge <= c.right
                                 : c.left <= floor && floor < c.right && c.top <= edge && edge <= c.bottom;
    if (remainder == 0 || !inside) return false;
    onEdge = edge, moved = int32_t(quotient);
    return true;
}

bool acceptedExactly(ui::LineSegment &line, const UiClipRect &c, uint32_t c1, uint32_t c2, int32_t dx, int32_t dy) {
    for (const int32_t v : {line.x1, line.y1, line.x2, line.y2, c.left, c.top, c.right, c.bottom})
        if (v <= -(1 << 24) || v >= 1 << 24) return false;
    ui::LineSegment s = line;
    if ((c1 != 0 && !movedInside(s.x1, s.y1, c1, c, dx, dy)) || (c2 != 0 && !movedInside(s.x2, s.y2, c2, c, dx, dy)))
        return false;
    line = s;
    return true;
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
    if (acceptedExactly(line, clip, c1, c2, dx, dy)) return ClipResult::accepted;
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
