/*
 * ui32.h - the C interface of the ui32 drawing back-end (C99 and C++).
 *
 * A remote-desktop client loads ui32.so by path, looks up srn_get and calls it
 * with a UiDrawTable, its log callback and a UiConfig; from then on it reaches
 * the library through the 25 slots of that table, one call at a time.  Every
 * record is laid out by the client and read (or, where said, written) in place
 * during one call; the library keeps nothing after a call except its
 * process-wide settings and the 64 KiB glyph fragment store.
 *
 * On 32-bit targets every record is exactly a sequence of 32-bit little-endian
 * words (checked at the end of this file); on 64-bit hosts the same structs
 * take their natural layout.
 *
 * Colours: a pixel is a 32-bit word with the colour in bits 0-23; every colour
 * the library builds has bits 24-31 zero.  An order's colour arrives as three
 * words, the first to bits 16-23, the third to bits 0-7 (not masked).
 *
 * Reports: a failed check calls the log callback once with level "ERROR", a
 * module, a fixed site number and a printf format with its arguments; most
 * use "INTERNAL ERROR. Please, contact Nelvox tech support.".  A failed image
 * check reports "imgbuf" 99 (83 for a source) and then the entry point's "ui"
 * site.  After a failed check nothing more is drawn; a failed tile marking
 * ("dirtybuf" 114) is reported and the drawing stands.  docs/reports.md lists
 * every report; docs/behaviour.md the choices made for inconsistent records.
 * Coordinates wrap as 32-bit words and every rectangle is bounds-checked
 * before a pixel is touched: no input makes the library read or write outside
 * the buffers it was handed.
 */
#ifndef UI32_H
#define UI32_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The client's report function; its result is ignored.  Null: no reports. */
typedef int (*UiLogFn)(const char *level, const char *module, int site, const char *format, ...);

/* Hextile input (slot 24): deliver exactly `length` bytes into `buffer` and
 * return non-zero, or return 0 when they cannot be delivered. */
typedef int (*UiReadFn)(uint8_t *buffer, int32_t length);

typedef struct UiConfig {
    const uint8_t *hatchPatterns; /* six 8-byte patterns (pattern k at byte 8k), MSB leftmost */
    int32_t sourceBytesPerPixel;  /* bitmap depth of slots 0 and 8: 4 planar, else interleaved */
} UiConfig;

/* Filled by srn_get; convert a slot to its function type below to call it. */
typedef void *UiDrawTable[25];

/* The client's frame buffer: pixel (x, y) is the word at byte y * stride +
 * 4 * x from pixels.  A null pixels yields no pixel address at any offset. */
typedef struct imgbuf {
    uint32_t *pixels;
    uint32_t client1, client2; /* the client's; never touched */
    uint32_t stride;           /* bytes per row */
    uint32_t width;
    uint32_t height;
} imgbuf;

/* One byte per 32x32 tile, row by row (tile (tx, ty) is tiles[ty * columns +
 * tx]).  The library only writes 1 into tiles and changed.  A null tiles is
 * refused like a range outside the map. */
typedef struct dirtybuf {
    uint8_t *tiles;
    uint8_t changed;
    uint8_t changedPad[3];
    int32_t columns; /* also the tile-row pitch in bytes */
    int32_t rows;
} dirtybuf;

/* Drawing context of the clipped orders (slots 0-7, 9). */
typedef struct UiSurface {
    int32_t originX, originY;   /* subtracted from order coordinates when originEnabled */
    uint32_t client2, client3;  /* the client's; not read */
    uint8_t originEnabled;
    uint8_t originEnabledPad[3];
    imgbuf image;
    dirtybuf dirty;
} UiSurface;

typedef struct UiRect { int32_t left, top, width, height; } UiRect;

/* Buffer coordinates, right and bottom inclusive; never translated. */
typedef struct UiClipRect { int32_t left, top, right, bottom; } UiClipRect;

typedef struct UiDstBltOrder { int32_t left, top, width, height, rop; } UiDstBltOrder;

typedef struct UiScrBltOrder { int32_t left, top, width, height, rop, srcLeft, srcTop; } UiScrBltOrder;

/* The bitmap holds bitmapWidth x bitmapHeight pixels stored bottom-up without
 * padding, as decodeBitmap (slot 8) produces them. */
typedef struct UiMemBltOrder {
    int32_t client0;
    int32_t left, top, width, height, rop;
    int32_t srcLeft, srcTop; /* in bitmap coordinates, not translated */
    int32_t client8;
    int32_t bitmapWidth, bitmapHeight;
    const uint32_t *bitmapPixels;
} UiMemBltOrder;

