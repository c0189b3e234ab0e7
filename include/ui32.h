/*
 * ui32.h - the C interface of the ui32 drawing back-end.
 *
 * A remote-desktop client loads ui32.so at run time (dlopen by path), looks up
 * the one exported function srn_get and calls it once with a UiDrawTable, its
 * log callback and a UiConfig.  From then on it reaches the library only
 * through the 25 slots of that table.  Every record below is laid out by the
 * client and read (or, where said, written) in place during one call; the
 * library keeps nothing after the call except its process-wide settings and
 * the 64 KiB glyph fragment store.
 *
 * On 32-bit targets (armhf, i386) every record is exactly a sequence of 32-bit
 * little-endian words with no padding; the static assertions at the end of
 * this file check sizes and word offsets.  On 64-bit hosts the same structs
 * take their natural layout.
 *
 * Colours: a frame-buffer pixel is a 32-bit word with the colour in bits 0-23;
 * every colour the library builds has bits 24-31 zero.  An order's colour
 * arrives as three words, the first going to bits 16-23 and the third to
 * bits 0-7.
 *
 * Reports: every failed check calls the log callback once with level "ERROR",
 * the module ("ui", "imgbuf", "dirtybuf", "streamInOps", "rdpclient-caches"),
 * a fixed site number and a printf format with its arguments.  Most checks use
 * the format "INTERNAL ERROR. Please, contact Nelvox tech support." without
 * arguments.  A failed image-buffer check gives two reports: "imgbuf" 99 (or
 * 83 for a source rectangle), then the entry point's own "ui" site.  After a
 * failed check an entry point draws nothing further; a failed tile marking
 * ("dirtybuf" 114) is reported and the drawing stands.
 */
#ifndef UI32_H

