// ZRLE/TRLE tile bodies (slots 18-22) and Hextile (slot 24): reference decoders
// against the library on input cut at every byte or read, and hand cases.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <set>

#include "frame.h"
#include "library.h"
#include "picture.h"

namespace {

using kit::Bytes;
using kit::Trail;
using ui::Site;
using Pixels = std::vector<uint32_t>;

constexpr uint32_t kFill = 0x5a5a5a;
constexpr int32_t kW = 48, kH = 40;  // the frame: 2 x 2 tiles of the map

int pick(std::mt19937 &rng, int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }
uint32_t mapped(const uint8_t *b, bool low = true) { return b[low ? 0 : 2] | b[1] << 8 | b[low ? 2 : 0] << 16; }
bool inside(const UiRect &r) {
    return std::min({r.left, r.top, r.width, r.height}) >= 0 && r.left + int64_t(r.width) <= kW && r.top + int64_t(r.height) <= kH;
}

// What a call does: its result, the bytes it consumes, the pixels it paints
// (row by row from the rectangle's top-left), its reports and its reads.
struct Outcome { int32_t result = 0; int64_t consumed = 0; Pixels pixels; Trail trail; std::vector<int32_t> reads; };

// The kW x kH frame holds `pixels` from the rectangle's top-left and kFill
// elsewhere; exactly the tiles the rectangle covers are marked when `marked`.
void expectFrame(const kit::Frame &f, const UiRect &r, const Pixels &pixels, bool marked) {
    Pixels want(size_t(kW * kH), kFill);
    for (int32_t i = 0; i < int32_t(pixels.size()); ++i)
        want[size_t((r.top + i / r.width) * kW + r.left + i % r.width)] = pixels[size_t(i)];
    EXPECT_EQ(f.pixels(), want);
    std::vector<int> tiles;
    for (int32_t ty = r.top / 32; marked && r.width > 0 && ty < (r.top + r.height + 31) / 32; ++ty)
        for (int32_t tx = r.left / 32; tx < (r.left + r.width + 31) / 32; ++tx) tiles.push_back(ty * 2 + tx);
    EXPECT_EQ(f.markedTiles(), tiles);
    EXPECT_TRUE(f.guardsIntact());
}

// Pictures in blocks of 1 to 130 colours, noisy or not.
kit::Picture blocks(std::mt19937 &rng, int32_t w, int32_t h, int colours, bool noise) {
    kit::Picture p(w, h);
    const int32_t bw = pick(rng, 1, w), bh = pick(rng, 1, h);
    for (int32_t i = 0; i < w * h; ++i)
        p.pixels[size_t(i)] = uint32_t((i % w / bw * 31 + i / w / bh * 7 + pick(rng, 0, noise ? colours : 0)) % colours) * 0x01F3A7;
    return p;
}

enum Slot { kRaw, kSolid, kPacked, kPlain, kPaletteRle };

// The tile bodies as the encoding defines them, for tiles of one pixel or more
// in the frame or partly beside it.  Indexes naming no palette entry paint black.
Outcome model(Slot s, int32_t arg, const Bytes &b, const UiRect &r, bool low) {
    Outcome o;
    int64_t &pos = o.consumed;
    const int64_t n = b.length(), w = r.width, area = w * r.height;
    const int32_t size = s == kPacked ? arg : s == kPaletteRle ? arg - 128 : 0, bits = size <= 2 ? 1 : size <= 4 ? 2 : 4;
    const int64_t rowBytes = (w * bits + 7) / 8;
    const int64_t need = s == kSolid ? 3 : s == kRaw ? 3 * area : s == kPacked ? r.height * rowBytes : 0;
    const auto entry = [&](int i) { return i < size ? mapped(&b[size_t(3 * i)]) : 0u; };
    const auto fail = [&](std::initializer_list<Site> sites) { return o.result = -1, o.trail = kit::trail(sites), o; };
    const Site image[] = {Site::rawTile, Site::solidTile, Site::packedTile, Site::plainRleTile, Site::paletteRleTile};
    if (!inside(r) && s == kPlain) return fail({Site::imageWrite, image[s]});  // before reading
    if (n < 3 * size) return o;
    if ((pos = 3 * size, !inside(r)) && s >= kPacked) return fail({Site::imageWrite, image[s]});  // after the palette
    if (n - pos < need) return o;
    if (!inside(r)) return pos = need, fail({Site::imageWrite, image[s]});  // after the body
    for (int64_t i = 0, x = 0, y = 0; s <= kPacked && i < area; x = ++i % w, y = i / w)
        o.pixels.push_back(s == kSolid ? mapped(&b[0]) : s == kRaw ? mapped(&b[size_t(3 * i)], low)
            : entry(b[size_t(pos + y * rowBytes + x * bits / 8)] >> (8 - bits - x * bits % 8) & ((1 << bits) - 1)));
    if (s <= kPacked) return pos += need, o.result = 1, o;
    while (int64_t(o.pixels.size()) < area) {
        if (s == kPlain ? n - pos < 3 : pos == n) return o;
        const uint32_t colour = s == kPlain ? mapped(&b[size_t(pos)]) : entry(b[size_t(pos)] & 127);
        const bool run = s == kPlain || b[size_t(pos)] >= 128;
        pos += s == kPlain ? 3 : 1;
        int64_t length = 1;
        for (uint8_t c = 255; run && c == 255; length += c)
            if (pos == n) return o;
            else c = b[size_t(pos++)];
        if (length > area - int64_t(o.pixels.size())) return fail({s == kPlain ? Site::plainRleRun : Site::paletteRleRun});
        o.pixels.insert(o.pixels.end(), size_t(length), colour);
    }
    return o.result = 1, o;
}

enum Input { kBody, kNullPtr, kNullImage };

// One call on a fresh frame, the body right before an unreadable page (or a
// null ptr, or no image; `left` when given), checked whole against `o`.
void checkTile(const test::Library &lib, Slot s, int32_t arg, const UiRect &r, const Bytes &body, const Outcome &o,
               Input input = kBody, int32_t left = INT32_MIN) {
    kit::Frame f(kW, kH, kFill);
    kit::GuardedInput in(body);
    kit::LogCapture log;
    const uint8_t *start = input == kNullPtr ? nullptr : in.data();
    left = left == INT32_MIN ? in.size() : left;
    UiTileStream t{r.left, r.top, r.width, r.height, input == kNullImage ? nullptr : &f.image(), &f.dirty(), start, left};
    EXPECT_EQ(s == kPacked       ? lib.slot<UiZrlePackedPaletteTileFn>(UI_SLOT_ZRLE_PACKED_PALETTE_TILE)(&t, arg)
              : s == kPaletteRle ? lib.slot<UiZrlePaletteRleTileFn>(UI_SLOT_ZRLE_PALETTE_RLE_TILE)(&t, arg)
                                 : lib.zrleTile(s == kRaw ? 0 : s == kSolid ? 1 : 128, t),
              o.result);
    EXPECT_EQ(uintptr_t(t.ptr) - uintptr_t(start), uint64_t(o.consumed));
    EXPECT_EQ(left - t.left, o.consumed);
    EXPECT_EQ(log.trail(), o.trail);
    expectFrame(f, r, o.pixels, o.result == 1);
}

uint32_t pal(int i) { return uint32_t(0x804010 + i * 0x010101); }  // palette entry i: bytes 10+i, 40+i, 80+i
Bytes palette(int size) { Bytes out; while (out.length() < 3 * size) out.colour(pal(out.length() / 3)); return out; }

TEST(ZrleTiles, DocumentedCasesAndRefusals) {
    const Bytes abc = {0xAA, 0xBB, 0xCC}, rle = Bytes(abc)({2, 0x11, 0x22, 0x33, 4});
    const auto img = [](Site s) { return kit::trail({Site::imageWrite, s}); };
    const auto one = [](Site s) { return kit::trail({s}); };
    const Trail emptyAt32 = {kit::entry(Site::tileRange, "1,0->1,1 of 2,2")};
    const struct { const char *name; Slot s; int32_t arg; UiRect r; Bytes body; Outcome o; Input in = kBody;
                   int32_t left = INT32_MIN; } cases[] = {
        {"solid null ptr", kSolid, 0, {8, 8, 2, 2}, {}, {-1, 0, {}, one(Site::solidTile)}, kNullPtr, 3},
        {"solid null image", kSolid, 0, {8, 8, 2, 2}, abc, {-1, 3, {}, one(Site::solidTile)}, kNullImage},
        {"solid empty", kSolid, 0, {32, 0, 0, 16}, abc, {1, 3, {}, emptyAt32}},
        {"raw negative width", kRaw, 0, {8, 8, -2, 2}, Bytes(12, 7), {-1, 0, {}, img(Site::rawTile)}},
        {"raw more pixels than 2^31", kRaw, 0, {0, 0, 65536, 65536}, Bytes(12, 7), {0, 0}},
        {"raw more bytes than 2^31", kRaw, 0, {0, 0, 1, 0x2AAAAAAB}, Bytes(12, 7), {0, 0}},
        {"raw null ptr", kRaw, 0, {8, 8, 2, 2}, {}, {-1, 12, {}, one(Site::rawTileNull)}, kNullPtr, 12},
        {"plain null ptr", kPlain, 0, {8, 8, 2, 2}, {}, {-1, 0, {}, one(Site::plainRleTile)}, kNullPtr, 4},
        {"plain empty", kPlain, 0, {32, 0, 0, 2}, rle, {1, 0, {}, emptyAt32}},
        {"packed size 17", kPacked, 17, {0, 0, 4, 4}, palette(17), {-1, 0, {}, one(Site::packedSize)}},
        {"packed size -1", kPacked, -1, {0, 0, 4, 4}, palette(2), {-1, 0, {}, one(Site::packedSize)}},
        {"packed index 3 of three", kPacked, 3, {1, 1, 4, 1}, palette(3)({0xE4}), {1, 10, {0, pal(2), pal(1), pal(0)}}},
        {"packed size 1", kPacked, 1, {1, 1, 5, 1}, palette(1)({0x55}), {1, 4, {pal(0), 0, pal(0), 0, pal(0)}}},
        {"packed 1-bit null ptr", kPacked, 2, {8, 8, 8, 2}, {}, {-1, 0, {}, one(Site::packedNull1)}, kNullPtr, 20},
        {"packed 2-bit null ptr", kPacked, 3, {8, 8, 8, 2}, {}, {-1, 0, {}, one(Site::packedNull2)}, kNullPtr, 20},
        {"packed 4-bit null ptr", kPacked, 5, {8, 8, 8, 2}, {}, {-1, 0, {}, one(Site::packedNull4)}, kNullPtr, 20},
        {"packed no palette, null ptr", kPacked, 0, {8, 8, 8, 2}, {}, {-1, 2, {}, one(Site::packedNull1)}, kNullPtr, 2},
        {"palette rle beyond", kPaletteRle, 130, {1, 1, 3, 1}, palette(2)({0x05, 0x81, 0x00, 0x7F}), {1, 10, {0, pal(1), 0}}},
        {"palette rle 127", kPaletteRle, 127, {0, 0, 2, 2}, palette(2), {-1, 0, {}, one(Site::paletteRleTile)}},
        {"palette rle 256", kPaletteRle, 256, {0, 0, 2, 2}, palette(127), {-1, 0, {}, one(Site::paletteRleTile)}},
        {"palette rle null ptr", kPaletteRle, 130, {8, 8, 2, 2}, {}, {-1, 0, {}, one(Site::paletteRleTile)}, kNullPtr, 20},
        {"palette rle 128, null ptr", kPaletteRle, 128, {8, 8, 2, 2}, {}, {-1, 0, {}, one(Site::paletteRleTile)}, kNullPtr, 1},
    };
    test::Library lib;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        checkTile(lib, c.s, c.arg, c.r, c.body, c.o, c.in, c.left);
    }
}

