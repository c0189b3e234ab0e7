// Slots 0 and 8: bitmap updates painted the right way up with clipping on
// every side, for uncompressed, interleaved and planar data; their refusals;
// and the bitmap decode for the client's cache.
#include <gtest/gtest.h>

#include "bitmap_streams.h"
#include "frame.h"
#include "guarded_input.h"
#include "library.h"

using namespace ui32test;

namespace {

using Pixels = std::vector<uint32_t>;
constexpr uint32_t kFill = 0x00ABCDEF;

struct Encoding {
    const char *name;
    int32_t depth;
    uint32_t flags;
    Bytes (*encode)(int32_t width, int32_t height);
};

const Encoding kEncodings[] = {
    {"uncompressed, 3 bytes", 3, 0, [](int32_t w, int32_t h) { return Bytes{}.pixels(storedPicture(w, h), 3); }},
    {"uncompressed, 4 bytes", 4, 0, [](int32_t w, int32_t h) { return Bytes{}.pixels(storedPicture(w, h), 4); }},
    {"interleaved", 3, 1, [](int32_t w, int32_t h) { return interleavedPicture(w, h); }},
    {"planar", 4, 1, [](int32_t w, int32_t h) { return planarPicture(w, h, true); }},
};

UiBitmapData record(int32_t left, int32_t top, int32_t right, int32_t bottom, int32_t width, int32_t height,
                    uint32_t flags, const GuardedInput &data) {
    return UiBitmapData{left, top, right, bottom, width, height, 0, flags, data.size(), data.data()};
}

std::vector<int> tilesOf(int32_t columns, int32_t left, int32_t top, int32_t right, int32_t bottom) {
    std::vector<int> out;
    for (int32_t ty = top / 32; ty <= (bottom - 1) / 32; ++ty)
        for (int32_t tx = left / 32; tx <= (right - 1) / 32; ++tx) out.push_back(ty * columns + tx);
    return out;
}

TEST(BitmapUpdate, PaintsTheRightWayUpClippedOnEverySide) {
    const struct {
        const char *name;
        int32_t left, top, width, height;  // destination rectangle
    } placements[] = {
        {"inside", 3, 4, 8, 6},        {"left cut", -3, 4, 8, 6},  {"right cut", 36, 4, 8, 6},
        {"top cut", 3, -2, 8, 6},      {"bottom cut", 3, 37, 8, 6}, {"smaller than the bitmap", 30, 30, 5, 4},
        {"smaller, cut left and top", -2, -1, 5, 4},
    };
    for (const Encoding &e : kEncodings) {
        const GuardedInput data(e.encode(8, 6).v);
        for (const auto &p : placements) {
            SCOPED_TRACE(std::string(e.name) + ", " + p.name);
            Library lib(e.depth);
            auto bitmapUpdate = lib.slot<UiBitmapUpdateFn>(UI_SLOT_BITMAP_UPDATE);
            LogCapture log;
            Frame frame(40, 40, kFill);
            frame.surface().originEnabled = 1;
            frame.surface().originX = 100;
            frame.surface().originY = -50;
            const UiBitmapData b = record(p.left + 100, p.top - 50, p.left + 99 + p.width, p.top - 51 + p.height, 8,
                                          6, e.flags, data);
            bitmapUpdate(&frame.surface(), &b);
            for (int32_t y = 0; y < 40; ++y)
                for (int32_t x = 0; x < 40; ++x) {
                    const int32_t c = x - p.left, r = y - p.top;
                    const bool inside = c >= 0 && c < p.width && r >= 0 && r < p.height;
                    ASSERT_EQ(frame.at(x, y), inside ? picturePixel(c, r) : kFill) << x << "," << y;
                }
            const int32_t x0 = std::max(p.left, 0), y0 = std::max(p.top, 0);
            EXPECT_EQ(frame.markedTiles(), tilesOf(2, x0, y0, std::min(p.left + p.width, 40),
                                                   std::min(p.top + p.height, 40)));
            EXPECT_TRUE(log.reports().empty());
            EXPECT_TRUE(frame.guardsIntact());
        }
    }
}

TEST(BitmapUpdate, RefusalsAndWhatStands) {
    const Bytes interleaved = interleavedPicture(8, 6), raw = Bytes{}.pixels(storedPicture(8, 6));
    const struct {
        const char *name;
        int32_t depth;
        UiBitmapData b;  // bitmapDataStream null: takes `data`
        Bytes data;
        bool nullImage, noTileRows;
        Sites sites;
        bool tilesMarked, drawn;
    } cases[] = {
        {"rectangle wider than the bitmap", 3, {0, 0, 8, 5, 8, 6, 0, 1}, interleaved, false, false, {"ui 1168"}, false, false},
        {"rectangle taller than the bitmap", 3, {0, 0, 7, 6, 8, 6, 0, 0}, raw, false, false, {"ui 1168"}, false, false},
        {"rectangle across the whole int range", 3, {INT32_MIN, 0, INT32_MAX, 5, 8, 6, 0, 1}, interleaved, false, false,
         {"ui 1168"}, false, false},
        {"empty rectangle", 3, {5, 5, 4, 10, 8, 6, 0, 1}, interleaved, false, false, {}, false, false},
        {"outside the image", 3, {40, 0, 47, 5, 8, 6, 0, 1}, interleaved, false, false, {}, false, false},
        {"negative bitmap size", 3, {0, 0, 7, 5, -8, -6, 0, 1}, interleaved, false, false, {"ui 1168"}, false, false},
        {"more than 65536 pixels", 3, {0, 0, 0, 0, 257, 256, 0, 1}, interleaved, false, false, {"ui 1199"}, true, false},
        {"pixel count wraps in 32 bits", 3, {0, 0, 0, 0, 65536, 65536, 0, 1}, interleaved, false, false, {"ui 1199"},
         true, false},
        {"decode fails", 3, {0, 0, 7, 5, 8, 6, 0, 1}, Bytes{0xFD, 0xA0}, false, false, {"ui 1108", "ui 1205"}, true,
         false},
        {"image without pixels, compressed", 3, {0, 0, 7, 5, 8, 6, 0, 1}, interleaved, true, false, {"ui 1210"}, true,
         false},
        {"image without pixels, uncompressed", 3, {0, 0, 7, 5, 8, 6, 0, 0}, raw, true, false, {"ui 1229"}, true, false},
        {"uncompressed data one byte short", 3, {0, 0, 7, 5, 8, 6, 0, 0}, Bytes{}.pixels(Pixels(47, 1))({1, 1}), false,
         false, {"ui 1229"}, true, false},
        {"uncompressed at 2 bytes per pixel", 2, {0, 0, 7, 5, 8, 6, 0, 0}, raw, false, false, {"ui 1229"}, true, false},
        {"tiles outside the map: drawing stands", 3, {0, 0, 7, 5, 8, 6, 0, 1}, interleaved, false, true,
         {"dirtybuf 114"}, false, true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        Library lib(c.depth);
        auto bitmapUpdate = lib.slot<UiBitmapUpdateFn>(UI_SLOT_BITMAP_UPDATE);
        LogCapture log;
        Frame frame(40, 40, kFill);
        uint32_t *pixels = frame.image().pixels;
        if (c.nullImage) frame.image().pixels = nullptr;
        if (c.noTileRows) frame.dirty().rows = 0;
        const GuardedInput data(c.data.v);
        UiBitmapData b = c.b;
        b.bitmapLength = data.size();
        b.bitmapDataStream = data.data();
        bitmapUpdate(&frame.surface(), &b);
        frame.image().pixels = pixels;
        frame.dirty().rows = 2;
        EXPECT_EQ(log.sites(), c.sites);
        EXPECT_EQ(!frame.markedTiles().empty(), c.tilesMarked);
        EXPECT_EQ(frame.at(0, 0), c.drawn ? picturePixel(0, 0) : kFill);
        if (!c.drawn) EXPECT_EQ(frame.pixels(), Pixels(1600, kFill));
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(BitmapUpdate, UncompressedDataNeedsOnlyTheRowsItShows) {
    // Placed two rows above the image: the top visible row is stored row 3,
    // so the data must reach the end of stored row 3 (32 pixels, 96 bytes).
    const Bytes whole = Bytes{}.pixels(storedPicture(8, 6));
    for (int32_t length : {96, 95}) {
        SCOPED_TRACE(length);
        Library lib(3);
        LogCapture log;
        Frame frame(40, 40, kFill);
        const GuardedInput data(whole.v.data(), size_t(length));
        const UiBitmapData b = record(0, -2, 7, 3, 8, 6, 0, data);
        lib.slot<UiBitmapUpdateFn>(UI_SLOT_BITMAP_UPDATE)(&frame.surface(), &b);
        EXPECT_EQ(frame.at(7, 3), length == 96 ? picturePixel(7, 5) : kFill);
        EXPECT_EQ(log.sites(), length == 96 ? Sites{} : Sites{"ui 1229"});
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(BitmapUpdate, LargestCompressedBitmapAndEarlyEndOfData) {
    Library lib(3);
    auto bitmapUpdate = lib.slot<UiBitmapUpdateFn>(UI_SLOT_BITMAP_UPDATE);
    LogCapture log;
    Frame frame(256, 256, kFill);
    const GuardedInput full(Bytes{0xF3}.u16(0xFFFF).colour(0x123456)({0xFD}).v);
    const UiBitmapData b = record(0, 0, 255, 255, 256, 256, 1, full);
    bitmapUpdate(&frame.surface(), &b);
    Pixels expected(65536, 0x123456);
    expected[255] = 0xFFFFFF;  // the last pixel stored is the top row's last
    EXPECT_EQ(frame.pixels(), expected);

    // Data for the bottom row only: the row above keeps the frame's pixels.
    Frame small(4, 2, kFill);
    const GuardedInput bottom(Bytes{0xF4}.u16(4).pixels({1, 2, 3, 4}).v);
    const UiBitmapData half = record(0, 0, 3, 1, 4, 2, 1, bottom);
    bitmapUpdate(&small.surface(), &half);
    EXPECT_EQ(small.pixels(), (Pixels{kFill, kFill, kFill, kFill, 1, 2, 3, 4}));
    EXPECT_TRUE(log.reports().empty());
    EXPECT_TRUE(frame.guardsIntact() && small.guardsIntact());
}

TEST(DecodeBitmap, ConvertsOrDecodesInStoredOrder) {
    const struct {
        const char *name;
        int32_t depth, width, height;
        Bytes data;
        uint8_t compressed;
        int32_t result;
        Pixels expected;
        Sites sites;
    } cases[] = {
        {"uncompressed 2 x 2", 3, 2, 2, Bytes{}.pixels({1, 2, 3, 4}), 0, 1, {1, 2, 3, 4, 9}},
        {"uncompressed at 4 bytes", 4, 2, 2, Bytes{}.pixels({1, 2, 3, 4}, 4), 0, 1, {1, 2, 3, 4, 9}},
        {"no rows", 3, 2, 0, Bytes{1}, 0, 1, {9, 9, 9, 9, 9}},
        {"one byte short", 3, 2, 2, Bytes{}.pixels({1, 2, 3})({4, 0}), 0, 0, {9, 9, 9, 9, 9}, {"ui 902"}},
        {"size wraps in 32 bits", 3, 65536, 65536, Bytes{}.pixels({1, 2, 3, 4}), 0, 0, {9, 9, 9, 9, 9}, {"ui 902"}},
        {"2 bytes per pixel", 2, 2, 2, Bytes{}.pixels({1, 2, 3, 4}), 0, 0, {9, 9, 9, 9, 9}, {"ui 902"}},
        {"interleaved", 3, 2, 2, Bytes{0xFD, 0xFE, 0xFD, 0xFE}, 1, 1, {0xFFFFFF, 0, 0xFFFFFF, 0, 9}},
        {"interleaved, unknown header", 3, 2, 2, Bytes{0xFD, 0xFB}, 1, 0, {0xFFFFFF, 9, 9, 9, 9}, {"ui 1108"}},
        {"planar", 4, 2, 2, planarPicture(2, 2), 1, 1, {storedPicture(2, 2)[0], storedPicture(2, 2)[1],
                                                        storedPicture(2, 2)[2], storedPicture(2, 2)[3], 9}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        Library lib(c.depth);
        LogCapture log;
        const GuardedInput data(c.data.v);
        Pixels out(5, 9);
        EXPECT_EQ(lib.slot<UiDecodeBitmapFn>(UI_SLOT_DECODE_BITMAP)(c.width, c.height, data.data(), data.size(),
                                                                      c.compressed, out.data()),
                  c.result);
        EXPECT_EQ(out, c.expected);
        EXPECT_EQ(log.sites(), c.sites);
    }
}

}  // namespace
