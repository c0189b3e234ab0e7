// The demo's encoders and text records against the library's decoders: every
// stream the demo builds must decode back to the picture it came from, and
// the encoders must actually use the codec features the demo claims to show.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "codecs.h"
#include "font.h"
#include "pictures.h"
#include "plugin.h"
#include "png.h"
#include "text.h"

#ifdef UI32_DEMO_HAVE_ZLIB
#include <zlib.h>
#endif

namespace demo {
namespace {

uint32_t noiseAt(int x, int y, uint32_t seed = 1) {
    uint32_t h = uint32_t(x) * 374761393u + uint32_t(y) * 668265263u + seed * 2246822519u;
    h = (h ^ (h >> 13)) * 1274126177u;
    return (h ^ (h >> 16)) & 0xFFFFFF;
}

Picture generate(int w, int h, const std::function<uint32_t(int, int)> &f) {
    Picture p(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) p.at(x, y) = f(x, y) & 0xFFFFFF;
    return p;
}

class Codecs : public ::testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(plugin.attach(&srn_get, UiConfig{kHatchPatterns.data(), 3}, error)) << error;
    }
    void TearDown() override { EXPECT_EQ(plugin.totalReports(), 0); }

    // Decodes with slot 8 and compares with the picture (rows bottom-up).
    void expectDecodes(const Picture &picture, const std::vector<uint8_t> &data) {
        std::vector<uint32_t> out(picture.pixels.size() + 1, 0xDEADBEEF);
        ASSERT_TRUE(plugin.decodeBitmap(picture.width, picture.height, data, true, out.data()));
        const std::vector<uint32_t> expected = bottomUp(picture);
        long bad = 0;
        for (size_t i = 0; i < expected.size(); ++i) bad += (out[i] & 0xFFFFFF) != expected[i];
        EXPECT_EQ(bad, 0) << "of " << expected.size() << " pixels";
        EXPECT_EQ(out.back(), 0xDEADBEEFu) << "decoder wrote past the bitmap";
    }

    long differences(Screen &screen, const Picture &picture, int x0, int y0) {
        long bad = 0;
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x) bad += screen.at(x0 + x, y0 + y) != (picture.at(x, y) & 0xFFFFFF);
        return bad;
    }

    Plugin plugin;
};

// ---------------------------------------------------------------------------
// Interleaved run-length
// ---------------------------------------------------------------------------

struct InterleavedCase {
    const char *name;
    Picture picture;
    long InterleavedStats::*mustUse;  // an order kind the stream has to contain
};

std::vector<InterleavedCase> interleavedCases() {
    const uint32_t a = 0x3060A0, b = 0xC08020;
    // Runs whose lengths sit on either side of every header form.
    Picture boundaries(31 + 32 + 287 + 288 + 15 + 16 + 272, 2);
    {
        int x = 0, n = 0;
        for (int len : {31, 32, 287, 288, 15, 16, 272}) {
            for (int i = 0; i < len; ++i) boundaries.at(x + i, 0) = boundaries.at(x + i, 1) = 0x101010 * uint32_t(n + 1);
            x += len;
            ++n;
        }
    }
    return {
        {"flat 64x64", generate(64, 64, [](int, int) { return 0x336699u; }), &InterleavedStats::megaMega},
        {"runs at header boundaries", boundaries, &InterleavedStats::colourRuns},
        {"identical rows", generate(40, 30, [](int x, int) { return noiseAt(x, 0); }), &InterleavedStats::backgroundRuns},
        {"rows alternating by a fixed xor", generate(50, 20, [&](int, int y) { return y % 2 ? a : b; }),
         &InterleavedStats::setForegroundRuns},
        {"dither", generate(48, 8, [&](int x, int y) { return (x + y) % 2 ? a : b; }), &InterleavedStats::ditheredRuns},
        {"glyph-like xor masks",
         generate(64, 24, [](int x, int y) { return (y > 0 && (noiseAt(x, y) & 3) == 0) ? 0x00FF00u : 0x0000FFu; }),
         &InterleavedStats::fgbgImages},
        {"special masks", generate(32, 4, [](int x, int y) { return (y % 2 && x % 8 < 2) ? 0xFFFFFFu : 0u; }),
         &InterleavedStats::specials},
        {"noise", generate(33, 17, [](int x, int y) { return noiseAt(x, y); }), &InterleavedStats::colourImages},
        {"white and black dots",
         generate(40, 5, [](int x, int y) { return x % 7 == 3 ? 0xFFFFFFu : x % 7 == 5 ? 0u : noiseAt(x, y); }),
         &InterleavedStats::whiteBlack},
        {"one pixel", generate(1, 1, [](int, int) { return 0x123456u; }), &InterleavedStats::colourImages},
        {"one column", generate(1, 9, [](int, int y) { return noiseAt(0, y / 3); }), nullptr},
        {"odd width", generate(7, 3, [](int x, int y) { return noiseAt(x / 2, y); }), nullptr},
        {"lake photo", lakePhoto(256, 160), &InterleavedStats::colourImages},
    };
}

