// The RFB decoders: ZRLE/TRLE tile bodies (slots 18-22) and Hextile
// rectangles (slot 24).  Hand cases pin the documented examples and every
// refusal; small reference decoders, written from the encodings, are compared
// with the library on generated bodies cut at every byte; the kit's encoders
// give round trips.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
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
constexpr int32_t kW = 48, kH = 40;  // frame size: 2 x 2 tiles

uint32_t lowFirst(const uint8_t *b) { return b[0] | b[1] << 8 | uint32_t(b[2]) << 16; }
uint32_t mapped(const uint8_t *b, bool low) { return low ? lowFirst(b) : uint32_t(b[0]) << 16 | b[1] << 8 | b[2]; }

// The frame holds `pixels` row by row from the rectangle's top-left and kFill
// everywhere else; the 32x32 tiles the rectangle covers are marked when
// `marked`, no others.
void expectFrame(kit::Frame &f, const UiRect &r, const Pixels &pixels, bool marked) {
    Pixels want(size_t(f.width() * f.height()), kFill);
    for (size_t i = 0; i < pixels.size(); ++i)
        want[size_t((r.top + int32_t(i) / r.width) * f.width() + r.left + int32_t(i) % r.width)] = pixels[i];
    EXPECT_EQ(f.pixels(), want);
    std::vector<int> tiles;
    for (int32_t ty = r.top / 32; marked && r.width > 0 && ty < (r.top + r.height + 31) / 32; ++ty)
        for (int32_t tx = r.left / 32; tx < (r.left + r.width + 31) / 32; ++tx) tiles.push_back(ty * f.dirty().columns + tx);
    EXPECT_EQ(f.markedTiles(), tiles);
    EXPECT_TRUE(f.guardsIntact());
}

// ---------------------------------------------------------------------------
// ZRLE / TRLE tiles
// ---------------------------------------------------------------------------
enum Slot { kRaw, kSolid, kPacked, kPlain, kPaletteRle };

int32_t callTile(const test::Library &lib, Slot s, int32_t arg, UiTileStream &t) {
    switch (s) {
    case kRaw: return lib.slot<UiZrleRawTileFn>(UI_SLOT_ZRLE_RAW_TILE)(&t);
    case kSolid: return lib.slot<UiZrleSolidTileFn>(UI_SLOT_ZRLE_SOLID_TILE)(&t);
    case kPacked: return lib.slot<UiZrlePackedPaletteTileFn>(UI_SLOT_ZRLE_PACKED_PALETTE_TILE)(&t, arg);
    case kPlain: return lib.slot<UiZrlePlainRleTileFn>(UI_SLOT_ZRLE_PLAIN_RLE_TILE)(&t);
    case kPaletteRle: return lib.slot<UiZrlePaletteRleTileFn>(UI_SLOT_ZRLE_PALETTE_RLE_TILE)(&t, arg);
    }
    return 99;
}

struct Outcome {
    int32_t result = 0;
    int64_t consumed = 0;
    Pixels pixels;  // painted, row by row from the tile's top-left
    Trail trail;
};

// The tile bodies as the encoding defines them, for a tile inside the image.
// Palette indexes naming no entry the body supplied give black.
Outcome model(Slot s, int32_t arg, const Bytes &b, int32_t w, int32_t h, bool low) {
    Outcome o;
    int64_t &pos = o.consumed;
    const int64_t n = b.length(), area = int64_t(w) * h;
    const int32_t size = s == kPacked ? arg : s == kPaletteRle ? arg - 128 : 0;
    const auto entry = [&](int i) { return i < size ? lowFirst(&b[size_t(3 * i)]) : 0u; };
    if (n < 3 * size) return o;
    pos = 3 * size;
    if (s == kSolid || s == kRaw) {
        if (n < (s == kSolid ? 3 : 3 * area)) return o;
        for (int64_t i = 0; i < area; ++i) o.pixels.push_back(mapped(&b[size_t(s == kSolid ? 0 : 3 * i)], s == kSolid || low));
        return pos = s == kSolid ? 3 : 3 * area, o.result = 1, o;
    }
    if (s == kPacked) {
        const int bits = size <= 2 ? 1 : size <= 4 ? 2 : 4;
        const int64_t rowBytes = (w * bits + 7) / 8;
        if (n - pos < rowBytes * h) return o;
        for (int32_t y = 0; y < h; ++y)
            for (int32_t x = 0; x < w; ++x)
                o.pixels.push_back(entry(b[size_t(pos + y * rowBytes + x * bits / 8)] >> (8 - bits - x * bits % 8) & ((1 << bits) - 1)));
        return pos += rowBytes * h, o.result = 1, o;
    }
    while (int64_t(o.pixels.size()) < area) {
        uint32_t colour;
        bool run = true;
        if (s == kPlain) {
            if (n - pos < 3) return o;
            colour = lowFirst(&b[size_t(pos)]), pos += 3;
        } else {
            if (pos == n) return o;
            const uint8_t p = b[size_t(pos++)];
            colour = entry(p & 127), run = p >= 128;
        }
        int64_t length = 1;
        for (uint8_t c = 255; run && c == 255; length += c)
            if (pos == n) return o;
            else c = b[size_t(pos++)];
        if (length > area - int64_t(o.pixels.size()))
            return o.result = -1, o.trail = kit::trail({s == kPlain ? Site::plainRleRun : Site::paletteRleRun}), o;
        o.pixels.insert(o.pixels.end(), size_t(length), colour);
    }
    return o.result = 1, o;
}