/*
 * Behaviour on unusual input (choices the library makes where a record is
 * inconsistent; none of them reads or writes outside the client's buffers):
 *
 * - A null log callback silences every report; drawing is unaffected.
 * - An imgbuf whose `pixels` is null: a rectangle that passes the bounds
 *   check still yields no pixel address, at any offset (not only at 0, 0),
 *   so the entry point makes its own "ui" report alone and draws nothing.
 *   A rectangle outside the image is reported by "imgbuf" first, as always.
 * - A dirtybuf whose `tiles` is null: marking is refused with the "dirtybuf"
 *   114 report, exactly as for a tile range outside the map.
 * - MemBlt with a null `bitmapPixels` is treated like a source rectangle
 *   outside the bitmap: nothing drawn, nothing reported, no tile marked.
 * - Coordinates are 32-bit words: origin translation and clipping wrap and
 *   compare as 32-bit two's-complement values would, without overflow, and
 *   every resulting rectangle is bounds-checked before any pixel is touched.
 * - Order colours are composed from the three words as given
 *   (first << 16 | second << 8 | third); words above 255 are not masked.
 * - Stream reads (bitmaps, tiles) with a negative count are refused with the
 *   same report as a count beyond the data, never read backwards.
 *
 * Bitmaps (slots 0 and 8):
 * - An order that would run past the end of the output stores only the
 *   pixels that fit in width x height; it still consumes its input, and the
 *   "%d > %d!" report (341) gives the full overrun.
 * - sourceBytesPerPixel below 3 is refused before decoding ("ui" 902 from the
 *   decoder and slot 8, 1229 for an uncompressed slot 0); 5 or more uses the
 *   first three bytes of each pixel.
 * - A planar plane whose control byte cannot be read fails the plane (the
 *   shortage report, then 939/944/948/952) and the decode returns 0; a
 *   missing raw byte inside a segment still counts as 0.
 * - Uncompressed data shorter than the rows read is refused before drawing:
 *   slot 0 reports 1229 (its tiles are already marked), slot 8 reports 902
 *   and returns 0.  A null data pointer is refused the same way.
 * - Every size product is computed in 64 bits: negative sizes and outputs
 *   near 2^31 bytes are refused (902 interleaved, 919 planar) instead of
 *   wrapping into a small size.
 * - A stream that ends on its very last byte decodes completely; raw planar
 *   data must hold exactly the planes' bytes.
 * - The planar run-length path writes byte 3 of each pixel as 0, like every
 *   other decoder, so no stale byte reaches the frame buffer.
 * - Pixels that an interleaved stream ending early never decoded are not
 *   copied by slot 0: the frame buffer keeps its own pixels there.
 *
 * Text and brushes (slots 2, 5, 6, 7):
 * - Without a fragment store (its reservation failed) glyph string orders are
 *   refused with "ui" 3782, the site of that failure; FastGlyph still works.
 * - A glyph whose bitmap (cy rows of (cx + 7) / 8 bytes) is larger than the
 *   cache's entry data size is an unusable entry: "rdpclient-caches" 64, not
 *   drawn (a glyph string skips it without advancing; FastGlyph also reports
 *   "ui" 2928).  A null cache has no entries; a negative entry size or count
 *   refuses every index; a null `entries` draws nothing.
 * - A failed opaque or background fill ends the text order: no glyphs, no
 *   tiles.  cbData below 0 reads as 0, above 256 as 256.
 * - A hatched brush with a null hatch table is refused like a hatch above 5
 *   ("ui" 1522).  Glyph edges and brush phases are summed in 64 bits.
 *
 * Lines and direct primitives (slots 4, 11-14, 16, 17, 23):
 * - LineTo clipping is exact binary64 arithmetic done with integers only (a
 *   correctly rounded division, subtraction and fused multiply-add), so every
 *   target draws the same pixels whatever its floating-point unit; the
 *   library contains no floating-point instructions and imports no libm.
 * - The line's dx and dy are the 32-bit wrapped differences of the order's
 *   words; run lengths and bounding boxes are computed in 64 bits, and a run
 *   of 2^31 pixels or more is refused by the image check.
 * - copyRect and putPixels with a null dirtybuf draw and mark nothing, like
 *   the other primitives.
 * - importImage32 uses at most 32 columns; a width below 1 or a row length
 *   shorter than the width imports nothing, without a report.
 * - fillBufferRect sums its far edges in 64 bits, so an overflowing
 *   left + width is reported at 2947 (top + height at 2949).
 *
 * RFB tiles (slots 18-22, 24):
 * - A palette index at or beyond the palette size paints black (0x000000);
 *   the palettes are cleared before reading, so nothing outside them or
 *   uninitialised is ever read.  Packed sizes 0 and 1 use 1-bit indexes.
 * - zrleRawTile with a negative width or height consumes nothing and is
 *   refused (3086 for a null ptr, else "imgbuf" 99 then 3089); a tile needing
 *   more than 2^31 - 1 bytes is "too short" (0).
 * - Where a byte would have to be read from a null `ptr`, the call returns -1
 *   with nothing consumed, reported at the entry point's first site.  A
 *   negative `left` means no bytes.
 * - A negative packed palette size is refused like one above 16 (3148);
 *   palette run-length sub-encodings outside 128-255 are refused (3394).
 * - A null `image` in a tile record is refused like a failed image check,
 *   without the "imgbuf" report; a null `dirty` marks nothing, silently.
 *   hextileRect with a null image or rect reports 3673; a null read callback
 *   behaves like one that fails.
 */
#define UI32_H

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------ */
/* Callbacks and configuration                                              */
/* ------------------------------------------------------------------------ */

/* The client's report function.  level is always "ERROR"; module names the
 * library module that made the check; site identifies the check; format is a
 * printf format (%d, %s, %04x, %02x) followed by its arguments.  The library
 * ignores the return value.  A null callback silences all reports. */
typedef int (*UiLogFn)(const char *level, const char *module, int site, const char *format, ...);

/* The Hextile read callback (slot 24): deliver exactly `length` bytes into
 * `buffer` and return non-zero, or return 0 when they cannot be delivered. */
typedef int (*UiReadFn)(uint8_t *buffer, int32_t length);

/* Configuration handed to srn_get. */
typedef struct UiConfig {
    /* Six consecutive 8-byte monochrome hatch patterns (pattern k at byte 8k,
     * one byte per row, most significant bit leftmost), read by patBlt for
     * hatched brushes.  The client keeps them alive for the process. */
    const uint8_t *hatchPatterns;
    /* Bytes per pixel of the bitmap data given to slots 0 and 8: 3 selects the
     * 24-bit interleaved run-length codec, 4 the planar codec. */
    int32_t sourceBytesPerPixel;
} UiConfig;

