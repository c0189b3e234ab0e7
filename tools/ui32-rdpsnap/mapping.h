// The mapping from what FreeRDP decodes (primary orders, bitmap updates and
// cache orders) to ui32 records and slot calls.  FreeRDP only parses the
// wire format; every check that the values make sense for the frame buffer
// and the caches this client announced is made here.  A false result means
// the server sent something malformed, and error() says what.
#pragma once

#include <freerdp/freerdp.h>

#include <cstdint>
#include <map>
#include <string>

#include "caches.h"
#include "canvas.h"

namespace rdpsnap {

class Mapper {
public:
    // bitsPerPixel is the session depth, 24 or 32: the only depth of bitmaps
    // and brushes that can be drawn (ui32's sourceBytesPerPixel 3 or 4).
    Mapper(Canvas &canvas, Caches &caches, uint32_t bitsPerPixel)
        : canvas_(canvas), caches_(caches), bpp_(bitsPerPixel) {}

    bool bitmapUpdate(const BITMAP_UPDATE &update);
    bool dstBlt(const DSTBLT_ORDER &order);
    bool patBlt(const PATBLT_ORDER &order);
    bool scrBlt(const SCRBLT_ORDER &order);
    bool opaqueRect(const OPAQUE_RECT_ORDER &order);
    bool multiOpaqueRect(const MULTI_OPAQUE_RECT_ORDER &order);
    bool lineTo(const LINE_TO_ORDER &order);
    bool memBlt(const MEMBLT_ORDER &order);
    bool glyphIndex(const GLYPH_INDEX_ORDER &order);
    bool fastIndex(const FAST_INDEX_ORDER &order);
    bool fastGlyph(const FAST_GLYPH_ORDER &order);

    bool cacheBitmap(const CACHE_BITMAP_ORDER &order);
    bool cacheBitmapV2(const CACHE_BITMAP_V2_ORDER &order);
    bool cacheGlyph(const CACHE_GLYPH_ORDER &order);
    bool cacheGlyphV2(const CACHE_GLYPH_V2_ORDER &order);
    bool cacheBrush(const CACHE_BRUSH_ORDER &order);

    const std::string &error() const { return error_; }
    // Bitmap rectangles by codec, and orders that were well formed but ask for
    // something ui32 cannot draw (skipped, by reason).
    const std::map<std::string, uint64_t> &bitmaps() const { return bitmaps_; }
    const std::map<std::string, uint64_t> &skipped() const { return skipped_; }

    // The six 8x8 hatch patterns handed to srn_get, in ui32's convention:
    // 1 bits take the order's BackColor, so the hatch lines are the 0 bits.
    static const uint8_t kHatchPatterns[48];

private:
    bool fail(std::string message);
    bool skip(const char *reason);
    bool storeBitmap(uint32_t cacheId, uint32_t index, uint32_t bpp, uint32_t width, uint32_t height,
                     const uint8_t *data, uint32_t length, bool compressed);
    bool fillGlyphText(UiGlyphIndexOrder &record, uint32_t cacheId, uint32_t backColor, uint32_t foreColor,
                       const int32_t (&rects)[8], int32_t x, int32_t y, uint32_t cbData, const uint8_t *data);

    Canvas &canvas_;
    Caches &caches_;
    uint32_t bpp_;
    std::string error_;
    std::map<std::string, uint64_t> bitmaps_, skipped_;
};

// Raster operations: the index (0-15) of ui32's table for a ternary raster
// operation code that depends only on the destination, on source and
// destination, or on pattern and destination; -1 when the code needs more.
int32_t ropOfDestination(uint32_t rop3);
int32_t ropOfSource(uint32_t rop3);
int32_t ropOfPattern(uint32_t rop3);

// An order colour as FreeRDP hands it (the three wire bytes, first byte
// lowest) as ui32's three colour words, first word red.
void orderColour(uint32_t colour, int32_t (&words)[3]);

}  // namespace rdpsnap