typedef struct UiPatBltOrder {
    int32_t left, top, width, height, rop;
    int32_t backColor[3];     /* pattern 1 bits */
    int32_t foreColor[3];     /* solid brush, pattern 0 bits */
    int32_t brushOrgX, brushOrgY;
    int32_t brushStyle;       /* 0 solid, 2 hatch, 3 pattern, 0x81 cached mono, 0x85 cached colour */
    uint8_t brushBytes[8];    /* style 2: byte 0 the hatch (0-5); style 3: the 8 rows */
    const uint8_t *brushData; /* cached: 8 bytes (mono) or 64 pixel words (colour) */
} UiPatBltOrder;

typedef struct UiOpaqueRectOrder { int32_t left, top, width, height, red, green, blue; } UiOpaqueRectOrder;

typedef struct UiLineOrder { int32_t startX, startY, endX, endY, rop, penColor[3]; } UiLineOrder;

/* A glyph cache entry: this header, then cy rows of (cx + 7) / 8 bytes, MSB
 * leftmost, 1 = foreground. */
typedef struct UiGlyph { int16_t x, y; uint16_t cx, cy; } UiGlyph;

/* Entry i lies at entries + i * (entryDataSize + 8). */
typedef struct UiGlyphCache {
    int32_t entryDataSize;
    int32_t entryCount;
    const uint8_t *entries;
} UiGlyphCache;

typedef struct UiGlyphIndexOrder {
    int32_t cacheId;      /* not read */
    int32_t flAccel;      /* 0x04 vertical, 0x20 advance by glyph width */
    int32_t ulCharInc;
    int32_t fOpRedundant;
    int32_t textColor[3];
    int32_t opaqueColor[3];
    int32_t bkLeft, bkTop, bkRight, bkBottom;
    int32_t opLeft, opTop, opRight, opBottom;
    int32_t x, y;         /* -32768: bkLeft / bkTop */
    int32_t cbData;
    uint8_t rgbData[256];
    const UiGlyphCache *glyphCache;
    uint8_t opRectExplicit; /* non-zero: GlyphIndex form; zero: FastIndex form */
    uint8_t opRectExplicitPad[3];
} UiGlyphIndexOrder;

typedef struct UiFastGlyphOrder {
    int32_t cacheId, flAccel, ulCharInc; /* not read */
    int32_t textColor[3];
    int32_t opaqueColor[3];
    int32_t bkLeft, bkTop, bkRight, bkBottom;
    int32_t opLeft, opTop, opRight, opBottom;
    int32_t x, y;
    int32_t cbData;                      /* not read */
    uint8_t rgbData[256];                /* byte 0: the glyph's index */
    const UiGlyphCache *glyphCache;
} UiFastGlyphOrder;

/* Rows in the data are bottom-up; uncompressed rows are width *
 * sourceBytesPerPixel bytes apart. */
typedef struct UiBitmapData {
    int32_t destLeft, destTop, destRight, destBottom; /* right, bottom inclusive */
    int32_t width, height;
    int32_t bitsPerPixel; /* not read */
    uint32_t flags;       /* bit 0: compressed */
    int32_t bitmapLength;
    const uint8_t *bitmapDataStream;
} UiBitmapData;

/* One ZRLE/TRLE tile body; ptr and left are advanced past what was consumed.
 * A null image refuses the tile; a null dirty marks nothing. */
typedef struct UiTileStream {
    int32_t x, y, width, height;
    imgbuf *image;
    dirtybuf *dirty;
    const uint8_t *ptr;
    int32_t left;
} UiTileStream;

/* Rows of 32 pixel words from word 37 on; the record must hold `height` rows. */
typedef struct UiImage32Record {
    uint32_t client0[2];
    int32_t width;  /* at most 32 */
    int32_t height;
    uint32_t client4[33];
    uint32_t image[32];
} UiImage32Record;

