// The sixteen raster operations against their truth tables, through every
// slot that applies them; the 8x8 pattern fill; and the brushes of PatBlt.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <random>

#include "bytes.h"
#include "core/fills.h"
#include "core/rop.h"
#include "core/settings.h"
#include "frame.h"
#include "library.h"

namespace {

using kit::Trail;
using S = ui::Site;

// Bit k of the result is bit (2 * source bit k + destination bit k) of the
// operation index, for each of the 24 colour bits.
uint32_t truth(int32_t index, uint32_t s, uint32_t d) {
    uint32_t out = 0;
    for (int k = 0; k < 24; ++k) out |= uint32_t((index >> (2 * ((s >> k) & 1) + ((d >> k) & 1))) & 1) << k;
    return out;
}

// The per-pixel table on whole words (its 24-bit truth tables are met through
// LineTo's pen in test_line and through every slot's spans below): not(v) is
// 0xffffff - v on the whole word; the other operators act on all 32 bits.
TEST(RasterOperations, TableActsOnWholeWords) {
    const uint32_t words[][4] = {{9, 0x00ff00, 0x123456, 0xed34a9}, {3, 0x01000000, 0, 0xffffffff}, {5, 0, 0x01123456, 0xffedcba9},
                                 {6, 0x01000000, 1, 0x01000001},    {15, 0xff000000, 7, 0xffffff},   {12, 0xff000001, 5, 0xff000001}};
    for (const auto &w : words) {
        uint32_t d = w[2];
        ui::rop2Table[w[0]](&w[1], &d);
        EXPECT_EQ(d, w[3]) << w[0];
    }
}

// Each slot over the rectangle (8, 4, 18 + code % 4, 9) of a 40 x 24 frame of
// random colours (rows of every length modulo 4), and the source value it
// combines with the pixel at (x, y).
struct RopSlot {
    const char *name;
    std::function<void(const test::Library &, kit::Frame &, int32_t code)> draw;
    std::function<uint32_t(const std::vector<uint32_t> &before, int32_t x, int32_t y)> source;
};

TEST(RasterOperations, EverySlotAppliesTheOperationOfTheCodesLowBits) {
    test::Library lib;
    std::mt19937 rng(11);
    std::vector<uint32_t> before(40 * 24), bitmap(32 * 16);  // the bitmap: 32 x 16, rows stored bottom-up
    for (uint32_t &p : before) p = rng() & 0xffffff;
    for (uint32_t &p : bitmap) p = rng() & 0xffffff;
    const kit::GuardedInput bmp(kit::Bytes(reinterpret_cast<uint8_t *>(&bitmap[0]), reinterpret_cast<uint8_t *>(&bitmap[0] + bitmap.size())));
    // ScrBlt's source overlaps the destination: each direction against a copy through a separate buffer.
    const auto scr = [](int32_t dx, int32_t dy) {
        return RopSlot{"scrBlt", [=](auto &l, auto &f, int32_t code) { l.scrBlt(f.surface(), {8, 4, 18 + code % 4, 9, code, 8 + dx, 4 + dy}, f.all()); },
                       [=](auto &b, int32_t x, int32_t y) { return b[size_t((y + dy) * 40 + x + dx)]; }};
    };
    const RopSlot slots[] = {
        {"dstBlt", [](auto &l, auto &f, int32_t code) { l.dstBlt(f.surface(), {8, 4, 18 + code % 4, 9, code}, f.all()); },
         [](auto &, int32_t, int32_t) { return 0xffffffu; }},
        {"patBlt", [](auto &l, auto &f, int32_t code) { l.patBlt(f.surface(), {8, 4, 18 + code % 4, 9, code, {}, {0x5a, 0xc3, 0x96}}, f.all()); },
         [](auto &, int32_t, int32_t) { return 0x5ac396u; }},
        scr(1, 0), scr(-1, 0), scr(0, 1), scr(0, -1), scr(3, 2), scr(-3, -2), scr(3, -2), scr(-3, 2),
        {"memBlt", [&](auto &l, auto &f, int32_t code) {
             l.memBlt(f.surface(), {0, 8, 4, 18 + code % 4, 9, code, 2, 3, 0, 32, 16, reinterpret_cast<const uint32_t *>(bmp.data())}, f.all()); },
         [&](auto &, int32_t x, int32_t y) { return bitmap[size_t((15 - (y - 4 + 3)) * 32 + x - 8 + 2)]; }},
    };
    for (const RopSlot &slot : slots)
        for (int32_t index = 0; index < 16; ++index) {
            SCOPED_TRACE(testing::Message() << slot.name << " #" << (&slot - slots) << ", operation " << index);
            kit::Frame f(40, 24);
            f.setPixels(before);
            kit::LogCapture log;
            slot.draw(lib, f, index * 0x11);
            std::vector<uint32_t> want = before;
            for (int32_t y = 4; y < 13; ++y)
                for (int32_t x = 8; x < 26 + index % 4; ++x) want[size_t(y * 40 + x)] = truth(index, slot.source(before, x, y), before[size_t(y * 40 + x)]);
            EXPECT_EQ(f.pixels(), want);
            EXPECT_TRUE(log.trail().empty());
            EXPECT_EQ(f.markedTiles(), (std::vector<int>{0}));
            EXPECT_TRUE(f.guardsIntact());
        }
    for (int32_t index = 0; index < 16; ++index) {  // leaving the image: copy is refused by the solid fill
        kit::Frame f(40, 24, 3);
        kit::LogCapture log;
        lib.dstBlt(f.surface(), {30, 4, 21, 9, index}, UiClipRect{0, 0, 99, 99});
        lib.patBlt(f.surface(), {30, 4, 21, 9, index | 0x70}, UiClipRect{0, 0, 99, 99});
        const S fill = index == 12 ? S::fillSolid : S::fillRop;
        EXPECT_EQ(log.trail(), kit::trail({S::imageWrite, fill, S::imageWrite, fill})) << index;
        EXPECT_EQ(f.pixels(), std::vector<uint32_t>(40 * 24, 3));
        EXPECT_TRUE(f.markedTiles().empty());
    }
}

constexpr uint32_t kBack = 0x0f0f0f, kOne = 0x010203, kZero = 0x0a0b0c;
const uint8_t kMono[8] = {0x81, 0x42, 0x24, 0x18, 0xf0, 0x0f, 0xaa, 0x55};

// A PatBlt of (3, 2, 30, 12) on a 40 x 20 frame of kBack.
UiPatBltOrder brush(int32_t style, int32_t rop = 12) {
    UiPatBltOrder o{3, 2, 30, 12, rop, {1, 2, 3}, {10, 11, 12}};
    o.brushStyle = style;
    std::memcpy(o.brushBytes, kMono, 8);
    return o;
}

// Monochrome brushes anchor their pattern at the brush origin, through the
// operation; the colour brush at the clipped rectangle, copied.
TEST(Brushes, PatternsRepeatEveryEightPixelsFromTheirAnchor) {
    test::Library lib;
    const kit::GuardedInput mono(kit::Bytes(kMono, kMono + 8));
    kit::Bytes bytes;
    for (uint32_t i = 0; i < 64; ++i) bytes.pixel4(0x100000 * (i / 8) + i % 8 + 1);
    const kit::GuardedInput colour(bytes);
    const struct {
        int32_t style;
        uint8_t byte0;
        const uint8_t *pattern;
    } kinds[] = {{2, 0, kit::kHatchPatterns},      {2, 1, kit::kHatchPatterns + 8}, {2, 2, kit::kHatchPatterns + 16},
                 {2, 3, kit::kHatchPatterns + 24}, {2, 4, kit::kHatchPatterns + 32}, {2, 5, kit::kHatchPatterns + 40},
                 {3, 0x81, kMono},                 {0x81, 0x81, kMono},            {0x91, 0x81, kMono},  {0x85, 0, nullptr}};
    const struct {
        int32_t x, y;
        UiClipRect clip;
    } origins[] = {{0, 0, {0, 0, 39, 19}}, {0, 0, {13, 5, 39, 19}}, {5, 3, {0, 0, 39, 19}}, {-2, -1, {4, 3, 39, 19}},
                   {INT32_MAX, INT32_MAX - 1, {0, 0, 39, 19}}, {1, 2, {0, 0, 3, 19}}, {1, 2, {0, 0, 9, 19}},
                   {1, 2, {0, 0, 10, 19}}, {1, 2, {0, 0, 11, 19}}, {1, 2, {0, 0, 18, 19}}, {1, 2, {0, 0, 19, 19}}};
    for (const auto &k : kinds)
        for (const auto &o : origins)
            for (int32_t rop : {12, 0x66}) {
                SCOPED_TRACE(testing::Message() << "style " << k.style << " " << int(k.byte0) << ", origin " << o.x << "," << o.y
                                                << ", clip " << o.clip.left << "-" << o.clip.right << ", rop " << rop);
                kit::Frame f(40, 20);
                std::vector<uint32_t> want;  // a background that differs from row to row
                for (int32_t i = 0; i < 40 * 20; ++i) want.push_back((kBack + uint32_t(i) * 0x010305) & 0xffffff);
                f.setPixels(want);
                kit::LogCapture log;
                UiPatBltOrder order = brush(k.style, rop);
                order.brushBytes[0] = k.byte0, order.brushData = k.pattern ? mono.data() : colour.data();
                order.brushOrgX = o.x, order.brushOrgY = o.y;
                lib.patBlt(f.surface(), order, o.clip);
                const int32_t left = std::max(3, o.clip.left), top = std::max(2, o.clip.top);
                for (int32_t y = top; y < 14; ++y)
                    for (int32_t x = left; x < std::min(33, o.clip.right + 1); ++x) {
                        const bool one = k.pattern && k.pattern[(int64_t(o.y) + y) % 8] & (0x80 >> ((int64_t(o.x) + x) % 8));
                        uint32_t &p = want[size_t(y * 40 + x)];
                        p = k.pattern ? truth(rop & 15, one ? kOne : kZero, p) : uint32_t(0x100000 * ((y - top) % 8) + (x - left) % 8 + 1);
                    }
                EXPECT_EQ(f.pixels(), want);
                EXPECT_TRUE(log.trail().empty());
                EXPECT_EQ(f.markedTiles(), (o.clip.right < 32 ? std::vector<int>{0} : std::vector<int>{0, 1}));
            }
}

// Refused brushes draw nothing; their tiles are marked only when a fill was
// attempted.  Phases outside 0-7 other than negative ones reach the pattern
// fill only directly ('f'): it checks the rectangle, then each phase in turn.
TEST(Brushes, RefusalsAndWhichOfThemMarkTiles) {
    test::Library lib;
    const kit::GuardedInput data(kit::Bytes(256, 0x44));
    const struct {
        int32_t style;
        uint8_t byte0;
        int32_t orgX, orgY, left;
        char setup;  // 'd' no brush data, 'h' no hatch table, 'p' no pixels, 'f' fillPattern8x8 with the phases
        Trail trail;
        std::vector<int> tiles;
    } cases[] = {
        {1, 0, 0, 0, 3, 0, {kit::entry(S::unsupportedBrush, "Unsupported brush 1.")}},
        {0x83, 0, 0, 0, 3, 0, {kit::entry(S::brushStyle, "Brush style 0x0083.")}},
        {-1, 0, 0, 0, 3, 0, {kit::entry(S::brushStyle, "Brush style 0xffffffff.")}},  // bit 0x80 first
        {0x81, 0, 0, 0, 3, 'd', kit::trail({S::noBrushData})},
        {0x85, 0, 0, 0, 3, 'd', kit::trail({S::noBrushData})},
        {2, 6, 0, 0, 3, 0, kit::trail({S::hatch})},
        {2, 255, 0, 0, 3, 0, kit::trail({S::hatch})},
        {2, 0, 0, 0, 3, 'h', kit::trail({S::hatch})},
        {3, 0, -20, 0, 3, 0, kit::trail({S::xPhaseLow}), {0, 1}},
        {0x81, 0, 0, -9, 3, 0, kit::trail({S::yPhaseLow}), {0, 1}},
        {2, 0, -20, -9, 3, 0, kit::trail({S::xPhaseLow}), {0, 1}},
        {3, 0, 0, 0, 30, 0, kit::trail({S::imageWrite, S::fillPattern}), {0, 1}},
        {0x85, 0, 0, 0, 30, 0, kit::trail({S::imageWrite, S::colourPattern}), {0, 1}},
        {0x85, 0, 0, 0, 3, 'p', kit::trail({S::colourPattern}), {0, 1}},
        {0, 0, 0, 0, 3, 'p', kit::trail({S::fillSolid})},
        {3, 0, 8, 8, 3, 'f', kit::trail({S::xPhaseHigh})},  {3, 0, -1, 8, 3, 'f', kit::trail({S::xPhaseLow})},
        {3, 0, 7, 8, 3, 'f', kit::trail({S::yPhaseHigh})},  {3, 0, 0, -1, 3, 'f', kit::trail({S::yPhaseLow})},
        {3, 0, 9, 0, 30, 'f', kit::trail({S::imageWrite, S::fillPattern})},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "style " << c.style << " " << int(c.byte0) << " " << c.trail.back());
        kit::Frame f(40, 20, kBack);
        uint32_t *pixels = f.image().pixels;
        if (c.setup == 'p') f.image().pixels = nullptr;
        ui::settings.hatchPatterns = c.setup == 'h' ? nullptr : kit::kHatchPatterns;
        UiPatBltOrder order = brush(c.style);
        order.brushBytes[0] = c.byte0, order.brushData = c.setup == 'd' ? nullptr : data.data();
        order.brushOrgX = c.orgX, order.brushOrgY = c.orgY, order.left = c.left;
        kit::LogCapture log;
        if (c.setup == 'f')
            ui::fillPattern8x8(f.image(), order, {c.left, 2, 30, 12}, c.orgX, c.orgY, kMono);
        else
            lib.patBlt(f.surface(), order, UiClipRect{0, 0, 99, 99});
        f.image().pixels = pixels;
        EXPECT_EQ(log.trail(), c.trail);
        EXPECT_EQ(f.pixels(), std::vector<uint32_t>(40 * 20, kBack));
        EXPECT_EQ(f.markedTiles(), c.tiles);
        EXPECT_TRUE(f.guardsIntact());
    }
}

}  // namespace
