// The demo's typeface: 95 characters drawn on a 5 x 9 grid, '#' for ink.
// Rows 0-6 stand on the baseline, rows 7-8 hold descenders; lower-case
// letters are five rows high.
#include "font.h"

#include <algorithm>
#include <cstring>

namespace demo {
namespace {

// Characters 32 to 126, nine rows of five each.
constexpr const char *kArt[95] = {
    "..... ..... ..... ..... ..... ..... ..... ..... .....",  // space
    "..#.. ..#.. ..#.. ..#.. ..#.. ..... ..#.. ..... .....",  // !
    ".#.#. .#.#. ..... ..... ..... ..... ..... ..... .....",  // "
    ".#.#. .#.#. ##### .#.#. ##### .#.#. .#.#. ..... .....",  // #
    "..#.. .#### #.#.. .###. ..#.# ####. ..#.. ..... .....",  // $
    "##... ##..# ...#. ..#.. .#... #..## ...## ..... .....",  // %
    ".##.. #..#. #.#.. .#... #.#.# #..#. .##.# ..... .....",  // &
    "..#.. ..#.. ..... ..... ..... ..... ..... ..... .....",  // '
    "...#. ..#.. .#... .#... .#... ..#.. ...#. ..... .....",  // (
    ".#... ..#.. ...#. ...#. ...#. ..#.. .#... ..... .....",  // )
    "..... ..#.. #.#.# .###. #.#.# ..#.. ..... ..... .....",  // *
    "..... ..#.. ..#.. ##### ..#.. ..#.. ..... ..... .....",  // +
    "..... ..... ..... ..... ..... .##.. .##.. ..#.. .#...",  // ,
    "..... ..... ..... ##### ..... ..... ..... ..... .....",  // -
    "..... ..... ..... ..... ..... .##.. .##.. ..... .....",  // .
    "....# ....# ...#. ..#.. .#... #.... #.... ..... .....",  // /
    ".###. #...# #..## #.#.# ##..# #...# .###. ..... .....",  // 0
    "..#.. .##.. ..#.. ..#.. ..#.. ..#.. .###. ..... .....",  // 1
    ".###. #...# ....# ...#. ..#.. .#... ##### ..... .....",  // 2
    "##### ...#. ..#.. ...#. ....# #...# .###. ..... .....",  // 3
    "...#. ..##. .#.#. #..#. ##### ...#. ...#. ..... .....",  // 4
    "##### #.... ####. ....# ....# #...# .###. ..... .....",  // 5
    "..##. .#... #.... ####. #...# #...# .###. ..... .....",  // 6
    "##### ....# ...#. ..#.. .#... .#... .#... ..... .....",  // 7
    ".###. #...# #...# .###. #...# #...# .###. ..... .....",  // 8
    ".###. #...# #...# .#### ....# ...#. .##.. ..... .....",  // 9
    "..... .##.. .##.. ..... .##.. .##.. ..... ..... .....",  // :
    "..... .##.. .##.. ..... .##.. .##.. ..#.. .#... .....",  // ;
    "...#. ..#.. .#... #.... .#... ..#.. ...#. ..... .....",  // <
    "..... ..... ##### ..... ##### ..... ..... ..... .....",  // =
    ".#... ..#.. ...#. ....# ...#. ..#.. .#... ..... .....",  // >
    ".###. #...# ....# ...#. ..#.. ..... ..#.. ..... .....",  // ?
    ".###. #...# #.### #.#.# #.### #.... .###. ..... .....",  // @
    ".###. #...# #...# ##### #...# #...# #...# ..... .....",  // A
    "####. #...# #...# ####. #...# #...# ####. ..... .....",  // B
    ".###. #...# #.... #.... #.... #...# .###. ..... .....",  // C
    "###.. #..#. #...# #...# #...# #..#. ###.. ..... .....",  // D
    "##### #.... #.... ####. #.... #.... ##### ..... .....",  // E
    "##### #.... #.... ####. #.... #.... #.... ..... .....",  // F
    ".###. #...# #.... #.### #...# #...# .#### ..... .....",  // G
    "#...# #...# #...# ##### #...# #...# #...# ..... .....",  // H
    ".###. ..#.. ..#.. ..#.. ..#.. ..#.. .###. ..... .....",  // I
    "..### ...#. ...#. ...#. ...#. #..#. .##.. ..... .....",  // J
    "#...# #..#. #.#.. ##... #.#.. #..#. #...# ..... .....",  // K
    "#.... #.... #.... #.... #.... #.... ##### ..... .....",  // L
    "#...# ##.## #.#.# #.#.# #...# #...# #...# ..... .....",  // M
    "#...# #...# ##..# #.#.# #..## #...# #...# ..... .....",  // N
    ".###. #...# #...# #...# #...# #...# .###. ..... .....",  // O
    "####. #...# #...# ####. #.... #.... #.... ..... .....",  // P
    ".###. #...# #...# #...# #.#.# #..#. .##.# ..... .....",  // Q
    "####. #...# #...# ####. #.#.. #..#. #...# ..... .....",  // R
    ".#### #.... #.... .###. ....# ....# ####. ..... .....",  // S
    "##### ..#.. ..#.. ..#.. ..#.. ..#.. ..#.. ..... .....",  // T
    "#...# #...# #...# #...# #...# #...# .###. ..... .....",  // U
    "#...# #...# #...# #...# #...# .#.#. ..#.. ..... .....",  // V
    "#...# #...# #...# #.#.# #.#.# #.#.# .#.#. ..... .....",  // W
    "#...# #...# .#.#. ..#.. .#.#. #...# #...# ..... .....",  // X
    "#...# #...# .#.#. ..#.. ..#.. ..#.. ..#.. ..... .....",  // Y
    "##### ....# ...#. ..#.. .#... #.... ##### ..... .....",  // Z
    ".###. .#... .#... .#... .#... .#... .###. ..... .....",  // [
    "#.... #.... .#... ..#.. ...#. ....# ....# ..... .....",  // backslash
    ".###. ...#. ...#. ...#. ...#. ...#. .###. ..... .....",  // ]
    "..#.. .#.#. #...# ..... ..... ..... ..... ..... .....",  // ^
    "..... ..... ..... ..... ..... ..... ..... ##### .....",  // _
    ".#... ..#.. ..... ..... ..... ..... ..... ..... .....",  // `
    "..... ..... .###. ....# .#### #...# .#### ..... .....",  // a
    "#.... #.... ####. #...# #...# #...# ####. ..... .....",  // b
    "..... ..... .###. #.... #.... #...# .###. ..... .....",  // c
    "....# ....# .#### #...# #...# #...# .#### ..... .....",  // d
    "..... ..... .###. #...# ##### #.... .###. ..... .....",  // e
    "..##. .#..# .#... ###.. .#... .#... .#... ..... .....",  // f
    "..... ..... .#### #...# #...# #...# .#### ....# .###.",  // g
    "#.... #.... #.##. ##..# #...# #...# #...# ..... .....",  // h
    "..#.. ..... .##.. ..#.. ..#.. ..#.. .###. ..... .....",  // i
    "...#. ..... ..##. ...#. ...#. ...#. ...#. #..#. .##..",  // j
    "#.... #.... #..#. #.#.. ##... #.#.. #..#. ..... .....",  // k
    ".##.. ..#.. ..#.. ..#.. ..#.. ..#.. .###. ..... .....",  // l
    "..... ..... ##.#. #.#.# #.#.# #.#.# #.#.# ..... .....",  // m
    "..... ..... #.##. ##..# #...# #...# #...# ..... .....",  // n
    "..... ..... .###. #...# #...# #...# .###. ..... .....",  // o
    "..... ..... ####. #...# #...# #...# ####. #.... #....",  // p
    "..... ..... .#### #...# #...# #...# .#### ....# ....#",  // q
    "..... ..... #.##. ##..# #.... #.... #.... ..... .....",  // r
    "..... ..... .###. #.... .###. ....# ####. ..... .....",  // s
    ".#... .#... ###.. .#... .#... .#..# ..##. ..... .....",  // t
    "..... ..... #...# #...# #...# #..## .##.# ..... .....",  // u
    "..... ..... #...# #...# #...# .#.#. ..#.. ..... .....",  // v
    "..... ..... #...# #...# #.#.# #.#.# .#.#. ..... .....",  // w
    "..... ..... #...# .#.#. ..#.. .#.#. #...# ..... .....",  // x
    "..... ..... #...# #...# #...# #...# .#### ....# .###.",  // y
    "..... ..... ##### ...#. ..#.. .#... ##### ..... .....",  // z
    "...#. ..#.. ..#.. .#... ..#.. ..#.. ...#. ..... .....",  // {
    "..#.. ..#.. ..#.. ..#.. ..#.. ..#.. ..#.. ..#.. .....",  // |
    ".#... ..#.. ..#.. ...#. ..#.. ..#.. .#... ..... .....",  // }
    "..... ..... .#... #.#.# ...#. ..... ..... ..... .....",  // ~
};

constexpr int kArtWidth = 5;
constexpr int kArtHeight = 9;
constexpr int kArtAscent = 7;
constexpr int kSpaceWidth = 3;

// The full 5 x 9 cell of a character (blank for codes outside 32-126).
Mask artCell(char c) {
    Mask cell(kArtWidth, kArtHeight);
    if (c < 32 || c > 126) return cell;
    const char *art = kArt[c - 32];
    for (int row = 0; row < kArtHeight; ++row)
        for (int col = 0; col < kArtWidth; ++col) cell.set(col, row, art[row * (kArtWidth + 1) + col] == '#');
    return cell;
}

Mask crop(const Mask &mask, int left, int width) {
    Mask out(width, mask.height);
    for (int y = 0; y < mask.height; ++y)
        for (int x = 0; x < width; ++x) out.set(x, y, mask.at(left + x, y));
    return out;
}

}  // namespace

GlyphCache::GlyphCache(int entryCount, int entryDataSize)
    : entries_(size_t(entryCount) * size_t(entryDataSize + 8), 0) {
    descriptor_.entryDataSize = entryDataSize;
    descriptor_.entryCount = entryCount;
    descriptor_.entries = entries_.data();
}

void GlyphCache::store(int index, const Mask &mask, int offsetX, int offsetY) {
    const size_t pitch = size_t(descriptor_.entryDataSize) + 8;
    uint8_t *entry = &entries_.at(size_t(index) * pitch);
    const int rowBytes = (mask.width + 7) / 8;
    if (rowBytes * mask.height > descriptor_.entryDataSize) return;  // does not fit: leave the entry empty
    const UiGlyph header{int16_t(offsetX), int16_t(offsetY), uint16_t(mask.width), uint16_t(mask.height)};
    std::memcpy(entry, &header, sizeof header);
    uint8_t *bits = entry + 8;
    std::memset(bits, 0, size_t(descriptor_.entryDataSize));
    for (int y = 0; y < mask.height; ++y)
        for (int x = 0; x < mask.width; ++x)
            if (mask.at(x, y)) bits[y * rowBytes + x / 8] |= uint8_t(0x80 >> (x % 8));
}

const UiGlyph &GlyphCache::glyph(int index) const {
    const size_t pitch = size_t(descriptor_.entryDataSize) + 8;
    return *reinterpret_cast<const UiGlyph *>(&entries_.at(size_t(index) * pitch));
}

int Font::width(std::string_view text) const {
    int w = 0;
    for (char c : text) w += advance[uint8_t(c) & 127];
    return w;
}

Mask characterArt(char c) {
    const Mask cell = artCell(c);
    int left = kArtWidth, right = -1;
    for (int x = 0; x < kArtWidth; ++x)
        for (int y = 0; y < kArtHeight; ++y)
            if (cell.at(x, y)) {
                left = std::min(left, x);
                right = std::max(right, x);
            }
    if (right < 0) return Mask(kSpaceWidth, kArtHeight);
    return crop(cell, left, right - left + 1);
}

Mask scale2x(const Mask &m) {
    Mask out(m.width * 2, m.height * 2);
    for (int y = 0; y < m.height; ++y)
        for (int x = 0; x < m.width; ++x) {
            const bool p = m.at(x, y), a = m.at(x, y - 1), b = m.at(x + 1, y), c = m.at(x - 1, y),
                       d = m.at(x, y + 1);
            bool e1 = p, e2 = p, e3 = p, e4 = p;
            if (c == a && c != d && a != b) e1 = a;
            if (a == b && a != c && b != d) e2 = b;
            if (d == c && d != b && c != a) e3 = c;
            if (b == d && b != a && d != c) e4 = d;
            out.set(2 * x, 2 * y, e1);
            out.set(2 * x + 1, 2 * y, e2);
            out.set(2 * x, 2 * y + 1, e3);
            out.set(2 * x + 1, 2 * y + 1, e4);
        }
    return out;
}

Font makeFont(int scale, int cell) {
    Font font(scale == 1 ? 16 : 64);
    font.ascent = scale * kArtAscent;
    font.descent = scale * (kArtHeight - kArtAscent);
    for (int c = 32; c < 127; ++c) {
        Mask art = scale == 1 ? characterArt(char(c)) : scale2x(characterArt(char(c)));
        if (cell > 0) {  // centred in its cell
            Mask centred(cell, art.height);
            for (int y = 0; y < art.height; ++y)
                for (int x = 0; x < art.width; ++x) centred.set((cell - 1 - art.width) / 2 + x, y, art.at(x, y));
            art = centred;
        }
        font.cache.store(c, art, 0, -font.ascent);
        font.advance[c] = cell > 0 ? cell : art.width + scale;
    }
    return font;
}

Cell8x16 consoleCell(char c) {
    // Rows 0-8 of the art land on cell rows 1-14: every other cap row is
    // doubled (0, 2, 4, 6) and the last descender row too, so the 9 rows
    // stretch to 14; the ink is emboldened by one column to the right.
    static constexpr int kRowOfCellRow[16] = {-1, 0, 0, 1, 2, 2, 3, 4, 4, 5, 6, 6, 7, 8, 8, -1};
    const Mask cell = artCell(c);
    Cell8x16 out{};
    for (int r = 0; r < 16; ++r) {
        const int art = kRowOfCellRow[r];
        if (art < 0) continue;
        uint8_t bits = 0;
        for (int x = 0; x < kArtWidth; ++x)
            if (cell.at(x, art)) bits |= uint8_t(0x40 >> x);  // columns 1-5
        out[r] = uint8_t(bits | (bits >> 1));
    }
    return out;
}

}  // namespace demo
