// The direct primitives in buffer coordinates: character cell, solid lines
// and block copy (slots 12, 13, 14 and 17).
#include <gtest/gtest.h>

#include <climits>
#include <numeric>

#include "frame.h"
#include "library.h"
#include "log_capture.h"

using namespace ui32test;

namespace {

constexpr uint32_t kInk = 0xabcdef;
constexpr uint32_t kPaper = 0x010203;

void expectInternalErrors(const LogCapture &log) {
    for (const Report &r : log.reports()) {
        EXPECT_EQ(r.level, "ERROR");
        if (r.module != "dirtybuf") EXPECT_EQ(r.text, kInternalError);
    }
}

// A cell whose rows all differ, so that a row or bit order mistake shows.
std::array<uint8_t, 16> testCell() {
    std::array<uint8_t, 16> cell{};
    for (int r = 0; r < 16; ++r) cell[size_t(r)] = uint8_t(0x81 ^ (r * 0x1d));
    return cell;
}

struct CharCase {
    int32_t x, y;
    bool drawn;
    std::vector<int> tiles;  // on the 3 x 2 map of a 96 x 64 frame
};

const CharCase kCharCases[] = {
    {0, 0, true, {0}},          {88, 48, true, {5}},      // x = width - 8, y = height - 16
    {28, 20, true, {0, 1, 3, 4}},                          // across four tiles
    {89, 0, false, {}},         {0, 49, false, {}},        // one column / row too far
    {-1, 0, false, {}},         {0, -1, false, {}},
    {INT32_MAX, 0, false, {}},  {INT32_MIN, INT32_MIN, false, {}},
};

TEST(DrawChar8x16, PaintsOnlyTheOneBits) {
    Library lib;
    const auto draw = lib.slot<UiDrawChar8x16Fn>(UI_SLOT_DRAW_CHAR_8X16);
    const std::array<uint8_t, 16> cell = testCell();
    for (const CharCase &c : kCharCases) {
        SCOPED_TRACE(testing::Message() << c.x << "," << c.y);
        Frame frame(96, 64, kPaper);
        LogCapture log;
        EXPECT_EQ(draw(&frame.image(), &frame.dirty(), c.x, c.y, cell.data(), kInk), c.drawn);
        if (c.drawn) {
            EXPECT_TRUE(log.reports().empty());
            for (int32_t r = 0; r < 16; ++r)
                for (int32_t col = 0; col < 8; ++col)
                    EXPECT_EQ(frame.at(c.x + col, c.y + r), (cell[size_t(r)] >> (7 - col)) & 1 ? kInk : kPaper)
                        << col << "," << r;
            int changed = 0;
            for (uint32_t p : frame.pixels()) changed += p != kPaper;
            int ones = 0;
            for (uint8_t b : cell) ones += __builtin_popcount(b);
            EXPECT_EQ(changed, ones);
        } else {
            EXPECT_EQ(log.sites(), Sites({"imgbuf 99", "ui 2963"}));
            expectInternalErrors(log);
            for (uint32_t p : frame.pixels()) ASSERT_EQ(p, kPaper);
        }
        EXPECT_EQ(frame.markedTiles(), c.tiles);
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(DrawChar8x16, FirstRowOf0x81AndNullTileMap) {
    Library lib;
    Frame frame(96, 64, kPaper);
    std::array<uint8_t, 16> cell{};
    cell[0] = 0x81;
    EXPECT_TRUE(lib.slot<UiDrawChar8x16Fn>(UI_SLOT_DRAW_CHAR_8X16)(&frame.image(), nullptr, 10, 20, cell.data(), kInk));
    EXPECT_EQ(frame.at(10, 20), kInk);
    EXPECT_EQ(frame.at(17, 20), kInk);
    for (int32_t x = 11; x < 17; ++x) EXPECT_EQ(frame.at(x, 20), kPaper);
    EXPECT_TRUE(frame.markedTiles().empty());
    EXPECT_EQ(frame.dirty().changed, 0);
    EXPECT_TRUE(frame.guardsIntact());
}

struct SolidLineCase {
    int32_t x, y, length;
    Sites sites;
    std::vector<int> tiles;  // on the 3 x 2 map of a 96 x 64 frame
};

// (x, y, length) read along the line: hLine runs in x, vLine in y.
const SolidLineCase kHLineCases[] = {
    {5, 5, 1, {}, {0}},
    {30, 40, 4, {}, {3, 4}},
    {0, 63, 96, {}, {3, 4, 5}},
    {5, 5, 0, {"ui 2987"}, {}},
    {5, 5, -3, {"ui 2987"}, {}},
    {93, 0, 4, {"imgbuf 99", "ui 2993"}, {}},
    {0, 64, 1, {"imgbuf 99", "ui 2993"}, {}},
    {-1, 0, 2, {"imgbuf 99", "ui 2993"}, {}},
    {1, 0, INT32_MAX, {"imgbuf 99", "ui 2993"}, {}},  // x + length beyond 2^31
    {INT32_MIN, 0, 5, {"imgbuf 99", "ui 2993"}, {}},
    {0, INT32_MAX, 5, {"imgbuf 99", "ui 2993"}, {}},
    {0, 0, INT32_MIN, {"ui 2987"}, {}},
};

const SolidLineCase kVLineCases[] = {
    {5, 5, 1, {}, {0}},
    {40, 30, 4, {}, {1, 4}},  // crosses the tile edge at y = 32
    {95, 0, 64, {}, {2, 5}},
    {5, 5, 0, {"ui 3006"}, {}},
    {5, 5, -1, {"ui 3006"}, {}},
    {0, 61, 4, {"imgbuf 99", "ui 3012"}, {}},
    {96, 0, 1, {"imgbuf 99", "ui 3012"}, {}},
    {0, -2, 3, {"imgbuf 99", "ui 3012"}, {}},
    {0, 1, INT32_MAX, {"imgbuf 99", "ui 3012"}, {}},
    {INT32_MAX, INT32_MAX, INT32_MAX, {"imgbuf 99", "ui 3012"}, {}},
};

void checkSolidLine(const SolidLineCase &c, bool horizontal, const Library &lib) {
    SCOPED_TRACE(testing::Message() << (horizontal ? "hLine " : "vLine ") << c.x << "," << c.y << " length "
                                    << c.length);
    Frame frame(96, 64, kPaper);
    LogCapture log;
    if (horizontal)
        lib.slot<UiHLineFn>(UI_SLOT_H_LINE)(&frame.image(), &frame.dirty(), c.x, c.y, c.length, kInk);
    else
        lib.slot<UiVLineFn>(UI_SLOT_V_LINE)(&frame.image(), &frame.dirty(), c.x, c.y, c.length, kInk);
    EXPECT_EQ(log.sites(), c.sites);
    expectInternalErrors(log);
    const bool drawn = c.sites.empty();
    for (int32_t y = 0; y < 64; ++y)
        for (int32_t x = 0; x < 96; ++x) {
            const bool on = drawn && (horizontal ? (y == c.y && x >= c.x && x < c.x + c.length)
                                                 : (x == c.x && y >= c.y && y < c.y + c.length));
            ASSERT_EQ(frame.at(x, y), on ? kInk : kPaper) << x << "," << y;
        }
    EXPECT_EQ(frame.markedTiles(), c.tiles);
    EXPECT_TRUE(frame.guardsIntact());
}

TEST(SolidLines, HorizontalAndVertical) {
    Library lib;
    for (const SolidLineCase &c : kHLineCases) checkSolidLine(c, true, lib);
    for (const SolidLineCase &c : kVLineCases) checkSolidLine(c, false, lib);
}

TEST(SolidLines, NullTileMapDrawsWithoutMarking) {
    Library lib;
    Frame frame(96, 64, kPaper);
    LogCapture log;
    lib.slot<UiHLineFn>(UI_SLOT_H_LINE)(&frame.image(), nullptr, 2, 3, 5, kInk);
    lib.slot<UiVLineFn>(UI_SLOT_V_LINE)(&frame.image(), nullptr, 50, 3, 5, kInk);
    EXPECT_EQ(frame.at(6, 3), kInk);
    EXPECT_EQ(frame.at(50, 7), kInk);
    EXPECT_TRUE(frame.markedTiles().empty());
    EXPECT_TRUE(log.reports().empty());
    EXPECT_TRUE(frame.guardsIntact());
}

// A picture in which every pixel differs.
void paintPattern(Frame &frame) {
    for (int32_t y = 0; y < frame.height(); ++y)
        for (int32_t x = 0; x < frame.width(); ++x) frame.at(x, y) = uint32_t(y << 12 | x);
}

// The copy as a separate buffer gives it: read the whole source first.
std::vector<uint32_t> copiedThroughBuffer(const Frame &frame, const UiRect &dst, int32_t srcLeft, int32_t srcTop) {
    std::vector<uint32_t> picture = frame.pixels();
    const std::vector<uint32_t> before = picture;
    for (int32_t y = 0; y < dst.height; ++y)
        for (int32_t x = 0; x < dst.width; ++x)
            picture[size_t((dst.top + y) * frame.width() + dst.left + x)] =
                before[size_t((srcTop + y) * frame.width() + srcLeft + x)];
    return picture;
}

struct CopyCase {
    const char *name;
    UiRect dst;
    int32_t srcLeft, srcTop;
    std::vector<int> tiles;  // on the 3 x 2 map of a 96 x 64 frame
};

const CopyCase kCopies[] = {
    {"scroll up by 16", {0, 0, 96, 48}, 0, 16, {0, 1, 2, 3, 4, 5}},
    {"scroll down by 16", {0, 16, 96, 48}, 0, 0, {0, 1, 2, 3, 4, 5}},
    {"scroll down by 1", {0, 1, 96, 63}, 0, 0, {0, 1, 2, 3, 4, 5}},
    {"shift right within rows", {1, 10, 90, 5}, 0, 10, {0, 1, 2}},
    {"shift left within rows", {0, 10, 90, 5}, 3, 10, {0, 1, 2}},
    {"diagonal overlap up-left", {10, 10, 50, 40}, 12, 13, {0, 1, 3, 4}},
    {"diagonal overlap down-right", {12, 13, 50, 40}, 10, 10, {0, 1, 3, 4}},
    {"onto itself", {5, 5, 20, 20}, 5, 5, {0}},
    {"disjoint", {64, 40, 32, 24}, 0, 0, {5}},
};

TEST(CopyRect, OverlappingCopiesMatchACopyThroughABuffer) {
    Library lib;
    const auto copy = lib.slot<UiCopyRectFn>(UI_SLOT_COPY_RECT);
    for (const CopyCase &c : kCopies) {
        SCOPED_TRACE(c.name);
        Frame frame(96, 64);
        paintPattern(frame);
        const std::vector<uint32_t> want = copiedThroughBuffer(frame, c.dst, c.srcLeft, c.srcTop);
        LogCapture log;
        EXPECT_TRUE(copy(&frame.image(), &frame.dirty(), &c.dst, c.srcLeft, c.srcTop));
        EXPECT_EQ(frame.pixels(), want);
        EXPECT_EQ(frame.markedTiles(), c.tiles);
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

struct CopyFailure {
    UiRect dst;
    int32_t srcLeft, srcTop;
    Sites sites;
};

const CopyFailure kCopyFailures[] = {
    {{0, 0, 0, 10}, 0, 0, {"ui 3470"}},
    {{0, 0, 10, -1}, 0, 0, {"ui 3470"}},
    {{INT32_MAX, 0, INT32_MIN, 5}, 0, 0, {"ui 3470"}},
    {{90, 0, 7, 5}, 0, 0, {"imgbuf 99", "ui 3473"}},
    {{90, 0, 7, 5}, 1000, 1000, {"imgbuf 99", "ui 3473"}},  // destination checked first
    {{0, 60, 5, 5}, 0, 0, {"imgbuf 99", "ui 3473"}},
    {{-1, 0, 5, 5}, 0, 0, {"imgbuf 99", "ui 3473"}},
    {{0, 0, 5, 5}, 92, 0, {"imgbuf 83", "ui 3476"}},
    {{0, 0, 5, 5}, 0, -1, {"imgbuf 83", "ui 3476"}},
    {{0, 0, 5, 5}, INT32_MAX, INT32_MAX, {"imgbuf 83", "ui 3476"}},
    {{0, 0, 5, 5}, INT32_MIN, 0, {"imgbuf 83", "ui 3476"}},
    {{1, 1, INT32_MAX, INT32_MAX}, 0, 0, {"imgbuf 99", "ui 3473"}},
};

TEST(CopyRect, RefusedCopiesChangeNothing) {
    Library lib;
    const auto copy = lib.slot<UiCopyRectFn>(UI_SLOT_COPY_RECT);
    for (const CopyFailure &c : kCopyFailures) {
        SCOPED_TRACE(testing::Message() << c.dst.left << "," << c.dst.top << " " << c.dst.width << "x" << c.dst.height
                                        << " from " << c.srcLeft << "," << c.srcTop);
        Frame frame(96, 64);
        paintPattern(frame);
        const std::vector<uint32_t> before = frame.pixels();
        LogCapture log;
        EXPECT_FALSE(copy(&frame.image(), &frame.dirty(), &c.dst, c.srcLeft, c.srcTop));
        EXPECT_EQ(log.sites(), c.sites);
        expectInternalErrors(log);
        EXPECT_EQ(frame.pixels(), before);
        EXPECT_TRUE(frame.markedTiles().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(CopyRect, FailedTileMarkingStillCopies) {
    Library lib;
    Frame frame(96, 64);
    paintPattern(frame);
    const UiRect dst{0, 0, 4, 4};
    const std::vector<uint32_t> want = copiedThroughBuffer(frame, dst, 50, 50);
    frame.dirty().columns = 0;
    LogCapture log;
    EXPECT_TRUE(lib.slot<UiCopyRectFn>(UI_SLOT_COPY_RECT)(&frame.image(), &frame.dirty(), &dst, 50, 50));
    frame.dirty().columns = 3;
    EXPECT_EQ(log.sites(), Sites({"dirtybuf 114"}));
    EXPECT_EQ(frame.pixels(), want);
}

}  // namespace
