// Loading ui32.so and calling its slots with bookkeeping.
#include "plugin.h"

#include <dlfcn.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace demo {
namespace {

constexpr const char *kSlotNames[UI_SLOT_COUNT] = {
    "bitmapUpdate", "dstBlt", "patBlt", "scrBlt", "drawLine", "opaqueRect", "glyphIndex",
    "fastGlyph", "decodeBitmap", "memBlt", "setSourceBytesPerPixel4", "fillBufferRect", "drawChar8x16",
    "hLine", "vLine", "setSourceByteOrder", "putPixels", "copyRect", "zrleRawTile", "zrleSolidTile",
    "zrlePackedPaletteTile", "zrlePlainRleTile", "zrlePaletteRleTile", "importImage32", "hextileRect"};

// The log callback has no context argument: reports go to the slot that is
// being called at the time (or count as unattributed outside any call).
SlotStats *currentSlot = nullptr;
int currentIndex = -1;
long *unattributedReports = nullptr;
int printedReports = 0;
constexpr int kPrintedReportLimit = 20;

int logReport(const char *level, const char *module, int site, const char *format, ...) {
    if (currentSlot != nullptr) ++currentSlot->reports;
    else if (unattributedReports != nullptr) ++*unattributedReports;
    if (printedReports++ < kPrintedReportLimit) {
        char text[256];
        va_list args;
        va_start(args, format);
        std::vsnprintf(text, sizeof text, format, args);
        va_end(args);
        std::fprintf(stderr, "report during %s: %s %s %d: %s\n",
                     currentIndex >= 0 ? kSlotNames[currentIndex] : "srn_get", level, module, site, text);
    }
    return 0;
}

}  // namespace

const char *slotName(int slot) { return slot >= 0 && slot < UI_SLOT_COUNT ? kSlotNames[slot] : "?"; }

Screen::Screen(int w, int h)
    : width(w), height(h), pixels(size_t(w) * size_t(h), 0), tiles(size_t((w + 31) / 32) * size_t((h + 31) / 32), 0) {
    surface.image.pixels = pixels.data();
    surface.image.stride = uint32_t(w) * 4;
    surface.image.width = uint32_t(w);
    surface.image.height = uint32_t(h);
    surface.dirty.tiles = tiles.data();
    surface.dirty.columns = (w + 31) / 32;
    surface.dirty.rows = (h + 31) / 32;
}

void Screen::clearDirty() {
    std::fill(tiles.begin(), tiles.end(), 0);
    surface.dirty.changed = 0;
}

int Screen::dirtyTiles() const {
    int n = 0;
    for (uint8_t t : tiles) n += t != 0;
    return n;
}

bool Plugin::load(const std::string &path, const UiConfig &config, std::string &error) {
    void *handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        error = dlerror();
        return false;
    }
    void *symbol = dlsym(handle, "srn_get");
    if (symbol == nullptr) {
        error = path + " does not export srn_get";
        return false;
    }
    void (*srnGet)(UiDrawTable, UiLogFn, const UiConfig *);
    std::memcpy(&srnGet, &symbol, sizeof srnGet);
    return attach(srnGet, config, error);
}

bool Plugin::attach(void (*srnGet)(UiDrawTable, UiLogFn, const UiConfig *), const UiConfig &config,
                    std::string &error) {
    srnGet_ = srnGet;
    unattributedReports = &unattributed_;
    configure(config);
    for (int i = 0; i < UI_SLOT_COUNT; ++i)
        if (table_[i] == nullptr) {
            error = std::string("srn_get left slot ") + kSlotNames[i] + " empty";
            return false;
        }
    return true;
}

void Plugin::configure(const UiConfig &config) { srnGet_(table_, &logReport, &config); }

template <typename Fn>
Fn Plugin::fn(int slot) const {
    Fn f;
    std::memcpy(&f, &table_[slot], sizeof f);
    return f;
}

void Plugin::begin(int slot, dirtybuf *dirty) {
    currentSlot = &stats_[size_t(slot)];
    currentIndex = slot;
    ++currentSlot->calls;
    if (dirty != nullptr) dirty->changed = 0;
}

void Plugin::end(dirtybuf *dirty, bool ok) {
    if (dirty != nullptr && dirty->changed) ++currentSlot->marked;
    if (!ok) ++currentSlot->failed;
    currentSlot = nullptr;
    currentIndex = -1;
}

