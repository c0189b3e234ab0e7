// ZRLE/TRLE tiles: solid, raw, plain run-length, packed palette indices and
// palette runs.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <random>

#include "frame.h"
#include "guarded_input.h"
#include "library.h"
#include "log_capture.h"
#include "rfb_tiles.h"

using namespace ui32test;

namespace {

constexpr uint32_t kFill = 0x5a5a5a;
constexpr int kBlack = -1;  // an expected index that names no supplied entry

enum class Entry { solid, raw, plainRle, packed, paletteRle };

// Palette entry i: bytes 10+i, 40+i, 80+i (hex).
Bytes palette(int size) {
    Bytes out;
    for (int i = 0; i < size; ++i) out.insert(out.end(), {uint8_t(0x10 + i), uint8_t(0x40 + i), uint8_t(0x80 + i)});
    return out;
}
uint32_t entry(int i) {
    return i == kBlack ? 0 : uint32_t(0x80 + i) << 16 | uint32_t(0x40 + i) << 8 | uint32_t(0x10 + i);
}
Bytes operator+(Bytes a, const Bytes &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// One call of an entry point (arg: the palette size or sub-encoding) on a
// fresh frame, the body placed right before an unreadable page.
struct TileCall {
    Library lib;
    LogCapture log;
    Frame frame;
    GuardedInput input;
    UiTileStream tile;

    TileCall(const Bytes &body, int32_t x, int32_t y, int32_t w, int32_t h, int32_t frameW = 48, int32_t frameH = 40)
        : frame(frameW, frameH, kFill), input(body), tile(tileStream(frame, x, y, w, h, input)) {}
    int32_t operator()(Entry e, int32_t arg = 0) { return call(lib, e, arg, &tile); }
    static int32_t call(const Library &lib, Entry e, int32_t arg, UiTileStream *tile) {
        switch (e) {
        case Entry::solid: return lib.slot<UiZrleSolidTileFn>(UI_SLOT_ZRLE_SOLID_TILE)(tile);
        case Entry::raw: return lib.slot<UiZrleRawTileFn>(UI_SLOT_ZRLE_RAW_TILE)(tile);
        case Entry::plainRle: return lib.slot<UiZrlePlainRleTileFn>(UI_SLOT_ZRLE_PLAIN_RLE_TILE)(tile);
        case Entry::packed: return lib.slot<UiZrlePackedPaletteTileFn>(UI_SLOT_ZRLE_PACKED_PALETTE_TILE)(tile, arg);
        case Entry::paletteRle: return lib.slot<UiZrlePaletteRleTileFn>(UI_SLOT_ZRLE_PALETTE_RLE_TILE)(tile, arg);
        }
        return 99;
    }
    void byteOrder(uint8_t order) const { lib.slot<UiSetSourceByteOrderFn>(UI_SLOT_SET_SOURCE_BYTE_ORDER)(order); }
    int64_t used() const { return consumed(tile, input.data(), input.size()); }
    int painted() const {
        int n = 0;
        for (int32_t y = 0; y < frame.height(); ++y)
            for (int32_t x = 0; x < frame.width(); ++x) n += frame.at(x, y) != kFill;
        return n;
    }
    // Expected colours row by row from (x, y), nothing else painted.
    void expect(int32_t x, int32_t y, int32_t width, const std::vector<int> &indices, uint32_t (*colour)(int)) {
        for (size_t i = 0; i < indices.size(); ++i)
            EXPECT_EQ(frame.at(x + int32_t(i) % width, y + int32_t(i) / width), colour(indices[i])) << "pixel " << i;
        EXPECT_EQ(painted(), int(indices.size()));
        EXPECT_TRUE(frame.guardsIntact());
    }
};

struct Case {
    const char *name;
    Entry entry;
    int32_t arg, x, y, width, height;
    Bytes body;
    int32_t result;
    int64_t consumed;
    Sites sites;
    int painted;
};

const Bytes kRle4x2 = {0xAA, 0xBB, 0xCC, 0x02, 0x11, 0x22, 0x33, 0x04};
const Bytes kPal2 = palette(2);
constexpr Entry S = Entry::solid, R = Entry::raw, L = Entry::plainRle, P = Entry::packed, Q = Entry::paletteRle;

const Case kCases[] = {
    {"solid body of two bytes is short", S, 0, 8, 8, 16, 16, {0x10, 0x20}, 0, 0, {}, 0},
    {"solid takes three bytes only", S, 0, 8, 8, 16, 16, {0x10, 0x20, 0x30, 0x99}, 1, 3, {}, 256},
    {"solid outside the image", S, 0, 40, 8, 16, 16, {1, 2, 3}, -1, 3, {"imgbuf 99", "ui 3127"}, 0},
    {"solid negative width", S, 0, 8, 8, -1, 16, {1, 2, 3}, -1, 3, {"imgbuf 99", "ui 3127"}, 0},
    {"solid huge height", S, 0, 8, 8, 4, INT32_MAX, {1, 2, 3}, -1, 3, {"imgbuf 99", "ui 3127"}, 0},
    {"solid empty tile on a tile boundary", S, 0, 32, 0, 0, 16, {1, 2, 3}, 1, 3, {"dirtybuf 114"}, 0},
    {"raw 2x2 with 11 bytes is short", R, 0, 8, 8, 2, 2, Bytes(11, 7), 0, 0, {}, 0},
    {"raw 2x2 takes 12 of 13 bytes", R, 0, 8, 8, 2, 2, Bytes(13, 7), 1, 12, {}, 4},
    {"raw outside the image consumes its body", R, 0, 47, 8, 2, 2, Bytes(12, 7), -1, 12, {"imgbuf 99", "ui 3089"}, 0},
    {"raw negative width consumes nothing", R, 0, 8, 8, -2, 2, Bytes(12, 7), -1, 0, {"imgbuf 99", "ui 3089"}, 0},
    {"raw negative size consumes nothing", R, 0, 8, 8, -2, -2, Bytes(12, 7), -1, 0, {"imgbuf 99", "ui 3089"}, 0},
    {"raw tile larger than any body is short", R, 0, 0, 0, 65536, 65536, Bytes(12, 7), 0, 0, {}, 0},
    {"raw tile whose byte count passes 2^31 is short", R, 0, 0, 0, 2, 0x40000000, Bytes(12, 7), 0, 0, {}, 0},
    {"raw empty tile on a tile boundary", R, 0, 32, 0, 0, 5, Bytes(3, 7), 1, 0, {"dirtybuf 114"}, 0},
    {"rle body covering the tile, later bytes untouched", L, 0, 8, 8, 4, 2, kRle4x2 + Bytes{0xEE}, 1, 8, {}, 8},
    {"rle short before a colour", L, 0, 8, 8, 4, 2, {0xAA, 0xBB, 0xCC, 0x02, 0x11, 0x22}, 0, 4, {}, 3},
    {"rle short before a run length", L, 0, 8, 8, 4, 2, {0xAA, 0xBB, 0xCC, 0x02, 0x11, 0x22, 0x33}, 0, 7, {}, 3},
    {"rle short after a 255", L, 0, 8, 8, 4, 2, {0xAA, 0xBB, 0xCC, 0xFF}, 0, 4, {}, 0},
    {"rle empty body", L, 0, 8, 8, 4, 2, {}, 0, 0, {}, 0},
    {"rle run of nine in eight pixels", L, 0, 8, 8, 4, 2, {0xAA, 0xBB, 0xCC, 0x08, 0x01}, -1, 4, {"ui 3347"}, 0},
    {"rle second run too long, first painted", L, 0, 8, 8, 4, 2, {0xAA, 0xBB, 0xCC, 0x02, 0x11, 0x22, 0x33, 0x05}, -1,
     8, {"ui 3347"}, 3},
    {"rle 255 chain longer than the tile is consumed", L, 0, 8, 8, 4, 2, {0xAA, 0xBB, 0xCC, 0xFF, 0xFF, 0x00, 0x01},
     -1, 6, {"ui 3347"}, 0},
    {"rle outside the image consumes nothing", L, 0, 46, 8, 4, 2, kRle4x2, -1, 0, {"imgbuf 99", "ui 3306"}, 0},
    {"rle negative height consumes nothing", L, 0, 8, 8, 4, -2, kRle4x2, -1, 0, {"imgbuf 99", "ui 3306"}, 0},
    {"rle huge width", L, 0, 8, 8, INT32_MAX, 1, kRle4x2, -1, 0, {"imgbuf 99", "ui 3306"}, 0},
    {"rle empty tile consumes nothing", L, 0, 32, 0, 0, 2, kRle4x2, 1, 0, {"dirtybuf 114"}, 0},
    {"packed size 17", P, 17, 0, 0, 4, 4, palette(17), -1, 0, {"ui 3148"}, 0},
    {"packed negative size", P, -1, 0, 0, 4, 4, kPal2, -1, 0, {"ui 3148"}, 0},
    {"packed palette short", P, 2, 0, 0, 10, 2, {1, 2, 3, 4, 5}, 0, 0, {}, 0},
    {"packed index bytes short", P, 2, 0, 0, 10, 2, kPal2 + Bytes{0xFF, 0xFF, 0xFF}, 0, 6, {}, 0},
    {"packed body then later bytes", P, 2, 0, 0, 10, 2, kPal2 + Bytes{0xFF, 0xC0, 0xFF, 0xC0, 0x77}, 1, 10, {}, 20},
    {"packed outside the image", P, 2, 40, 0, 10, 2, kPal2 + Bytes{0, 0, 0, 0}, -1, 6, {"imgbuf 99", "ui 3170"}, 0},
    {"packed negative height", P, 2, 0, 0, 10, -2, kPal2 + Bytes{0, 0, 0, 0}, -1, 6, {"imgbuf 99", "ui 3170"}, 0},
    {"packed huge width", P, 16, 0, 0, INT32_MAX, 1, palette(16), -1, 48, {"imgbuf 99", "ui 3170"}, 0},
    {"packed empty tile", P, 2, 32, 0, 0, 2, kPal2, 1, 6, {"dirtybuf 114"}, 0},
    {"rle sub-encoding 256", Q, 256, 0, 0, 2, 2, palette(127), -1, 0, {"ui 3394"}, 0},
    {"rle sub-encoding 127", Q, 127, 0, 0, 2, 2, kPal2, -1, 0, {"ui 3394"}, 0},
    {"rle sub-encoding INT32_MIN", Q, INT32_MIN, 0, 0, 2, 2, kPal2, -1, 0, {"ui 3394"}, 0},
    {"palette rle palette short", Q, 130, 0, 0, 2, 2, {1, 2, 3, 4, 5}, 0, 0, {}, 0},
    {"palette rle no runs", Q, 130, 0, 0, 2, 2, kPal2, 0, 6, {}, 0},
    {"palette rle short after a run", Q, 130, 0, 0, 2, 2, kPal2 + Bytes{0x01, 0x80, 0x01}, 0, 9, {}, 3},
    {"palette rle short inside a run length", Q, 130, 0, 0, 2, 2, kPal2 + Bytes{0x81, 0xFF}, 0, 8, {}, 0},
    {"palette rle run of five in four", Q, 130, 0, 0, 2, 2, kPal2 + Bytes{0x81, 0x04, 0x00}, -1, 8, {"ui 3421"}, 0},
    {"palette rle later run too long", Q, 130, 0, 0, 2, 2, kPal2 + Bytes{0x01, 0x80, 0x03}, -1, 9, {"ui 3421"}, 1},
    {"palette rle body then later bytes", Q, 130, 0, 0, 2, 2, kPal2 + Bytes{0x81, 0x02, 0x00, 0x01}, 1, 9, {}, 4},
    {"palette rle outside the image", Q, 130, 0, 39, 2, 2, kPal2 + Bytes{0x81, 0x03}, -1, 6, {"imgbuf 99", "ui 3394"},
     0},
    {"palette rle empty tile", Q, 130, 32, 0, 0, 3, kPal2 + Bytes{0x00}, 1, 6, {"dirtybuf 114"}, 0},
};

TEST(ZrleTiles, ResultsConsumptionReportsAndPainting) {
    for (const Case &c : kCases) {
        SCOPED_TRACE(c.name);
        TileCall t(c.body, c.x, c.y, c.width, c.height);
        EXPECT_EQ(t(c.entry, c.arg), c.result);
        EXPECT_EQ(t.used(), c.consumed);
        EXPECT_EQ(t.log.sites(), c.sites);
        for (const Report &r : t.log.reports()) {
            EXPECT_EQ(r.level, "ERROR");
            if (r.module != "dirtybuf") EXPECT_EQ(r.text, kInternalError);
        }
        EXPECT_EQ(t.painted(), c.painted);
        EXPECT_EQ(t.frame.markedTiles().empty(), c.result != 1 || c.width == 0);
        EXPECT_TRUE(t.frame.guardsIntact());
        // The record's geometry is never written.
        EXPECT_EQ(t.tile.x, c.x);
        EXPECT_EQ(t.tile.width, c.width);
        EXPECT_EQ(t.tile.image, &t.frame.image());
    }
}

// A null ptr holds no bytes.  The raw tile, and the packed tile with an empty
// palette, consume their index byte count anyway (the address advances,
// nothing is read); the others consume nothing.
TEST(ZrleTiles, NullPointersNullImageAndNegativeLeft) {
    const struct {
        const char *name;
        Entry entry;
        int32_t arg, width;
        bool nullPtr, nullImage;
        int32_t left, result;
        int64_t consumed;
        Sites sites;
    } cases[] = {
        {"solid null ptr", S, 0, 2, true, false, 3, -1, 0, {"ui 3127"}},
        {"solid null ptr, short", S, 0, 2, true, false, 2, 0, 0, {}},
        {"solid negative left", S, 0, 2, false, false, -3, 0, 0, {}},
        {"solid null image", S, 0, 2, false, true, 3, -1, 3, {"ui 3127"}},
        {"raw null ptr", R, 0, 2, true, false, 12, -1, 12, {"ui 3086"}},
        {"raw null ptr, short", R, 0, 2, true, false, 11, 0, 0, {}},
        {"raw negative left", R, 0, 2, false, false, -12, 0, 0, {}},
        {"raw null image", R, 0, 2, false, true, 12, -1, 12, {"ui 3089"}},
        {"rle null ptr", L, 0, 2, true, false, 4, -1, 0, {"ui 3306"}},
        {"rle negative left", L, 0, 2, false, false, -4, 0, 0, {}},
        {"rle null image", L, 0, 2, false, true, 4, -1, 0, {"ui 3306"}},
        {"packed empty palette", P, 0, 8, true, false, 2, -1, 2, {"ui 3181"}},
        {"packed 1-bit palette", P, 2, 8, true, false, 20, -1, 0, {"ui 3181"}},
        {"packed 2-bit palette", P, 3, 8, true, false, 20, -1, 0, {"ui 3226"}},
        {"packed 4-bit palette", P, 5, 8, true, false, 20, -1, 0, {"ui 3267"}},
        {"packed palette short", P, 2, 8, true, false, 5, 0, 0, {}},
        {"palette rle null ptr", Q, 130, 8, true, false, 20, -1, 0, {"ui 3394"}},
        {"palette rle empty palette", Q, 128, 8, true, false, 1, -1, 0, {"ui 3394"}},
        {"palette rle empty palette, no bytes", Q, 128, 8, true, false, 0, 0, 0, {}},
    };
    const Bytes body(12, 0x42);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        TileCall t({}, 8, 8, c.width, 2);
        const uint8_t *ptr = c.nullPtr ? nullptr : body.data();
        t.tile = tileStream(t.frame, 8, 8, c.width, 2, ptr, c.left);
        if (c.nullImage) t.tile.image = nullptr;
        EXPECT_EQ(t(c.entry, c.arg), c.result);
        EXPECT_EQ(consumed(t.tile, ptr, c.left), c.consumed);
        EXPECT_EQ(t.log.sites(), c.sites);
        EXPECT_EQ(t.painted(), 0);
        EXPECT_TRUE(t.frame.guardsIntact());
    }
}

TEST(ZrleTiles, SolidIgnoresAndRawFollowsTheSourceByteOrder) {
    Bytes body(18);
    for (size_t i = 0; i < body.size(); ++i) body[i] = uint8_t(0x10 + i);
    for (uint8_t order : {0, 1, 7}) {
        SCOPED_TRACE(int(order));
        TileCall solid({0x10, 0x20, 0x30}, 24, 20, 16, 16);
        solid.byteOrder(order);
        ASSERT_EQ(solid(S), 1);
        for (int32_t y = 0; y < 40; ++y)
            for (int32_t x = 0; x < 48; ++x)
                ASSERT_EQ(solid.frame.at(x, y), x >= 24 && x < 40 && y >= 20 && y < 36 ? 0x302010u : kFill);
        EXPECT_EQ(solid.frame.markedTiles(), std::vector<int>({0, 1, 2, 3}));
        EXPECT_EQ(solid.frame.dirty().changed, 1);
        EXPECT_TRUE(solid.log.reports().empty());
        EXPECT_TRUE(solid.frame.guardsIntact());

        TileCall raw(body, 5, 7, 3, 2);
        raw.byteOrder(order);
        ASSERT_EQ(raw(R), 1);
        for (int32_t i = 0; i < 6; ++i) {
            const uint32_t b0 = body[size_t(3 * i)], b1 = body[size_t(3 * i + 1)], b2 = body[size_t(3 * i + 2)];
            EXPECT_EQ(raw.frame.at(5 + i % 3, 7 + i / 3), order != 0 ? (b2 << 16 | b1 << 8 | b0) : (b0 << 16 | b1 << 8 | b2));
        }
        EXPECT_EQ(raw.painted(), 6);
        EXPECT_EQ(raw.frame.markedTiles(), std::vector<int>({0}));
        EXPECT_TRUE(raw.frame.guardsIntact());
    }
}

// Runs wrap from the last column to the next row; lengths take 255
// continuation bytes; palette indices beyond the palette are black.  Packed
// rows are whole bytes, first pixel in the high bits.
TEST(ZrleTiles, Pictures) {
    const auto abc = [](int c) { return c == 'A' ? 0xCCBBAAu : c == 'B' ? 0x332211u : 0x030201u; };
    const auto letters = [](const char *s) { return std::vector<int>(s, s + std::strlen(s)); };
    const auto runs = [](std::initializer_list<std::pair<int, int>> r) {
        std::vector<int> v;
        for (auto [index, n] : r) v.insert(v.end(), size_t(n), index);
        return v;
    };
    const Bytes a = {0xAA, 0xBB, 0xCC}, b = {0x11, 0x22, 0x33}, c = {0x01, 0x02, 0x03};
    const struct {
        const char *name;
        Entry entry;
        int32_t arg, width, height;
        Bytes body;
        std::vector<int> expected;  // letters A B C for direct colours, else palette indices
    } pictures[] = {
        {"runs of three and five", L, 0, 4, 2, kRle4x2, letters("AAAB" "BBBB")},
        {"run across three rows", L, 0, 3, 3, a + Bytes{0} + b + Bytes{6} + c + Bytes{0}, letters("ABB" "BBB" "BBC")},
        {"one column", L, 0, 1, 4, b + Bytes{1} + a + Bytes{1}, letters("BBAA")},
        {"one pixel runs", L, 0, 2, 2, a + Bytes{0} + b + Bytes{0} + c + Bytes{0} + a + Bytes{0}, letters("AB" "CA")},
        {"run of 255 + 255 + 4", L, 0, 257, 2, a + Bytes{0xFF, 0xFF, 0x03}, runs({{'A', 514}})},
        {"run of 256", L, 0, 257, 2, a + Bytes{0xFF, 0x00} + b + Bytes{0xFF, 0x02}, runs({{'A', 256}, {'B', 258}})},
        {"run of 255", L, 0, 257, 2, a + Bytes{0xFE} + b + Bytes{0xFF, 0x03}, runs({{'A', 255}, {'B', 259}})},
        {"1-bit, 10 wide", P, 2, 10, 2, kPal2 + Bytes{0x80, 0x40, 0xFF, 0xC0}, runs({{1, 1}, {0, 8}, {1, 11}})},
        {"2-bit, 3 wide", P, 4, 3, 1, palette(4) + Bytes{0x1B}, {0, 1, 2}},
        {"4-bit, 3 wide", P, 16, 3, 1, palette(16) + Bytes{0xA5, 0x30}, {10, 5, 3}},
        {"2-bit index 3 of a palette of three", P, 3, 4, 1, palette(3) + Bytes{0xE4}, {kBlack, 2, 1, 0}},
        {"4-bit indices beyond a palette of five", P, 5, 4, 1, palette(5) + Bytes{0x4F, 0x59}, {4, kBlack, kBlack, kBlack}},
        {"palette of one", P, 1, 9, 1, palette(1) + Bytes{0x55, 0x80}, {0, kBlack, 0, kBlack, 0, kBlack, 0, kBlack, kBlack}},
        {"empty palette", P, 0, 3, 2, {0xFF, 0x00}, runs({{kBlack, 6}})},
        {"single pixel then a run of three", Q, 130, 4, 1, kPal2 + Bytes{0x01, 0x80, 0x02}, {1, 0, 0, 0}},
        {"runs across rows", Q, 131, 3, 3, palette(3) + Bytes{0x82, 0x03, 0x01, 0x80, 0x02, 0x01}, {2, 2, 2, 2, 1, 0, 0, 0, 1}},
        {"run of 256 over rows", Q, 130, 16, 17, kPal2 + Bytes{0x81, 0xFF, 0x00, 0x80, 0x0F}, runs({{1, 256}, {0, 16}})},
        {"indices beyond the palette", Q, 130, 2, 2, kPal2 + Bytes{0x05, 0xFF, 0x00, 0x7F, 0x01}, {kBlack, kBlack, kBlack, 1}},
        {"full palette of 127", Q, 255, 3, 1, palette(127) + Bytes{0x7E, 0xFE, 0x00, 0xFF, 0x00}, {126, 126, kBlack}},
        {"palette rle, empty palette", Q, 128, 2, 1, {0x00, 0x80, 0x00}, {kBlack, kBlack}},
    };
    for (const auto &p : pictures) {
        SCOPED_TRACE(p.name);
        TileCall t(p.body, 3, 2, p.width, p.height, 260, 20);
        t.byteOrder(0);  // not consulted by run-length or palette tiles
        ASSERT_EQ(t(p.entry, p.arg), 1);
        EXPECT_EQ(t.tile.left, 0);
        t.expect(3, 2, p.width, p.expected, p.entry == L ? +abc : entry);
        EXPECT_EQ(int(t.frame.markedTiles().size()), ((p.width + 2) / 32 + 1) * ((p.height + 1) / 32 + 1));
        EXPECT_TRUE(t.log.reports().empty());
    }
}

// Packs indices into rows of whole bytes, first pixel in the high bits; the
// unused low bits of each row's last byte are set to ones.
Bytes pack(const std::vector<int> &indices, int32_t width, int bits) {
    const int perByte = 8 / bits;
    const int32_t rowBytes = (width + perByte - 1) / perByte;
    Bytes out;
    for (size_t start = 0; start < indices.size(); start += size_t(width)) {
        Bytes row(size_t(rowBytes), 0);
        for (int32_t i = 0; i < rowBytes * perByte; ++i) {
            const int value = i < width ? indices[start + size_t(i)] : (1 << bits) - 1;
            row[size_t(i / perByte)] |= uint8_t(value << (8 - bits * (i % perByte + 1)));
        }
        out = out + row;
    }
    return out;
}

// Every index width with widths 1 to 17 (whole bytes, partial last bytes)
// and several rows: each pixel takes the entry its index names.
TEST(ZrleTiles, PackedIndicesOfEveryWidthForEachIndexSize) {
    std::mt19937 rng(20);
    for (int size : {2, 4, 16}) {
        const int bits = size == 2 ? 1 : size == 4 ? 2 : 4;
        for (int32_t width = 1; width <= 17; ++width) {
            SCOPED_TRACE(testing::Message() << "size " << size << " width " << width);
            std::vector<int> indices(size_t(width * (1 + width % 3)));
            for (int &i : indices) i = std::uniform_int_distribution<int>(0, size - 1)(rng);
            TileCall t(palette(size) + pack(indices, width, bits), 20, 5, width, 1 + width % 3);
            ASSERT_EQ(t(P, size), 1);
            EXPECT_EQ(t.tile.left, 0);
            t.expect(20, 5, width, indices, entry);
        }
    }
}

// Every truncation of a valid body: short (0, no report, no marks) with the
// consumption each entry point specifies, or painted when complete.
TEST(ZrleTiles, TruncatedAtEveryByte) {
    Bytes raw(18);
    for (size_t i = 0; i < raw.size(); ++i) raw[i] = uint8_t(3 * i + 1);
    const struct {
        Entry entry;
        int32_t arg, width, height;
        Bytes bytes;
        int64_t (*consumedAt)(int64_t cut);  // below the whole length
    } bodies[] = {
        {S, 0, 5, 5, {1, 2, 3}, [](int64_t) { return int64_t(0); }},
        {R, 0, 3, 2, raw, [](int64_t) { return int64_t(0); }},
        // 400 pixels: 1 + 300 + 99.  Complete runs and any started run length
        // are consumed; a colour with fewer than three bytes left is not.
        {L, 0, 40, 10, {0xAA, 0xBB, 0xCC, 0x00, 0x11, 0x22, 0x33, 0xFF, 0x2C, 0x01, 0x02, 0x03, 0x62},
         [](int64_t k) { return k < 3 ? 0 : k >= 4 && k < 7 ? 4 : k >= 9 && k < 12 ? 9 : k; }},
        // The palette is consumed only once complete; packed indices only as a whole.
        {P, 3, 5, 3, palette(3) + Bytes{0x1B, 0x40, 0xE4, 0x00, 0x55, 0x80}, [](int64_t k) { return k < 9 ? 0 : int64_t(9); }},
        {P, 16, 3, 2, palette(16) + Bytes{0x01, 0x20, 0xFE, 0xD0}, [](int64_t k) { return k < 48 ? 0 : int64_t(48); }},
        {Q, 131, 20, 20, palette(3) + Bytes{0x02, 0x81, 0xFF, 0x20, 0x00, 0x82, 0x6D}, [](int64_t k) { return k < 9 ? 0 : k; }},
    };
    for (const auto &b : bodies) {
        const int64_t n = int64_t(b.bytes.size());
        for (int64_t k = 0; k <= n; ++k) {
            SCOPED_TRACE(testing::Message() << "entry " << int(b.entry) << " length " << k);
            TileCall t(Bytes(b.bytes.begin(), b.bytes.begin() + k), 0, 0, b.width, b.height);
            EXPECT_EQ(t(b.entry, b.arg), k == n ? 1 : 0);
            EXPECT_EQ(t.used(), k == n ? n : b.consumedAt(k));
            EXPECT_TRUE(t.log.reports().empty());
            EXPECT_EQ(t.frame.markedTiles().empty(), k != n);
            EXPECT_TRUE(t.frame.guardsIntact());
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
    for (int iteration = 0; iteration < 1200; ++iteration) {
        const Entry e = Entry(pick(0, 4));
        const int32_t arg = e == P ? pick(-2, 18) : e == Q ? pick(120, 260) : 0;
        const int32_t w = pick(0, 3) == 0 ? sizes[pick(0, 12)] : pick(0, 20);
        const int32_t h = pick(0, 3) == 0 ? sizes[pick(0, 12)] : pick(0, 20);
        const int32_t x = pick(-20, 50), y = pick(-20, 45);
        Bytes body(size_t(pick(0, e >= P ? 400 : 80)));
        for (uint8_t &b : body) b = uint8_t(pick(0, 4) == 0 ? 255 : pick(0, 255));
        SCOPED_TRACE(testing::Message() << "iteration " << iteration);
        TileCall t(body, x, y, w, h);
        const int32_t result = t(e, arg);
        ASSERT_TRUE(result == 1 || result == 0 || result == -1);
        ASSERT_GE(t.used(), 0);
        ASSERT_LE(t.used(), t.input.size());
        if (result == 0) EXPECT_TRUE(t.log.reports().empty());
        if (result == -1) EXPECT_FALSE(t.log.reports().empty());
        ASSERT_TRUE(t.frame.guardsIntact());
    }
}

}  // namespace