/* The client's table of entry points, filled by srn_get.  Convert each slot
 * to its function-pointer type below before calling it (a cast, as POSIX
 * allows for dlsym results, or a memcpy in strict ISO C). */
typedef void *UiDrawTable[25];

/* ------------------------------------------------------------------------ */
/* Drawing surface                                                          */
/* ------------------------------------------------------------------------ */

/* Hooks through which the library attaches its checked accessors to the
 * records it receives.  They add no data members, so the layout is the same
 * for every user of this header.  Clients leave them undefined. */
#ifndef UI32_IMGBUF_METHODS
#define UI32_IMGBUF_METHODS
#endif
#ifndef UI32_DIRTYBUF_METHODS
#define UI32_DIRTYBUF_METHODS
#endif

/* The client's 32-bit frame buffer.  Pixel (x, y) is the word at byte offset
 * y * stride + 4 * x from pixels.  Every write and every in-image read of the
 * library is checked against width and height first. */
typedef struct imgbuf {
    uint32_t *pixels;  /* pixel (0, 0), the top-left corner */
    uint32_t client1;  /* the client's; never read or written */
    uint32_t client2;  /* the client's; never read or written */
    uint32_t stride;   /* bytes from one row to the next */
    uint32_t width;    /* pixels per row */
    uint32_t height;   /* rows */
    UI32_IMGBUF_METHODS
} imgbuf;

/* The dirty-tile map: one byte per 32x32 tile of the frame buffer, row by row
 * (tile (tx, ty) is tiles[ty * columns + tx]).  The library only ever writes 1
 * into tile bytes and into `changed`; clearing them is the client's job. */
typedef struct dirtybuf {
    uint8_t *tiles;
    uint8_t changed;      /* set to 1 whenever a tile is marked */
    uint8_t changedPad[3]; /* never read or written */
    int32_t columns;      /* tiles per tile row, also the tile-row pitch in bytes */
    int32_t rows;         /* tile rows */
    UI32_DIRTYBUF_METHODS
} dirtybuf;

/* The drawing context of the clipped order entry points (slots 0-7, 9). */
typedef struct UiSurface {
    int32_t originX;        /* subtracted from order x coordinates when originEnabled */
    int32_t originY;        /* subtracted from order y coordinates when originEnabled */
    uint32_t client2;       /* the client's; not read */
    uint32_t client3;       /* the client's; not read */
    uint8_t originEnabled;  /* non-zero: apply the origin offset */
    uint8_t originEnabledPad[3];
    imgbuf image;           /* the frame buffer */
    dirtybuf dirty;         /* its tile map */
} UiSurface;

/* A rectangle: left, top, width, height (signed). */
typedef struct UiRect {
    int32_t left;
    int32_t top;
    int32_t width;
    int32_t height;
} UiRect;

/* A clipping rectangle in buffer coordinates; right and bottom inclusive
 * (0, 0, 99, 49 admits columns 0-99 and rows 0-49).  Never translated. */
typedef struct UiClipRect {
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
} UiClipRect;

/* ------------------------------------------------------------------------ */
/* Order records (read only)                                                */
/* ------------------------------------------------------------------------ */

/* DstBlt: combines the rectangle with the value 0xffffff through the raster
 * operation rop & 15 (0x00 black, 0x55 invert, 0xAA no change, 0xFF white). */
typedef struct UiDstBltOrder {
    int32_t left;
    int32_t top;
    int32_t width;
    int32_t height;
    int32_t rop;    /* low 4 bits index the raster operations */
} UiDstBltOrder;

/* ScrBlt: copies a rectangle of the frame buffer to another place of it,
 * overlap-safe in every direction. */
typedef struct UiScrBltOrder {
    int32_t left;
    int32_t top;
    int32_t width;
    int32_t height;
    int32_t rop;
    int32_t srcLeft;  /* source point in the same frame buffer */
    int32_t srcTop;
} UiScrBltOrder;