long Plugin::totalReports() const {
    long n = unattributed_;
    for (const SlotStats &s : stats_) n += s.reports;
    return n;
}

void Plugin::bitmapUpdate(Screen &s, const UiBitmapData &bitmap) {
    begin(UI_SLOT_BITMAP_UPDATE, s.dirty());
    fn<UiBitmapUpdateFn>(UI_SLOT_BITMAP_UPDATE)(&s.surface, &bitmap);
    end(s.dirty(), true);
}

void Plugin::dstBlt(Screen &s, const UiDstBltOrder &order, const UiClipRect &clip) {
    begin(UI_SLOT_DST_BLT, s.dirty());
    fn<UiDstBltFn>(UI_SLOT_DST_BLT)(&s.surface, &order, &clip);
    end(s.dirty(), true);
}

void Plugin::patBlt(Screen &s, const UiPatBltOrder &order, const UiClipRect &clip) {
    begin(UI_SLOT_PAT_BLT, s.dirty());
    fn<UiPatBltFn>(UI_SLOT_PAT_BLT)(&s.surface, &order, &clip);
    end(s.dirty(), true);
}

void Plugin::scrBlt(Screen &s, const UiScrBltOrder &order, const UiClipRect &clip) {
    begin(UI_SLOT_SCR_BLT, s.dirty());
    fn<UiScrBltFn>(UI_SLOT_SCR_BLT)(&s.surface, &order, &clip);
    end(s.dirty(), true);
}

void Plugin::drawLine(Screen &s, const UiLineOrder &order, const UiClipRect &clip) {
    begin(UI_SLOT_DRAW_LINE, s.dirty());
    fn<UiDrawLineFn>(UI_SLOT_DRAW_LINE)(&s.surface, &order, &clip);
    end(s.dirty(), true);
}

void Plugin::opaqueRect(Screen &s, const UiOpaqueRectOrder &order, const UiClipRect &clip) {
    begin(UI_SLOT_OPAQUE_RECT, s.dirty());
    fn<UiOpaqueRectFn>(UI_SLOT_OPAQUE_RECT)(&s.surface, &order, &clip);
    end(s.dirty(), true);
}

void Plugin::glyphIndex(Screen &s, const UiGlyphIndexOrder &order, const UiClipRect &clip) {
    begin(UI_SLOT_GLYPH_INDEX, s.dirty());
    fn<UiGlyphIndexFn>(UI_SLOT_GLYPH_INDEX)(&s.surface, &order, &clip);
    end(s.dirty(), true);
}

void Plugin::fastGlyph(Screen &s, const UiFastGlyphOrder &order, const UiClipRect &clip) {
    begin(UI_SLOT_FAST_GLYPH, s.dirty());
    fn<UiFastGlyphFn>(UI_SLOT_FAST_GLYPH)(&s.surface, &order, &clip);
    end(s.dirty(), true);
}

bool Plugin::decodeBitmap(int width, int height, const std::vector<uint8_t> &data, bool compressed, uint32_t *dst) {
    begin(UI_SLOT_DECODE_BITMAP, nullptr);
    const int32_t ok = fn<UiDecodeBitmapFn>(UI_SLOT_DECODE_BITMAP)(width, height, data.data(), int32_t(data.size()),
                                                                   compressed ? 1 : 0, dst);
    end(nullptr, ok == 1);
    return ok == 1;
}

void Plugin::memBlt(Screen &s, const UiMemBltOrder &order, const UiClipRect &clip) {
    begin(UI_SLOT_MEM_BLT, s.dirty());
    fn<UiMemBltFn>(UI_SLOT_MEM_BLT)(&s.surface, &order, &clip);
    end(s.dirty(), true);
}

void Plugin::setSourceBytesPerPixel4() {
    begin(UI_SLOT_SET_SOURCE_BYTES_PER_PIXEL_4, nullptr);
    fn<UiSetSourceBytesPerPixel4Fn>(UI_SLOT_SET_SOURCE_BYTES_PER_PIXEL_4)();
    end(nullptr, true);
}

void Plugin::fillBufferRect(imgbuf *image, dirtybuf *dirty, const UiRect &rect, uint32_t colour) {
    begin(UI_SLOT_FILL_BUFFER_RECT, dirty);
    fn<UiFillBufferRectFn>(UI_SLOT_FILL_BUFFER_RECT)(image, dirty, &rect, colour);
    end(dirty, true);
}