TEST_F(Codecs, InterleavedStreamsDecodeToTheirPictures) {
    for (const InterleavedCase &c : interleavedCases()) {
        SCOPED_TRACE(c.name);
        InterleavedStats stats;
        const std::vector<uint8_t> data = encodeInterleaved(c.picture, &stats);
        expectDecodes(c.picture, data);
        if (c.mustUse != nullptr) EXPECT_GT(stats.*c.mustUse, 0) << "the encoder did not use the intended order";
    }
}

TEST_F(Codecs, InterleavedStreamsAreSmallerThanRawForFlatPictures) {
    const Picture p = wallpaper(1024, 768).crop(0, 0, 64, 64);  // sky: one colour per row
    EXPECT_LT(encodeInterleaved(p).size(), rawBitmap(p, 3).size() / 10);
}

// ---------------------------------------------------------------------------
// Planar
// ---------------------------------------------------------------------------

TEST_F(Codecs, PlanarStreamsDecodeInEveryFormat) {
    // Runs of lengths around the +16 and +32 run forms and the 15-pixel limit.
    Picture runs(15 + 16 + 31 + 32 + 47 + 48 + 100, 3);
    {
        int x = 0, n = 0;
        for (int len : {15, 16, 31, 32, 47, 48, 100}) {
            for (int i = 0; i < len; ++i)
                for (int y = 0; y < 3; ++y) runs.at(x + i, y) = uint32_t(0x102030 * (n + 1) + y);
            x += len;
            ++n;
        }
    }
    const std::vector<std::pair<const char *, Picture>> pictures = {
        {"gradient", generate(64, 64, [](int x, int y) { return rgb(x * 4, y * 4, (x + y) * 2); })},
        {"run forms", runs},
        {"large deltas both ways", generate(20, 12, [](int x, int y) { return (y + x / 5) % 2 ? 0xF0F0F0u : 0x0A0A0Au; })},
        {"deltas of 127 and 128", generate(8, 6, [](int, int y) { return rgb(y * 127, y * 128, 255 - y * 127); })},
        {"noise", generate(37, 11, [](int x, int y) { return noiseAt(x, y); })},
        {"one pixel", generate(1, 1, [](int, int) { return 0xABCDEFu; })},
        {"thumbnails", thumbnailStrip()},
    };
    plugin.setSourceBytesPerPixel4();
    for (const auto &[name, picture] : pictures)
        for (int format = 0; format < 4; ++format) {
            const bool rle = format & 1, alpha = format & 2;
            SCOPED_TRACE(std::string(name) + (rle ? " rle" : " raw") + (alpha ? " with alpha" : ""));
            expectDecodes(picture, encodePlanar(picture, rle, alpha));
        }
}

