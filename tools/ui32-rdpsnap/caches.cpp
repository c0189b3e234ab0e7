#include "caches.h"

#include <cstring>

namespace rdpsnap {

namespace {

std::string where(const char *cache, uint32_t id, uint32_t index) {
    return std::string(cache) + " cache " + std::to_string(id) + " entry " + std::to_string(index);
}

}  // namespace

void Caches::setGlyphCaches(const std::array<std::pair<int, int>, kGlyphCaches> &definitions) {
    for (int id = 0; id < kGlyphCaches; ++id) {
        const auto [count, cellBytes] = definitions[id];
        GlyphCache &cache = glyphs_[id];
        cache.entries.assign(size_t(count) * size_t(cellBytes + 8), 0);
        cache.record = UiGlyphCache{cellBytes, count, cache.entries.data()};
    }
}

CachedBitmap *Caches::bitmapSlot(uint32_t cacheId, uint32_t index, std::string &error) {
    if (cacheId >= kBitmapCaches || index >= uint32_t(kBitmapEntries[cacheId])) {
        error = where("bitmap", cacheId, index) + " is beyond the announced caches";
        return nullptr;
    }
    std::vector<CachedBitmap> &cache = bitmaps_[cacheId];
    if (cache.empty()) cache.resize(size_t(kBitmapEntries[cacheId]));
    return &cache[index];
}

const CachedBitmap *Caches::bitmap(uint32_t cacheId, uint32_t index, std::string &error) const {
    if (cacheId >= kBitmapCaches || index >= bitmaps_[cacheId].size() || bitmaps_[cacheId][index].pixels.empty()) {
        error = where("bitmap", cacheId, index) + " was never filled";
        return nullptr;
    }
    return &bitmaps_[cacheId][index];
}

bool Caches::storeGlyph(uint32_t cacheId, uint32_t index, int32_t x, int32_t y, uint32_t cx, uint32_t cy,
                        const uint8_t *bits, uint32_t length, std::string &error) {
    if (cacheId >= kGlyphCaches || index >= uint32_t(glyphs_[cacheId].record.entryCount)) {
        error = where("glyph", cacheId, index) + " is beyond the announced caches";
        return false;
    }
    const uint64_t bytes = uint64_t((cx + 7) / 8) * cy;
    GlyphCache &cache = glyphs_[cacheId];
    if (x < INT16_MIN || x > INT16_MAX || y < INT16_MIN || y > INT16_MAX || cx > UINT16_MAX || cy > UINT16_MAX ||
        bytes > length || bytes > uint64_t(cache.record.entryDataSize) || (bytes > 0 && bits == nullptr)) {
        error = where("glyph", cacheId, index) + ": a " + std::to_string(cx) + "x" + std::to_string(cy) +
                " glyph with " + std::to_string(length) + " bytes does not fit its cell";
        return false;
    }
    uint8_t *entry = cache.entries.data() + size_t(index) * size_t(cache.record.entryDataSize + 8);
    const UiGlyph header{int16_t(x), int16_t(y), uint16_t(cx), uint16_t(cy)};
    std::memcpy(entry, &header, sizeof header);
    if (bytes > 0) std::memcpy(entry + 8, bits, size_t(bytes));
    return true;
}

const UiGlyphCache *Caches::glyphCache(uint32_t cacheId, std::string &error) const {
    if (cacheId >= kGlyphCaches) {
        error = "glyph cache " + std::to_string(cacheId) + " does not exist";
        return nullptr;
    }
    return &glyphs_[cacheId].record;
}

CachedBrush *Caches::brushSlot(uint32_t index, std::string &error) {
    if (index >= uint32_t(kBrushEntries)) {
        error = "brush cache entry " + std::to_string(index) + " is beyond the announced cache";
        return nullptr;
    }
    brushSet_[index] = true;
    return &brushes_[index];
}

const CachedBrush *Caches::brush(uint32_t index, std::string &error) const {
    if (index >= uint32_t(kBrushEntries) || !brushSet_[index]) {
        error = "brush cache entry " + std::to_string(index) + " was never filled";
        return nullptr;
    }
    return &brushes_[index];
}

}  // namespace rdpsnap
