// The LineTo order (slot 4): a one-pixel line from the start point up to, not
// including, the end point, through a raster operation.
//
// Lines of at most one pixel, vertical and horizontal lines are clipped in
// integers.  Sloped lines are clipped in double precision (lineClip.cpp) and
// drawn by a 2.30 fixed-point stepper: pixel k of the run lies k steps along
// the major axis and floor((2^29 + k x lineSlope) / 2^30) steps along the
// minor one.
#include <algorithm>
#include <cstddef>

#include "../core/entry.h"
#include "../core/fills.h"
#include "../core/rows.h"
#include "../core/settings.h"
#include "../core/surface.h"
#include "lineClip.h"

namespace {

using ui::Site;

constexpr uint32_t kHalf = 0x20000000;       // 0.5 in 2.30 fixed point

// The pen: colour and raster operation, combined into one pixel or a span of
// pixels.  Copy stores directly; the other operations go through the table.
// The colour is handed in by the caller's loop, which keeps it in a register
// (a member read after each store through the pixel pointer would be read
// again, as the store might alias it).
struct StorePen {
    uint32_t colour;
    void operator()(uint32_t *p, uint32_t c) const { *p = c; }
    void span(uint32_t *p, int32_t n) const { ui::rows::fillRow(p, n, colour); }
};
struct RopPen {
    uint32_t colour;
    ui::Rop2Fn op;
    void (*spanOp)(uint32_t *, uint32_t, int32_t);
    void operator()(uint32_t *p, uint32_t c) const { op(&c, p); }
    void span(uint32_t *p, int32_t n) const { spanOp(p, colour, n); }
};

// Calls draw(pen) with the pen type for the order's operation, chosen once.
template <typename Draw>
void withPen(const UiLineOrder &order, Draw draw) {
    const uint32_t colour = ui::colourOf(order.penColor);
    const int32_t index = order.rop & 15;
    if (index == ui::kRopCopy)
        draw(StorePen{colour});
    else
        draw(RopPen{colour, ui::rop2Table[size_t(index)], ui::rows::ropSpans[size_t(index)].solid});
}

// A run length as the pixel check takes it: 32-bit signed.  A longer run
// (2^31 pixels or more, possible between hostile end points) is passed as -1,
// which the check refuses with its usual report.
int32_t checkedSize(int64_t n) { return n <= INT32_MAX ? int32_t(n) : -1; }

// Clips the run first .. first + n - 1 against the inclusive range
// [low, high]; false when nothing is left.  64-bit, so that hostile ends
// cannot overflow.
bool clipRun(int64_t &first, int64_t &n, int32_t low, int32_t high) {
    if (first < low) {
        n -= low - first;
        if (n <= 0) return false;
        first = low;
    }
    if (first + n > int64_t(high) + 1) {
        n = int64_t(high) + 1 - first;
        if (n <= 0) return false;
    }
    return true;
}

// One pixel at (x, y), known to be inside the clip rectangle.
template <typename Pen>
void drawPixel(UiSurface &surface, int32_t x, int32_t y, Site site, Pen pen) {
    uint32_t *p = ui::writePtr(surface.image, x, y, 1, 1);
    if (p == nullptr) return ui::report(site);
    pen(p, pen.colour);
    ui::markRect(surface.dirty, x, y, ui::wrapAdd(x, 1), ui::wrapAdd(y, 1));
}

// The run of a vertical (dx = 0) or horizontal (dy = 0) line: from the start
// point up to, not including, the end point, whichever way the line points.
void runOf(int32_t start, int32_t end, int32_t delta, int64_t &first, int64_t &n) {
    if (delta > 0) {
        first = start;
        n = delta;
    } else {
        first = int64_t(end) + 1;
        n = -int64_t(delta);
    }
}

template <typename Pen>
void drawVertical(UiSurface &surface, int32_t x, int32_t y1, int32_t y2, int32_t dy, const UiClipRect &clip,
                  Pen pen) {
    if (x < clip.left || x > clip.right) return;
    int64_t first = 0, n = 0;
    runOf(y1, y2, dy, first, n);
    if (!clipRun(first, n, clip.top, clip.bottom)) return;
    // first now lies in [top, bottom].
    const imgbuf &image = surface.image;
    uint32_t *p = ui::writePtr(image, x, int32_t(first), 1, checkedSize(n));
    if (p == nullptr) return ui::report(Site::lineVertical);
    const uint32_t colour = pen.colour;  // n fits: the image check admitted it
    ui::downColumn(p, image.stride, uint32_t(n), [pen, colour](uint32_t *q) { pen(q, colour); });
    ui::markRect(surface.dirty, x, int32_t(first), ui::wrapAdd(x, 1), ui::wrapAdd(int32_t(first), n));
}

template <typename Pen>
void drawHorizontal(UiSurface &surface, int32_t y, int32_t x1, int32_t x2, int32_t dx, const UiClipRect &clip,
                    Pen pen) {
    if (y < clip.top || y > clip.bottom) return;
    int64_t first = 0, n = 0;
    runOf(x1, x2, dx, first, n);
    if (!clipRun(first, n, clip.left, clip.right)) return;
    uint32_t *p = ui::writePtr(surface.image, int32_t(first), y, checkedSize(n), 1);
    if (p == nullptr) return ui::report(Site::lineHorizontal);
    pen.span(p, int32_t(n));
    ui::markRect(surface.dirty, int32_t(first), y, ui::wrapAdd(int32_t(first), n), ui::wrapAdd(y, 1));
}

// The stepper.  Every pixel of the run lies inside the line's bounding box,
// which the pixel check has admitted, so p never leaves the image; it is
// stepped only between pixels.  The error stays below 2^30 + 2^30 (slope is
// at most 2^30), so of the carry bits only bit 30 can be set: it picks the
// step.  Kept out of line: its loop then has every register it needs.  (Finding
// runs of pixels once per run cost more instructions on 32-bit ARM at slopes
// near 1/3 and saved under 5 % on i386 at 1/7; two pixels a loop step cost
// more on both.)
template <typename Pen>
[[gnu::noinline]] void runSloped(uint8_t *p, uint32_t count, uint32_t slope, ptrdiff_t majorStep, ptrdiff_t bothStep,
                                 Pen pen) {
    uint32_t error = kHalf;
    const uint32_t colour = pen.colour;
    for (;;) {
        error += slope;
        pen(reinterpret_cast<uint32_t *>(p), colour);
        if (--count == 0) return;
        const bool carry = error >= 0x40000000u;
        p += carry ? bothStep : majorStep;
        error -= carry ? 0x40000000u : 0;
    }
}

// Rasterises the clipped segment; the end point is drawn only when clipping
// moved it (it then lies on the clip rectangle's edge).
template <typename Pen>
void drawSloped(UiSurface &surface, const ui::LineSegment &s, bool endKept, Pen pen) {
    const int64_t dx = int64_t(s.x2) - s.x1, dy = int64_t(s.y2) - s.y1;
    if (dx == 0 && dy == 0) {
        if (!endKept) drawPixel(surface, s.x1, s.y1, Site::lineClippedPixel, pen);
        return;
    }
    const int64_t width = dx < 0 ? -dx : dx, height = dy < 0 ? -dy : dy;
    const int32_t xmin = dx > 0 ? s.x1 : s.x2, ymin = dy > 0 ? s.y1 : s.y2;
    const imgbuf &image = surface.image;
    uint32_t *box = ui::writePtr(image, xmin, ymin, checkedSize(width + 1), checkedSize(height + 1));
    if (box == nullptr) return ui::report(Site::lineSloped);

    // The box lies in the image, so its sizes are small from here on.
    const bool xMajor = width > height;
    const int64_t major = xMajor ? width : height, minor = xMajor ? height : width;
    const uint32_t slope = uint32_t((uint64_t(minor) << 30) / uint64_t(major));  // 64-bit, truncating
    const uint32_t count = uint32_t(endKept ? major : major + 1);
    // A row step is only taken when the box spans two rows or more, and then
    // the client's buffer holds more than `stride` bytes, so the stride fits
    // ptrdiff_t.
    const ptrdiff_t xStep = dx > 0 ? 4 : -4;
    const ptrdiff_t yStep = dy == 0 ? 0 : (dy > 0 ? ptrdiff_t(image.stride) : -ptrdiff_t(image.stride));
    uint32_t *start = ui::rowAt(box, image.stride, int32_t(dy > 0 ? 0 : height)) + (dx > 0 ? 0 : width);
    runSloped(reinterpret_cast<uint8_t *>(start), count, slope, xMajor ? xStep : yStep, xStep + yStep, pen);
    ui::markRect(surface.dirty, xmin, ymin, ui::wrapAdd(xmin, width + 1), ui::wrapAdd(ymin, height + 1));
}

}  // namespace

