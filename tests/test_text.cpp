// The text orders: GlyphIndex / FastIndex (slot 6), FastGlyph (slot 7) and
// the glyph blitter they share.  Glyph pictures are compared with a model of
// glyph drawing, glyph strings with a model of the string parser and its
// fragment store; rectangles, cache lookups and reports are tables.
#include <gtest/gtest.h>

#include <algorithm>
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
using Bytes = kit::Bytes;
using Pixels = std::vector<uint32_t>;
constexpr uint32_t kBack = 0x0f0f0f, kInk = 0x112233, kOpaque = 0x405060;  // kInk: the kit's text colour
constexpr int32_t kUnset = -32768;
constexpr int kExplicit = 1, kFastIndex = 2, kFastGlyph = 4, kAllForms = 7;

struct Glyph { UiGlyph h; Bytes bits; };  // bits: cy rows of (cx + 7) / 8 bytes
const std::vector<int> kAllTiles{0, 1, 2, 3, 4, 5};  // of a 96 x 40 frame

// Each 1 bit whose pixel lies inside the clip takes the colour.  When the
// glyph's box within the clip reaches outside the image, nothing is drawn and
// the two reports are expected.
kit::Trail modelGlyph(Pixels &px, int32_t w, int32_t h, const Glyph &g, int64_t x, int64_t y, const UiRect &c) {
    const int64_t gx = x + g.h.x, gy = y + g.h.y;
    const int64_t l = std::max<int64_t>(gx, c.left), r = std::min<int64_t>(gx + g.h.cx, int64_t(c.left) + c.width);
    const int64_t t = std::max<int64_t>(gy, c.top), b = std::min<int64_t>(gy + g.h.cy, int64_t(c.top) + c.height);
    if (r <= l || b <= t) return {};
    if (l < 0 || t < 0 || r > w || b > h) return kit::trail({Site::imageWrite, Site::glyphImage});
    for (int64_t row = t - gy; row < b - gy; ++row)
        for (int64_t col = l - gx; col < r - gx; ++col)
            if (g.bits[size_t(row * ((g.h.cx + 7) / 8) + col / 8)] & (0x80 >> (col % 8))) px[size_t((gy + row) * w + gx + col)] = kInk;
    return {};
}

// One text order through slot 6 (GlyphIndex or FastIndex form, advancing 10
// per glyph) or slot 7 (text[0] the index), opaque rectangle `op` in kOpaque.
void drawText(const test::Library &lib, kit::Frame &f, int form, const UiGlyphCache *cache, UiClipRect bk, int32_t x,
              int32_t y, const std::vector<uint8_t> &text, const int32_t (&op)[4], const UiClipRect &clip, int32_t redundant = 0) {
    const auto opaque = [&](auto &o) {
        o.opLeft = op[0], o.opTop = op[1], o.opRight = op[2], o.opBottom = op[3];
        o.opaqueColor[0] = 0x40, o.opaqueColor[1] = 0x50, o.opaqueColor[2] = 0x60;
    };
    if (form == kFastGlyph) {
        UiFastGlyphOrder o = kit::fastGlyphOrder(cache, bk, x, y, text[0]);
        return opaque(o), lib.fastGlyph(f.surface(), o, clip);
    }
    UiGlyphIndexOrder o = kit::glyphIndexOrder(cache, bk, x, y, text, 10, 0);
    o.opRectExplicit = form == kExplicit, o.fOpRedundant = redundant, opaque(o), lib.glyphIndex(f.surface(), o, clip);
}

