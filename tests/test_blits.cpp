// MemBlt's bitmap edges and copyRect.  (ScrBlt's overlaps in every direction
// and each slot's operations are in test_fills; translation, clipping and the
// destination checks of ScrBlt and MemBlt in test_surface.)
#include <gtest/gtest.h>

#include <climits>
#include <tuple>

#include "bytes.h"
#include "frame.h"
#include "library.h"

namespace {

using kit::Trail;
using S = ui::Site;

// A 16 x 16 bitmap stored bottom-up and ending right before an unreadable
// page, so its top picture row is the last one stored.
TEST(MemBlt, ReadsPictureRowsBottomUpAndOnlyInsideTheBitmap) {
    test::Library lib;
    const auto picture = [](int32_t c, int32_t r) { return uint32_t(0x700000 | r << 8 | c); };
    kit::Bytes stored;
    for (int32_t r = 15; r >= 0; --r)
        for (int32_t c = 0; c < 16; ++c) stored.pixel4(picture(c, r));
    const kit::GuardedInput in(stored);
    const auto *bitmap = reinterpret_cast<const uint32_t *>(in.data());
    const std::tuple<int32_t, int32_t, int32_t, int32_t, const uint32_t *, bool> cases[] = {  // source rectangle, bitmap, drawn
        {0, 0, 16, 1, bitmap, true},   {6, 12, 10, 4, bitmap, true},  {0, 0, 16, 16, bitmap, true},
        {7, 0, 10, 4, bitmap, false},  {0, 13, 10, 4, bitmap, false}, {-1, 0, 4, 4, bitmap, false},
        {0, -1, 4, 4, bitmap, false},  {INT32_MAX - 2, 0, 10, 4, bitmap, false}, {0, 0, 4, 4, nullptr, false}};
    for (const auto &[srcLeft, srcTop, width, height, pixels, drawn] : cases) {
        SCOPED_TRACE(testing::Message() << srcLeft << "," << srcTop << " " << width << "x" << height);
        kit::Frame f(48, 20, 5);
        kit::LogCapture log;
        lib.memBlt(f.surface(), {0, 28, 2, width, height, 0xCC, srcLeft, srcTop, 0, 16, 16, pixels}, f.all());
        std::vector<uint32_t> want(48 * 20, 5);
        for (int32_t y = 0; drawn && y < height; ++y)
            for (int32_t x = 0; x < width; ++x) want[size_t((2 + y) * 48 + 28 + x)] = picture(srcLeft + x, srcTop + y);
        EXPECT_EQ(f.pixels(), want);
        EXPECT_TRUE(log.trail().empty());  // a source outside the bitmap is not reported
        EXPECT_EQ(f.markedTiles(), (drawn ? std::vector<int>{0, 1} : std::vector<int>{}));
    }
}

uint32_t scene(int32_t x, int32_t y) { return uint32_t(0x10000 + y * 256 + x); }  // all differ

TEST(CopyRect, OverlappingCopiesMatchACopyThroughASeparateBuffer) {
    test::Library lib;
    const struct {
        UiRect dst;
        int32_t srcLeft, srcTop;
        std::vector<int> tiles;  // of the 3 x 2 map
    } cases[] = {
        {{0, 0, 96, 48}, 0, 16, {0, 1, 2, 3, 4, 5}},  {{0, 16, 96, 48}, 0, 0, {0, 1, 2, 3, 4, 5}},  // scroll up, down
        {{0, 1, 96, 63}, 0, 0, {0, 1, 2, 3, 4, 5}},   {{1, 10, 90, 5}, 0, 10, {0, 1, 2}},  {{0, 10, 90, 5}, 3, 10, {0, 1, 2}},
        {{10, 10, 50, 40}, 12, 13, {0, 1, 3, 4}},     {{12, 13, 50, 40}, 10, 10, {0, 1, 3, 4}},
        {{12, 10, 50, 40}, 10, 13, {0, 1, 3, 4}},     {{10, 13, 50, 40}, 12, 10, {0, 1, 3, 4}},
        {{5, 5, 20, 20}, 5, 5, {0}},                  {{95, 63, 1, 1}, 0, 0, {5}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.dst.left << "," << c.dst.top << " from " << c.srcLeft << "," << c.srcTop);
        kit::Frame f(96, 64);
        std::vector<uint32_t> want;
        for (int32_t y = 0; y < 64; ++y)
            for (int32_t x = 0; x < 96; ++x) {
                f.at(x, y) = scene(x, y);
                const bool in = x >= c.dst.left && x < c.dst.left + c.dst.width && y >= c.dst.top && y < c.dst.top + c.dst.height;
                want.push_back(in ? scene(x - c.dst.left + c.srcLeft, y - c.dst.top + c.srcTop) : scene(x, y));
            }
        kit::LogCapture log;
        EXPECT_TRUE(lib.copyRect(&f.image(), &f.dirty(), c.dst, c.srcLeft, c.srcTop));
        EXPECT_EQ(f.pixels(), want);
        EXPECT_EQ(f.markedTiles(), c.tiles);
        EXPECT_TRUE(log.trail().empty());
        EXPECT_TRUE(f.guardsIntact());
    }
}

// The size first, then the destination, then the source (each the image
// check's, whose every edge is in test_surface); a failed tile marking is
// reported and the copy stands.
TEST(CopyRect, RefusalsComeInTheirOrderAndChangeNothing) {
    test::Library lib;
    const struct {
        UiRect dst;
        int32_t srcLeft, srcTop;
        Trail trail;
    } cases[] = {
        {{0, 0, 0, 10}, 1000, 0, kit::trail({S::copySize})},  {{200, 0, 10, -1}, 0, 0, kit::trail({S::copySize})},
        {{90, 0, 7, 5}, 1000, 1000, kit::trail({S::imageWrite, S::copyDestination})},
        {{0, 60, 5, 5}, 0, 0, kit::trail({S::imageWrite, S::copyDestination})},
        {{0, 0, 5, 5}, 92, 0, kit::trail({S::imageRead, S::copySource})},  {{0, 0, 5, 5}, 0, 60, kit::trail({S::imageRead, S::copySource})},
        {{0, 0, 4, 4}, 50, 50, {kit::entry(S::tileRange, "0,0->1,1 of 0,2")}},  // a map without columns
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.dst.left << "," << c.dst.top << " " << c.dst.width << "x" << c.dst.height
                                        << " from " << c.srcLeft << "," << c.srcTop);
        kit::Frame f(96, 64);
        for (int32_t y = 0; y < 64; ++y)
            for (int32_t x = 0; x < 96; ++x) f.at(x, y) = scene(x, y);
        std::vector<uint32_t> want = f.pixels();
        const bool copied = c.trail[0].rfind("dirtybuf", 0) == 0;
        for (int32_t y = 0; copied && y < 4; ++y)
            for (int32_t x = 0; x < 4; ++x) want[size_t(y * 96 + x)] = scene(50 + x, 50 + y);
        f.dirty().columns = copied ? 0 : 3;
        kit::LogCapture log;
        EXPECT_EQ(lib.copyRect(&f.image(), &f.dirty(), c.dst, c.srcLeft, c.srcTop), copied);
        EXPECT_EQ(log.trail(), c.trail);
        EXPECT_EQ(f.pixels(), want);
        EXPECT_EQ(f.dirty().changed, 0);
    }
}

}  // namespace
