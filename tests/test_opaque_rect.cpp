// The opaque rectangle order (slot 5).
#include <gtest/gtest.h>

#include "frame.h"
#include "library.h"
#include "log_capture.h"

using namespace ui32test;

namespace {

constexpr uint32_t kBack = 0x0f0f0f;

struct Case {
    const char *name;
    UiOpaqueRectOrder order;
    uint8_t originEnabled;
    UiClipRect clip;
    UiRect filled;  // width 0: nothing
    Sites reports;
    std::vector<int> tiles;
};

// Frame 80 x 40 (3 x 2 tiles), origin (10, 5).
const Case kCases[] = {
    {"plain", {4, 6, 20, 10, 0x12, 0x34, 0x56}, 0, {0, 0, 79, 39}, {4, 6, 20, 10}, {}, {0}},
    {"past clip.right by 10", {30, 6, 20, 10, 0x12, 0x34, 0x56}, 0, {0, 0, 39, 39}, {30, 6, 10, 10}, {}, {0, 1}},
    {"clipped at the top left", {-5, -5, 20, 40, 0x12, 0x34, 0x56}, 0, {2, 3, 79, 39}, {2, 3, 13, 32}, {}, {0, 3}},
    {"origin applied", {40, 40, 5, 5, 0x12, 0x34, 0x56}, 1, {0, 0, 79, 39}, {30, 35, 5, 5}, {}, {3, 4}},
    {"origin ignored when disabled", {40, 30, 5, 5, 0x12, 0x34, 0x56}, 0, {0, 0, 79, 39}, {40, 30, 5, 5}, {}, {1, 4}},
    {"negative width", {4, 6, -20, 10, 0x12, 0x34, 0x56}, 0, {0, 0, 79, 39}, {}, {}, {}},
    {"zero height", {4, 6, 20, 0, 0x12, 0x34, 0x56}, 0, {0, 0, 79, 39}, {}, {}, {}},
    {"outside the clip", {50, 6, 20, 10, 0x12, 0x34, 0x56}, 0, {0, 0, 39, 39}, {}, {}, {}},
    {"outside the image", {70, 6, 20, 10, 0x12, 0x34, 0x56}, 0, {0, 0, 200, 200}, {}, {"imgbuf 99", "ui 1250"}, {}},
};

TEST(OpaqueRect, FillsTheClippedRectangleAndMarksItsTiles) {
    Library lib;
    for (const Case &c : kCases) {
        SCOPED_TRACE(c.name);
        LogCapture log;
        Frame frame(80, 40, kBack);
        frame.surface().originX = 10, frame.surface().originY = 5;
        frame.surface().originEnabled = c.originEnabled;
        lib.slot<UiOpaqueRectFn>(UI_SLOT_OPAQUE_RECT)(&frame.surface(), &c.order, &c.clip);
        std::vector<uint32_t> expected(80 * 40, kBack);
        for (int32_t y = c.filled.top; y < c.filled.top + c.filled.height; ++y)
            for (int32_t x = c.filled.left; x < c.filled.left + c.filled.width; ++x)
                expected[size_t(y * 80 + x)] = 0x123456;
        EXPECT_EQ(frame.pixels(), expected);
        EXPECT_EQ(log.sites(), c.reports);
        EXPECT_EQ(frame.markedTiles(), c.tiles);
        EXPECT_TRUE(frame.guardsIntact());
    }
}

}  // namespace