/* MemBlt: copies from a cached bitmap.  The bitmap holds 32-bit pixels in the
 * frame buffer's colour layout, rows stored bottom-up without padding (picture
 * row r starts at pixel (bitmapHeight - 1 - r) * bitmapWidth), the layout that
 * decodeBitmap (slot 8) produces.  A source rectangle that does not lie inside
 * the bitmap draws nothing and is not reported. */
typedef struct UiMemBltOrder {
    int32_t client0;        /* not read */
    int32_t left;
    int32_t top;
    int32_t width;
    int32_t height;
    int32_t rop;
    int32_t srcLeft;        /* source point in bitmap coordinates (not translated) */
    int32_t srcTop;
    int32_t client8;        /* not read */
    int32_t bitmapWidth;
    int32_t bitmapHeight;
    const uint32_t *bitmapPixels;
} UiMemBltOrder;

/* PatBlt: fills a rectangle with a brush through a raster operation. */
typedef struct UiPatBltOrder {
    int32_t left;
    int32_t top;
    int32_t width;
    int32_t height;
    int32_t rop;             /* low 4 bits index the raster operations */
    int32_t backColor[3];    /* colour of pattern 1 bits */
    int32_t foreColor[3];    /* solid colour, and colour of pattern 0 bits */
    int32_t brushOrgX;
    int32_t brushOrgY;
    int32_t brushStyle;      /* 0 solid, 2 hatched, 3 pattern, 0x81 cached mono, 0x85 cached colour */
    uint8_t brushBytes[8];   /* style 2: byte 0 is the hatch 0-5; style 3: the 8 rows */
    const uint8_t *brushData; /* cached brushes: 8 bytes (mono) or 64 pixels (colour) */
} UiPatBltOrder;

/* OpaqueRect: a solid rectangle. */
typedef struct UiOpaqueRectOrder {
    int32_t left;
    int32_t top;
    int32_t width;
    int32_t height;
    int32_t red;
    int32_t green;
    int32_t blue;
} UiOpaqueRectOrder;

/* LineTo: a one-pixel line from the start point up to, but not including, the
 * end point, through the raster operation rop & 15. */
typedef struct UiLineOrder {
    int32_t startX;
    int32_t startY;
    int32_t endX;
    int32_t endY;
    int32_t rop;
    int32_t penColor[3];  /* first component to bits 16-23, third to bits 0-7 */
} UiLineOrder;

/* A glyph cache entry: the 8-byte header followed directly by cy rows of
 * (cx + 7) / 8 bytes, most significant bit leftmost, 1 = foreground. */
typedef struct UiGlyph {
    int16_t x;    /* offset of the glyph's top-left pixel from the drawing point */
    int16_t y;
    uint16_t cx;  /* width in pixels */
    uint16_t cy;  /* height in pixels */
    /* bits follow */
} UiGlyph;

/* The client's glyph cache: entry i is at entries + i * (entryDataSize + 8). */
typedef struct UiGlyphCache {
    int32_t entryDataSize;  /* bytes reserved for one glyph's bitmap */
    int32_t entryCount;     /* valid indices are 0 to entryCount - 1 */
    const uint8_t *entries;
} UiGlyphCache;

/* GlyphIndex and FastIndex: a string of cached glyphs with optional
 * background and opaque rectangles. */
typedef struct UiGlyphIndexOrder {
    int32_t cacheId;         /* not read: the cache is glyphCache */
    int32_t flAccel;         /* 0x04 vertical text, 0x20 advance by glyph width */
    int32_t ulCharInc;       /* fixed advance, 0 = none */
    int32_t fOpRedundant;    /* opaque rectangle is the background rectangle */
    int32_t textColor[3];
    int32_t opaqueColor[3];
    int32_t bkLeft, bkTop, bkRight, bkBottom;
    int32_t opLeft, opTop, opRight, opBottom;
    int32_t x;               /* -32768 means bkLeft */
    int32_t y;               /* -32768 means bkTop */
    int32_t cbData;          /* meaningful bytes of rgbData, 0-255 */
    uint8_t rgbData[256];
    const UiGlyphCache *glyphCache;
    uint8_t opRectExplicit;  /* non-zero: GlyphIndex form; zero: FastIndex form */
    uint8_t opRectExplicitPad[3];
} UiGlyphIndexOrder;