// FastGlyph draws one glyph clipped to its background rectangle: glyphs of
// every width 1-17 with random bits (pad bits too) and a 64 x 32 glyph holding
// every byte value, cut at every first column with many widths, then at
// random clips and points across the image's edges, against the model over a
// random picture.  Each bitmap ends right before an unreadable page.
TEST(DrawGlyph, EveryCutMatchesTheModel) {
    test::Library lib;
    kit::LogCapture log;
    kit::Frame f(72, 40);
    std::mt19937 rng(7);
    Pixels before(72 * 40);  // a random picture
    for (uint32_t &p : before) p = rng() & 0xffffff;
    std::vector<Glyph> glyphs;
    for (uint16_t cx = 1; cx <= 17; ++cx) {
        glyphs.push_back({{int16_t(int(rng() % 7) - 3), int16_t(int(rng() % 7) - 3), cx, uint16_t(1 + cx % 3)}, {}});
        for (int i = (1 + cx % 3) * ((cx + 7) / 8); i > 0; --i) glyphs.back().bits.push_back(uint8_t(rng()));
    }
    glyphs.push_back({{0, 0, 64, 32}, Bytes(256)});
    std::iota(glyphs.back().bits.begin(), glyphs.back().bits.end(), 0);
    std::shuffle(glyphs.back().bits.begin(), glyphs.back().bits.end(), rng);
    // A non-empty background must reach column and row 1: its tiles are marked.
    const auto extent = [&](int32_t start) { return rng() % 8 == 0 ? 0 : std::max(1, 1 - start) + int32_t(rng() % 20); };
    for (const Glyph &g : glyphs) {
        const kit::GuardedInput entry(Bytes(reinterpret_cast<const uint8_t *>(&g.h), reinterpret_cast<const uint8_t *>(&g.h + 1))(g.bits));
        const UiGlyphCache cache{int32_t(g.bits.size()), 1, entry.data()};
        std::vector<std::pair<UiRect, std::pair<int32_t, int32_t>>> cases;  // clip, drawing point
        for (int32_t s = 0; s < g.h.cx; ++s)
            for (int32_t n = 1; s + n <= g.h.cx; ++n)  // short runs, whole bytes, the rest of the row
                if (n <= 9 || n % 8 == 0 || s + n == g.h.cx) cases.push_back({{4 + g.h.x + s, 5 + g.h.y + int32_t(rng() % 2), n, g.h.cy - int32_t(rng() % 2)}, {4, 5}});
        for (int i = 0; i < 60; ++i) {
            const int32_t l = int32_t(rng() % 92) - 31, t = int32_t(rng() % 72) - 31;
            cases.push_back({{l, t, extent(l), extent(t)}, {int32_t(rng() % 110) - 31, int32_t(rng() % 70) - 31}});
        }
        for (const auto &[c, at] : cases) {
            SCOPED_TRACE(testing::Message() << "cx " << g.h.cx << " clip " << c.left << "," << c.top << " " << c.width << "x" << c.height << " at " << at.first << "," << at.second);
            f.setPixels(before), log.clear();
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

// Frame 96 x 40 (tiles 3 x 2), background (2, 2)-(bkRight, 38), glyph 0 of
// 3 x 2 filling its entry of 2 bytes exactly, glyph 1 larger than its entry.
// `want`: the filled opaque rectangle, right and bottom exclusive.  The
// glyph is drawn when nothing is reported and the background is not empty.
struct TextCase {
    const char *name;
    int forms, op[4];
    UiClipRect want;
    std::vector<int> tiles;
    kit::Trail trail{};
    int cache = 0;  // 1 none, 2 negative entry size, 3 negative count, 4 entries null, 5 entries near the address space's end
    uint8_t index = 0;
    int32_t redundant = 0, x = 10, y = 10, originX = 0, originY = 0, enabled = 0, bkRight = 90;
    UiClipRect clip{0, 0, 95, 39};
};

const kit::Trail kRefused = kit::trail({Site::glyphEntry, Site::fastGlyph});
const TextCase kTexts[] = {
    {"explicit", kExplicit, {40, 5, 60, 15}, {40, 5, 60, 15}, {1}},
    {"explicit left 0 taken literally", kExplicit, {0, 5, 20, 15}, {0, 5, 20, 15}, {0}},
    {"empty, redundant: the background", kExplicit, {0, 0, 0, 0}, {2, 2, 90, 38}, kAllTiles, {}, 0, 0, 1},
    {"clipped away, redundant", kExplicit, {200, 5, 220, 15}, {2, 2, 90, 38}, kAllTiles, {}, 0, 0, 1},
    {"empty, not redundant", kExplicit, {0, 0, 0, 0}, {}, kAllTiles},
    {"empty, redundant, empty background", kExplicit, {0, 0, 0, 0}, {}, {}, {}, 0, 0, 1, 10, 10, 0, 0, 0, 2},
    {"flags 0x0F: the background", kFastIndex | kFastGlyph, {7, 0x0f, 9, kUnset}, {2, 2, 90, 38}, kAllTiles},
    {"flags 0x05: op left and right", kFastIndex | kFastGlyph, {40, 0x05, 50, kUnset}, {40, 2, 50, 38}, {1, 4}},
    {"flags 0x0D: background left", kFastIndex | kFastGlyph, {40, 0x0d, 50, kUnset}, {2, 2, 50, 38}, {0, 1, 3, 4}},
    {"flags 0x07: background right", kFastIndex | kFastGlyph, {40, 0x07, 50, kUnset}, {40, 2, 90, 38}, {1, 2, 4, 5}},
    {"left and right 0: the background's", kFastIndex | kFastGlyph, {0, 5, 0, 9}, {2, 5, 90, 9}, {0, 1, 2}},
    {"fast literal", kFastIndex | kFastGlyph, {40, 33, 50, 36}, {40, 33, 50, 36}, {4}},
    {"flags without 0x01", kFastIndex, {40, 0x0e, 50, kUnset}, {}, {}, kit::trail({Site::indexFlagsTop})},
    {"flags without 0x04", kFastIndex, {40, 0x0b, 50, kUnset}, {}, {}, kit::trail({Site::indexFlagsBottom})},
    {"flags without 0x01", kFastGlyph, {40, 0x0e, 50, kUnset}, {}, {}, kit::trail({Site::fastFlagsTop})},
    {"flags without 0x04", kFastGlyph, {40, 0x0b, 50, kUnset}, {}, {}, kit::trail({Site::fastFlagsBottom})},
    {"fill outside the image", kAllForms, {40, 5, 60, 50}, {}, {}, kit::trail({Site::imageWrite, Site::fillSolid}), 0, 0, 0, 10, 10, 0, 0, 0, 90, {0, 0, 200, 200}},
    {"empty background: opaque filled and marked, no glyph", kAllForms, {40, 5, 60, 15}, {40, 5, 60, 15}, {1}, {}, 1, 0, 0, 10, 10, 0, 0, 0, 2},
    {"origin disabled: only the glyph point moves", kAllForms, {20, 20, 30, 30}, {20, 20, 30, 30}, {0}, {}, 0, 0, 0, 10, 10, -5, -3},
    {"origin, point unset: the background's corner", kAllForms, {20, 20, 30, 30}, {25, 23, 35, 33}, {0, 1, 3, 4}, {}, 0, 0, 0, kUnset, kUnset, -5, -3, 1},
    {"origin, x unset", kFastIndex | kFastGlyph, {1, 1, 1, 1}, {}, kAllTiles, {}, 0, 0, 0, kUnset, 10, -2, -2, 1},
    // The cache: the fill stays; a glyph string skips the entry, FastGlyph ends without marking tiles.
    {"bitmap larger than the entry", kFastGlyph, {40, 20, 50, 30}, {40, 20, 50, 30}, {}, kRefused, 0, 1},
    {"index equal to the count", kFastGlyph, {40, 20, 50, 30}, {40, 20, 50, 30}, {}, kRefused, 0, 2},
    {"no cache", kFastGlyph, {40, 20, 50, 30}, {40, 20, 50, 30}, {}, kRefused, 1},
    {"negative entry size", kFastGlyph, {40, 20, 50, 30}, {40, 20, 50, 30}, {}, kRefused, 2},
    {"negative count", kFastGlyph, {40, 20, 50, 30}, {40, 20, 50, 30}, {}, kRefused, 3},
    {"entries null", kFastGlyph, {40, 20, 50, 30}, {40, 20, 50, 30}, {}, kit::trail({Site::fastGlyph}), 4},
    {"entry beyond the address space", kFastGlyph, {40, 20, 50, 30}, {40, 20, 50, 30}, {}, kRefused, 5},
    {"index 2 skipped, glyph 0 drawn", kFastIndex, {40, 20, 50, 30}, {40, 20, 50, 30}, {1}, kit::trail({Site::glyphEntry}), 0, 2},
    {"entries null: skipped silently", kFastIndex, {40, 20, 50, 30}, {40, 20, 50, 30}, {1}, {}, 4},
};

TEST(TextOrders, RectanglesCachesAndReports) {
    test::Library lib;
    kit::GlyphCache glyphs(2);
    const Glyph g{{0, 0, 3, 2}, {0xa0, 0x60}};
    glyphs.add(g.h, g.bits), glyphs.add({0, 0, 3, 3}, Bytes(3, 0xff));
    const UiGlyphCache real = *glyphs.cache(), caches[] = {real, {}, {-2, 2, real.entries}, {2, -1, real.entries}, {2, 2, nullptr},
                                                          {0x7fffffff, 4, reinterpret_cast<const uint8_t *>(UINTPTR_MAX - 64)}};
    for (const TextCase &c : kTexts)
        for (int form : {kExplicit, kFastIndex, kFastGlyph}) {
            if ((c.forms & form) == 0) continue;
            SCOPED_TRACE(testing::Message() << c.name << " form " << form);
            kit::LogCapture log;
            kit::Frame f(96, 40, kBack);
            f.surface().originX = c.originX, f.surface().originY = c.originY, f.surface().originEnabled = uint8_t(c.enabled);
            // Slot 6 draws glyph `index`, then glyph 0 10 pixels on (at once when the first was skipped).
            drawText(lib, f, form, c.cache == 1 ? nullptr : &caches[c.cache], {2, 2, c.bkRight, 38}, c.x, c.y, {c.index, 0}, c.op, c.clip, c.redundant);
            Pixels want(96 * 40, kBack);
            for (int32_t y = c.want.top; y < c.want.bottom; ++y) std::fill_n(&want[size_t(y) * 96 + size_t(c.want.left)], c.want.right - c.want.left, kOpaque);
            // The glyph point: -32768 is the background's edge; the origin is always subtracted.
            const int64_t x = (c.x == kUnset ? 2 : c.x) - c.originX, y = (c.y == kUnset ? 2 : c.y) - c.originY;
            const bool skipped = form != kFastGlyph && c.index != 0, drawn = c.bkRight > 2 && c.cache == 0 && (c.trail.empty() || skipped);
            for (int k = 0; drawn && k < (form == kFastGlyph || skipped ? 1 : 2); ++k) modelGlyph(want, 96, 40, g, x + 10 * k, y, {0, 0, 96, 40});
            EXPECT_EQ(log.trail(), c.trail);
            EXPECT_EQ(f.pixels(), want);
            EXPECT_EQ(f.markedTiles(), c.tiles);
            EXPECT_TRUE(f.guardsIntact());
        }
}

// The glyph string parser, written from the order's description: each entry
// is a glyph index and its delta (0 without delta mode); `error` is the site
// that ended the order.
using List = std::vector<std::pair<uint8_t, int16_t>>;
struct Parsed { List glyphs; std::optional<Site> error; };

// The delta at q of s[0, n): none at the end, one byte below 0x80, else the
// signed 16-bit value after it (0 when cut short).  Returns the position after.
int deltaAt(const uint8_t *s, int n, int q, int16_t &d) {
    d = q < n && s[q] < 0x80 ? s[q] : q + 2 < n ? int16_t(s[q + 1] | s[q + 2] << 8) : int16_t(0);
    return q >= n ? q : s[q] < 0x80 ? q + 1 : q + 3;
}

Parsed modelParse(const std::vector<uint8_t> &s, bool delta, std::vector<uint8_t> &store) {
    Parsed out;
    const int n = int(s.size());
    const auto glyph = [&](const uint8_t *b, int size, int &p, Site full) {
        out.glyphs.push_back({b[p], 0});
        p = delta ? deltaAt(b, size, p + 1, out.glyphs.back().second) : p + 1;
        if (out.glyphs.size() >= 4096) out.error = full;
    };
    for (int p = 0; p < n && !out.error;) {
        uint8_t *slot = &store[256 * size_t(p + 1 < n ? s[p + 1] : 0)];
        const int length = p + 2 < n ? s[p + 2] : 0;
        if (s[p] == 0xff && (p + 2 >= n || length > p)) {
            out.error = p + 2 >= n ? Site::storeShort : Site::storeLong;
        } else if (s[p] == 0xff) {
            slot[0] = uint8_t(length);
            std::copy(&s[size_t(p - length)], &s[size_t(p)], slot + 1);
            p += 3;
        } else if (s[p] == 0xfe && p + 1 >= n) {
            out.error = Site::useShort;
        } else if (s[p] == 0xfe && !delta) {
            if (out.glyphs.size() + slot[0] >= 4096) out.error = Site::useFull;
            for (int i = 1; i <= slot[0]; ++i) out.glyphs.push_back({slot[i], 0});
            p += 2;
        } else if (s[p] == 0xfe) {  // fragment bytes are glyphs and deltas only; then the order's delta
            const size_t first = out.glyphs.size();
            for (int i = 0; i < slot[0] && !out.error;) glyph(slot + 1, slot[0], i, Site::fragmentFull);
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

// Glyph string orders over a whole frame from (x, 4) with 16 glyphs: glyph k
// is 1 + k % 4 pixels wide, one row, k rows below the point, its first and
// last pixels set; indices from 16 up are not in the cache.  Each order is
// checked against the models: picture, reports, tiles and fragment store.
struct StringRig {
    test::Library lib;
    kit::LogCapture log;
    kit::Frame f;
    std::vector<Glyph> glyphs;
    kit::GlyphCache cache{1};
    std::vector<uint8_t> store = std::vector<uint8_t>(65536);  // the model's fragment store

    StringRig(int32_t w, int32_t h) : f(w, h) {
        for (int16_t k = 0; k < 16; ++k) {
            glyphs.push_back({{0, k, uint16_t(1 + k % 4), 1}, {uint8_t(0x80 | 0x80 >> (k % 4))}});
            cache.add(glyphs.back().h, glyphs.back().bits);
        }
    }
    Parsed run(const Bytes &s, int32_t charInc, int32_t flAccel, std::optional<int32_t> cbData = {}, int32_t x = 4) {
        const bool delta = charInc == 0 && (flAccel & 0x20) == 0;
        const Parsed p = modelParse(s.first(size_t(std::clamp<int32_t>(cbData.value_or(s.length()), 0, 256))), delta, store);
        UiGlyphIndexOrder o = kit::glyphIndexOrder(cache.cache(), {0, 0, f.width(), f.height()}, x, 4, s, charInc, flAccel);
        o.cbData = cbData.value_or(o.cbData);
        Pixels want(size_t(f.width() * f.height()), kBack);
        kit::Trail trail;
        int64_t point[2] = {x, 4}, &along = point[(flAccel & 0x04) != 0];
        for (auto [index, d] : p.glyphs) {
            along += delta ? d : 0;
            if (index >= 16) { trail.push_back(kit::entry(Site::glyphEntry)); continue; }  // skipped, no advance
            modelGlyph(want, f.width(), f.height(), glyphs[index], point[0], point[1], {0, 0, f.width(), f.height()});
            along += delta ? 0 : charInc != 0 ? charInc : glyphs[index].h.cx;
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

Bytes repeat(int n, const Bytes &b) { Bytes out; while (n-- > 0) out(b); return out; }

// The model against lists worked out by hand, the library against both.  The
// setup stores 252 glyphs in slot 1, 63 in slot 2 and 126 with a delta of 1
// each in slot 3, for strings of 4,095 and 4,096 glyphs.
TEST(GlyphString, CommandsDeltasFragmentsAndLimits) {
    const std::vector<std::pair<Bytes, bool>> limits = {
        {repeat(252, {0})({0xff, 1, 252}), false}, {repeat(63, {0})({0xff, 2, 63}), false}, {repeat(126, {0, 1})({0xff, 3, 252}), true}};
    const struct {
        const char *name;
        std::vector<std::pair<Bytes, bool>> setup;  // earlier orders: string, delta mode
        Bytes s;
        bool delta;
        List want;
        std::optional<Site> error;
        std::optional<int32_t> cbData{};
    } cases[] = {
        {"store at position 4: bytes 0-3", {{{1, 2, 3, 4, 0xff, 3, 4}, false}}, {0xfe, 3, 7}, false, {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {7, 0}}},
        {"fragment bytes are glyphs, never commands", {{{5, 0xff, 2, 1, 0xff, 1, 4}, false}}, {0xfe, 1}, false, {{5, 0}, {0xff, 0}, {2, 0}, {1, 0}}},
        {"stored delta -1 stands (byte 2 is 0x80)", {{{5, 0x80, 0xff, 0xff, 0xff, 9, 4}, true}}, {0xfe, 9, 20}, true, {{5, -1}}},
        {"stored delta 0 takes the order's", {{{5, 0, 0xff, 4, 2}, true}}, {0xfe, 4, 20, 0xfe, 4, 0x80, 0x20, 0, 0xfe, 4}, true, {{5, 20}, {5, 32}, {5, 0}}},
        {"byte 2 of a 1-byte fragment is left from an earlier one", {{{5, 3, 0xff, 6, 2, 5, 0xff, 6, 1}, false}}, {0xfe, 6, 20}, true, {{5, 0}}},
        {"byte count above 256 reads 256", {}, Bytes(256, 16), false, List(256, {16, 0}), {}, 1000},
        {"negative byte count reads 0", {}, Bytes(4, 16), false, {}, {}, -5},
        {"16 x 252 + 63", limits, repeat(16, {0xfe, 1})(repeat(63, {0})), false, List(4095, {0, 0})},
        {"16 x 252 + 64", limits, repeat(16, {0xfe, 1})(repeat(64, {0})), false, {}, Site::glyphListFull},
        {"16 x 252 + a 63-glyph fragment", limits, repeat(16, {0xfe, 1})({0xfe, 2}), false, List(4095, {0, 0})},
        {"16 x 252 + 1 + a 63-glyph fragment", limits, repeat(16, {0xfe, 1})({0, 0xfe, 2}), false, {}, Site::useFull},
        {"32 x 126 + 63 with deltas", limits, repeat(32, {0xfe, 3, 1})(repeat(63, {0, 1})), true, List(4095, {0, 1})},
        {"32 x 126 + 64 with deltas", limits, repeat(32, {0xfe, 3, 1})(repeat(64, {0, 1})), true, {}, Site::glyphListFull},
        {"32 x 126 + 63 + a fragment", limits, repeat(32, {0xfe, 3, 1})(repeat(63, {0, 1}))({0xfe, 3}), true, {}, Site::fragmentFull},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        StringRig rig(4100, 20);
        for (const auto &[s, delta] : c.setup) rig.run(s, delta ? 0 : 1, 0);
        const Parsed p = rig.run(c.s, c.delta ? 0 : 1, 0, c.cbData);
        EXPECT_EQ(p.glyphs, c.want);
        EXPECT_EQ(p.error, c.error);
    }
}

// Random strings of glyphs, deltas and commands, cut anywhere, in every
// advance mode, one order after another so that fragments outlive orders.
TEST(GlyphString, RandomStringsMatchTheModel) {
    StringRig rig(300, 40);
    std::mt19937 rng(5);
    const uint8_t slots[] = {0, 1, 2, 0xfe, 0xff};
    for (int i = 0; i < 800 && !testing::Test::HasFailure(); ++i) {
        const int mode = i % 4;  // deltas across, deltas down, ulCharInc, advance by width
        Bytes s;
        for (int k = int(rng() % 40); k > 0 && s.size() < 240; --k) {
            const uint32_t r = rng() % 10;
            if (r == 0) {
                s({0xff, slots[rng() % 5], uint8_t(rng() % (s.size() + 2))});
                continue;
            }
            if (r == 1) s({0xfe, slots[rng() % 5]});
            else s({uint8_t(rng() % 18)});
            if (mode < 2 && rng() % 4 != 0) s({uint8_t(rng() % 8)});
            else if (mode < 2) s({uint8_t(0x80 | rng()), uint8_t(rng()), uint8_t(rng() % 2 ? 0 : 0xff)});
        }
        if (rng() % 3 == 0) s.resize(rng() % (s.size() + 1));
        SCOPED_TRACE(testing::Message() << "order " << i);
        rig.run(s, mode == 2 ? int32_t(1 + rng() % 6) : 0, mode == 1 ? 0x04 : mode == 3 ? 0x20 | int32_t(rng() % 2) * 4 : 0);
    }
}

}  // namespace
