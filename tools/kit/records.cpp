#include "records.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace kit {

int GlyphCache::add(int16_t x, int16_t y, std::initializer_list<const char *> rows) {
    const uint16_t cx = rows.size() == 0 ? 0 : uint16_t(std::strlen(*rows.begin())), cy = uint16_t(rows.size());
    std::vector<uint8_t> bits;
    for (const char *row : rows)
        for (uint16_t c = 0; c < cx; c += 8) {
            uint8_t byte = 0;
            for (int k = 0; k < 8 && c + k < cx; ++k) byte |= row[c + k] == '#' ? 0x80 >> k : 0;
            bits.push_back(byte);
        }
    return add(UiGlyph{x, y, cx, cy}, bits);
}

int GlyphCache::add(const UiGlyph &header, const std::vector<uint8_t> &bits) {
    const int index = record_.entryCount++;
    entries_.resize(size_t(record_.entryCount) * (size_t(size_) + 8));
    uint8_t *entry = entries_.data() + size_t(index) * (size_t(size_) + 8);
    std::memcpy(entry, &header, 8);
    if (!bits.empty()) std::memcpy(entry + 8, bits.data(), std::min(bits.size(), size_t(size_)));
    return index;
}

const UiGlyphCache *GlyphCache::cache() {
    record_.entryDataSize = size_;
    record_.entries = entries_.data();
    return &record_;
}

UiGlyphIndexOrder glyphIndexOrder(const UiGlyphCache *cache, UiClipRect bk, int32_t x, int32_t y,
                                  const std::vector<uint8_t> &data, int32_t charInc, int32_t flAccel) {
    UiGlyphIndexOrder o{};
    o.flAccel = flAccel;
    o.ulCharInc = charInc;
    o.textColor[0] = 0x11, o.textColor[1] = 0x22, o.textColor[2] = 0x33;
    o.bkLeft = bk.left, o.bkTop = bk.top, o.bkRight = bk.right, o.bkBottom = bk.bottom;
    o.x = x, o.y = y;
    o.cbData = int32_t(data.size());
    if (!data.empty()) std::memcpy(o.rgbData, data.data(), std::min(data.size(), sizeof o.rgbData));
    o.glyphCache = cache;
    o.opRectExplicit = 1;
    return o;
}

UiFastGlyphOrder fastGlyphOrder(const UiGlyphCache *cache, UiClipRect bk, int32_t x, int32_t y, uint8_t index) {
    UiFastGlyphOrder o{};
    o.textColor[0] = 0x11, o.textColor[1] = 0x22, o.textColor[2] = 0x33;
    o.bkLeft = bk.left, o.bkTop = bk.top, o.bkRight = bk.right, o.bkBottom = bk.bottom;
    o.opLeft = 1, o.opRight = 1, o.opTop = 1, o.opBottom = 1;  // empty
    o.x = x, o.y = y;
    o.cbData = 1;
    o.rgbData[0] = index;
    o.glyphCache = cache;
    return o;
}

}  // namespace kit