enum UiSlot {
    UI_SLOT_BITMAP_UPDATE, UI_SLOT_DST_BLT, UI_SLOT_PAT_BLT, UI_SLOT_SCR_BLT, UI_SLOT_DRAW_LINE,
    UI_SLOT_OPAQUE_RECT, UI_SLOT_GLYPH_INDEX, UI_SLOT_FAST_GLYPH, UI_SLOT_DECODE_BITMAP, UI_SLOT_MEM_BLT,
    UI_SLOT_SET_SOURCE_BYTES_PER_PIXEL_4, UI_SLOT_FILL_BUFFER_RECT, UI_SLOT_DRAW_CHAR_8X16, UI_SLOT_H_LINE,
    UI_SLOT_V_LINE, UI_SLOT_SET_SOURCE_BYTE_ORDER, UI_SLOT_PUT_PIXELS, UI_SLOT_COPY_RECT, UI_SLOT_ZRLE_RAW_TILE,
    UI_SLOT_ZRLE_SOLID_TILE, UI_SLOT_ZRLE_PACKED_PALETTE_TILE, UI_SLOT_ZRLE_PLAIN_RLE_TILE,
    UI_SLOT_ZRLE_PALETTE_RLE_TILE, UI_SLOT_IMPORT_IMAGE32, UI_SLOT_HEXTILE_RECT, UI_SLOT_COUNT
};

/* 0: clips to the image, marks the tiles before decoding, then copies the
 * rows the right way up.  Compressed bitmaps above 65,536 pixels: 1199.
 * Uncompressed data shorter than the rows read, or a depth below 3: 1229. */
typedef void (*UiBitmapUpdateFn)(UiSurface *surface, const UiBitmapData *bitmap);
/* 1: the rectangle through rop & 15 with the source 0xffffff. */
typedef void (*UiDstBltFn)(UiSurface *surface, const UiDstBltOrder *order, const UiClipRect *clip);
/* 2: solid, hatched, pattern and cached brushes.  A null hatch table refuses
 * hatches (1522); brush phases are summed in 64 bits. */
typedef void (*UiPatBltFn)(UiSurface *surface, const UiPatBltOrder *order, const UiClipRect *clip);
/* 3: overlap-safe copy inside the frame buffer through rop & 15. */
typedef void (*UiScrBltFn)(UiSurface *surface, const UiScrBltOrder *order, const UiClipRect *clip);
/* 4: from the start point up to, not including, the end point.  Sloped lines
 * are clipped in exact binary64 arithmetic done on integers, so every target
 * draws the same pixels. */
typedef void (*UiDrawLineFn)(UiSurface *surface, const UiLineOrder *order, const UiClipRect *clip);
/* 5: a solid rectangle. */
typedef void (*UiOpaqueRectFn)(UiSurface *surface, const UiOpaqueRectOrder *order, const UiClipRect *clip);
/* 6: GlyphIndex / FastIndex.  Refused (3782) when the fragment store could
 * not be reserved.  cbData below 0 reads as 0, above 256 as 256. */
typedef void (*UiGlyphIndexFn)(UiSurface *surface, const UiGlyphIndexOrder *order, const UiClipRect *clip);
/* 7: FastGlyph. */
typedef void (*UiFastGlyphFn)(UiSurface *surface, const UiFastGlyphOrder *order, const UiClipRect *clip);
/* 8: decodes (compressed) or converts a bitmap into dst, width x height words
 * in stream order (bottom row first).  1 on success, 0 on failure. */
typedef int32_t (*UiDecodeBitmapFn)(int32_t width, int32_t height, const uint8_t *data, int32_t dataLength,
                                    uint8_t compressed, uint32_t *dst);
/* 9: MemBlt.  A source outside the bitmap, or a null bitmap, draws nothing
 * and is not reported. */
typedef void (*UiMemBltFn)(UiSurface *surface, const UiMemBltOrder *order, const UiClipRect *clip);
/* 10: sourceBytesPerPixel = 4. */
typedef void (*UiSetSourceBytesPerPixel4Fn)(void);
/* 11: solid fill in buffer coordinates, refused edge by edge (2946-2949). */
typedef void (*UiFillBufferRectFn)(imgbuf *image, dirtybuf *dirty, const UiRect *rect, uint32_t colour);
/* 12: an 8x16 cell (16 bytes, MSB leftmost, 1 bits painted); false if it
 * does not fit. */
typedef bool (*UiDrawChar8x16Fn)(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, const uint8_t *cell,
                                 uint32_t colour);
/* 13, 14: solid lines of `length` pixels. */
typedef void (*UiHLineFn)(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, int32_t length, uint32_t colour);
typedef void (*UiVLineFn)(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, int32_t length, uint32_t colour);
/* 15: byte order of 4-byte source pixels: non-zero b0 to bits 0-7, zero b0
 * to bits 16-23. */
