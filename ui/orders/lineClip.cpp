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

// The first pass in exact integer arithmetic, for the usual lines: end points
// and clip edges below 2^24 in magnitude, each outside point moved once.
// A point moved onto a vertical edge e lands at y + (e - x) x dy / dx = v; the
// double-precision move (dy / dx rounded, then the fused multiply-add) lies
// within 2^-27 of v (|v - y| and |v| below 2^25), while a v that is not an
// integer lies at least 1 / |dx| >= 2^-25 from every integer.  For such a v
// the doubles compare with the integer edges and truncate exactly as v does;
// an integer v (where the rounded move may land just below it) and every
// other case are left to the passes in double precision.
constexpr int32_t kSmall = 1 << 24;

bool small(int32_t v) { return v > -kSmall && v < kSmall; }

struct ExactPoint {
    int32_t x, y;  // on the edge, and the moved coordinate truncated toward zero
    uint32_t code;  // its outcode
};

// Moves (x, y) onto the first edge of `code` as moveOntoEdge does; false when
// the result is an integer or out of range, where the doubles must decide.
bool moveExactly(int32_t x, int32_t y, uint32_t code, const UiClipRect &clip, int32_t dx, int32_t dy,
                 ExactPoint &out) {
    const bool vertical = (code & (ui::kOutLeft | ui::kOutRight)) != 0;
    const int32_t edge = code & ui::kOutLeft    ? clip.left
                         : code & ui::kOutRight ? clip.right
                         : code & ui::kOutAbove ? clip.top
                                                : clip.bottom;
    // v = (along x across-difference + (edge - from) x rise) / run, on 49 bits
    int64_t num = vertical ? int64_t(y) * dx + int64_t(edge - x) * dy : int64_t(x) * dy + int64_t(edge - y) * dx;
    int64_t den = vertical ? dx : dy;
    if (den < 0) num = -num, den = -den;
    const int64_t quotient = num / den, remainder = num % den;
    if (remainder == 0 || quotient <= -kSmall || quotient >= kSmall) return false;
    const int64_t floor = remainder < 0 ? quotient - 1 : quotient;  // v lies strictly between floor and floor + 1
    const int32_t moved = int32_t(quotient);
    const int32_t low = vertical ? clip.top : clip.left, high = vertical ? clip.bottom : clip.right;
    const uint32_t before = vertical ? ui::kOutAbove : ui::kOutLeft, after = vertical ? ui::kOutBelow : ui::kOutRight;
    const uint32_t across = (floor < low ? before : 0) | (floor >= high ? after : 0);
    out = vertical ? ExactPoint{edge, moved, ui::outcode(edge, low, clip) & (ui::kOutLeft | ui::kOutRight)}
                   : ExactPoint{moved, edge, ui::outcode(low, edge, clip) & (ui::kOutAbove | ui::kOutBelow)};
    out.code |= across;
    return true;
}

// The line accepted after one exact pass, or false when the doubles must decide.
bool acceptedExactly(ui::LineSegment &line, const UiClipRect &clip, uint32_t c1, uint32_t c2, int32_t dx, int32_t dy) {
    if (!(small(line.x1) && small(line.y1) && small(line.x2) && small(line.y2) && small(clip.left) &&
          small(clip.top) && small(clip.right) && small(clip.bottom)))
        return false;
    ExactPoint start{line.x1, line.y1, 0}, end{line.x2, line.y2, 0};
    if (c1 != 0 && !moveExactly(line.x1, line.y1, c1, clip, dx, dy, start)) return false;
    if (c2 != 0 && !moveExactly(line.x2, line.y2, c2, clip, dx, dy, end)) return false;
    if ((start.code | end.code) != 0) return false;
    line = ui::LineSegment{start.x, start.y, end.x, end.y};
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
