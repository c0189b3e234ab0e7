// The glyph string order (slot 6): rectangles in both forms, the origin rule,
// advancing and deltas, the fragment store across orders, list limits, cache
// checks and hostile records.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "frame.h"
#include "glyph_cache.h"
#include "library.h"
#include "log_capture.h"
#include "pixel_sets.h"
#include "ui.h"

using namespace ui32test;

namespace {

constexpr uint32_t kBack = 0x111111;
constexpr uint32_t kInk = 0x0a0b0c;     // textColor 10, 11, 12
constexpr uint32_t kOpaque = 0x202122;  // opaqueColor 32, 33, 34
constexpr int32_t kUnset = -32768;

using Bytes = std::vector<uint8_t>;
using Pixels = PixelSet;

// Glyph 1 is 3 wide, glyph 2 is 5 wide, glyph 5 is one pixel.
const TestGlyph kGlyph1{0, 0, {"#.#"}};
const TestGlyph kGlyph2{0, 0, {"#...#"}};
const TestGlyph kGlyph5{0, 0, {"#"}};

struct GlyphIndexOrder : ::testing::Test {
    explicit GlyphIndexOrder(int32_t width = 96, int32_t height = 40) : frame(width, height, kBack) {
        glyphs.set(1, kGlyph1);
        glyphs.set(2, kGlyph2);
        glyphs.set(5, kGlyph5);
        order.textColor[0] = 10, order.textColor[1] = 11, order.textColor[2] = 12;
        order.opaqueColor[0] = 32, order.opaqueColor[1] = 33, order.opaqueColor[2] = 34;
        order.bkLeft = 2, order.bkTop = 2, order.bkRight = width - 6, order.bkBottom = height - 2;
        order.opRectExplicit = 1;
        order.flAccel = 0x20;  // advance by glyph width, no deltas
        order.x = 10, order.y = 10;
    }
    void text(const Bytes &bytes) {
        std::fill(std::begin(order.rgbData), std::end(order.rgbData), 0);
        std::copy(bytes.begin(), bytes.end(), order.rgbData);
        order.cbData = int32_t(bytes.size());
    }
    void draw() {
        if (order.glyphCache == nullptr && useCache) order.glyphCache = glyphs.cache();
        const UiClipRect clip = frame.fullClip();
        lib.slot<UiGlyphIndexFn>(UI_SLOT_GLYPH_INDEX)(&frame.surface(), &order, &clip);
        EXPECT_TRUE(frame.guardsIntact());
    }
    Pixels pixelsOf(uint32_t colour) const { return ui32test::pixelsOf(frame, colour); }
    // Ink expected from glyphs placed at the given points, clipped to the frame.
    Pixels placed(const std::vector<std::tuple<TestGlyph, int32_t, int32_t>> &glyphsAt) const {
        Pixels out;
        const UiRect all{0, 0, frame.width(), frame.height()};
        for (const auto &[g, x, y] : glyphsAt)
            for (auto p : glyphPixels(g, x, y, all, frame.width(), frame.height())) out.insert(p);
        return out;
    }
    const uint8_t *slot(int n) const { return ui::settings.scratchBuffer + 256 * n; }