typedef void (*UiSetSourceByteOrderFn)(uint8_t order);
/* 16: width x height packed 4-byte pixels into the rectangle. */
typedef bool (*UiPutPixelsFn)(imgbuf *image, dirtybuf *dirty, const UiRect *rect, const uint8_t *src);
/* 17: overlap-safe block copy inside the image. */
typedef bool (*UiCopyRectFn)(imgbuf *image, dirtybuf *dirty, const UiRect *dst, int32_t srcLeft, int32_t srcTop);
/* 18-22: ZRLE/TRLE tile bodies: 1 painted, 0 body too short (no report), -1
 * rejected (reported).  Palette indexes beyond the palette paint black. */
typedef int32_t (*UiZrleRawTileFn)(UiTileStream *tile);
typedef int32_t (*UiZrleSolidTileFn)(UiTileStream *tile);
typedef int32_t (*UiZrlePackedPaletteTileFn)(UiTileStream *tile, int32_t subencoding);
typedef int32_t (*UiZrlePlainRleTileFn)(UiTileStream *tile);
typedef int32_t (*UiZrlePaletteRleTileFn)(UiTileStream *tile, int32_t subencoding);
/* 23: pixels into a UiImage32Record; at most 32 columns, nothing when the
 * width is below 1 or the row length shorter than the width. */
typedef void (*UiImportImage32Fn)(UiImage32Record *record, const uint8_t *src, int32_t rowLength);
/* 24: one Hextile rectangle pulled through `read`: 1 decoded, 0 given up. */
typedef int32_t (*UiHextileRectFn)(imgbuf *image, dirtybuf *dirty, const UiRect *rect, UiReadFn read);

/* Keeps `log`.  With a config: writes slots 0-10, takes its two settings and
 * reserves a new zeroed 64 KiB fragment store (failure: 3782).  Always writes
 * slots 11-24. */
void srn_get(UiDrawTable table, UiLogFn log, const UiConfig *config);

/* Layout checks. */
#if defined(__cplusplus)
#define UI32_ASSERT(cond, msg) static_assert(cond, msg)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define UI32_ASSERT(cond, msg) _Static_assert(cond, msg)
#else
#define UI32_CAT_(a, b) a##b
#define UI32_CAT(a, b) UI32_CAT_(a, b)
#define UI32_ASSERT(cond, msg) typedef char UI32_CAT(ui32_layout_check_, __LINE__)[(cond) ? 1 : -1]
#endif
#define UI32_AT(type, field, word) UI32_ASSERT(offsetof(type, field) == 4 * (word), #type "." #field)
#if UINTPTR_MAX == 0xffffffffu
#define UI32_WORDS(type, n) UI32_ASSERT(sizeof(type) == 4 * (n), #type " size")
UI32_WORDS(UiConfig, 2);
UI32_WORDS(imgbuf, 6);
UI32_AT(imgbuf, stride, 3);
UI32_WORDS(dirtybuf, 4);
UI32_AT(dirtybuf, columns, 2);
UI32_WORDS(UiSurface, 15);
UI32_AT(UiSurface, originEnabled, 4);
UI32_AT(UiSurface, image, 5);
UI32_AT(UiSurface, dirty, 11);
UI32_WORDS(UiDstBltOrder, 5);
UI32_WORDS(UiScrBltOrder, 7);
UI32_WORDS(UiMemBltOrder, 12);
UI32_AT(UiMemBltOrder, bitmapPixels, 11);
UI32_WORDS(UiPatBltOrder, 17);
UI32_AT(UiPatBltOrder, brushStyle, 13);
UI32_AT(UiPatBltOrder, brushData, 16);
UI32_WORDS(UiOpaqueRectOrder, 7);
UI32_WORDS(UiLineOrder, 8);
UI32_WORDS(UiGlyphCache, 3);
UI32_WORDS(UiGlyphIndexOrder, 87);
UI32_AT(UiGlyphIndexOrder, cbData, 20);
UI32_AT(UiGlyphIndexOrder, glyphCache, 85);
UI32_WORDS(UiFastGlyphOrder, 85);
UI32_AT(UiFastGlyphOrder, glyphCache, 84);
UI32_WORDS(UiBitmapData, 10);
UI32_AT(UiBitmapData, bitmapDataStream, 9);
UI32_WORDS(UiTileStream, 8);
UI32_AT(UiTileStream, left, 7);
#undef UI32_WORDS
#endif
UI32_ASSERT(sizeof(UiGlyph) == 8, "UiGlyph size");
UI32_AT(UiImage32Record, width, 2);
UI32_AT(UiImage32Record, image, 37);
#undef UI32_AT

#ifdef __cplusplus
}
#endif

#endif /* UI32_H */