// Tiles of 1x1 to 16x12 and 40x16 (runs past 255) from the kit's encoder, a
// third changed, the others with a byte more, cut at every byte, in the frame
// and beside it, against the reference decoder; it gives the pictures back.
TEST(ZrleTiles, EncodedBodiesCutAtEveryByteMatchTheModel) {
    test::Library lib;
    std::mt19937 rng(7);
    std::set<int> kinds;
    std::set<Trail> trails;
    for (int i = 0; i < 200; ++i) {
        const int32_t w = i % 16 == 15 ? 40 : 1 + i % 16, h = i % 16 == 15 ? 16 : 1 + i * 7 % 12;
        const kit::Picture p = blocks(rng, w, h, std::array{1, 2, 3, 4, 5, 9, 16, 17, 60, 130}[i % 10], i % 4 < 2);
        Bytes body = kit::zrleTile(p);
        const int sub = body[0];
        const Slot s = sub == 0 ? kRaw : sub == 1 ? kSolid : sub <= 16 ? kPacked : sub == 128 ? kPlain : kPaletteRle;
        kinds.insert(s == kPacked ? 10 + (sub > 2) + (sub > 4) : s);
        body.erase(body.begin());
        if (i % 3 == 0) ++body.back();  // in run-length bodies, the last run one pixel too long
        if (i % 6 == 0) body[size_t(pick(rng, 0, body.length() - 1))] += uint8_t(pick(rng, 1, 255));
        if (i % 3 != 0) body.push_back(0x42);
        lib.setSourceByteOrder(uint8_t(i % 3 * 3));  // any non-zero value is low byte first
        const UiRect in{i % (kW - w + 1), i * 5 % (kH - h + 1), w, h}, beside{kW - w + 1, in.top, w, h};
        if (i % 3 != 0) EXPECT_EQ(model(s, sub, body, in, true).pixels, p.pixels);
        for (int pass = 0; pass < 2; ++pass)
            for (size_t cut = 0; cut <= body.size(); cut += pass || s == kRaw || s == kPacked ? 1 + body.size() / 40 : 1) {
                SCOPED_TRACE(testing::Message() << "tile " << i << " sub-encoding " << sub << " cut " << cut << " pass " << pass);
                const Outcome o = model(s, sub, body.first(cut), pass ? beside : in, i % 3 != 0);
                checkTile(lib, s, sub, pass ? beside : in, body.first(cut), o);
                trails.insert(o.trail);
                if (HasFailure()) return;
            }
    }
    EXPECT_EQ(kinds, (std::set<int>{kRaw, kSolid, kPlain, kPaletteRle, 10, 11, 12}));  // 10-12: 1, 2, 4-bit indexes
    EXPECT_EQ(trails.size(), 8u);  // none, the five image refusals, the two runs too long
}

