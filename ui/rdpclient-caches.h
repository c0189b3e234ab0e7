// The client's glyph cache record (UiGlyphCache): looking an entry up.
#pragma once

#include <cstdint>

#include "glyph.h"
#include "ui.h"

namespace ui {

inline constexpr const char *kCachesModule = "rdpclient-caches";
inline constexpr int kCacheEntrySite = 64;

enum class GlyphLookup {
    found,      // `glyph` views the entry
    nullEntry,  // the entry's address is null (no entries pointer); not reported
    refused,    // reported: no such usable entry
};

// Entry i lies at entries + i * (entryDataSize + 8): the glyph header and up
// to entryDataSize bytes of bitmap.  Refused with the internal-error message,
// module "rdpclient-caches", site 64, when there is no cache, the index is not
// below the entry count, the entry data size is negative, the entry would end
// beyond the address space, or the glyph's bitmap (cy rows of (cx + 7) / 8
// bytes) is larger than the entry data size: nothing outside the entry is
// ever read.  A null entries pointer makes every entry address null.
inline GlyphLookup findGlyph(const UiGlyphCache *cache, uint32_t index, GlyphView &glyph) {
    const auto refuse = [] {
        reportInternal(kCachesModule, kCacheEntrySite);
        return GlyphLookup::refused;
    };
    if (cache == nullptr || cache->entryDataSize < 0 || int64_t(index) >= int64_t(cache->entryCount)) return refuse();
    if (cache->entries == nullptr) return GlyphLookup::nullEntry;

    // index < 2^31 and stride < 2^31 + 8: the product cannot wrap 64 bits.
    const uint64_t stride = uint64_t(cache->entryDataSize) + sizeof(UiGlyph);
    const uint64_t entryEnd = (uint64_t(index) + 1) * stride;
    if (entryEnd > uint64_t(UINTPTR_MAX - reinterpret_cast<uintptr_t>(cache->entries))) return refuse();

    glyph = viewGlyph(cache->entries + size_t(uint64_t(index) * stride));
    if (glyphBitmapSize(glyph.header) > size_t(cache->entryDataSize)) return refuse();
    return GlyphLookup::found;
}

}  // namespace ui