/* FastGlyph: one cached glyph, index in rgbData[0]. */
typedef struct UiFastGlyphOrder {
    int32_t cacheId;         /* not read */
    int32_t flAccel;         /* not read */
    int32_t ulCharInc;       /* not read */
    int32_t textColor[3];
    int32_t opaqueColor[3];
    int32_t bkLeft, bkTop, bkRight, bkBottom;
    int32_t opLeft, opTop, opRight, opBottom;
    int32_t x;
    int32_t y;
    int32_t cbData;          /* not read */
    uint8_t rgbData[256];
    const UiGlyphCache *glyphCache;
} UiFastGlyphOrder;

/* One rectangle of an RDP bitmap update (slot 0).  Rows in the data are
 * bottom-up; uncompressed rows are width * sourceBytesPerPixel bytes apart. */
typedef struct UiBitmapData {
    int32_t destLeft;
    int32_t destTop;
    int32_t destRight;    /* inclusive */
    int32_t destBottom;   /* inclusive */
    int32_t width;        /* bitmap width (may exceed the rectangle's) */
    int32_t height;
    int32_t bitsPerPixel; /* not read: the depth is sourceBytesPerPixel */
    uint32_t flags;       /* bit 0: compressed */
    int32_t bitmapLength;
    const uint8_t *bitmapDataStream;
} UiBitmapData;

/* One ZRLE/TRLE tile body (slots 18-22).  The library advances ptr and left
 * past what it consumed so that the client continues with the next tile. */
typedef struct UiTileStream {
    int32_t x;           /* buffer coordinates, no origin, no clipping */
    int32_t y;
    int32_t width;
    int32_t height;
    imgbuf *image;
    dirtybuf *dirty;
    const uint8_t *ptr;  /* next unread byte (updated) */
    int32_t left;        /* bytes available from ptr on (updated) */
} UiTileStream;

/* A client record with a 32-pixel-wide image (slot 23).  Only width, height
 * and the image rows are used; row r starts at word 37 + 32 * r and the
 * record must hold `height` rows (image[] is declared for row 0 only). */
typedef struct UiImage32Record {
    uint32_t client0[2];
    int32_t width;         /* word 2: at most 32 */
    int32_t height;        /* word 3 */
    uint32_t client4[33];  /* words 4-36: the client's */
    uint32_t image[32];    /* word 37 on */
} UiImage32Record;

/* ------------------------------------------------------------------------ */
/* The drawing table                                                        */
/* ------------------------------------------------------------------------ */

enum UiSlot {
    UI_SLOT_BITMAP_UPDATE = 0,
    UI_SLOT_DST_BLT = 1,
    UI_SLOT_PAT_BLT = 2,
    UI_SLOT_SCR_BLT = 3,
    UI_SLOT_DRAW_LINE = 4,
    UI_SLOT_OPAQUE_RECT = 5,
    UI_SLOT_GLYPH_INDEX = 6,
    UI_SLOT_FAST_GLYPH = 7,
    UI_SLOT_DECODE_BITMAP = 8,
    UI_SLOT_MEM_BLT = 9,
    UI_SLOT_SET_SOURCE_BYTES_PER_PIXEL_4 = 10,
    UI_SLOT_FILL_BUFFER_RECT = 11,
    UI_SLOT_DRAW_CHAR_8X16 = 12,
    UI_SLOT_H_LINE = 13,
    UI_SLOT_V_LINE = 14,
    UI_SLOT_SET_SOURCE_BYTE_ORDER = 15,
    UI_SLOT_PUT_PIXELS = 16,
    UI_SLOT_COPY_RECT = 17,
    UI_SLOT_ZRLE_RAW_TILE = 18,
    UI_SLOT_ZRLE_SOLID_TILE = 19,
    UI_SLOT_ZRLE_PACKED_PALETTE_TILE = 20,
    UI_SLOT_ZRLE_PLAIN_RLE_TILE = 21,
    UI_SLOT_ZRLE_PALETTE_RLE_TILE = 22,
    UI_SLOT_IMPORT_IMAGE32 = 23,
    UI_SLOT_HEXTILE_RECT = 24,
    UI_SLOT_COUNT = 25
};

