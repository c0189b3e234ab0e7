// drawGlyph: the one glyph blitter, used by the glyph string and single glyph
// orders.
#include "glyph.h"

#include <algorithm>
#include <limits>

#include "ui.h"

namespace {

constexpr int kGlyphSite = 2451;

// The visible part of one axis of the glyph: `first` is the first visible
// column (row), `size` how many are visible and `skip` how many glyph columns
// (rows) lie before it.  Worked in 64 bits: the glyph edge is a 32-bit point
// plus a 16-bit offset and the clip end a 32-bit start plus a 32-bit extent.
struct Span {
    int64_t first, size, skip;
};

Span visibleSpan(int64_t start, int32_t extent, int32_t clipStart, int32_t clipExtent) {
    int64_t first = start, size = extent;
    if (start < clipStart) {
        first = clipStart;
        size = start + extent - clipStart;
    }
    const int64_t clipEnd = int64_t(clipStart) + clipExtent;
    if (first + size > clipEnd) size = clipEnd - first;
    return Span{first, size, first - start};
}

// A visible edge beyond the 32-bit range lies outside every image; saturating
// keeps it there so that imgbuf::writePtr refuses it.
int32_t saturate(int64_t v) {
    return int32_t(std::clamp<int64_t>(v, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

// Stores colour into d[k] for every set bit among the top n bits of byte
// (bit 7 is k = 0).
inline void plotBits(uint32_t *d, uint32_t byte, int32_t n, uint32_t colour) {
    for (int32_t k = 0; k < n; ++k)
        if (byte & (0x80u >> k)) d[k] = colour;
}

// One visible row: `width` pixels from bit `firstBit` (counted from bit 7) of
// s[0] on, a source byte at a time.
void drawRow(uint32_t *d, const uint8_t *s, int32_t firstBit, int32_t width, uint32_t colour) {
    if (firstBit != 0) {  // leading partial byte
        const int32_t n = std::min(8 - firstBit, width);
        plotBits(d, uint32_t(*s++) << firstBit, n, colour);
        d += n;
        width -= n;
    }
    for (; width >= 8; width -= 8, d += 8) {  // whole bytes
        const uint32_t byte = *s++;
        if (byte == 0xff)
            std::fill_n(d, 8, colour);
        else if (byte != 0)
            plotBits(d, byte, 8, colour);
    }
    if (width > 0) plotBits(d, *s, width, colour);  // trailing partial byte
}

}  // namespace

void ui::drawGlyph(const imgbuf &image, int32_t px, int32_t py, const GlyphView &glyph, const UiRect &clip,
                   const uint32_t &colour) {
    const UiGlyph &g = glyph.header;
    const Span h = visibleSpan(int64_t(px) + g.x, g.cx, clip.left, clip.width);
    const Span v = visibleSpan(int64_t(py) + g.y, g.cy, clip.top, clip.height);
    if (h.size < 1 || v.size < 1) return;

    // Both sizes are at most 65,535 here and both skips lie inside the glyph.
    const int32_t width = int32_t(h.size), height = int32_t(v.size);
    uint32_t *dst = image.writePtr(saturate(h.first), saturate(v.first), width, height);
    if (dst == nullptr) return reportInternal("ui", kGlyphSite);

    const size_t rowBytes = glyphRowBytes(g);
    const uint8_t *src = glyph.bits + size_t(v.skip) * rowBytes + size_t(h.skip) / 8;
    const int32_t firstBit = int32_t(h.skip & 7);
    const uint32_t c = colour;
    for (int32_t row = 0;;) {
        drawRow(dst, src, firstBit, width, c);
        if (++row == height) break;
        dst = nextRow(dst, image.stride);
        src += rowBytes;
    }
}
