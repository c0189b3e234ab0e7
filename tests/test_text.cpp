// The text orders: GlyphIndex / FastIndex (slot 6), FastGlyph (slot 7) and
// the glyph blitter they share.  Glyph pictures are compared with a plain
// model of glyph drawing, glyph strings with a model of the string parser and
// its fragment store; rectangles, cache lookups and reports are tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <optional>
#include <random>

#include "bytes.h"
#include "core/settings.h"
#include "frame.h"
#include "library.h"
#include "records.h"

namespace {

using ui::Site;
using Bytes = std::vector<uint8_t>;
using Pixels = std::vector<uint32_t>;
constexpr uint32_t kBack = 0x0f0f0f, kInk = 0x112233, kOpaque = 0x405060;  // kInk: the kit's text colour
constexpr int32_t kUnset = -32768;

struct Glyph {
    UiGlyph h;
    Bytes bits;  // cy rows of (cx + 7) / 8 bytes
    Bytes entry() const {
        Bytes e(8);
        std::memcpy(e.data(), &h, 8);
        return e.insert(e.end(), bits.begin(), bits.end()), e;
    }
};

// Each 1 bit whose pixel lies inside the clip takes the colour.  When the
// glyph's box within the clip reaches outside the image, nothing is drawn and
// the two reports are expected.
kit::Trail modelGlyph(Pixels &px, int32_t w, int32_t h, const Glyph &g, int64_t x, int64_t y, const UiRect &c) {
    const int64_t gx = x + g.h.x, gy = y + g.h.y;
    const int64_t l = std::max<int64_t>(gx, c.left), r = std::min<int64_t>(gx + g.h.cx, int64_t(c.left) + c.width);
    const int64_t t = std::max<int64_t>(gy, c.top), b = std::min<int64_t>(gy + g.h.cy, int64_t(c.top) + c.height);
    if (r <= l || b <= t) return {};
    if (l < 0 || t < 0 || r > w || b > h) return kit::trail({Site::imageWrite, Site::glyphImage});
    const int64_t rowBytes = (g.h.cx + 7) / 8;
    for (int64_t py = t; py < b; ++py)
        for (int64_t c0 = l - gx; c0 < r - gx; ++c0)
            if (g.bits[size_t((py - gy) * rowBytes + c0 / 8)] & (0x80 >> (c0 % 8))) px[size_t(py * w + gx + c0)] = kInk;
    return {};
}

// FastGlyph draws one glyph clipped to its background rectangle: glyphs of
// every width 1-24 with random bits (pad bits too) and a 64 x 32 glyph holding
// every byte value, cut at every first column with every width, then at
// random clips and points across the image's edges, against the model over a
// random picture.  Each bitmap ends right before an unreadable page.
TEST(DrawGlyph, EveryCutMatchesTheModel) {
    test::Library lib;
    kit::LogCapture log;
    std::mt19937 rng(7);
    kit::Frame f(72, 40);
    Pixels before(72 * 40);
    for (uint32_t &p : before) p = rng() & 0xffffff;
    std::vector<Glyph> glyphs;
    for (uint16_t cx = 1; cx <= 24; ++cx) {
        glyphs.push_back({{int16_t(int(rng() % 7) - 3), int16_t(int(rng() % 7) - 3), cx, uint16_t(1 + cx % 3)}, {}});
        glyphs.back().bits.resize((1 + cx % 3) * ((cx + 7) / 8));
        for (uint8_t &b : glyphs.back().bits) b = uint8_t(rng());
    }
    glyphs.push_back({{0, 0, 64, 32}, Bytes(256)});
    std::iota(glyphs.back().bits.begin(), glyphs.back().bits.end(), 0);
    std::shuffle(glyphs.back().bits.begin(), glyphs.back().bits.end(), rng);
    for (const Glyph &g : glyphs) {
        const kit::GuardedInput entry(g.entry());
        const UiGlyphCache cache{int32_t(g.bits.size()), 1, entry.data()};
        std::vector<std::pair<UiRect, std::pair<int32_t, int32_t>>> cases;  // clip, drawing point
        for (int32_t s = 0; s < g.h.cx; ++s)
            for (int32_t n = 1; s + n <= g.h.cx; ++n)
                cases.push_back({{4 + g.h.x + s, 5 + g.h.y + int32_t(rng() % 2), n, g.h.cy - int32_t(rng() % 2)}, {4, 5}});
        // A non-empty background must reach column and row 1: its tiles are marked.
        const auto extent = [&](int32_t start) { return rng() % 8 == 0 ? 0 : std::max(1, 1 - start) + int32_t(rng() % 20); };
        for (int i = 0; i < 60; ++i) {
            const int32_t l = int32_t(rng() % 92) - 31, t = int32_t(rng() % 72) - 31;
            cases.push_back({{l, t, extent(l), extent(t)}, {int32_t(rng() % 110) - 31, int32_t(rng() % 70) - 31}});
        }
        for (const auto &[c, at] : cases) {
            SCOPED_TRACE(testing::Message() << "cx " << g.h.cx << " clip " << c.left << "," << c.top << " " << c.width
                                            << "x" << c.height << " at " << at.first << "," << at.second);
            f.setPixels(before);
            log.clear();
            Pixels want = before;
            const kit::Trail trail = modelGlyph(want, 72, 40, g, at.first, at.second, c);
            const UiClipRect bk{c.left, c.top, c.left + c.width, c.top + c.height};
            lib.fastGlyph(f.surface(), kit::fastGlyphOrder(&cache, bk, at.first, at.second, 0), {-31, -31, 95, 63});
            ASSERT_EQ(log.trail(), trail);
            ASSERT_EQ(f.pixels(), want);
        }
    }
    EXPECT_TRUE(f.guardsIntact());
}

// Glyph 0 is 9 x 2 (2-byte rows), exactly the entry size of 4 bytes; glyph 1
// (9 x 3) is larger than its entry.  Slot 7 draws the indexed glyph; slot 6
// the string {index, 0}, advancing 10 after each glyph drawn.  Both fill a
// FastIndex opaque rectangle (40, 20)-(50, 30) first (empty for null pixels).
TEST(TextOrders, CacheLookupsAndTheImageCheck) {
    const Glyph g0{{0, 0, 9, 2}, {0xff, 0x80, 0x55, 0x80}}, g1{{0, 0, 9, 3}, {0xff, 0xff, 0xff, 0xff, 0xff, 0xff}};
    kit::GlyphCache glyphs(4);
    glyphs.add(g0.h, g0.bits), glyphs.add(g1.h, g1.bits);
    const UiGlyphCache real = *glyphs.cache();
    const auto *nearTop = reinterpret_cast<const uint8_t *>(UINTPTR_MAX - 64);
    const kit::Trail one = kit::trail({Site::glyphEntry}), two(2, one[0]);
    const kit::Trail noGlyph = kit::trail({Site::glyphEntry, Site::fastGlyph});
    const struct {
        const char *name;
        UiGlyphCache cache;
        bool noCache, nullPixels;
        uint8_t index;
        kit::Trail slot7, slot6;
        int32_t secondAt;  // slot 6: where glyph 0 after the indexed one lands (-1: not drawn)
    } cases[] = {
        {"bitmap exactly the entry size", real, false, false, 0, {}, {}, 20},
        {"bitmap larger than the entry", real, false, false, 1, noGlyph, one, 10},
        {"index equal to the count", real, false, false, 2, noGlyph, one, 10},
        {"no cache", real, true, false, 0, noGlyph, two, -1},
        {"negative entry size", {-4, 2, real.entries}, false, false, 0, noGlyph, two, -1},
        {"negative count", {4, -1, real.entries}, false, false, 0, noGlyph, two, -1},
        {"entries null", {4, 2, nullptr}, false, false, 0, kit::trail({Site::fastGlyph}), {}, -1},
        {"entry beyond the address space", {0x7fffffff, 4, nearTop}, false, false, 0, noGlyph, two, -1},
        {"null pixels", real, false, true, 0, kit::trail({Site::glyphImage}), kit::Trail(2, kit::entry(Site::glyphImage)), -1},
    };
    test::Library lib;
    for (const auto &c : cases)
        for (int slot : {6, 7}) {
            SCOPED_TRACE(testing::Message() << c.name << " slot " << slot);
            kit::LogCapture log;
            kit::Frame f(96, 40, kBack);
            Pixels want = f.pixels();
            uint32_t *pixels = f.image().pixels;
            if (c.nullPixels) f.image().pixels = nullptr;
            const UiGlyphCache *cache = c.noCache ? nullptr : &c.cache;
            const int32_t op[4] = {40, c.nullPixels ? 1 : 20, 50, c.nullPixels ? 1 : 30};
            for (int32_t y = op[1]; y < op[3]; ++y) std::fill_n(&want[size_t(y) * 96 + 40], 10, kOpaque);
            const UiClipRect bk{2, 2, 90, 38};
            const UiRect clip{2, 2, 88, 36};
            if (slot == 7) {
                UiFastGlyphOrder o = kit::fastGlyphOrder(cache, bk, 10, 10, c.index);
                o.opLeft = op[0], o.opTop = op[1], o.opRight = op[2], o.opBottom = op[3];
                o.opaqueColor[0] = 0x40, o.opaqueColor[1] = 0x50, o.opaqueColor[2] = 0x60;
                lib.fastGlyph(f.surface(), o, f.all());
                if (c.slot7.empty()) modelGlyph(want, 96, 40, g0, 10, 10, clip);
                EXPECT_EQ(log.trail(), c.slot7);
            } else {
                UiGlyphIndexOrder o = kit::glyphIndexOrder(cache, bk, 10, 10, {c.index, 0}, 10, 0);
                o.opRectExplicit = 0, o.opLeft = op[0], o.opTop = op[1], o.opRight = op[2], o.opBottom = op[3];
                o.opaqueColor[0] = 0x40, o.opaqueColor[1] = 0x50, o.opaqueColor[2] = 0x60;
                lib.glyphIndex(f.surface(), o, f.all());
                if (c.secondAt == 20) modelGlyph(want, 96, 40, g0, 10, 10, clip);
                if (c.secondAt >= 0) modelGlyph(want, 96, 40, g0, c.secondAt, 10, clip);
                EXPECT_EQ(log.trail(), c.slot6);
            }
            f.image().pixels = pixels;
            EXPECT_EQ(f.pixels(), want);
            const std::vector<int> tiles = c.nullPixels ? std::vector<int>{0, 1, 2, 3, 4, 5} : std::vector<int>{1};
            const bool ended = slot == 7 && !c.slot7.empty() && c.slot7.back() == kit::entry(Site::fastGlyph);
            EXPECT_EQ(f.markedTiles(), ended ? std::vector<int>{} : tiles);
            EXPECT_TRUE(f.guardsIntact());
        }
}

constexpr int kExplicit = 1, kFastIndex = 2, kFastGlyph = 4, kAll = 7;

// Frame 96 x 40 (tiles 3 x 2), background (2, 2)-(90, 38), a 3 x 2 glyph at
// (10, 10).  `want` is the filled opaque rectangle (right, bottom exclusive).
struct RectCase {
    const char *name;
    int forms;
    int32_t op[4];
    UiClipRect want;
    std::vector<int> tiles;
    int error = 0;  // 1: flags without 0x01, 2: without 0x04, 3: fill outside the image
    int32_t redundant = 0, x = 10, y = 10, glyphX = 10, glyphY = 10;  // glyphX -1: no glyph
    int32_t originX = 0, originY = 0, enabled = 0, bkRight = 90;
    UiClipRect clip{0, 0, 95, 39};
};

const RectCase kRects[] = {
    {"explicit", kExplicit, {40, 5, 60, 15}, {40, 5, 60, 15}, {1}},
    {"explicit left 0 taken literally", kExplicit, {0, 5, 20, 15}, {0, 5, 20, 15}, {0}},
    {"explicit, cut by the clip", kExplicit, {80, 30, 120, 60}, {80, 30, 96, 40}, {2, 5}},
    {"empty, redundant: the background", kExplicit, {0, 0, 0, 0}, {2, 2, 90, 38}, {0, 1, 2, 3, 4, 5}, 0, 1},
    {"clipped away, redundant", kExplicit, {200, 5, 220, 15}, {2, 2, 90, 38}, {0, 1, 2, 3, 4, 5}, 0, 1},
    {"empty, not redundant", kExplicit, {0, 0, 0, 0}, {}, {0, 1, 2, 3, 4, 5}},
    {"empty, redundant, empty background", kExplicit, {0, 0, 0, 0}, {}, {}, 0, 1, 10, 10, -1, 0, 0, 0, 0, 2},
    {"flags 0x0F: the background", kFastIndex | kFastGlyph, {7, 0x0f, 9, kUnset}, {2, 2, 90, 38}, {0, 1, 2, 3, 4, 5}},
    {"flags 0x05: op left and right", kFastIndex | kFastGlyph, {40, 0x05, 50, kUnset}, {40, 2, 50, 38}, {1, 4}},
    {"flags 0x0D: background left", kFastIndex | kFastGlyph, {40, 0x0d, 50, kUnset}, {2, 2, 50, 38}, {0, 1, 3, 4}},
    {"flags 0x07: background right", kFastIndex | kFastGlyph, {40, 0x07, 50, kUnset}, {40, 2, 90, 38}, {1, 2, 4, 5}},
    {"left and right 0: the background's", kFastIndex | kFastGlyph, {0, 5, 0, 9}, {2, 5, 90, 9}, {0, 1, 2}},
    {"fast literal", kFastIndex | kFastGlyph, {40, 33, 50, 36}, {40, 33, 50, 36}, {4}},
    {"fast empty", kFastIndex | kFastGlyph, {1, 1, 1, 1}, {}, {0, 1, 2, 3, 4, 5}},
    {"flags without 0x01", kFastIndex | kFastGlyph, {40, 0x0e, 50, kUnset}, {}, {}, 1},
    {"flags without 0x04", kFastIndex | kFastGlyph, {40, 0x0b, 50, kUnset}, {}, {}, 2},
    {"fill outside the image", kAll, {40, 5, 60, 50}, {}, {}, 3, 0, 10, 10, 10, 10, 0, 0, 0, 90, {0, 0, 200, 200}},
    {"empty background: opaque filled and marked, no glyph", kAll, {40, 5, 60, 15}, {40, 5, 60, 15}, {1}, 0, 0, 10, 10, -1,
     0, 0, 0, 0, 2},
    {"origin disabled: only the glyph point moves", kAll, {20, 20, 30, 30}, {20, 20, 30, 30}, {0}, 0, 0, 10, 10, 15, 13, -5, -3},
    {"origin enabled, point unset: the background's corner", kAll, {20, 20, 30, 30}, {25, 23, 35, 33}, {0, 1, 3, 4}, 0, 0,
     kUnset, kUnset, 7, 5, -5, -3, 1},
    {"origin enabled, x unset", kFastIndex | kFastGlyph, {1, 1, 1, 1}, {}, {0, 1, 2, 3, 4, 5}, 0, 0, kUnset, 10, 4, 12, -2,
     -2, 1},
};

TEST(TextOrders, OpaqueAndBackgroundRectangles) {
    test::Library lib;
    kit::GlyphCache glyphs;
    const Glyph g{{0, 0, 3, 2}, {0xa0, 0x60}};
    glyphs.add(g.h, g.bits);
    for (const RectCase &c : kRects)
        for (int form : {kExplicit, kFastIndex, kFastGlyph}) {
            if ((c.forms & form) == 0) continue;
            SCOPED_TRACE(testing::Message() << c.name << " form " << form);
            kit::LogCapture log;
            kit::Frame f(96, 40, kBack);
            f.surface().originX = c.originX, f.surface().originY = c.originY, f.surface().originEnabled = uint8_t(c.enabled);
            const UiClipRect bk{2, 2, c.bkRight, 38};
            const UiGlyphCache *cache = c.glyphX < 0 ? nullptr : glyphs.cache();  // not consulted without a glyph
            if (form == kFastGlyph) {
                UiFastGlyphOrder o = kit::fastGlyphOrder(cache, bk, c.x, c.y, 0);
                o.opLeft = c.op[0], o.opTop = c.op[1], o.opRight = c.op[2], o.opBottom = c.op[3];
                o.opaqueColor[0] = 0x40, o.opaqueColor[1] = 0x50, o.opaqueColor[2] = 0x60;
                lib.fastGlyph(f.surface(), o, c.clip);
            } else {
                UiGlyphIndexOrder o = kit::glyphIndexOrder(cache, bk, c.x, c.y, {0}, 0, 0x20);
                o.opRectExplicit = form == kExplicit, o.fOpRedundant = c.redundant;
                o.opLeft = c.op[0], o.opTop = c.op[1], o.opRight = c.op[2], o.opBottom = c.op[3];
                o.opaqueColor[0] = 0x40, o.opaqueColor[1] = 0x50, o.opaqueColor[2] = 0x60;
                lib.glyphIndex(f.surface(), o, c.clip);
            }
            Pixels want(96 * 40, kBack);
            for (int32_t y = c.want.top; y < c.want.bottom; ++y)
                for (int32_t x = c.want.left; x < c.want.right; ++x) want[size_t(y) * 96 + size_t(x)] = kOpaque;
            if (c.error == 0 && c.glyphX >= 0) modelGlyph(want, 96, 40, g, c.glyphX, c.glyphY, {0, 0, 96, 40});
            const Site top = form == kFastGlyph ? Site::fastFlagsTop : Site::indexFlagsTop;
            const Site bottom = form == kFastGlyph ? Site::fastFlagsBottom : Site::indexFlagsBottom;
            const kit::Trail errors[] = {{}, kit::trail({top}), kit::trail({bottom}), kit::trail({Site::imageWrite, Site::fillSolid})};
            EXPECT_EQ(log.trail(), errors[c.error]);
            EXPECT_EQ(f.pixels(), want);
            EXPECT_EQ(f.markedTiles(), c.tiles);
            EXPECT_TRUE(f.guardsIntact());
        }
}

// The glyph string parser, written from the order's description: each entry
// is a glyph index and its delta (0 without delta mode); `error` is the site
// that ended the order.
struct Parsed {
    std::vector<std::pair<uint8_t, int16_t>> glyphs;
    std::optional<Site> error;
};

// The delta at q of s[0, n): none at the end, one byte below 0x80, else the
// signed 16-bit value after it (0 when cut short).  Returns the position after.
int deltaAt(const uint8_t *s, int n, int q, int16_t &d) {
    d = 0;
    if (q >= n) return q;
    if (s[q] < 0x80) return d = s[q], q + 1;
    if (q + 2 < n) d = int16_t(s[q + 1] | s[q + 2] << 8);
    return q + 3;
}

Parsed modelParse(const Bytes &s, bool delta, Bytes &store) {
    Parsed out;
    const int n = int(s.size());
    const auto glyph = [&](const uint8_t *b, int size, int &p, Site full) {
        int16_t d = 0;
        const uint8_t index = b[p];
        p = delta ? deltaAt(b, size, p + 1, d) : p + 1;
        out.glyphs.push_back({index, d});
        if (out.glyphs.size() >= 4096) out.error = full;
    };
    for (int p = 0; p < n && !out.error;) {
        uint8_t *slot = &store[256 * size_t(p + 1 < n ? s[p + 1] : 0)];
        if (s[p] == 0xff) {
            const int length = p + 2 < n ? s[p + 2] : 0;
            if (p + 2 >= n || length > p) {
                out.error = p + 2 >= n ? Site::storeShort : Site::storeLong;
                break;
            }
            slot[0] = uint8_t(length);
            std::copy(&s[size_t(p - length)], &s[size_t(p)], slot + 1);
            p += 3;
        } else if (s[p] == 0xfe && p + 1 >= n) {
            out.error = Site::useShort;
        } else if (s[p] == 0xfe && !delta) {
            if (out.glyphs.size() + slot[0] >= 4096) out.error = Site::useFull;
            for (int i = 1; i <= slot[0]; ++i) out.glyphs.push_back({slot[i], 0});
            p += 2;
        } else if (s[p] == 0xfe) {
            const size_t first = out.glyphs.size();
            for (int f = 0; f < slot[0] && !out.error;) glyph(slot + 1, slot[0], f, Site::fragmentFull);
            int16_t d;
            p = deltaAt(s.data(), n, p + 2, d);
            if (out.glyphs.size() > first && slot[2] == 0) out.glyphs[first].second = d;
        } else {
            glyph(s.data(), n, p, Site::glyphListFull);
        }
    }
    if (out.error) out.glyphs.clear();
    return out;
}

// Glyph string orders over a whole frame from the point (4, 4) with 16
// glyphs: glyph k is 1 + k % 4 pixels wide, one row, k rows below the point,
// its first and last pixels set; indices from 16 up are not in the cache.
// Each order is checked against the models: picture, reports, tiles and the
// fragment store.
struct StringRig {
    test::Library lib;
    kit::LogCapture log;
    kit::Frame f;
    std::vector<Glyph> glyphs;
    kit::GlyphCache cache{1};
    Bytes store = Bytes(65536);

