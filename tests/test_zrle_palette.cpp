// ZRLE/TRLE palette tiles: packed palette indices and palette runs.
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
constexpr int kBlack = -1;  // an expected index that names no supplied entry

// Palette entry i: bytes 10+i, 40+i, 80+i (hex).
Bytes palette(int size) {
    Bytes out;
    for (int i = 0; i < size; ++i) out.insert(out.end(), {uint8_t(0x10 + i), uint8_t(0x40 + i), uint8_t(0x80 + i)});
    return out;
}
uint32_t entry(int i) {
    if (i == kBlack) return 0;
    return uint32_t(0x80 + i) << 16 | uint32_t(0x40 + i) << 8 | uint32_t(0x10 + i);
}

Bytes concat(Bytes a, const Bytes &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

int32_t packed(const Library &lib, UiTileStream *tile, int32_t size) {
    return lib.slot<UiZrlePackedPaletteTileFn>(UI_SLOT_ZRLE_PACKED_PALETTE_TILE)(tile, size);
}
int32_t paletteRle(const Library &lib, UiTileStream *tile, int32_t subencoding) {
    return lib.slot<UiZrlePaletteRleTileFn>(UI_SLOT_ZRLE_PALETTE_RLE_TILE)(tile, subencoding);
}

int paintedPixels(const Frame &frame) {
    int n = 0;
    for (int32_t y = 0; y < frame.height(); ++y)
        for (int32_t x = 0; x < frame.width(); ++x) n += frame.at(x, y) != kFill;
    return n;
}

// Expected pixels by palette index (kBlack for black), row by row, at (x, y).
void expectPicture(const Frame &frame, int32_t x, int32_t y, int32_t width, const std::vector<int> &indices) {
    for (size_t i = 0; i < indices.size(); ++i) {
        const int32_t px = x + int32_t(i) % width, py = y + int32_t(i) / width;
        EXPECT_EQ(frame.at(px, py), entry(indices[i])) << "pixel " << px << "," << py;
    }
    EXPECT_EQ(paintedPixels(frame), int(indices.size()));
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
        out.insert(out.end(), row.begin(), row.end());
    }
    return out;
}

struct PackedPicture {
    const char *name;
    int32_t size, width, height;
    Bytes indexBytes;
    std::vector<int> expected;
};

