// The glyph string of the glyph string order: glyph indices, optional
// per-glyph position deltas, and the commands that store and replay glyph
// fragments in the fragment store (256 slots of 256 bytes; byte 0 of a slot
// is the fragment's length, bytes 1-255 the fragment).
#pragma once

#include <cstdint>

namespace ui {

// The parsed string: at most kCapacity - 1 glyphs.
struct GlyphList {
    static constexpr int32_t kCapacity = 4096;
    int32_t count;
    uint8_t index[kCapacity];
    int16_t delta[kCapacity];  // delta mode only
};

// Parses `size` bytes of `data` into `list`, storing and replaying fragments
// in `store`.  In delta mode every index is followed by a position delta.
// False after one report (2672, 2680, 2702, 2734, 2749, 2774); fragments
// stored before the failure stay stored.
bool parseGlyphString(const uint8_t *data, int32_t size, bool deltaMode, uint8_t *store, GlyphList &list);

}  // namespace ui
