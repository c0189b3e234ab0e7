// Building the text orders: glyph strings with position deltas and glyph
// fragments, GlyphIndex / FastIndex and FastGlyph records.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "font.h"
#include "ui32.h"

namespace demo {

// What the client knows about the fragments it has asked the library to
// store: how far each moves the pen.
struct FragmentBook {
    struct Entry {
        int firstDelta = 0;   // stored with the first glyph; 0 lets the replaying order place it
        int span = 0;         // from the first glyph's position to the last one's
        int lastAdvance = 0;  // advance after the last glyph
        bool used = false;
    };
    std::array<Entry, 256> slots;
};

// A glyph string in delta mode: each glyph index is followed by the
// distance from the previous glyph (one byte below 0x80, else 0x80 and a
// 16-bit value).
class GlyphString {
public:
    GlyphString(const Font &font, FragmentBook &book) : font_(font), book_(book) {}
    GlyphString &text(std::string_view s);
    GlyphString &gap(int pixels);
    // Marks where the next fragment starts (else at the beginning).
    GlyphString &mark() { return mark_ = bytes_.size(), *this; }
    // Stores the bytes from the mark up to here as fragment `slot` (they must
    // hold glyphs only: a replay inside a fragment would not be a command).
    GlyphString &store(int slot);
    // Draws fragment `slot` again.
    GlyphString &replay(int slot);
    const std::vector<uint8_t> &bytes() const { return bytes_; }
    int width() const { return pen_ + pending_; }

private:
    void delta(int d);
    struct Glyph {
        size_t at;  // offset of its index byte
        int pen, advance;
    };
    const Font &font_;
    FragmentBook &book_;
    std::vector<uint8_t> bytes_;
    std::vector<Glyph> glyphs_;  // drawn since the string began
    size_t replayedUpTo_ = 0;    // bytes up to the end of the last replay
    size_t mark_ = 0;
    int pen_ = 0;
    int pending_ = 0;
};

// Red, green and blue of 0xRRGGBB, as the orders carry colours.
std::array<int32_t, 3> components(uint32_t colour);
void setColour(int32_t (&out)[3], uint32_t colour);

// A GlyphIndex record (explicit opaque rectangle form, no opaque fill)
// for `data` drawn from (x, baseline), its background rectangle `width`
// wide and the font's height.
UiGlyphIndexOrder textOrder(const Font &font, const std::vector<uint8_t> &data, int x, int baseline, int width,
                            uint32_t colour);

// A FastGlyph record drawing cache entry `index` at (x, y), background
// rectangle exactly the glyph's box, no opaque fill.
UiFastGlyphOrder glyphOrder(const GlyphCache &cache, int index, int x, int y, uint32_t colour);

}  // namespace demo
