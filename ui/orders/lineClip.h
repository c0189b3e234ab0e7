// Cohen-Sutherland clipping of a sloped line against a clip rectangle, in
// double precision.
#pragma once

#include <cstdint>

#include "ui32.h"

namespace ui {

// Outcode bits: where a point lies against the clip rectangle (l, t, r, b).
// A point on an edge is inside.
inline constexpr uint32_t kOutLeft = 1;   // x < l
inline constexpr uint32_t kOutRight = 2;  // x > r
inline constexpr uint32_t kOutAbove = 4;  // y < t
inline constexpr uint32_t kOutBelow = 8;  // y > b

// Each condition sets its bit on its own, so an inverted clip rectangle
// (l > r) can set both bits of an axis.
inline uint32_t outcode(int32_t x, int32_t y, const UiClipRect &clip) {
    return (x < clip.left ? kOutLeft : 0) | (x > clip.right ? kOutRight : 0) | (y < clip.top ? kOutAbove : 0) |
           (y > clip.bottom ? kOutBelow : 0);
}

struct LineSegment {
    int32_t x1, y1, x2, y2;
};

enum class ClipResult {
    accepted,   // the segment now lies inside the clip rectangle
    rejected,   // nothing of it is visible
    unsettled,  // still not decided after the fifth pass
};

// Clips the segment in place.  The end points must differ in both x and y
// (a sloped line).  A segment inside the rectangle is accepted unchanged;
// otherwise the points are moved in double precision, at most five passes,
// each move one fused multiply-add along the slope, and the accepted points
// are truncated toward zero.
ClipResult clipLine(LineSegment &line, const UiClipRect &clip);

}  // namespace ui
