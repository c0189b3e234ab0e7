// The text inputs of the benchmarks: a glyph cache of the demo's console face
// (8 x 16 cells, glyph index = character code) and the string bytes of one
// 80-glyph line in each form of a GlyphIndex order.  Shared by the x86
// benchmarks and the input files of the ARM instruction counts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench {

inline constexpr int32_t kGlyphs = 80;
inline constexpr int32_t kCellWidth = 8;
inline constexpr int32_t kCellHeight = 16;
inline constexpr int32_t kGlyphEntries = 128;
// One cache entry: the 8-byte glyph header, then 16 bytes of bitmap.
inline constexpr int32_t kGlyphEntryBytes = 8 + kCellHeight;

// The line drawn.
extern const char kLine[kGlyphs + 1];

// The cache entries, kGlyphEntries x kGlyphEntryBytes bytes (entries for
// characters 32-126; the others zero).
const std::vector<uint8_t> &consoleCacheEntries();

// The 16 bytes of the 8 x 16 cell of character c (the bitmap of its entry).
inline const uint8_t *consoleCell(int c) {
    return consoleCacheEntries().data() + size_t(c & 127) * kGlyphEntryBytes + 8;
}

enum class GlyphForm { fixed, opaque, fragments, delta, deltaFragments };

// The string bytes of the line in each form.  Fragments: the first 20 glyphs
// are stored in a fragment slot and replayed three times (the line is a
// repeating 20-character pattern in these forms).
std::vector<uint8_t> glyphString(GlyphForm form);

}  // namespace bench
