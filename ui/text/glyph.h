// Monochrome glyphs: finding one in the client's glyph cache and drawing it.
#pragma once

#include <cstdint>

#include "ui32.h"

namespace ui {

// A glyph record read in place: its 8-byte header copied out (an entry need
// not be 2-byte aligned) and the bitmap that follows it directly, cy rows of
// (cx + 7) / 8 bytes.
struct GlyphView {
    UiGlyph header;
    const uint8_t *bits;
};

enum class GlyphLookup { found, nullEntry, refused };

// Entry `index` of the cache.  Refused after the "rdpclient-caches" 64 report
// when there is no cache, the index is not below the count, the entry size is
// negative, the entry would end beyond the address space, or the glyph's
// bitmap is larger than the entry's data size: nothing outside the entry is
// read.  A null entries pointer makes every entry null (not reported).
GlyphLookup findGlyph(const UiGlyphCache *cache, uint32_t index, GlyphView &glyph);

// Draws the glyph with its top-left pixel at (px + x, py + y), clipped to
// `clip` (right and bottom exclusive): 1 bits take the colour, 0 bits leave
// the pixel.  A visible part outside the image: "imgbuf" 99, "ui" 2451,
// nothing drawn.  The caller translated (px, py) and marks the tiles.
void drawGlyph(const imgbuf &image, int32_t px, int32_t py, const GlyphView &glyph, const UiRect &clip,
               uint32_t colour);

}  // namespace ui
