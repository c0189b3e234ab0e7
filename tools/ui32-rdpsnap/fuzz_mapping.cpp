// libFuzzer target for the order-to-record mapping: the input is a sequence
// of operations, each an order, a bitmap update, a cache order or new bounds,
// filled from the input bytes the way FreeRDP hands them over (parsed fields,
// data pointers with their lengths), and handed to the Mapper, which draws
// through the library compiled in.  A malformed sequence must end in a false
// result, never in a fault.  RDPSNAP_FUZZ_BPP=24 fuzzes a 24-bit session
// (interleaved bitmaps), anything else a 32-bit one (planar).
#include <cstdlib>
#include <cstring>

#include "mapping.h"

namespace {

class Input {
public:
    Input(const uint8_t *data, size_t size) : p_(data), end_(data + size) {}
    bool more() const { return p_ < end_; }
    uint32_t u8() { return more() ? *p_++ : 0; }
    uint32_t u16() { return u8() | u8() << 8; }
    uint32_t u32() { return u16() | u16() << 16; }
    int32_t coordinate() { return int16_t(u16()); }
    uint32_t colour() { return u32() & 0xffffff; }
    // Up to `limit` bytes of the input as a data block, as FreeRDP points
    // into the PDU it parsed.
    const uint8_t *block(uint32_t &length, uint32_t limit) {
        length = std::min<uint32_t>(u16() % (limit + 1), uint32_t(end_ - p_));
        const uint8_t *at = p_;
        p_ += length;
        return at;
    }

private:
    const uint8_t *p_, *end_;
};

int quiet(const char *, const char *, int, const char *, ...) { return 0; }

struct Session {
    UiDrawTable table{};
    uint32_t bpp;
    Session() {
        const char *depth = std::getenv("RDPSNAP_FUZZ_BPP");
        bpp = depth != nullptr && std::strcmp(depth, "24") == 0 ? 24 : 32;
        const UiConfig config{rdpsnap::Mapper::kHatchPatterns, int32_t(bpp / 8)};
        srn_get(table, quiet, &config);
    }
};

void rect(Input &in, INT32 &left, INT32 &top, INT32 &width, INT32 &height) {
    left = in.coordinate(), top = in.coordinate(), width = in.coordinate(), height = in.coordinate();
}

void brush(Input &in, rdpBrush &b) {
    b.x = in.u8(), b.y = in.u8(), b.style = in.u8(), b.hatch = in.u8(), b.index = in.u8();
    for (BYTE &row : b.p8x8) row = BYTE(in.u8());
}

template <typename Order>
void text(Input &in, Order &o) {
    o.cacheId = in.u8(), o.flAccel = in.u8(), o.ulCharInc = in.u8();
    o.backColor = in.colour(), o.foreColor = in.colour();
    o.bkLeft = in.coordinate(), o.bkTop = in.coordinate(), o.bkRight = in.coordinate(), o.bkBottom = in.coordinate();
    o.opLeft = in.coordinate(), o.opTop = in.coordinate(), o.opRight = in.coordinate(), o.opBottom = in.coordinate();
    o.x = in.coordinate(), o.y = in.coordinate();
    uint32_t length;
    const uint8_t *bytes = in.block(length, 255);
    std::memcpy(o.data, bytes, length);
    o.cbData = in.u8() & 1 ? in.u32() : length;
}

template <typename Glyph>
void glyph(Input &in, Glyph &g) {
    g.cacheIndex = in.u16(), g.x = decltype(g.x)(in.coordinate()), g.y = decltype(g.y)(in.coordinate());
    g.cx = in.u8(), g.cy = in.u8();
    g.aj = const_cast<BYTE *>(in.block(g.cb, 512));
}

bool step(Input &in, rdpsnap::Canvas &canvas, rdpsnap::Mapper &m, uint32_t bpp) {
    switch (in.u8() % 17) {
        case 0: {
            BITMAP_DATA r{};
            r.destLeft = in.u16(), r.destTop = in.u16(), r.destRight = in.u16(), r.destBottom = in.u16();
            r.width = in.u8(), r.height = in.u8(), r.bitsPerPixel = in.u8() % 4 == 0 ? 16 : bpp;
            r.compressed = in.u8() & 1;
            r.bitmapDataStream = const_cast<BYTE *>(in.block(r.bitmapLength, 16384));
            BITMAP_UPDATE u{1, 1, &r, FALSE};
            return m.bitmapUpdate(u);
        }
        case 1: {
            DSTBLT_ORDER o{};
            rect(in, o.nLeftRect, o.nTopRect, o.nWidth, o.nHeight);
            o.bRop = in.u8();
            return m.dstBlt(o);
        }
        case 2: {
            PATBLT_ORDER o{};
            rect(in, o.nLeftRect, o.nTopRect, o.nWidth, o.nHeight);
            o.bRop = in.u8(), o.backColor = in.colour(), o.foreColor = in.colour();
            brush(in, o.brush);
            return m.patBlt(o);
        }
        case 3: {
            SCRBLT_ORDER o{};
            rect(in, o.nLeftRect, o.nTopRect, o.nWidth, o.nHeight);
            o.bRop = in.u8(), o.nXSrc = in.coordinate(), o.nYSrc = in.coordinate();
            return m.scrBlt(o);
        }
        case 4: {
            OPAQUE_RECT_ORDER o{};
            rect(in, o.nLeftRect, o.nTopRect, o.nWidth, o.nHeight);
            o.color = in.colour();
            return m.opaqueRect(o);
        }
        case 5: {
            MULTI_OPAQUE_RECT_ORDER o{};
            o.color = in.colour(), o.numRectangles = in.u8() & 0x80 ? in.u32() : in.u8() % 46;
            for (DELTA_RECT &r : o.rectangles) rect(in, r.left, r.top, r.width, r.height);
            return m.multiOpaqueRect(o);
        }
        case 6: {
            LINE_TO_ORDER o{};
            o.nXStart = in.coordinate(), o.nYStart = in.coordinate();
            o.nXEnd = in.coordinate(), o.nYEnd = in.coordinate();
            o.bRop2 = in.u8(), o.penStyle = in.u8() % 3 == 0, o.penWidth = in.u8() % 3, o.penColor = in.colour();
            return m.lineTo(o);
        }
        case 7: {
            MEMBLT_ORDER o{};
            o.cacheId = in.u8() % 4, o.cacheIndex = in.u16();
            rect(in, o.nLeftRect, o.nTopRect, o.nWidth, o.nHeight);
            o.bRop = in.u8(), o.nXSrc = in.coordinate(), o.nYSrc = in.coordinate();
            return m.memBlt(o);
        }
        case 8: {
            GLYPH_INDEX_ORDER o{};
            text(in, o);
            o.fOpRedundant = in.u8() & 1;
            return m.glyphIndex(o);
        }
        case 9: {
            FAST_INDEX_ORDER o{};
            text(in, o);
            return m.fastIndex(o);
        }
        case 10: {
            FAST_GLYPH_ORDER o{};
            text(in, o);
            if (o.cbData > 1) glyph(in, o.glyphData);
            return m.fastGlyph(o);
        }
        case 11:
        case 12: {
            CACHE_BITMAP_V2_ORDER o{};
            o.cacheId = in.u8() % 4, o.cacheIndex = in.u16() % 2100;
            o.bitmapBpp = in.u8() % 4 == 0 ? 16 : bpp;
            o.bitmapWidth = in.u8(), o.bitmapHeight = in.u8(), o.compressed = in.u8() & 1;
            o.bitmapDataStream = const_cast<BYTE *>(in.block(o.bitmapLength, 16384));
            return m.cacheBitmapV2(o);
        }
        case 13: {
            CACHE_GLYPH_ORDER o{};
            o.cacheId = in.u8() % 11, o.cGlyphs = in.u8() % 4;
            for (uint32_t i = 0; i < o.cGlyphs; ++i) glyph(in, o.glyphData[i]);
            return m.cacheGlyph(o);
        }
        case 14: {
            CACHE_GLYPH_V2_ORDER o{};
            o.cacheId = in.u8() % 11, o.cGlyphs = in.u8() % 4;
            for (uint32_t i = 0; i < o.cGlyphs; ++i) glyph(in, o.glyphData[i]);
            return m.cacheGlyphV2(o);
        }
        case 15: {
            CACHE_BRUSH_ORDER o{};
            o.index = in.u8() % 70, o.bpp = in.u8() % 40, o.cx = 8 + in.u8() % 2, o.cy = 8;
            uint32_t length;
            const uint8_t *bytes = in.block(length, 256);
            std::memcpy(o.data, bytes, length);
            o.length = length;
            return m.cacheBrush(o);
        }
        default: {
            const int32_t bounds[4] = {in.coordinate(), in.coordinate(), in.coordinate(), in.coordinate()};
            canvas.setBounds(in.u8() & 1 ? bounds : nullptr);
            return true;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static Session session;
    rdpsnap::Canvas canvas(session.table);
    canvas.resize(320, 240);
    rdpsnap::Caches caches;
    // The cell sizes FreeRDP announces, with fewer entries to keep runs fast.
    caches.setGlyphCaches({{{16, 4}, {16, 4}, {16, 8}, {16, 8}, {16, 16}, {16, 32}, {16, 64}, {16, 128}, {16, 256},
                            {16, 2048}}});
    rdpsnap::Mapper mapper(canvas, caches, session.bpp);
    Input in(data, size);
    while (in.more()) step(in, canvas, mapper, session.bpp);
    return 0;
}
