// The brush order, PatBlt (slot 2): solid, hatched, 8x8 monochrome pattern,
// cached monochrome and cached colour brushes.
#include <algorithm>
#include <cstring>

#include "dirtybuf.h"
#include "entry.h"
#include "fills.h"
#include "surface.h"
#include "ui.h"

namespace {

constexpr int kNoBrushDataSite = 1476;
constexpr int kCachedStyleSite = 1500;
constexpr int kHatchSite = 1522;
constexpr int kStyleSite = 1531;
constexpr int kColourPatternSite = 1387;

constexpr int32_t kSolid = 0;
constexpr int32_t kHatched = 2;
constexpr int32_t kPattern = 3;
constexpr int32_t kCached = 0x80;
constexpr int32_t kCachedMono = 1;    // low 4 bits of a cached style
constexpr int32_t kCachedColour = 5;
constexpr int32_t kHatchCount = 6;
constexpr int32_t kPatternSize = 8;

// The pattern column / row on the clipped rectangle's left column / top row:
// the remainder takes the dividend's sign, so a negative sum gives a negative
// phase, which fillPattern8x8 refuses.  Summed in 64 bits so that hostile
// values cannot overflow.
int32_t phase(int32_t brushOrigin, int32_t edge) { return int32_t((int64_t(brushOrigin) + edge) % kPatternSize); }

// Lays a cached 8x8 colour pattern over the rectangle, its row 0 column 0 on
// the top-left corner: each image row gets the first 8 pixels from pattern
// row r mod 8 and then doubles what it already holds, so a row costs a few
// block copies whatever its width.  The brush origin and rop are not used.
void copyColourPattern(uint32_t *dst, uint32_t stride, const UiRect &r, const uint8_t *pattern) {
    const size_t rowBytes = 4 * size_t(r.width);
    constexpr size_t kPatternRowBytes = 4 * kPatternSize;
    for (int32_t y = 0;;) {
        uint8_t *row = reinterpret_cast<uint8_t *>(dst);
        size_t done = std::min(rowBytes, kPatternRowBytes);
        std::memcpy(row, pattern + size_t(y % kPatternSize) * kPatternRowBytes, done);
        while (done < rowBytes) {
            const size_t n = std::min(done, rowBytes - done);
            std::memcpy(row + done, row, n);
            done += n;
        }
        if (++y == r.height) break;
        dst = ui::nextRow(dst, stride);
    }
}

void colourPatternFill(const imgbuf &image, const UiRect &r, const uint8_t *pattern) {
    uint32_t *dst = image.writePtr(r.left, r.top, r.width, r.height);
    if (dst == nullptr) return ui::reportInternal("ui", kColourPatternSite);
    copyColourPattern(dst, image.stride, r, pattern);
}

// Fills the clipped rectangle with the order's brush.  False when nothing was
// attempted (refused brush) or the solid fill failed: no tiles are marked.
bool fillBrush(const imgbuf &image, const UiPatBltOrder &o, const UiRect &r) {
    const int32_t style = o.brushStyle;
    const int32_t xPhase = phase(o.brushOrgX, r.left), yPhase = phase(o.brushOrgY, r.top);
    if ((style & kCached) != 0) {
        if (o.brushData == nullptr) {
            ui::reportInternal("ui", kNoBrushDataSite);
            return false;
        }
        switch (style & 15) {
            case kCachedMono: ui::fillPattern8x8(image, o, r, xPhase, yPhase, o.brushData); return true;
            case kCachedColour: colourPatternFill(image, r, o.brushData); return true;
            default: ui::report("ui", kCachedStyleSite, "Brush style 0x%04x.", unsigned(style)); return false;
        }
    }
    switch (style) {
        case kSolid: {
            const uint32_t colour = ui::colourOf(o.foreColor[0], o.foreColor[1], o.foreColor[2]);
            return ui::fillRop(image, r, &colour, o.rop & 15);
        }
        case kHatched: {
            // No hatch table from the client means no hatch can be drawn.
            const int32_t hatch = o.brushBytes[0];
            if (hatch >= kHatchCount || ui::settings.hatchPatterns == nullptr) {
                ui::reportInternal("ui", kHatchSite);
                return false;
            }
            ui::fillPattern8x8(image, o, r, xPhase, yPhase, ui::settings.hatchPatterns + kPatternSize * hatch);
            return true;
        }
        case kPattern: ui::fillPattern8x8(image, o, r, xPhase, yPhase, o.brushBytes); return true;
        default: ui::report("ui", kStyleSite, "Unsupported brush %d.", style); return false;
    }
}

}  // namespace

void ui::patBlt(UiSurface *surface, const UiPatBltOrder *order, const UiClipRect *clip) {
    UiRect r{order->left, order->top, order->width, order->height};
    translate(*surface, r.left, r.top);
    if (!clipToRect(r, *clip)) return;
    // Every attempted fill marks its tiles, even one that reported an error.
    if (!fillBrush(surface->image, *order, r)) return;
    markDrawn(surface->dirty, r);
}