TEST_F(Codecs, BitmapUpdatesOfEveryKindReachTheScreen) {
    Screen screen(128, 64);
    const Picture a = generate(64, 64, [](int x, int y) { return noiseAt(x / 4, y / 4); });
    const Picture b = generate(64, 64, [](int x, int y) { return rgb(x * 3, 200, y * 3); });
    auto send = [&](int x, const Picture &p, const std::vector<uint8_t> &data, bool compressed) {
        UiBitmapData d{x, 0, x + 63, 63, 64, 64, 24, compressed ? 1u : 0u, int32_t(data.size()), data.data()};
        plugin.bitmapUpdate(screen, d);
        EXPECT_EQ(differences(screen, p, x, 0), 0);
    };
    send(0, a, encodeInterleaved(a), true);
    send(64, b, rawBitmap(b, 3), false);
    plugin.setSourceBytesPerPixel4();
    send(0, b, encodePlanar(b, true, false), true);
    send(64, a, rawBitmap(a, 4), false);
}

// ---------------------------------------------------------------------------
// ZRLE and Hextile
// ---------------------------------------------------------------------------

struct TileCase {
    const char *name;
    Picture tile;
    int firstSub;  // expected sub-encoding range start
    int lastSub;
};

std::vector<TileCase> tileCases() {
    Picture longRuns(64, 64);
    for (int i = 0; i < 64 * 64; ++i) longRuns.pixels[size_t(i)] = i < 300 ? 0x777777u : rgb(i / 29, 255 - i / 29, 100);
    return {
        {"solid", generate(64, 64, [](int, int) { return 0x10A040u; }), 1, 1},
        {"raw", generate(64, 64, [](int x, int y) { return noiseAt(x, y); }), 0, 0},
        {"two colours", generate(64, 64, [](int x, int y) { return (noiseAt(x, y) & 1) ? 0xFFFFFFu : 0u; }), 2, 2},
        {"four colours", generate(30, 7, [](int x, int y) { return noiseAt(x, y) & 0x000003u; }), 3, 4},
        {"sixteen colours", generate(64, 64, [](int x, int y) { return (noiseAt(x, y) & 15) * 0x101010u; }), 5, 16},
        {"many colours in runs", longRuns, 128, 128},
        {"colour bars", generate(64, 64, [](int x, int y) { return rgb(x / 2 * 8, y < 32 ? 40 : 200, 90); }), 130, 255},
        {"edge tile", generate(17, 5, [](int x, int y) { return noiseAt(x, y) & 0x010101u; }), 2, 16},
    };
}

TEST_F(Codecs, ZrleTilesChooseTheirKindAndDecode) {
    Screen screen(64, 64);
    plugin.setSourceByteOrder(1);
    for (const TileCase &c : tileCases()) {
        SCOPED_TRACE(c.name);
        const std::vector<uint8_t> bytes = encodeZrleTile(c.tile);
        ASSERT_FALSE(bytes.empty());
        EXPECT_GE(bytes[0], c.firstSub);
        EXPECT_LE(bytes[0], c.lastSub);
        UiTileStream t{0, 0, c.tile.width, c.tile.height, screen.image(), screen.dirty(), bytes.data() + 1,
                       int32_t(bytes.size() - 1)};
        EXPECT_EQ(plugin.zrleTile(bytes[0], t), 1);
        EXPECT_EQ(t.left, 0) << "the body was not consumed exactly";
        EXPECT_EQ(differences(screen, c.tile, 0, 0), 0);
    }
}

struct HextileBytes {
    static inline const uint8_t *ptr = nullptr;
    static inline size_t left = 0;
    static int read(uint8_t *buffer, int32_t length) {
        if (length < 0 || size_t(length) > left) return 0;
        std::memcpy(buffer, ptr, size_t(length));
        ptr += length;
        left -= size_t(length);
        return 1;
    }
};

