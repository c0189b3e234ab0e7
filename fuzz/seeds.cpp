// Writes the seed corpora, fuzz/corpus/<target>/, and the regression inputs
// rebuilt in the harness's input format: `seeds <fuzz directory>`.  ok-*
// seeds are well-formed and draw without a report; edge-* seeds reach
// refusals and limits.  Bitmap streams come from the kit's encoders and, for
// interleaved and planar data, from the peer's encoders as servers make them.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "harness.cpp"
#include "peer.h"
#include "records.h"

namespace {

using kit::Bytes;
using kit::Picture;
std::string root;

struct Seed : Bytes {
    // Frame, placement, origin, depth, byte order, glyph cache (none).
    explicit Seed(uint8_t w, uint8_t h, int32_t depth = 3, uint8_t shape = 0, kit::GlyphCache *glyphs = nullptr,
                  int32_t size = 32, uint8_t variant = 0, uint8_t byteOrder = 1) {
        u(w, h, shape);
        if (shape & 0x80) u(variant);
        n(shape & 0x40 ? 7 : 0, shape & 0x40 ? -3 : 0, depth).u(byteOrder);
        const UiGlyphCache *c = glyphs != nullptr ? glyphs->cache() : nullptr;
        u(c != nullptr ? uint8_t(c->entryCount) : 0).n(size).u(0);
        for (int i = 0; c != nullptr && i < c->entryCount; ++i) {
            const uint8_t *e = c->entries + size_t(i) * size_t(size + 8);
            UiGlyph g;
            std::memcpy(&g, e, 8);
            n(g.x, g.y, g.cx, g.cy).b(Bytes(e + 8, e + 8 + size));
        }
    }
    template <typename... T>
    Seed &u(T... bytes) { return (*this)({uint8_t(bytes)...}), *this; }
    template <typename... T>
    Seed &n(T... values) { return (fuzz::num(*this, int32_t(values)), ...), *this; }
    Seed &b(const Bytes &bytes) { return fuzz::blob(*this, bytes), *this; }
    Seed &op(int slot, bool fullClip = true) { return fullClip ? u(slot, 0) : u(slot, 1); }
    // Slot 0: the bitmap at (left, top), compressed or not.
    Seed &bitmap(int32_t left, int32_t top, const Picture &p, const Bytes &data, bool compressed = true) {
        return u(0).n(left, top, left + p.width - 1, top + p.height - 1, p.width, p.height, 24, compressed).n(data.size()).b(data);
    }
    Seed &decode(const Picture &p, const Bytes &data, bool compressed = true) {
        return u(8).n(p.width, p.height, data.size()).u(compressed).b(data);
    }
    // A ZRLE rectangle at (x, y), tile by tile through the slot of each
    // tile's sub-encoding.
    Seed &zrle(int32_t x, int32_t y, const Picture &p, int tile = 64) {
        for (int ty = 0; ty < p.height; ty += tile)
            for (int tx = 0; tx < p.width; tx += tile) {
                const Picture t = p.crop(tx, ty, std::min(tile, p.width - tx), std::min(tile, p.height - ty));
                const Bytes body = kit::zrleTile(t);
                const int sub = body[0];
                u(sub == 0 ? 18 : sub == 1 ? 19 : sub < 128 ? 20 : sub == 128 ? 21 : 22).n(x + tx, y + ty, t.width, t.height);
                u(sub, 0).b(Bytes(body.begin() + 1, body.end()));
            }
        return *this;
    }
};

// A seed of fuzz/corpus/<target>/, or of fuzz/<dir>/ for "<dir>/<target>".
void write(const std::string &target, const std::string &name, const Bytes &bytes) {
    const std::string dir = root + (target.find('/') == std::string::npos ? "/corpus/" : "/") + target;
    std::filesystem::create_directories(dir);
    std::ofstream(dir + "/" + name, std::ios::binary).write(reinterpret_cast<const char *>(bytes.data()), std::streamsize(bytes.size()));
}

Picture stripes(int w, int h, int colours, int run) {
    Picture p(w, h);
    for (int i = 0; i < w * h; ++i) p.pixels[size_t(i)] = uint32_t(0x102030 * (1 + i / run % colours));
    return p;
}

Bytes peer(const Picture &p, int planarFlags = -1) {
    Bytes out;
    if (!(planarFlags < 0 ? kit::peerInterleaved(p, out) : kit::peerPlanar(p, uint32_t(planarFlags), out))) std::abort();
    return out;
}

void glyphSamples(kit::GlyphCache &g) {
    g.add(0, -8, {"...##...", "..#..#..", ".#....#.", ".######.", ".#....#.", ".#....#.", ".#....#.", "........"});
    g.add(1, -10, {"#########", "#........", "#########", "#........", "#########", "#........"});
    g.add(-2, 0, {"####....####", "....####....", "#.#.#.#.#.#."});
    g.add(0, 0, {"#"});
    g.add(0, -4, {"################", "#..............#"});
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: seeds <fuzz directory>\n"), 2;
    root = argv[1];
    const Picture p32 = kit::testPicture(32, 16, 3), p20 = kit::testPicture(20, 6, 5), p12 = kit::testPicture(12, 5, 2);

    // Bitmaps: every codec and depth, clipped, and the refusals.
    write("bitmap_update", "ok-interleaved-peer", Seed(64, 48).bitmap(3, 5, p32, peer(p32)));
    write("bitmap_update", "ok-interleaved-images-origin", Seed(64, 48, 3, 0x40).bitmap(-2, 40, p20, kit::interleavedImages(p20)));
    write("bitmap_update", "ok-planar-peer-and-every-form", Seed(64, 48, 4).bitmap(1, 1, p32, peer(p32, 0)).bitmap(30, 20, p20, kit::planar(p20, true, true))
                                                                 .bitmap(2, 30, p20, kit::planar(p20, true, false)).bitmap(40, 2, p12, kit::planar(p12, false, true)).bitmap(50, 40, p12, kit::planar(p12, false, false)));
    write("bitmap_update", "ok-uncompressed-24-clipped", Seed(64, 48).bitmap(4, 4, p12, kit::rawBitmap(p12, 3), false).bitmap(-5, -3, p20, kit::rawBitmap(p20, 3), false));
    write("bitmap_update", "ok-uncompressed-32-after-slot-10", Seed(64, 48).u(10).bitmap(40, 30, p12, kit::rawBitmap(p12, 4), false));
    write("bitmap_update", "edge-unknown-header-and-overrun", Seed(64, 48).bitmap(0, 0, Picture(8, 2), Bytes{0x03, 0xa5, 0x05}).bitmap(0, 0, Picture(8, 2), Bytes{0xf3, 0x00, 0x01, 1, 2, 3}));
    write("bitmap_update", "edge-short-data", Seed(64, 48, 4).bitmap(1, 1, p12, kit::planar(p12, false, false).first(12 * 5 * 3)).bitmap(4, 4, p12, kit::rawBitmap(p12, 4).first(239), false));
    write("bitmap_update", "edge-tiles-outside-map", Seed(64, 48, 3, 0x80, nullptr, 0, 0x0c).bitmap(40, 30, p12, kit::rawBitmap(p12, 3), false));
    write("bitmap_update", "edge-too-many-pixels", Seed(64, 48).bitmap(0, 0, Picture(300, 300), Bytes{0xf0, 0xff}));
    write("bitmap_update", "edge-far-rectangles-top", Seed(64, 48, 3, 0x35).bitmap(0x7fffff00, 40, p12, kit::rawBitmap(p12, 3), false).bitmap(60, 0x40000000, p12, kit::rawBitmap(p12, 3), false));
    write("bitmap_update", "edge-negative-rectangles-bottom", Seed(64, 48, 3, 0x2a).bitmap(-0x7ffffff0, -1, p12, kit::rawBitmap(p12, 3), false).bitmap(-8, -0x10000000, p12, kit::planar(p12, true, false)));
    write("decode_bitmap", "ok-interleaved", Seed(1, 1).decode(p32, peer(p32)).decode(p20, kit::interleavedImages(p20)).decode(p12, kit::rawBitmap(p12, 3), false));
    write("decode_bitmap", "ok-planar", Seed(1, 1, 4).decode(p32, peer(p32, 0)).decode(p20, kit::planar(p20, true, true)).decode(p12, kit::planar(p12, false, false)).decode(p12, kit::rawBitmap(p12, 4), false));
    write("decode_bitmap", "edge-planar-refused-header-and-row-overrun", Seed(1, 1, 4).decode(Picture(4, 4), Bytes{0x08}(Bytes(48, 0))).decode(Picture(4, 2), Bytes{0x30, 0x50, 1, 2, 3, 4, 5}));
    write("decode_bitmap", "edge-depth-2-and-negative-length", Seed(1, 1, 2).decode(Picture(4, 4), Bytes{0x84, 1, 2}).u(15, 0).u(8).n(4, 4, -1).u(1).b(Bytes{0xf0, 0x10, 0}));
    write("regressions/decode_bitmap", "compressed-size-product-overflows-64-bits", Seed(1, 1).u(8).n(INT32_MAX, INT32_MAX, 3).u(1).b(Bytes{0xf0, 0x10, 0}));

    // Orders.
    write("rect_orders", "ok-every-order", Seed(96, 64, 3, 0x41).op(1).n(10, 10, 20, 20, 0x55).op(3).n(5, 5, 40, 30, 0xcc, 10, 12).op(9).n(0, 50, 30, 16, 16, 0xcc, 0, 0, 0, 16, 16).u(0)
                                                .op(5, false).n(0, 0, 60, 40).n(-10, 20, 100, 8, 255, 128, 0));
    write("rect_orders", "edge-outside-and-small-map", Seed(96, 64, 3, 0x80, nullptr, 0, 0x04).op(1).n(90, 60, 20, 20, 0).op(3).n(-5, -5, 400, 10, 0xcc, 0x7fffffff, 0).op(9).n(0, 10, 10, 10, 10, 0xcc, 20, 20, 0, 8, 8).u(1));
    write("pat_blt", "ok-every-brush", Seed(96, 64).op(2).n(2, 2, 30, 20, 0xf0, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0, 0).b({}).u(0)
                                           .op(2).n(34, 2, 30, 20, 0xf0, 0, 0, 0, 0, 255, 0, 3, 5, 2, 3, 0).b({}).u(0)
                                           .op(2).n(2, 30, 30, 20, 0x5a, 1, 2, 3, 200, 100, 50, 0, 0, 3, 0x0f0f0ff0, 0x55aa55aa).b({}).u(0)
                                           .op(2).n(34, 30, 30, 20, 0xf0, 1, 2, 3, 4, 5, 6, 1, 1, 0x81, 0, 0).b(Bytes{0x81, 0x42, 0x24, 0x18, 0x18, 0x24, 0x42, 0x81}).u(0)
                                           .op(2).n(64, 30, 30, 30, 0xf0, 0, 0, 0, 0, 0, 0, 0, 0, 0x85, 0, 0).b(kit::rawBitmap(kit::testPicture(8, 8), 4)).u(0));
    write("pat_blt", "edge-refused-styles-and-phases", Seed(96, 64).op(2).n(0, 0, 10, 10, 0xf0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0).b({}).u(0)
                                                         .op(2).n(0, 0, 10, 10, 0xf0, 0, 0, 0, 0, 0, 0, 0, 0, 0x83, 0, 0).b({}).u(0)
                                                         .op(2).n(0, 0, 10, 10, 0xf0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 9, 0).b({}).u(0)
                                                         .op(2).n(-20, 50, 200, 30, 0xf0, 0, 0, 0, 0, 0, 0, INT32_MIN, -7, 0x81, 0, 0).b(Bytes(8, 0x55)).u(1));
    write("draw_line", "ok-every-path", Seed(96, 64).op(4).n(2, 2, 50, 2, 13, 255, 0, 0).op(4).n(3, 60, 3, 5, 13, 0, 255, 0).op(4).n(10, 10, 40, 40, 13, 0, 0, 255)
                                           .op(4).n(7, 7, 8, 7, 6, 1, 1, 1).op(4, false).n(5, 5, 60, 40).n(-30, -20, 150, 90, 13, 9, 9, 9).op(4).n(90, 2, 3, 60, 7, 5, 5, 5));
    write("draw_line", "edge-clip-beyond-image", Seed(96, 64).op(4, false).n(-100, -100, 500, 500).n(-1000, 5, 1000, 60, 13, 1, 2, 3).op(4).n(INT32_MIN, 0, INT32_MAX, 63, 13, 1, 1, 1));

    // Text: glyph strings with advances, deltas, fragments and vertical text.
    kit::GlyphCache glyphs(32);
    glyphSamples(glyphs);
    const auto text = [](Seed &s, int flAccel, int charInc, int x, int y, const Bytes &str, bool opaque = false) -> Seed & {
        s.op(6).n(7, flAccel, charInc, 0, 255, 255, 255, 0, 0, 128, 4, 4, 90, 30).n(opaque ? 4 : 0, opaque ? 4 : 0, opaque ? 90 : 0, opaque ? 30 : 0, x, y);
        return s.n(str.size()).u(1).b(str);
    };
    Seed gi(100, 40, 3, 0x01, &glyphs);
    text(text(gi, 0x20, 0, 10, 20, Bytes{0, 1, 2, 3, 4, 0, 1}, true), 0x20, 8, 10, 30, Bytes{4, 3, 2});
    write("glyph_index", "ok-advance", gi);
    Seed gd(100, 40, 3, 0, &glyphs);
    write("glyph_index", "ok-deltas-fragments-vertical", text(text(text(text(gd, 0, 0, 10, 20, Bytes{0, 0x0a, 1, 0x81, 0x0c, 0x00, 2, 0x05, 3, 0x7f, 4}), 0x20, 0, 10, 20, Bytes{0, 1, 2, 0xff, 3, 3}),
                                                                        0x20, 0, 10, 30, Bytes{0xfe, 3, 4, 0xfe, 3}), 0x24, 0, 20, 2, Bytes{0, 1, 2}));
    Seed ge(100, 40, 3, 0, &glyphs);
    write("glyph_index", "edge-refusals-and-clip", text(text(text(text(ge, 0x20, 0, 10, 20, Bytes{9, 200, 0}), 0x20, 0, 10, 20, Bytes{0, 0xff, 3}), 0x20, 0, 10, 20, Bytes{0, 0xfe}), 0x20, 0, -5, -5, Bytes(32, 1)));
    Seed fg(64, 40, 3, 0, &glyphs), fe(64, 40, 3, 0, &glyphs);
    for (int i : {0, 1, 2, 4}) fg.op(7).n(0, 0, 0, 200, 100, 50, 1, 2, 3, 2, 2, 60, 30, 0, 0, 0, 0, 10 + 10 * i, 20, 1).u(i);
    write("fast_glyph", "ok-glyphs", fg);
    fe.op(7).n(0, 0, 0, 1, 1, 1, 0, 0, 0, 2, 2, 60, 30, 0, 0, 0, 0, 10, 20, 1).u(5).op(7).n(0, 0, 0, 1, 1, 1, 0, 0, 0, 10, 10, 5, 5, 0, 0, 0, 0, 10, 20, 1).u(3);
    write("fast_glyph", "edge-refusals", fe);

    // RFB tiles: every sub-encoding (ZRLE and TRLE tiling), Hextile tiles.
    const Picture flat(40, 20, 0x336699), two = stripes(64, 64, 2, 5), four = stripes(30, 17, 4, 3), runs = stripes(64, 40, 20, 37);
    write("zrle_tiles", "ok-every-sub-encoding", Seed(200, 150).zrle(0, 0, flat).zrle(40, 0, two).zrle(104, 0, four).zrle(0, 64, runs).zrle(64, 64, kit::testPicture(80, 70), 16).zrle(150, 100, kit::testPicture(50, 50, 9)));
    write("zrle_tiles", "ok-byte-order-0", Seed(64, 64, 3, 0, nullptr, 32, 0, 0).zrle(0, 0, kit::testPicture(64, 64, 4), 16));
    write("zrle_tiles", "edge-short-outside-palette-17-long-run", Seed(64, 64).u(18).n(0, 0, 20, 20).u(0, 0).b(Bytes(1199, 1)).u(19).n(10, 10, 64, 64).u(1, 0).b(Bytes{1, 2, 3})
                                                                      .u(20).n(0, 0, 16, 16).u(17, 0).b(Bytes(100, 0)).u(21).n(0, 0, 4, 2).u(128, 0).b(Bytes{1, 2, 3, 8}));
    const Picture h1 = kit::testPicture(48, 40, 6);
    write("hextile", "ok-every-tile-kind", Seed(64, 48).u(24).n(3, 3, 48, 40).b(kit::hextile(h1)).u(24).n(0, 0, 20, 20).b(kit::hextile(stripes(20, 20, 2, 7))));
    write("hextile", "ok-byte-order-0", Seed(64, 48, 3, 0, nullptr, 32, 0, 0).u(24).n(10, 5, 48, 40).b(kit::hextile(h1)));
    write("hextile", "edge-short-outside-empty", Seed(64, 48).u(24).n(3, 3, 48, 40).b(kit::hextile(h1).first(100)).u(24).n(40, 40, 48, 40).b(kit::hextile(h1)).u(24).n(0, 0, 0, 5).b({}));

    // Direct primitives.
    write("primitives", "ok-every-primitive", Seed(80, 60).u(11).n(5, 5, 30, 20).u(0).n(0x123456).u(12).n(40, 10).u(0).b(Bytes(16, 0x5a)).n(0xffffff).u(13).n(0, 59, 80).u(1).n(7)
                                                  .u(14).n(79, 0, 60).u(0).n(9).u(16).n(50, 30, 4, 3).b(kit::rawBitmap(kit::testPicture(4, 3), 4)).u(17).n(0, 0, 20, 20, 30, 30).u(23, 8, 3, 2).b(Bytes(200, 9)));
    write("primitives", "edge-refusals", Seed(80, 60).u(11).n(70, 50, 20, 20).u(0).n(1).u(11).n(INT32_MAX, 0, 2, 2).u(0).n(1).u(12).n(75, 50).u(0).b({}).n(1).u(13).n(-1, 0, 10).u(0).n(1)
                                             .u(14).n(0, 0, 61).u(0).n(1).u(16).n(0, 0, -1, 4).b({}).u(17).n(0, 0, 90, 10, 0, 0).u(23, 0, 4, 0).b({}).u(23, 40, 0xf9, 0).b({}));

    // The session: every family on one surface, settings changed between.
    Seed all(96, 64, 3, 0x41, &glyphs);
    all.op(5).n(0, 0, 96, 64, 10, 20, 30).bitmap(3, 5, p32, peer(p32)).u(10).bitmap(1, 40, p20, kit::planar(p20, true, false)).u(25, 1).n(3).bitmap(30, 30, p12, kit::rawBitmap(p12, 3), false);
    text(all, 0x20, 0, 10, 20, Bytes{0, 1, 2, 0xff, 3, 3});
    text(all, 0x20, 0, 10, 40, Bytes{0xfe, 3});
    all.op(7).n(0, 0, 0, 200, 100, 50, 1, 2, 3, 2, 2, 60, 30, 0, 0, 0, 0, 50, 50, 1).u(2).op(4).n(0, 0, 95, 63, 13, 1, 2, 3).u(25, 0).n(0).zrle(40, 10, four).u(15, 0).u(24).n(0, 0, 48, 40).b(kit::hextile(h1));
    all.u(13).n(0, 63, 96).u(0).n(5).u(25, 1).n(4).decode(p20, kit::planar(p20, true, true)).u(17).n(0, 0, 30, 30, 40, 20);
    write("session", "ok-every-family-and-settings", all);
    write("session", "edge-far-and-wrapping-top", Seed(64, 48, 3, 0x75).op(5).n(0x7ffffff0, 0, 100, 10, 1, 2, 3).op(1, false).n(0, 0, 0x7fffffff, 47).n(-0x7fffffff, 0, INT32_MAX, 40, 0x55)
                                                          .u(11).n(0, 0x3fffffff, 64, 4).u(0).n(1).u(16).n(60, 0x10000000, 4, 1).b(Bytes(16, 3)).u(17).n(0, 0, 10, 10, 0, 0x20000000));
    write("session", "edge-far-and-wrapping-bottom", Seed(64, 48, 3, 0x6a).op(5).n(-0x7ffffff0, -5, 100, 10, 1, 2, 3).u(13).n(-0x40000000, 0, 0x40000010, 0).n(1).u(14).n(0, INT32_MIN, -1).u(0).n(1)
                                                             .u(20).n(-64, -0x8000, 16, 16).u(2, 0).b(Bytes(40, 0x11)));

    // Differential: width - 1, height - 1, then the stream.
    const auto diff = [](int w, int h, const Bytes &data) { return Bytes{uint8_t(w - 1), uint8_t(h - 1)}(data); };
    int k = 0;
    for (const Picture &p : {p32, kit::testPicture(64, 64, 7), kit::testPicture(8, 3, 8), stripes(16, 16, 3, 5)}) {
        write("interleaved_diff", "ok-peer-" + std::to_string(k), diff(p.width, p.height, peer(p)));
        write("planar_diff", "ok-peer-" + std::to_string(k), diff(p.width, p.height, peer(p, 0)));
        write("planar_diff", "ok-forms-" + std::to_string(k), diff(p.width, p.height, kit::planar(p, k & 1, k & 2)));
        ++k;
    }
    write("interleaved_diff", "ok-images", diff(20, 6, kit::interleavedImages(p20)));
    write("interleaved_diff", "edge-truncated", diff(32, 16, peer(p32).first(40)));
    write("planar_diff", "edge-truncated-and-colour-loss", diff(20, 6, kit::planar(p20, true, false).first(30)));
    return 0;
}
