/* The ARM side of the instruction counts: loads a ui32.so by path, sets it up
 * through srn_get and runs one workload for a number of rounds on a 1024x768
 * frame buffer.  The inputs (bitmap streams, RFB bodies, glyphs) are read
 * from the files bench/arm/inputs.cpp writes on the host.  Only the public
 * interface (ui32.h) is used, so any build of the library can be measured.
 *
 *   ui32-armbench --list
 *       one line per workload: its name and its yardstick (memset or memcpy)
 *   ui32-armbench LIBRARY INPUTS WORKLOAD ROUNDS [ui32|memset|memcpy]
 *       runs the workload (ui32, the default), or libc's memset / memcpy of
 *       exactly the rows the workload writes; prints "pixels N", the pixels
 *       one round writes.  Exits 1 if the library reported anything or a
 *       call failed.
 *
 * Counting one round and three rounds under the qemu plug-in and halving the
 * difference gives the instructions of one round without the set-up. */
#include <dlfcn.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "ui32.h"

enum { W = 1024, H = 768, ROP_COPY = 12, ROP_XOR = 6, ROP_INVERT = 5, SCROLL = 8 };

uint32_t frame[W * H];
uint32_t source[W * H];           /* memcpy source, memBlt bitmap, raw pixels */
static uint32_t decoded[256 * 256]; /* decodeBitmap's output */
static uint8_t tiles[(W / 32) * (H / 32)];
static UiSurface surface;
static UiDrawTable table;
static const UiClipRect screenClip = {0, 0, W - 1, H - 1};
static long reports;
static const char *inputs; /* directory of the input files */

static const uint8_t hatches[48] = {
    0x00, 0x00, 0x00, 0xff, 0x00, 0x00, 0x00, 0x00, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08,
    0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01, 0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80,
    0x08, 0x08, 0x08, 0xff, 0x08, 0x08, 0x08, 0x08, 0x81, 0x42, 0x24, 0x18, 0x18, 0x24, 0x42, 0x81,
};

static void fail(const char *what) {
    fprintf(stderr, "ui32-armbench: %s\n", what);
    exit(1);
}

static int logReport(const char *level, const char *module, int site, const char *format, ...) {
    va_list args;
    if (++reports > 10) return 0;
    fprintf(stderr, "ui32-armbench: library report %s %s %d: ", level, module, site);
    va_start(args, format);
    vfprintf(stderr, format, args);
    va_end(args);
    fputc('\n', stderr);
    return 0;
}

/* ---- input files: records of six words (x, y, width, height, param, length)
 * and `length` bytes padded to 4 ---- */
typedef struct {
    int32_t x, y, width, height, param, length;
    const uint8_t *data;
} Record;
static Record records[512];
static int recordCount;

static void load(const char *dir, const char *name) {
    char path[1024];
    FILE *f;
    long size;
    uint8_t *bytes, *p;
    snprintf(path, sizeof path, "%s/%s", dir, name);
    f = fopen(path, "rb");
    if (f == NULL || fseek(f, 0, SEEK_END) != 0 || (size = ftell(f)) < 0 || fseek(f, 0, SEEK_SET) != 0) fail(path);
    bytes = malloc((size_t)size + 1);
    if (bytes == NULL || fread(bytes, 1, (size_t)size, f) != (size_t)size) fail(path);
    fclose(f);
    for (p = bytes, recordCount = 0; p < bytes + size; ++recordCount) {
        Record *r = &records[recordCount];
        if (recordCount == (int)(sizeof records / sizeof records[0]) || bytes + size - p < 24) fail(path);
        memcpy(r, p, 24);
        r->data = p + 24;
        p += 24 + (((size_t)r->length + 3) & ~(size_t)3);
        if (r->length < 0 || p > bytes + size) fail(path);
    }
}

/* ---- the rows a workload writes, for the memset / memcpy yardsticks ---- */
static UiRect *rects;
static int rectCount, rectCapacity;

static void addRect(int32_t x, int32_t y, int32_t w, int32_t h) {
    if (rectCount == rectCapacity) {
        rectCapacity = rectCapacity ? 2 * rectCapacity : 1024;
        rects = realloc(rects, (size_t)rectCapacity * sizeof *rects);
        if (rects == NULL) fail("out of memory");
    }
    rects[rectCount++] = (UiRect){x, y, w, h};
}