/* Slot 0: translates, checks (cw > width or ch > height: "ui" 1168), clips to
 * the image, marks the tiles, then decodes (compressed) or converts the rows
 * and copies them the right way up.  Compressed bitmaps of more than 65,536
 * pixels are refused ("ui" 1199). */
typedef void (*UiBitmapUpdateFn)(UiSurface *surface, const UiBitmapData *bitmap);
/* Slot 1: DstBlt. */
typedef void (*UiDstBltFn)(UiSurface *surface, const UiDstBltOrder *order, const UiClipRect *clip);
/* Slot 2: PatBlt with a solid, hatched, pattern or cached brush. */
typedef void (*UiPatBltFn)(UiSurface *surface, const UiPatBltOrder *order, const UiClipRect *clip);
/* Slot 3: ScrBlt. */
typedef void (*UiScrBltFn)(UiSurface *surface, const UiScrBltOrder *order, const UiClipRect *clip);
/* Slot 4: LineTo. */
typedef void (*UiDrawLineFn)(UiSurface *surface, const UiLineOrder *order, const UiClipRect *clip);
/* Slot 5: OpaqueRect. */
typedef void (*UiOpaqueRectFn)(UiSurface *surface, const UiOpaqueRectOrder *order, const UiClipRect *clip);
/* Slot 6: GlyphIndex / FastIndex. */
typedef void (*UiGlyphIndexFn)(UiSurface *surface, const UiGlyphIndexOrder *order, const UiClipRect *clip);
/* Slot 7: FastGlyph. */
typedef void (*UiFastGlyphFn)(UiSurface *surface, const UiFastGlyphOrder *order, const UiClipRect *clip);
/* Slot 8: decodes (or converts) a bitmap into dst (width * height words),
 * rows in stream order (bottom row first), the layout memBlt reads.
 * Returns 1 on success, 0 on failure. */
typedef int32_t (*UiDecodeBitmapFn)(int32_t width, int32_t height, const uint8_t *data, int32_t dataLength,
                                    uint8_t compressed, uint32_t *dst);
/* Slot 9: MemBlt. */
typedef void (*UiMemBltFn)(UiSurface *surface, const UiMemBltOrder *order, const UiClipRect *clip);
/* Slot 10: sets the source depth to 4 bytes per pixel (planar bitmaps). */
typedef void (*UiSetSourceBytesPerPixel4Fn)(void);
/* Slot 11: solid fill in buffer coordinates; dirty may be null. */
typedef void (*UiFillBufferRectFn)(imgbuf *image, dirtybuf *dirty, const UiRect *rect, uint32_t colour);
/* Slot 12: one 8x16 monochrome character cell (16 bytes, MSB leftmost, 1 bits
 * painted); dirty may be null.  Returns false when the cell does not fit. */
typedef bool (*UiDrawChar8x16Fn)(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, const uint8_t *cell,
                                 uint32_t colour);
/* Slot 13: horizontal line of `length` pixels; dirty may be null. */
typedef void (*UiHLineFn)(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, int32_t length, uint32_t colour);
/* Slot 14: vertical line of `length` pixels; dirty may be null. */
typedef void (*UiVLineFn)(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, int32_t length, uint32_t colour);
/* Slot 15: source byte order of 4-byte pixels: non-zero = b0 to bits 0-7,
 * zero = b0 to bits 16-23. */
typedef void (*UiSetSourceByteOrderFn)(uint8_t order);
/* Slot 16: width * height packed 4-byte source pixels into the rectangle. */
typedef bool (*UiPutPixelsFn)(imgbuf *image, dirtybuf *dirty, const UiRect *rect, const uint8_t *src);
/* Slot 17: overlap-safe block copy inside the image. */
typedef bool (*UiCopyRectFn)(imgbuf *image, dirtybuf *dirty, const UiRect *dst, int32_t srcLeft, int32_t srcTop);
/* Slots 18-22: ZRLE/TRLE tile bodies.  Result 1 painted, 0 body too short
 * (no report), -1 rejected (reported). */
