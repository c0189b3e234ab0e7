// The DstBlt, ScrBlt and MemBlt orders through the drawing table.
#include <gtest/gtest.h>

#include "frame.h"
#include "library.h"
#include "log_capture.h"
#include "rop.h"

using namespace ui32test;

namespace {

// A picture in which every pixel is different.
void paintGradient(Frame &frame) {
    for (int32_t y = 0; y < frame.height(); ++y)
        for (int32_t x = 0; x < frame.width(); ++x) frame.at(x, y) = uint32_t(y * 1000 + x + 0x10000);
}

std::vector<int> tilesOf(const Frame &frame, int32_t left, int32_t top, int32_t width, int32_t height) {
    std::vector<int> out;
    const int32_t columns = frame.width() / 32 + (frame.width() % 32 != 0);
    for (int32_t ty = top / 32; ty <= (top + height - 1) / 32; ++ty)
        for (int32_t tx = left / 32; tx <= (left + width - 1) / 32; ++tx) out.push_back(ty * columns + tx);
    return out;
}

TEST(DstBlt, TheFourCodes) {
    Library lib;
    auto dstBlt = lib.slot<UiDstBltFn>(UI_SLOT_DST_BLT);
    const struct {
        int32_t rop;
        uint32_t expected;
    } cases[] = {{0x00, 0}, {0x55, 0xffffff - 0x123456}, {0xAA, 0x123456}, {0xFF, 0xffffff}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.rop);
        Frame frame(64, 64, 0x123456);
        LogCapture log;
        const UiDstBltOrder order{10, 20, 30, 5, c.rop};
        const UiClipRect clip = frame.fullClip();
        dstBlt(&frame.surface(), &order, &clip);
        for (int32_t y = 0; y < 64; ++y)
            for (int32_t x = 0; x < 64; ++x) {
                const bool inside = x >= 10 && x < 40 && y >= 20 && y < 25;
                ASSERT_EQ(frame.at(x, y), inside ? c.expected : 0x123456u) << x << "," << y;
            }
        EXPECT_EQ(frame.markedTiles(), (std::vector<int>{0, 1}));  // 0xAA still marks
        EXPECT_EQ(frame.dirty().changed, 1);
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(DstBlt, OriginThenClip) {
    Library lib;
    auto dstBlt = lib.slot<UiDstBltFn>(UI_SLOT_DST_BLT);
    Frame frame(64, 64, 1);
    frame.surface().originEnabled = 1;
    frame.surface().originX = 100;
    frame.surface().originY = 50;
    const UiDstBltOrder order{100, 50, 10, 10, 0x00};  // buffer (0, 0) after translation
    const UiClipRect clip{2, 3, 5, 63};                // not translated
    dstBlt(&frame.surface(), &order, &clip);
    for (int32_t y = 0; y < 12; ++y)
        for (int32_t x = 0; x < 12; ++x) {
            const bool inside = x >= 2 && x <= 5 && y >= 3 && y < 10;
            ASSERT_EQ(frame.at(x, y), inside ? 0u : 1u) << x << "," << y;
        }
    EXPECT_TRUE(frame.guardsIntact());
}

TEST(DstBlt, Refusals) {
    Library lib;
    auto dstBlt = lib.slot<UiDstBltFn>(UI_SLOT_DST_BLT);
    const struct {
        const char *name;
        UiDstBltOrder order;
        UiClipRect clip;
        Sites sites;
    } cases[] = {
        {"outside the clip", {70, 0, 10, 10, 0}, {0, 0, 63, 63}, {}},
        {"zero width", {0, 0, 0, 10, 0}, {0, 0, 63, 63}, {}},
        {"negative height", {0, 0, 10, -4, 0}, {0, 0, 63, 63}, {}},
        {"clip beyond the image, invert", {60, 0, 10, 10, 0x55}, {0, 0, 99, 99}, {"imgbuf 99", "ui 1274"}},
        {"clip beyond the image, copy code", {60, 0, 10, 10, 0x0C}, {0, 0, 99, 99}, {"imgbuf 99", "ui 1250"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        Frame frame(64, 64, 1);
        LogCapture log;
        dstBlt(&frame.surface(), &c.order, &c.clip);
        EXPECT_EQ(log.sites(), c.sites);
        EXPECT_EQ(frame.pixels(), std::vector<uint32_t>(64 * 64, 1));
        EXPECT_TRUE(frame.markedTiles().empty());
        EXPECT_EQ(frame.dirty().changed, 0);
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(DstBlt, TilesOutsideTheMapAreReportedAndThePixelsStay) {
    Library lib;
    auto dstBlt = lib.slot<UiDstBltFn>(UI_SLOT_DST_BLT);
    Frame frame(64, 64, 1);
    frame.dirty().rows = 1;  // the client's map is smaller than its image
    LogCapture log;
    const UiDstBltOrder order{0, 30, 4, 4, 0};
    const UiClipRect clip = frame.fullClip();
    dstBlt(&frame.surface(), &order, &clip);
    ASSERT_EQ(log.sites(), Sites({"dirtybuf 114"}));
    EXPECT_EQ(log.reports()[0].text, "0,0->1,2 of 2,1");
    EXPECT_EQ(frame.at(0, 30), 0u);
    EXPECT_EQ(frame.dirty().changed, 0);
    EXPECT_TRUE(frame.guardsIntact());
}

// ScrBlt through every direction of overlap, against a copy made through a
// separate buffer.
TEST(ScrBlt, OverlapInEveryDirectionMatchesACopyThroughASeparateBuffer) {
    Library lib;
    auto scrBlt = lib.slot<UiScrBltFn>(UI_SLOT_SCR_BLT);
    const int32_t moves[8][2] = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {-3, -2}, {3, -2}, {-3, 2}, {3, 2}};
    for (const int32_t rop : {0xCC, 0x66, 0x88, 0x5A}) {  // copy (12), xor (6), mask (8), code 0x5A: index 10
        for (const auto &m : moves) {
            SCOPED_TRACE(testing::Message() << "rop " << rop << " source offset " << m[0] << "," << m[1]);
            Frame frame(48, 40);
            paintGradient(frame);
            const std::vector<uint32_t> before = frame.pixels();
            const UiScrBltOrder order{10, 10, 20, 15, rop, 10 + m[0], 10 + m[1]};
            const UiClipRect clip = frame.fullClip();
            LogCapture log;
            scrBlt(&frame.surface(), &order, &clip);
            for (int32_t y = 0; y < 40; ++y)
                for (int32_t x = 0; x < 48; ++x) {
                    uint32_t expected = before[size_t(y * 48 + x)];
                    if (x >= 10 && x < 30 && y >= 10 && y < 25) {
                        const uint32_t s = before[size_t((y + m[1]) * 48 + x + m[0])];
                        expected = ui::rop2(rop & 15, s, expected);
                    }
                    ASSERT_EQ(frame.at(x, y), expected) << x << "," << y;
                }
            EXPECT_TRUE(log.reports().empty());
            EXPECT_EQ(frame.markedTiles(), tilesOf(frame, 10, 10, 20, 15));
            EXPECT_TRUE(frame.guardsIntact());
        }
    }
}

TEST(ScrBlt, ClippingMovesTheSourcePoint) {
    Library lib;
    auto scrBlt = lib.slot<UiScrBltFn>(UI_SLOT_SCR_BLT);
    Frame frame(64, 64);
    paintGradient(frame);
    const std::vector<uint32_t> before = frame.pixels();
    // Clipped by 10 columns on the left and 5 rows at the top.
    const UiScrBltOrder order{0, 0, 20, 20, 0xCC, 30, 30};
    const UiClipRect clip{10, 5, 63, 63};
    scrBlt(&frame.surface(), &order, &clip);
    EXPECT_EQ(frame.at(10, 5), before[35 * 64 + 40]);
    EXPECT_EQ(frame.at(19, 19), before[49 * 64 + 49]);
    EXPECT_EQ(frame.at(9, 5), before[5 * 64 + 9]);
    EXPECT_TRUE(frame.guardsIntact());
}

TEST(ScrBlt, OriginMovesDestinationAndSource) {
    Library lib;
    auto scrBlt = lib.slot<UiScrBltFn>(UI_SLOT_SCR_BLT);
    Frame frame(64, 64);
    paintGradient(frame);
    const std::vector<uint32_t> before = frame.pixels();
    frame.surface().originEnabled = 1;
    frame.surface().originX = -5;
    frame.surface().originY = 7;
    const UiScrBltOrder order{0, 10, 4, 4, 0xCC, 20, 30};  // buffer (5, 3) from (25, 23)
    const UiClipRect clip = frame.fullClip();
    scrBlt(&frame.surface(), &order, &clip);
    EXPECT_EQ(frame.at(5, 3), before[23 * 64 + 25]);
    EXPECT_EQ(frame.at(8, 6), before[26 * 64 + 28]);
    EXPECT_TRUE(frame.guardsIntact());
}

TEST(ScrBlt, SourceIsCheckedBeforeDestination) {
    Library lib;
    auto scrBlt = lib.slot<UiScrBltFn>(UI_SLOT_SCR_BLT);
    const struct {
        const char *name;
        UiScrBltOrder order;
        Sites sites;
    } cases[] = {
        {"source outside", {0, 0, 10, 10, 0xCC, 60, 0}, {"imgbuf 83", "ui 1567"}},
        {"source negative", {0, 0, 10, 10, 0x66, 0, -1}, {"imgbuf 83", "ui 1567"}},
        {"destination outside", {60, 0, 10, 10, 0xCC, 0, 0}, {"imgbuf 99", "ui 1570"}},
        {"both outside", {60, 0, 10, 10, 0xCC, 60, 0}, {"imgbuf 83", "ui 1567"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        Frame frame(64, 64, 3);
        LogCapture log;
        const UiClipRect clip{0, 0, 99, 99};
        scrBlt(&frame.surface(), &c.order, &clip);
        EXPECT_EQ(log.sites(), c.sites);
        EXPECT_EQ(frame.pixels(), std::vector<uint32_t>(64 * 64, 3));
        EXPECT_TRUE(frame.markedTiles().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

// A 64 x 64 cached bitmap stored bottom-up: stored row r holds picture row 63 - r.
std::vector<uint32_t> bitmap64() {
    std::vector<uint32_t> b(64 * 64);
    for (int r = 0; r < 64; ++r)
        for (int c = 0; c < 64; ++c) b[size_t(r * 64 + c)] = uint32_t(0x100000 + (63 - r) * 100 + c);
    return b;
}
uint32_t pictureAt(int col, int row) { return uint32_t(0x100000 + row * 100 + col); }

UiMemBltOrder memOrder(int32_t left, int32_t top, int32_t w, int32_t h, int32_t rop, int32_t sx, int32_t sy,
                       const std::vector<uint32_t> &bitmap) {
    return UiMemBltOrder{-1, left, top, w, h, rop, sx, sy, -1, 64, 64, bitmap.data()};
}

TEST(MemBlt, CopiesPictureRowsFromTheBottomUpStore) {
    Library lib;
    auto memBlt = lib.slot<UiMemBltFn>(UI_SLOT_MEM_BLT);
    const std::vector<uint32_t> bitmap = bitmap64();
    Frame frame(64, 64, 0);
    LogCapture log;
    const UiClipRect clip = frame.fullClip();
    // Source top 0, height 1: the last stored row.
    UiMemBltOrder order = memOrder(0, 0, 64, 1, 0xCC, 0, 0, bitmap);
    memBlt(&frame.surface(), &order, &clip);
    for (int c = 0; c < 64; ++c) ASSERT_EQ(frame.at(c, 0), bitmap[size_t(63 * 64 + c)]);
    order = memOrder(5, 10, 20, 30, 0xCC, 7, 11, bitmap);
    memBlt(&frame.surface(), &order, &clip);
    for (int j = 0; j < 30; ++j)
        for (int i = 0; i < 20; ++i) ASSERT_EQ(frame.at(5 + i, 10 + j), pictureAt(7 + i, 11 + j));
    EXPECT_EQ(frame.at(4, 10), 0u);
    EXPECT_EQ(frame.at(25, 39), 0u);
    EXPECT_TRUE(log.reports().empty());
    EXPECT_EQ(frame.markedTiles(), (std::vector<int>{0, 1, 2}));
    EXPECT_TRUE(frame.guardsIntact());
}

TEST(MemBlt, RasterOperationClippingAndOrigin) {
    Library lib;
    auto memBlt = lib.slot<UiMemBltFn>(UI_SLOT_MEM_BLT);
    const std::vector<uint32_t> bitmap = bitmap64();
    Frame frame(64, 64, 0x0000ff);
    frame.surface().originEnabled = 1;
    frame.surface().originX = 10;
    frame.surface().originY = 10;
    const UiClipRect clip{3, 4, 63, 63};
    // Buffer (0, 0) after translation; the clip moves the source by (3, 4); the
    // source point itself is never translated.
    const UiMemBltOrder order = memOrder(10, 10, 8, 8, 0xEE /* merge */, 2, 2, bitmap);
    memBlt(&frame.surface(), &order, &clip);
    for (int j = 0; j < 8; ++j)
        for (int i = 0; i < 8; ++i) {
            const bool inside = i >= 3 && j >= 4;
            ASSERT_EQ(frame.at(i, j), inside ? (0x0000ffu | pictureAt(2 + i, 2 + j)) : 0x0000ffu) << i << "," << j;
        }
    EXPECT_TRUE(frame.guardsIntact());
}

TEST(MemBlt, Refusals) {
    Library lib;
    auto memBlt = lib.slot<UiMemBltFn>(UI_SLOT_MEM_BLT);
    const std::vector<uint32_t> bitmap = bitmap64();
    const struct {
        const char *name;
        UiMemBltOrder order;
        Sites sites;
    } cases[] = {
        {"one pixel beyond the bitmap's right edge", memOrder(0, 0, 10, 10, 0xCC, 55, 0, bitmap), {}},
        {"one pixel beyond the bitmap's bottom", memOrder(0, 0, 10, 10, 0xCC, 0, 55, bitmap), {}},
        {"negative source", memOrder(0, 0, 10, 10, 0xCC, -1, 0, bitmap), {}},
        {"source + width wraps", memOrder(0, 0, 10, 10, 0xCC, INT32_MAX - 2, 0, bitmap), {}},
        {"null bitmap", UiMemBltOrder{0, 0, 0, 4, 4, 0xCC, 0, 0, 0, 64, 64, nullptr}, {}},
        {"destination outside", memOrder(60, 0, 10, 10, 0xCC, 0, 0, bitmap), {"imgbuf 99", "ui 1738"}},
        {"destination outside, rop", memOrder(0, 60, 10, 10, 0x66, 0, 0, bitmap), {"imgbuf 99", "ui 1738"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        Frame frame(64, 64, 3);
        LogCapture log;
        const UiClipRect clip{0, 0, 99, 99};
        memBlt(&frame.surface(), &c.order, &clip);
        EXPECT_EQ(log.sites(), c.sites);
        EXPECT_EQ(frame.pixels(), std::vector<uint32_t>(64 * 64, 3));
        EXPECT_TRUE(frame.markedTiles().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

}  // namespace
