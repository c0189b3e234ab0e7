// The background and opaque rectangles shared by the text orders (glyph
// string and single glyph): how they are resolved, clipped, filled and marked.
#pragma once

#include "imgbuf.h"

namespace ui {

// A rectangle by its edges as the text orders carry them: right and bottom
// exclusive, in order coordinates.
struct Edges {
    int32_t left, top, right, bottom;
};

// The clipped rectangles of one text order.
struct TextArea {
    UiRect background{};  // also the clip of every glyph
    bool hasBackground = false;
    UiRect opaque{};
    bool hasOpaque = false;
};

// Translates `edges` by the surface origin when originEnabled and clips the
// rectangle against `clip`.  False when it is empty before or after clipping.
bool clipEdges(const UiSurface &surface, const Edges &edges, const UiClipRect &clip, UiRect &out);

// Resolves the FastIndex coding of the opaque rectangle against the
// background.  With bottom -32768, top holds flags; without bit 0x01 or 0x04
// the internal-error message is reported (module "ui", missingTopSite or
// missingBottomSite) and false returned.
bool fastIndexOpaque(const Edges &background, const Edges &opaque, int missingTopSite, int missingBottomSite,
                     Edges &out);

// fillSolid of rect with the colour triple; false after its reports.
bool fillText(const imgbuf &image, const UiRect &rect, const int32_t colour[3]);

// Marks the clipped opaque rectangle's tiles, or else the clipped
// background's, or nothing when both are empty.
void markTextArea(UiSurface &surface, const TextArea &area);

// The glyph drawing point: -32768 stands for the background's left / top;
// the origin is subtracted whatever originEnabled says.
void glyphOrigin(const UiSurface &surface, const Edges &background, int32_t &x, int32_t &y);

}  // namespace ui