void ui::drawLine(UiSurface *surface, const UiLineOrder *order, const UiClipRect *clip) {
    int32_t x1 = order->startX, y1 = order->startY, x2 = order->endX, y2 = order->endY;
    translate(*surface, x1, y1);
    translate(*surface, x2, y2);
    // The order's differences are 32-bit: coordinates far apart wrap exactly
    // as the record's words do; every pixel is bounds-checked all the same.
    const int32_t dx = wrapSub(x2, x1), dy = wrapSub(y2, y1);
    const UiClipRect &c = *clip;

    withPen(*order, [&](auto pen) {
        if (dx >= -1 && dx <= 1 && dy >= -1 && dy <= 1) {
            if (outcode(x1, y1, c) == 0) drawPixel(*surface, x1, y1, Site::linePixel, pen);
            return;
        }
        if (dx == 0) return drawVertical(*surface, x1, y1, y2, dy, c, pen);
        if (dy == 0) return drawHorizontal(*surface, y1, x1, x2, dx, c, pen);

        LineSegment segment{x1, y1, x2, y2};
        switch (clipLine(segment, c)) {
            case ClipResult::rejected: return;
            case ClipResult::unsettled: return report(Site::lineUnsettled);
            case ClipResult::accepted: break;
        }
        const bool endKept = segment.x2 == x2 && segment.y2 == y2;
        drawSloped(*surface, segment, endKept, pen);
    });
}
