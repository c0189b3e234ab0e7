// The LineTo order (slot 4): paths, clipping, the fixed-point stepper, the
// raster operations and the reports.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <set>

#include "frame.h"
#include "library.h"
#include "line_reference.h"
#include "log_capture.h"
#include "lineClip.h"

using namespace ui32test;

namespace {

constexpr uint32_t kColour = 0x123456;

struct Pixel {
    int32_t x, y;
    auto operator<=>(const Pixel &) const = default;
};
using Pixels = std::vector<Pixel>;

std::ostream &operator<<(std::ostream &os, const Pixel &p) { return os << "(" << p.x << "," << p.y << ")"; }

UiLineOrder lineOrder(int32_t x1, int32_t y1, int32_t x2, int32_t y2, int32_t rop = 12, uint32_t colour = kColour) {
    return UiLineOrder{x1, y1, x2, y2, rop, {int32_t(colour >> 16), int32_t((colour >> 8) & 0xff), int32_t(colour & 0xff)}};
}

void drawLine(const Library &lib, Frame &frame, const UiLineOrder &order, const UiClipRect &clip) {
    lib.slot<UiDrawLineFn>(UI_SLOT_DRAW_LINE)(&frame.surface(), &order, &clip);
}

// Pixels that no longer hold `background`, in row-major order.
Pixels changedPixels(const Frame &frame, uint32_t background = 0) {
    Pixels out;
    for (int32_t y = 0; y < frame.height(); ++y)
        for (int32_t x = 0; x < frame.width(); ++x)
            if (frame.at(x, y) != background) out.push_back({x, y});
    return out;
}

Pixels sorted(Pixels p) {
    std::sort(p.begin(), p.end(), [](const Pixel &a, const Pixel &b) { return a.y != b.y ? a.y < b.y : a.x < b.x; });
    return p;
}

// The run from (x1, y1) towards (x2, y2): pixel k lies k steps along the
// major axis and floor((2^29 + k x lineSlope) / 2^30) along the minor one;
// the end point is included only when it is not the order's own.
Pixels runPixels(int32_t x1, int32_t y1, int32_t x2, int32_t y2, bool endKept) {
    const int64_t dx = int64_t(x2) - x1, dy = int64_t(y2) - y1;
    const int64_t adx = std::abs(dx), ady = std::abs(dy);
    const bool xMajor = adx > ady;
    const int64_t major = xMajor ? adx : ady, minor = xMajor ? ady : adx;
    const int64_t slope = (minor << 30) / major;
    const int64_t count = endKept ? major : major + 1;
    const int64_t sx = dx > 0 ? 1 : -1, sy = dy > 0 ? 1 : -1;
    Pixels out;
    for (int64_t k = 0; k < count; ++k) {
        const int64_t along = k, across = ((int64_t(1) << 29) + k * slope) >> 30;
        out.push_back({int32_t(x1 + sx * (xMajor ? along : across)), int32_t(y1 + sy * (xMajor ? across : along))});
    }
    return sorted(out);
}

Pixels rowOf(int32_t from, int32_t to, int32_t y) {
    Pixels p;
    for (int32_t x = from; x <= to; ++x) p.push_back({x, y});
    return p;
}

Pixels diagonal(int32_t n) {
    Pixels p;
    for (int32_t k = 0; k < n; ++k) p.push_back({k, k});
    return p;
}

struct LineCase {
    const char *name;
    int32_t x1, y1, x2, y2;
    UiClipRect clip;
    Pixels pixels;
    std::vector<int> tiles;  // on the 4 x 3 map of a 128 x 96 frame
};

constexpr UiClipRect kFull{0, 0, 127, 95};

const LineCase kExamples[] = {
    {"one point", 5, 5, 5, 5, kFull, {{5, 5}}, {0}},
    {"diagonal neighbour: end left out", 5, 5, 6, 6, kFull, {{5, 5}}, {0}},
    {"other neighbour", 5, 5, 4, 6, kFull, {{5, 5}}, {0}},
    {"point outside the clip", 5, 5, 5, 5, {6, 0, 127, 95}, {}, {}},
    {"vertical down", 3, 4, 3, 10, kFull, {{3, 4}, {3, 5}, {3, 6}, {3, 7}, {3, 8}, {3, 9}}, {0}},
    {"vertical up", 3, 10, 3, 4, kFull, {{3, 5}, {3, 6}, {3, 7}, {3, 8}, {3, 9}, {3, 10}}, {0}},
    {"vertical up into the next tile row", 40, 64, 40, 60, kFull, {{40, 61}, {40, 62}, {40, 63}, {40, 64}}, {5, 9}},
    {"vertical cut at both ends", 7, -5, 7, 200, {0, 10, 127, 12}, {{7, 10}, {7, 11}, {7, 12}}, {0}},
    {"vertical left of the clip", 7, 0, 7, 20, {8, 0, 127, 95}, {}, {}},
    {"vertical on the clip's right edge", 7, 0, 7, 3, {0, 0, 7, 95}, {{7, 0}, {7, 1}, {7, 2}}, {0}},
    {"horizontal left to right, clipped", 0, 0, 100, 0, {0, 0, 49, 49}, rowOf(0, 49, 0), {0, 1}},
    {"horizontal right to left, clipped", 100, 0, 0, 0, {0, 0, 49, 49}, rowOf(1, 49, 0), {0, 1}},
    {"horizontal leftwards across a tile edge", 70, 3, 60, 3, kFull, rowOf(61, 70, 3), {1, 2}},
    {"horizontal below the clip", 0, 50, 20, 50, {0, 0, 127, 49}, {}, {}},
    {"both ends above the clip", 10, -10, 50, -3, kFull, {}, {}},
    {"diagonal", 0, 0, 10, 10, kFull, diagonal(10), {0}},
    {"x major, slope 3/10", 0, 0, 10, 3, kFull,
     {{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 1}, {5, 1}, {6, 2}, {7, 2}, {8, 2}, {9, 3}}, {0}},
    {"clipped on the right: end on the edge is drawn", 0, 0, 10, 3, {0, 0, 7, 95},
     {{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 1}, {5, 1}, {6, 2}, {7, 2}}, {0}},
    {"y major, slope 2/5", 0, 0, 2, 5, kFull, {{0, 0}, {0, 1}, {1, 2}, {1, 3}, {2, 4}}, {0}},
    {"start clipped onto the order's end: nothing", 0, 0, 10, 10, {10, 10, 50, 50}, {}, {}},
    {"clipped to one pixel that is not the end", 20, 20, 23, 21, {20, 20, 20, 20}, {{20, 20}}, {0}},
    {"passes beside the clip corner", 0, 15, 15, 0, {10, 10, 50, 50}, {}, {}},
};

TEST(DrawLine, Examples) {
    Library lib;
    for (const LineCase &c : kExamples) {
        SCOPED_TRACE(c.name);
        Frame frame(128, 96);
        LogCapture log;
        drawLine(lib, frame, lineOrder(c.x1, c.y1, c.x2, c.y2), c.clip);
        const Pixels want = sorted(c.pixels);
        EXPECT_EQ(changedPixels(frame), want);
        for (const Pixel &p : want) EXPECT_EQ(frame.at(p.x, p.y), kColour) << p;
        EXPECT_EQ(frame.markedTiles(), c.tiles);
        EXPECT_EQ(frame.dirty().changed, c.tiles.empty() ? 0 : 1);
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

// Every path combines the pen with the pixel through rop & 15, copy directly.
TEST(DrawLine, RasterOperationUsesTheLowFourBits) {
    Library lib;
    const uint32_t background = 0x00ff00, pen = 0x0000ff;
    const struct {
        int32_t rop;
        uint32_t result;
    } rops[] = {{12, 0x0000ff}, {28, 0x0000ff}, {-4, 0x0000ff}, {6, 0x00ffff}, {22, 0x00ffff},
                {5, 0xff00ff},  {10, 0x00ff00}, {0, 0},          {15, 0xffffff}, {14, 0x00ffff}};
    const struct {
        const char *path;
        int32_t x1, y1, x2, y2;
        UiClipRect clip;
        size_t count;
    } paths[] = {{"single", 5, 5, 5, 5, kFull, 1},        {"vertical", 3, 4, 3, 10, kFull, 6},
                 {"horizontal", 0, 0, 10, 0, kFull, 10},   {"sloped", 0, 0, 10, 3, kFull, 10},
                 {"clipped sloped", 0, 0, 10, 3, {0, 0, 7, 95}, 8}, {"clipped to one pixel", 20, 20, 23, 21, {20, 20, 20, 20}, 1}};
    for (const auto &path : paths) {
        for (const auto &r : rops) {
            SCOPED_TRACE(testing::Message() << path.path << " rop " << r.rop);
            Frame frame(128, 96, background);
            LogCapture log;
            drawLine(lib, frame, lineOrder(path.x1, path.y1, path.x2, path.y2, r.rop, pen), path.clip);
            Pixels drawn;  // pixels now holding the result (all of them when the result is the background)
            for (int32_t y = 0; y < 96; ++y)
                for (int32_t x = 0; x < 128; ++x)
                    if (frame.at(x, y) != background) drawn.push_back({x, y});
            if (r.result != background) EXPECT_EQ(drawn.size(), path.count);
            for (const Pixel &p : drawn) EXPECT_EQ(frame.at(p.x, p.y), r.result) << p;
            EXPECT_TRUE(log.reports().empty());
            EXPECT_TRUE(frame.guardsIntact());
        }
    }
}

TEST(DrawLine, PenColourWordsAreCombinedWithoutMasking) {
    Library lib;
    Frame frame(128, 96);
    const UiLineOrder order{0, 0, 4, 0, 12, {0x112, 0x34, 0x56}};
    const UiClipRect clip = kFull;
    lib.slot<UiDrawLineFn>(UI_SLOT_DRAW_LINE)(&frame.surface(), &order, &clip);
    EXPECT_EQ(frame.at(0, 0), 0x1123456u);
}

TEST(DrawLine, OriginTranslatesTheLineButNotTheClip) {
    Library lib;
    const struct {
        uint8_t enabled;
        int32_t x1, y1, x2, y2;
        UiClipRect clip;
        Pixels pixels;
    } cases[] = {
        {1, 100, 50, 100, 60, kFull, {{0, 0}, {0, 1}, {0, 2}, {0, 3}, {0, 4}, {0, 5}, {0, 6}, {0, 7}, {0, 8}, {0, 9}}},
        {1, 100, 50, 100, 60, {0, 0, 127, 2}, {{0, 0}, {0, 1}, {0, 2}}},
        {1, 110, 50, 120, 53, kFull, runPixels(10, 0, 20, 3, true)},
        {1, 101, 51, 101, 51, kFull, {{1, 1}}},
        {1, 90, 52, 100, 52, kFull, {}},  // x -10 to 0: left of the image and the clip
        {0, 100, 50, 100, 52, kFull, {{100, 50}, {100, 51}}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.x1 << "," << c.y1 << " enabled " << int(c.enabled));
        Frame frame(128, 96);
        frame.surface().originX = 100;
        frame.surface().originY = 50;
        frame.surface().originEnabled = c.enabled;
        LogCapture log;
        drawLine(lib, frame, lineOrder(c.x1, c.y1, c.x2, c.y2), c.clip);
        EXPECT_EQ(changedPixels(frame), sorted(c.pixels));
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

// Thousands of random sloped lines inside the clip: pixel k against the
// fixed-point formula, the end point left out, nothing else drawn, and the
// whole bounding box marked.
TEST(DrawLine, UnclippedSlopedLinesFollowTheFixedPointFormula) {
    Library lib;
    Frame frame(96, 96);
    const UiClipRect clip = frame.fullClip();
    std::mt19937_64 rng(11);
    for (int i = 0; i < 4000; ++i) {
        const int32_t x1 = int32_t(rng() % 96), y1 = int32_t(rng() % 96), x2 = int32_t(rng() % 96),
                      y2 = int32_t(rng() % 96);
        if (x1 == x2 || y1 == y2 || (std::abs(x2 - x1) <= 1 && std::abs(y2 - y1) <= 1)) continue;
        SCOPED_TRACE(testing::Message() << x1 << "," << y1 << " -> " << x2 << "," << y2);
        frame.fill(0);
        frame.clearTiles();
        LogCapture log;
        drawLine(lib, frame, lineOrder(x1, y1, x2, y2), clip);
        const Pixels want = runPixels(x1, y1, x2, y2, true);
        ASSERT_EQ(changedPixels(frame), want);
        ASSERT_EQ(frame.at(x2, y2), 0u);
        std::vector<int> tiles;  // every tile between the box's corner tiles
        for (int ty = std::min(y1, y2) / 32; ty <= std::max(y1, y2) / 32; ++ty)
            for (int tx = std::min(x1, x2) / 32; tx <= std::max(x1, x2) / 32; ++tx) tiles.push_back(ty * 3 + tx);
        ASSERT_EQ(frame.markedTiles(), tiles);
        ASSERT_TRUE(log.reports().empty());
    }
    EXPECT_TRUE(frame.guardsIntact());
}

struct CrossingCase {
    const char *edge;
    int32_t x1, y1, x2, y2;
    Pixel start, end;  // the segment after clipping
    bool endKept;
};

// Clip (0, 0, 49, 49); the clipped points worked out by hand.
const CrossingCase kCrossings[] = {
    {"right", 40, 10, 60, 20, {40, 10}, {49, 14}, false},    // y = 20 - 11 x 0.5 = 14.5
    {"left", 20, 15, -10, 0, {20, 15}, {0, 5}, false},       // y = 0 + 10 x 0.5
    {"top", 10, 20, 20, -10, {10, 20}, {16, 0}, false},      // x = 20 - 10 / 3 = 16.67
    {"bottom", 10, 30, 20, 70, {10, 30}, {14, 49}, false},   // x = 20 - 21 x 0.25 = 14.75
    {"start outside", -10, 0, 20, 15, {0, 5}, {20, 15}, true},
    {"both outside", -10, 0, 70, 40, {0, 5}, {49, 29}, false},  // y = 40 - 21 x 0.5 = 29.5
};

TEST(DrawLine, LinesCrossingTheClipEdges) {
    Library lib;
    const UiClipRect clip{0, 0, 49, 49};
    for (const CrossingCase &c : kCrossings) {
        SCOPED_TRACE(c.edge);
        Frame frame(64, 64);
        LogCapture log;
        drawLine(lib, frame, lineOrder(c.x1, c.y1, c.x2, c.y2), clip);
        EXPECT_EQ(changedPixels(frame), runPixels(c.start.x, c.start.y, c.end.x, c.end.y, c.endKept));
        EXPECT_EQ(frame.at(c.end.x, c.end.y) == kColour, !c.endKept);
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(DrawLine, BothEndsOutsideOnOneSideDrawNothing) {
    Library lib;
    const UiClipRect clip{10, 10, 50, 50};
    const struct {
        int32_t x1, y1, x2, y2;
    } cases[] = {{0, 0, 60, 9},   {0, 51, 60, 90},  {0, 0, 9, 60},  {51, 0, 90, 60},   // sloped
                 {5, 0, 5, 60},   {55, 60, 55, 0},  {0, 5, 60, 5},  {60, 55, 0, 55},   // vertical, horizontal
                 {5, 5, 5, 5},    {55, 55, 56, 56}};                                    // single pixels
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.x1 << "," << c.y1 << " -> " << c.x2 << "," << c.y2);
        Frame frame(64, 64);
        LogCapture log;
        drawLine(lib, frame, lineOrder(c.x1, c.y1, c.x2, c.y2), clip);
        EXPECT_TRUE(changedPixels(frame).empty());
        EXPECT_TRUE(frame.markedTiles().empty());
        EXPECT_TRUE(log.reports().empty());
    }
}

// Random lines crossing random clip rectangles against the hardware-double
// reference: the same pixels on every target.
TEST(DrawLine, ClippedLinesMatchTheDoublePrecisionReference) {
    Library lib;
    Frame frame(96, 96);
    std::mt19937_64 rng(12);
    int unsettled = 0, drawn = 0;
    for (int i = 0; i < 5000; ++i) {
        const auto coordinate = [&](int32_t spread) { return int32_t(int64_t(rng() % uint64_t(2 * spread + 1)) - spread) + 48; };
        const int32_t l = int32_t(rng() % 48), r = 48 + int32_t(rng() % 48), t = int32_t(rng() % 48),
                      b = 48 + int32_t(rng() % 48);
        const UiClipRect clip{l, t, r, b};
        const int kind = i % 5;
        const int32_t spread = kind == 2 ? INT32_MAX / 2 : (kind == 1 ? 40 : 300);
        int32_t x1 = coordinate(spread), y1 = coordinate(spread), x2 = coordinate(spread), y2 = coordinate(spread);
        if (kind == 3) {  // the end point on a corner of the clip rectangle
            x2 = (rng() & 1) ? l : r;
            y2 = (rng() & 1) ? t : b;
        } else if (kind == 4) {  // the start point on an edge
            if (rng() & 1)
                x1 = (rng() & 1) ? l : r;
            else
                y1 = (rng() & 1) ? t : b;
        }
        const int32_t dx = int32_t(uint32_t(x2) - uint32_t(x1)), dy = int32_t(uint32_t(y2) - uint32_t(y1));
        if (dx == 0 || dy == 0 || (dx >= -1 && dx <= 1 && dy >= -1 && dy <= 1)) continue;
        SCOPED_TRACE(testing::Message() << x1 << "," << y1 << " -> " << x2 << "," << y2 << " clip " << l << "," << t
                                        << "," << r << "," << b);

        ReferenceSegment s{x1, y1, x2, y2};
        const ReferenceClip result = referenceClip(s, clip);
        Pixels want;
        Sites sites;
        if (result == ReferenceClip::unsettled) {
            sites = {"ui 1865"};
            ++unsettled;
        } else if (result == ReferenceClip::accepted) {
            const bool endKept = s.x2 == x2 && s.y2 == y2;
            if (s.x1 != s.x2 || s.y1 != s.y2)
                want = runPixels(s.x1, s.y1, s.x2, s.y2, endKept);
            else if (!endKept)
                want = {{s.x1, s.y1}};
            drawn += !want.empty();
        }
        frame.fill(0);
        LogCapture log;
        drawLine(lib, frame, lineOrder(x1, y1, x2, y2), clip);
        ASSERT_EQ(changedPixels(frame), want);
        ASSERT_EQ(log.sites(), sites);
    }
    EXPECT_TRUE(frame.guardsIntact());
    EXPECT_GT(drawn, 1000) << unsettled;  // the sample really exercises clipping
    EXPECT_GT(unsettled, 0);  // and the five-pass limit
}

TEST(DrawLine, ClipperGivesTheReferencePointsForFarEndPoints) {
    std::mt19937_64 rng(13);
    for (int i = 0; i < 50000; ++i) {
        const int32_t x1 = int32_t(uint32_t(rng())), y1 = int32_t(uint32_t(rng())), x2 = int32_t(uint32_t(rng())),
                      y2 = int32_t(uint32_t(rng()));
        const int32_t a = int32_t(uint32_t(rng()) >> 2) - (1 << 29), b = int32_t(uint32_t(rng()) >> 2) - (1 << 29);
        const UiClipRect clip{std::min(a, b), std::min(a, b) / 2, std::max(a, b), std::max(a, b) / 3};
        if (x1 == x2 || y1 == y2) continue;
        ui::LineSegment got{x1, y1, x2, y2};
        ReferenceSegment want{x1, y1, x2, y2};
        const ui::ClipResult result = ui::clipLine(got, clip);
        const ReferenceClip reference = referenceClip(want, clip);
        ASSERT_EQ(int(result), int(reference)) << x1 << "," << y1 << " -> " << x2 << "," << y2;
        if (reference != ReferenceClip::accepted) continue;
        ASSERT_EQ(got.x1, want.x1);
        ASSERT_EQ(got.y1, want.y1);
        ASSERT_EQ(got.x2, want.x2);
        ASSERT_EQ(got.y2, want.y2);
    }
}

struct FailureCase {
    const char *name;
    int32_t x1, y1, x2, y2;
    UiClipRect clip;
    bool nullPixels;
    Sites sites;
};

constexpr UiClipRect kEverything{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};

const FailureCase kFailures[] = {
    {"single pixel outside the image", 70, 5, 70, 5, kEverything, false, {"imgbuf 99", "ui 1947"}},
    {"vertical outside the image", 70, 0, 70, 10, kEverything, false, {"imgbuf 99", "ui 2010"}},
    {"horizontal outside the image", 0, 70, 10, 70, kEverything, false, {"imgbuf 99", "ui 2072"}},
    {"sloped partly outside the image", 60, 0, 70, 5, kEverything, false, {"imgbuf 99", "ui 2183"}},
    {"sloped from a negative start", -3, 0, 10, 5, kEverything, false, {"imgbuf 99", "ui 2183"}},
    {"clipped to one pixel outside the image", 100, 100, 103, 101, {100, 100, 100, 100}, false,
     {"imgbuf 99", "ui 2131"}},
    {"end on a clip corner never settles", -6, 20, 19, -2, {-18, -18, 19, -2}, false, {"ui 1865"}},
    {"null pixels: single", 5, 5, 5, 5, kEverything, true, {"ui 1947"}},
    {"null pixels: vertical", 5, 5, 5, 9, kEverything, true, {"ui 2010"}},
    {"null pixels: horizontal", 5, 5, 9, 5, kEverything, true, {"ui 2072"}},
    {"null pixels: sloped", 5, 5, 9, 7, kEverything, true, {"ui 2183"}},
    {"null pixels: clipped to one pixel", 20, 20, 23, 21, {20, 20, 20, 20}, true, {"ui 2131"}},
};

TEST(DrawLine, FailuresAreReportedBeforeAnyPixel) {
    Library lib;
    for (const FailureCase &c : kFailures) {
        SCOPED_TRACE(c.name);
        Frame frame(64, 64);
        uint32_t *pixels = frame.image().pixels;
        if (c.nullPixels) frame.image().pixels = nullptr;
        LogCapture log;
        drawLine(lib, frame, lineOrder(c.x1, c.y1, c.x2, c.y2), c.clip);
        frame.image().pixels = pixels;
        EXPECT_EQ(log.sites(), c.sites);
        for (const Report &r : log.reports()) {
            EXPECT_EQ(r.level, "ERROR");
            EXPECT_EQ(r.text, kInternalError);
        }
        EXPECT_TRUE(changedPixels(frame).empty());
        EXPECT_TRUE(frame.markedTiles().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(DrawLine, FailedTileMarkingLeavesThePixels) {
    Library lib;
    Frame frame(64, 64);
    frame.dirty().rows = 0;
    LogCapture log;
    drawLine(lib, frame, lineOrder(0, 0, 10, 3), frame.fullClip());
    frame.dirty().rows = 2;
    EXPECT_EQ(log.sites(), Sites({"dirtybuf 114"}));
    EXPECT_EQ(changedPixels(frame), runPixels(0, 0, 10, 3, true));
    EXPECT_EQ(frame.dirty().changed, 0);
}

// Extreme coordinates, wrapped differences and inverted or enormous clip
// rectangles: only checked pixels are written, and only known reports made.
TEST(DrawLine, HostileCoordinatesStayInsideTheImage) {
    Library lib;
    const int32_t values[] = {INT32_MIN, INT32_MIN + 1, -33, -1, 0, 1, 31, 63, 64, INT32_MAX - 1, INT32_MAX};
    const UiClipRect clips[] = {{0, 0, 63, 63}, kEverything, {40, 40, 10, 10}, {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN},
                                {INT32_MIN, 0, 63, INT32_MAX}};
    const std::set<std::string> known = {"imgbuf 99", "ui 1947", "ui 2010", "ui 2072", "ui 2131", "ui 2183", "ui 1865"};
    Frame frame(64, 64);
    for (const UiClipRect &clip : clips)
        for (int32_t x1 : values)
            for (int32_t y1 : values)
                for (int32_t x2 : values)
                    for (int32_t y2 : values) {
                        LogCapture log;
                        drawLine(lib, frame, lineOrder(x1, y1, x2, y2, 6), clip);
                        for (const std::string &site : log.sites()) ASSERT_TRUE(known.count(site)) << site;
                    }
    EXPECT_TRUE(frame.guardsIntact());

    // The origin wraps the coordinates the same way.
    frame.surface().originEnabled = 1;
    frame.surface().originX = INT32_MIN;
    frame.surface().originY = INT32_MAX;
    for (int32_t x : values) drawLine(lib, frame, lineOrder(x, x, int32_t(0u - uint32_t(x)), x / 3, 6), kEverything);
    EXPECT_TRUE(frame.guardsIntact());
}

}  // namespace
