// fillBufferRect (slot 11): the edge checks in their order, the fill and the
// tile marking.
#include <gtest/gtest.h>

#include <climits>

#include "frame.h"
#include "library.h"
#include "log_capture.h"

using namespace ui32test;

namespace {

constexpr uint32_t kInk = 0xfedcba;
constexpr uint32_t kPaper = 0x010203;

struct FillCase {
    const char *name;
    UiRect rect;
    Sites sites;
    std::vector<int> tiles;  // on the 3 x 2 map of a 96 x 64 frame
    const char *markText;    // the "dirtybuf" report's text, when there is one
};

const FillCase kFills[] = {
    {"whole buffer", {0, 0, 96, 64}, {}, {0, 1, 2, 3, 4, 5}, nullptr},
    {"one pixel in the last tile", {95, 63, 1, 1}, {}, {5}, nullptr},
    {"across a tile corner", {31, 31, 2, 2}, {}, {0, 1, 3, 4}, nullptr},
    {"left -1", {-1, 0, 5, 5}, {"ui 2946"}, {}, nullptr},
    {"one pixel too wide", {0, 0, 97, 64}, {"ui 2947"}, {}, nullptr},
    {"top -1", {0, -1, 5, 5}, {"ui 2948"}, {}, nullptr},
    {"one row too tall", {0, 0, 96, 65}, {"ui 2949"}, {}, nullptr},
    {"left checked before width", {-1, 0, 200, 5}, {"ui 2946"}, {}, nullptr},
    {"width checked before top", {90, -1, 10, 5}, {"ui 2947"}, {}, nullptr},
    {"top checked before height", {0, -1, 5, 100}, {"ui 2948"}, {}, nullptr},
    {"right edge beyond 2^31", {10, 0, INT32_MAX, 5}, {"ui 2947"}, {}, nullptr},
    {"bottom edge beyond 2^31", {0, 10, 5, INT32_MAX}, {"ui 2949"}, {}, nullptr},
    {"left INT32_MIN", {INT32_MIN, 0, INT32_MAX, 5}, {"ui 2946"}, {}, nullptr},
    {"negative width passes the edges, not the pixel check", {10, 0, -5, 5}, {"imgbuf 99", "ui 1250"}, {}, nullptr},
    {"negative height", {0, 10, 5, INT32_MIN}, {"imgbuf 99", "ui 1250"}, {}, nullptr},
    {"zero height on a tile boundary", {0, 32, 5, 0}, {"dirtybuf 114"}, {}, "0,1->1,1 of 3,2"},
    {"zero height inside a tile", {0, 33, 5, 0}, {}, {3}, nullptr},
    {"zero width at the right edge", {96, 0, 0, 5}, {"dirtybuf 114"}, {}, "3,0->3,1 of 3,2"},
};

TEST(FillBufferRect, EdgeChecksFillAndMarking) {
    Library lib;
    const auto fill = lib.slot<UiFillBufferRectFn>(UI_SLOT_FILL_BUFFER_RECT);
    for (const FillCase &c : kFills) {
        SCOPED_TRACE(c.name);
        Frame frame(96, 64, kPaper);
        LogCapture log;
        fill(&frame.image(), &frame.dirty(), &c.rect, kInk);
        EXPECT_EQ(log.sites(), c.sites);
        for (const Report &r : log.reports()) {
            EXPECT_EQ(r.level, "ERROR");
            EXPECT_EQ(r.text, r.module == "dirtybuf" ? c.markText : kInternalError);
        }
        const bool filled = c.sites.empty() || c.sites == Sites({"dirtybuf 114"});
        for (int32_t y = 0; y < 64; ++y)
            for (int32_t x = 0; x < 96; ++x) {
                const bool inside = filled && x >= c.rect.left && x - c.rect.left < c.rect.width && y >= c.rect.top &&
                                    y - c.rect.top < c.rect.height;
                ASSERT_EQ(frame.at(x, y), inside ? kInk : kPaper) << x << "," << y;
            }
        EXPECT_EQ(frame.markedTiles(), c.tiles);
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(FillBufferRect, NullTileMapFillsWithoutMarking) {
    Library lib;
    Frame frame(96, 64, kPaper);
    const UiRect r{40, 20, 8, 30};
    LogCapture log;
    lib.slot<UiFillBufferRectFn>(UI_SLOT_FILL_BUFFER_RECT)(&frame.image(), nullptr, &r, kInk);
    EXPECT_EQ(frame.at(40, 20), kInk);
    EXPECT_EQ(frame.at(47, 49), kInk);
    EXPECT_EQ(frame.at(48, 49), kPaper);
    EXPECT_TRUE(frame.markedTiles().empty());
    EXPECT_EQ(frame.dirty().changed, 0);
    EXPECT_TRUE(log.reports().empty());
    EXPECT_TRUE(frame.guardsIntact());
}

TEST(FillBufferRect, NullPixelsReportTheFillSiteOnly) {
    Library lib;
    Frame frame(96, 64, kPaper);
    uint32_t *pixels = frame.image().pixels;
    frame.image().pixels = nullptr;
    const UiRect r{0, 0, 4, 4};
    LogCapture log;
    lib.slot<UiFillBufferRectFn>(UI_SLOT_FILL_BUFFER_RECT)(&frame.image(), &frame.dirty(), &r, kInk);
    frame.image().pixels = pixels;
    EXPECT_EQ(log.sites(), Sites({"ui 1250"}));
    EXPECT_TRUE(frame.markedTiles().empty());
}

}  // namespace