    StringRig(int32_t w, int32_t h) : f(w, h) {
        for (int16_t k = 0; k < 16; ++k) {
            const uint16_t cx = uint16_t(1 + k % 4);
            glyphs.push_back({{0, k, cx, 1}, {uint8_t(0x80 | 0x80 >> (cx - 1))}});
            cache.add(glyphs.back().h, glyphs.back().bits);
        }
    }

    Parsed run(const Bytes &s, int32_t charInc, int32_t flAccel, std::optional<int32_t> cbData = {}, int32_t x = 4) {
        const bool delta = charInc == 0 && (flAccel & 0x20) == 0;
        const Bytes parsed(s.begin(), s.begin() + std::clamp<int32_t>(cbData.value_or(int32_t(s.size())), 0, 256));
        const Parsed p = modelParse(parsed, delta, store);
        UiGlyphIndexOrder o = kit::glyphIndexOrder(cache.cache(), {0, 0, f.width(), f.height()}, x, 4, s, charInc, flAccel);
        o.cbData = cbData.value_or(o.cbData);
        Pixels want(size_t(f.width() * f.height()), kBack);
        kit::Trail trail;
        int64_t point[2] = {x, 4}, &along = point[(flAccel & 0x04) != 0];
        for (auto [index, d] : p.glyphs) {
            if (delta) along += d;
            if (index >= 16) {
                trail.push_back(kit::entry(Site::glyphEntry));
                continue;
            }
            modelGlyph(want, f.width(), f.height(), glyphs[index], point[0], point[1], {0, 0, f.width(), f.height()});
            if (!delta) along += charInc != 0 ? charInc : glyphs[index].h.cx;
        }
        if (p.error) trail = {kit::entry(*p.error)};
        f.fill(kBack), f.clearTiles(), log.clear();
        lib.glyphIndex(f.surface(), o, f.all());
        EXPECT_EQ(log.trail(), trail);
        EXPECT_EQ(f.pixels(), want);
        EXPECT_EQ(f.markedTiles().size(), p.error ? 0 : size_t(f.dirty().columns * f.dirty().rows));
        EXPECT_TRUE(std::equal(store.begin(), store.end(), ui::settings.scratchBuffer)) << "fragment store";
        return p;
    }
};

using List = std::vector<std::pair<uint8_t, int16_t>>;

// The model against lists worked out by hand, and the library against both.
TEST(GlyphString, CommandsDeltasAndFragments) {
    const struct {
        const char *name;
        std::vector<std::pair<Bytes, bool>> setup;  // earlier orders: string, delta mode
        Bytes s;
        bool delta;
        List want;
        std::optional<Site> error;
        std::optional<int32_t> cbData{};
    } cases[] = {
        {"1-byte deltas, the first glyph moved too", {}, {1, 4, 2, 6}, true, {{1, 4}, {2, 6}}},
        {"16-bit delta", {}, {5, 0x81, 0x2c, 0x01}, true, {{5, 300}}},
        {"negative 16-bit delta", {}, {1, 0x80, 0xfb, 0xff, 2}, true, {{1, -5}, {2, 0}}},
        {"16-bit delta cut short is 0", {}, {5, 0x81, 0x2c}, true, {{5, 0}}},
        {"store at position 4: bytes 0-3", {{{1, 2, 3, 4, 0xff, 3, 4}, false}}, {0xfe, 3, 7}, false, {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {7, 0}}},
        {"store longer than the bytes before it", {}, {1, 2, 0xff, 3, 3}, false, {}, Site::storeLong},
        {"store command cut short", {}, {1, 0xff, 3}, false, {}, Site::storeShort},
        {"use command without its slot", {}, {1, 0xfe}, false, {}, Site::useShort},
        {"in delta mode the same bytes are a glyph and a cut 16-bit delta", {}, {1, 0xfe}, true, {{1, 0}}},
        {"a slot never stored adds no glyph", {}, {0xfe, 9, 5}, false, {{5, 0}}},
        {"fragment bytes are glyphs, never commands", {{{5, 0xff, 2, 1, 0xff, 1, 4}, false}}, {0xfe, 1}, false,
         {{5, 0}, {0xff, 0}, {2, 0}, {1, 0}}},
        {"delta fragment: stored delta -1 stands (byte 2 is 0x80)", {{{5, 0x80, 0xff, 0xff, 0xff, 9, 4}, true}},
         {0xfe, 9, 20}, true, {{5, -1}}},
        {"delta fragment: stored 0 takes the order's delta", {{{5, 0, 0xff, 4, 2}, true}}, {0xfe, 4, 20, 0xfe, 4, 0x80, 0x20, 0, 0xfe, 4}, true,
         {{5, 20}, {5, 32}, {5, 0}}},
        {"byte 2 of a 1-byte fragment is left from an earlier one", {{{5, 3, 0xff, 6, 2, 5, 0xff, 6, 1}, false}},
         {0xfe, 6, 20}, true, {{5, 0}}},
        {"byte count above 256 reads 256 (index 16: one report each)", {}, Bytes(256, 16), false, List(256, {16, 0}), {}, 1000},
        {"negative byte count reads 0", {}, Bytes(4, 16), false, {}, {}, -5},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        StringRig rig(120, 24);
        for (const auto &[s, delta] : c.setup) rig.run(s, delta ? 0 : 8, 0);
        const Parsed p = rig.run(c.s, c.delta ? 0 : 8, 0, c.cbData);
        EXPECT_EQ(p.glyphs, c.want);
        EXPECT_EQ(p.error, c.error);
    }
}

// Fragments of 252 glyphs (slot 1) and 63 glyphs (slot 2), and of 126 glyphs
// with a delta of 1 each (slot 3), make strings of 4,095 and 4,096 glyphs.
TEST(GlyphString, ListsHoldAtMost4095Glyphs) {
    const auto repeat = [](int n, const Bytes &b) {
        Bytes out;
        while (n-- > 0) out.insert(out.end(), b.begin(), b.end());
        return out;
    };
    const auto join = [](std::initializer_list<Bytes> parts) {
        Bytes out;
        for (const Bytes &b : parts) out.insert(out.end(), b.begin(), b.end());
        return out;
    };
    const struct {
        const char *name;
        Bytes s;
        bool delta;
        std::optional<Site> error;
    } cases[] = {
        {"16 x 252 + 63", join({repeat(16, {0xfe, 1}), repeat(63, {0})}), false, {}},
        {"16 x 252 + 64", join({repeat(16, {0xfe, 1}), repeat(64, {0})}), false, Site::glyphListFull},
        {"16 x 252 + a 63-glyph fragment", join({repeat(16, {0xfe, 1}), {0xfe, 2}}), false, {}},
        {"16 x 252 + 1 + a 63-glyph fragment", join({repeat(16, {0xfe, 1}), {0, 0xfe, 2}}), false, Site::useFull},
        {"32 x 126 + 63 with deltas", join({repeat(32, {0xfe, 3, 1}), repeat(63, {0, 1})}), true, {}},
        {"32 x 126 + 64 with deltas", join({repeat(32, {0xfe, 3, 1}), repeat(64, {0, 1})}), true, Site::glyphListFull},
        {"32 x 126 + 63 + a fragment", join({repeat(32, {0xfe, 3, 1}), repeat(63, {0, 1}), {0xfe, 3}}), true,
         Site::fragmentFull},
    };
    StringRig rig(4100, 6);
    rig.run(join({repeat(252, {0}), {0xff, 1, 252}}), 1, 0);
    rig.run(join({repeat(63, {0}), {0xff, 2, 63}}), 1, 0);
    rig.run(join({repeat(126, {0, 1}), {0xff, 3, 252}}), 0, 0);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const Parsed p = rig.run(c.s, c.delta ? 0 : 1, 0, {}, c.delta ? 3 : 4);
        EXPECT_EQ(p.error, c.error);
        const Pixels pixels = rig.f.pixels();
        EXPECT_EQ(std::count(pixels.begin(), pixels.end(), kInk), c.error ? 0 : 4095);
    }
}