// The client's read callback: the rectangle's bytes and every request's
// length; a request beyond the end delivers nothing.
struct Feed { Bytes bytes; size_t pos = 0; std::vector<int32_t> reads; } feed;
int readFeed(uint8_t *buffer, int32_t n) {
    feed.reads.push_back(n);
    if (n < 1 || size_t(n) > feed.bytes.size() - feed.pos) return 0;
    std::memcpy(buffer, feed.bytes.data() + feed.pos, size_t(n));
    return feed.pos += size_t(n), 1;
}

// Hextile as the encoding defines it, for rectangles in a kW x kH frame.
Outcome hexModel(const Bytes &s, const UiRect &r, bool low) {
    Outcome o{1};
    uint8_t in[1530];
    const auto pull = [&](int32_t n) {
        o.reads.push_back(n);
        return n <= s.length() - o.consumed && (std::memcpy(in, &s[size_t(o.consumed)], size_t(n)), o.consumed += n, true);
    };
    const auto fail = [&](std::initializer_list<Site> sites) { return o.result = 0, o.trail = kit::trail(sites), o; };
    if (!inside(r)) return fail({Site::imageWrite, Site::hextileRect});
    o.pixels.assign(size_t(r.width * r.height), kFill);
    uint32_t bg = 0, fg = 0;
    for (int32_t ty = 0; ty < r.height; ty += 16)
        for (int32_t tx = 0; tx < r.width; tx += 16) {
            const int32_t tw = std::min(16, r.width - tx), th = std::min(16, r.height - ty);
            const auto paint = [&](int32_t x, int32_t y, int32_t w, int32_t h, uint32_t c) {
                for (int32_t j = 0; j < h; ++j) std::fill_n(&o.pixels[size_t((ty + y + j) * r.width + tx + x)], w, c);
            };
            if (!pull(1)) return fail({Site::hextileSubencoding});
            const uint8_t flags = in[0];
            if (flags & 1 && !pull(4 * tw * th)) return fail({Site::hextileRaw, Site::hextileRawTile});
            for (int32_t i = 0; flags & 1 && i < tw * th; ++i) paint(i % tw, i / tw, 1, 1, mapped(&in[4 * i], low));
            if (flags & 1) continue;
            if (flags & 2 && !pull(4)) return fail({Site::hextileBackground});
            bg = flags & 2 ? mapped(in, low) : bg;
            if (flags & 4 && !pull(4)) return fail({Site::hextileForeground});
            fg = flags & 4 ? mapped(in, low) : fg;
            if (flags & 8 && !pull(1)) return fail({Site::hextileCountRead});
            const int count = flags & 8 ? in[0] : 0, size = flags & 16 ? 6 : 2;
            const Site tile = flags & 16 ? Site::hextileColouredTile : Site::hextilePlainTile;
            if (flags & 8 && count == 0) return fail({flags & 16 ? Site::hextileColouredCount : Site::hextileCount, tile});
            if (flags & 8 && !pull(count * size)) return fail({flags & 16 ? Site::hextileColouredRead : Site::hextileRead, tile});
            paint(0, 0, tw, th, bg);
            for (const uint8_t *e = in; e != in + count * size; e += size) {
                const int x = e[size - 2] >> 4, y = e[size - 2] & 15, w = (e[size - 1] >> 4) + 1, h = (e[size - 1] & 15) + 1;
                if (x + w <= tw && y + h <= th) paint(x, y, w, h, size == 6 ? mapped(e, low) : fg);
            }
        }
    return o;
}

