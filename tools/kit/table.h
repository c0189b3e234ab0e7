// A client's view of ui32: the drawing table filled by srn_get, with one
// typed call per slot, and the module loaded by path as clients do.  Shared by
// the tests, fuzz targets, benchmarks and the demo.
#pragma once

#include <string>

#include "ui32.h"

namespace kit {

using SrnGet = void (*)(UiDrawTable, UiLogFn, const UiConfig *);

// Horizontal, vertical, forward diagonal, backward diagonal, cross and
// diagonal cross, 8 bytes each, MSB leftmost.
extern const uint8_t kHatchPatterns[48];

// dlopen(path) and its srn_get, or null with a message in `error`.
SrnGet openModule(const std::string &path, std::string &error);

// A log callback that prints each report to stderr ("ui32: ERROR ui 1250:
// text") and counts it; the count since the process started.
int printReport(const char *level, const char *module, int site, const char *format, ...);
int printedReports();

struct Table {
    UiDrawTable slots{};

    void get(SrnGet srnGet, UiLogFn log, const UiConfig *config) { srnGet(slots, log, config); }
    // Loads the module by path as a client does (it stays loaded: the library
    // keeps its fragment store for the process) and fills every slot; false
    // with `error` set otherwise.
    bool load(const std::string &path, UiLogFn log, const UiConfig &config, std::string &error);
    template <typename Fn>
    Fn slot(int index) const { return reinterpret_cast<Fn>(slots[index]); }

    void bitmapUpdate(UiSurface &s, const UiBitmapData &b) const { slot<UiBitmapUpdateFn>(UI_SLOT_BITMAP_UPDATE)(&s, &b); }
    void dstBlt(UiSurface &s, const UiDstBltOrder &o, const UiClipRect &c) const { slot<UiDstBltFn>(UI_SLOT_DST_BLT)(&s, &o, &c); }
    void patBlt(UiSurface &s, const UiPatBltOrder &o, const UiClipRect &c) const { slot<UiPatBltFn>(UI_SLOT_PAT_BLT)(&s, &o, &c); }
    void scrBlt(UiSurface &s, const UiScrBltOrder &o, const UiClipRect &c) const { slot<UiScrBltFn>(UI_SLOT_SCR_BLT)(&s, &o, &c); }
    void drawLine(UiSurface &s, const UiLineOrder &o, const UiClipRect &c) const { slot<UiDrawLineFn>(UI_SLOT_DRAW_LINE)(&s, &o, &c); }
    void opaqueRect(UiSurface &s, const UiOpaqueRectOrder &o, const UiClipRect &c) const {
        slot<UiOpaqueRectFn>(UI_SLOT_OPAQUE_RECT)(&s, &o, &c);
    }
    void glyphIndex(UiSurface &s, const UiGlyphIndexOrder &o, const UiClipRect &c) const {
        slot<UiGlyphIndexFn>(UI_SLOT_GLYPH_INDEX)(&s, &o, &c);
    }
    void fastGlyph(UiSurface &s, const UiFastGlyphOrder &o, const UiClipRect &c) const {
        slot<UiFastGlyphFn>(UI_SLOT_FAST_GLYPH)(&s, &o, &c);
    }
    int32_t decodeBitmap(int32_t w, int32_t h, const uint8_t *data, int32_t length, bool compressed, uint32_t *dst) const {
        return slot<UiDecodeBitmapFn>(UI_SLOT_DECODE_BITMAP)(w, h, data, length, compressed, dst);
    }
    void memBlt(UiSurface &s, const UiMemBltOrder &o, const UiClipRect &c) const { slot<UiMemBltFn>(UI_SLOT_MEM_BLT)(&s, &o, &c); }
    void setSourceBytesPerPixel4() const { slot<UiSetSourceBytesPerPixel4Fn>(UI_SLOT_SET_SOURCE_BYTES_PER_PIXEL_4)(); }
    void fillBufferRect(imgbuf *i, dirtybuf *d, const UiRect &r, uint32_t colour) const {
        slot<UiFillBufferRectFn>(UI_SLOT_FILL_BUFFER_RECT)(i, d, &r, colour);
    }
    bool drawChar8x16(imgbuf *i, dirtybuf *d, int32_t x, int32_t y, const uint8_t *cell, uint32_t colour) const {
        return slot<UiDrawChar8x16Fn>(UI_SLOT_DRAW_CHAR_8X16)(i, d, x, y, cell, colour);
    }
    void hLine(imgbuf *i, dirtybuf *d, int32_t x, int32_t y, int32_t n, uint32_t colour) const {
        slot<UiHLineFn>(UI_SLOT_H_LINE)(i, d, x, y, n, colour);
    }
    void vLine(imgbuf *i, dirtybuf *d, int32_t x, int32_t y, int32_t n, uint32_t colour) const {
        slot<UiVLineFn>(UI_SLOT_V_LINE)(i, d, x, y, n, colour);
    }
    void setSourceByteOrder(uint8_t order) const { slot<UiSetSourceByteOrderFn>(UI_SLOT_SET_SOURCE_BYTE_ORDER)(order); }
    bool putPixels(imgbuf *i, dirtybuf *d, const UiRect &r, const uint8_t *src) const {
        return slot<UiPutPixelsFn>(UI_SLOT_PUT_PIXELS)(i, d, &r, src);
    }
    bool copyRect(imgbuf *i, dirtybuf *d, const UiRect &r, int32_t x, int32_t y) const {
        return slot<UiCopyRectFn>(UI_SLOT_COPY_RECT)(i, d, &r, x, y);
    }
    // One ZRLE/TRLE tile body by its sub-encoding: 0 raw, 1 solid, 2-16
    // packed palette, 128 plain run-length, 130-255 palette run-length.
    int32_t zrleTile(int32_t subencoding, UiTileStream &t) const;
    void importImage32(UiImage32Record &r, const uint8_t *src, int32_t rowLength) const {
        slot<UiImportImage32Fn>(UI_SLOT_IMPORT_IMAGE32)(&r, src, rowLength);
    }
    int32_t hextileRect(imgbuf *i, dirtybuf *d, const UiRect &r, UiReadFn read) const {
        return slot<UiHextileRectFn>(UI_SLOT_HEXTILE_RECT)(i, d, &r, read);
    }
};

}  // namespace kit