typedef int32_t (*UiZrleRawTileFn)(UiTileStream *tile);
typedef int32_t (*UiZrleSolidTileFn)(UiTileStream *tile);
typedef int32_t (*UiZrlePackedPaletteTileFn)(UiTileStream *tile, int32_t subencoding);
typedef int32_t (*UiZrlePlainRleTileFn)(UiTileStream *tile);
typedef int32_t (*UiZrlePaletteRleTileFn)(UiTileStream *tile, int32_t subencoding);
/* Slot 23: pixels into a UiImage32Record (no checks: the caller guarantees
 * width <= 32, rowLength >= width and room for height rows). */
typedef void (*UiImportImage32Fn)(UiImage32Record *record, const uint8_t *src, int32_t rowLength);
/* Slot 24: one Hextile rectangle, bytes pulled through `read`.
 * Returns 1 on success, 0 on failure. */
typedef int32_t (*UiHextileRectFn)(imgbuf *image, dirtybuf *dirty, const UiRect *rect, UiReadFn read);

/* The one exported function.  Keeps `log` as the report callback.  With a
 * config it writes slots 0-10, takes hatchPatterns and sourceBytesPerPixel
 * and reserves a new zeroed 64 KiB glyph fragment store (failure: "ui" 3782,
 * the store stays empty).  Always writes slots 11-24.  With a null config,
 * slots 0-10 and the settings keep their previous values. */
void srn_get(UiDrawTable table, UiLogFn log, const UiConfig *config);

/* ------------------------------------------------------------------------ */
/* Layout checks                                                            */
/* ------------------------------------------------------------------------ */

#if defined(__cplusplus)
#define UI32_STATIC_ASSERT(cond, msg) static_assert(cond, msg)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define UI32_STATIC_ASSERT(cond, msg) _Static_assert(cond, msg)
#else /* C99: an array of negative size stops the compiler */
#define UI32_CONCAT_(a, b) a##b
#define UI32_CONCAT(a, b) UI32_CONCAT_(a, b)
#define UI32_STATIC_ASSERT(cond, msg) typedef char UI32_CONCAT(ui32_layout_check_, __LINE__)[(cond) ? 1 : -1]
#endif
#include <stddef.h>