// One call on a fresh frame, the body right before an unreadable page.
struct TileCall {
    kit::Frame frame{kW, kH, kFill};
    kit::GuardedInput input;
    UiTileStream t;
    uintptr_t start;
    int32_t left;
    kit::LogCapture log;
    TileCall(const Bytes &body, const UiRect &r)
        : input(body), t{r.left, r.top, r.width, r.height, &frame.image(), &frame.dirty(), input.data(), input.size()},
          start(uintptr_t(t.ptr)), left(t.left) {}
    void expect(const test::Library &lib, Slot s, int32_t arg, const Outcome &o) {
        const UiRect r{t.x, t.y, t.width, t.height};
        EXPECT_EQ(callTile(lib, s, arg, t), o.result);
        EXPECT_EQ(uintptr_t(t.ptr) - start, uint64_t(o.consumed));
        EXPECT_EQ(left - t.left, o.consumed);
        EXPECT_EQ(log.trail(), o.trail);
        EXPECT_TRUE(t.x == r.left && t.y == r.top && t.width == r.width && t.height == r.height);
        expectFrame(frame, r, o.pixels, o.result == 1);
    }
};

// Palette entry i: 10+i 40+i 80+i.
Bytes palette(int size) {
    Bytes out;
    for (int i = 0; i < size; ++i) out({uint8_t(0x10 + i), uint8_t(0x40 + i), uint8_t(0x80 + i)});
    return out;
}
uint32_t pal(int i) { return uint32_t(0x80 + i) << 16 | uint32_t(0x40 + i) << 8 | uint32_t(0x10 + i); }
Pixels repeat(std::initializer_list<std::pair<uint32_t, int>> runs) {
    Pixels out;
    for (auto [colour, n] : runs) out.insert(out.end(), size_t(n), colour);
    return out;
}

enum Input { kBody, kNullPtr, kNullImage };
struct TileCase {
    const char *name;
    Slot s;
    int32_t arg;
    UiRect r;
    Bytes body;
    int32_t result;
    int64_t consumed;
    Trail trail;
    Pixels pixels;
    Input input = kBody;
    int32_t left = INT32_MIN;  // the body's size
};

