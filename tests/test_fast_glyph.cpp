// The single glyph order (slot 7): FastIndex rectangles, the glyph point,
// cache refusals and the tiles.
#include <gtest/gtest.h>

#include "frame.h"
#include "glyph_cache.h"
#include "library.h"
#include "log_capture.h"
#include "pixel_sets.h"

using namespace ui32test;

namespace {

constexpr uint32_t kBack = 0x111111;
constexpr uint32_t kInk = 0x0a0b0c;
constexpr uint32_t kOpaque = 0x202122;
constexpr int32_t kUnset = -32768;

const TestGlyph kGlyph{-1, -2, {"##.#", "#..#", ".##."}};

using Pixels = PixelSet;

struct FastGlyphOrder : ::testing::Test {
    FastGlyphOrder() {
        glyphs.set(3, kGlyph);
        order.textColor[0] = 10, order.textColor[1] = 11, order.textColor[2] = 12;
        order.opaqueColor[0] = 32, order.opaqueColor[1] = 33, order.opaqueColor[2] = 34;
        order.bkLeft = 4, order.bkTop = 4, order.bkRight = 60, order.bkBottom = 30;
        order.opBottom = 0, order.opTop = 0, order.opLeft = 0, order.opRight = 0;  // empty opaque rectangle
        order.x = 20, order.y = 10;
        order.rgbData[0] = 3;
        order.glyphCache = glyphs.cache();
    }
    void draw() {
        const UiClipRect clip = frame.fullClip();
        lib.slot<UiFastGlyphFn>(UI_SLOT_FAST_GLYPH)(&frame.surface(), &order, &clip);
        EXPECT_TRUE(frame.guardsIntact());
    }
    Pixels pixelsOf(uint32_t colour) const { return ui32test::pixelsOf(frame, colour); }
    Pixels glyphAt(int32_t x, int32_t y) const {
        const auto v = glyphPixels(kGlyph, x, y, UiRect{0, 0, 96, 40}, 96, 40);
        return Pixels(v.begin(), v.end());
    }

    Library lib;
    LogCapture log;
    Frame frame{96, 40, kBack};
    GlyphCache glyphs{4, 8};
    UiFastGlyphOrder order{};
};

struct OpaqueCase {
    const char *name;
    int32_t op[4];
    Pixels expected;
    Sites reports;
    std::vector<int> tiles;
};

TEST_F(FastGlyphOrder, OpaqueRectangleFastIndexCoding) {
    const OpaqueCase cases[] = {
        {"none", {0, 0, 0, 0}, {}, {}, {0, 1}},
        {"literal", {40, 33, 50, 36}, rect(40, 33, 50, 36), {}, {4}},
        {"left and right 0", {0, 33, 0, 36}, rect(4, 33, 60, 36), {}, {3, 4}},
        {"flags 0x0F", {70, 0x0f, 80, kUnset}, rect(4, 4, 60, 30), {}, {0, 1}},
        {"flags 0x05", {40, 0x05, 50, kUnset}, rect(40, 4, 50, 30), {}, {1}},
        {"flags 0x0D", {40, 0x0d, 50, kUnset}, rect(4, 4, 50, 30), {}, {0, 1}},
        {"flags without 0x01", {40, 0x0e, 50, kUnset}, {}, {"ui 2863"}, {}},
        {"flags without 0x04", {40, 0x0b, 50, kUnset}, {}, {"ui 2869"}, {}},
    };
    for (const OpaqueCase &c : cases) {
        SCOPED_TRACE(c.name);
        frame.fill(kBack);
        frame.clearTiles();
        log.clear();
        order.opLeft = c.op[0], order.opTop = c.op[1], order.opRight = c.op[2], order.opBottom = c.op[3];
        draw();
        const Pixels ink = c.reports.empty() ? glyphAt(20, 10) : Pixels{};
        Pixels opaque = c.expected;
        for (auto p : ink) opaque.erase(p);
        EXPECT_EQ(pixelsOf(kInk), ink);
        EXPECT_EQ(pixelsOf(kOpaque), opaque);
        EXPECT_EQ(log.sites(), c.reports);
        EXPECT_EQ(frame.markedTiles(), c.tiles);
    }
}

TEST_F(FastGlyphOrder, GlyphPointTranslatedWhateverOriginEnabledSays) {
    frame.surface().originX = -3, frame.surface().originY = -8;
    order.y = kUnset;  // bkTop
    draw();
    EXPECT_EQ(pixelsOf(kInk), glyphAt(23, 12));
    frame.fill(kBack);
    frame.surface().originEnabled = 1;  // the background moves too: (7, 12)-(63, 38)
    order.x = 4, order.y = 12;          // cut by the background's left edge at column 7
    draw();
    Pixels expected = glyphAt(7, 20);
    std::erase_if(expected, [](auto p) { return p.first < 7; });
    EXPECT_EQ(pixelsOf(kInk), expected);
    EXPECT_EQ(expected.size(), 5u);
    EXPECT_TRUE(log.reports().empty());
}

TEST_F(FastGlyphOrder, UnusableEntriesKeepTheFillButMarkNothing) {
    GlyphCache oversized(4, 8);
    oversized.setRaw(3, rawGlyphRecord(0, 0, 9, 3, std::vector<uint8_t>(4, 0xff)));  // needs 6 bytes
    const UiGlyphCache noEntries{4, 8, nullptr};
    const struct {
        const char *name;
        const UiGlyphCache *cache;
        uint8_t index;
        Sites reports;
    } cases[] = {
        {"index equal to the count", glyphs.cache(), 8, {"rdpclient-caches 64", "ui 2928"}},
        {"no cache", nullptr, 3, {"rdpclient-caches 64", "ui 2928"}},
        {"bitmap larger than the entry", oversized.cache(), 3, {"rdpclient-caches 64", "ui 2928"}},
        {"null entry address", &noEntries, 3, {"ui 2928"}},
    };
    order.opLeft = 40, order.opTop = 33, order.opRight = 50, order.opBottom = 36;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        frame.fill(kBack);
        log.clear();
        order.glyphCache = c.cache;
        order.rgbData[0] = c.index;
        draw();
        EXPECT_EQ(log.sites(), c.reports);
        EXPECT_EQ(log.reports().back().text, kInternalError);
        EXPECT_EQ(pixelsOf(kOpaque), rect(40, 33, 50, 36));
        EXPECT_TRUE(pixelsOf(kInk).empty());
        EXPECT_TRUE(frame.markedTiles().empty());
    }
}

TEST_F(FastGlyphOrder, EmptyBackgroundFillsAndMarksWithoutConsultingTheCache) {
    order.bkBottom = order.bkTop;
    order.glyphCache = nullptr;
    order.opLeft = 40, order.opTop = 33, order.opRight = 50, order.opBottom = 36;
    draw();
    EXPECT_TRUE(log.reports().empty());
    EXPECT_EQ(pixelsOf(kOpaque), rect(40, 33, 50, 36));
    EXPECT_EQ(frame.markedTiles(), (std::vector<int>{4}));
}

}  // namespace
