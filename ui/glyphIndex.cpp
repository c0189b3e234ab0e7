// The glyph string order, GlyphIndex and FastIndex (slot 6).
#include "entry.h"
#include "glyph.h"
#include "glyphString.h"
#include "rdpclient-caches.h"
#include "surface.h"
#include "textRects.h"
#include "ui.h"

namespace {

constexpr int kFlagsTopSite = 2586;
constexpr int kFlagsBottomSite = 2592;
// The fragment store is missing only when its reservation failed, which was
// reported at this site; an order that needs it repeats that report.
constexpr int kNoFragmentStoreSite = 3782;

constexpr int32_t kVertical = 0x04;
constexpr int32_t kAdvanceByWidth = 0x20;

ui::Edges backgroundOf(const UiGlyphIndexOrder &o) { return {o.bkLeft, o.bkTop, o.bkRight, o.bkBottom}; }
ui::Edges opaqueOf(const UiGlyphIndexOrder &o) { return {o.opLeft, o.opTop, o.opRight, o.opBottom}; }

// Step 2: resolves, clips and fills the opaque rectangle.  False when the
// order ends: a FastIndex flag error, or a fill that failed.
bool drawOpaque(UiSurface &surface, const UiGlyphIndexOrder &o, const UiClipRect &clip, ui::TextArea &area) {
    if (o.opRectExplicit != 0) {
        area.hasOpaque = ui::clipEdges(surface, opaqueOf(o), clip, area.opaque);
        if (area.hasOpaque) return ui::fillText(surface.image, area.opaque, o.opaqueColor);
        // An empty opaque rectangle flagged redundant stands for the background.
        if (o.fOpRedundant != 0 && area.hasBackground)
            return ui::fillText(surface.image, area.background, o.opaqueColor);
        return true;
    }
    ui::Edges edges;
    if (!ui::fastIndexOpaque(backgroundOf(o), opaqueOf(o), kFlagsTopSite, kFlagsBottomSite, edges)) return false;
    area.hasOpaque = ui::clipEdges(surface, edges, clip, area.opaque);
    return !area.hasOpaque || ui::fillText(surface.image, area.opaque, o.opaqueColor);
}

// Step 4: draws the parsed glyphs from (x, y), clipped to the background.
void drawGlyphs(const imgbuf &image, const UiGlyphIndexOrder &o, const ui::GlyphList &list, bool deltaMode, int32_t x,
                int32_t y, const UiRect &clip) {
    const bool vertical = (o.flAccel & kVertical) != 0;
    int32_t &along = vertical ? y : x;
    const uint32_t colour = ui::colourOf(o.textColor[0], o.textColor[1], o.textColor[2]);
    for (int32_t i = 0; i < list.count; ++i) {
        if (deltaMode) along = ui::wrapAdd(along, list.delta[i]);
        ui::GlyphView glyph;
        if (ui::findGlyph(o.glyphCache, list.index[i], glyph) != ui::GlyphLookup::found) continue;
        ui::drawGlyph(image, x, y, glyph, clip, colour);
        if (!deltaMode) along = ui::wrapAdd(along, o.ulCharInc != 0 ? int64_t(o.ulCharInc) : glyph.header.cx);
    }
}

// The bytes of rgbData that count: cbData, limited to the field.
int32_t stringLength(const UiGlyphIndexOrder &o) {
    const int32_t limit = int32_t(sizeof o.rgbData);
    return o.cbData < 0 ? 0 : o.cbData > limit ? limit : o.cbData;
}

}  // namespace

void ui::glyphIndex(UiSurface *surface, const UiGlyphIndexOrder *order, const UiClipRect *clip) {
    const UiGlyphIndexOrder &o = *order;
    if (settings.scratchBuffer == nullptr) return reportInternal("ui", kNoFragmentStoreSite);

    TextArea area;
    area.hasBackground = clipEdges(*surface, backgroundOf(o), *clip, area.background);
    if (!drawOpaque(*surface, o, *clip, area)) return;

    const bool deltaMode = o.ulCharInc == 0 && (o.flAccel & kAdvanceByWidth) == 0;
    GlyphList list;
    if (!parseGlyphString(o.rgbData, stringLength(o), deltaMode, settings.scratchBuffer, list)) return;

    if (area.hasBackground) {
        int32_t x = o.x, y = o.y;
        glyphOrigin(*surface, backgroundOf(o), x, y);
        drawGlyphs(surface->image, o, list, deltaMode, x, y, area.background);
    }
    markTextArea(*surface, area);
}
