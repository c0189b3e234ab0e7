// The glyph string of the glyph string order: glyph indices, optional
// per-glyph position deltas and the commands that store and replay glyph
// fragments in the fragment store.
#pragma once

#include <cstdint>

namespace ui {

// The fragment store: 256 slots of 256 bytes; byte 0 of a slot is the
// fragment's length, bytes 1 to 255 the fragment.
inline constexpr int kFragmentSlotSize = 256;

// The parsed string: at most kCapacity - 1 glyphs.
struct GlyphList {
    static constexpr int32_t kCapacity = 4096;
    int32_t count;
    uint8_t index[kCapacity];
    int16_t delta[kCapacity];  // filled in delta mode only
};

// Parses `size` bytes of `data` into `list`, storing and replaying fragments
// in `store` (65,536 bytes).  In delta mode every glyph index is followed by
// a position delta.  False after one report (internal-error message, module
// "ui") at the site of the failed check: 2672 / 2680 (store command cut short
// / longer than the bytes before it), 2702 (use command cut short), 2734,
// 2749, 2774 (the list would reach kCapacity entries).  Fragments stored
// before the failure stay stored.
bool parseGlyphString(const uint8_t *data, int32_t size, bool deltaMode, uint8_t *store, GlyphList &list);

}  // namespace ui
