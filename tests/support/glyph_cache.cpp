#include "glyph_cache.h"

#include <algorithm>
#include <cstring>

namespace ui32test {

std::vector<uint8_t> glyphRecord(const TestGlyph &glyph) {
    const uint16_t cy = uint16_t(glyph.rows.size());
    const uint16_t cx = cy != 0 ? uint16_t(glyph.rows[0].size()) : 0;
    const size_t rowBytes = (size_t(cx) + 7) / 8;
    std::vector<uint8_t> out(8 + rowBytes * cy, 0);
    const UiGlyph header{glyph.x, glyph.y, cx, cy};
    std::memcpy(out.data(), &header, 8);
    for (size_t r = 0; r < cy; ++r)
        for (size_t c = 0; c < cx; ++c)
            if (glyph.rows[r][c] == '#') out[8 + r * rowBytes + c / 8] |= uint8_t(0x80 >> (c % 8));
    return out;
}

std::vector<uint8_t> rawGlyphRecord(int16_t x, int16_t y, uint16_t cx, uint16_t cy,
                                    const std::vector<uint8_t> &bitmap) {
    std::vector<uint8_t> out(8 + bitmap.size(), 0);
    const UiGlyph header{x, y, cx, cy};
    std::memcpy(out.data(), &header, 8);
    std::copy(bitmap.begin(), bitmap.end(), out.begin() + 8);
    return out;
}

std::vector<std::pair<int32_t, int32_t>> glyphPixels(const TestGlyph &glyph, int32_t px, int32_t py,
                                                     const UiRect &clip, int32_t width, int32_t height) {
    std::vector<std::pair<int32_t, int32_t>> out;
    for (size_t r = 0; r < glyph.rows.size(); ++r) {
        for (size_t c = 0; c < glyph.rows[r].size(); ++c) {
            const int64_t x = int64_t(px) + glyph.x + int64_t(c), y = int64_t(py) + glyph.y + int64_t(r);
            const bool inClip = x >= clip.left && x < int64_t(clip.left) + clip.width && y >= clip.top &&
                                y < int64_t(clip.top) + clip.height;
            if (glyph.rows[r][c] == '#' && inClip && x >= 0 && x < width && y >= 0 && y < height)
                out.emplace_back(int32_t(x), int32_t(y));
        }
    }
    return out;
}

GlyphCache::GlyphCache(int32_t entryDataSize, int32_t count)
    : entryDataSize_(entryDataSize), count_(count), bytes_(size_t(entryDataSize + 8) * size_t(count), 0) {}

void GlyphCache::set(int32_t index, const TestGlyph &glyph) { setRaw(index, glyphRecord(glyph)); }

void GlyphCache::setRaw(int32_t index, const std::vector<uint8_t> &record) {
    const size_t stride = size_t(entryDataSize_) + 8;
    std::copy_n(record.begin(), std::min(record.size(), stride), bytes_.begin() + ptrdiff_t(stride * size_t(index)));
}

UiGlyphCache *GlyphCache::cache() {
    if (!guarded_) guarded_ = std::make_unique<GuardedInput>(bytes_);
    cache_ = UiGlyphCache{entryDataSize_, count_, guarded_->data()};
    return &cache_;
}

}  // namespace ui32test
