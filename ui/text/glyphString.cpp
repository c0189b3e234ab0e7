// Parsing of the glyph string with the fragment store.
#include "glyphString.h"

#include <cstring>

#include "../core/settings.h"

namespace {

using ui::Site;

// The bytes being parsed: the order's string or a stored fragment.
struct Bytes {
    const uint8_t *data;
    int32_t size;
};

// The delta at position q: none (0) at the end of the bytes, one byte below
// 0x80, or 0x80 and up followed by a little-endian signed 16-bit value (0 when
// the two bytes are not both there).  Returns the position after it.
int32_t readDelta(Bytes b, int32_t q, int16_t &delta) {
    if (q >= b.size) return delta = 0, q;
    if (b.data[q] < 0x80) return delta = int16_t(b.data[q]), q + 1;
    delta = q + 2 < b.size ? int16_t(uint16_t(b.data[q + 1] | b.data[q + 2] << 8)) : int16_t(0);
    return q + 3;
}

// Appends the glyph index at p (with its delta in delta mode) and moves p
// past it; false after the report at `full` when the list becomes full.
bool appendGlyph(Bytes b, int32_t &p, bool deltaMode, ui::GlyphList &list, Site full) {
    const int32_t n = list.count++;
    list.index[n] = b.data[p];
    p = deltaMode ? readDelta(b, p + 1, list.delta[n]) : p + 1;
    return list.count < ui::GlyphList::kCapacity || ui::fail(full);
}

// 0xFF slot length: copies the `length` bytes before the command into the slot.
bool storeFragment(Bytes b, int32_t &p, uint8_t *store) {
    if (p + 2 >= b.size) return ui::fail(Site::storeShort);
    const int32_t length = b.data[p + 2];
    if (length > p) return ui::fail(Site::storeLong);
    uint8_t *slot = store + 256 * size_t(b.data[p + 1]);
    slot[0] = uint8_t(length);
    std::memcpy(slot + 1, b.data + (p - length), size_t(length));
    p += 3;
    return true;
}

// 0xFE slot [delta]: replays the slot's bytes as glyphs, never as commands.
bool useFragment(Bytes b, int32_t &p, bool deltaMode, const uint8_t *store, ui::GlyphList &list) {
    if (p + 1 >= b.size) return ui::fail(Site::useShort);
    const uint8_t *slot = store + 256 * size_t(b.data[p + 1]);
    const Bytes fragment{slot + 1, slot[0]};
    if (!deltaMode) {
        if (list.count + fragment.size >= ui::GlyphList::kCapacity) return ui::fail(Site::useFull);
        std::memcpy(list.index + list.count, fragment.data, size_t(fragment.size));
        list.count += fragment.size;
        p += 2;
        return true;
    }
    const int32_t first = list.count;
    for (int32_t f = 0; f < fragment.size;)
        if (!appendGlyph(fragment, f, true, list, Site::fragmentFull)) return false;
    // The order's own delta for the fragment replaces its first glyph's only
    // when that glyph's stored delta byte (slot byte 2) is 0.
    int16_t delta;
    p = readDelta(b, p + 2, delta);
    if (list.count > first && slot[2] == 0) list.delta[first] = delta;
    return true;
}

}  // namespace

bool ui::parseGlyphString(const uint8_t *data, int32_t size, bool deltaMode, uint8_t *store, GlyphList &list) {
    const Bytes b{data, size};
    list.count = 0;
    for (int32_t p = 0; p < b.size;) {
        const bool ok = b.data[p] == 0xff   ? storeFragment(b, p, store)
                        : b.data[p] == 0xfe ? useFragment(b, p, deltaMode, store, list)
                                            : appendGlyph(b, p, deltaMode, list, Site::glyphListFull);
        if (!ok) return false;
    }
    return true;
}
