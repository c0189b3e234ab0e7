// The rectangle orders without a brush: DstBlt (slot 1), ScrBlt (slot 3),
// MemBlt (slot 9) and OpaqueRect (slot 5).  Each translates by the surface
// origin, clips, draws and marks the clipped rectangle's tiles.
#include "../core/entry.h"
#include "../core/rows.h"
#include "../core/settings.h"
#include "../core/surface.h"

using ui::Site;

void ui::dstBlt(UiSurface *surface, const UiDstBltOrder *order, const UiClipRect *clip) {
    UiRect r{order->left, order->top, order->width, order->height};
    translate(*surface, r.left, r.top);
    if (!clipToRect(r, *clip)) return;
    if (fillRop(surface->image, r, kWhite, order->rop & 15)) markDrawn(&surface->dirty, r);
}

void ui::opaqueRect(UiSurface *surface, const UiOpaqueRectOrder *order, const UiClipRect *clip) {
    UiRect r{order->left, order->top, order->width, order->height};
    translate(*surface, r.left, r.top);
    if (!clipToRect(r, *clip)) return;
    const int32_t colour[3] = {order->red, order->green, order->blue};
    if (fillSolid(surface->image, r, colourOf(colour))) markDrawn(&surface->dirty, r);
}

// Overlapping pixels are read before they are overwritten: rows go top to
// bottom when the source lies below the destination, else bottom to top;
// within a row the walk goes right when the source lies right of it, else
// left.  The source is checked before the destination.
void ui::scrBlt(UiSurface *surface, const UiScrBltOrder *order, const UiClipRect *clip) {
    UiRect r{order->left, order->top, order->width, order->height};
    int32_t srcLeft = order->srcLeft, srcTop = order->srcTop;
    translate(*surface, r.left, r.top);
    translate(*surface, srcLeft, srcTop);
    if (!clipToRect(r, *clip, srcLeft, srcTop)) return;
    const imgbuf &image = surface->image;
    const uint32_t *src = readPtr(image, srcLeft, srcTop, r.width, r.height);
    if (src == nullptr) return report(Site::scrBltSource);
    uint32_t *dst = writePtr(image, r);
    if (dst == nullptr) return report(Site::scrBltDestination);

    const RopSpans &op = rows::ropSpans[size_t(order->rop & 15)];
    const auto span = srcLeft > r.left ? op.forward : op.backward;
    const bool downward = srcTop > r.top;
    for (int32_t k = 0; k < r.height; ++k) {
        const int32_t y = downward ? k : r.height - 1 - k;
        span(rowAt(dst, image.stride, y), rowAt(src, image.stride, y), r.width);
    }
    markDrawn(&surface->dirty, r);
}

// The source point is in bitmap coordinates and not translated.  A source
// outside the bitmap (compared in 64 bits), or no bitmap, draws nothing
// and is not reported.  Rows are stored bottom-up: picture row srcTop is
// stored row bitmapHeight - 1 - srcTop, and each following picture row lies
// one bitmap row earlier in memory.
void ui::memBlt(UiSurface *surface, const UiMemBltOrder *order, const UiClipRect *clip) {
    const UiMemBltOrder &o = *order;
    UiRect r{o.left, o.top, o.width, o.height};
    int32_t srcLeft = o.srcLeft, srcTop = o.srcTop;
    translate(*surface, r.left, r.top);
    if (!clipToRect(r, *clip, srcLeft, srcTop)) return;
    if (o.bitmapPixels == nullptr || srcLeft < 0 || srcTop < 0 || int64_t(srcLeft) + r.width > o.bitmapWidth ||
        int64_t(srcTop) + r.height > o.bitmapHeight)
        return;
    const imgbuf &image = surface->image;
    uint32_t *dst = writePtr(image, r);
    if (dst == nullptr) return report(Site::memBltDestination);

    const auto span = rows::ropSpans[size_t(o.rop & 15)].forward;
    const uint32_t *top = o.bitmapPixels + size_t(o.bitmapHeight - 1 - srcTop) * size_t(o.bitmapWidth) + size_t(srcLeft);
    for (int32_t y = 0; y < r.height; ++y)
        span(rowAt(dst, image.stride, y), top - size_t(y) * size_t(o.bitmapWidth), r.width);
    markDrawn(&surface->dirty, r);
}
