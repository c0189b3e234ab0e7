#include "text.h"

#include <algorithm>
#include <cstring>

namespace demo {

void GlyphString::delta(int d) {
    if (d >= 0 && d < 0x80) bytes_.push_back(uint8_t(d));
    else bytes_.insert(bytes_.end(), {0x80, uint8_t(d & 0xFF), uint8_t((d >> 8) & 0xFF)});
}

GlyphString &GlyphString::text(std::string_view s) {
    for (char c : s) {
        const size_t at = bytes_.size();
        bytes_.push_back(uint8_t(c));
        delta(pending_);
        pen_ += pending_;
        pending_ = font_.advance[uint8_t(c) & 127];
        glyphs_.push_back({at, pen_, pending_});
    }
    return *this;
}

GlyphString &GlyphString::gap(int pixels) {
    pending_ += pixels;
    return *this;
}

GlyphString &GlyphString::store(int slot) {
    const size_t length = bytes_.size() - mark_;
    if (mark_ < replayedUpTo_ || length > 255) return *this;
    FragmentBook::Entry &entry = book_.slots[size_t(slot)];
    const auto first = std::find_if(glyphs_.begin(), glyphs_.end(), [&](const Glyph &g) { return g.at >= mark_; });
    if (first == glyphs_.end()) return *this;
    const size_t d = first->at + 1;
    entry.firstDelta = bytes_[d] < 0x80 ? bytes_[d] : int16_t(bytes_[d + 1] | bytes_[d + 2] << 8);
    entry.span = glyphs_.back().pen - first->pen;
    entry.lastAdvance = glyphs_.back().advance;
    entry.used = true;
    bytes_.insert(bytes_.end(), {0xFF, uint8_t(slot), uint8_t(length)});
    return *this;
}

GlyphString &GlyphString::replay(int slot) {
    const FragmentBook::Entry &entry = book_.slots[size_t(slot)];
    bytes_.insert(bytes_.end(), {0xFE, uint8_t(slot)});
    delta(pending_);
    replayedUpTo_ = bytes_.size();
    if (!entry.used) return *this;
    // The order's delta moves the first glyph only when the fragment stored
    // none of its own; the rest keep their stored deltas.
    pen_ += (entry.firstDelta != 0 ? entry.firstDelta : pending_) + entry.span;
    pending_ = entry.lastAdvance;
    return *this;
}

std::array<int32_t, 3> components(uint32_t colour) {
    return {int32_t((colour >> 16) & 0xFF), int32_t((colour >> 8) & 0xFF), int32_t(colour & 0xFF)};
}

void setColour(int32_t (&out)[3], uint32_t colour) {
    const auto c = components(colour);
    std::copy(c.begin(), c.end(), out);
}

UiGlyphIndexOrder textOrder(const Font &font, const std::vector<uint8_t> &data, int x, int baseline, int width,
                            uint32_t colour) {
    UiGlyphIndexOrder order{};
    setColour(order.textColor, colour);
    order.bkLeft = x, order.bkTop = baseline - font.ascent;
    order.bkRight = x + width, order.bkBottom = baseline + font.descent;
    order.x = x, order.y = baseline;
    order.cbData = int32_t(std::min<size_t>(data.size(), 255));
    std::memcpy(order.rgbData, data.data(), size_t(order.cbData));
    order.glyphCache = font.cache.descriptor();
    order.opRectExplicit = 1;
    return order;
}

UiFastGlyphOrder glyphOrder(const GlyphCache &cache, int index, int x, int y, uint32_t colour) {
    UiFastGlyphOrder order{};
    const UiGlyph &g = cache.glyph(index);
    setColour(order.textColor, colour);
    order.bkLeft = x + g.x, order.bkTop = y + g.y;
    order.bkRight = order.bkLeft + g.cx, order.bkBottom = order.bkTop + g.cy;
    order.x = x, order.y = y;
    order.cbData = 1;
    order.rgbData[0] = uint8_t(index);
    order.glyphCache = cache.descriptor();
    return order;
}

}  // namespace demo
