// The brush order (slot 2): every brush kind, the pattern phases, the
// refusals with their texts, and which attempts mark tiles.
#include <gtest/gtest.h>

#include <cstring>

#include "frame.h"
#include "guarded_input.h"
#include "library.h"
#include "log_capture.h"
#include "ui.h"

using namespace ui32test;

namespace {

constexpr uint32_t kBack = 0x0f0f0f;
constexpr uint32_t kOne = 0x010203;   // backColor: pattern 1 bits
constexpr uint32_t kZero = 0x0a0b0c;  // foreColor: solid, pattern 0 bits

const uint8_t kMono[8] = {0x81, 0x42, 0x24, 0x18, 0xf0, 0x0f, 0xaa, 0x55};

struct PatBltOrder : ::testing::Test {
    PatBltOrder() {
        order.left = 3, order.top = 2, order.width = 30, order.height = 12;
        order.rop = 0xf0 | 12;
        order.backColor[0] = 1, order.backColor[1] = 2, order.backColor[2] = 3;
        order.foreColor[0] = 10, order.foreColor[1] = 11, order.foreColor[2] = 12;
    }
    void draw(UiClipRect clip = UiClipRect{0, 0, 39, 19}) {
        lib.slot<UiPatBltFn>(UI_SLOT_PAT_BLT)(&frame.surface(), &order, &clip);
        EXPECT_TRUE(frame.guardsIntact());
    }
    void reset() {
        frame.fill(kBack);
        frame.clearTiles();
        log.clear();
    }
    // The frame expected when the clipped rectangle r takes colourAt(x, y).
    template <typename F>
    std::vector<uint32_t> expected(UiRect r, F colourAt) const {
        std::vector<uint32_t> out(size_t(frame.width() * frame.height()), kBack);
        for (int32_t y = r.top; y < r.top + r.height; ++y)
            for (int32_t x = r.left; x < r.left + r.width; ++x) out[size_t(y * frame.width() + x)] = colourAt(x, y);
        return out;
    }
    // An 8x8 monochrome pattern anchored at the brush origin.
    std::vector<uint32_t> monoExpected(UiRect r, const uint8_t *pattern) const {
        const int32_t ox = order.brushOrgX, oy = order.brushOrgY;
        return expected(r, [&](int32_t x, int32_t y) {
            return (pattern[(oy + y) & 7] & (0x80 >> ((ox + x) & 7))) ? kOne : kZero;
        });
    }