    Library lib;
    LogCapture log;
    Frame frame;
    GlyphCache glyphs{8, 16};
    bool useCache = true;
    UiGlyphIndexOrder order{};
};

struct RectCase {
    const char *name;
    uint8_t explicitForm;
    int32_t redundant;
    int32_t op[4];
    Pixels expected;  // the opaque pixels
    Sites reports;
    std::vector<int> tiles;
};

// Frame 96 x 40 (3 x 2 tiles); background (2, 2)-(90, 38); the glyph at (10, 10).
const RectCase kRectCases[] = {
    {"explicit", 1, 0, {40, 5, 60, 15}, rect(40, 5, 60, 15), {}, {1}},
    {"explicit, left 0 taken literally", 1, 0, {0, 5, 20, 15}, rect(0, 5, 20, 15), {}, {0}},
    {"empty, redundant", 1, 1, {0, 0, 0, 0}, rect(2, 2, 90, 38), {}, {0, 1, 2, 3, 4, 5}},
    {"empty, not redundant", 1, 0, {0, 0, 0, 0}, {}, {}, {0, 1, 2, 3, 4, 5}},
    {"clipped away, redundant", 1, 1, {200, 5, 220, 15}, rect(2, 2, 90, 38), {}, {0, 1, 2, 3, 4, 5}},
    {"explicit, clipped", 1, 0, {80, 30, 120, 60}, rect(80, 30, 96, 40), {}, {2, 5}},
    {"fast, flags 0x0F", 0, 0, {7, 0x0f, 9, kUnset}, rect(2, 2, 90, 38), {}, {0, 1, 2, 3, 4, 5}},
    {"fast, flags 0x05", 0, 0, {40, 0x05, 50, kUnset}, rect(40, 2, 50, 38), {}, {1, 4}},
    {"fast, flags 0x0D", 0, 0, {40, 0x0d, 50, kUnset}, rect(2, 2, 50, 38), {}, {0, 1, 3, 4}},
    {"fast, left and right 0", 0, 0, {0, 5, 0, 9}, rect(2, 5, 90, 9), {}, {0, 1, 2}},
    {"fast, without 0x01", 0, 0, {40, 0x0e, 50, kUnset}, {}, {"ui 2586"}, {}},
    {"fast, without 0x04", 0, 0, {40, 0x0b, 50, kUnset}, {}, {"ui 2592"}, {}},
};

TEST_F(GlyphIndexOrder, OpaqueRectanglesInBothForms) {
    for (const RectCase &c : kRectCases) {
        SCOPED_TRACE(c.name);
        frame.fill(kBack);
        frame.clearTiles();
        log.clear();
        order.opRectExplicit = c.explicitForm;
        order.fOpRedundant = c.redundant;
        order.opLeft = c.op[0], order.opTop = c.op[1], order.opRight = c.op[2], order.opBottom = c.op[3];
        text({1});
        draw();
        const Pixels ink = c.reports.empty() ? placed({{kGlyph1, 10, 10}}) : Pixels{};
        Pixels opaque = c.expected;
        for (auto p : ink) opaque.erase(p);
        EXPECT_EQ(pixelsOf(kOpaque), opaque);
        EXPECT_EQ(pixelsOf(kInk), ink);
        EXPECT_EQ(log.sites(), c.reports);
        EXPECT_EQ(frame.markedTiles(), c.tiles);
    }
}

TEST_F(GlyphIndexOrder, GlyphPointAlwaysTranslatedRectanglesOnlyWhenEnabled) {
    frame.surface().originX = -5, frame.surface().originY = -3;
    order.opLeft = 20, order.opTop = 20, order.opRight = 30, order.opBottom = 30;
    text({1});
    draw();
    EXPECT_EQ(pixelsOf(kOpaque), rect(20, 20, 30, 30));
    EXPECT_EQ(pixelsOf(kInk), placed({{kGlyph1, 15, 13}}));
    EXPECT_EQ(frame.markedTiles(), (std::vector<int>{0}));

    frame.fill(kBack);
    frame.clearTiles();
    frame.surface().originEnabled = 1;
    order.x = kUnset, order.y = kUnset;  // the background's top-left corner
    draw();
    EXPECT_EQ(pixelsOf(kOpaque), rect(25, 23, 35, 33));
    EXPECT_EQ(pixelsOf(kInk), placed({{kGlyph1, 7, 5}}));
    EXPECT_EQ(frame.markedTiles(), (std::vector<int>{0, 1, 3, 4}));
    EXPECT_TRUE(log.reports().empty());
}

struct AdvanceCase {
    const char *name;
    int32_t charInc, flAccel, x;
    Bytes text;
    std::vector<std::tuple<TestGlyph, int32_t, int32_t>> expected;
};

const AdvanceCase kAdvanceCases[] = {
    {"by glyph width", 0, 0x20, 10, {1, 2, 1}, {{kGlyph1, 10, 10}, {kGlyph2, 13, 10}, {kGlyph1, 18, 10}}},
    {"by ulCharInc", 8, 0, 10, {1, 2, 1}, {{kGlyph1, 10, 10}, {kGlyph2, 18, 10}, {kGlyph1, 26, 10}}},
    {"downward", 0, 0x24, 10, {1, 2}, {{kGlyph1, 10, 10}, {kGlyph2, 10, 13}}},
    {"bad index neither drawn nor advanced", 0, 0x20, 10, {1, 16, 2}, {{kGlyph1, 10, 10}, {kGlyph2, 13, 10}}},
    {"deltas, first glyph moved too", 0, 0, 10, {1, 4, 2, 6}, {{kGlyph1, 14, 10}, {kGlyph2, 20, 10}}},
    {"16-bit deltas", 0, 0, -290, {1, 0x80, 0x2c, 0x01, 2, 0x80, 0xfb, 0xff}, {{kGlyph1, 10, 10}, {kGlyph2, 5, 10}}},
    {"16-bit delta cut short is 0", 0, 0, 10, {5, 0x81, 0x2c}, {{kGlyph5, 10, 10}}},
    {"last glyph without delta", 0, 0, 10, {1, 3, 5}, {{kGlyph1, 13, 10}, {kGlyph5, 13, 10}}},
    {"vertical deltas", 0, 0x04, 10, {1, 4, 2, 6}, {{kGlyph1, 10, 14}, {kGlyph2, 10, 20}}},
};

TEST_F(GlyphIndexOrder, AdvancesByWidthIncrementOrDelta) {
    for (const AdvanceCase &c : kAdvanceCases) {
        SCOPED_TRACE(c.name);
        frame.fill(kBack);
        log.clear();
        order.ulCharInc = c.charInc, order.flAccel = c.flAccel;
        order.x = c.x;
        text(c.text);
        draw();
        EXPECT_EQ(pixelsOf(kInk), placed(c.expected));
        const bool badIndex = std::find(c.text.begin(), c.text.end(), 16) != c.text.end();
        EXPECT_EQ(log.sites(), badIndex ? Sites{"rdpclient-caches 64"} : Sites{});
    }
}

TEST_F(GlyphIndexOrder, FragmentsStoredInOneOrderAreUsedInALaterOne) {
    text({1, 2, 0xff, 7, 2});  // draws 1 2 and stores them in slot 7
    draw();
    EXPECT_EQ(Bytes(slot(7), slot(7) + 3), (Bytes{2, 1, 2}));
    frame.fill(kBack);
    text({0xfe, 7, 5, 0xfe, 9});  // slot 9 was never stored: no glyph
    draw();
    EXPECT_EQ(pixelsOf(kInk), placed({{kGlyph1, 10, 10}, {kGlyph2, 13, 10}, {kGlyph5, 18, 10}}));

    text({1, 1, 1, 1, 0xff, 3, 4});  // at position 4: bytes 0 to 3
    draw();
    EXPECT_EQ(Bytes(slot(3), slot(3) + 5), (Bytes{4, 1, 1, 1, 1}));
    EXPECT_TRUE(log.reports().empty());
}

TEST_F(GlyphIndexOrder, DeltaFragmentsKeepTheirBytesAndTakeTheOrdersDelta) {
    order.flAccel = 0;
    // Glyph 5 with delta -1 (bytes 0xff 0xff) stored in slot 9: inside a
    // fragment, 0xff bytes are delta bytes, never commands.
    text({5, 0x80, 0xff, 0xff, 0xff, 9, 4, 5, 0, 0xff, 4, 2, 5, 3, 0xff, 6, 2});
    draw();
    EXPECT_EQ(Bytes(slot(9), slot(9) + 5), (Bytes{4, 5, 0x80, 0xff, 0xff}));
    struct Case {
        Bytes text;
        int32_t x;
    } cases[] = {
        {{0xfe, 9}, 9},                     // stored delta -1 stands (slot byte 2 is 0x80)
        {{0xfe, 4, 20}, 30},                // stored delta 0 replaced by the order's 20
        {{0xfe, 4, 0x80, 0x20, 0x00}, 42},  // ... or by a 16-bit 32
        {{0xfe, 4}, 10},                    // no delta in the order: 0
        {{0xfe, 6, 20}, 13},                // stored delta 3 stands
    };
    for (const Case &c : cases) {
        frame.fill(kBack);
        text(c.text);
        draw();
        EXPECT_EQ(pixelsOf(kInk), placed({{kGlyph5, c.x, 10}})) << int(c.text[1]) << " -> " << c.x;
    }
    EXPECT_TRUE(log.reports().empty());
}

struct ParseErrorCase {
    const char *name;
    Bytes text;
    const char *site;
};

const ParseErrorCase kParseErrors[] = {
    {"store command cut short", {1, 0xff, 3}, "ui 2672"},
    {"fragment one longer than the bytes before it", {1, 1, 0xff, 3, 3}, "ui 2680"},
    {"use command without its slot", {1, 0xfe}, "ui 2702"},
};

TEST_F(GlyphIndexOrder, ParseErrorsKeepTheFillButDrawAndMarkNothing) {
    order.opLeft = 40, order.opTop = 5, order.opRight = 60, order.opBottom = 15;
    for (const ParseErrorCase &c : kParseErrors) {
        SCOPED_TRACE(c.name);
        frame.fill(kBack);
        log.clear();
        text(c.text);
        draw();
        EXPECT_EQ(log.sites(), Sites{c.site});
        EXPECT_EQ(log.reports()[0].text, kInternalError);
        EXPECT_EQ(pixelsOf(kOpaque), rect(40, 5, 60, 15));
        EXPECT_TRUE(pixelsOf(kInk).empty());
        EXPECT_TRUE(frame.markedTiles().empty());
    }
}

// A 4,100 x 2 frame: 1-pixel glyphs advancing by 1 show how many were drawn.
struct GlyphListLimits : GlyphIndexOrder {
    GlyphListLimits() : GlyphIndexOrder(4100, 2) {
        order.bkLeft = 0, order.bkTop = 0, order.bkRight = 4100, order.bkBottom = 2;
        order.x = 0, order.y = 0;
    }
    // Stores 252 glyph-5 entries (plain, or with delta 1 each) in slot 1.
    void storeLongFragment(bool deltas) {
        Bytes bytes;
        for (int i = 0; i < 252; i += deltas ? 2 : 1) {
            bytes.push_back(5);
            if (deltas) bytes.push_back(1);
        }
        bytes.insert(bytes.end(), {0xff, 1, 252});
        text(bytes);
        draw();
        ASSERT_EQ(slot(1)[0], 252);
        frame.fill(kBack);
    }
    void useFragment(int uses, int plainGlyphs, int extraUses = 0) {
        Bytes bytes;
        for (int i = 0; i < uses + extraUses; ++i) bytes.insert(bytes.end(), {0xfe, 1});
        bytes.insert(bytes.end() - 2 * extraUses, size_t(plainGlyphs), 5);
        text(bytes);
        draw();
    }
};

TEST_F(GlyphListLimits, NonDeltaStringsOf4095GlyphsDrawLongerOnesDoNot) {
    order.ulCharInc = 1;
    storeLongFragment(false);
    useFragment(16, 63);  // 16 x 252 + 63 = 4,095
    EXPECT_EQ(pixelsOf(kInk), rect(0, 0, 4095, 1));
    EXPECT_TRUE(log.reports().empty());

    frame.fill(kBack);
    frame.clearTiles();
    useFragment(16, 64);  // 4,096: the last glyph fills the list
    useFragment(16, 63, 1);  // a use that would overflow it
    EXPECT_EQ(log.sites(), (Sites{"ui 2774", "ui 2749"}));
    EXPECT_TRUE(pixelsOf(kInk).empty());
    EXPECT_TRUE(frame.markedTiles().empty());
}

TEST_F(GlyphListLimits, DeltaFragmentsStopAt4096Glyphs) {
    order.flAccel = 0;
    storeLongFragment(true);  // 126 glyphs, each moved 1 to the right
    frame.clearTiles();
    Bytes bytes;
    for (int i = 0; i < 33; ++i) bytes.insert(bytes.end(), {0xfe, 1, 0});  // 33 x 126 > 4,095
    text(bytes);
    draw();
    EXPECT_EQ(log.sites(), (Sites{"ui 2734"}));
    EXPECT_TRUE(pixelsOf(kInk).empty());
    EXPECT_TRUE(frame.markedTiles().empty());
}

TEST_F(GlyphIndexOrder, EmptyBackgroundDrawsNoGlyphButFillsAndMarksTheOpaqueRectangle) {
    order.bkRight = order.bkLeft;
    order.opLeft = 40, order.opTop = 5, order.opRight = 60, order.opBottom = 15;
    useCache = false;  // never consulted: a null cache would be reported
    text({1, 2});
    draw();
    EXPECT_EQ(pixelsOf(kOpaque), rect(40, 5, 60, 15));
    EXPECT_TRUE(pixelsOf(kInk).empty());
    EXPECT_EQ(frame.markedTiles(), (std::vector<int>{1}));
    EXPECT_TRUE(log.reports().empty());
}

TEST_F(GlyphIndexOrder, WithoutAFragmentStoreOrdersAreRefused) {
    uint8_t *store = ui::settings.scratchBuffer;
    ui::settings.scratchBuffer = nullptr;
    order.opLeft = 40, order.opTop = 5, order.opRight = 60, order.opBottom = 15;
    text({1});
    draw();
    ui::settings.scratchBuffer = store;
    EXPECT_EQ(log.sites(), (Sites{"ui 3782"}));
    EXPECT_EQ(pixelsOf(kBack).size(), 96u * 40u);
    EXPECT_TRUE(frame.markedTiles().empty());
}

TEST_F(GlyphIndexOrder, OpaqueFillOutsideTheImageEndsTheOrder) {
    frame.image().height = 10;  // the opaque rectangle reaches row 14
    order.opLeft = 40, order.opTop = 5, order.opRight = 60, order.opBottom = 15;
    text({1});
    draw();
    frame.image().height = 40;
    EXPECT_EQ(log.sites(), (Sites{"imgbuf 99", "ui 1250"}));
    EXPECT_EQ(pixelsOf(kBack).size(), 96u * 40u);
    EXPECT_TRUE(frame.markedTiles().empty());
}

struct CacheCase {
    const char *name;
    UiGlyphCache cache;
    Sites reports;
};

TEST_F(GlyphIndexOrder, HostileCachesAreReportedPerGlyphAndNeverRead) {
    GlyphCache oversized(8, 4);
    oversized.setRaw(0, rawGlyphRecord(0, 0, 16, 5, Bytes(8, 0xff)));  // needs 10 bytes
    oversized.setRaw(1, rawGlyphRecord(0, 0, 0xffff, 0xffff, Bytes(8, 0xff)));
    const uint8_t *nearTop = reinterpret_cast<const uint8_t *>(UINTPTR_MAX - 64);
    const CacheCase cases[] = {
        {"entries null", {8, 16, nullptr}, {}},
        {"negative entry size", {-8, 16, glyphs.cache()->entries}, {"rdpclient-caches 64", "rdpclient-caches 64"}},
        {"negative count", {8, -1, glyphs.cache()->entries}, {"rdpclient-caches 64", "rdpclient-caches 64"}},
        {"bitmaps larger than the entry", *oversized.cache(), {"rdpclient-caches 64", "rdpclient-caches 64"}},
        {"entry beyond the address space", {0x7fffffff, 4, nearTop}, {"rdpclient-caches 64", "rdpclient-caches 64"}},
    };
    for (const CacheCase &c : cases) {
        SCOPED_TRACE(c.name);
        frame.fill(kBack);
        frame.clearTiles();
        log.clear();
        order.glyphCache = &c.cache;
        text({0, 1});
        draw();
        EXPECT_EQ(log.sites(), c.reports);
        EXPECT_TRUE(pixelsOf(kInk).empty());
        EXPECT_EQ(frame.markedTiles().size(), 6u);
    }
    order.glyphCache = nullptr;
    useCache = false;
    log.clear();
    text({1, 2});
    draw();
    EXPECT_EQ(log.sites(), (Sites{"rdpclient-caches 64", "rdpclient-caches 64"}));
}

TEST_F(GlyphIndexOrder, ByteCountIsLimitedToTheStringField) {
    order.ulCharInc = 1, order.x = 0;
    order.bkLeft = 0, order.bkRight = 90;
    std::fill(std::begin(order.rgbData), std::end(order.rgbData), 5);
    order.glyphCache = glyphs.cache();
    for (int32_t cbData : {-5, 0, 1000}) {
        frame.fill(kBack);
        order.cbData = cbData;
        draw();
        EXPECT_EQ(pixelsOf(kInk), cbData > 0 ? rect(0, 10, 90, 11) : Pixels{}) << cbData;
    }
    EXPECT_TRUE(log.reports().empty());
}

}  // namespace