TEST(ZrleTiles, DocumentedCasesAndRefusals) {
    const Bytes abc = {0xAA, 0xBB, 0xCC}, rle4x2 = Bytes(abc)({2, 0x11, 0x22, 0x33, 4});
    const uint32_t a = 0xCCBBAA, b = 0x332211;
    const auto img = [](Site s) { return kit::trail({Site::imageWrite, s}); };
    const auto one = [](Site s) { return kit::trail({s}); };
    const Trail emptyAt32 = {kit::entry(Site::tileRange, "1,0->1,1 of 2,2")};
    const TileCase cases[] = {
        {"solid short", kSolid, 0, {8, 8, 16, 16}, {0x10, 0x20}, 0, 0, {}, {}},
        {"solid 16x16, three bytes", kSolid, 0, {8, 8, 16, 16}, {0x10, 0x20, 0x30, 0x99}, 1, 3, {}, Pixels(256, 0x302010)},
        {"solid outside", kSolid, 0, {40, 8, 16, 16}, abc, -1, 3, img(Site::solidTile), {}},
        {"solid negative width", kSolid, 0, {8, 8, -1, 16}, abc, -1, 3, img(Site::solidTile), {}},
        {"solid huge height", kSolid, 0, {8, 8, 4, INT32_MAX}, abc, -1, 3, img(Site::solidTile), {}},
        {"solid null ptr", kSolid, 0, {8, 8, 2, 2}, {}, -1, 0, one(Site::solidTile), {}, kNullPtr, 3},
        {"solid null image", kSolid, 0, {8, 8, 2, 2}, abc, -1, 3, one(Site::solidTile), {}, kNullImage},
        {"solid negative left", kSolid, 0, {8, 8, 2, 2}, abc, 0, 0, {}, {}, kBody, -3},
        {"solid empty", kSolid, 0, {32, 0, 0, 16}, abc, 1, 3, emptyAt32, {}},
        {"raw 2x2, 11 bytes", kRaw, 0, {8, 8, 2, 2}, Bytes(11, 7), 0, 0, {}, {}},
        {"raw outside", kRaw, 0, {47, 8, 2, 2}, Bytes(12, 7), -1, 12, img(Site::rawTile), {}},
        {"raw negative width", kRaw, 0, {8, 8, -2, 2}, Bytes(12, 7), -1, 0, img(Site::rawTile), {}},
        {"raw negative size", kRaw, 0, {8, 8, -2, -2}, Bytes(12, 7), -1, 0, img(Site::rawTile), {}},
        {"raw larger than any body", kRaw, 0, {0, 0, 65536, 65536}, Bytes(12, 7), 0, 0, {}, {}},
        {"raw count past 2^31", kRaw, 0, {0, 0, 2, 0x40000000}, Bytes(12, 7), 0, 0, {}, {}},
        {"raw null ptr", kRaw, 0, {8, 8, 2, 2}, {}, -1, 12, one(Site::rawTileNull), {}, kNullPtr, 12},
        {"raw null ptr, short", kRaw, 0, {8, 8, 2, 2}, {}, 0, 0, {}, {}, kNullPtr, 11},
        {"raw null image", kRaw, 0, {8, 8, 2, 2}, Bytes(12, 7), -1, 12, one(Site::rawTile), {}, kNullImage},
        {"raw empty", kRaw, 0, {32, 0, 0, 5}, Bytes(3, 7), 1, 0, emptyAt32, {}},
        {"plain 4x2, later byte kept", kPlain, 0, {8, 8, 4, 2}, Bytes(rle4x2)({0xEE}), 1, 8, {}, repeat({{a, 3}, {b, 5}})},
        {"plain 255 255 3 is 514", kPlain, 0, {3, 2, 32, 17}, Bytes(abc)({255, 255, 3, 0x11, 0x22, 0x33, 29}), 1, 10, {},
         repeat({{a, 514}, {b, 30}})},
        {"plain run of nine in eight", kPlain, 0, {8, 8, 4, 2}, Bytes(abc)({8, 1}), -1, 4, one(Site::plainRleRun), {}},
        {"plain second run too long", kPlain, 0, {8, 8, 4, 2}, Bytes(abc)({2, 1, 2, 3, 5}), -1, 8, one(Site::plainRleRun),
         {a, a, a}},
        {"plain outside", kPlain, 0, {46, 8, 4, 2}, rle4x2, -1, 0, img(Site::plainRleTile), {}},
        {"plain huge width", kPlain, 0, {8, 8, INT32_MAX, 1}, rle4x2, -1, 0, img(Site::plainRleTile), {}},
        {"plain null ptr", kPlain, 0, {8, 8, 2, 2}, {}, -1, 0, one(Site::plainRleTile), {}, kNullPtr, 4},
        {"plain null image", kPlain, 0, {8, 8, 2, 2}, rle4x2, -1, 0, one(Site::plainRleTile), {}, kNullImage},
        {"plain negative left", kPlain, 0, {8, 8, 2, 2}, rle4x2, 0, 0, {}, {}, kBody, -4},
        {"plain empty", kPlain, 0, {32, 0, 0, 2}, rle4x2, 1, 0, emptyAt32, {}},
        {"packed size 17", kPacked, 17, {0, 0, 4, 4}, palette(17), -1, 0, one(Site::packedSize), {}},
        {"packed size -1", kPacked, -1, {0, 0, 4, 4}, palette(2), -1, 0, one(Site::packedSize), {}},
        {"packed 1-bit 10x2", kPacked, 2, {1, 1, 10, 2}, palette(2)({0x80, 0x40, 0xFF, 0xC0}), 1, 10, {},
         {pal(1), pal(0), pal(0), pal(0), pal(0), pal(0), pal(0), pal(0), pal(0), pal(1), pal(1), pal(1), pal(1),
          pal(1), pal(1), pal(1), pal(1), pal(1), pal(1), pal(1)}},
        {"packed 2-bit 3x1", kPacked, 4, {1, 1, 3, 1}, palette(4)({0x1B}), 1, 13, {}, {pal(0), pal(1), pal(2)}},
        {"packed 4-bit 3x1", kPacked, 16, {1, 1, 3, 1}, palette(16)({0xA5, 0x30}), 1, 50, {}, {pal(10), pal(5), pal(3)}},
        {"packed index 3 of three", kPacked, 3, {1, 1, 4, 1}, palette(3)({0xE4}), 1, 10, {}, {0, pal(2), pal(1), pal(0)}},
        {"packed indexes short", kPacked, 2, {0, 0, 10, 2}, palette(2)({0xFF, 0xFF, 0xFF}), 0, 6, {}, {}},
        {"packed outside", kPacked, 2, {40, 0, 10, 2}, palette(2)({0, 0, 0, 0}), -1, 6, img(Site::packedTile), {}},
        {"packed null image", kPacked, 2, {0, 0, 8, 1}, palette(2)({0}), -1, 6, one(Site::packedTile), {}, kNullImage},
        {"packed 1-bit null ptr", kPacked, 2, {8, 8, 8, 2}, {}, -1, 0, one(Site::packedNull1), {}, kNullPtr, 20},
        {"packed 2-bit null ptr", kPacked, 3, {8, 8, 8, 2}, {}, -1, 0, one(Site::packedNull2), {}, kNullPtr, 20},
        {"packed 4-bit null ptr", kPacked, 5, {8, 8, 8, 2}, {}, -1, 0, one(Site::packedNull4), {}, kNullPtr, 20},
        {"packed empty palette, null ptr", kPacked, 0, {8, 8, 8, 2}, {}, -1, 2, one(Site::packedNull1), {}, kNullPtr, 2},
        {"palette rle 130", kPaletteRle, 130, {1, 1, 4, 1}, palette(2)({0x01, 0x80, 0x02}), 1, 9, {}, repeat({{pal(1), 1}, {pal(0), 3}})},
        {"palette rle run of five in four", kPaletteRle, 130, {0, 0, 2, 2}, palette(2)({0x81, 0x04}), -1, 8,
         one(Site::paletteRleRun), {}},
        {"palette rle index beyond", kPaletteRle, 130, {1, 1, 2, 1}, palette(2)({0x05, 0x01}), 1, 8, {}, {0, pal(1)}},
        {"palette rle sub-encoding 127", kPaletteRle, 127, {0, 0, 2, 2}, palette(2), -1, 0, one(Site::paletteRleTile), {}},
        {"palette rle sub-encoding 256", kPaletteRle, 256, {0, 0, 2, 2}, palette(127), -1, 0, one(Site::paletteRleTile), {}},
        {"palette rle outside", kPaletteRle, 130, {0, 39, 2, 2}, palette(2)({0x81, 3}), -1, 6, img(Site::paletteRleTile), {}},
        {"palette rle null ptr", kPaletteRle, 130, {8, 8, 2, 2}, {}, -1, 0, one(Site::paletteRleTile), {}, kNullPtr, 20},
        {"palette rle no palette, null ptr", kPaletteRle, 128, {8, 8, 2, 2}, {}, -1, 0, one(Site::paletteRleTile), {}, kNullPtr, 1},
    };
    test::Library lib;
    for (const TileCase &c : cases) {
        SCOPED_TRACE(c.name);
        TileCall call(c.body, c.r);
        if (c.input == kNullPtr) call.t.ptr = nullptr, call.start = 0;
        if (c.input == kNullImage) call.t.image = nullptr;
        if (c.left != INT32_MIN) call.t.left = call.left = c.left;
        call.expect(lib, c.s, c.arg, Outcome{c.result, c.consumed, c.pixels, c.trail});
    }
}