    Library lib;
    LogCapture log;
    Frame frame{40, 20, kBack};
    UiPatBltOrder order{};
};

TEST_F(PatBltOrder, MonochromeBrushesFollowTheBrushOrigin) {
    GuardedInput cached(kMono, 8);
    struct Case {
        const char *name;
        int32_t style;
        uint8_t hatch;
        const uint8_t *pattern;
    } cases[] = {
        {"hatch 0", 2, 0, kHatchPatterns},          {"hatch 1", 2, 1, kHatchPatterns + 8},
        {"hatch 2", 2, 2, kHatchPatterns + 16},     {"hatch 3", 2, 3, kHatchPatterns + 24},
        {"hatch 4", 2, 4, kHatchPatterns + 32},     {"hatch 5, the sixth", 2, 5, kHatchPatterns + 40},
        {"pattern in the order", 3, 0, kMono},      {"cached monochrome", 0x81, 0, kMono},
        {"cached, other high bits", 0x181, 0, kMono},
    };
    const struct {
        int32_t orgX, orgY;
        UiClipRect clip;
    } placements[] = {
        {0, 0, {0, 0, 39, 19}}, {0, 0, {13, 5, 39, 19}}, {5, 3, {0, 0, 39, 19}}, {-2, -1, {4, 3, 39, 19}}};
    for (const Case &c : cases) {
        for (const auto &p : placements) {
            SCOPED_TRACE(testing::Message() << c.name << ", origin " << p.orgX << "," << p.orgY << " clip left "
                                            << p.clip.left);
            reset();
            order.brushStyle = c.style;
            std::memcpy(order.brushBytes, kMono, 8);
            order.brushBytes[0] = c.style == 2 ? c.hatch : kMono[0];
            order.brushData = cached.data();
            order.brushOrgX = p.orgX, order.brushOrgY = p.orgY;
            draw(p.clip);
            const UiRect r{std::max(3, p.clip.left), std::max(2, p.clip.top), 33 - std::max(3, p.clip.left),
                           14 - std::max(2, p.clip.top)};
            EXPECT_EQ(frame.pixels(), monoExpected(r, c.pattern));
            EXPECT_TRUE(log.reports().empty());
            EXPECT_EQ(frame.markedTiles(), (std::vector<int>{0, 1}));
        }
    }
}

TEST_F(PatBltOrder, NegativePhaseIsRefusedYetTilesAreMarked) {
    order.brushStyle = 3;
    for (auto [orgX, orgY, site] : {std::tuple{-20, 0, "ui 1315"}, std::tuple{0, -9, "ui 1318"}}) {
        reset();
        order.brushOrgX = orgX, order.brushOrgY = orgY;
        draw();
        EXPECT_EQ(log.sites(), Sites{site});
        EXPECT_EQ(frame.pixels(), std::vector<uint32_t>(40 * 20, kBack));
        EXPECT_EQ(frame.markedTiles(), (std::vector<int>{0, 1}));
    }
}

TEST_F(PatBltOrder, SolidBrushThroughTheRasterOperation) {
    order.brushStyle = 0;
    for (auto [rop, colour] : {std::pair{12, kZero}, std::pair{0x1c, kZero}, std::pair{0x66, kBack ^ kZero},
                               std::pair{0x55, 0xffffff - kBack}}) {
        reset();
        order.rop = rop;
        draw(UiClipRect{0, 0, 20, 19});
        EXPECT_EQ(frame.pixels(), expected(UiRect{3, 2, 18, 12}, [c = colour](int32_t, int32_t) { return c; })) << rop;
        EXPECT_EQ(frame.markedTiles(), (std::vector<int>{0}));
    }
    reset();
    order.rop = 12;
    frame.image().height = 10;  // the rectangle reaches row 13: the fill fails, no tile is marked
    draw();
    frame.image().height = 20;
    EXPECT_EQ(log.sites(), (Sites{"imgbuf 99", "ui 1250"}));
    EXPECT_TRUE(frame.markedTiles().empty());
}

TEST_F(PatBltOrder, ColourPatternRowsWrapAfterEightPixels) {
    uint32_t pattern[64];
    for (int i = 0; i < 64; ++i) pattern[i] = uint32_t(0x100000 * (i / 8) + i % 8 + 1);
    uint8_t bytes[257];
    std::memcpy(bytes + 1, pattern, 256);
    GuardedInput guarded(bytes, sizeof bytes);  // the pattern is not 4-byte aligned
    order.brushStyle = 0x85;
    order.brushData = guarded.data() + 1;
    order.brushOrgX = 3, order.brushOrgY = 5;  // not used
    order.rop = 6;                              // not used
    draw(UiClipRect{0, 0, 13, 19});             // width 11: columns 0-7 then 0-2
    EXPECT_EQ(frame.pixels(), expected(UiRect{3, 2, 11, 12}, [&](int32_t x, int32_t y) {
                  return pattern[8 * ((y - 2) % 8) + (x - 3) % 8];
              }));
    EXPECT_TRUE(log.reports().empty());
    EXPECT_EQ(frame.markedTiles(), (std::vector<int>{0}));

    // Outside the image, or no pixels: refused, yet the tiles are marked.
    reset();
    order.left = 30;
    draw(UiClipRect{0, 0, 100, 100});
    EXPECT_EQ(log.sites(), (Sites{"imgbuf 99", "ui 1387"}));
    EXPECT_EQ(frame.markedTiles(), (std::vector<int>{0, 1}));
    reset();
    order.left = 3;
    uint32_t *pixels = frame.image().pixels;
    frame.image().pixels = nullptr;
    draw();
    frame.image().pixels = pixels;
    EXPECT_EQ(log.sites(), (Sites{"ui 1387"}));
    EXPECT_EQ(frame.pixels(), std::vector<uint32_t>(40 * 20, kBack));
    EXPECT_EQ(frame.markedTiles(), (std::vector<int>{0, 1}));
}

TEST_F(PatBltOrder, RefusedBrushesDrawAndMarkNothing) {
    const uint8_t data[64 * 4] = {};
    const struct {
        int32_t style;
        uint8_t hatch;
        const uint8_t *brushData;
        const char *site;
        const char *text;
    } cases[] = {
        {1, 0, data, "ui 1531", "Unsupported brush 1."},
        {4, 0, data, "ui 1531", "Unsupported brush 4."},
        {0x40, 0, data, "ui 1531", "Unsupported brush 64."},
        {-1, 0, data, "ui 1500", "Brush style 0xffffffff."},  // bit 0x80 is tested first
        {0x83, 0, data, "ui 1500", "Brush style 0x0083."},
        {0x80, 0, data, "ui 1500", "Brush style 0x0080."},
        {0x81, 0, nullptr, "ui 1476", kInternalError},
        {0x83, 0, nullptr, "ui 1476", kInternalError},
        {0x85, 0, nullptr, "ui 1476", kInternalError},
        {2, 6, data, "ui 1522", kInternalError},
        {2, 255, data, "ui 1522", kInternalError},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        reset();
        order.brushStyle = c.style;
        order.brushBytes[0] = c.hatch;
        order.brushData = c.brushData;
        draw();
        EXPECT_EQ(log.sites(), Sites{c.site});
        EXPECT_EQ(log.reports()[0].text, c.text);
        EXPECT_EQ(frame.pixels(), std::vector<uint32_t>(40 * 20, kBack));
        EXPECT_TRUE(frame.markedTiles().empty());
    }
    // Without a hatch table no hatch exists.
    reset();
    ui::settings.hatchPatterns = nullptr;
    order.brushStyle = 2, order.brushBytes[0] = 0;
    draw();
    EXPECT_EQ(log.sites(), (Sites{"ui 1522"}));
    EXPECT_TRUE(frame.markedTiles().empty());
}

TEST_F(PatBltOrder, EmptyOrClippedAwayRectanglesDoNothing) {
    order.brushStyle = 1;  // would be reported if reached
    for (auto [w, h, clip] : {std::tuple{0, 5, UiClipRect{0, 0, 39, 19}}, std::tuple{5, -1, UiClipRect{0, 0, 39, 19}},
                              std::tuple{5, 5, UiClipRect{34, 0, 39, 19}}}) {
        order.width = w, order.height = h;
        draw(clip);
    }
    EXPECT_TRUE(log.reports().empty());
    EXPECT_TRUE(frame.markedTiles().empty());
}

}  // namespace