// Random strings of glyphs, deltas and commands, cut anywhere, in every
// advance mode, one order after another so that fragments outlive orders.
TEST(GlyphString, RandomStringsMatchTheModel) {
    StringRig rig(300, 40);
    std::mt19937 rng(5);
    const uint8_t slots[] = {0, 1, 2, 0xfe, 0xff};
    for (int i = 0; i < 1500 && !testing::Test::HasFailure(); ++i) {
        const int mode = i % 4;  // deltas across, deltas down, ulCharInc, advance by width
        const bool delta = mode < 2;
        Bytes s;
        const auto deltaBytes = [&] {
            if (!delta) return;
            if (rng() % 4 != 0) return s.push_back(uint8_t(rng() % 8));
            s.insert(s.end(), {uint8_t(0x80 | rng()), uint8_t(rng()), uint8_t(rng() % 2 ? 0 : 0xff)});
        };
        for (int k = int(rng() % 40); k > 0 && s.size() < 240; --k) {
            const uint32_t r = rng() % 10;
            if (r == 0) {
                s.insert(s.end(), {0xff, slots[rng() % 5], uint8_t(rng() % (s.size() + 2))});
            } else {
                if (r == 1) s.insert(s.end(), {0xfe, slots[rng() % 5]});
                else s.push_back(uint8_t(rng() % 18));
                deltaBytes();
            }
        }
        if (rng() % 3 == 0) s.resize(rng() % (s.size() + 1));
        SCOPED_TRACE(testing::Message() << "order " << i);
        rig.run(s, mode == 2 ? int32_t(1 + rng() % 6) : 0, mode == 1 ? 0x04 : mode == 3 ? 0x20 | int32_t(rng() % 2) * 4 : 0);
    }
}

}  // namespace
