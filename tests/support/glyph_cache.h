// Glyph cache entries for tests, drawn as text ('#' = foreground bit), laid
// out as the client lays them and placed at the end of a readable page so
// that reading past the last entry faults.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "guarded_input.h"
#include "imgbuf.h"  // ui32.h with the library's accessors

namespace ui32test {

struct TestGlyph {
    int16_t x = 0, y = 0;
    std::vector<std::string> rows;  // all rows as wide as the first
};

// Header (cx and cy from the rows) and bitmap of one glyph record.
std::vector<uint8_t> glyphRecord(const TestGlyph &glyph);

// A record with any header and any bitmap bytes (pad bits, short bitmaps).
std::vector<uint8_t> rawGlyphRecord(int16_t x, int16_t y, uint16_t cx, uint16_t cy, const std::vector<uint8_t> &bitmap);

// The pixels that glyph drawn at (px, py) sets, clipped to clip and to a
// width x height image: a plain per-pixel model of glyph drawing.
std::vector<std::pair<int32_t, int32_t>> glyphPixels(const TestGlyph &glyph, int32_t px, int32_t py,
                                                     const UiRect &clip, int32_t width, int32_t height);

class GlyphCache {
public:
    // count entries of entryDataSize bitmap bytes, all zero (0 x 0 glyphs).
    GlyphCache(int32_t entryDataSize, int32_t count);
    void set(int32_t index, const TestGlyph &glyph);
    // A raw record (header and any bytes), cut to the entry's size.
    void setRaw(int32_t index, const std::vector<uint8_t> &record);
    // The descriptor; entries live in page-guarded memory from the first call on.
    UiGlyphCache *cache();

private:
    int32_t entryDataSize_, count_;
    std::vector<uint8_t> bytes_;
    std::unique_ptr<GuardedInput> guarded_;
    UiGlyphCache cache_{};
};

}  // namespace ui32test
