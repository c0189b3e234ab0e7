#include "glyphs.h"

#include <cstring>

#include "font.h"

namespace bench {

const char kLine[kGlyphs + 1] =
    "The quick brown fox jumps over the lazy dog; 0123456789 ({[<>]}) PACK MY BOX!?  ";

const std::vector<uint8_t> &consoleCacheEntries() {
    static const std::vector<uint8_t> entries = [] {
        std::vector<uint8_t> out(size_t(kGlyphEntries) * kGlyphEntryBytes, 0);
        for (int c = 32; c < 127; ++c) {
            uint8_t *entry = out.data() + size_t(c) * kGlyphEntryBytes;
            const UiGlyph header{0, 0, kCellWidth, kCellHeight};
            static_assert(sizeof header == 8);
            std::memcpy(entry, &header, sizeof header);
            const demo::Cell8x16 cell = demo::consoleCell(char(c));
            static_assert(sizeof cell == kCellHeight);
            std::memcpy(entry + sizeof header, cell.data(), cell.size());
        }
        return out;
    }();
    return entries;
}

std::vector<uint8_t> glyphString(GlyphForm form) {
    std::vector<uint8_t> out;
    const auto glyph = [&](int i) { out.push_back(uint8_t(kLine[i])); };
    switch (form) {
        case GlyphForm::fixed:
        case GlyphForm::opaque:
            for (int i = 0; i < kGlyphs; ++i) glyph(i);
            break;
        case GlyphForm::fragments:
            for (int i = 0; i < 20; ++i) glyph(i);
            out.insert(out.end(), {0xff, 0x07, 20});
            for (int k = 0; k < 3; ++k) out.insert(out.end(), {0xfe, 0x07});
            break;
        case GlyphForm::delta:
            for (int i = 0; i < kGlyphs; ++i) {
                glyph(i);
                out.push_back(i == 0 ? 0 : kCellWidth);
            }
            break;
        case GlyphForm::deltaFragments:
            for (int i = 0; i < 20; ++i) {
                glyph(i);
                out.push_back(i == 0 ? 0 : kCellWidth);
            }
            out.insert(out.end(), {0xff, 0x08, 40});
            // The fragment's first glyph takes the delta given after it.
            for (int k = 0; k < 3; ++k) out.insert(out.end(), {0xfe, 0x08, kCellWidth});
            break;
    }
    return out;
}

}  // namespace bench