// Raw pixels follow the source byte order (any non-zero value is low byte
// first); every other tile body ignores it.
TEST(ZrleTiles, RawFollowsTheByteOrder) {
    test::Library lib;
    const Bytes body = {0x10, 0x20, 0x30, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0xEE};
    for (uint8_t order : {0, 1, 7}) {
        SCOPED_TRACE(int(order));
        lib.setSourceByteOrder(order);
        TileCall call(body, {5, 7, 2, 2});
        const Pixels low = {0x302010, 0x030201, 0x060504, 0x090807}, high = {0x102030, 0x010203, 0x040506, 0x070809};
        call.expect(lib, kRaw, 0, Outcome{1, 12, order != 0 ? low : high, {}});
    }
}

// A body for each slot: mostly well formed, with occasional runs too long and
// indexes beyond the palette, then a few bytes more.
Bytes generate(std::mt19937 &rng, Slot s, int32_t arg, int32_t w, int32_t h) {
    const auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    Bytes out;
    const int32_t area = w * h, size = s == kPacked ? arg : s == kPaletteRle ? arg - 128 : 0;
    const int bits = size <= 2 ? 1 : size <= 4 ? 2 : 4;
    int32_t fixed = s == kSolid ? 3 : s == kRaw ? 3 * area : s == kPacked ? 3 * size + h * ((w * bits + 7) / 8) : 3 * size;
    for (int32_t i = 0; i < fixed; ++i) out.push_back(uint8_t(pick(0, 255)));
    for (int32_t left = s >= kPlain ? area : 0; left > 0;) {
        const int32_t run = pick(0, 24) == 0 ? left + 1 : pick(0, 2) == 0 ? left : pick(1, std::min(left, 5));
        if (s == kPlain) out.colour(uint32_t(pick(0, 0xFFFFFF)));
        const int index = pick(0, size + size / 4);
        if (s == kPaletteRle && run == 1 && pick(0, 1)) out.push_back(uint8_t(index));
        else {
            if (s == kPaletteRle) out.push_back(uint8_t(128 + index));
            for (int32_t r = run - 1; r >= 0; r -= 255) out.push_back(uint8_t(std::min(r, 255)));
        }
        left -= run;
    }
    for (int extra = pick(0, 2); extra > 0; --extra) out.push_back(uint8_t(pick(0, 255)));
    return out;
}

// Every slot on generated bodies for tile sizes 1..16 x 1..12, cut at every
// byte, against the reference decoder.
TEST(ZrleTiles, GeneratedBodiesCutAtEveryByteMatchTheModel) {
    test::Library lib;
    std::mt19937 rng(7);
    const int32_t args[] = {0, 1, 0, 2, 3, 4, 5, 16, 0, 128, 130, 131, 133, 144, 255};
    const Slot slots[] = {kRaw, kSolid, kPacked, kPacked, kPacked, kPacked, kPacked, kPacked, kPacked,
                          kPaletteRle, kPaletteRle, kPaletteRle, kPaletteRle, kPaletteRle, kPaletteRle};
    for (int i = 0; i < 15 * 16; ++i) {
        const Slot s = i % 15 == 8 ? kPlain : slots[i % 15];
        const int32_t arg = args[i % 15], w = 1 + i % 16, h = 1 + i * 7 % 12;
        const bool low = i % 3 != 0;
        lib.setSourceByteOrder(uint8_t(low));
        const Bytes body = generate(rng, s, arg, w, h);
        const UiRect r{i % (kW - w + 1), i * 5 % (kH - h + 1), w, h};
        for (size_t cut = 0; cut <= body.size(); cut += s == kRaw || s == kPacked ? 1 + body.size() / 40 : 1) {
            SCOPED_TRACE(testing::Message() << "slot " << s << " arg " << arg << " " << w << "x" << h << " cut " << cut);
            const Bytes part = body.first(cut);
            TileCall(part, r).expect(lib, s, arg, model(s, arg, part, w, h, low));
            if (HasFailure()) return;
        }
    }
}

