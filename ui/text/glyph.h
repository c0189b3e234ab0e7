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

// One visible glyph row of `width` pixels from bit `firstBit` (from bit 7) of
// s[0]: colour into d[k] for each set bit, a leading partial byte, whole
// bytes, a trailing partial byte.  (The NEON twin: ui/neon/glyphRow.h.)
inline void glyphRow(uint32_t *d, const uint8_t *s, int32_t firstBit, int32_t width, uint32_t colour) {
    const auto plot = [&](uint32_t byte, int32_t n) {  // the top n bits of byte
        for (int32_t k = 0; k < n; ++k)
            if (byte & (0x80u >> k)) d[k] = colour;
    };
    if (firstBit != 0) {
        const int32_t n = 8 - firstBit < width ? 8 - firstBit : width;
        plot(uint32_t(*s++) << firstBit, n);
        d += n;
        width -= n;
    }
    for (; width >= 8; width -= 8, d += 8) {
        const uint32_t byte = *s++;  // read once: the stores below may alias it
        if (byte == 0xff)
            for (int32_t k = 0; k < 8; ++k) d[k] = colour;
        else if (byte != 0)
            plot(byte, 8);
    }
    if (width > 0) plot(*s, width);
}

// Draws the glyph with its top-left pixel at (px + x, py + y), clipped to
// `clip` (right and bottom exclusive): 1 bits take the colour, 0 bits leave
// the pixel.  A visible part outside the image: "imgbuf" 99, "ui" 2451,
// nothing drawn.  The caller translated (px, py) and marks the tiles.
void drawGlyph(const imgbuf &image, int32_t px, int32_t py, const GlyphView &glyph, const UiRect &clip,
               uint32_t colour);

}  // namespace ui