/* A grid of w x h rectangles covering the frame. */
static void grid(int32_t w, int32_t h) {
    int32_t x, y;
    for (y = 0; y + h <= H; y += h)
        for (x = 0; x + w <= W; x += w) addRect(x, y, w, h);
}

/* One pixel per step of the major axis from (x1, y1) to (x2, y2), end excluded. */
static void lineRects(int32_t x1, int32_t y1, int32_t x2, int32_t y2) {
    int32_t dx = abs(x2 - x1), dy = abs(y2 - y1), i;
    if (dy == 0) addRect(x1 < x2 ? x1 : x2 + 1, y1, dx, 1);
    else if (dx == 0) addRect(x1, y1 < y2 ? y1 : y2 + 1, 1, dy);
    else
        for (i = 0; i < (dx > dy ? dx : dy); ++i)
            addRect(x1 + (x2 - x1) * i / (dx > dy ? dx : dy), y1 + (y2 - y1) * i / (dx > dy ? dx : dy), 1, 1);
}

#define SLOT(type, index) ((type)table[index])

/* ---- workloads ---- */
typedef struct Workload Workload;
struct Workload {
    const char *name;
    const char *yardstick; /* what the report compares with */
    void (*setup)(const Workload *);
    void (*round)(const Workload *);
    int32_t w, h, variant;
    const char *file;
};

enum { BRUSH_SOLID_XOR, BRUSH_HATCH, BRUSH_PATTERN, BRUSH_COLOUR };
static uint32_t colourBrush[64]; /* a cached 8 x 8 colour brush: a small dither */

static void gridSetup(const Workload *k) {
    int i;
    grid(k->w, k->h);
    for (i = 0; i < 64; ++i) colourBrush[i] = ((i / 8 + i) & 1) ? 0xbabdb6 : 0x888a85;
}

static void opaqueRect(const Workload *k) {
    int i;
    (void)k;
    for (i = 0; i < rectCount; ++i) {
        const UiOpaqueRectOrder o = {rects[i].left, rects[i].top, rects[i].width, rects[i].height, 0x34, 0x65, 0xa4};
        SLOT(UiOpaqueRectFn, UI_SLOT_OPAQUE_RECT)(&surface, &o, &screenClip);
    }
}

static void fillBufferRect(const Workload *k) {
    int i;
    (void)k;
    for (i = 0; i < rectCount; ++i)
        SLOT(UiFillBufferRectFn, UI_SLOT_FILL_BUFFER_RECT)(&surface.image, &surface.dirty, &rects[i], 0x3465a4);
}

static void patBlt(const Workload *k) {
    static const uint8_t pattern[8] = {0x88, 0x44, 0x22, 0x11, 0x88, 0x44, 0x22, 0x11};
    UiPatBltOrder o;
    int i;
    memset(&o, 0, sizeof o);
    o.rop = k->variant == BRUSH_SOLID_XOR ? ROP_XOR : ROP_COPY;
    o.backColor[0] = 0x2e, o.backColor[1] = 0x34, o.backColor[2] = 0x36;
    o.foreColor[0] = 0xee, o.foreColor[1] = 0xee, o.foreColor[2] = 0xec;
    switch (k->variant) {
        case BRUSH_HATCH: o.brushStyle = 2, o.brushBytes[0] = 5; break;
        case BRUSH_PATTERN: o.brushStyle = 3, memcpy(o.brushBytes, pattern, 8); break;
        case BRUSH_COLOUR: o.brushStyle = 0x85, o.brushData = (const uint8_t *)colourBrush; break;
    }
    for (i = 0; i < rectCount; ++i) {
        o.left = rects[i].left, o.top = rects[i].top, o.width = rects[i].width, o.height = rects[i].height;
        SLOT(UiPatBltFn, UI_SLOT_PAT_BLT)(&surface, &o, &screenClip);
    }
}

static void dstBlt(const Workload *k) {
    int i;
    (void)k;
    for (i = 0; i < rectCount; ++i) {
        const UiDstBltOrder o = {rects[i].left, rects[i].top, rects[i].width, rects[i].height, ROP_INVERT};
        SLOT(UiDstBltFn, UI_SLOT_DST_BLT)(&surface, &o, &screenClip);
    }
}