#if UINTPTR_MAX == 0xffffffffu
#define UI32_WORD(type, field, word) \
    UI32_STATIC_ASSERT(offsetof(type, field) == 4 * (word), #type "." #field " is not at word " #word)
#define UI32_WORDS(type, n) UI32_STATIC_ASSERT(sizeof(type) == 4 * (n), #type " is not " #n " words")

UI32_WORDS(UiConfig, 2);
UI32_WORD(UiConfig, sourceBytesPerPixel, 1);
UI32_WORDS(imgbuf, 6);
UI32_WORD(imgbuf, stride, 3);
UI32_WORD(imgbuf, width, 4);
UI32_WORD(imgbuf, height, 5);
UI32_WORDS(dirtybuf, 4);
UI32_WORD(dirtybuf, changed, 1);
UI32_WORD(dirtybuf, columns, 2);
UI32_WORD(dirtybuf, rows, 3);
UI32_WORDS(UiSurface, 15);
UI32_WORD(UiSurface, originEnabled, 4);
UI32_WORD(UiSurface, image, 5);
UI32_WORD(UiSurface, dirty, 11);
UI32_WORDS(UiRect, 4);
UI32_WORDS(UiClipRect, 4);
UI32_WORD(UiClipRect, bottom, 3);
UI32_WORDS(UiDstBltOrder, 5);
UI32_WORD(UiDstBltOrder, rop, 4);
UI32_WORDS(UiScrBltOrder, 7);
UI32_WORD(UiScrBltOrder, srcLeft, 5);
UI32_WORD(UiScrBltOrder, srcTop, 6);
UI32_WORDS(UiMemBltOrder, 12);
UI32_WORD(UiMemBltOrder, left, 1);
UI32_WORD(UiMemBltOrder, rop, 5);
UI32_WORD(UiMemBltOrder, srcLeft, 6);
UI32_WORD(UiMemBltOrder, bitmapWidth, 9);
UI32_WORD(UiMemBltOrder, bitmapHeight, 10);
UI32_WORD(UiMemBltOrder, bitmapPixels, 11);
UI32_WORDS(UiPatBltOrder, 17);
UI32_WORD(UiPatBltOrder, rop, 4);
UI32_WORD(UiPatBltOrder, backColor, 5);
UI32_WORD(UiPatBltOrder, foreColor, 8);
UI32_WORD(UiPatBltOrder, brushOrgX, 11);
UI32_WORD(UiPatBltOrder, brushOrgY, 12);
UI32_WORD(UiPatBltOrder, brushStyle, 13);
UI32_WORD(UiPatBltOrder, brushBytes, 14);
UI32_WORD(UiPatBltOrder, brushData, 16);
UI32_WORDS(UiOpaqueRectOrder, 7);
UI32_WORD(UiOpaqueRectOrder, red, 4);
UI32_WORDS(UiLineOrder, 8);
UI32_WORD(UiLineOrder, rop, 4);
UI32_WORD(UiLineOrder, penColor, 5);
UI32_STATIC_ASSERT(sizeof(UiGlyph) == 8, "UiGlyph header is not 8 bytes");
UI32_WORDS(UiGlyphCache, 3);
UI32_WORD(UiGlyphCache, entries, 2);
UI32_WORDS(UiGlyphIndexOrder, 87);
UI32_WORD(UiGlyphIndexOrder, fOpRedundant, 3);
UI32_WORD(UiGlyphIndexOrder, textColor, 4);
UI32_WORD(UiGlyphIndexOrder, opaqueColor, 7);
UI32_WORD(UiGlyphIndexOrder, bkLeft, 10);
UI32_WORD(UiGlyphIndexOrder, opLeft, 14);
UI32_WORD(UiGlyphIndexOrder, x, 18);
UI32_WORD(UiGlyphIndexOrder, y, 19);
UI32_WORD(UiGlyphIndexOrder, cbData, 20);
UI32_WORD(UiGlyphIndexOrder, rgbData, 21);
UI32_WORD(UiGlyphIndexOrder, glyphCache, 85);
UI32_WORD(UiGlyphIndexOrder, opRectExplicit, 86);
UI32_WORDS(UiFastGlyphOrder, 85);
UI32_WORD(UiFastGlyphOrder, textColor, 3);
UI32_WORD(UiFastGlyphOrder, opaqueColor, 6);
UI32_WORD(UiFastGlyphOrder, bkLeft, 9);
UI32_WORD(UiFastGlyphOrder, opLeft, 13);
UI32_WORD(UiFastGlyphOrder, x, 17);
UI32_WORD(UiFastGlyphOrder, cbData, 19);
UI32_WORD(UiFastGlyphOrder, rgbData, 20);
UI32_WORD(UiFastGlyphOrder, glyphCache, 84);
UI32_WORDS(UiBitmapData, 10);
UI32_WORD(UiBitmapData, width, 4);
UI32_WORD(UiBitmapData, flags, 7);
UI32_WORD(UiBitmapData, bitmapLength, 8);
UI32_WORD(UiBitmapData, bitmapDataStream, 9);
UI32_WORDS(UiTileStream, 8);
UI32_WORD(UiTileStream, image, 4);
UI32_WORD(UiTileStream, dirty, 5);
UI32_WORD(UiTileStream, ptr, 6);
UI32_WORD(UiTileStream, left, 7);
#undef UI32_WORD
#undef UI32_WORDS
#endif /* 32-bit targets */

/* The image record is 32-bit words on every target. */
UI32_STATIC_ASSERT(offsetof(UiImage32Record, width) == 4 * 2, "UiImage32Record.width is not at word 2");
UI32_STATIC_ASSERT(offsetof(UiImage32Record, height) == 4 * 3, "UiImage32Record.height is not at word 3");
UI32_STATIC_ASSERT(offsetof(UiImage32Record, image) == 4 * 37, "UiImage32Record.image is not at word 37");

#ifdef __cplusplus
}
#endif

#endif /* UI32_H */
