// Hextile rectangles pulled through the client's read callback.
#include <gtest/gtest.h>

#include <climits>
#include <random>

#include "frame.h"
#include "library.h"
#include "log_capture.h"
#include "rfb_tiles.h"

using namespace ui32test;

namespace {

constexpr uint32_t kFill = 0x5a5a5a;

uint32_t mapped(uint8_t b0, uint8_t b1, uint8_t b2, uint8_t order) {
    return order != 0 ? (uint32_t(b2) << 16 | uint32_t(b1) << 8 | b0) : (uint32_t(b0) << 16 | uint32_t(b1) << 8 | b2);
}

int32_t hextile(const Library &lib, Frame &frame, const UiRect &rect, UiReadFn read = &HextileFeed::read) {
    return lib.slot<UiHextileRectFn>(UI_SLOT_HEXTILE_RECT)(&frame.image(), &frame.dirty(), &rect, read);
}

void setByteOrder(const Library &lib, uint8_t order) {
    lib.slot<UiSetSourceByteOrderFn>(UI_SLOT_SET_SOURCE_BYTE_ORDER)(order);
}

int paintedPixels(const Frame &frame) {
    int n = 0;
    for (int32_t y = 0; y < frame.height(); ++y)
        for (int32_t x = 0; x < frame.width(); ++x) n += frame.at(x, y) != kFill;
    return n;
}

// The 40 x 20 rectangle at (20, 20) of an 80 x 64 frame: tiles 16, 16, 8
// wide and 16, 4 high.
const UiRect kRect{20, 20, 40, 20};
int tileOf(int32_t x, int32_t y) { return (y - 20) / 16 * 3 + (x - 20) / 16; }

TEST(Hextile, TilesInOrderWithPartialTilesAndNothingReadBeyond) {
    Library lib;
    LogCapture log;
    setByteOrder(lib, 1);
    Frame frame(80, 64, kFill);
    Bytes stream;
    for (uint8_t i = 0; i < 6; ++i) stream.insert(stream.end(), {2, uint8_t(0x10 + i), 0x01, 0x02, 0xEE});
    stream.insert(stream.end(), {0x99, 0x99});  // the next rectangle's bytes
    HextileFeed feed(stream);
    ASSERT_EQ(hextile(lib, frame, kRect), 1);
    EXPECT_EQ(feed.requests(), std::vector<int32_t>({1, 4, 1, 4, 1, 4, 1, 4, 1, 4, 1, 4}));
    EXPECT_EQ(feed.position(), stream.size() - 2);
    for (int32_t y = 0; y < 64; ++y)
        for (int32_t x = 0; x < 80; ++x) {
            const bool inside = x >= 20 && x < 60 && y >= 20 && y < 40;
            const uint32_t expected = inside ? 0x020100u + uint32_t(0x10 + tileOf(x, y)) : kFill;
            ASSERT_EQ(frame.at(x, y), expected) << x << "," << y;
        }
    EXPECT_EQ(frame.markedTiles(), std::vector<int>({0, 1, 3, 4}));
    EXPECT_TRUE(log.reports().empty());
    EXPECT_TRUE(frame.guardsIntact());
}

TEST(Hextile, RawTilesReadTheirSizeAndFollowTheByteOrder) {
    for (uint8_t order : {0, 1}) {
        SCOPED_TRACE(int(order));
        Library lib;
        LogCapture log;
        setByteOrder(lib, order);
        Frame frame(80, 64, kFill);
        // Tile widths and heights in reading order.
        const int32_t widths[] = {16, 16, 8, 16, 16, 8}, heights[] = {16, 16, 16, 4, 4, 4};
        Bytes stream;
        std::vector<int32_t> expectedRequests;
        for (int t = 0; t < 6; ++t) {
            // Raw with every other flag set too: only the pixels follow.
            stream.push_back(0xFF);
            for (int32_t i = 0; i < widths[t] * heights[t]; ++i)
                stream.insert(stream.end(), {uint8_t(i), uint8_t(t), uint8_t(i >> 4), 0x77});
            expectedRequests.insert(expectedRequests.end(), {1, widths[t] * heights[t] * 4});
        }
        HextileFeed feed(stream);
        ASSERT_EQ(hextile(lib, frame, kRect), 1);
        EXPECT_EQ(feed.requests(), expectedRequests);
        EXPECT_EQ(feed.position(), stream.size());
        for (int32_t y = 20; y < 40; ++y)
            for (int32_t x = 20; x < 60; ++x) {
                const int t = tileOf(x, y);
                const int32_t i = (y - 20) % 16 * widths[t] + (x - 20) % 16;
                ASSERT_EQ(frame.at(x, y), mapped(uint8_t(i), uint8_t(t), uint8_t(i >> 4), order)) << x << "," << y;
            }
        EXPECT_EQ(paintedPixels(frame), 800);
        EXPECT_TRUE(frame.guardsIntact());
    }
}

// Background and foreground start at 0 and carry over from tile to tile;
// subrectangles paint over the background, later ones over earlier ones.
TEST(Hextile, BackgroundAndForegroundCarryAcrossTiles) {
    for (uint8_t order : {0, 1}) {
        SCOPED_TRACE(int(order));
        Library lib;
        LogCapture log;
        setByteOrder(lib, order);
        Frame frame(80, 64, kFill);
        const Bytes stream = {
            0,                                              // tile 0: starting background
            2, 0x11, 0x22, 0x33, 0x44,                      // tile 1: new background
            0,                                              // tile 2: same background
            4 | 8, 0xAA, 0xBB, 0xCC, 0xDD, 1, 0x00, 0x11,   // tile 3: foreground, 2x2 at (0, 0)
            8, 1, 0x11, 0x00,                               // tile 4: 1x1 at (1, 1), same foreground
            2 | 8 | 16, 0x01, 0x02, 0x03, 0x00, 2,          // tile 5: own pixels
            0x10, 0x20, 0x30, 0x40, 0x00, 0x33,             //   4x4 at (0, 0)
            0x50, 0x60, 0x70, 0x80, 0x22, 0x11,             //   2x2 at (2, 2), over it
        };
        HextileFeed feed(stream);
        ASSERT_EQ(hextile(lib, frame, kRect), 1);
        EXPECT_EQ(feed.requests(), std::vector<int32_t>({1, 1, 4, 1, 1, 4, 1, 2, 1, 1, 2, 1, 4, 1, 12}));
        const uint32_t bg = mapped(0x11, 0x22, 0x33, order), fg = mapped(0xAA, 0xBB, 0xCC, order);
        const uint32_t bg5 = mapped(1, 2, 3, order), first = mapped(0x10, 0x20, 0x30, order),
                       second = mapped(0x50, 0x60, 0x70, order);
        for (int32_t y = 20; y < 40; ++y)
            for (int32_t x = 20; x < 60; ++x) {
                const int32_t tx = (x - 20) % 16, ty = (y - 20) % 16;
                uint32_t expected = 0;
                switch (tileOf(x, y)) {
                case 0: expected = 0; break;
                case 1:
                case 2: expected = bg; break;
                case 3: expected = tx < 2 && ty < 2 ? fg : bg; break;
                case 4: expected = tx == 1 && ty == 1 ? fg : bg; break;
                case 5:
                    expected = tx >= 2 && tx < 4 && ty >= 2 && ty < 4 ? second : tx < 4 && ty < 4 ? first : bg5;
                    break;
                }
                ASSERT_EQ(frame.at(x, y), expected) << x << "," << y;
            }
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

// One subrectangle in a one-tile rectangle: painted when it fits, skipped
// silently when it does not.
TEST(Hextile, SubrectanglesThatDoNotFitAreSkipped) {
    struct Fit {
        int32_t width, height;
        uint8_t xy, wh;
        bool fits;
    };
    const Fit cases[] = {
        {16, 16, 0xF0, 0x00, true},  {15, 16, 0xF0, 0x00, false}, {16, 16, 0x0F, 0x00, true},
        {16, 15, 0x0F, 0x00, false}, {16, 16, 0x00, 0xFF, true},  {16, 16, 0x11, 0xFF, false},
        {8, 4, 0x70, 0x03, true},    {8, 4, 0x70, 0x13, false},   {8, 4, 0x03, 0x70, true},
        {8, 4, 0x03, 0x71, false},
    };
    for (const Fit &c : cases) {
        SCOPED_TRACE(testing::Message() << c.width << "x" << c.height << " xy " << int(c.xy) << " wh " << int(c.wh));
        Library lib;
        LogCapture log;
        setByteOrder(lib, 1);
        Frame frame(32, 32, kFill);
        HextileFeed feed({2 | 4 | 8, 0x01, 0x01, 0x01, 0, 0x02, 0x02, 0x02, 0, 1, c.xy, c.wh});
        ASSERT_EQ(hextile(lib, frame, UiRect{8, 8, c.width, c.height}), 1);
        const int32_t sx = c.xy >> 4, sy = c.xy & 15, sw = (c.wh >> 4) + 1, sh = (c.wh & 15) + 1;
        for (int32_t y = 0; y < c.height; ++y)
            for (int32_t x = 0; x < c.width; ++x) {
                const bool in = c.fits && x >= sx && x < sx + sw && y >= sy && y < sy + sh;
                ASSERT_EQ(frame.at(8 + x, 8 + y), in ? 0x020202u : 0x010101u) << x << "," << y;
            }
        EXPECT_EQ(paintedPixels(frame), c.width * c.height);
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

// Failures: the sites reported, the reads made, the tiles left painted;
// the result is 0 and nothing is marked.
TEST(Hextile, Failures) {
    struct Failure {
        const char *name;
        UiRect rect;
        Bytes stream;
        int failAt;
        Sites sites;
        std::vector<int32_t> requests;
        int painted;
    };
    const Failure cases[] = {
        {"rectangle right of the image", UiRect{50, 20, 40, 20}, {0}, -1, {"imgbuf 99", "ui 3673"}, {}, 0},
        {"negative width", UiRect{20, 20, -1, 20}, {0}, -1, {"imgbuf 99", "ui 3673"}, {}, 0},
        {"huge height", UiRect{20, 20, 16, INT32_MAX}, {0}, -1, {"imgbuf 99", "ui 3673"}, {}, 0},
        {"sub-encoding not delivered", kRect, {}, -1, {"ui 3706"}, {1}, 0},
        {"raw pixels not delivered", kRect, Bytes(100, 1), -1, {"ui 3550", "ui 3713"}, {1, 1024}, 0},
        {"background not delivered", kRect, {2, 1, 2}, -1, {"ui 3719"}, {1, 4}, 0},
        {"foreground not delivered", kRect, {2 | 4, 1, 2, 3, 4}, -1, {"ui 3724"}, {1, 4, 4}, 0},
        {"count not delivered", kRect, {8}, -1, {"ui 3736"}, {1, 1}, 0},
        {"coloured count 0", kRect, {8 | 16, 0, 1, 2}, -1, {"ui 3593", "ui 3739"}, {1, 1}, 0},
        {"coloured records not delivered", kRect, {8 | 16, 2, 1, 2, 3, 4, 5, 6, 7}, -1, {"ui 3595", "ui 3739"},
         {1, 1, 12}, 0},
        {"plain count 0", kRect, {8, 0, 1, 2}, -1, {"ui 3633", "ui 3743"}, {1, 1}, 0},
        {"plain records not delivered", kRect, {8, 3, 0, 0}, -1, {"ui 3635", "ui 3743"}, {1, 1, 6}, 0},
        {"read fails on the third tile", kRect, {2, 1, 2, 3, 0, 2, 4, 5, 6, 0, 0, 0}, 4, {"ui 3706"}, {1, 4, 1, 4, 1},
         512},
        {"last tile's records not delivered", kRect,
         [] {
             Bytes s = {2, 9, 9, 9, 0, 0, 0, 0, 0};
             s.insert(s.end(), {8, 255});
             return s;
         }(),
         -1, {"ui 3635", "ui 3743"}, {1, 4, 1, 1, 1, 1, 1, 1, 510}, 768},
    };
    for (const Failure &c : cases) {
        SCOPED_TRACE(c.name);
        Library lib;
        LogCapture log;
        Frame frame(80, 64, kFill);
        HextileFeed feed(c.stream, c.failAt);
        EXPECT_EQ(hextile(lib, frame, c.rect), 0);
        EXPECT_EQ(log.sites(), c.sites);
        for (const Report &r : log.reports()) EXPECT_EQ(r.text, kInternalError);
        EXPECT_EQ(feed.requests(), c.requests);
        EXPECT_EQ(paintedPixels(frame), c.painted);
        EXPECT_TRUE(frame.markedTiles().empty());
        EXPECT_EQ(frame.dirty().changed, 0);
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(Hextile, EmptyRectanglesReadNothing) {
    struct Empty {
        UiRect rect;
        Sites sites;
        std::vector<int> marked;
    };
    const Empty cases[] = {
        {UiRect{32, 0, 0, 16}, {"dirtybuf 114"}, {}},
        {UiRect{20, 20, 0, 5}, {}, {0}},
        {UiRect{20, 20, 5, 0}, {}, {0}},
        {UiRect{80, 64, 0, 0}, {"dirtybuf 114"}, {}},
    };
    for (const Empty &c : cases) {
        Library lib;
        LogCapture log;
        Frame frame(80, 64, kFill);
        HextileFeed feed({0, 0, 0});
        EXPECT_EQ(hextile(lib, frame, c.rect), 1);
        EXPECT_TRUE(feed.requests().empty());
        EXPECT_EQ(log.sites(), c.sites);
        EXPECT_EQ(frame.markedTiles(), c.marked);
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(Hextile, NullPointers) {
    Library lib;
    LogCapture log;
    Frame frame(80, 64, kFill);
    HextileFeed feed({0, 0, 0});
    const UiHextileRectFn fn = lib.slot<UiHextileRectFn>(UI_SLOT_HEXTILE_RECT);

    imgbuf noPixels = frame.image();
    noPixels.pixels = nullptr;
    EXPECT_EQ(fn(&noPixels, &frame.dirty(), &kRect, &HextileFeed::read), 0);
    EXPECT_EQ(fn(nullptr, &frame.dirty(), &kRect, &HextileFeed::read), 0);
    EXPECT_EQ(fn(&frame.image(), &frame.dirty(), nullptr, &HextileFeed::read), 0);
    EXPECT_EQ(log.sites(), Sites({"ui 3673", "ui 3673", "ui 3673"}));
    EXPECT_TRUE(feed.requests().empty());

    // A missing callback delivers nothing; a tile map is optional.
    log.clear();
    EXPECT_EQ(fn(&frame.image(), &frame.dirty(), &kRect, nullptr), 0);
    EXPECT_EQ(log.sites(), Sites({"ui 3706"}));
    log.clear();
    EXPECT_EQ(fn(&frame.image(), nullptr, &kRect, nullptr), 0);
    const UiRect row{20, 20, 16, 1};
    EXPECT_EQ(fn(&frame.image(), nullptr, &row, &HextileFeed::read), 1);
    EXPECT_EQ(log.sites(), Sites({"ui 3706"}));
    EXPECT_EQ(frame.at(20, 20), 0u);
    EXPECT_TRUE(frame.markedTiles().empty());
    EXPECT_TRUE(frame.guardsIntact());
}

// Random streams for rectangles in and around the image: every request is
// one of the encoding's lengths, a success never reads more than was given,
// a failure is reported and marks nothing, and nothing outside the image
// is written.
TEST(Hextile, HostileRandomStreams) {
    std::mt19937 rng(24);
    auto pick = [&](int lo, int hi) { return int32_t(std::uniform_int_distribution<int>(lo, hi)(rng)); };
    for (int iteration = 0; iteration < 300; ++iteration) {
        SCOPED_TRACE(testing::Message() << "iteration " << iteration);
        const UiRect rect{pick(-4, 60), pick(-4, 40), pick(-2, 70), pick(-2, 50)};
        Bytes stream(size_t(pick(0, 3000)));
        for (uint8_t &b : stream) b = uint8_t(pick(0, 2) == 0 ? pick(0, 31) : pick(0, 255));
        Library lib;
        LogCapture log;
        Frame frame(80, 64, kFill);
        HextileFeed feed(stream);
        const int32_t result = hextile(lib, frame, rect);
        ASSERT_TRUE(result == 0 || result == 1);
        for (int32_t n : feed.requests()) ASSERT_TRUE(n >= 1 && n <= 1530) << n;
        if (result == 0) {
            EXPECT_FALSE(log.reports().empty());
            EXPECT_TRUE(frame.markedTiles().empty());
        }
        ASSERT_TRUE(frame.guardsIntact());
    }
}

}  // namespace
