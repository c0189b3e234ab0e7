// RFB: every ZRLE/TRLE tile kind on the 70 tiles of 64 x 64 of a picture,
// and Hextile rectangles of 256 x 256 (the bodies: rfbStreams.h).  Solid and
// raw tiles are compared with memset / memcpy of the same rows.
#include <cstring>
#include <vector>

#include "harness.h"
#include "rfbStreams.h"
#include "streams.h"

namespace bench {
namespace {

using interop::Picture;
using Bytes = std::vector<uint8_t>;
using Kind = RfbKind;

constexpr int32_t kTile = kRfbTile;

int32_t paint(const RfbTile &t, UiTileStream &s) {
    const Plugin &plugin = Plugin::get();
    switch (t.subencoding) {
        case 0: return plugin.slot<UiZrleRawTileFn>(UI_SLOT_ZRLE_RAW_TILE)(&s);
        case 1: return plugin.slot<UiZrleSolidTileFn>(UI_SLOT_ZRLE_SOLID_TILE)(&s);
        case 128: return plugin.slot<UiZrlePlainRleTileFn>(UI_SLOT_ZRLE_PLAIN_RLE_TILE)(&s);
        default:
            if (t.subencoding < 128)
                return plugin.slot<UiZrlePackedPaletteTileFn>(UI_SLOT_ZRLE_PACKED_PALETTE_TILE)(&s, t.subencoding);
            return plugin.slot<UiZrlePaletteRleTileFn>(UI_SLOT_ZRLE_PALETTE_RLE_TILE)(&s, t.subencoding);
    }
}

// All tiles of a kind, each called as the client does after reading the
// sub-encoding byte (the entry point is chosen per tile, like the client's
// switch on that byte).
void zrleTiles(benchmark::State &state, Kind kind) {
    const std::vector<RfbTile> &tiles = rfbTiles(kind);
    Screen &screen = desk();
    Plugin::get().byteOrder(1);
    int64_t inputBytes = 0;
    for (const RfbTile &t : tiles) inputBytes += int64_t(t.body.size()) + 1;
    bool ok = true;
    for (auto _ : state) {
        for (const RfbTile &t : tiles) {
            UiTileStream s{kMargin + t.x, kMargin + t.y, kTile, kTile, &screen.image(), &screen.dirty(), t.body.data(),
                           int32_t(t.body.size())};
            ok &= paint(t, s) == 1 && s.left == 0;
        }
        benchmark::ClobberMemory();
    }
    if (!ok) state.SkipWithError("a tile was not painted or not consumed exactly");
    const int64_t pixels = int64_t(tiles.size()) * kTile * kTile;
    count(state, Work{pixels, 4 * pixels, inputBytes});
}

// The references: one memset / memcpy per row of every tile.
void tileRows(benchmark::State &state, bool copy) {
    const std::vector<RfbTile> &tiles = rfbTiles(Kind::solid);
    Screen &screen = desk();
    std::vector<uint32_t> source(kTile * kTile, 0x3465a4);
    for (auto _ : state) {
        for (const RfbTile &t : tiles)
            for (int32_t y = 0; y < kTile; ++y) {
                uint32_t *row = screen.at(kMargin + t.x, kMargin + t.y + y);
                if (copy)
                    std::memcpy(row, source.data() + size_t(y) * kTile, 4 * kTile);
                else
                    std::memset(row, 0x5a, 4 * kTile);
            }
        benchmark::ClobberMemory();
    }
    const int64_t pixels = int64_t(tiles.size()) * kTile * kTile;
    count(state, pixelsOf(pixels));
}

// ---------------------------------------------------------------------------
// Hextile
// ---------------------------------------------------------------------------

// The client's read callback: bytes of the current rectangle.
struct Feed {
    const uint8_t *next;
    size_t left;
};
Feed feed;

int readFeed(uint8_t *buffer, int32_t length) {
    if (length < 0 || size_t(length) > feed.left) return 0;
    std::memcpy(buffer, feed.next, size_t(length));
    feed.next += length;
    feed.left -= size_t(length);
    return 1;
}

void hextile(benchmark::State &state, const Picture &source, int32_t x, int32_t y) {
    const Bytes data = encodeHextile(source.crop(x, y, 256, 256));
    Screen &screen = desk();
    Plugin::get().byteOrder(1);
    const auto decode = Plugin::get().slot<UiHextileRectFn>(UI_SLOT_HEXTILE_RECT);
    const UiRect rect{kMargin + x, kMargin + y, 256, 256};
    bool ok = true;
    for (auto _ : state) {
        feed = Feed{data.data(), data.size()};
        ok &= decode(&screen.image(), &screen.dirty(), &rect, readFeed) == 1 && feed.left == 0;
        benchmark::ClobberMemory();
    }
    if (!ok) state.SkipWithError("the rectangle was not decoded or not consumed exactly");
    count(state, Work{256 * 256, 4 * 256 * 256, int64_t(data.size())});
}

}  // namespace

void registerRfb() {
    const std::string tiles = "70 tiles 64x64";
    const std::string memsetRef = "rfb/memset rows/" + tiles, memcpyRef = "rfb/memcpy rows/" + tiles;
    add({memsetRef, [](benchmark::State &st) { tileRows(st, false); }});
    add({memcpyRef, [](benchmark::State &st) { tileRows(st, true); }});
    add({"rfb/zrleSolidTile/" + tiles, [](benchmark::State &st) { zrleTiles(st, Kind::solid); }, memsetRef});
    add({"rfb/zrleRawTile photo/" + tiles, [](benchmark::State &st) { zrleTiles(st, Kind::raw); }, memcpyRef});
    add({"rfb/zrlePackedPaletteTile 2 colours/" + tiles, [](benchmark::State &st) { zrleTiles(st, Kind::packed2); }});
    add({"rfb/zrlePackedPaletteTile 4 colours/" + tiles, [](benchmark::State &st) { zrleTiles(st, Kind::packed4); }});
    add({"rfb/zrlePackedPaletteTile 16 colours/" + tiles,
         [](benchmark::State &st) { zrleTiles(st, Kind::packed16); }});
    add({"rfb/zrlePlainRleTile/" + tiles, [](benchmark::State &st) { zrleTiles(st, Kind::plainRle); }});
    add({"rfb/zrlePaletteRleTile/" + tiles, [](benchmark::State &st) { zrleTiles(st, Kind::paletteRle); }});
    add({"rfb/hextileRect desktop/256x256",
         [](benchmark::State &st) { hextile(st, desktopPicture(), 192, 112); }});
    add({"rfb/hextileRect photo/256x256", [](benchmark::State &st) { hextile(st, photoPicture(), 192, 112); }});
}

}  // namespace bench
