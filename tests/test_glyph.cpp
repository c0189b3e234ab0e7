// drawGlyph: clipping on every side, the byte-wise inner loop, transparency
// and the image check.  Glyph records sit at the end of a readable page, so
// reading one byte past a bitmap faults.
#include <gtest/gtest.h>

#include <climits>

#include "frame.h"
#include "glyph_cache.h"
#include "library.h"
#include "log_capture.h"
#include "glyph.h"

using namespace ui32test;

namespace {

constexpr uint32_t kBack = 0x111111;
constexpr uint32_t kInk = 0xabcdef;

// A cx x cy glyph with a full first row and pseudo-random bits below.
TestGlyph patterned(int cx, int cy, int16_t x = 0, int16_t y = 0) {
    TestGlyph g{x, y, {}};
    uint32_t seed = 0x2545f491u + uint32_t(cx * 131 + cy);
    for (int r = 0; r < cy; ++r) {
        std::string row;
        for (int c = 0; c < cx; ++c) {
            seed = seed * 1103515245u + 12345u;
            row += (r == 0 || (seed >> 16) % 3 != 0) ? '#' : '.';
        }
        g.rows.push_back(row);
    }
    return g;
}

std::vector<uint32_t> modelFrame(const Frame &frame, const TestGlyph &g, int32_t px, int32_t py, const UiRect &clip) {
    std::vector<uint32_t> out = frame.pixels();
    for (auto [x, y] : glyphPixels(g, px, py, clip, frame.width(), frame.height()))
        out[size_t(y) * size_t(frame.width()) + size_t(x)] = kInk;
    return out;
}

// Draws g at (px, py) and compares the whole frame with the model.
void expectModel(const TestGlyph &g, int32_t px, int32_t py, const UiRect &clip) {
    LogCapture log;
    Frame frame(40, 24, kBack);
    const std::vector<uint32_t> expected = modelFrame(frame, g, px, py, clip);
    GuardedInput record(glyphRecord(g));
    ui::drawGlyph(frame.image(), px, py, ui::viewGlyph(record.data()), clip, kInk);
    EXPECT_EQ(frame.pixels(), expected);
    EXPECT_TRUE(log.reports().empty());
    EXPECT_TRUE(frame.markedTiles().empty());
    EXPECT_TRUE(frame.guardsIntact());
}

struct ClipCase {
    const char *name;
    UiRect clip;
};

// The glyph: 20 x 6 with offsets (-3, -2), drawn at (10, 8): pixels 7-26, rows 6-11.
const ClipCase kClipCases[] = {
    {"unclipped", {0, 0, 40, 24}},
    {"left by 3 columns", {10, 0, 40, 24}},
    {"left by 10 columns", {17, 0, 40, 24}},
    {"right", {0, 0, 15, 24}},
    {"top by 2 rows", {0, 8, 40, 16}},
    {"bottom", {0, 0, 40, 9}},
    {"inside one source byte", {9, 7, 4, 3}},
    {"clip larger than the image", {-50, -50, 500, 500}},
    {"zero width", {10, 8, 0, 10}},
    {"zero height", {10, 8, 10, 0}},
    {"negative width", {10, 8, -4, 10}},
    {"ends where the glyph starts", {0, 0, 7, 24}},
    {"below the glyph", {0, 12, 40, 12}},
};

TEST(DrawGlyph, ClipsOnEverySideWithNegativeOffsets) {
    Library lib;
    const TestGlyph g = patterned(20, 6, -3, -2);
    for (const ClipCase &c : kClipCases) {
        SCOPED_TRACE(c.name);
        expectModel(g, 10, 8, c.clip);
    }
}

// Every width up to 17 with every left and right cut: leading partial byte,
// whole bytes and trailing partial byte in all combinations.
TEST(DrawGlyph, EveryCutOfEveryWidthMatchesTheModel) {
    Library lib;
    for (int cx = 1; cx <= 17; ++cx) {
        const TestGlyph g = patterned(cx, 3);
        for (int left = 0; left < cx; ++left)
            for (int right = left + 1; right <= cx; right += std::max(1, cx / 4)) {
                SCOPED_TRACE(testing::Message() << "cx " << cx << " columns " << left << "-" << right);
                expectModel(g, 5, 2, UiRect{5 + left, 0, right - left, 24});
            }
    }
}

struct RawCase {
    const char *name;
    std::vector<uint8_t> bitmap;  // one row
    uint16_t cx;
    int32_t clipLeft;            // glyph drawn at x = 4
    int32_t expectedColumn;      // the only pixel drawn
};

// Pad and clipped bits set in the bitmap must never show.
const RawCase kRawCases[] = {
    {"cx 9 uses only the top bit of the second byte", {0x00, 0xff}, 9, 0, 12},
    {"3 columns clipped: starts at bit 0x10", {0xf0, 0x00}, 16, 7, 7},
    {"10 columns clipped: starts at bit 0x20 of byte 2", {0xff, 0xe0}, 16, 14, 14},
};

TEST(DrawGlyph, StartsAtTheRightBitAndIgnoresPadBits) {
    Library lib;
    for (const RawCase &c : kRawCases) {
        SCOPED_TRACE(c.name);
        LogCapture log;
        Frame frame(32, 4, kBack);
        GuardedInput guarded(rawGlyphRecord(0, 0, c.cx, 1, c.bitmap));
        ui::drawGlyph(frame.image(), 4, 1, ui::viewGlyph(guarded.data()), UiRect{c.clipLeft, 0, 32, 4}, kInk);
        std::vector<uint32_t> expected(32 * 4, kBack);
        expected[32 + size_t(c.expectedColumn)] = kInk;
        EXPECT_EQ(frame.pixels(), expected);
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(DrawGlyph, VisiblePartOutsideTheImageDrawsNothing) {
    Library lib;
    const TestGlyph g = patterned(12, 5);
    struct Case {
        const char *name;
        int32_t px, py;
        UiRect clip;
    } cases[] = {
        {"past the right edge", 30, 2, {0, 0, 100, 100}},
        {"past the bottom edge", 2, 20, {0, 0, 100, 100}},
        {"left of column 0", -2, 2, {-10, 0, 100, 100}},
        {"above row 0", 2, -1, {0, -10, 100, 100}},
        {"beyond 32-bit coordinates", INT32_MAX - 2, 2, {INT32_MAX - 5, 0, 100, 100}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        LogCapture log;
        Frame frame(40, 24, kBack);
        GuardedInput record(glyphRecord(g));
        ui::drawGlyph(frame.image(), c.px, c.py, ui::viewGlyph(record.data()), c.clip, kInk);
        EXPECT_EQ(log.sites(), (Sites{"imgbuf 99", "ui 2451"}));
        EXPECT_EQ(log.reports().back().text, kInternalError);
        EXPECT_EQ(frame.pixels(), std::vector<uint32_t>(40 * 24, kBack));
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(DrawGlyph, NullPixelsGiveOnlyTheGlyphReport) {
    Library lib;
    LogCapture log;
    Frame frame(16, 16);
    imgbuf image = frame.image();
    image.pixels = nullptr;
    GuardedInput record(glyphRecord(patterned(5, 5)));
    ui::drawGlyph(image, 0, 0, ui::viewGlyph(record.data()), UiRect{0, 0, 16, 16}, kInk);
    EXPECT_EQ(log.sites(), (Sites{"ui 2451"}));
    EXPECT_TRUE(frame.guardsIntact());
}

}  // namespace