// One rectangle through readFeed on a fresh frame, checked whole against the
// reference decoder, whose outcome it gives for hand checks.
Outcome checkHextile(const test::Library &lib, const UiRect &r, const Bytes &s, bool low) {
    kit::Frame f(kW, kH, kFill);
    kit::LogCapture log;
    feed = Feed{s, 0, {}};
    const Outcome o = hexModel(s, r, low);
    EXPECT_EQ(lib.hextileRect(&f.image(), &f.dirty(), r, readFeed), o.result);
    EXPECT_EQ(feed.reads, o.reads);
    EXPECT_EQ(feed.pos, o.consumed);
    EXPECT_EQ(log.trail(), o.trail);
    expectFrame(f, r, o.pixels, o.result == 1);
    return o;
}

// No image, rectangle or callback: refused before reading.
TEST(Hextile, MissingRecords) {
    test::Library lib;
    kit::Frame f(kW, kH, kFill);
    kit::LogCapture log;
    const UiRect one{8, 8, 16, 16};
    const auto hextile = lib.slot<UiHextileRectFn>(UI_SLOT_HEXTILE_RECT);
    feed = Feed{{0}, 0, {}};
    EXPECT_EQ(hextile(nullptr, &f.dirty(), &one, readFeed) + hextile(&f.image(), &f.dirty(), nullptr, readFeed), 0);
    EXPECT_EQ(hextile(&f.image(), &f.dirty(), &one, nullptr), 0);
    EXPECT_TRUE(feed.reads.empty());
    EXPECT_EQ(log.trail(), kit::trail({Site::hextileRect, Site::hextileRect, Site::hextileSubencoding}));
    expectFrame(f, one, {}, false);
}