/* Copies: the screen less its last 8 rows, from 8 rows further down. */
static void scrollSetup(const Workload *k) {
    (void)k;
    addRect(0, 0, W, H - SCROLL);
}

static void scrBlt(const Workload *k) {
    const UiScrBltOrder o = {0, 0, W, H - SCROLL, k->variant, 0, SCROLL};
    SLOT(UiScrBltFn, UI_SLOT_SCR_BLT)(&surface, &o, &screenClip);
}

static void copyRect(const Workload *k) {
    (void)k;
    if (!SLOT(UiCopyRectFn, UI_SLOT_COPY_RECT)(&surface.image, &surface.dirty, &rects[0], 0, SCROLL))
        fail("copyRect refused");
}

static void memBlt(const Workload *k) {
    UiMemBltOrder o;
    (void)k;
    memset(&o, 0, sizeof o);
    o.width = W, o.height = H, o.rop = ROP_COPY;
    o.bitmapWidth = W, o.bitmapHeight = H, o.bitmapPixels = source;
    SLOT(UiMemBltFn, UI_SLOT_MEM_BLT)(&surface, &o, &screenClip);
}

static void putPixels(const Workload *k) {
    (void)k;
    if (!SLOT(UiPutPixelsFn, UI_SLOT_PUT_PIXELS)(&surface.image, &surface.dirty, &rects[0], (const uint8_t *)source))
        fail("putPixels refused");
}

/* Uncompressed bitmap update of the whole screen, variant = bytes per pixel. */
static void bitmapUpdateRaw(const Workload *k) {
    const UiBitmapData b = {0, 0, W - 1, H - 1, W, H, 8 * k->variant, 0, W * H * k->variant, (const uint8_t *)source};
    SLOT(UiBitmapUpdateFn, UI_SLOT_BITMAP_UPDATE)(&surface, &b);
}

/* Lines: 64 of a kind (variant 0 sloped full height, 1 horizontal full
 * width, 2 vertical full height). */
static int32_t lineEnds[64][4];

static void linesSetup(const Workload *k) {
    int i;
    for (i = 0; i < 64; ++i) {
        int32_t *e = lineEnds[i];
        if (k->variant == 0) e[0] = 12 * i, e[1] = 0, e[2] = 12 * i + 256, e[3] = H - 1;
        else if (k->variant == 1) e[0] = 0, e[1] = 12 * i, e[2] = W - 1, e[3] = 12 * i;
        else e[0] = 16 * i, e[1] = 0, e[2] = 16 * i, e[3] = H - 1;
        lineRects(e[0], e[1], e[2], e[3]);
    }
}

static void drawLine(const Workload *k) {
    int i;
    (void)k;
    for (i = 0; i < 64; ++i) {
        const UiLineOrder o = {lineEnds[i][0], lineEnds[i][1], lineEnds[i][2], lineEnds[i][3], ROP_COPY, {0x20, 0x4a, 0x87}};
        SLOT(UiDrawLineFn, UI_SLOT_DRAW_LINE)(&surface, &o, &screenClip);
    }
}

/* The client's solid lines (slots 13 and 14) along the same 64 lines:
 * variant 1 horizontal, 2 vertical. */
static void primitiveLine(const Workload *k) {
    int i;
    for (i = 0; i < 64; ++i) {
        const int32_t *e = lineEnds[i];
        if (k->variant == 1)
            SLOT(UiHLineFn, UI_SLOT_H_LINE)(&surface.image, &surface.dirty, e[0], e[1], e[2] - e[0] + 1, 0x204a87);
        else
            SLOT(UiVLineFn, UI_SLOT_V_LINE)(&surface.image, &surface.dirty, e[0], e[1], e[3] - e[1] + 1, 0x204a87);
    }
}

/* Text: one line of 80 glyphs of 8 x 16 at (100, 200).  glyphs.bin holds
 * the cache entries, the string in each form (param = form), the line. */
enum { TEXT_X = 100, TEXT_Y = 200, GLYPHS = 80, CELL_W = 8, CELL_H = 16 };
enum { FORM_FIXED, FORM_OPAQUE, FORM_FRAGMENTS, FORM_DELTA, FORM_DELTA_FRAGMENTS, FORM_FAST_GLYPH, FORM_DRAW_CHAR };
static UiGlyphCache glyphCache;
static UiGlyphIndexOrder glyphOrder;
static UiFastGlyphOrder fastOrders[GLYPHS];
static const uint8_t *line;