// Pictures of 1 to 200 colours and many sizes through the kit's encoder,
// decoded as a client does: per 64x64 tile the sub-encoding byte, then the
// tile's slot from the next byte on.  Every body kind and index width occurs.
TEST(ZrleTiles, EncoderRoundTrips) {
    test::Library lib;
    lib.setSourceByteOrder(1);  // the encoder writes raw pixels low byte first
    std::set<int> kinds;
    for (int32_t w : {1, 5, 17, 64, 130})
        for (int32_t h : {1, 6, 33, 70})
            for (uint32_t colours : {1u, 2u, 3u, 4u, 5u, 16u, 17u, 127u, 200u}) {
                SCOPED_TRACE(testing::Message() << w << "x" << h << " colours " << colours);
                kit::Picture p = kit::testPicture(w, h, colours);
                for (uint32_t &c : p.pixels) c = c % colours * 0x010203;
                const Bytes bytes = kit::zrleRect(p);
                kit::LogCapture log;
                kit::Frame f(w + 3, h + 2, kFill);
                UiTileStream t{0, 0, 0, 0, &f.image(), &f.dirty(), bytes.data(), bytes.length()};
                for (int32_t ty = 0; ty < h; ty += 64)
                    for (int32_t tx = 0; tx < w; tx += 64) {
                        const int sub = *t.ptr++;
                        --t.left;
                        kinds.insert(sub >= 130 ? 130 : sub >= 2 && sub <= 16 ? 2 + (sub > 2) + (sub > 4) : sub);
                        t.x = 3 + tx, t.y = 2 + ty, t.width = std::min(64, w - tx), t.height = std::min(64, h - ty);
                        ASSERT_EQ(lib.zrleTile(sub, t), 1);
                    }
                EXPECT_EQ(t.left, 0);
                expectFrame(f, {3, 2, w, h}, p.pixels, true);
                EXPECT_TRUE(log.trail().empty());
            }
    EXPECT_EQ(kinds, (std::set<int>{0, 1, 2, 3, 4, 128, 130}));
}

// ---------------------------------------------------------------------------
// Hextile
// ---------------------------------------------------------------------------
// The client's side of the read callback: the rectangle's bytes and every
// request's length; a request beyond the end delivers nothing.
struct Feed {
    Bytes bytes;
    size_t pos = 0;
    std::vector<int32_t> requests;
} feed;

int readFeed(uint8_t *buffer, int32_t n) {
    feed.requests.push_back(n);
    if (n < 1 || size_t(n) > feed.bytes.size() - feed.pos) return 0;
    std::memcpy(buffer, feed.bytes.data() + feed.pos, size_t(n));
    return feed.pos += size_t(n), 1;
}

struct HexOutcome {
    int32_t result = 1;
    std::vector<int32_t> requests;
    Trail trail;
};

// Hextile as the encoding defines it, painting into `frame` (kW x kH, row by
// row).
HexOutcome hexModel(const Bytes &s, const UiRect &r, bool low, Pixels &frame) {
    HexOutcome o;
    size_t pos = 0;
    uint8_t in[1530];
    const auto pull = [&](int32_t n) {
        o.requests.push_back(n);
        return size_t(n) <= s.size() - pos && (std::memcpy(in, &s[pos], size_t(n)), pos += size_t(n), true);
    };
    const auto fail = [&](std::initializer_list<Site> sites) { return o.result = 0, o.trail = kit::trail(sites), o; };
    uint32_t bg = 0, fg = 0;
    for (int32_t ty = 0; ty < r.height; ty += 16)
        for (int32_t tx = 0; tx < r.width; tx += 16) {
            const int32_t tw = std::min(16, r.width - tx), th = std::min(16, r.height - ty);
            const auto paint = [&](int32_t x, int32_t y, int32_t w, int32_t h, uint32_t c) {
                for (int32_t j = 0; j < h; ++j)
                    for (int32_t i = 0; i < w; ++i) frame[size_t((r.top + ty + y + j) * kW + r.left + tx + x + i)] = c;
            };
            if (!pull(1)) return fail({Site::hextileSubencoding});
            const uint8_t flags = in[0];
            if (flags & 1) {
                if (!pull(4 * tw * th)) return fail({Site::hextileRaw, Site::hextileRawTile});
                for (int32_t i = 0; i < tw * th; ++i) paint(i % tw, i / tw, 1, 1, mapped(&in[4 * i], low));
                continue;
            }
            if (flags & 2 && !pull(4)) return fail({Site::hextileBackground});
            if (flags & 2) bg = mapped(in, low);
            if (flags & 4 && !pull(4)) return fail({Site::hextileForeground});
            if (flags & 4) fg = mapped(in, low);
            if (!(flags & 8)) {
                paint(0, 0, tw, th, bg);
                continue;
            }
            if (!pull(1)) return fail({Site::hextileCountRead});
            const int count = in[0], size = flags & 16 ? 6 : 2;
            const Site tile = flags & 16 ? Site::hextileColouredTile : Site::hextilePlainTile;
            if (count == 0) return fail({flags & 16 ? Site::hextileColouredCount : Site::hextileCount, tile});
            if (!pull(count * size)) return fail({flags & 16 ? Site::hextileColouredRead : Site::hextileRead, tile});
            paint(0, 0, tw, th, bg);
            for (const uint8_t *e = in; e != in + count * size; e += size) {
                const int x = e[size - 2] >> 4, y = e[size - 2] & 15, w = (e[size - 1] >> 4) + 1, h = (e[size - 1] & 15) + 1;
                if (x + w <= tw && y + h <= th) paint(x, y, w, h, size == 6 ? mapped(e, low) : fg);
            }
        }
    return o;
}