const PackedPicture kPackedPictures[] = {
    {"1-bit, 10 wide", 2, 10, 2, {0x80, 0x40, 0xFF, 0xC0},
     {1, 0, 0, 0, 0, 0, 0, 0, 0, 1, /* row 1 */ 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
    {"2-bit, 3 wide", 4, 3, 1, {0x1B}, {0, 1, 2}},
    {"4-bit, 3 wide", 16, 3, 1, {0xA5, 0x30}, {10, 5, 3}},
    {"2-bit index 3 of a palette of three", 3, 4, 1, {0xE4}, {kBlack, 2, 1, 0}},
    {"4-bit indices beyond a palette of five", 5, 4, 1, {0x4F, 0x59}, {4, kBlack, kBlack, kBlack}},
    {"palette of one", 1, 9, 1, {0x55, 0x80}, {0, kBlack, 0, kBlack, 0, kBlack, 0, kBlack, kBlack}},
    {"empty palette", 0, 3, 2, {0xFF, 0x00}, {kBlack, kBlack, kBlack, kBlack, kBlack, kBlack}},
};

TEST(PackedPaletteTile, Pictures) {
    for (const PackedPicture &p : kPackedPictures) {
        SCOPED_TRACE(p.name);
        Library lib;
        LogCapture log;
        Frame frame(40, 20, kFill);
        const Bytes body = concat(palette(p.size), p.indexBytes);
        GuardedInput input(body);
        UiTileStream tile = tileStream(frame, 3, 2, p.width, p.height, input);
        ASSERT_EQ(packed(lib, &tile, p.size), 1);
        EXPECT_EQ(tile.left, 0);
        expectPicture(frame, 3, 2, p.width, p.expected);
        EXPECT_EQ(frame.markedTiles(), std::vector<int>({0}));
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

// Every index width with widths 1 to 17 (whole bytes, partial last bytes)
// and several rows: each pixel takes the entry its index names.
TEST(PackedPaletteTile, EveryWidthForEachIndexSize) {
    std::mt19937 rng(20);
    for (int size : {2, 4, 16}) {
        const int bits = size == 2 ? 1 : size == 4 ? 2 : 4;
        for (int32_t width = 1; width <= 17; ++width) {
            SCOPED_TRACE(testing::Message() << "size " << size << " width " << width);
            const int32_t height = 1 + width % 3;
            std::vector<int> indices(size_t(width * height));
            for (int &i : indices) i = std::uniform_int_distribution<int>(0, size - 1)(rng);
            Library lib;
            LogCapture log;
            Frame frame(40, 20, kFill);
            const Bytes body = concat(palette(size), pack(indices, width, bits));
            GuardedInput input(body);
            UiTileStream tile = tileStream(frame, 20, 5, width, height, input);
            ASSERT_EQ(packed(lib, &tile, size), 1);
            EXPECT_EQ(tile.left, 0);
            expectPicture(frame, 20, 5, width, indices);
            EXPECT_TRUE(frame.guardsIntact());
        }
    }
}

enum class Entry { packed, paletteRle };

struct Case {
    const char *name;
    Entry entry;
    int32_t subencoding;
    int32_t x, y, width, height;
    Bytes body;
    int32_t result;
    int64_t consumed;
    Sites sites;
    int painted;
};

const Bytes kPalette2 = palette(2);

const Case kCases[] = {
    {"packed size 17", Entry::packed, 17, 0, 0, 4, 4, palette(17), -1, 0, {"ui 3148"}, 0},
    {"packed negative size", Entry::packed, -1, 0, 0, 4, 4, palette(2), -1, 0, {"ui 3148"}, 0},
    {"packed palette short", Entry::packed, 2, 0, 0, 10, 2, {1, 2, 3, 4, 5}, 0, 0, {}, 0},
    {"packed index bytes short", Entry::packed, 2, 0, 0, 10, 2, concat(kPalette2, {0xFF, 0xFF, 0xFF}), 0, 6, {}, 0},
    {"packed body then later bytes", Entry::packed, 2, 0, 0, 10, 2, concat(kPalette2, {0xFF, 0xC0, 0xFF, 0xC0, 0x77}),
     1, 10, {}, 20},
    {"packed outside the image", Entry::packed, 2, 35, 0, 10, 2, concat(kPalette2, {0, 0, 0, 0}), -1, 6,
     {"imgbuf 99", "ui 3170"}, 0},
    {"packed negative height", Entry::packed, 2, 0, 0, 10, -2, concat(kPalette2, {0, 0, 0, 0}), -1, 6,
     {"imgbuf 99", "ui 3170"}, 0},
    {"packed huge width", Entry::packed, 16, 0, 0, INT32_MAX, 1, palette(16), -1, 48, {"imgbuf 99", "ui 3170"}, 0},
    {"packed empty tile", Entry::packed, 2, 32, 0, 0, 2, kPalette2, 1, 6, {"dirtybuf 114"}, 0},
    {"rle sub-encoding 256", Entry::paletteRle, 256, 0, 0, 2, 2, palette(127), -1, 0, {"ui 3394"}, 0},
    {"rle sub-encoding 127", Entry::paletteRle, 127, 0, 0, 2, 2, palette(2), -1, 0, {"ui 3394"}, 0},
    {"rle sub-encoding INT32_MIN", Entry::paletteRle, INT32_MIN, 0, 0, 2, 2, palette(2), -1, 0, {"ui 3394"}, 0},
    {"rle palette short", Entry::paletteRle, 130, 0, 0, 2, 2, {1, 2, 3, 4, 5}, 0, 0, {}, 0},
    {"rle no runs", Entry::paletteRle, 130, 0, 0, 2, 2, kPalette2, 0, 6, {}, 0},
    {"rle short after a run", Entry::paletteRle, 130, 0, 0, 2, 2, concat(kPalette2, {0x01, 0x80, 0x01}), 0, 9, {}, 3},
    {"rle short inside a run length", Entry::paletteRle, 130, 0, 0, 2, 2, concat(kPalette2, {0x81, 0xFF}), 0, 8, {}, 0},
    {"rle run of five in four pixels", Entry::paletteRle, 130, 0, 0, 2, 2, concat(kPalette2, {0x81, 0x04, 0x00}), -1,
     8, {"ui 3421"}, 0},
    {"rle later run too long", Entry::paletteRle, 130, 0, 0, 2, 2, concat(kPalette2, {0x01, 0x80, 0x03}), -1, 9,
     {"ui 3421"}, 1},
    {"rle body then later bytes", Entry::paletteRle, 130, 0, 0, 2, 2, concat(kPalette2, {0x81, 0x02, 0x00, 0x01}), 1,
     9, {}, 4},
    {"rle outside the image", Entry::paletteRle, 130, 0, 19, 2, 2, concat(kPalette2, {0x81, 0x03}), -1, 6,
     {"imgbuf 99", "ui 3394"}, 0},
    {"rle empty tile", Entry::paletteRle, 130, 32, 0, 0, 3, concat(kPalette2, {0x00}), 1, 6, {"dirtybuf 114"}, 0},
};

int32_t call(const Library &lib, const Case &c, UiTileStream *tile) {
    return c.entry == Entry::packed ? packed(lib, tile, c.subencoding) : paletteRle(lib, tile, c.subencoding);
}

TEST(PaletteTiles, ResultsConsumptionReportsAndPainting) {
    for (const Case &c : kCases) {
        SCOPED_TRACE(c.name);
        Library lib;
        LogCapture log;
        Frame frame(40, 20, kFill);
        GuardedInput input(c.body);
        UiTileStream tile = tileStream(frame, c.x, c.y, c.width, c.height, input);
        EXPECT_EQ(call(lib, c, &tile), c.result);
        EXPECT_EQ(consumed(tile, input.data(), input.size()), c.consumed);
        EXPECT_EQ(log.sites(), c.sites);
        for (const Report &r : log.reports())
            if (r.module != "dirtybuf") EXPECT_EQ(r.text, kInternalError);
        EXPECT_EQ(paintedPixels(frame), c.painted);
        EXPECT_EQ(frame.markedTiles().empty(), c.result != 1 || c.width == 0);
        EXPECT_TRUE(frame.guardsIntact());
    }
}

// A null ptr holds no bytes.  With an empty palette the packed tile reaches
// its index check and consumes the index byte count (the address advances,
// nothing is read); otherwise nothing is consumed.
TEST(PaletteTiles, NullPointer) {
    struct NullCase {
        const char *name;
        Entry entry;
        int32_t subencoding;
        int32_t left;
        int32_t result;
        int64_t consumed;
        Sites sites;
    };
    const NullCase cases[] = {
        {"packed empty palette", Entry::packed, 0, 2, -1, 2, {"ui 3181"}},
        {"packed 1-bit palette", Entry::packed, 2, 20, -1, 0, {"ui 3181"}},
        {"packed 2-bit palette", Entry::packed, 3, 20, -1, 0, {"ui 3226"}},
        {"packed 4-bit palette", Entry::packed, 5, 20, -1, 0, {"ui 3267"}},
        {"packed palette short", Entry::packed, 2, 5, 0, 0, {}},
        {"rle palette", Entry::paletteRle, 130, 20, -1, 0, {"ui 3394"}},
        {"rle empty palette", Entry::paletteRle, 128, 1, -1, 0, {"ui 3394"}},
        {"rle empty palette, no bytes", Entry::paletteRle, 128, 0, 0, 0, {}},
    };
    for (const NullCase &c : cases) {
        SCOPED_TRACE(c.name);
        Library lib;
        LogCapture log;
        Frame frame(40, 20, kFill);
        UiTileStream tile = tileStream(frame, 0, 0, 8, 2, nullptr, c.left);
        const int32_t result =
            c.entry == Entry::packed ? packed(lib, &tile, c.subencoding) : paletteRle(lib, &tile, c.subencoding);
        EXPECT_EQ(result, c.result);
        EXPECT_EQ(consumed(tile, nullptr, c.left), c.consumed);
        EXPECT_EQ(log.sites(), c.sites);
        EXPECT_EQ(paintedPixels(frame), 0);
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(PaletteRleTile, Pictures) {
    struct Picture {
        const char *name;
        int32_t subencoding, width, height;
        Bytes runs;
        std::vector<int> expected;
    };
    const Picture pictures[] = {
        {"single pixel then a run of three", 130, 4, 1, {0x01, 0x80, 0x02}, {1, 0, 0, 0}},
        {"runs across rows", 131, 3, 3, {0x82, 0x03, 0x01, 0x80, 0x02, 0x01}, {2, 2, 2, 2, 1, 0, 0, 0, 1}},
        {"run of 256 over rows", 130, 16, 17, {0x81, 0xFF, 0x00, 0x80, 0x0F},
         [] {
             std::vector<int> v(256, 1);
             v.resize(272, 0);
             return v;
         }()},
        {"indices beyond the palette", 130, 2, 2, {0x05, 0xFF, 0x00, 0x7F, 0x01}, {kBlack, kBlack, kBlack, 1}},
        {"full palette of 127", 255, 3, 1, {0x7E, 0xFE, 0x00, 0xFF, 0x00}, {126, 126, kBlack}},
        {"empty palette", 128, 2, 1, {0x00, 0x80, 0x00}, {kBlack, kBlack}},
    };
    for (const Picture &p : pictures) {
        SCOPED_TRACE(p.name);
        Library lib;
        LogCapture log;
        Frame frame(40, 20, kFill);
        const Bytes body = concat(palette(p.subencoding - 128), p.runs);
        GuardedInput input(body);
        UiTileStream tile = tileStream(frame, 1, 2, p.width, p.height, input);
        ASSERT_EQ(paletteRle(lib, &tile, p.subencoding), 1);
        EXPECT_EQ(tile.left, 0);
        expectPicture(frame, 1, 2, p.width, p.expected);
        EXPECT_FALSE(frame.markedTiles().empty());
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

// Every truncation of a valid body: short, silent and unmarked, with the
// palette consumed only once complete and, for runs, every byte read kept.
TEST(PaletteTiles, TruncatedAtEveryByte) {
    struct Body {
        Entry entry;
        int32_t subencoding, width, height;
        Bytes bytes;
    };
    const Body bodies[] = {
        {Entry::packed, 3, 5, 3, concat(palette(3), {0x1B, 0x40, 0xE4, 0x00, 0x55, 0x80})},
        {Entry::packed, 16, 3, 2, concat(palette(16), {0x01, 0x20, 0xFE, 0xD0})},
        {Entry::paletteRle, 131, 20, 20, concat(palette(3), {0x02, 0x81, 0xFF, 0x20, 0x00, 0x82, 0x6D})},
    };
    for (const Body &b : bodies) {
        const int64_t n = int64_t(b.bytes.size());
        const int64_t paletteBytes = 3 * (b.entry == Entry::packed ? b.subencoding : b.subencoding - 128);
        for (int64_t k = 0; k <= n; ++k) {
            SCOPED_TRACE(testing::Message() << "sub-encoding " << b.subencoding << " length " << k);
            Library lib;
            LogCapture log;
            Frame frame(40, 20, kFill);
            GuardedInput input(b.bytes.data(), size_t(k));
            UiTileStream tile = tileStream(frame, 0, 0, b.width, b.height, input);
            const int32_t result = b.entry == Entry::packed ? packed(lib, &tile, b.subencoding)
                                                            : paletteRle(lib, &tile, b.subencoding);
            int64_t expected = k < paletteBytes ? 0 : b.entry == Entry::packed ? paletteBytes : k;
            if (k == n) expected = n;
            EXPECT_EQ(result, k == n ? 1 : 0);
            EXPECT_EQ(consumed(tile, input.data(), input.size()), expected);
            EXPECT_TRUE(log.reports().empty());
            EXPECT_EQ(frame.markedTiles().empty(), k != n);
            EXPECT_TRUE(frame.guardsIntact());
        }
    }
}

TEST(PaletteTiles, HostileRandomTiles) {
    std::mt19937 rng(53);
    const int32_t sizes[] = {-70000, -1, 0, 1, 5, 16, 17, 33, 65536, INT32_MAX};
    auto pick = [&](int lo, int hi) { return int32_t(std::uniform_int_distribution<int>(lo, hi)(rng)); };
    for (int iteration = 0; iteration < 600; ++iteration) {
        const Entry entry = Entry(pick(0, 1));
        const int32_t subencoding = entry == Entry::packed ? pick(-2, 18) : pick(120, 260);
        const int32_t w = pick(0, 3) == 0 ? sizes[pick(0, 9)] : pick(0, 20);
        const int32_t h = pick(0, 3) == 0 ? sizes[pick(0, 9)] : pick(0, 20);
        const int32_t x = pick(-10, 40), y = pick(-10, 25);
        Bytes body(size_t(pick(0, 400)));
        for (uint8_t &b : body) b = uint8_t(pick(0, 4) == 0 ? 255 : pick(0, 255));
        SCOPED_TRACE(testing::Message() << "iteration " << iteration);
        Library lib;
        LogCapture log;
        Frame frame(40, 20, kFill);
        GuardedInput input(body);
        UiTileStream tile = tileStream(frame, x, y, w, h, input);
        const int32_t result =
            entry == Entry::packed ? packed(lib, &tile, subencoding) : paletteRle(lib, &tile, subencoding);
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