bool Plugin::drawChar8x16(imgbuf *image, dirtybuf *dirty, int x, int y, const uint8_t *cell, uint32_t colour) {
    begin(UI_SLOT_DRAW_CHAR_8X16, dirty);
    const bool ok = fn<UiDrawChar8x16Fn>(UI_SLOT_DRAW_CHAR_8X16)(image, dirty, x, y, cell, colour);
    end(dirty, ok);
    return ok;
}

void Plugin::hLine(imgbuf *image, dirtybuf *dirty, int x, int y, int length, uint32_t colour) {
    begin(UI_SLOT_H_LINE, dirty);
    fn<UiHLineFn>(UI_SLOT_H_LINE)(image, dirty, x, y, length, colour);
    end(dirty, true);
}

void Plugin::vLine(imgbuf *image, dirtybuf *dirty, int x, int y, int length, uint32_t colour) {
    begin(UI_SLOT_V_LINE, dirty);
    fn<UiVLineFn>(UI_SLOT_V_LINE)(image, dirty, x, y, length, colour);
    end(dirty, true);
}

void Plugin::setSourceByteOrder(uint8_t order) {
    begin(UI_SLOT_SET_SOURCE_BYTE_ORDER, nullptr);
    fn<UiSetSourceByteOrderFn>(UI_SLOT_SET_SOURCE_BYTE_ORDER)(order);
    end(nullptr, true);
}

bool Plugin::putPixels(Screen &s, const UiRect &rect, const uint8_t *src) {
    begin(UI_SLOT_PUT_PIXELS, s.dirty());
    const bool ok = fn<UiPutPixelsFn>(UI_SLOT_PUT_PIXELS)(s.image(), s.dirty(), &rect, src);
    end(s.dirty(), ok);
    return ok;
}

bool Plugin::copyRect(Screen &s, const UiRect &dst, int srcLeft, int srcTop) {
    begin(UI_SLOT_COPY_RECT, s.dirty());
    const bool ok = fn<UiCopyRectFn>(UI_SLOT_COPY_RECT)(s.image(), s.dirty(), &dst, srcLeft, srcTop);
    end(s.dirty(), ok);
    return ok;
}

int32_t Plugin::zrleTile(int subencoding, UiTileStream &tile) {
    int slot;
    if (subencoding == 0) slot = UI_SLOT_ZRLE_RAW_TILE;
    else if (subencoding == 1) slot = UI_SLOT_ZRLE_SOLID_TILE;
    else if (subencoding >= 2 && subencoding <= 16) slot = UI_SLOT_ZRLE_PACKED_PALETTE_TILE;
    else if (subencoding == 128) slot = UI_SLOT_ZRLE_PLAIN_RLE_TILE;
    else if (subencoding >= 130) slot = UI_SLOT_ZRLE_PALETTE_RLE_TILE;
    else return -1;  // 17-127 and 129 are not defined
    begin(slot, tile.dirty);
    int32_t result;
    switch (slot) {
        case UI_SLOT_ZRLE_RAW_TILE: result = fn<UiZrleRawTileFn>(slot)(&tile); break;
        case UI_SLOT_ZRLE_SOLID_TILE: result = fn<UiZrleSolidTileFn>(slot)(&tile); break;
        case UI_SLOT_ZRLE_PACKED_PALETTE_TILE: result = fn<UiZrlePackedPaletteTileFn>(slot)(&tile, subencoding); break;
        case UI_SLOT_ZRLE_PLAIN_RLE_TILE: result = fn<UiZrlePlainRleTileFn>(slot)(&tile); break;
        default: result = fn<UiZrlePaletteRleTileFn>(slot)(&tile, subencoding); break;
    }
    end(tile.dirty, result == 1);
    return result;
}

void Plugin::importImage32(UiImage32Record &record, const uint8_t *src, int rowLength) {
    begin(UI_SLOT_IMPORT_IMAGE32, nullptr);
    fn<UiImportImage32Fn>(UI_SLOT_IMPORT_IMAGE32)(&record, src, rowLength);
    end(nullptr, true);
}

bool Plugin::hextileRect(Screen &s, const UiRect &rect, UiReadFn read) {
    begin(UI_SLOT_HEXTILE_RECT, s.dirty());
    const bool ok = fn<UiHextileRectFn>(UI_SLOT_HEXTILE_RECT)(s.image(), s.dirty(), &rect, read) == 1;
    end(s.dirty(), ok);
    return ok;
}

}  // namespace demo
