// ZRLE/TRLE tiles with direct pixels: solid, raw and plain run-length.
#include <gtest/gtest.h>

#include <climits>
#include <random>

#include "frame.h"
#include "guarded_input.h"
#include "library.h"
#include "log_capture.h"
#include "rfb_tiles.h"

using namespace ui32test;

namespace {

constexpr uint32_t kFill = 0x5a5a5a;

enum class Entry { solid, raw, plainRle };

int32_t call(const Library &lib, Entry entry, UiTileStream *tile) {
    switch (entry) {
    case Entry::solid: return lib.slot<UiZrleSolidTileFn>(UI_SLOT_ZRLE_SOLID_TILE)(tile);
    case Entry::raw: return lib.slot<UiZrleRawTileFn>(UI_SLOT_ZRLE_RAW_TILE)(tile);
    case Entry::plainRle: return lib.slot<UiZrlePlainRleTileFn>(UI_SLOT_ZRLE_PLAIN_RLE_TILE)(tile);
    }
    return 99;
}

int paintedPixels(const Frame &frame) {
    int n = 0;
    for (int32_t y = 0; y < frame.height(); ++y)
        for (int32_t x = 0; x < frame.width(); ++x) n += frame.at(x, y) != kFill;
    return n;
}

void setByteOrder(const Library &lib, uint8_t order) {
    lib.slot<UiSetSourceByteOrderFn>(UI_SLOT_SET_SOURCE_BYTE_ORDER)(order);
}

// Result, consumption, reports, painting and marking of one call on a
// 48 x 40 frame, the body placed right before an unreadable page.
struct Case {
    const char *name;
    Entry entry;
    int32_t x, y, width, height;
    Bytes body;
    int32_t result;
    int64_t consumed;
    Sites sites;
    int painted;
    bool marked;
};

const Bytes kRle4x2 = {0xAA, 0xBB, 0xCC, 0x02, 0x11, 0x22, 0x33, 0x04};

const Case kCases[] = {
    {"solid body of two bytes is short", Entry::solid, 8, 8, 16, 16, {0x10, 0x20}, 0, 0, {}, 0, false},
    {"solid takes three bytes only", Entry::solid, 8, 8, 16, 16, {0x10, 0x20, 0x30, 0x99}, 1, 3, {}, 256, true},
    {"solid outside the image", Entry::solid, 40, 8, 16, 16, {1, 2, 3}, -1, 3, {"imgbuf 99", "ui 3127"}, 0, false},
    {"solid negative width", Entry::solid, 8, 8, -1, 16, {1, 2, 3}, -1, 3, {"imgbuf 99", "ui 3127"}, 0, false},
    {"solid huge height", Entry::solid, 8, 8, 4, INT32_MAX, {1, 2, 3}, -1, 3, {"imgbuf 99", "ui 3127"}, 0, false},
    {"solid empty tile on a tile boundary", Entry::solid, 32, 0, 0, 16, {1, 2, 3}, 1, 3, {"dirtybuf 114"}, 0, false},
    {"raw 2x2 with 11 bytes is short", Entry::raw, 8, 8, 2, 2, Bytes(11, 7), 0, 0, {}, 0, false},
    {"raw 2x2 takes 12 of 13 bytes", Entry::raw, 8, 8, 2, 2, Bytes(13, 7), 1, 12, {}, 4, true},
    {"raw outside the image consumes its body", Entry::raw, 47, 8, 2, 2, Bytes(12, 7), -1, 12,
     {"imgbuf 99", "ui 3089"}, 0, false},
    {"raw negative width consumes nothing", Entry::raw, 8, 8, -2, 2, Bytes(12, 7), -1, 0, {"imgbuf 99", "ui 3089"},
     0, false},
    {"raw negative width and height consume nothing", Entry::raw, 8, 8, -2, -2, Bytes(12, 7), -1, 0,
     {"imgbuf 99", "ui 3089"}, 0, false},
    {"raw tile larger than any body is short", Entry::raw, 0, 0, 65536, 65536, Bytes(12, 7), 0, 0, {}, 0, false},
    {"raw tile whose byte count passes 2^31 is short", Entry::raw, 0, 0, 2, 0x40000000, Bytes(12, 7), 0, 0, {}, 0,
     false},
    {"raw empty tile on a tile boundary", Entry::raw, 32, 0, 0, 5, Bytes(3, 7), 1, 0, {"dirtybuf 114"}, 0, false},
    {"rle body covering the tile, later bytes untouched", Entry::plainRle, 8, 8, 4, 2,
     {0xAA, 0xBB, 0xCC, 0x02, 0x11, 0x22, 0x33, 0x04, 0xEE}, 1, 8, {}, 8, true},
    {"rle short before a colour", Entry::plainRle, 8, 8, 4, 2, {0xAA, 0xBB, 0xCC, 0x02, 0x11, 0x22}, 0, 4, {}, 3,
     false},
    {"rle short before a run length", Entry::plainRle, 8, 8, 4, 2, {0xAA, 0xBB, 0xCC, 0x02, 0x11, 0x22, 0x33}, 0, 7,
     {}, 3, false},
    {"rle short after a 255", Entry::plainRle, 8, 8, 4, 2, {0xAA, 0xBB, 0xCC, 0xFF}, 0, 4, {}, 0, false},
    {"rle empty body", Entry::plainRle, 8, 8, 4, 2, {}, 0, 0, {}, 0, false},
    {"rle run of nine in eight pixels", Entry::plainRle, 8, 8, 4, 2, {0xAA, 0xBB, 0xCC, 0x08, 0x01}, -1, 4,
     {"ui 3347"}, 0, false},
    {"rle second run too long, first painted", Entry::plainRle, 8, 8, 4, 2,
     {0xAA, 0xBB, 0xCC, 0x02, 0x11, 0x22, 0x33, 0x05}, -1, 8, {"ui 3347"}, 3, false},
    {"rle 255 chain longer than the tile is consumed", Entry::plainRle, 8, 8, 4, 2,
     {0xAA, 0xBB, 0xCC, 0xFF, 0xFF, 0x00, 0x01}, -1, 6, {"ui 3347"}, 0, false},
    {"rle outside the image consumes nothing", Entry::plainRle, 46, 8, 4, 2, kRle4x2, -1, 0,
     {"imgbuf 99", "ui 3306"}, 0, false},
    {"rle negative height consumes nothing", Entry::plainRle, 8, 8, 4, -2, kRle4x2, -1, 0, {"imgbuf 99", "ui 3306"},
     0, false},
    {"rle huge width", Entry::plainRle, 8, 8, INT32_MAX, 1, kRle4x2, -1, 0, {"imgbuf 99", "ui 3306"}, 0, false},
    {"rle empty tile consumes nothing", Entry::plainRle, 32, 0, 0, 2, kRle4x2, 1, 0, {"dirtybuf 114"}, 0, false},
};

TEST(ZrleTiles, ResultsConsumptionReportsAndPainting) {
    for (const Case &c : kCases) {
        SCOPED_TRACE(c.name);
        Library lib;
        LogCapture log;
        Frame frame(48, 40, kFill);
        GuardedInput input(c.body);
        UiTileStream tile = tileStream(frame, c.x, c.y, c.width, c.height, input);
        EXPECT_EQ(call(lib, c.entry, &tile), c.result);
        EXPECT_EQ(consumed(tile, input.data(), input.size()), c.consumed);
        EXPECT_EQ(log.sites(), c.sites);
        for (const Report &r : log.reports()) {
            EXPECT_EQ(r.level, "ERROR");
            if (r.module != "dirtybuf") EXPECT_EQ(r.text, kInternalError);
        }
        EXPECT_EQ(paintedPixels(frame), c.painted);
        EXPECT_EQ(!frame.markedTiles().empty(), c.marked);
        EXPECT_TRUE(frame.guardsIntact());
        // The record's geometry is never written.
        EXPECT_EQ(tile.x, c.x);
        EXPECT_EQ(tile.width, c.width);
        EXPECT_EQ(tile.image, &frame.image());
    }
}

// A null ptr holds no bytes.  The raw tile consumes its byte count anyway
// (the address advances, nothing is read); the others consume nothing.
TEST(ZrleTiles, NullPointersAndNegativeLeft) {
    struct NullCase {
        const char *name;
        Entry entry;
        bool nullPtr;
        bool nullImage;
        int32_t left;
        int32_t result;
        int64_t consumed;
        Sites sites;
    };
    const NullCase cases[] = {
        {"solid null ptr", Entry::solid, true, false, 3, -1, 0, {"ui 3127"}},
        {"solid null ptr, short", Entry::solid, true, false, 2, 0, 0, {}},
        {"solid negative left", Entry::solid, false, false, -3, 0, 0, {}},
        {"solid null image", Entry::solid, false, true, 3, -1, 3, {"ui 3127"}},
        {"raw null ptr", Entry::raw, true, false, 12, -1, 12, {"ui 3086"}},
        {"raw null ptr, short", Entry::raw, true, false, 11, 0, 0, {}},
        {"raw negative left", Entry::raw, false, false, -12, 0, 0, {}},
        {"raw null image", Entry::raw, false, true, 12, -1, 12, {"ui 3089"}},
        {"rle null ptr", Entry::plainRle, true, false, 4, -1, 0, {"ui 3306"}},
        {"rle negative left", Entry::plainRle, false, false, -4, 0, 0, {}},
        {"rle null image", Entry::plainRle, false, true, 4, -1, 0, {"ui 3306"}},
    };
    const Bytes body(12, 0x42);
    for (const NullCase &c : cases) {
        SCOPED_TRACE(c.name);
        Library lib;
        LogCapture log;
        Frame frame(48, 40, kFill);
        const uint8_t *ptr = c.nullPtr ? nullptr : body.data();
        UiTileStream tile = tileStream(frame, 8, 8, 2, 2, ptr, c.left);
        if (c.nullImage) tile.image = nullptr;
        EXPECT_EQ(call(lib, c.entry, &tile), c.result);
        EXPECT_EQ(consumed(tile, ptr, c.left), c.consumed);
        EXPECT_EQ(log.sites(), c.sites);
        EXPECT_EQ(paintedPixels(frame), 0);
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(ZrleTiles, SolidFillsTheTileWhateverTheByteOrder) {
    for (uint8_t order : {0, 1}) {
        Library lib;
        LogCapture log;
        setByteOrder(lib, order);
        Frame frame(48, 40, kFill);
        GuardedInput input(Bytes{0x10, 0x20, 0x30});
        UiTileStream tile = tileStream(frame, 24, 20, 16, 16, input);
        ASSERT_EQ(call(lib, Entry::solid, &tile), 1);
        for (int32_t y = 0; y < 40; ++y)
            for (int32_t x = 0; x < 48; ++x) {
                const bool inside = x >= 24 && x < 40 && y >= 20 && y < 36;
                ASSERT_EQ(frame.at(x, y), inside ? 0x00302010u : kFill) << x << "," << y;
            }
        EXPECT_EQ(frame.markedTiles(), std::vector<int>({0, 1, 2, 3}));
        EXPECT_EQ(frame.dirty().changed, 1);
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(ZrleTiles, RawPixelsFollowTheSourceByteOrder) {
    Bytes body(18);
    for (size_t i = 0; i < body.size(); ++i) body[i] = uint8_t(0x10 + i);
    for (uint8_t order : {0, 1, 7}) {
        SCOPED_TRACE(int(order));
        Library lib;
        LogCapture log;
        setByteOrder(lib, order);
        Frame frame(48, 40, kFill);
        GuardedInput input(body);
        UiTileStream tile = tileStream(frame, 5, 7, 3, 2, input);
        ASSERT_EQ(call(lib, Entry::raw, &tile), 1);
        for (int32_t i = 0; i < 6; ++i) {
            const uint32_t b0 = body[size_t(3 * i)], b1 = body[size_t(3 * i + 1)], b2 = body[size_t(3 * i + 2)];
            const uint32_t expected = order != 0 ? (b2 << 16 | b1 << 8 | b0) : (b0 << 16 | b1 << 8 | b2);
            EXPECT_EQ(frame.at(5 + i % 3, 7 + i / 3), expected) << i;
        }
        EXPECT_EQ(paintedPixels(frame), 6);
        EXPECT_EQ(frame.markedTiles(), std::vector<int>({0}));
        EXPECT_TRUE(frame.guardsIntact());
    }
    // One pixel of 10 20 30 with a non-zero order.
    Library lib;
    LogCapture log;
    Frame frame(4, 4, kFill);
    GuardedInput input(Bytes{0x10, 0x20, 0x30});
    UiTileStream tile = tileStream(frame, 1, 1, 1, 1, input);
    setByteOrder(lib, 1);
    ASSERT_EQ(call(lib, Entry::raw, &tile), 1);
    EXPECT_EQ(frame.at(1, 1), 0x00302010u);
}

// Runs wrap from the last column to the next row; lengths take 255
// continuation bytes.  Letters name the colours in the expected pictures.
TEST(ZrleTiles, PlainRunsSpanRows) {
    struct Picture {
        const char *name;
        int32_t width, height;
        Bytes body;
        const char *expected;  // row by row
    };
    // A = AA BB CC, B = 11 22 33, C = 01 02 03
    const Picture pictures[] = {
        {"4x2, runs of three and five", 4, 2, {0xAA, 0xBB, 0xCC, 0x02, 0x11, 0x22, 0x33, 0x04}, "AAAB" "BBBB"},
        {"run across three rows", 3, 3, {0xAA, 0xBB, 0xCC, 0x00, 0x11, 0x22, 0x33, 0x06, 0x01, 0x02, 0x03, 0x00},
         "ABB" "BBB" "BBC"},
        {"one column", 1, 4, {0x11, 0x22, 0x33, 0x01, 0xAA, 0xBB, 0xCC, 0x01}, "BBAA"},
        {"one pixel runs", 2, 2,
         {0xAA, 0xBB, 0xCC, 0, 0x11, 0x22, 0x33, 0, 0x01, 0x02, 0x03, 0, 0xAA, 0xBB, 0xCC, 0}, "AB" "CA"},
    };
    auto colourOf = [](char c) {
        return c == 'A' ? 0xCCBBAAu : c == 'B' ? 0x332211u : 0x030201u;
    };
    for (const Picture &p : pictures) {
        SCOPED_TRACE(p.name);
        Library lib;
        LogCapture log;
        setByteOrder(lib, 0);  // not consulted by run-length tiles
        Frame frame(8, 8, kFill);
        GuardedInput input(p.body);
        UiTileStream tile = tileStream(frame, 2, 3, p.width, p.height, input);
        ASSERT_EQ(call(lib, Entry::plainRle, &tile), 1);
        EXPECT_EQ(tile.left, 0);
        for (int32_t i = 0; i < p.width * p.height; ++i)
            EXPECT_EQ(frame.at(2 + i % p.width, 3 + i / p.width), colourOf(p.expected[i])) << i;
        EXPECT_EQ(paintedPixels(frame), p.width * p.height);
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(ZrleTiles, LongRunLengths) {
    struct Long {
        Bytes body;
        int32_t firstRun;  // pixels of colour A, then colour B to the end
    };
    // 257 x 2 = 514 pixels.
    const Long cases[] = {
        {{0xAA, 0xBB, 0xCC, 0xFF, 0xFF, 0x03}, 514},
        {{0xAA, 0xBB, 0xCC, 0xFF, 0x00, 0x11, 0x22, 0x33, 0xFF, 0x02}, 256},
        {{0xAA, 0xBB, 0xCC, 0xFE, 0x11, 0x22, 0x33, 0xFF, 0x03}, 255},
    };
    for (const Long &c : cases) {
        SCOPED_TRACE(c.firstRun);
        Library lib;
        LogCapture log;
        Frame frame(257, 2, kFill);
        GuardedInput input(c.body);
        UiTileStream tile = tileStream(frame, 0, 0, 257, 2, input);
        ASSERT_EQ(call(lib, Entry::plainRle, &tile), 1);
        EXPECT_EQ(tile.left, 0);
        for (int32_t i = 0; i < 514; ++i)
            ASSERT_EQ(frame.at(i % 257, i / 257), i < c.firstRun ? 0xCCBBAAu : 0x332211u) << i;
        EXPECT_EQ(frame.markedTiles().size(), 9u);
        EXPECT_TRUE(frame.guardsIntact());
    }
}

// Every truncation of a valid body: short (0, no report, no marks) with the
// consumption each entry point specifies, or painted when complete.
TEST(ZrleTiles, TruncatedAtEveryByte) {
    struct Body {
        Entry entry;
        int32_t width, height;
        Bytes bytes;
        std::vector<int64_t> runStarts;  // run-length bodies: offsets of each colour
    };
    Bytes raw(18);
    for (size_t i = 0; i < raw.size(); ++i) raw[i] = uint8_t(3 * i + 1);
    // 40 x 10 = 400 pixels: 1 + 300 + 99.
    const Bytes rle = {0xAA, 0xBB, 0xCC, 0x00, 0x11, 0x22, 0x33, 0xFF, 0x2C, 0x01, 0x02, 0x03, 0x62};
    const Body bodies[] = {
        {Entry::solid, 5, 5, {1, 2, 3}, {}},
        {Entry::raw, 3, 2, raw, {}},
        {Entry::plainRle, 40, 10, rle, {0, 4, 9}},
    };
    for (const Body &b : bodies) {
        const int64_t n = int64_t(b.bytes.size());
        for (int64_t k = 0; k <= n; ++k) {
            SCOPED_TRACE(testing::Message() << "entry " << int(b.entry) << " length " << k);
            Library lib;
            LogCapture log;
            Frame frame(48, 40, kFill);
            GuardedInput input(b.bytes.data(), size_t(k));
            UiTileStream tile = tileStream(frame, 0, 0, b.width, b.height, input);
            const int32_t result = call(lib, b.entry, &tile);
            int64_t expected = 0;
            if (k == n) {
                expected = n;
            } else if (b.entry == Entry::plainRle) {
                // Complete runs and any started run length are consumed; a
                // colour with fewer than three bytes left is not.
                expected = k;
                for (int64_t s : b.runStarts)
                    if (k >= s && k < s + 3) expected = s;
            }
            EXPECT_EQ(result, k == n ? 1 : 0);
            EXPECT_EQ(consumed(tile, input.data(), input.size()), expected);
            EXPECT_TRUE(log.reports().empty());
            EXPECT_EQ(frame.markedTiles().empty(), k != n);
            EXPECT_TRUE(frame.guardsIntact());
        }
    }
}

// Random tiles near and beyond the image edges with random bodies: whatever
// the result, the record stays consistent, only bytes of the body are
// consumed, short bodies are silent, rejections are reported, and nothing
// outside the image or the body is touched.
TEST(ZrleTiles, HostileRandomTiles) {
    std::mt19937 rng(6);
    const int32_t sizes[] = {-70000, -16, -1, 0, 1, 2, 3, 7, 16, 33, 64, 65536, INT32_MAX};
    auto pick = [&](int lo, int hi) { return int32_t(std::uniform_int_distribution<int>(lo, hi)(rng)); };
    for (int iteration = 0; iteration < 600; ++iteration) {
        const Entry entry = Entry(pick(0, 2));
        const int32_t w = pick(0, 3) == 0 ? sizes[pick(0, 12)] : pick(0, 20);
        const int32_t h = pick(0, 3) == 0 ? sizes[pick(0, 12)] : pick(0, 20);
        const int32_t x = pick(-20, 50), y = pick(-20, 45);
        Bytes body(size_t(pick(0, 80)));
        for (uint8_t &b : body) b = uint8_t(pick(0, 4) == 0 ? 255 : pick(0, 255));
        SCOPED_TRACE(testing::Message() << "iteration " << iteration);
        Library lib;
        LogCapture log;
        Frame frame(48, 40, kFill);
        GuardedInput input(body);
        UiTileStream tile = tileStream(frame, x, y, w, h, input);
        const int32_t result = call(lib, entry, &tile);
        ASSERT_TRUE(result == 1 || result == 0 || result == -1);
        const int64_t used = consumed(tile, input.data(), input.size());
        ASSERT_GE(used, 0);
        ASSERT_LE(used, input.size());
        if (result == 0) EXPECT_TRUE(log.reports().empty());
        if (result == -1) EXPECT_FALSE(log.reports().empty());
        ASSERT_TRUE(frame.guardsIntact());
    }
}

}  // namespace
