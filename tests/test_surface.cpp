// The image-buffer checks, the tile-marking rule, and the origin translation
// and clipping that every clipped slot shares: each slot against one model of
// the clipped rectangle.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <optional>
#include <tuple>

#include "bytes.h"
#include "core/surface.h"
#include "frame.h"
#include "library.h"
#include "records.h"

namespace {

using kit::Trail;
using S = ui::Site;

TEST(ImageBuffer, WriteAndReadPointersAdmitOnlyRectanglesInsideTheImage) {
    test::Library lib;
    kit::Frame f(100, 50);
    const std::tuple<int32_t, int32_t, int32_t, int32_t, bool> cases[] = {
        {0, 0, 100, 50, true}, {99, 49, 1, 1, true},  {100, 50, 0, 0, true},  {0, 0, 101, 50, false}, {0, 0, 100, 51, false},
        {100, 0, 1, 1, false}, {-1, 0, 1, 1, false},  {0, -1, 1, 1, false},   {5, 0, -1, 1, false},   {0, 5, 1, -1, false},
        {1, 0, INT32_MAX, 1, false}, {0, 1, 1, INT32_MAX, false}, {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, false}};
    for (const auto &[left, top, width, height, ok] : cases) {
        SCOPED_TRACE(testing::Message() << left << "," << top << " " << width << "x" << height);
        kit::LogCapture log;
        const uint32_t *at = ok ? ui::rowAt(f.image().pixels, f.image().stride, top) + left : nullptr;
        EXPECT_EQ(ui::writePtr(f.image(), left, top, width, height), at);
        EXPECT_EQ(ui::readPtr(f.image(), left, top, width, height), at);
        EXPECT_EQ(log.trail(), ok ? Trail{} : kit::trail({S::imageWrite, S::imageRead}));
    }
    const imgbuf wide{f.image().pixels, 0, 0, 400, UINT32_MAX, 10};  // unsigned sizes: any far edge fits
    EXPECT_EQ(ui::writePtr(wide, 5, 0, INT32_MAX, 1), f.image().pixels + 5);
    kit::LogCapture log;  // no pixels: no address; reported only for a bad rectangle
    const imgbuf none{nullptr, 0, 0, 400, 100, 50};
    EXPECT_EQ(ui::writePtr(none, 0, 0, 10, 10), ui::readPtr(none, 5, 5, 10, 10));
    EXPECT_EQ(ui::writePtr(none, 95, 0, 10, 10), nullptr);
    EXPECT_EQ(log.trail(), kit::trail({S::imageWrite}));
}

TEST(TileMap, MarkRectMarksTheTouchedTilesOrReportsTheRange) {
    test::Library lib;
    const std::tuple<int32_t, int32_t, int32_t, int32_t, std::vector<int>, const char *> cases[] = {  // 4 x 3 tiles
        {0, 0, 1, 1, {0}, nullptr},  {31, 0, 33, 1, {0, 1}, nullptr},  {32, 32, 64, 64, {5}, nullptr},
        {96, 64, 128, 96, {11}, nullptr},  {65, 0, 65, 1, {2}, nullptr},  {-1, -31, 5, 5, {0}, nullptr},  // -1 / 32 is 0
        {0, 0, 128, 96, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, nullptr},  {0, 64, 1, 97, {}, "0,2->1,4 of 4,3"},
        {0, 0, 129, 1, {}, "0,0->5,1 of 4,3"},  {64, 0, 64, 1, {}, "2,0->2,1 of 4,3"},  {0, 32, 1, 32, {}, "0,1->1,1 of 4,3"},
        {-33, 0, 5, 5, {}, "-1,0->1,1 of 4,3"},  {0, -40, 1, 1, {}, "0,-1->1,1 of 4,3"},
        {INT32_MAX - 5, 0, INT32_MAX, 1, {}, "67108863,0->-67108863,1 of 4,3"}};  // right + 31 wraps
    for (const auto &[left, top, right, bottom, tiles, report] : cases) {
        SCOPED_TRACE(testing::Message() << left << "," << top << "->" << right << "," << bottom);
        kit::Frame f(128, 96);
        kit::LogCapture log;
        ui::markRect(f.dirty(), left, top, right, bottom);
        EXPECT_EQ(f.markedTiles(), tiles);
        EXPECT_EQ(f.dirty().changed, report ? 0 : 1);
        EXPECT_EQ(log.trail(), report ? Trail{kit::entry(S::tileRange, report)} : Trail{});
        EXPECT_TRUE(f.guardsIntact());
    }
    kit::LogCapture log;
    dirtybuf none{nullptr, 0, {}, 4, 3};
    ui::markRect(none, 0, 0, 1, 1);
    EXPECT_EQ(log.trail(), Trail{kit::entry(S::tileRange, "0,0->1,1 of 4,3")});
    EXPECT_EQ(none.changed, 0);
}

// ---- Translation and clipping: every clipped slot against one model ----
// (Slot 0, which clips to the image only, is placed across every edge in test_bitmap.)

constexpr int32_t kW = 96, kH = 64;          // 3 x 2 tiles
constexpr int32_t kSrcDx = 20, kSrcDy = 12;  // ScrBlt: the source point from the destination
constexpr int32_t kBmpX = 5, kBmpY = 3, kBmpW = 128, kBmpH = 96;  // MemBlt: source point, bitmap size
uint32_t scene(int32_t x, int32_t y) { return uint32_t(0x10000 + y * 256 + x); }  // all differ
uint32_t picture(int32_t c, int32_t r) { return uint32_t(0x800000 | r << 8 | c); }
int32_t add(int32_t v, int64_t d) { return int32_t(uint32_t(v) + uint32_t(uint64_t(d))); }

std::optional<UiRect> clipModel(const UiRect &r, const UiClipRect &c) {
    if (r.width <= 0 || r.height <= 0) return {};
    const int64_t l = std::max<int64_t>(r.left, c.left), t = std::max<int64_t>(r.top, c.top);
    const int64_t w = std::min(int64_t(r.left) + r.width, c.right + int64_t(1)) - l;
    const int64_t h = std::min(int64_t(r.top) + r.height, c.bottom + int64_t(1)) - t;
    if (w < 1 || h < 1) return {};
    return UiRect{int32_t(l), int32_t(t), int32_t(w), int32_t(h)};
}
bool inside(int64_t l, int64_t t, const UiRect &r, int64_t w, int64_t h) {
    return l >= 0 && t >= 0 && l + r.width <= w && t + r.height <= h;
}

kit::GuardedInput &bitmap() {  // kBmpW x kBmpH pixels, rows stored bottom-up
    static kit::GuardedInput in([] {
        kit::Bytes b;
        for (int32_t r = kBmpH - 1; r >= 0; --r)
            for (int32_t c = 0; c < kBmpW; ++c) b.pixel4(picture(c, r));
        return b;
    }());
    return in;
}

// One clipped slot drawing the rectangle r (buffer coordinates), with (ox, oy)
// added to the coordinates that lie in buffer space; its pixel at (x, y).
struct Slot {
    const char *name;
    S site;       // its report when the rectangle leaves the image
    char shape;   // 'h' / 'v': the rectangle's top row / left column as a line
    void (*draw)(const test::Library &, kit::Frame &, const UiRect &r, const UiClipRect &, int32_t ox, int32_t oy);
    uint32_t (*pixel)(int32_t x, int32_t y, const UiRect &r);
};

UiClipRect edges(const UiRect &r, int32_t ox, int32_t oy) {  // text orders: right and bottom exclusive
    return {add(r.left, ox), add(r.top, oy), add(r.left, ox + int64_t(r.width)), add(r.top, oy + int64_t(r.height))};
}

const Slot kSlots[] = {
    {"dstBlt", S::fillRop, 0, [](auto &lib, auto &f, auto &r, auto &c, int32_t ox, int32_t oy) {
         lib.dstBlt(f.surface(), {add(r.left, ox), add(r.top, oy), r.width, r.height, 0x55}, c); },
     [](int32_t x, int32_t y, auto &) { return 0xffffff - scene(x, y); }},
    {"patBlt", S::fillSolid, 0, [](auto &lib, auto &f, auto &r, auto &c, int32_t ox, int32_t oy) {
         lib.patBlt(f.surface(), {add(r.left, ox), add(r.top, oy), r.width, r.height, 12, {}, {10, 11, 12}}, c); },
     [](int32_t, int32_t, auto &) { return 0x0a0b0cu; }},
    {"scrBlt", S::scrBltDestination, 0, [](auto &lib, auto &f, auto &r, auto &c, int32_t ox, int32_t oy) {
         lib.scrBlt(f.surface(), {add(r.left, ox), add(r.top, oy), r.width, r.height, 0xCC, add(r.left, ox + kSrcDx),
                                  add(r.top, oy + kSrcDy)}, c); },
     [](int32_t x, int32_t y, auto &) { return scene(x + kSrcDx, y + kSrcDy); }},
    {"opaqueRect", S::fillSolid, 0, [](auto &lib, auto &f, auto &r, auto &c, int32_t ox, int32_t oy) {
         lib.opaqueRect(f.surface(), {add(r.left, ox), add(r.top, oy), r.width, r.height, 0x12, 0x34, 0x56}, c); },
     [](int32_t, int32_t, auto &) { return 0x123456u; }},
    {"memBlt", S::memBltDestination, 0, [](auto &lib, auto &f, auto &r, auto &c, int32_t ox, int32_t oy) {
         lib.memBlt(f.surface(), {0, add(r.left, ox), add(r.top, oy), r.width, r.height, 0xCC, kBmpX, kBmpY, 0, kBmpW, kBmpH,
                                  reinterpret_cast<const uint32_t *>(bitmap().data())}, c); },
     [](int32_t x, int32_t y, auto &r) { return picture(x - r.left + kBmpX, y - r.top + kBmpY); }},
    {"drawLine across", S::lineHorizontal, 'h', [](auto &lib, auto &f, auto &r, auto &c, int32_t ox, int32_t oy) {
         lib.drawLine(f.surface(), {add(r.left, ox), add(r.top, oy), add(r.left, ox + int64_t(r.width)), add(r.top, oy), 12, {1, 2, 3}}, c); },
     [](int32_t, int32_t, auto &) { return 0x010203u; }},
    {"drawLine down", S::lineVertical, 'v', [](auto &lib, auto &f, auto &r, auto &c, int32_t ox, int32_t oy) {
         lib.drawLine(f.surface(), {add(r.left, ox), add(r.top, oy), add(r.left, ox), add(r.top, oy + int64_t(r.height)), 0x1C, {1, 2, 3}}, c); },
     [](int32_t, int32_t, auto &) { return 0x010203u; }},
    {"glyphIndex", S::fillSolid, 0, [](auto &lib, auto &f, auto &r, auto &c, int32_t ox, int32_t oy) {
         const UiClipRect e = edges(r, ox, oy);  // the opaque rectangle is the background; no glyphs
         UiGlyphIndexOrder o = kit::glyphIndexOrder(nullptr, e, e.left, e.top, {});
         o.opLeft = e.left, o.opTop = e.top, o.opRight = e.right, o.opBottom = e.bottom, o.opaqueColor[0] = 0x77;
         lib.glyphIndex(f.surface(), o, c); },
     [](int32_t, int32_t, auto &) { return 0x770000u; }},
    {"fastGlyph", S::fillSolid, 0, [](auto &lib, auto &f, auto &r, auto &c, int32_t ox, int32_t oy) {
         static kit::GlyphCache glyphs;
         static const int blank = glyphs.add(0, 0, {"."});
         const UiClipRect e = edges(r, ox, oy);
         UiFastGlyphOrder o = kit::fastGlyphOrder(glyphs.cache(), e, e.left, e.top, uint8_t(blank));
         o.opLeft = e.left, o.opTop = e.top, o.opRight = e.right, o.opBottom = e.bottom, o.opaqueColor[2] = 0x99;
         lib.fastGlyph(f.surface(), o, c); },
     [](int32_t, int32_t, auto &) { return 0x000099u; }},
};

// The trail of a slot that refuses the visible rectangle v of r (empty: silently).
std::optional<Trail> refusal(const Slot &s, const UiRect &v, const UiRect &r) {
    if (s.site == S::scrBltDestination && !inside(v.left + kSrcDx, v.top + kSrcDy, v, kW, kH))
        return kit::trail({S::imageRead, S::scrBltSource});  // the source is checked first
    if (s.site == S::memBltDestination && !inside(v.left - int64_t(r.left) + kBmpX, v.top - int64_t(r.top) + kBmpY, v, kBmpW, kBmpH))
        return Trail{};
    if (!inside(v.left, v.top, v, kW, kH)) return kit::trail({S::imageWrite, s.site});
    return {};
}

constexpr UiClipRect kClip{8, 6, 59, 41}, kImage{0, 0, kW - 1, kH - 1};
const struct ClipCase {
    const char *name;
    UiRect rect;
    UiClipRect clip;
    int32_t mapRows = 2;  // a client's tile map may be smaller than its image
    bool noPixels = false;
} kClipCases[] = {
    {"inside the clip", {20, 10, 30, 20}, kClip},          {"cut on the left", {0, 10, 30, 20}, kClip},
    {"cut on the right", {40, 10, 30, 20}, kClip},         {"cut at the top", {20, 0, 30, 20}, kClip},
    {"cut at the bottom", {20, 30, 30, 20}, kClip},        {"cut on every side", {-10, -10, 120, 90}, kClip},
    {"far corner pixel", {59, 41, 5, 5}, kClip},           {"near corner pixel", {0, 0, 9, 7}, kClip},
    {"wholly left", {-40, 10, 48, 20}, kClip},             {"wholly right", {60, 10, 30, 20}, kClip},
    {"wholly above", {20, -20, 30, 26}, kClip},            {"wholly below", {20, 42, 30, 20}, kClip},
    {"zero width", {20, 10, 0, 20}, kClip},                {"zero height", {20, 10, 30, 0}, kClip},
    {"negative width", {30, 10, -5, 20}, kClip},           {"negative height", {20, 30, 30, -20}, kClip},
    {"inverted clip", {0, 0, kW, kH}, {50, 40, 10, 10}},   {"the whole image", {0, 0, kW, kH}, kImage},
    {"leaving the image on the right", {80, 10, 30, 20}, {0, 0, 199, 199}},
    {"leaving the image at the top", {10, -5, 30, 20}, {-50, -50, kW - 1, kH - 1}},
    {"left near INT32_MAX", {INT32_MAX - 5, 10, 30, 20}, kClip},
    {"left INT32_MIN + 10, right edge 9", {INT32_MIN + 10, 10, INT32_MAX, 20}, kClip},
    {"tile map one row short", {20, 40, 30, 20}, kImage, 1},
    {"no pixels: the slot's report alone", {20, 10, 30, 20}, kClip, 2, true},
};

TEST(Clipping, EveryClippedSlotDrawsAndMarksTheModelsRectangle) {
    test::Library lib;
    const struct {
        uint8_t enabled;
        int32_t x, y;
    } origins[] = {{0, 100, 50}, {1, 100, 50}, {1, INT32_MIN + 7, -3}};
    kit::Frame scenery(kW, kH);
    for (int32_t y = 0; y < kH; ++y)
        for (int32_t x = 0; x < kW; ++x) scenery.at(x, y) = scene(x, y);
    const std::vector<uint32_t> before = scenery.pixels();
    for (const Slot &s : kSlots)
        for (const ClipCase &c : kClipCases)
            for (const auto &o : origins) {
                if ((s.shape == 'h' && c.rect.width < 1) || (s.shape == 'v' && c.rect.height < 1)) continue;
                SCOPED_TRACE(testing::Message() << s.name << ", " << c.name << ", origin " << int(o.enabled) << " " << o.x);
                kit::Frame f(kW, kH);
                f.setPixels(before);
                f.dirty().rows = c.mapRows;
                f.surface().originEnabled = o.enabled, f.surface().originX = o.x, f.surface().originY = o.y;
                uint32_t *pixels = f.image().pixels;
                if (c.noPixels) f.image().pixels = nullptr;
                kit::LogCapture log;
                s.draw(lib, f, c.rect, c.clip, o.enabled ? o.x : 0, o.enabled ? o.y : 0);
                f.image().pixels = pixels;
                const UiRect r = s.shape == 'h' ? UiRect{c.rect.left, c.rect.top, c.rect.width, 1}
                                 : s.shape == 'v' ? UiRect{c.rect.left, c.rect.top, 1, c.rect.height} : c.rect;
                const std::optional<UiRect> v = clipModel(r, c.clip);
                const std::optional<Trail> refused = !v ? std::nullopt
                                                     : c.noPixels ? kit::trail({s.site == S::scrBltDestination ? S::scrBltSource : s.site})
                                                                  : refusal(s, *v, r);
                std::vector<uint32_t> want = before;
                Trail trail = refused.value_or(Trail{});
                std::vector<int> tiles;
                if (v && !refused)
                    for (int32_t y = v->top; y < v->top + v->height; ++y)
                        for (int32_t x = v->left; x < v->left + v->width; ++x) want[size_t(y * kW + x)] = s.pixel(x, y, r);
                if (v && !refused)
                    for (int32_t ty = v->top / 32; ty <= (v->top + v->height - 1) / 32; ++ty)
                        for (int32_t tx = v->left / 32; tx <= (v->left + v->width - 1) / 32; ++tx) tiles.push_back(ty * 3 + tx);
                if (c.mapRows < 2 && !tiles.empty()) {
                    char text[64];
                    std::snprintf(text, sizeof text, "%d,%d->%d,%d of 3,%d", v->left / 32, v->top / 32,
                                  (v->left + v->width + 31) / 32, (v->top + v->height + 31) / 32, c.mapRows);
                    trail = {kit::entry(S::tileRange, text)}, tiles.clear();
                }
                EXPECT_EQ(f.pixels(), want);
                EXPECT_EQ(log.trail(), trail);
                f.dirty().rows = 2;
                EXPECT_EQ(f.markedTiles(), tiles);
                EXPECT_EQ(f.dirty().changed, tiles.empty() ? 0 : 1);
                EXPECT_TRUE(f.guardsIntact());
            }
}

}  // namespace
