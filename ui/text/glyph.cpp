// The glyph cache lookup and the one glyph blitter.
#include "glyph.h"

#include <algorithm>
#include <cstring>

#include "../core/rows.h"
#include "../core/settings.h"
#include "../core/surface.h"
#if defined(__ARM_NEON)
#include "../neon/glyphRow.h"
#endif

namespace {

// The visible part of one axis: the first visible column (row), how many are
// visible and how many glyph columns (rows) lie before it.  64-bit: the edge
// is a 32-bit point plus a 16-bit offset, the clip end a sum of two words.
struct Span {
    int64_t first, size, skip;
};

Span visible(int64_t start, int32_t extent, int32_t clipStart, int32_t clipExtent) {
    int64_t first = start, size = extent;
    if (start < clipStart) {
        first = clipStart;
        size = start + extent - clipStart;
    }
    size = std::min(size, int64_t(clipStart) + clipExtent - first);
    return Span{first, size, first - start};
}

// A visible edge beyond 32 bits lies outside every image; saturated, the
// image check refuses it.
int32_t saturate(int64_t v) { return int32_t(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX)); }

}  // namespace

ui::GlyphLookup ui::findGlyph(const UiGlyphCache *cache, uint32_t index, GlyphView &glyph) {
    const auto refuse = [] { return report(Site::glyphEntry), GlyphLookup::refused; };
    if (cache == nullptr || cache->entryDataSize < 0 || int64_t(index) >= int64_t(cache->entryCount)) return refuse();
    if (cache->entries == nullptr) return GlyphLookup::nullEntry;
    // index < 2^31 and stride < 2^31 + 8: the product cannot wrap 64 bits.
    const uint64_t stride = uint64_t(cache->entryDataSize) + sizeof(UiGlyph);
    if ((uint64_t(index) + 1) * stride > uint64_t(UINTPTR_MAX - reinterpret_cast<uintptr_t>(cache->entries)))
        return refuse();
    const uint8_t *entry = cache->entries + size_t(uint64_t(index) * stride);
    std::memcpy(&glyph.header, entry, sizeof glyph.header);
    glyph.bits = entry + sizeof glyph.header;
    if (size_t(glyph.header.cy) * ((size_t(glyph.header.cx) + 7) / 8) > size_t(cache->entryDataSize)) return refuse();
    return GlyphLookup::found;
}

void ui::drawGlyph(const imgbuf &image, int32_t px, int32_t py, const GlyphView &glyph, const UiRect &clip,
                   uint32_t colour) {
    const UiGlyph &g = glyph.header;
    const Span h = visible(int64_t(px) + g.x, g.cx, clip.left, clip.width);
    const Span v = visible(int64_t(py) + g.y, g.cy, clip.top, clip.height);
    if (h.size < 1 || v.size < 1) return;
    // Both sizes are at most 65,535 here and both skips lie inside the glyph.
    uint32_t *dst = writePtr(image, saturate(h.first), saturate(v.first), int32_t(h.size), int32_t(v.size));
    if (dst == nullptr) return report(Site::glyphImage);
    const size_t rowBytes = (size_t(g.cx) + 7) / 8;
    const uint8_t *src = glyph.bits + size_t(v.skip) * rowBytes + size_t(h.skip) / 8;
    for (int32_t row = 0;; src += rowBytes) {
        rows::glyphRow(dst, src, int32_t(h.skip & 7), int32_t(h.size), colour);
        if (++row == v.size) break;
        dst = rowAt(dst, image.stride, 1);
    }
}
