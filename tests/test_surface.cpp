// The image-buffer bounds checks, tile marking and clipping shared by every
// entry point.
#include <gtest/gtest.h>

#include <climits>

#include "frame.h"
#include "library.h"
#include "log_capture.h"
#include "surface.h"

using namespace ui32test;

namespace {

struct RectCase {
    int32_t left, top, width, height;
    bool ok;
};

// A 100 x 50 image: the last pixel is (99, 49).
const RectCase kRectCases[] = {
    {0, 0, 100, 50, true},           {99, 49, 1, 1, true},
    {0, 0, 101, 50, false},          {0, 0, 100, 51, false},
    {100, 0, 0, 0, true},            {100, 0, 1, 1, false},   // empty at the edge passes
    {-1, 0, 1, 1, false},            {0, -1, 1, 1, false},
    {0, 0, -1, 1, false},            {0, 0, 1, -1, false},
    {1, 0, INT32_MAX, 1, false},     {0, 1, 1, INT32_MAX, false},  // left + width wraps past 2^31
    {INT32_MAX, 0, 1, 1, false},     {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, false},
};

TEST(ImageBuffer, WriteAndReadChecks) {
    Library lib;
    Frame frame(100, 50);
    const imgbuf &image = frame.image();
    for (const RectCase &c : kRectCases) {
        SCOPED_TRACE(testing::Message() << c.left << "," << c.top << " " << c.width << "x" << c.height);
        LogCapture log;
        uint32_t *w = image.writePtr(c.left, c.top, c.width, c.height);
        const uint32_t *r = image.readPtr(c.left, c.top, c.width, c.height);
        if (c.ok) {
            EXPECT_EQ(w, &frame.at(0, 0) + 0 + (c.left + c.top * (image.stride / 4)));
            EXPECT_EQ(r, w);
            EXPECT_TRUE(log.reports().empty());
        } else {
            EXPECT_EQ(w, nullptr);
            EXPECT_EQ(r, nullptr);
            EXPECT_EQ(log.sites(), Sites({"imgbuf 99", "imgbuf 83"}));
            for (const Report &rep : log.reports()) {
                EXPECT_EQ(rep.level, "ERROR");
                EXPECT_EQ(rep.text, kInternalError);
            }
        }
    }
}

TEST(ImageBuffer, NullPixelsGiveNullWithoutReport) {
    Library lib;
    LogCapture log;
    imgbuf image{nullptr, 0, 0, 400, 100, 50};
    EXPECT_EQ(image.writePtr(0, 0, 10, 10), nullptr);
    EXPECT_EQ(image.writePtr(5, 5, 10, 10), nullptr);
    EXPECT_EQ(image.readPtr(5, 5, 10, 10), nullptr);
    EXPECT_TRUE(log.reports().empty());
}

struct MarkCase {
    int32_t left, top, right, bottom;
    std::vector<int> tiles;   // marked tile indexes on a 4 x 3 map
    const char *report;       // formatted "dirtybuf" 114 text, or null
};

const MarkCase kMarkCases[] = {
    {0, 0, 1, 1, {0}, nullptr},
    {31, 0, 33, 1, {0, 1}, nullptr},
    {32, 32, 64, 64, {5}, nullptr},
    {0, 0, 128, 96, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, nullptr},
    {96, 64, 128, 96, {11}, nullptr},                       // tx1 = 4 = columns is accepted
    {0, 64, 1, 97, {}, "0,2->1,4 of 4,3"},                   // ty1 = 4 > rows
    {64, 0, 64, 1, {}, "2,0->2,1 of 4,3"},                   // empty, starting on a tile boundary
    {65, 0, 65, 1, {2}, nullptr},                            // empty, inside a tile: still marks it
    {-1, 0, 5, 5, {0}, nullptr},                             // -1 / 32 truncates to 0
    {-33, 0, 5, 5, {}, "-1,0->1,1 of 4,3"},
    {0, 0, 129, 1, {}, "0,0->5,1 of 4,3"},
    {INT32_MAX - 5, 0, INT32_MAX, 1, {}, "67108863,0->-67108863,1 of 4,3"},  // right + 31 wraps
};

TEST(DirtyMap, MarkRect) {
    Library lib;
    for (const MarkCase &c : kMarkCases) {
        SCOPED_TRACE(testing::Message() << c.left << "," << c.top << "->" << c.right << "," << c.bottom);
        Frame frame(128, 96);
        LogCapture log;
        frame.dirty().markRect(c.left, c.top, c.right, c.bottom);
        EXPECT_EQ(frame.markedTiles(), c.tiles);
        EXPECT_EQ(frame.dirty().changed, c.report ? 0 : 1);
        if (c.report) {
            ASSERT_EQ(log.sites(), Sites({"dirtybuf 114"}));
            EXPECT_EQ(log.reports()[0].text, c.report);
            EXPECT_EQ(log.reports()[0].format, "%d,%d->%d,%d of %d,%d");
        } else {
            EXPECT_TRUE(log.reports().empty());
        }
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(DirtyMap, MarkingLeavesOtherTilesAndTheFlagBytesAlone) {
    Library lib;
    Frame frame(128, 96);
    frame.dirty().tiles[0] = 7;  // the library only sets bytes, never clears
    frame.dirty().markRect(40, 40, 41, 41);
    EXPECT_EQ(frame.dirty().tiles[0], 7);
    EXPECT_EQ(frame.markedTiles(), (std::vector<int>{0, 5}));
    EXPECT_TRUE(frame.guardsIntact());  // includes the three bytes after `changed`
}

struct ClipCase {
    UiRect in;
    UiClipRect clip;
    bool visible;
    UiRect out;
    int32_t srcDx, srcDy;  // how far the source point moves
};

const ClipCase kClipCases[] = {
    {{10, 10, 20, 20}, {0, 0, 99, 49}, true, {10, 10, 20, 20}, 0, 0},
    {{-5, -3, 20, 20}, {0, 0, 99, 49}, true, {0, 0, 15, 17}, 5, 3},
    {{90, 40, 20, 20}, {0, 0, 99, 49}, true, {90, 40, 10, 10}, 0, 0},
    {{0, 0, 10, 10}, {10, 0, 99, 49}, false, {}, 0, 0},          // wholly left of the clip
    {{0, 0, 10, 10}, {9, 9, 9, 9}, true, {9, 9, 1, 1}, 9, 9},     // single pixel clip
    {{0, 0, 0, 10}, {0, 0, 99, 49}, false, {}, 0, 0},
    {{0, 0, 10, -1}, {0, 0, 99, 49}, false, {}, 0, 0},
    {{0, 0, 10, 10}, {5, 5, 4, 4}, false, {}, 0, 0},             // inverted clip
    {{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX}, {0, 0, 99, 49}, false, {}, 0, 0},
    {{INT32_MAX, 0, INT32_MAX, 5}, {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX}, true, {INT32_MAX, 0, 1, 5}, 0, 0},
};

TEST(Clipping, AgainstTheClipRectangle) {
    for (const ClipCase &c : kClipCases) {
        SCOPED_TRACE(testing::Message() << c.in.left << "," << c.in.top << " " << c.in.width << "x" << c.in.height);
        UiRect r = c.in;
        int32_t sx = 100, sy = 200;
        ASSERT_EQ(ui::clipToRect(r, c.clip, sx, sy), c.visible);
        if (!c.visible) continue;
        EXPECT_EQ(r.left, c.out.left);
        EXPECT_EQ(r.top, c.out.top);
        EXPECT_EQ(r.width, c.out.width);
        EXPECT_EQ(r.height, c.out.height);
        EXPECT_EQ(sx, 100 + c.srcDx);
        EXPECT_EQ(sy, 200 + c.srcDy);
    }
}

TEST(Clipping, OriginIsSubtractedOnlyWhenEnabled) {
    UiSurface s{};
    s.originX = 100;
    s.originY = 50;
    int32_t x = 100, y = 50;
    ui::translate(s, x, y);
    EXPECT_EQ(x, 100);
    EXPECT_EQ(y, 50);
    s.originEnabled = 1;
    ui::translate(s, x, y);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
    x = INT32_MIN;  // wraps instead of overflowing
    s.originX = 1;
    ui::translate(s, x, y);
    EXPECT_EQ(x, INT32_MAX);
}

}  // namespace