static void textSetup(const Workload *k) {
    int i;
    load(inputs, "glyphs.bin");
    if (recordCount != 7 || records[0].width != 24 || records[6].length != GLYPHS) fail("glyphs.bin: unexpected layout");
    glyphCache = (UiGlyphCache){CELL_H, records[0].param, records[0].data};
    line = records[6].data;
    memset(&glyphOrder, 0, sizeof glyphOrder);
    if (k->variant <= FORM_DELTA_FRAGMENTS) {
        const Record *s = &records[1 + k->variant];
        UiGlyphIndexOrder *o = &glyphOrder;
        o->ulCharInc = k->variant == FORM_DELTA || k->variant == FORM_DELTA_FRAGMENTS ? 0 : CELL_W;
        o->textColor[0] = 0x2e, o->textColor[1] = 0x34, o->textColor[2] = 0x36;
        o->opaqueColor[0] = 0xf6, o->opaqueColor[1] = 0xf5, o->opaqueColor[2] = 0xf4;
        o->bkLeft = TEXT_X, o->bkTop = TEXT_Y, o->bkRight = TEXT_X + GLYPHS * CELL_W, o->bkBottom = TEXT_Y + CELL_H;
        if (k->variant == FORM_OPAQUE)
            o->opLeft = o->bkLeft, o->opTop = o->bkTop, o->opRight = o->bkRight, o->opBottom = o->bkBottom;
        o->x = TEXT_X, o->y = TEXT_Y;
        if (s->param != k->variant || s->length > 255) fail("glyphs.bin: unexpected string");
        o->cbData = s->length;
        memcpy(o->rgbData, s->data, (size_t)s->length);
        o->glyphCache = &glyphCache;
        o->opRectExplicit = 1;
    }
    for (i = 0; i < GLYPHS; ++i) {
        UiFastGlyphOrder *o = &fastOrders[i];
        memset(o, 0, sizeof *o);
        o->textColor[0] = 0x2e, o->textColor[1] = 0x34, o->textColor[2] = 0x36;
        o->bkLeft = TEXT_X + i * CELL_W, o->bkTop = TEXT_Y, o->bkRight = o->bkLeft + CELL_W, o->bkBottom = TEXT_Y + CELL_H;
        o->x = o->bkLeft, o->y = TEXT_Y;
        o->cbData = 1;
        o->rgbData[0] = line[i];
        o->glyphCache = &glyphCache;
        addRect(TEXT_X + i * CELL_W, TEXT_Y, CELL_W, CELL_H);
    }
}

static void textRound(const Workload *k) {
    int i;
    if (k->variant == FORM_FAST_GLYPH) {
        for (i = 0; i < GLYPHS; ++i) SLOT(UiFastGlyphFn, UI_SLOT_FAST_GLYPH)(&surface, &fastOrders[i], &screenClip);
    } else if (k->variant == FORM_DRAW_CHAR) {
        for (i = 0; i < GLYPHS; ++i)
            if (!SLOT(UiDrawChar8x16Fn, UI_SLOT_DRAW_CHAR_8X16)(&surface.image, &surface.dirty, TEXT_X + i * CELL_W,
                                                               TEXT_Y, glyphCache.entries + 24 * line[i] + 8, 0x2e3436))
                fail("drawChar8x16 refused");
    } else {
        SLOT(UiGlyphIndexFn, UI_SLOT_GLYPH_INDEX)(&surface, &glyphOrder, &screenClip);
    }
}

/* Compressed bitmaps: every record of the file at its place (picture
 * coordinates, which fit the frame); variant = source bytes per pixel. */
static void bitmapsSetup(const Workload *k) {
    int i;
    load(inputs, k->file);
    for (i = 0; i < recordCount; ++i) {
        const Record *r = &records[i];
        if (r->x < 0 || r->y < 0 || r->x + r->width > W || r->y + r->height > H || r->width * r->height > 65536)
            fail("a bitmap does not fit");
        addRect(r->x, r->y, r->width, r->height);
    }
}

