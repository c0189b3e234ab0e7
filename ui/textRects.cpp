// Background and opaque rectangles of the text orders.
#include "dirtybuf.h"
#include "textRects.h"

#include "fills.h"
#include "surface.h"
#include "ui.h"

namespace {

constexpr int32_t kUnset = -32768;  // "take the background's edge"

constexpr int32_t kFlagTop = 0x01;
constexpr int32_t kFlagRight = 0x02;
constexpr int32_t kFlagBottom = 0x04;
constexpr int32_t kFlagLeft = 0x08;

}  // namespace

bool ui::clipEdges(const UiSurface &surface, const Edges &edges, const UiClipRect &clip, UiRect &out) {
    // Width and height in 32-bit two's complement, as the record's words give
    // them; translation moves both edges alike and so leaves them unchanged.
    out = UiRect{edges.left, edges.top, wrapSub(edges.right, edges.left), wrapSub(edges.bottom, edges.top)};
    translate(surface, out.left, out.top);
    return clipToRect(out, clip);
}

bool ui::fastIndexOpaque(const Edges &bk, const Edges &op, int missingTopSite, int missingBottomSite, Edges &out) {
    if (op.bottom != kUnset) {
        out.left = op.left != 0 ? op.left : bk.left;
        out.right = op.right != 0 ? op.right : bk.right;
        out.top = op.top;
        out.bottom = op.bottom;
        return true;
    }
    const int32_t flags = op.top;
    if ((flags & kFlagTop) == 0) {
        reportInternal("ui", missingTopSite);
        return false;
    }
    if ((flags & kFlagBottom) == 0) {
        reportInternal("ui", missingBottomSite);
        return false;
    }
    out.left = (flags & kFlagLeft) != 0 ? bk.left : op.left;
    out.right = (flags & kFlagRight) != 0 ? bk.right : op.right;
    out.top = bk.top;
    out.bottom = bk.bottom;
    return true;
}

bool ui::fillText(const imgbuf &image, const UiRect &rect, const int32_t colour[3]) {
    const uint32_t c = colourOf(colour[0], colour[1], colour[2]);
    return fillSolid(image, rect, &c);
}

void ui::markTextArea(UiSurface &surface, const TextArea &area) {
    const UiRect *r = area.hasOpaque ? &area.opaque : area.hasBackground ? &area.background : nullptr;
    if (r != nullptr) markDrawn(surface.dirty, *r);
}

void ui::glyphOrigin(const UiSurface &surface, const Edges &bk, int32_t &x, int32_t &y) {
    if (x == kUnset) x = bk.left;
    if (y == kUnset) y = bk.top;
    translateAlways(surface, x, y);
}