TEST_F(Codecs, HextileRectanglesDecode) {
    const std::vector<std::pair<const char *, Picture>> pictures = {
        {"remote document", remoteDocument()},
        {"partial tiles", generate(40, 20, [](int x, int y) { return x < 20 ? 0x202020u : (noiseAt(x, y) & 0x0F0F0F); })},
        {"one flat tile then text",
         generate(32, 16, [](int x, int y) { return x >= 16 && (noiseAt(x, y) & 3) == 0 ? 0u : 0xFFFFFFu; })},
        {"coloured squares", generate(48, 16, [](int x, int y) { return ((x / 4 + y / 4) % 3) * 0x405060u; })},
    };
    plugin.setSourceByteOrder(1);
    for (const auto &[name, picture] : pictures) {
        SCOPED_TRACE(name);
        Screen screen(picture.width, picture.height);
        const std::vector<uint8_t> bytes = encodeHextile(picture);
        HextileBytes::ptr = bytes.data();
        HextileBytes::left = bytes.size();
        EXPECT_TRUE(plugin.hextileRect(screen, UiRect{0, 0, picture.width, picture.height}, &HextileBytes::read));
        EXPECT_EQ(HextileBytes::left, 0u);
        EXPECT_EQ(differences(screen, picture, 0, 0), 0);
    }
}

// ---------------------------------------------------------------------------
// Glyph caches and glyph strings
// ---------------------------------------------------------------------------

TEST_F(Codecs, GlyphCacheEntriesDrawTheirMasks) {
    const Font small = makeSmallFont(), large = makeLargeFont();
    for (const Font *font : {&small, &large})
        for (char c = '!'; c <= '~'; ++c) {
            SCOPED_TRACE(std::string(1, c));
            const Mask art = font == &small ? characterArt(c) : scale2x(characterArt(c));
            Screen screen(32, 32);
            plugin.fastGlyph(screen, glyphOrder(font->cache, c, 4, 24, 0xFFFFFF), screen.everything());
            long bad = 0;
            for (int y = 0; y < 32; ++y)
                for (int x = 0; x < 32; ++x) {
                    const bool ink = art.at(x - 4, y - (24 - font->ascent));
                    bad += (screen.at(x, y) == 0xFFFFFF) != ink;
                }
            EXPECT_EQ(bad, 0);
        }
}

TEST_F(Codecs, FragmentsDrawLikeTheTextTheyHold) {
    const Font font = makeSmallFont();
    FragmentBook book;
    Screen direct(240, 16), replayed(240, 16);
    GlyphString plain(font, book);
    plain.text("the frame buffer and the frame buffer");
    plugin.glyphIndex(direct, textOrder(font, plain.bytes(), 2, 10, plain.width(), 0xFFFFFF), direct.everything());

    GlyphString stored(font, book);
    stored.text("the ");
    const size_t mark = stored.mark();
    stored.text("frame buffer").store(5, mark).text(" and the ").replay(5);
    EXPECT_EQ(stored.width(), plain.width());
    plugin.glyphIndex(replayed, textOrder(font, stored.bytes(), 2, 10, stored.width(), 0xFFFFFF),
                      replayed.everything());
    EXPECT_EQ(replayed.pixels, direct.pixels);

    // A fragment stored at the start of a string is placed by the replaying
    // order's own delta.
    GlyphString first(font, book);
    first.text("menu").store(6);
    GlyphString again(font, book);
    again.text("a ").replay(6);
    GlyphString expected(font, book);
    expected.text("a menu");
    Screen scratch(120, 16), one(120, 16), two(120, 16);
    plugin.glyphIndex(scratch, textOrder(font, first.bytes(), 0, 10, first.width(), 0xFFFFFF), scratch.everything());
    plugin.glyphIndex(one, textOrder(font, again.bytes(), 0, 10, again.width(), 0xFFFFFF), one.everything());
    plugin.glyphIndex(two, textOrder(font, expected.bytes(), 0, 10, expected.width(), 0xFFFFFF), two.everything());
    EXPECT_EQ(again.width(), expected.width());
    EXPECT_EQ(one.pixels, two.pixels);
}

// ---------------------------------------------------------------------------
// PNG and deflate
// ---------------------------------------------------------------------------

uint32_t bigEndian(const uint8_t *p) { return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3]; }

#ifdef UI32_DEMO_HAVE_ZLIB
std::vector<uint8_t> inflate(const std::vector<uint8_t> &z, size_t size) {
    std::vector<uint8_t> out(size + 1);
    uLongf length = uLongf(out.size());
    EXPECT_EQ(uncompress(out.data(), &length, z.data(), uLong(z.size())), Z_OK);
    out.resize(length);
    return out;
}