static void decodeBitmap(const Workload *k) {
    int i;
    (void)k;
    for (i = 0; i < recordCount; ++i) {
        const Record *r = &records[i];
        if (SLOT(UiDecodeBitmapFn, UI_SLOT_DECODE_BITMAP)(r->width, r->height, r->data, r->length, 1, decoded) != 1)
            fail("decodeBitmap refused a stream");
    }
}

static void bitmapUpdate(const Workload *k) {
    int i;
    for (i = 0; i < recordCount; ++i) {
        const Record *r = &records[i];
        const UiBitmapData b = {r->x, r->y, r->x + r->width - 1, r->y + r->height - 1, r->width, r->height,
                                8 * k->variant, 1, r->length, r->data};
        SLOT(UiBitmapUpdateFn, UI_SLOT_BITMAP_UPDATE)(&surface, &b);
    }
}

/* RFB: ZRLE tiles (param = sub-encoding, chosen per tile as a client's switch
 * does) and Hextile rectangles read through the callback. */
static void zrleTiles(const Workload *k) {
    int i;
    (void)k;
    for (i = 0; i < recordCount; ++i) {
        const Record *r = &records[i];
        UiTileStream s = {r->x, r->y, r->width, r->height, &surface.image, &surface.dirty, r->data, r->length};
        int32_t done;
        switch (r->param) {
            case 0: done = SLOT(UiZrleRawTileFn, UI_SLOT_ZRLE_RAW_TILE)(&s); break;
            case 1: done = SLOT(UiZrleSolidTileFn, UI_SLOT_ZRLE_SOLID_TILE)(&s); break;
            case 128: done = SLOT(UiZrlePlainRleTileFn, UI_SLOT_ZRLE_PLAIN_RLE_TILE)(&s); break;
            default:
                done = r->param < 128
                           ? SLOT(UiZrlePackedPaletteTileFn, UI_SLOT_ZRLE_PACKED_PALETTE_TILE)(&s, r->param)
                           : SLOT(UiZrlePaletteRleTileFn, UI_SLOT_ZRLE_PALETTE_RLE_TILE)(&s, r->param);
        }
        if (done != 1 || s.left != 0) fail("a tile was not painted or not consumed exactly");
    }
}

static const uint8_t *feed;
static int32_t feedLeft;

static int readFeed(uint8_t *buffer, int32_t length) {
    if (length < 0 || length > feedLeft) return 0;
    memcpy(buffer, feed, (size_t)length);
    feed += length;
    feedLeft -= length;
    return 1;
}

static void hextile(const Workload *k) {
    const Record *r = &records[0];
    const UiRect rect = {r->x, r->y, r->width, r->height};
    (void)k;
    feed = r->data, feedLeft = r->length;
    if (SLOT(UiHextileRectFn, UI_SLOT_HEXTILE_RECT)(&surface.image, &surface.dirty, &rect, readFeed) != 1 ||
        feedLeft != 0)
        fail("the Hextile rectangle was not decoded or not consumed exactly");
}

#define FILLS(op, fn, v)                                                                    \
    {"fills/" op "/1024x768", "memset", gridSetup, fn, W, H, v, NULL},                      \
    {"fills/" op "/64x64", "memset", gridSetup, fn, 64, 64, v, NULL},                       \
    {"fills/" op "/8x16", "memset", gridSetup, fn, 8, 16, v, NULL},                         \
    {"fills/" op "/8x8", "memset", gridSetup, fn, 8, 8, v, NULL}
#define PATBLT(op, v)                                                                       \
    {"fills/patBlt " op "/1024x768", "memset", gridSetup, patBlt, W, H, v, NULL},           \
    {"fills/patBlt " op "/64x64", "memset", gridSetup, patBlt, 64, 64, v, NULL},            \
    {"fills/patBlt " op "/8x8", "memset", gridSetup, patBlt, 8, 8, v, NULL}
#define TEXT(op, v) {"text/" op "/80 glyphs 8x16", "memset", textSetup, textRound, 0, 0, v, NULL}
#define BITMAPS(op, fn, file, depth) {"decoders/" op, "memcpy", bitmapsSetup, fn, 0, 0, depth, file}
#define RFB(op, fn, file) {"rfb/" op, "memcpy", bitmapsSetup, fn, 0, 0, 0, file}
#define RFB_FILL(op, fn, file) {"rfb/" op, "memset", bitmapsSetup, fn, 0, 0, 0, file}

