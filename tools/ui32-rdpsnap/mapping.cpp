#include "mapping.h"

#include <algorithm>
#include <cstring>

namespace rdpsnap {

// Hatches 0-5: horizontal, vertical, forward diagonal, backward diagonal,
// cross, diagonal cross, drawn as 0 bits on a background of 1 bits.
const uint8_t Mapper::kHatchPatterns[48] = {
    0xff, 0xff, 0xff, 0x00, 0xff, 0xff, 0xff, 0xff,  // ----
    0xf7, 0xf7, 0xf7, 0xf7, 0xf7, 0xf7, 0xf7, 0xf7,  // ||||
    0x7f, 0xbf, 0xdf, 0xef, 0xf7, 0xfb, 0xfd, 0xfe,  // \\\\ (top-left to bottom-right)
    0xfe, 0xfd, 0xfb, 0xf7, 0xef, 0xdf, 0xbf, 0x7f,  // ////
    0xf7, 0xf7, 0xf7, 0x00, 0xf7, 0xf7, 0xf7, 0xf7,  // ++++
    0x7e, 0xbd, 0xdb, 0xe7, 0xe7, 0xdb, 0xbd, 0x7e,  // xxxx
};

// A ternary raster operation is the truth table of (P, S, D) with bit
// P*4 + S*2 + D.  ui32's table index is the truth table of a binary operation
// with bit X*2 + D, X being its one source operand.
int32_t ropOfDestination(uint32_t rop3) {
    return rop3 == 0x00 || rop3 == 0x55 || rop3 == 0xAA || rop3 == 0xFF ? int32_t(rop3 & 15) : -1;
}

int32_t ropOfSource(uint32_t rop3) {
    return rop3 <= 0xFF && (rop3 >> 4) == (rop3 & 15) ? int32_t(rop3 & 15) : -1;
}

int32_t ropOfPattern(uint32_t rop3) {
    return rop3 <= 0xFF && ((rop3 >> 2) & 0x33) == (rop3 & 0x33) ? int32_t((rop3 & 3) | ((rop3 >> 2) & 12)) : -1;
}

void orderColour(uint32_t colour, int32_t (&words)[3]) {
    words[0] = int32_t(colour & 0xff);
    words[1] = int32_t((colour >> 8) & 0xff);
    words[2] = int32_t((colour >> 16) & 0xff);
}

bool Mapper::fail(std::string message) {
    error_ = std::move(message);
    return false;
}

bool Mapper::skip(const char *reason) {
    ++skipped_[reason];
    return true;
}

// --- Bitmap updates --------------------------------------------------------
// Each rectangle maps word for word onto UiBitmapData; FreeRDP has already
// stripped the compression header, so bit 0 of flags is its `compressed`.
// The codec is chosen by the session depth that srn_get was given (3 bytes:
// interleaved, 4: planar), so a rectangle of any other depth is refused.
bool Mapper::bitmapUpdate(const BITMAP_UPDATE &update) {
    for (uint32_t i = 0; i < update.number; ++i) {
        const BITMAP_DATA &r = update.rectangles[i];
        if (r.bitsPerPixel != bpp_)
            return fail("a " + std::to_string(r.bitsPerPixel) + "-bit bitmap update in a " + std::to_string(bpp_) +
                        "-bit session");
        if (r.bitmapLength > 0 && r.bitmapDataStream == nullptr) return fail("a bitmap update without its data");
        ++bitmaps_[!r.compressed ? "raw" : bpp_ == 32 ? "planar" : "interleaved"];
        const UiBitmapData record{int32_t(r.destLeft), int32_t(r.destTop),   int32_t(r.destRight),
                                  int32_t(r.destBottom), int32_t(r.width),   int32_t(r.height),
                                  int32_t(r.bitsPerPixel), r.compressed ? 1u : 0u, int32_t(r.bitmapLength),
                                  r.bitmapDataStream};
        canvas_.call<UiBitmapUpdateFn>(UI_SLOT_BITMAP_UPDATE, canvas_.surface(), &record);
    }
    return true;
}

// --- Blits ---------------------------------------------------------------
// Rectangles are left, top, width, height as sent; the rop word is ui32's
// table index derived from the ternary code; the clip is the order's bounds.
bool Mapper::dstBlt(const DSTBLT_ORDER &o) {
    const int32_t rop = ropOfDestination(o.bRop);
    if (rop < 0) return skip("DstBlt raster operation");
    const UiDstBltOrder record{o.nLeftRect, o.nTopRect, o.nWidth, o.nHeight, rop};
    canvas_.call<UiDstBltFn>(UI_SLOT_DST_BLT, canvas_.surface(), &record, &canvas_.clip());
    return true;
}

bool Mapper::scrBlt(const SCRBLT_ORDER &o) {
    const int32_t rop = ropOfSource(o.bRop);
    if (rop < 0) return skip("ScrBlt raster operation");
    const UiScrBltOrder record{o.nLeftRect, o.nTopRect, o.nWidth, o.nHeight, rop, o.nXSrc, o.nYSrc};
    canvas_.call<UiScrBltFn>(UI_SLOT_SCR_BLT, canvas_.surface(), &record, &canvas_.clip());
    return true;
}

// MemBlt: cacheId and cacheIndex name a bitmap that storeBitmap decoded once
// with decodeBitmap; its size and bottom-up pixels fill words 9-11.
bool Mapper::memBlt(const MEMBLT_ORDER &o) {
    const CachedBitmap *bitmap = caches_.bitmap(o.cacheId, o.cacheIndex, error_);
    if (bitmap == nullptr) return false;
    const int32_t rop = ropOfSource(o.bRop);
    if (rop < 0) return skip("MemBlt raster operation");
    const UiMemBltOrder record{0,       o.nLeftRect, o.nTopRect,     o.nWidth,       o.nHeight,
                               rop,     o.nXSrc,     o.nYSrc,        0,              bitmap->width,
                               bitmap->height,       bitmap->pixels.data()};
    canvas_.call<UiMemBltFn>(UI_SLOT_MEM_BLT, canvas_.surface(), &record, &canvas_.clip());
    return true;
}

// --- Fills and lines ---------------------------------------------------------
bool Mapper::opaqueRect(const OPAQUE_RECT_ORDER &o) {
    UiOpaqueRectOrder record{o.nLeftRect, o.nTopRect, o.nWidth, o.nHeight, 0, 0, 0};
    int32_t rgb[3];
    orderColour(o.color, rgb);
    record.red = rgb[0], record.green = rgb[1], record.blue = rgb[2];
    canvas_.call<UiOpaqueRectFn>(UI_SLOT_OPAQUE_RECT, canvas_.surface(), &record, &canvas_.clip());
    return true;
}

// Each delta rectangle (already absolute in FreeRDP's array, entries 0 to
// numRectangles - 1) becomes one OpaqueRect in the order's colour.
bool Mapper::multiOpaqueRect(const MULTI_OPAQUE_RECT_ORDER &o) {
    if (o.numRectangles > 45) return fail("MultiOpaqueRect with " + std::to_string(o.numRectangles) + " rectangles");
    for (uint32_t i = 0; i < o.numRectangles; ++i) {
        const DELTA_RECT &r = o.rectangles[i];
        const OPAQUE_RECT_ORDER one{r.left, r.top, r.width, r.height, o.color};
        opaqueRect(one);
    }
    return true;
}

// LineTo: bRop2 is a binary raster operation code 1-16, ui32's index + 1.
// ui32 draws one-pixel solid pens; wider or styled pens are skipped.
bool Mapper::lineTo(const LINE_TO_ORDER &o) {
    if (o.bRop2 < 1 || o.bRop2 > 16) return fail("LineTo with raster operation " + std::to_string(o.bRop2));
    if (o.penWidth > 1 || o.penStyle != 0) return skip("LineTo pen wider than 1 or styled");
    UiLineOrder record{o.nXStart, o.nYStart, o.nXEnd, o.nYEnd, int32_t(o.bRop2 - 1), {}};
    orderColour(o.penColor, record.penColor);
    canvas_.call<UiDrawLineFn>(UI_SLOT_DRAW_LINE, canvas_.surface(), &record, &canvas_.clip());
    return true;
}

// PatBlt: BackColor and ForeColor keep their names (ui32 paints 1 bits of a
// mono pattern in backColor, a solid brush in foreColor).  The brush origin
// anchors pattern pixel (0, 0): the pixel at x takes column (x - org) mod 8,
// while ui32 takes (org' + x) mod 8, so org' = -org mod 8.  Styles: solid 0,
// hatched 2 (hatch in brushBytes[0]), pattern 3 (rows in brushBytes), cached
// mono 0x81 (brushData = 8 rows) and cached colour 0x85 (brushData = 64
// pixels).  ui32 lays a colour brush from the clipped rectangle's top-left
// corner with plain copy, so the client rotates the pattern to the origin
// and only PATCOPY colour brushes are drawn.
bool Mapper::patBlt(const PATBLT_ORDER &o) {
    const int32_t rop = ropOfPattern(o.bRop);
    if (rop < 0) return skip("PatBlt raster operation");
    UiPatBltOrder record{o.nLeftRect, o.nTopRect, o.nWidth, o.nHeight, rop, {}, {}, 0, 0, 0, {}, nullptr};
    orderColour(o.backColor, record.backColor);
    orderColour(o.foreColor, record.foreColor);
    record.brushOrgX = int32_t((8 - (o.brush.x & 7)) & 7);
    record.brushOrgY = int32_t((8 - (o.brush.y & 7)) & 7);
    uint32_t rotated[64];
    if (o.brush.style & 0x80) {
        const CachedBrush *brush = caches_.brush(o.brush.index, error_);
        if (brush == nullptr) return false;
        record.brushStyle = brush->colour ? 0x85 : 0x81;
        record.brushData = brush->mono;
        if (brush->colour) {
            if (rop != 12) return skip("PatBlt colour brush with a raster operation");
            const UiClipRect &clip = canvas_.clip();
            const int32_t left = std::max(o.nLeftRect, clip.left), top = std::max(o.nTopRect, clip.top);
            for (int32_t r = 0; r < 8; ++r)
                for (int32_t c = 0; c < 8; ++c)
                    rotated[r * 8 + c] =
                        brush->pixels[((r + top - int32_t(o.brush.y)) & 7) * 8 + ((c + left - int32_t(o.brush.x)) & 7)];
            record.brushData = reinterpret_cast<const uint8_t *>(rotated);
        }
    } else if (o.brush.style == 0 || o.brush.style == 2 || o.brush.style == 3) {
        record.brushStyle = int32_t(o.brush.style);
        if (o.brush.style == 2) {
            if (o.brush.hatch > 5) return fail("PatBlt with hatch " + std::to_string(o.brush.hatch));
            record.brushBytes[0] = uint8_t(o.brush.hatch);
        }
        if (o.brush.style == 3) std::memcpy(record.brushBytes, o.brush.p8x8, 8);
    } else {
        return skip("PatBlt brush style");
    }
    canvas_.call<UiPatBltFn>(UI_SLOT_PAT_BLT, canvas_.surface(), &record, &canvas_.clip());
    return true;
}

// --- Text ------------------------------------------------------------------
// GlyphIndex, FastIndex and FastGlyph keep their fields in order.  The text
// colour is the order's BackColor and the opaque rectangle's the ForeColor;
// bk and op rectangles, x, y (-32768 sentinels included), flAccel,
// ulCharInc and the raw glyph string (fragments are ui32's business) pass
// unchanged; glyphCache points at the cache the order names.
bool Mapper::fillGlyphText(UiGlyphIndexOrder &record, uint32_t cacheId, uint32_t backColor, uint32_t foreColor,
                           const int32_t (&rects)[8], int32_t x, int32_t y, uint32_t cbData, const uint8_t *data) {
    record.glyphCache = caches_.glyphCache(cacheId, error_);
    if (record.glyphCache == nullptr) return false;
    if (cbData > 255) return fail("a glyph string of " + std::to_string(cbData) + " bytes");
    record.cacheId = int32_t(cacheId);
    orderColour(backColor, record.textColor);
    orderColour(foreColor, record.opaqueColor);
    std::memcpy(&record.bkLeft, rects, sizeof rects);
    record.x = x, record.y = y;
    record.cbData = int32_t(cbData);
    std::memcpy(record.rgbData, data, cbData);
    return true;
}

bool Mapper::glyphIndex(const GLYPH_INDEX_ORDER &o) {
    UiGlyphIndexOrder record{};
    const int32_t rects[8] = {o.bkLeft, o.bkTop, o.bkRight, o.bkBottom, o.opLeft, o.opTop, o.opRight, o.opBottom};
    if (!fillGlyphText(record, o.cacheId, o.backColor, o.foreColor, rects, o.x, o.y, o.cbData, o.data)) return false;
    record.flAccel = int32_t(o.flAccel), record.ulCharInc = int32_t(o.ulCharInc);
    record.fOpRedundant = int32_t(o.fOpRedundant);
    record.opRectExplicit = 1;
    canvas_.call<UiGlyphIndexFn>(UI_SLOT_GLYPH_INDEX, canvas_.surface(), &record, &canvas_.clip());
    return true;
}

bool Mapper::fastIndex(const FAST_INDEX_ORDER &o) {
    UiGlyphIndexOrder record{};
    const int32_t rects[8] = {o.bkLeft, o.bkTop, o.bkRight, o.bkBottom, o.opLeft, o.opTop, o.opRight, o.opBottom};
    if (!fillGlyphText(record, o.cacheId, o.backColor, o.foreColor, rects, o.x, o.y, o.cbData, o.data)) return false;
    record.flAccel = int32_t(o.flAccel), record.ulCharInc = int32_t(o.ulCharInc);
    record.opRectExplicit = 0;
    canvas_.call<UiGlyphIndexFn>(UI_SLOT_GLYPH_INDEX, canvas_.surface(), &record, &canvas_.clip());
    return true;
}

// FastGlyph: data[0] is the cache index; with cbData > 1 the order also
// carries the glyph, which is cached at that index before drawing.
bool Mapper::fastGlyph(const FAST_GLYPH_ORDER &o) {
    if (o.cbData < 1) return fail("FastGlyph without a glyph index");
    if (o.cbData > 1) {
        const GLYPH_DATA_V2 &g = o.glyphData;
        if (!caches_.storeGlyph(o.cacheId, o.data[0], g.x, g.y, g.cx, g.cy, g.aj, g.cb, error_)) return false;
    }
    UiFastGlyphOrder record{};
    record.glyphCache = caches_.glyphCache(o.cacheId, error_);
    if (record.glyphCache == nullptr) return false;
    record.cacheId = int32_t(o.cacheId), record.flAccel = int32_t(o.flAccel), record.ulCharInc = int32_t(o.ulCharInc);
    orderColour(o.backColor, record.textColor);
    orderColour(o.foreColor, record.opaqueColor);
    const int32_t rects[8] = {o.bkLeft, o.bkTop, o.bkRight, o.bkBottom, o.opLeft, o.opTop, o.opRight, o.opBottom};
    std::memcpy(&record.bkLeft, rects, sizeof rects);
    record.x = o.x, record.y = o.y;
    record.cbData = int32_t(std::min<uint32_t>(o.cbData, 256));
    record.rgbData[0] = o.data[0];
    canvas_.call<UiFastGlyphFn>(UI_SLOT_FAST_GLYPH, canvas_.surface(), &record, &canvas_.clip());
    return true;
}

// --- Caches --------------------------------------------------------------
// Bitmaps are decoded once, when cached, by decodeBitmap (slot 8) into
// width x height pixels in bottom-up row order, the layout memBlt reads.
bool Mapper::storeBitmap(uint32_t cacheId, uint32_t index, uint32_t bpp, uint32_t width, uint32_t height,
                         const uint8_t *data, uint32_t length, bool compressed) {
    if (bpp != bpp_)
        return fail("a " + std::to_string(bpp) + "-bit cached bitmap in a " + std::to_string(bpp_) + "-bit session");
    if (width == 0 || height == 0 || uint64_t(width) * height > uint64_t(Caches::kMaxBitmapPixels))
        return fail("a cached bitmap of " + std::to_string(width) + "x" + std::to_string(height));
    if (length > 0 && data == nullptr) return fail("a cached bitmap without its data");
    CachedBitmap *slot = caches_.bitmapSlot(cacheId, index, error_);
    if (slot == nullptr) return false;
    std::vector<uint32_t> pixels(size_t(width) * height);
    ++bitmaps_[!compressed ? "cached raw" : bpp_ == 32 ? "cached planar" : "cached interleaved"];
    if (!canvas_.call<UiDecodeBitmapFn>(UI_SLOT_DECODE_BITMAP, int32_t(width), int32_t(height), data,
                                        int32_t(length), uint8_t(compressed), pixels.data()))
        return fail("cached bitmap " + std::to_string(cacheId) + "/" + std::to_string(index) + " does not decode");
    *slot = CachedBitmap{int32_t(width), int32_t(height), std::move(pixels)};
    return true;
}

bool Mapper::cacheBitmap(const CACHE_BITMAP_ORDER &o) {
    return storeBitmap(o.cacheId, o.cacheIndex, o.bitmapBpp, o.bitmapWidth, o.bitmapHeight, o.bitmapDataStream,
                       o.bitmapLength, o.compressed);
}

bool Mapper::cacheBitmapV2(const CACHE_BITMAP_V2_ORDER &o) {
    return storeBitmap(o.cacheId, o.cacheIndex, o.bitmapBpp, o.bitmapWidth, o.bitmapHeight, o.bitmapDataStream,
                       o.bitmapLength, o.compressed);
}

bool Mapper::cacheGlyph(const CACHE_GLYPH_ORDER &o) {
    if (o.cGlyphs > 256) return fail("a glyph cache order with " + std::to_string(o.cGlyphs) + " glyphs");
    for (uint32_t i = 0; i < o.cGlyphs; ++i) {
        const GLYPH_DATA &g = o.glyphData[i];
        if (!caches_.storeGlyph(o.cacheId, g.cacheIndex, g.x, g.y, g.cx, g.cy, g.aj, g.cb, error_)) return false;
    }
    return true;
}

bool Mapper::cacheGlyphV2(const CACHE_GLYPH_V2_ORDER &o) {
    if (o.cGlyphs > 256) return fail("a glyph cache order with " + std::to_string(o.cGlyphs) + " glyphs");
    for (uint32_t i = 0; i < o.cGlyphs; ++i) {
        const GLYPH_DATA_V2 &g = o.glyphData[i];
        if (!caches_.storeGlyph(o.cacheId, g.cacheIndex, g.x, g.y, g.cx, g.cy, g.aj, g.cb, error_)) return false;
    }
    return true;
}

// Brushes: 1 bpp is 8 rows of 8 bits; 24 and 32 bpp are 64 pixels of 3 or 4
// bytes, blue first, which become frame-buffer colours.  Other depths
// (palette and 16-bit) are not announced and are refused.
bool Mapper::cacheBrush(const CACHE_BRUSH_ORDER &o) {
    if (o.cx != 8 || o.cy != 8) return fail("a " + std::to_string(o.cx) + "x" + std::to_string(o.cy) + " brush");
    const uint32_t bytes = o.bpp == 1 ? 1 : o.bpp / 8;
    if ((o.bpp != 1 && o.bpp != 24 && o.bpp != 32) || (o.bpp == 1 ? 8 : 64 * bytes) > sizeof o.data)
        return fail("a " + std::to_string(o.bpp) + "-bit brush");
    CachedBrush *brush = caches_.brushSlot(o.index, error_);
    if (brush == nullptr) return false;
    brush->colour = o.bpp != 1;
    if (!brush->colour) {
        std::memcpy(brush->mono, o.data, 8);
        return true;
    }
    for (int i = 0; i < 64; ++i) {
        const uint8_t *p = o.data + i * bytes;
        brush->pixels[i] = uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16;
    }
    return true;
}

}  // namespace rdpsnap
