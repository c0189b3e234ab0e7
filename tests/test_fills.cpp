// The sixteen raster operations and the three rectangle fills.
#include <gtest/gtest.h>

#include "fills.h"
#include "frame.h"
#include "library.h"
#include "log_capture.h"
#include "rop.h"

using namespace ui32test;

namespace {

// Independent model of a binary raster operation: bit (2 * s + d) of the
// index is the result for source bit s and destination bit d, applied to
// each of the 24 colour bits.
uint32_t truthTable(int index, uint32_t s, uint32_t d) {
    uint32_t out = 0;
    for (int bit = 0; bit < 24; ++bit) {
        const int sb = (s >> bit) & 1, db = (d >> bit) & 1;
        out |= uint32_t((index >> (2 * sb + db)) & 1) << bit;
    }
    return out;
}

TEST(RasterOperations, EveryOperationOnSeveralPairs) {
    const uint32_t colours[] = {0x000000, 0xffffff, 0x123456, 0x00ff00, 0xa5c3e1, 0x800001};
    for (int index = 0; index < 16; ++index) {
        for (uint32_t s : colours) {
            for (uint32_t d : colours) {
                uint32_t pixel = d;
                ui::rop2Table[index](&s, &pixel);
                EXPECT_EQ(pixel, truthTable(index, s, d)) << "index " << index << " s " << s << " d " << d;
                uint32_t span[3] = {d, d, d};
                ui::ropSolidSpans[index](span, s, 3);
                EXPECT_EQ(span[2], pixel);
            }
        }
    }
}

TEST(RasterOperations, ExamplesAndInvolutions) {
    uint32_t s = 0x00ff00, d = 0x123456;
    ui::rop2Table[9](&s, &d);
    EXPECT_EQ(d, 0xed34a9u);
    uint32_t p = 0x123456, unused = 0;
    ui::rop2Table[5](&unused, &p);
    ui::rop2Table[5](&unused, &p);
    EXPECT_EQ(p, 0x123456u);
    // not() is 0xffffff - v, so a pixel with high bits set keeps wrapping arithmetic.
    p = 0;
    ui::rop2Table[3](&s, &p);
    EXPECT_EQ(p, 0xff00ffu);
}

TEST(Fills, SolidAndRopFillExactlyTheRectangle) {
    Library lib;
    LogCapture log;
    Frame frame(40, 30, 0x111111);
    const uint32_t colour = 0xabcdef;
    ASSERT_TRUE(ui::fillSolid(frame.image(), UiRect{3, 4, 5, 6}, &colour));
    ASSERT_TRUE(ui::fillRop(frame.image(), UiRect{6, 8, 10, 4}, &colour, 6));
    for (int32_t y = 0; y < 30; ++y) {
        for (int32_t x = 0; x < 40; ++x) {
            uint32_t expected = 0x111111;
            if (x >= 3 && x < 8 && y >= 4 && y < 10) expected = colour;
            if (x >= 6 && x < 16 && y >= 8 && y < 12) expected ^= colour;
            ASSERT_EQ(frame.at(x, y), expected) << x << "," << y;
        }
    }
    EXPECT_TRUE(log.reports().empty());
    EXPECT_TRUE(frame.markedTiles().empty());  // fills never mark tiles
    EXPECT_TRUE(frame.guardsIntact());
}

struct FillFailure {
    const char *name;
    UiRect rect;
    int32_t index;
    Sites sites;
};

TEST(Fills, RefusedRectanglesAreReportedWithTheFillsSite) {
    Library lib;
    const FillFailure cases[] = {
        {"solid too wide", {0, 0, 41, 1}, 12, {"imgbuf 99", "ui 1250"}},
        {"solid negative", {0, 0, -1, 1}, 12, {"imgbuf 99", "ui 1250"}},
        {"rop too tall", {0, 29, 1, 2}, 6, {"imgbuf 99", "ui 1274"}},
        {"rop negative left", {-1, 0, 2, 2}, 0, {"imgbuf 99", "ui 1274"}},
    };
    for (const FillFailure &c : cases) {
        SCOPED_TRACE(c.name);
        Frame frame(40, 30, 0x111111);
        LogCapture log;
        const uint32_t colour = 0xffffff;
        EXPECT_FALSE(ui::fillRop(frame.image(), c.rect, &colour, c.index));
        EXPECT_EQ(log.sites(), c.sites);
        for (const Report &r : log.reports()) EXPECT_EQ(r.text, kInternalError);
        EXPECT_EQ(frame.pixels(), std::vector<uint32_t>(40 * 30, 0x111111));
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(Fills, EmptyRectanglesSucceedAndWriteNothing) {
    Library lib;
    LogCapture log;
    Frame frame(8, 8, 5);
    const uint32_t colour = 9;
    EXPECT_TRUE(ui::fillSolid(frame.image(), UiRect{2, 2, 0, 3}, &colour));
    EXPECT_TRUE(ui::fillRop(frame.image(), UiRect{2, 2, 3, 0}, &colour, 0));
    EXPECT_TRUE(ui::fillSolid(frame.image(), UiRect{8, 8, 0, 0}, &colour));
    EXPECT_EQ(frame.pixels(), std::vector<uint32_t>(64, 5));
    EXPECT_TRUE(log.reports().empty());
}

UiPatBltOrder patternOrder(int32_t rop) {
    UiPatBltOrder o{};
    o.rop = rop;
    o.backColor[0] = 0x12, o.backColor[1] = 0x34, o.backColor[2] = 0x56;  // 1 bits
    o.foreColor[0] = 0xab, o.foreColor[1] = 0xcd, o.foreColor[2] = 0xef;  // 0 bits
    return o;
}

// Expected pattern pixel at rectangle offset (i, j): row (yPhase + j) mod 8,
// bit (xPhase + i) mod 8 counted from the most significant.
uint32_t patternPixel(const uint8_t *pattern, int i, int j, int xPhase, int yPhase) {
    const uint8_t row = pattern[(yPhase + j) % 8];
    return (row >> (7 - (xPhase + i) % 8)) & 1 ? 0x123456u : 0xabcdefu;
}

TEST(Fills, PatternPhases) {
    Library lib;
    LogCapture log;
    const uint8_t pattern[8] = {0x10, 0x81, 0x42, 0x24, 0x18, 0xf0, 0x0f, 0x01};
    for (int xPhase = 0; xPhase < 8; ++xPhase) {
        for (int yPhase = 0; yPhase < 8; yPhase += 7) {
            Frame frame(30, 20, 0);
            const UiRect rect{3, 2, 19, 11};
            ui::fillPattern8x8(frame.image(), patternOrder(12), rect, xPhase, yPhase, pattern);
            for (int j = 0; j < rect.height; ++j)
                for (int i = 0; i < rect.width; ++i)
                    ASSERT_EQ(frame.at(rect.left + i, rect.top + j), patternPixel(pattern, i, j, xPhase, yPhase))
                        << "phase " << xPhase << "," << yPhase << " at " << i << "," << j;
            EXPECT_EQ(frame.at(2, 2), 0u);
            EXPECT_EQ(frame.at(22, 2), 0u);
            EXPECT_TRUE(frame.guardsIntact());
        }
    }
    EXPECT_TRUE(log.reports().empty());
}

TEST(Fills, PatternExamples) {
    Library lib;
    const uint8_t pattern[8] = {0x10, 0, 0, 0, 0, 0, 0, 0x80};
    Frame frame(20, 2, 0);
    // x phase 3: bit 0x10 falls on the first pixel, and again 8 further right.
    ui::fillPattern8x8(frame.image(), patternOrder(12), UiRect{0, 0, 20, 1}, 3, 0, pattern);
    EXPECT_EQ(frame.at(0, 0), 0x123456u);
    EXPECT_EQ(frame.at(1, 0), 0xabcdefu);
    EXPECT_EQ(frame.at(8, 0), 0x123456u);
    EXPECT_EQ(frame.at(16, 0), 0x123456u);
    // y phase 7: the top row takes pattern byte 7, the next byte 0.
    ui::fillPattern8x8(frame.image(), patternOrder(12), UiRect{0, 0, 8, 2}, 0, 7, pattern);
    EXPECT_EQ(frame.at(0, 0), 0x123456u);
    EXPECT_EQ(frame.at(3, 1), 0x123456u);
    EXPECT_EQ(frame.at(0, 1), 0xabcdefu);
}

TEST(Fills, PatternThroughARasterOperation) {
    Library lib;
    const uint8_t pattern[8] = {0xaa, 0x55, 0xaa, 0x55, 0xaa, 0x55, 0xaa, 0x55};
    Frame frame(21, 3, 0x0f0f0f);
    ui::fillPattern8x8(frame.image(), patternOrder(0x16 /* low bits 6: xor */), UiRect{0, 0, 21, 3}, 1, 2, pattern);
    for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 21; ++i)
            ASSERT_EQ(frame.at(i, j), 0x0f0f0fu ^ patternPixel(pattern, i, j, 1, 2)) << i << "," << j;
    EXPECT_TRUE(frame.guardsIntact());
}

struct PatternFailure {
    UiRect rect;
    int32_t xPhase, yPhase;
    Sites sites;
};

TEST(Fills, PatternRefusals) {
    Library lib;
    const uint8_t pattern[8] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    const PatternFailure cases[] = {
        {{0, 0, 4, 4}, -1, 0, {"ui 1315"}},
        {{0, 0, 4, 4}, 8, 0, {"ui 1316"}},
        {{0, 0, 4, 4}, 0, -1, {"ui 1318"}},
        {{0, 0, 4, 4}, 0, 8, {"ui 1319"}},
        {{0, 0, 4, 4}, 8, 8, {"ui 1316"}},                         // x is checked first
        {{0, 0, 9, 4}, 9, 0, {"imgbuf 99", "ui 1308"}},            // the rectangle before the phases
    };
    for (const PatternFailure &c : cases) {
        SCOPED_TRACE(testing::Message() << c.xPhase << "," << c.yPhase);
        Frame frame(8, 8, 0);
        LogCapture log;
        ui::fillPattern8x8(frame.image(), patternOrder(12), c.rect, c.xPhase, c.yPhase, pattern);
        EXPECT_EQ(log.sites(), c.sites);
        EXPECT_EQ(frame.pixels(), std::vector<uint32_t>(64, 0));
        EXPECT_TRUE(frame.guardsIntact());
    }
}

}  // namespace
