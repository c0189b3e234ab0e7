// The single glyph order, FastGlyph (slot 7).
#include "entry.h"
#include "glyph.h"
#include "rdpclient-caches.h"
#include "textRects.h"
#include "ui.h"

namespace {

constexpr int kFlagsTopSite = 2863;
constexpr int kFlagsBottomSite = 2869;
constexpr int kGlyphSite = 2928;

ui::Edges backgroundOf(const UiFastGlyphOrder &o) { return {o.bkLeft, o.bkTop, o.bkRight, o.bkBottom}; }
ui::Edges opaqueOf(const UiFastGlyphOrder &o) { return {o.opLeft, o.opTop, o.opRight, o.opBottom}; }

}  // namespace

void ui::fastGlyph(UiSurface *surface, const UiFastGlyphOrder *order, const UiClipRect *clip) {
    const UiFastGlyphOrder &o = *order;
    TextArea area;
    area.hasBackground = clipEdges(*surface, backgroundOf(o), *clip, area.background);

    Edges opaque;
    if (!fastIndexOpaque(backgroundOf(o), opaqueOf(o), kFlagsTopSite, kFlagsBottomSite, opaque)) return;
    area.hasOpaque = clipEdges(*surface, opaque, *clip, area.opaque);
    if (area.hasOpaque && !fillText(surface->image, area.opaque, o.opaqueColor)) return;

    if (area.hasBackground) {
        GlyphView glyph;
        switch (findGlyph(o.glyphCache, o.rgbData[0], glyph)) {
            case GlyphLookup::found: break;
            case GlyphLookup::nullEntry:
            case GlyphLookup::refused: return reportInternal("ui", kGlyphSite);
        }
        int32_t x = o.x, y = o.y;
        glyphOrigin(*surface, backgroundOf(o), x, y);
        const uint32_t colour = colourOf(o.textColor[0], o.textColor[1], o.textColor[2]);
        drawGlyph(surface->image, x, y, glyph, area.background, colour);
    }
    markTextArea(*surface, area);
}