// A stream whose tiles take the 32 flag combinations in turn, with random
// pixels and subrectangles (some not fitting), and now and then a count of 0.
Bytes hexGenerate(std::mt19937 &rng, const UiRect &r, int &flags) {
    Bytes out;
    const auto random = [&](int n) { for (; n > 0; --n) out.push_back(uint8_t(pick(rng, 0, 255))); };
    for (int32_t ty = 0; ty < r.height; ty += 16)
        for (int32_t tx = 0; tx < r.width; tx += 16) {
            const int f = flags % 32, count = (flags++ / 32 + f) % 7;  // 0 now and then
            out.push_back(uint8_t(f));
            random(f & 1 ? 4 * std::min(16, r.width - tx) * std::min(16, r.height - ty) : (f & 2 ? 4 : 0) + (f & 4 ? 4 : 0));
            if ((f & 9) != 8) continue;  // raw, or no subrectangles
            out.push_back(uint8_t(count));
            for (int i = 0; i < count; ++i) random(f & 16 ? 5 : 1), out.push_back(uint8_t(pick(rng, 0, i % 2 ? 0x33 : 0xFF)));
        }
    return out;
}

// Rectangles of 40x20 (tiles 16, 16, 8 wide, 16 and 4 high), 1x1 to 48x40 and
// beside the frame; streams generated or from the kit's encoder, cut at every
// read and one byte into it, against the reference decoder, which gives the
// encoder's pictures back reading every byte, at most five reads a tile.
TEST(Hextile, StreamsCutAtEveryReadMatchTheModel) {
    test::Library lib;
    std::mt19937 rng(11);
    std::set<Trail> trails;
    for (int i = 0, flags = 0; i < 96; ++i) {
        const int32_t w = i ? 1 + i * 13 % kW : 40, h = i ? 1 + i * 7 % kH : 20, tiles = (w + 15) / 16 * ((h + 15) / 16);
        const UiRect r{i % (kW - w + 1), i * 3 % (kH - h + 1), w, h};
        const kit::Picture p = blocks(rng, w, h, std::array{1, 2, 3, 9, 130}[i / 2 % 5], i % 4 < 2);
        const bool encoded = i % 2 == 0, low = encoded || i % 4 == 1;  // the encoder writes blue, green, red, 0
        lib.setSourceByteOrder(low);
        const Bytes s = encoded ? kit::hextile(p) : hexGenerate(rng, r, flags);
        const Outcome whole = hexModel(s, r, low);
        if (encoded) EXPECT_TRUE(whole.pixels == p.pixels && whole.consumed == s.length() && whole.reads.size() <= 5u * tiles);
        std::vector<int64_t> cuts = {s.length()};
        for (int64_t at = 0; int32_t n : whole.reads) cuts.insert(cuts.end(), {at, at + 1}), at += n;
        trails.insert(checkHextile(lib, {kW - w + 1, r.top, w, h}, s, low).trail);
        for (int64_t cut : cuts) {
            SCOPED_TRACE(testing::Message() << "stream " << i << " " << w << "x" << h << " cut " << cut << " of " << s.size());
            trails.insert(checkHextile(lib, r, s.first(size_t(std::min<int64_t>(cut, s.length()))), low).trail);
            if (HasFailure()) return;
        }
    }
    EXPECT_EQ(trails.size(), 11u);  // success, the refusal and the nine read failures
}

}  // namespace
