// RFB: every ZRLE/TRLE tile kind on the 70 tiles of 64 x 64 of a picture,
// and Hextile rectangles of 256 x 256 (the inputs: streams.h).  Solid and
// raw tiles are compared with memset / memcpy of the same rows.
#include <cstring>
#include <vector>

#include "harness.h"
#include "streams.h"

namespace bench {
namespace {

using Kind = RfbKind;
constexpr int32_t kTile = kRfbTile;

// All tiles of a kind, each called as the client does after reading the
// sub-encoding byte (the entry point is chosen per tile, like the client's
// switch on that byte).
void zrleTiles(benchmark::State &state, Kind kind) {
    const std::vector<RfbTile> &tiles = rfbTiles(kind);
    const kit::Table &t = table();
    t.setSourceByteOrder(1);
    kit::Frame &f = desk();
    int64_t inputBytes = 0;
    for (const RfbTile &tile : tiles) inputBytes += tile.body.length() + 1;
    bool ok = true;
    for (auto _ : state) {
        for (const RfbTile &tile : tiles) {
            UiTileStream s{kMargin + tile.x, kMargin + tile.y, kTile, kTile, &f.image(), &f.dirty(), tile.body.data(),
                           tile.body.length()};
            ok &= t.zrleTile(tile.subencoding, s) == 1 && s.left == 0;
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
    kit::Frame &f = desk();
    const std::vector<uint32_t> source(kTile * kTile, 0x3465a4);
    repeat(state, int64_t(tiles.size()) * kTile * kTile, [&] {
        for (const RfbTile &tile : tiles)
            for (int32_t y = 0; y < kTile; ++y) {
                uint32_t *row = &f.at(kMargin + tile.x, kMargin + tile.y + y);
                if (copy)
                    std::memcpy(row, source.data() + size_t(y) * kTile, 4 * kTile);
                else
                    std::memset(row, 0x5a, 4 * kTile);
            }
    });
}

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

void hextile(benchmark::State &state, const kit::Picture &source) {
    const kit::Bytes data = hextileRect(source);
    const kit::Table &t = table();
    t.setSourceByteOrder(1);
    kit::Frame &f = desk();
    const UiRect rect{kMargin + kHextileX, kMargin + kHextileY, kHextileSize, kHextileSize};
    bool ok = true;
    for (auto _ : state) {
        feed = Feed{data.data(), data.size()};
        ok &= t.hextileRect(&f.image(), &f.dirty(), rect, readFeed) == 1 && feed.left == 0;
        benchmark::ClobberMemory();
    }
    if (!ok) state.SkipWithError("the rectangle was not decoded or not consumed exactly");
    const int64_t pixels = int64_t(kHextileSize) * kHextileSize;
    count(state, Work{pixels, 4 * pixels, data.length()});
}

}  // namespace

void registerRfb() {
    const std::string tiles = "70 tiles 64x64";
    const std::string memsetRef = "rfb/memset rows/" + tiles, memcpyRef = "rfb/memcpy rows/" + tiles;
    const auto zrle = [&](const std::string &op, Kind kind, const std::string &ref = {}) {
        add({"rfb/" + op + "/" + tiles, [kind](benchmark::State &st) { zrleTiles(st, kind); }, ref});
    };
    add({memsetRef, [](benchmark::State &st) { tileRows(st, false); }});
    add({memcpyRef, [](benchmark::State &st) { tileRows(st, true); }});
    zrle("zrleSolidTile", Kind::solid, memsetRef);
    zrle("zrleRawTile photo", Kind::raw, memcpyRef);
    zrle("zrlePackedPaletteTile 2 colours", Kind::packed2);
    zrle("zrlePackedPaletteTile 4 colours", Kind::packed4);
    zrle("zrlePackedPaletteTile 16 colours", Kind::packed16);
    zrle("zrlePlainRleTile", Kind::plainRle);
    zrle("zrlePaletteRleTile", Kind::paletteRle);
    add({"rfb/hextileRect desktop/256x256", [](benchmark::State &st) { hextile(st, desktopPicture()); }});
    add({"rfb/hextileRect photo/256x256", [](benchmark::State &st) { hextile(st, photoPicture()); }});
}

}  // namespace bench