// One rectangle on a fresh frame through readFeed (or `read`).
struct HexCall {
    kit::Frame frame{kW, kH, kFill};
    kit::LogCapture log;
    int32_t result;
    HexCall(const test::Library &lib, const Bytes &s, const UiRect &r, UiReadFn read = readFeed) {
        feed = Feed{s, 0, {}};
        result = lib.hextileRect(&frame.image(), &frame.dirty(), r, read);
    }
};

// The rectangle's pixels from a function of the position inside it.
template <typename Fn>
Pixels build(const UiRect &r, Fn fn) {
    Pixels out;
    for (int32_t y = 0; y < r.height; ++y)
        for (int32_t x = 0; x < r.width; ++x) out.push_back(fn(x, y));
    return out;
}

TEST(Hextile, TileOrderSizesAndRawTilesIgnoringOtherFlags) {
    test::Library lib;
    lib.setSourceByteOrder(1);
    const UiRect r{4, 10, 40, 20};  // tiles 16, 16, 8 wide and 16, 4 high, row by row
    Bytes s;  // raw tiles with every other flag set too: only the pixels follow
    for (int t = 0; t < 6; ++t)
        for (int32_t i = 0, n = (t % 3 == 2 ? 8 : 16) * (t < 3 ? 16 : 4); i < n; ++i) {
            if (i == 0) s({0xFF});
            s({uint8_t(i), uint8_t(t), 0x77, 0x99});
        }
    HexCall c(lib, s, r);
    EXPECT_EQ(c.result, 1);
    EXPECT_EQ(feed.requests, (std::vector<int32_t>{1, 1024, 1, 1024, 1, 512, 1, 256, 1, 256, 1, 128}));
    EXPECT_EQ(feed.pos, s.size());
    expectFrame(c.frame, r, build(r, [](int32_t x, int32_t y) {
        const int32_t t = y / 16 * 3 + x / 16, i = y % 16 * (t % 3 == 2 ? 8 : 16) + x % 16;
        return 0x770000u | uint32_t(t) << 8 | uint32_t(i);
    }), true);
}

// Background and foreground start at 0 and carry over from tile to tile;
// subrectangles paint over the background, later ones over earlier ones.
TEST(Hextile, BackgroundAndForegroundCarryOver) {
    test::Library lib;
    const Bytes s = {0,                                                 // tile 0: the starting background
                     2, 0x11, 0x22, 0x33, 0x44,                         // tile 1: a new background
                     0,                                                 // tile 2: the same
                     4 | 8, 0xAA, 0xBB, 0xCC, 0xDD, 1, 0x00, 0x11,      // tile 3: foreground, 2x2 at 0,0
                     8, 1, 0x11, 0x00,                                  // tile 4: 1x1 at 1,1, same foreground
                     2 | 8 | 16, 1, 2, 3, 0, 2,                         // tile 5: own pixels,
                     0x10, 0x20, 0x30, 0x40, 0x00, 0x33,                //   4x4 at 0,0
                     0x50, 0x60, 0x70, 0x80, 0x22, 0x11};               //   2x2 at 2,2 over it
    const UiRect r{4, 10, 40, 20};
    for (bool low : {false, true}) {
        SCOPED_TRACE(low);
        lib.setSourceByteOrder(low);
        HexCall c(lib, s, r);
        EXPECT_EQ(c.result, 1);
        EXPECT_EQ(feed.requests, (std::vector<int32_t>{1, 1, 4, 1, 1, 4, 1, 2, 1, 1, 2, 1, 4, 1, 12}));
        const auto m = [&](uint8_t b0, uint8_t b1, uint8_t b2) { return low ? b2 << 16 | b1 << 8 | b0 : b0 << 16 | b1 << 8 | b2; };
        expectFrame(c.frame, r, build(r, [&](int32_t x, int32_t y) {
            const int32_t tx = x % 16, ty = y % 16, t = y / 16 * 3 + x / 16;
            const int bg = m(0x11, 0x22, 0x33);
            return uint32_t(t == 0   ? 0
                            : t == 3 ? (tx < 2 && ty < 2 ? m(0xAA, 0xBB, 0xCC) : bg)
                            : t == 4 ? (tx == 1 && ty == 1 ? m(0xAA, 0xBB, 0xCC) : bg)
                            : t == 5 ? (tx >= 2 && tx < 4 && ty >= 2 ? m(0x50, 0x60, 0x70) : tx < 4 ? m(0x10, 0x20, 0x30) : m(1, 2, 3))
                                     : bg);
        }), true);
        EXPECT_TRUE(c.log.trail().empty());
    }
}

