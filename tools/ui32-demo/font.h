// The demo's own 1-bit typeface and the glyph caches built from it.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "ui32.h"

namespace demo {

// A monochrome picture, one byte per pixel (0 or 1), rows top to bottom.
struct Mask {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> bits;
    Mask() = default;
    Mask(int w, int h) : width(w), height(h), bits(size_t(w) * size_t(h), 0) {}
    bool at(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height && bits[size_t(y) * width + x]; }
    void set(int x, int y, bool on = true) {
        if (x >= 0 && y >= 0 && x < width && y < height) bits[size_t(y) * width + x] = on ? 1 : 0;
    }
};

// A glyph cache as the client keeps it: UiGlyph records (8-byte header and
// MSB-first rows) at a fixed pitch, with the UiGlyphCache descriptor the
// text orders point to.
class GlyphCache {
public:
    GlyphCache(int entryCount, int entryDataSize);
    // Stores `mask` as entry `index`, its top-left pixel at (offsetX, offsetY)
    // from the drawing point.
    void store(int index, const Mask &mask, int offsetX, int offsetY);
    const UiGlyphCache *descriptor() const { return &descriptor_; }
    const UiGlyph &glyph(int index) const;

private:
    std::vector<uint8_t> entries_;
    UiGlyphCache descriptor_{};
};

// A proportional text face: glyph index = character code (32-126).
struct Font {
    GlyphCache cache;
    std::array<int, 128> advance{};  // pen movement after each character
    int ascent = 0;                  // pixels above the baseline
    int descent = 0;                 // pixels below it
    explicit Font(int entryDataSize) : cache(128, entryDataSize) {}
    int height() const { return ascent + descent; }
    int width(std::string_view text) const;
};

// 5 x 9 character art (7 rows above the baseline, 2 below), trimmed to its
// ink so that the face is proportional.
Mask characterArt(char c);

// A face of the art: scale 1 as drawn (about 9 pixels high), scale 2
// doubled with edge smoothing (about 18); with `cell` > 0 each glyph is
// centred in a cell that wide, the pitch of a fixed-width face.
Font makeFont(int scale, int cell = 0);

// 8 x 16 character cells for drawChar8x16: the art emboldened and stretched.
using Cell8x16 = std::array<uint8_t, 16>;
Cell8x16 consoleCell(char c);

// Doubles a mask in both directions, rounding diagonal steps (the EPX rule).
Mask scale2x(const Mask &mask);

}  // namespace demo
