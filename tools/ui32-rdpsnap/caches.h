// The caches the server fills with secondary orders and the orders read
// from: decoded bitmaps (for MemBlt), glyphs in the UiGlyphCache layout (for
// GlyphIndex, FastIndex and FastGlyph) and 8x8 brushes (for PatBlt).  Every
// store checks its indices and sizes; a false result means the server broke
// the limits this client announced.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "ui32.h"

namespace rdpsnap {

struct CachedBitmap {
    int32_t width = 0, height = 0;
    std::vector<uint32_t> pixels;  // bottom-up rows, as decodeBitmap writes them
};

struct CachedBrush {
    bool colour = false;
    uint8_t mono[8] = {};           // rows top to bottom, MSB leftmost
    uint32_t pixels[64] = {};       // rows top to bottom, frame-buffer colours
};

class Caches {
public:
    static constexpr int kBitmapCaches = 3;
    static constexpr int kBitmapEntries[kBitmapCaches] = {600, 600, 2048};
    static constexpr int kMaxBitmapPixels = 64 * 64 * 4;
    static constexpr int kGlyphCaches = 10;
    static constexpr int kBrushEntries = 64;

    // Sizes the glyph caches as announced: entries and cell bytes per cache.
    void setGlyphCaches(const std::array<std::pair<int, int>, kGlyphCaches> &definitions);

    CachedBitmap *bitmapSlot(uint32_t cacheId, uint32_t index, std::string &error);
    const CachedBitmap *bitmap(uint32_t cacheId, uint32_t index, std::string &error) const;

    // Stores one glyph; `bits` holds `length` bytes of rows of (cx + 7) / 8 bytes.
    bool storeGlyph(uint32_t cacheId, uint32_t index, int32_t x, int32_t y, uint32_t cx, uint32_t cy,
                    const uint8_t *bits, uint32_t length, std::string &error);
    const UiGlyphCache *glyphCache(uint32_t cacheId, std::string &error) const;

    CachedBrush *brushSlot(uint32_t index, std::string &error);
    const CachedBrush *brush(uint32_t index, std::string &error) const;

private:
    struct GlyphCache {
        UiGlyphCache record{};
        std::vector<uint8_t> entries;
    };
    std::vector<CachedBitmap> bitmaps_[kBitmapCaches];
    std::array<GlyphCache, kGlyphCaches> glyphs_;
    std::vector<CachedBrush> brushes_ = std::vector<CachedBrush>(kBrushEntries);
    std::vector<bool> brushSet_ = std::vector<bool>(kBrushEntries);
};

}  // namespace rdpsnap
