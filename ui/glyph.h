// drawGlyph: one monochrome glyph, clipped, transparent, in one colour.
#pragma once

#include <cstddef>
#include <cstring>

#include "imgbuf.h"

namespace ui {

// A glyph record read in place: the 8-byte header copied out (a cache entry
// need not be 2-byte aligned) and the bitmap that follows it directly.
struct GlyphView {
    UiGlyph header;
    const uint8_t *bits;  // header.cy rows of glyphRowBytes(header) bytes
};

inline GlyphView viewGlyph(const uint8_t *record) {
    GlyphView view;
    std::memcpy(&view.header, record, sizeof view.header);
    view.bits = record + sizeof view.header;
    return view;
}

// Bytes per bitmap row: rows are padded to a whole byte and nothing more.
inline size_t glyphRowBytes(const UiGlyph &g) { return (size_t(g.cx) + 7) / 8; }

// Bytes of the whole bitmap; at most 65,535 x 8,192, so it fits 32 bits.
inline size_t glyphBitmapSize(const UiGlyph &g) { return size_t(g.cy) * glyphRowBytes(g); }

// Draws `glyph` with its top-left pixel at (px + x, py + y), clipped to
// `clip` (right and bottom exclusive): 1 bits take `colour`, 0 bits leave the
// pixel alone.  The caller has translated (px, py) and marks the tiles; the
// glyph's whole bitmap must be readable.  A visible part outside the image is
// reported ("imgbuf" 99, then "ui" 2451) and nothing is drawn.
void drawGlyph(const imgbuf &image, int32_t px, int32_t py, const GlyphView &glyph, const UiRect &clip,
               const uint32_t &colour);

}  // namespace ui
