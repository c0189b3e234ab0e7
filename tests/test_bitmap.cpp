// Slot 0 paints a bitmap the right way up, translated and clipped, from
// uncompressed data at 3, 4 and 5 bytes per pixel and from interleaved and
// planar data; its refusals and what stands after them.  Slot 8's checks and
// its conversion of uncompressed bitmaps.
#include <set>

#include "bitmapModels.h"
#include "frame.h"
#include "picture.h"

namespace {

using kit::Bytes;
using model::Pixels;
using model::operator+;
using S = ui::Site;

constexpr uint32_t kFill = 0xABCDEF;

// The frame with bitmap pixel (x - left, y - top) at each (x, y) of the
// shown width x height at (left, top), and the tiles those touch.
std::pair<Pixels, std::vector<int>> shown(const kit::Frame &f, const kit::Picture &p, int32_t left, int32_t top, int32_t width,
                                          int32_t height) {
    Pixels out = f.pixels();
    std::set<int> tiles;
    for (int32_t y = std::max(top, 0); y < std::min(top + height, f.height()); ++y)
        for (int32_t x = std::max(left, 0); x < std::min(left + width, f.width()); ++x)
            out[size_t(y * f.width() + x)] = p.at(x - left, y - top), tiles.insert(y / 32 * ((f.width() + 31) / 32) + x / 32);
    return {out, std::vector<int>(tiles.begin(), tiles.end())};
}

TEST(BitmapUpdate, PaintsTheRightWayUpTranslatedAndClipped) {
    const kit::Picture picture = kit::testPicture(9, 7, 3);
    const std::tuple<int32_t, uint32_t, Bytes> encodings[] = {
        {3, 0, kit::rawBitmap(picture, 3)}, {4, 0, kit::rawBitmap(picture, 4)}, {5, 0, kit::rawBitmap(picture, 5)},
        {3, 1, kit::interleavedImages(picture)}, {4, 1, kit::planar(picture, true, true)},
        {4, 1, kit::planar(picture, false, false)}};
    kit::Frame frame(70, 40, kFill);
    frame.surface().originX = 100;
    frame.surface().originY = -50;
    for (const auto &[depth, flags, bytes] : encodings) {
        const kit::GuardedInput data(bytes);
        const test::Library lib(depth);
        for (int32_t left = -10; left <= 70; left += 5)
            for (int32_t top = -8; top <= 40; top += 6)
                for (const auto &[width, height] : {std::pair{9, 7}, {5, 4}, {1, 1}}) {
                    SCOPED_TRACE(testing::Message() << depth << "/" << flags << " at " << left << "," << top << ", " << width);
                    const bool origin = (left + top) % 3 != 0;  // the origin is subtracted only when enabled
                    frame.surface().originEnabled = origin;
                    frame.fill(kFill);
                    frame.clearTiles();
                    const auto [pixels, tiles] = shown(frame, picture, left, top, width, height);
                    const int32_t dx = origin ? 100 : 0, dy = origin ? -50 : 0;
                    kit::LogCapture log;
                    const int32_t x = left + dx, y = top + dy;
                    const UiBitmapData b{x, y, x + width - 1, y + height - 1, 9, 7, 24, flags, data.size(), data.data()};
                    lib.bitmapUpdate(frame.surface(), b);
                    ASSERT_EQ(frame.pixels(), pixels);
                    EXPECT_EQ(frame.markedTiles(), tiles);
                    EXPECT_EQ(frame.surface().dirty.changed != 0, !tiles.empty());
                    EXPECT_TRUE(log.trail().empty());
                    EXPECT_TRUE(frame.guardsIntact());
                }
    }
}

TEST(BitmapUpdate, RefusalsAndWhatStands) {
    const kit::Picture p = kit::testPicture(8, 6);
    const Bytes packed = kit::interleavedImages(p), raw = kit::rawBitmap(p, 3), raw4 = kit::rawBitmap(p, 4);
    const auto T = [](std::initializer_list<S> sites) { return kit::trail(sites); };
    enum Change { none, noPixels, noTileRows, noData };
    const struct {
        const char *name; int32_t depth, left, top, right, bottom, width, height; uint32_t flags; Bytes data; Change change;
        kit::Trail trail; bool marked, drawn;
    } cases[] = {
        {"whole", 3, 0, 0, 7, 5, 8, 6, 1, packed, none, {}, true, true},
        {"wider than the bitmap", 3, 0, 0, 8, 5, 8, 6, 1, packed, none, T({S::bitmapSize}), false, false},
        {"taller than the bitmap", 3, 0, 0, 7, 6, 8, 6, 0, raw, none, T({S::bitmapSize}), false, false},
        {"across all ints", 3, INT32_MIN, 0, INT32_MAX, 5, 8, 6, 1, packed, none, T({S::bitmapSize}), false, false},
        {"right edge far left of the left: empty", 3, 2, 0, INT32_MIN, 5, 8, 6, 1, packed, none, {}, false, false},
        {"65,537 pixels", 3, 0, 0, 0, 0, 65537, 1, 1, packed, none, T({S::bitmapTooLarge}), true, false},
        {"pixel count wraps", 3, 0, 0, 0, 0, 65536, 65536, 1, packed, none, T({S::bitmapTooLarge}), true, false},
        {"decoding fails", 4, 0, 0, 7, 5, 8, 6, 1, {0x30, 0x0F}, none, T({S::planarRowOverrun, S::redPlane, S::bitmapDecode}), true,
         false},
        {"compressed at 2 bytes", 2, 0, 0, 7, 5, 8, 6, 1, packed, none, T({S::decodeArguments, S::bitmapDecode}), true, false},
        {"no pixels, compressed", 3, 0, 0, 7, 5, 8, 6, 1, packed, noPixels, T({S::bitmapCompressedDestination}), true, false},
        {"no pixels, uncompressed", 3, 0, 0, 7, 5, 8, 6, 0, raw, noPixels, T({S::bitmapRawDestination}), true, false},
        {"data one byte short", 3, 0, 0, 7, 5, 8, 6, 0, raw.first(143), none, T({S::bitmapRawDestination}), true, false},
        {"two rows above: rows 0-3 suffice", 3, 0, -2, 7, 3, 8, 6, 0, raw.first(96), none, {}, true, true},
        {"two rows above, a byte short", 3, 0, -2, 7, 3, 8, 6, 0, raw.first(95), none, T({S::bitmapRawDestination}), true, false},
        {"cut right: to pixel 5 of row 5", 4, 35, 0, 42, 5, 8, 6, 0, raw4.first(180), none, {}, true, true},
        {"cut right, a byte short", 4, 35, 0, 42, 5, 8, 6, 0, raw4.first(179), none, T({S::bitmapRawDestination}), true, false},
        {"no data", 3, 0, 0, 7, 5, 8, 6, 0, raw, noData, T({S::bitmapRawDestination}), true, false},
        {"uncompressed at 2 bytes", 2, 0, 0, 7, 5, 8, 6, 0, raw, none, T({S::bitmapRawDestination}), true, false},
        {"tiles outside the map", 3, 0, 0, 7, 5, 8, 6, 1, packed, noTileRows, {kit::entry(S::tileRange, "0,0->1,1 of 2,0")}, false,
         true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const test::Library lib(c.depth);
        kit::Frame frame(40, 40, kFill);
        const auto [pixels, tiles] = shown(frame, p, c.left, c.top, 8, 6);
        uint32_t *const store = frame.image().pixels;
        if (c.change == noPixels) frame.image().pixels = nullptr;
        if (c.change == noTileRows) frame.dirty().rows = 0;
        const kit::GuardedInput data(c.data);
        kit::LogCapture log;
        lib.bitmapUpdate(frame.surface(), UiBitmapData{c.left, c.top, c.right, c.bottom, c.width, c.height, 24, c.flags,
                                                       data.size(), c.change == noData ? nullptr : data.data()});
        frame.image().pixels = store;
        frame.dirty().rows = 2;
        EXPECT_EQ(log.trail(), c.trail);
        EXPECT_EQ(frame.markedTiles(), c.marked ? tiles : std::vector<int>{});
        EXPECT_EQ(frame.pixels(), c.drawn ? pixels : Pixels(1600, kFill));
        EXPECT_TRUE(frame.guardsIntact());
    }
}

// Pixels the interleaved data never reached are not copied; the largest
// bitmap decodes whole.
TEST(BitmapUpdate, OnlyDecodedPixelsAreCopiedAndTheLargestBitmapDecodes) {
    const test::Library lib(3);
    kit::LogCapture log;
    kit::Frame small(4, 3, kFill);
    const kit::GuardedInput six(Bytes{0xF4}.u16(6).colour(1).colour(2).colour(3).colour(4).colour(5).colour(6));
    lib.bitmapUpdate(small.surface(), UiBitmapData{-1, 1, 2, 2, 4, 2, 24, 1, six.size(), six.data()});
    EXPECT_EQ(small.pixels(), (Pixels{kFill, kFill, kFill, kFill, 6, kFill, kFill, kFill, 2, 3, 4, kFill}));
    kit::Frame frame(256, 256, kFill);
    const kit::GuardedInput full(Bytes{0xF3}.u16(0xFFFF).colour(0x123456)({0xFD}));
    lib.bitmapUpdate(frame.surface(), UiBitmapData{0, 0, 255, 255, 256, 256, 24, 1, full.size(), full.data()});
    EXPECT_EQ(frame.pixels(), Pixels(255, 0x123456) + Pixels{0xFFFFFF} + Pixels(65280, 0x123456));  // the last decoded: top right
    EXPECT_TRUE(log.trail().empty());
    EXPECT_TRUE(frame.guardsIntact() && small.guardsIntact());
}

// Uncompressed rows keep their stored order; refusals read and write nothing.
// 2 x 268,369,921 pixels is the smallest output whose decoding positions
// could overflow 32 bits.
TEST(DecodeBitmap, ConvertsOrRefuses) {
    const kit::GuardedInput input(std::vector<uint8_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    enum { packed = 1, noData = 2, noOutput = 4 };
    const kit::Trail D = kit::trail({S::decodeArguments}), P = kit::trail({S::planarSize});
    // out: the four output words after the call, none for all unchanged.
    const struct { int32_t depth, width, height, length, flags, result; Pixels out; kit::Trail trail; } cases[] = {
        {3, 2, 2, 12, 0, 1, {0x030201, 0x060504, 0x090807, 0x0C0B0A}, {}}, {5, 2, 1, 12, 0, 1, {0x030201, 0x080706, 9, 9}, {}},
        {4, 3, 1, 12, 0, 1, {0x030201, 0x070605, 0x0B0A09, 9}, {}}, {4, 3, 1, 11, 0, 0, {}, D},  // one byte short
        {2, 2, 1, 12, 0, 0, {}, D},         {3, 65536, 65536, 12, 0, 0, {}, D}, {3, 1, 1, 12, noData, 0, {}, D},
        {3, 1, 1, 12, noOutput, 0, {}, D},  {3, 2, 0, 0, noData, 1, {}, {}},    {3, -2, -2, 0, noData, 1, {}, {}},
        {3, 0, 2, 0, noData, 1, {}, {}},    {3, 0, 2, 12, packed, 1, {}, {}},   {3, 2, 2, -1, packed, 0, {}, D},
        {3, -2, 2, 12, packed, 0, {}, D},   {3, 2, -2, 12, packed, 0, {}, D},   {3, 2, 268369921, 12, packed, 0, {}, D},
        {3, 65536, 16384, 12, packed, 0, {}, D} /* 4 x size wraps */,           {2, 2, 2, 12, packed, 0, {}, D},
        {0, 2, 2, 12, packed, 0, {}, D},    {3, 2, 2, 1, packed | noData, 0, {}, D}, {3, 2, 2, 12, packed | noOutput, 0, {}, D},
        {4, 2, 2, -4, packed, 0, {}, D},    {4, 2, 2, 1, packed | noData, 0, {}, D}, {4, 2, 2, 0, packed, 0, {}, P},
        {4, 0, 2, 12, packed, 0, {}, P},    {4, 2, 0, 12, packed, 0, {}, P},    {4, -2, 2, 12, packed, 0, {}, P},
        {4, 65536, 16384, 12, packed, 0, {}, P},                                {4, 2, 268369921, 12, packed, 0, {}, P},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "case " << &c - cases);
        const test::Library lib(c.depth);
        kit::LogCapture log;
        Pixels out(6, 9);
        EXPECT_EQ(lib.decodeBitmap(c.width, c.height, c.flags & noData ? nullptr : input.data(), c.length, c.flags & packed,
                                   c.flags & noOutput ? nullptr : &out[1]),
                  c.result);
        EXPECT_EQ(out, Pixels{9} + (c.out.empty() ? Pixels(4, 9) : c.out) + Pixels{9});
        EXPECT_EQ(log.trail(), c.trail);
    }
}

}  // namespace
