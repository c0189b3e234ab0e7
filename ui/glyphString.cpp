// Parsing of the glyph string with the fragment store.
#include "glyphString.h"

#include <cstring>

#include "ui.h"

namespace {

constexpr int kStoreShortSite = 2672;
constexpr int kStoreLongSite = 2680;
constexpr int kUseShortSite = 2702;
constexpr int kFragmentFullSite = 2734;
constexpr int kUseFullSite = 2749;
constexpr int kGlyphFullSite = 2774;

constexpr uint8_t kStoreFragment = 0xff;
constexpr uint8_t kUseFragment = 0xfe;

bool fail(int site) {
    ui::reportInternal("ui", site);
    return false;
}

// A run of bytes being parsed: the order's string or a stored fragment.
struct Bytes {
    const uint8_t *data;
    int32_t size;
};

// The delta field at position q: none (0) at the end of the bytes, one byte
// below 0x80, or 0x80 and up followed by a little-endian signed 16-bit value
// (0 when the two bytes are not both there).  Returns the position after it.
int32_t readDelta(Bytes b, int32_t q, int16_t &delta) {
    if (q >= b.size) {
        delta = 0;
        return q;
    }
    if (b.data[q] < 0x80) {
        delta = int16_t(b.data[q]);
        return q + 1;
    }
    delta = q + 2 < b.size ? int16_t(uint16_t(b.data[q + 1] | (b.data[q + 2] << 8))) : int16_t(0);
    return q + 3;
}

// Appends the glyph index at p (with its delta in delta mode) and moves p
// past it.  False after the report at fullSite when the list becomes full.
bool appendGlyph(Bytes b, int32_t &p, bool deltaMode, ui::GlyphList &list, int fullSite) {
    const int32_t n = list.count;
    list.index[n] = b.data[p];
    if (deltaMode)
        p = readDelta(b, p + 1, list.delta[n]);
    else
        p += 1;
    list.count = n + 1;
    return list.count < ui::GlyphList::kCapacity || fail(fullSite);
}

// 0xFF slot length: copies the `length` bytes before the command into the slot.
bool storeFragment(Bytes b, int32_t &p, uint8_t *store) {
    if (p + 2 >= b.size) return fail(kStoreShortSite);
    uint8_t *slot = store + size_t(b.data[p + 1]) * ui::kFragmentSlotSize;
    const int32_t length = b.data[p + 2];
    if (length > p) return fail(kStoreLongSite);
    slot[0] = uint8_t(length);
    std::memcpy(slot + 1, b.data + (p - length), size_t(length));
    p += 3;
    return true;
}

// 0xFE slot [delta]: replays the slot's bytes as glyphs; they are never
// commands.
bool useFragment(Bytes b, int32_t &p, bool deltaMode, const uint8_t *store, ui::GlyphList &list) {
    if (p + 1 >= b.size) return fail(kUseShortSite);
    const uint8_t *slot = store + size_t(b.data[p + 1]) * ui::kFragmentSlotSize;
    const Bytes fragment{slot + 1, slot[0]};
    if (!deltaMode) {
        if (list.count + fragment.size >= ui::GlyphList::kCapacity) return fail(kUseFullSite);
        std::memcpy(list.index + list.count, fragment.data, size_t(fragment.size));
        list.count += fragment.size;
        p += 2;
        return true;
    }
    const int32_t first = list.count;
    for (int32_t f = 0; f < fragment.size;)
        if (!appendGlyph(fragment, f, true, list, kFragmentFullSite)) return false;
    // The order may give the fragment a delta of its own; it replaces the
    // first glyph's only when that glyph's stored delta byte (slot byte 2)
    // is 0.
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
        bool ok;
        if (b.data[p] == kStoreFragment)
            ok = storeFragment(b, p, store);
        else if (b.data[p] == kUseFragment)
            ok = useFragment(b, p, deltaMode, store, list);
        else
            ok = appendGlyph(b, p, deltaMode, list, kGlyphFullSite);
        if (!ok) return false;
    }
    return true;
}