static const Workload workloads[] = {
    FILLS("opaqueRect", opaqueRect, 0),
    FILLS("fillBufferRect", fillBufferRect, 0),
    PATBLT("solid xor", BRUSH_SOLID_XOR),
    PATBLT("hatch", BRUSH_HATCH),
    PATBLT("8x8 pattern", BRUSH_PATTERN),
    PATBLT("colour brush", BRUSH_COLOUR),
    {"fills/dstBlt invert/1024x768", "memset", gridSetup, dstBlt, W, H, 0, NULL},
    {"copies/scrBlt copy up 8/1024x760", "memcpy", scrollSetup, scrBlt, 0, 0, ROP_COPY, NULL},
    {"copies/scrBlt xor up 8/1024x760", "memcpy", scrollSetup, scrBlt, 0, 0, ROP_XOR, NULL},
    {"copies/copyRect up 8/1024x760", "memcpy", scrollSetup, copyRect, 0, 0, 0, NULL},
    {"copies/memBlt/1024x768", "memcpy", gridSetup, memBlt, W, H, 0, NULL},
    {"copies/putPixels/1024x768", "memcpy", gridSetup, putPixels, W, H, 0, NULL},
    {"copies/bitmapUpdate raw 24-bit/1024x768", "memcpy", gridSetup, bitmapUpdateRaw, W, H, 3, NULL},
    {"copies/bitmapUpdate raw 32-bit/1024x768", "memcpy", gridSetup, bitmapUpdateRaw, W, H, 4, NULL},
    {"lines/drawLine sloped/64 x 767 px", "memset", linesSetup, drawLine, 0, 0, 0, NULL},
    {"lines/drawLine horizontal/64 x 1023 px", "memset", linesSetup, drawLine, 0, 0, 1, NULL},
    {"lines/drawLine vertical/64 x 767 px", "memset", linesSetup, drawLine, 0, 0, 2, NULL},
    {"lines/hLine/64 x 1023 px", "memset", linesSetup, primitiveLine, 0, 0, 1, NULL},
    {"lines/vLine/64 x 767 px", "memset", linesSetup, primitiveLine, 0, 0, 2, NULL},
    TEXT("glyphIndex fixed advance", FORM_FIXED),
    TEXT("glyphIndex opaque background", FORM_OPAQUE),
    TEXT("glyphIndex fragments", FORM_FRAGMENTS),
    TEXT("glyphIndex delta mode", FORM_DELTA),
    TEXT("glyphIndex delta mode, fragments", FORM_DELTA_FRAGMENTS),
    TEXT("fastGlyph x 80", FORM_FAST_GLYPH),
    TEXT("drawChar8x16 x 80", FORM_DRAW_CHAR),
    BITMAPS("decodeBitmap interleaved/268 tiles 64x64", decodeBitmap, "interleaved.bin", 3),
    BITMAPS("decodeBitmap planar 0x00 raw/tiles and 256x256", decodeBitmap, "planar-00.bin", 4),
    BITMAPS("decodeBitmap planar 0x10 run-length/tiles and 256x256", decodeBitmap, "planar-10.bin", 4),
    BITMAPS("decodeBitmap planar 0x20 raw, no alpha/tiles and 256x256", decodeBitmap, "planar-20.bin", 4),
    BITMAPS("decodeBitmap planar 0x30 run-length, no alpha/tiles and 256x256", decodeBitmap, "planar-30.bin", 4),
    BITMAPS("bitmapUpdate interleaved/268 tiles 64x64", bitmapUpdate, "interleaved.bin", 3),
    BITMAPS("bitmapUpdate planar 0x00 raw/tiles and 256x256", bitmapUpdate, "planar-00.bin", 4),
    BITMAPS("bitmapUpdate planar 0x10 run-length/tiles and 256x256", bitmapUpdate, "planar-10.bin", 4),
    BITMAPS("bitmapUpdate planar 0x20 raw, no alpha/tiles and 256x256", bitmapUpdate, "planar-20.bin", 4),
    BITMAPS("bitmapUpdate planar 0x30 run-length, no alpha/tiles and 256x256", bitmapUpdate, "planar-30.bin", 4),
    RFB("zrleRawTile photo/70 tiles 64x64", zrleTiles, "zrle-raw.bin"),
    RFB_FILL("zrleSolidTile/70 tiles 64x64", zrleTiles, "zrle-solid.bin"),
    RFB("zrlePackedPaletteTile 2 colours/70 tiles 64x64", zrleTiles, "zrle-packed2.bin"),
    RFB("zrlePackedPaletteTile 4 colours/70 tiles 64x64", zrleTiles, "zrle-packed4.bin"),
    RFB("zrlePackedPaletteTile 16 colours/70 tiles 64x64", zrleTiles, "zrle-packed16.bin"),
    RFB("zrlePlainRleTile/70 tiles 64x64", zrleTiles, "zrle-plainrle.bin"),
    RFB("zrlePaletteRleTile/70 tiles 64x64", zrleTiles, "zrle-paletterle.bin"),
    RFB("hextileRect desktop/256x256", hextile, "hextile-desktop.bin"),
    RFB("hextileRect photo/256x256", hextile, "hextile-photo.bin"),
};
enum { WORKLOADS = sizeof workloads / sizeof workloads[0] };

