// The text orders: GlyphIndex / FastIndex (slot 6) and FastGlyph (slot 7).
// Each fills an optional opaque rectangle, draws its glyphs clipped to the
// background rectangle, and marks the opaque rectangle's tiles, or else the
// background's.
#include "../core/entry.h"
#include "../core/fills.h"
#include "../core/settings.h"
#include "../core/surface.h"
#include "glyph.h"
#include "glyphString.h"

namespace {

using ui::Site;

constexpr int32_t kUnset = -32768;  // "the background's edge"

// A rectangle by its edges as the text orders carry them (right and bottom
// exclusive, order coordinates).
struct Edges {
    int32_t left, top, right, bottom;
};

// The clipped rectangles of one order.
struct TextArea {
    UiRect background{};  // also every glyph's clip
    bool hasBackground = false;
    UiRect opaque{};
    bool hasOpaque = false;
};

// Translates the edges when originEnabled and clips them; false when empty.
// Width and height are the 32-bit wrapped differences of the words.
bool clipEdges(const UiSurface &s, const Edges &e, const UiClipRect &clip, UiRect &out) {
    out = UiRect{e.left, e.top, ui::wrapSub(e.right, e.left), ui::wrapSub(e.bottom, e.top)};
    ui::translate(s, out.left, out.top);
    return ui::clipToRect(out, clip);
}

// The FastIndex coding of the opaque rectangle: 0 edges stand for the
// background's; a bottom of -32768 makes top a set of flags, of which 0x01
// and 0x04 must be set.
bool fastIndexOpaque(const Edges &bk, const Edges &op, Site noTop, Site noBottom, Edges &out) {
    if (op.bottom != kUnset) {
        out = Edges{op.left != 0 ? op.left : bk.left, op.top, op.right != 0 ? op.right : bk.right, op.bottom};
        return true;
    }
    const int32_t flags = op.top;
    if ((flags & 0x01) == 0) return ui::fail(noTop);
    if ((flags & 0x04) == 0) return ui::fail(noBottom);
    out = Edges{(flags & 0x08) ? bk.left : op.left, bk.top, (flags & 0x02) ? bk.right : op.right, bk.bottom};
    return true;
}

void markArea(UiSurface &s, const TextArea &a) {
    if (a.hasOpaque || a.hasBackground) ui::markDrawn(&s.dirty, a.hasOpaque ? a.opaque : a.background);
}

// The glyph drawing point: -32768 stands for the background's left / top;
// the origin is subtracted whatever originEnabled says.
void glyphOrigin(const UiSurface &s, const Edges &bk, int32_t &x, int32_t &y) {
    if (x == kUnset) x = bk.left;
    if (y == kUnset) y = bk.top;
    ui::translate(s, x, y, true);
}

template <typename Order>
Edges background(const Order &o) { return {o.bkLeft, o.bkTop, o.bkRight, o.bkBottom}; }
template <typename Order>
Edges opaque(const Order &o) { return {o.opLeft, o.opTop, o.opRight, o.opBottom}; }

// Resolves, clips and fills the opaque rectangle; false when the order ends
// (a FastIndex flag error or a failed fill).  In GlyphIndex form an empty
// opaque rectangle flagged redundant stands for the background.
bool drawOpaque(UiSurface &s, const UiGlyphIndexOrder &o, const UiClipRect &clip, TextArea &a) {
    const uint32_t colour = ui::colourOf(o.opaqueColor);
    if (o.opRectExplicit != 0) {
        a.hasOpaque = clipEdges(s, opaque(o), clip, a.opaque);
        if (a.hasOpaque) return ui::fillSolid(s.image, a.opaque, colour);
        return o.fOpRedundant == 0 || !a.hasBackground || ui::fillSolid(s.image, a.background, colour);
    }
    Edges edges;
    if (!fastIndexOpaque(background(o), opaque(o), Site::indexFlagsTop, Site::indexFlagsBottom, edges)) return false;
    a.hasOpaque = clipEdges(s, edges, clip, a.opaque);
    return !a.hasOpaque || ui::fillSolid(s.image, a.opaque, colour);
}

// Draws the parsed glyphs from (x, y).  In delta mode each glyph first moves
// by its delta; otherwise the point advances after each drawn glyph by
// ulCharInc, or by the glyph's width.
void drawGlyphs(const imgbuf &image, const UiGlyphIndexOrder &o, const ui::GlyphList &list, bool deltaMode, int32_t x,
                int32_t y, const UiRect &clip) {
    int32_t &along = (o.flAccel & 0x04) != 0 ? y : x;
    const uint32_t colour = ui::colourOf(o.textColor);
    for (int32_t i = 0; i < list.count; ++i) {
        if (deltaMode) along = ui::wrapAdd(along, list.delta[i]);
        ui::GlyphView glyph;
        if (ui::findGlyph(o.glyphCache, list.index[i], glyph) != ui::GlyphLookup::found) continue;
        ui::drawGlyph(image, x, y, glyph, clip, colour);
        if (!deltaMode) along = ui::wrapAdd(along, o.ulCharInc != 0 ? int64_t(o.ulCharInc) : glyph.header.cx);
    }
}

}  // namespace

void ui::glyphIndex(UiSurface *surface, const UiGlyphIndexOrder *order, const UiClipRect *clip) {
    const UiGlyphIndexOrder &o = *order;
    // The store is missing only when its reservation failed, reported there.
    if (settings.scratchBuffer == nullptr) return report(Site::noFragmentStore);
    TextArea area;
    area.hasBackground = clipEdges(*surface, background(o), *clip, area.background);
    if (!drawOpaque(*surface, o, *clip, area)) return;

    const bool deltaMode = o.ulCharInc == 0 && (o.flAccel & 0x20) == 0;
    const int32_t length = o.cbData < 0 ? 0 : o.cbData > 256 ? 256 : o.cbData;
    GlyphList list;
    if (!parseGlyphString(o.rgbData, length, deltaMode, settings.scratchBuffer, list)) return;
    if (area.hasBackground) {
        int32_t x = o.x, y = o.y;
        glyphOrigin(*surface, background(o), x, y);
        drawGlyphs(surface->image, o, list, deltaMode, x, y, area.background);
    }
    markArea(*surface, area);
}

void ui::fastGlyph(UiSurface *surface, const UiFastGlyphOrder *order, const UiClipRect *clip) {
    const UiFastGlyphOrder &o = *order;
    TextArea area;
    area.hasBackground = clipEdges(*surface, background(o), *clip, area.background);
    Edges edges;
    if (!fastIndexOpaque(background(o), opaque(o), Site::fastFlagsTop, Site::fastFlagsBottom, edges)) return;
    area.hasOpaque = clipEdges(*surface, edges, *clip, area.opaque);
    if (area.hasOpaque && !fillSolid(surface->image, area.opaque, colourOf(o.opaqueColor))) return;
    if (area.hasBackground) {
        GlyphView glyph;
        if (findGlyph(o.glyphCache, o.rgbData[0], glyph) != GlyphLookup::found) return report(Site::fastGlyph);
        int32_t x = o.x, y = o.y;
        glyphOrigin(*surface, background(o), x, y);
        drawGlyph(surface->image, x, y, glyph, area.background, colourOf(o.textColor));
    }
    markArea(*surface, area);
}
