// The DstBlt, ScrBlt and MemBlt orders (slots 1, 3 and 9).
#include <cstring>

#include "dirtybuf.h"
#include "entry.h"
#include "fills.h"
#include "rop.h"
#include "surface.h"
#include "ui.h"

namespace {

constexpr int kScrBltSourceSite = 1567;
constexpr int kScrBltDestSite = 1570;
constexpr int kMemBltDestSite = 1738;

// Moves a block inside one image.  Rows go top to bottom when the source lies
// below the destination, else bottom to top; within a row a non-copy
// operation walks left to right when the source lies right of the
// destination, else right to left.  Overlapping pixels are thus always read
// before they are overwritten.
void moveBlock(const imgbuf &image, uint32_t *dst, const uint32_t *src, const UiRect &r, int32_t srcLeft,
               int32_t srcTop, int32_t index) {
    const uint32_t stride = image.stride;
    const bool downward = srcTop > r.top;
    const auto rowOf = [&](int32_t k) { return downward ? k : r.height - 1 - k; };
    if (index == ui::kRopCopy) {
        const size_t rowBytes = 4 * size_t(r.width);
        for (int32_t k = 0; k < r.height; ++k)
            std::memmove(ui::rowAt(dst, stride, rowOf(k)), ui::rowAt(src, stride, rowOf(k)), rowBytes);
        return;
    }
    const ui::RopSpan span = srcLeft > r.left ? ui::ropForwardSpans[size_t(index)] : ui::ropBackwardSpans[size_t(index)];
    for (int32_t k = 0; k < r.height; ++k) span(ui::rowAt(dst, stride, rowOf(k)), ui::rowAt(src, stride, rowOf(k)), r.width);
}

}  // namespace

void ui::dstBlt(UiSurface *surface, const UiDstBltOrder *order, const UiClipRect *clip) {
    UiRect r{order->left, order->top, order->width, order->height};
    translate(*surface, r.left, r.top);
    if (!clipToRect(r, *clip)) return;
    const uint32_t white = kWhite;
    if (!fillRop(surface->image, r, &white, order->rop & 15)) return;
    markDrawn(surface->dirty, r);
}

void ui::scrBlt(UiSurface *surface, const UiScrBltOrder *order, const UiClipRect *clip) {
    UiRect r{order->left, order->top, order->width, order->height};
    int32_t srcLeft = order->srcLeft, srcTop = order->srcTop;
    translate(*surface, r.left, r.top);
    translate(*surface, srcLeft, srcTop);
    if (!clipToRect(r, *clip, srcLeft, srcTop)) return;

    const imgbuf &image = surface->image;
    const uint32_t *src = image.readPtr(srcLeft, srcTop, r.width, r.height);
    if (src == nullptr) return reportInternal("ui", kScrBltSourceSite);
    uint32_t *dst = image.writePtr(r.left, r.top, r.width, r.height);
    if (dst == nullptr) return reportInternal("ui", kScrBltDestSite);

    moveBlock(image, dst, src, r, srcLeft, srcTop, order->rop & 15);
    markDrawn(surface->dirty, r);
}

// The source rectangle must lie inside the bitmap; compared in 64 bits so that
// a hostile source point plus width cannot wrap into range.
static bool insideBitmap(const UiMemBltOrder &o, int32_t srcLeft, int32_t srcTop, const UiRect &r) {
    return o.bitmapPixels != nullptr && srcLeft >= 0 && srcTop >= 0 &&
           int64_t(srcLeft) + r.width <= o.bitmapWidth && int64_t(srcTop) + r.height <= o.bitmapHeight;
}

void ui::memBlt(UiSurface *surface, const UiMemBltOrder *order, const UiClipRect *clip) {
    UiRect r{order->left, order->top, order->width, order->height};
    int32_t srcLeft = order->srcLeft, srcTop = order->srcTop;
    translate(*surface, r.left, r.top);
    if (!clipToRect(r, *clip, srcLeft, srcTop)) return;
    if (!insideBitmap(*order, srcLeft, srcTop, r)) return;

    const imgbuf &image = surface->image;
    uint32_t *dst = image.writePtr(r.left, r.top, r.width, r.height);
    if (dst == nullptr) return reportInternal("ui", kMemBltDestSite);

    // Bitmap rows are stored bottom-up: picture row srcTop is stored row
    // (height - 1 - srcTop), and each following picture row lies one bitmap
    // row earlier in memory.
    const size_t bitmapWidth = size_t(order->bitmapWidth);
    const uint32_t *firstRow = order->bitmapPixels + size_t(srcLeft);
    const int32_t topStoredRow = order->bitmapHeight - 1 - srcTop;
    const int32_t index = order->rop & 15;
    const RopSpan span = ropForwardSpans[size_t(index)];
    for (int32_t y = 0; y < r.height; ++y) {
        uint32_t *row = rowAt(dst, image.stride, y);
        const uint32_t *src = firstRow + size_t(topStoredRow - y) * bitmapWidth;
        if (index == kRopCopy)
            std::memcpy(row, src, 4 * size_t(r.width));
        else
            span(row, src, r.width);
    }
    markDrawn(surface->dirty, r);
}