// One subrectangle in a one-tile rectangle: painted when it fits, skipped
// silently when it does not.
TEST(Hextile, SubrectanglesThatDoNotFitAreSkipped) {
    test::Library lib;
    lib.setSourceByteOrder(1);
    const struct {
        int32_t w, h;
        uint8_t xy, wh;
        bool fits;
    } cases[] = {{16, 16, 0xF0, 0x00, true}, {15, 16, 0xF0, 0x00, false}, {16, 16, 0x0F, 0x00, true},
                 {16, 15, 0x0F, 0x00, false}, {16, 16, 0x00, 0xFF, true}, {16, 16, 0x11, 0xFF, false},
                 {8, 4, 0x70, 0x03, true},    {8, 4, 0x70, 0x13, false},  {8, 4, 0x03, 0x70, true}, {8, 4, 0x03, 0x71, false}};
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.w << "x" << c.h << " " << int(c.xy) << " " << int(c.wh));
        const UiRect r{8, 8, c.w, c.h};
        HexCall call(lib, {2 | 4 | 8, 1, 1, 1, 0, 2, 2, 2, 0, 1, c.xy, c.wh}, r);
        EXPECT_EQ(call.result, 1);
        expectFrame(call.frame, r, build(r, [&](int32_t x, int32_t y) {
            const bool in = x >= c.xy >> 4 && x <= (c.xy >> 4) + (c.wh >> 4) && y >= (c.xy & 15) && y <= (c.xy & 15) + (c.wh & 15);
            return c.fits && in ? 0x020202u : 0x010101u;
        }), true);
        EXPECT_TRUE(call.log.trail().empty());
    }
}

