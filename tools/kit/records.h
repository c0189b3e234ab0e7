// Builders for the records the text orders take: a glyph cache holding
// glyphs drawn as rows of '#' and '.', and GlyphIndex / FastGlyph orders.
#pragma once

#include <initializer_list>
#include <vector>

#include "ui32.h"

namespace kit {

class GlyphCache {
public:
    explicit GlyphCache(int32_t entryDataSize = 64) : size_(entryDataSize) {}
    // A glyph of the given rows ('#' = foreground), offset (x, y) from the
    // drawing point; returns its index.
    int add(int16_t x, int16_t y, std::initializer_list<const char *> rows);
    // A glyph from its header and bitmap bytes as they stand.
    int add(const UiGlyph &header, const std::vector<uint8_t> &bits);
    const UiGlyphCache *cache();  // valid until the next add

private:
    int32_t size_;
    std::vector<uint8_t> entries_;
    UiGlyphCache record_{};
};

// A GlyphIndex order (opaque rectangle empty, GlyphIndex form) over the
// background rectangle (left, top, right, bottom; right and bottom
// exclusive), glyphs from (x, y), text colour 0x112233.
UiGlyphIndexOrder glyphIndexOrder(const UiGlyphCache *cache, UiClipRect background, int32_t x, int32_t y,
                                  const std::vector<uint8_t> &data, int32_t charInc = 0, int32_t flAccel = 0x20);
// A FastGlyph order drawing glyph `index`, opaque rectangle empty.
UiFastGlyphOrder fastGlyphOrder(const UiGlyphCache *cache, UiClipRect background, int32_t x, int32_t y, uint8_t index);

}  // namespace kit