TEST(Deflate, StreamsInflateToTheirInput) {
    std::vector<std::pair<const char *, std::vector<uint8_t>>> inputs;
    inputs.push_back({"empty", {}});
    inputs.push_back({"one byte", {42}});
    inputs.push_back({"long zero run", std::vector<uint8_t>(100000, 0)});
    std::vector<uint8_t> random(70000), periodic(120000);
    for (size_t i = 0; i < random.size(); ++i) random[i] = uint8_t(noiseAt(int(i), 0));
    for (size_t i = 0; i < periodic.size(); ++i) periodic[i] = uint8_t(noiseAt(int(i % 40000), 1));  // repeats beyond the window
    inputs.push_back({"random", random});
    inputs.push_back({"period longer than the window", periodic});
    for (const auto &[name, data] : inputs) {
        SCOPED_TRACE(name);
        EXPECT_EQ(inflate(zlibCompress(data), data.size()), data);
    }
}

TEST(Png, ChunksCheckAndPixelsSurvive) {
    const Picture p = generate(37, 23, [](int x, int y) { return x < 20 ? noiseAt(x, y) : rgb(x * 5, y * 9, 77); });
    const std::vector<uint8_t> png = encodePng(p.pixels.data(), p.width, p.height, p.width);
    ASSERT_GT(png.size(), 8u);
    EXPECT_EQ(std::memcmp(png.data(), "\x89PNG\r\n\x1a\n", 8), 0);
    std::vector<uint8_t> idat;
    size_t at = 8;
    std::vector<std::string> types;
    while (at + 12 <= png.size()) {
        const uint32_t length = bigEndian(&png[at]);
        ASSERT_LE(at + 12 + length, png.size());
        const std::string type(reinterpret_cast<const char *>(&png[at + 4]), 4);
        types.push_back(type);
        EXPECT_EQ(crc32(0, &png[at + 4], uInt(length + 4)), bigEndian(&png[at + 8 + length])) << type;
        if (type == "IHDR") {
            EXPECT_EQ(bigEndian(&png[at + 8]), uint32_t(p.width));
            EXPECT_EQ(bigEndian(&png[at + 12]), uint32_t(p.height));
        }
        if (type == "IDAT") idat.insert(idat.end(), &png[at + 8], &png[at + 8 + length]);
        at += 12 + length;
    }
    EXPECT_EQ(at, png.size());
    EXPECT_EQ(types, (std::vector<std::string>{"IHDR", "IDAT", "IEND"}));
    const size_t rowBytes = size_t(p.width) * 3;
    std::vector<uint8_t> raw = inflate(idat, (rowBytes + 1) * size_t(p.height));
    ASSERT_EQ(raw.size(), (rowBytes + 1) * size_t(p.height));
    std::vector<uint8_t> prev(rowBytes, 0), row(rowBytes);
    for (int y = 0; y < p.height; ++y) {
        const uint8_t filter = raw[y * (rowBytes + 1)];
        const uint8_t *f = &raw[y * (rowBytes + 1) + 1];
        for (size_t i = 0; i < rowBytes; ++i) {
            const int a = i >= 3 ? row[i - 3] : 0, b = prev[i], c = i >= 3 ? prev[i - 3] : 0;
            int pred = 0;
            if (filter == 1) pred = a;
            else if (filter == 2) pred = b;
            else if (filter == 3) pred = (a + b) / 2;
            else if (filter == 4) {
                const int q = a + b - c, pa = std::abs(q - a), pb = std::abs(q - b), pc = std::abs(q - c);
                pred = (pa <= pb && pa <= pc) ? a : pb <= pc ? b : c;
            }
            row[i] = uint8_t(f[i] + pred);
        }
        for (int x = 0; x < p.width; ++x)
            ASSERT_EQ(rgb(row[3 * x], row[3 * x + 1], row[3 * x + 2]), p.at(x, y)) << x << "," << y;
        prev = row;
    }
}
#endif

}  // namespace
}  // namespace demo