static void memsetRows(void) {
    int i;
    int32_t y;
    for (i = 0; i < rectCount; ++i)
        for (y = rects[i].top; y < rects[i].top + rects[i].height; ++y)
            memset(frame + (size_t)y * W + rects[i].left, 0x5a, 4 * (size_t)rects[i].width);
}

static void memcpyRows(void) {
    int i;
    int32_t y;
    for (i = 0; i < rectCount; ++i)
        for (y = rects[i].top; y < rects[i].top + rects[i].height; ++y) {
            const size_t at = (size_t)y * W + (size_t)rects[i].left;
            memcpy(frame + at, source + at, 4 * (size_t)rects[i].width);
        }
}

int main(int argc, char **argv) {
    const Workload *k = NULL;
    const char *mode = argc > 5 ? argv[5] : "ui32";
    void *library, *get;
    UiConfig config = {hatches, 3};
    long long pixels = 0;
    int i, rounds;
    uint32_t sum = 0;

    if (argc == 2 && strcmp(argv[1], "--list") == 0) {
        for (i = 0; i < WORKLOADS; ++i) printf("%s\t%s\n", workloads[i].name, workloads[i].yardstick);
        return 0;
    }
    if (argc < 5 || argc > 6) {
        fprintf(stderr, "usage: %s LIBRARY INPUTS WORKLOAD ROUNDS [ui32|memset|memcpy]\n       %s --list\n", argv[0],
                argv[0]);
        return 2;
    }
    for (i = 0; i < WORKLOADS; ++i)
        if (strcmp(workloads[i].name, argv[3]) == 0) k = &workloads[i];
    if (k == NULL) fail("no such workload (--list shows them)");
    if (strcmp(mode, "ui32") != 0 && strcmp(mode, "memset") != 0 && strcmp(mode, "memcpy") != 0) fail("bad mode");
    rounds = atoi(argv[4]);
    inputs = argv[2];

    library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) fail(dlerror());
    get = dlsym(library, "srn_get");
    if (get == NULL) fail("no srn_get");
    if (k->setup == bitmapsSetup || k->round == bitmapUpdateRaw) config.sourceBytesPerPixel = k->variant ? k->variant : 3;
    ((void (*)(UiDrawTable, UiLogFn, const UiConfig *))get)(table, logReport, &config);
    SLOT(UiSetSourceByteOrderFn, UI_SLOT_SET_SOURCE_BYTE_ORDER)(1);

    for (i = 0; i < W * H; ++i) {
        frame[i] = (uint32_t)i * 2654435761u >> 8;
        source[i] = (uint32_t)i * 40503u & 0xffffff;
    }
    surface.image = (imgbuf){frame, 0, 0, 4 * W, W, H};
    surface.dirty = (dirtybuf){tiles, 0, {0}, W / 32, H / 32};
    k->setup(k);
    for (i = 0; i < rectCount; ++i) pixels += (long long)rects[i].width * rects[i].height;

    for (i = 0; i < rounds; ++i) {
        if (mode[0] == 'u') k->round(k);
        else if (mode[3] == 's') memsetRows();
        else memcpyRows();
    }
    for (i = 0; i < W * H; i += 4099) sum += frame[i];
    if (reports > 0) fail("the library reported: the count is not valid");
    printf("pixels %lld\nchecksum %08x\n", pixels, (unsigned)sum);
    return 0;
}