// Refusals and read failures: the sites reported, the reads made, the
// tiles decoded before the failure left painted, no tile marked.
TEST(Hextile, RefusalsAndReadFailures) {
    test::Library lib;
    lib.setSourceByteOrder(1);
    const UiRect one{8, 8, 16, 16}, wide{4, 10, 40, 20};
    const auto two = [](Site a, Site b) { return kit::trail({a, b}); };
    const Trail outside = two(Site::imageWrite, Site::hextileRect);
    const Pixels twoTiles = build(wide, [](int32_t x, int32_t y) { return y < 16 && x < 32 ? x < 16 ? 0x030201u : 0x060504u : kFill; });
    const struct {
        const char *name;
        UiRect r;
        Bytes s;
        int32_t result;
        std::vector<int32_t> requests;
        Trail trail;
        Pixels pixels;
        UiReadFn read = readFeed;
    } cases[] = {
        {"outside", {40, 8, 16, 16}, {0}, 0, {}, outside, {}},
        {"negative width", {8, 8, -1, 16}, {0}, 0, {}, outside, {}},
        {"huge height", {8, 8, 16, INT32_MAX}, {0}, 0, {}, outside, {}},
        {"no read callback", one, {0}, 0, {}, kit::trail({Site::hextileSubencoding}), {}, nullptr},
        {"sub-encoding", one, {}, 0, {1}, kit::trail({Site::hextileSubencoding}), {}},
        {"raw pixels", one, Bytes(1, 1)(Bytes(1023, 0)), 0, {1, 1024}, two(Site::hextileRaw, Site::hextileRawTile), {}},
        {"background", one, {2, 1, 2, 3}, 0, {1, 4}, kit::trail({Site::hextileBackground}), {}},
        {"foreground", one, {6, 1, 2, 3, 4, 5, 6, 7}, 0, {1, 4, 4}, kit::trail({Site::hextileForeground}), {}},
        {"count", one, {8}, 0, {1, 1}, kit::trail({Site::hextileCountRead}), {}},
        {"coloured count 0", one, {24, 0, 1, 2}, 0, {1, 1}, two(Site::hextileColouredCount, Site::hextileColouredTile), {}},
        {"coloured records", one, {24, 2, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, 0, {1, 1, 12},
         two(Site::hextileColouredRead, Site::hextileColouredTile), {}},
        {"plain count 0", one, {8, 0, 1, 2}, 0, {1, 1}, two(Site::hextileCount, Site::hextilePlainTile), {}},
        {"plain records", one, {8, 3, 0, 0, 0, 0, 0}, 0, {1, 1, 6}, two(Site::hextileRead, Site::hextilePlainTile), {}},
        {"third tile", wide, {2, 1, 2, 3, 0, 2, 4, 5, 6, 0}, 0, {1, 4, 1, 4, 1}, kit::trail({Site::hextileSubencoding}),
         twoTiles},
        {"empty on a tile boundary", {32, 0, 0, 16}, {0}, 1, {}, {kit::entry(Site::tileRange, "1,0->1,1 of 2,2")}, {}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        HexCall call(lib, c.s, c.r, c.read);
        EXPECT_EQ(call.result, c.result);
        EXPECT_EQ(feed.requests, c.requests);
        EXPECT_EQ(call.log.trail(), c.trail);
        expectFrame(call.frame, c.r, c.pixels, false);
    }
    // No image, no rectangle, no pixels: refused before reading.  No tile
    // map: drawn, nothing marked.
    HexCall call(lib, {}, one);
    const auto hextile = lib.slot<UiHextileRectFn>(UI_SLOT_HEXTILE_RECT);
    imgbuf noPixels = call.frame.image();
    noPixels.pixels = nullptr;
    call.log.clear();
    EXPECT_EQ(hextile(nullptr, &call.frame.dirty(), &one, readFeed), 0);
    EXPECT_EQ(hextile(&call.frame.image(), &call.frame.dirty(), nullptr, readFeed), 0);
    EXPECT_EQ(hextile(&noPixels, &call.frame.dirty(), &one, readFeed), 0);
    EXPECT_EQ(call.log.trail(), kit::trail({Site::hextileRect, Site::hextileRect, Site::hextileRect}));
    EXPECT_EQ(feed.requests, std::vector<int32_t>{1});  // the first call's
    feed = Feed{{2, 7, 8, 9, 0}, 0, {}};
    call.log.clear();
    call.frame.clearTiles();
    EXPECT_EQ(hextile(&call.frame.image(), nullptr, &one, readFeed), 1);
    expectFrame(call.frame, one, Pixels(256, 0x090807), false);
    EXPECT_TRUE(call.log.trail().empty());
}

// A stream for a rectangle whose tiles take the 32 flag combinations in
// turn, with random pixels and subrectangles (some not fitting), and now and
// then a count of 0.
Bytes hexGenerate(std::mt19937 &rng, const UiRect &r, int &flags) {
    const auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    Bytes out;
    const auto random = [&](int n) { for (int i = 0; i < n; ++i) out.push_back(uint8_t(pick(0, 255))); };
    for (int32_t ty = 0; ty < r.height; ty += 16)
        for (int32_t tx = 0; tx < r.width; tx += 16) {
            const int f = flags++ % 32, count = pick(0, 15) == 0 ? 0 : pick(1, 6);
            out.push_back(uint8_t(f));
            if (f & 1) random(4 * std::min(16, r.width - tx) * std::min(16, r.height - ty));
            else random((f & 2 ? 4 : 0) + (f & 4 ? 4 : 0));
            if (f & 1 || !(f & 8)) continue;
            out.push_back(uint8_t(count));
            for (int i = 0; i < count; ++i) {
                random(f & 16 ? 4 : 0);
                out({uint8_t(pick(0, 255) & (pick(0, 1) ? 0x77 : 0xFF)), uint8_t(pick(0, 255) & (pick(0, 1) ? 0x33 : 0xFF))});
            }
        }
    return out;
}

// Generated streams for rectangles of 1x1 to 48x40, cut at every read and one
// byte into it, against the reference decoder: result, every request, the
// reports, every pixel, the marks.  The cuts reach every failure site.
TEST(Hextile, GeneratedStreamsCutAtEveryReadMatchTheModel) {
    test::Library lib;
    std::mt19937 rng(11);
    std::set<Trail> trails;
    int flags = 0;
    for (int i = 0; i < 48; ++i) {
        const int32_t w = 1 + i * 13 % kW, h = 1 + i * 7 % kH;
        const UiRect r{i % (kW - w + 1), i * 3 % (kH - h + 1), w, h};
        const bool low = i % 2 != 0;
        lib.setSourceByteOrder(low);
        const Bytes s = hexGenerate(rng, r, flags);
        Pixels scratch(size_t(kW * kH));
        std::vector<size_t> cuts = {s.size()};
        size_t at = 0;
        for (int32_t n : hexModel(s, r, low, scratch).requests) cuts.insert(cuts.end(), {at, at + 1}), at += size_t(n);
        for (size_t cut : cuts) {
            SCOPED_TRACE(testing::Message() << "stream " << i << " " << w << "x" << h << " cut " << cut << " of " << s.size());
            const Bytes part = s.first(std::min(cut, s.size()));
            Pixels want(size_t(kW * kH), kFill);
            const HexOutcome o = hexModel(part, r, low, want);
            HexCall c(lib, part, r);
            EXPECT_EQ(c.result, o.result);
            EXPECT_EQ(feed.requests, o.requests);
            EXPECT_EQ(c.log.trail(), o.trail);
            expectFrame(c.frame, {0, 0, kW, kH}, want, false);
            EXPECT_EQ(c.frame.markedTiles().empty(), o.result == 0);
            trails.insert(o.trail);
            if (HasFailure()) return;
        }
    }
    EXPECT_EQ(trails.size(), 10u);  // success and the nine failures
}

// The kit's encoder over pictures of several sizes and colour counts: the
// picture comes back, every byte is read, with at most five reads per tile,
// each of a length the encoding names.
TEST(Hextile, EncoderRoundTrips) {
    test::Library lib;
    lib.setSourceByteOrder(1);  // the encoder writes blue, green, red, 0
    for (int32_t w : {1, 15, 16, 17, 40})
        for (int32_t h : {1, 16, 21, 33})
            for (uint32_t colours : {1u, 2u, 3u, 50u}) {
                SCOPED_TRACE(testing::Message() << w << "x" << h << " colours " << colours);
                kit::Picture p = kit::testPicture(w, h, colours);
                for (uint32_t &c : p.pixels) c = c % colours * 0x030507;
                const UiRect r{kW - w, kH - h, w, h};
                const Bytes s = kit::hextile(p);
                Pixels scratch(size_t(kW * kH));
                HexCall c(lib, s, r);
                EXPECT_EQ(c.result, 1);
                EXPECT_EQ(feed.pos, s.size());
                EXPECT_LE(feed.requests.size(), size_t(5 * ((w + 15) / 16) * ((h + 15) / 16)));
                EXPECT_EQ(feed.requests, hexModel(s, r, true, scratch).requests);
                expectFrame(c.frame, r, p.pixels, true);
                EXPECT_TRUE(c.log.trail().empty());
            }
}

}  // namespace
