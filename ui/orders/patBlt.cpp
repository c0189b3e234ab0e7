// The brush order, PatBlt (slot 2): solid, hatched, 8x8 monochrome pattern,
// cached monochrome and cached colour brushes.

#include "../core/entry.h"
#include "../core/fills.h"
#include "../core/settings.h"
#include "../core/surface.h"

namespace {

using ui::Site;

// The pattern column / row on the clipped rectangle's left column / top row:
// the sum's remainder by 8 with the sum's sign, so a negative sum gives a
// negative phase, which fillPattern8x8 refuses.  64-bit, so nothing
// overflows; masks instead of a division, which 32-bit cores call out for.
int32_t phase(int32_t origin, int32_t edge) {
    const int64_t sum = int64_t(origin) + edge;
    return sum < 0 ? -int32_t(-sum & 7) : int32_t(sum & 7);
}

// Row r of the rectangle takes pattern row r mod 8 from its first column on:
// the brush origin and rop do not apply.
void colourPatternFill(const imgbuf &image, const UiRect &r, const uint8_t *pattern) {
    uint32_t *p = ui::writePtr(image, r);
    if (p == nullptr) return ui::report(Site::colourPattern);
    ui::fillPatternRows(p, image.stride, r.width, r.height, pattern);
}

// Fills the clipped rectangle with the order's brush.  False when nothing
// was attempted (a refused brush) or the solid fill failed: no tiles marked.
bool fillBrush(const imgbuf &image, const UiPatBltOrder &o, const UiRect &r) {
    const int32_t style = o.brushStyle;
    const int32_t x = phase(o.brushOrgX, r.left), y = phase(o.brushOrgY, r.top);
    if ((style & 0x80) != 0) {
        if (o.brushData == nullptr) return ui::fail(Site::noBrushData);
        switch (style & 15) {
            case 1: ui::fillPattern8x8(image, o, r, x, y, o.brushData); return true;
            case 5: colourPatternFill(image, r, o.brushData); return true;
            default: return ui::fail(Site::brushStyle, unsigned(style));
        }
    }
    switch (style) {
        case 0: return ui::fillRop(image, r, ui::colourOf(o.foreColor), o.rop & 15);
        case 2: {
            const uint8_t *hatches = ui::settings.hatchPatterns;  // none: no hatch can be drawn
            if (o.brushBytes[0] > 5 || hatches == nullptr) return ui::fail(Site::hatch);
            ui::fillPattern8x8(image, o, r, x, y, hatches + 8 * o.brushBytes[0]);
            return true;
        }
        case 3: ui::fillPattern8x8(image, o, r, x, y, o.brushBytes); return true;
        default: return ui::fail(Site::unsupportedBrush, style);
    }
}

}  // namespace

// Every attempted fill marks its tiles, even one that reported an error.
void ui::patBlt(UiSurface *surface, const UiPatBltOrder *order, const UiClipRect *clip) {
    UiRect r{order->left, order->top, order->width, order->height};
    translate(*surface, r.left, r.top);
    if (clipToRect(r, *clip) && fillBrush(surface->image, *order, r)) markDrawn(&surface->dirty, r);
}
