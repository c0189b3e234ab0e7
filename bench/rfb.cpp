// RFB: every ZRLE/TRLE tile kind on the 70 tiles of 64 x 64 of a picture,
// and Hextile rectangles of 256 x 256.
//
// Tile contents: raw tiles carry the photo; plain run-length tiles the
// desktop (its wallpaper gradient makes one run per row); the palette kinds
// carry the desktop reduced to the palette's size (its most frequent colours,
// every other pixel mapped to the nearest of them), as a server sends
// content of few colours; solid tiles carry the desktop tile's first colour.
// Solid and raw tiles are compared with memset / memcpy of the same rows.
#include <algorithm>
#include <cstring>
#include <map>
#include <vector>

#include "harness.h"
#include "streams.h"

namespace bench {
namespace {

using interop::Picture;
using Bytes = std::vector<uint8_t>;

constexpr int32_t kTile = 64;

void cpixel(Bytes &out, uint32_t p) {
    out.push_back(uint8_t(p));
    out.push_back(uint8_t(p >> 8));
    out.push_back(uint8_t(p >> 16));
}

void runLength(Bytes &out, int32_t run) {
    for (run -= 1; run >= 255; run -= 255) out.push_back(255);
    out.push_back(uint8_t(run));
}

// The tile's colours by frequency, most frequent first (ties by value).
std::vector<uint32_t> coloursByFrequency(const Picture &tile) {
    std::map<uint32_t, int> counts;
    for (uint32_t p : tile.pixels) ++counts[p & 0xffffff];
    std::vector<std::pair<int, uint32_t>> order;
    for (const auto &[c, n] : counts) order.push_back({-n, c});
    std::sort(order.begin(), order.end());
    std::vector<uint32_t> out;
    for (const auto &[n, c] : order) out.push_back(c);
    return out;
}

int distance(uint32_t a, uint32_t b) {
    int d = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const int x = int((a >> shift) & 0xff) - int((b >> shift) & 0xff);
        d += x * x;
    }
    return d;
}

// Index of each pixel in a palette of at most `size` colours.
std::vector<uint8_t> quantise(const Picture &tile, size_t size, std::vector<uint32_t> &palette) {
    palette = coloursByFrequency(tile);
    if (palette.size() > size) palette.resize(size);
    std::map<uint32_t, uint8_t> nearest;
    std::vector<uint8_t> indices;
    for (uint32_t p : tile.pixels) {
        p &= 0xffffff;
        auto it = nearest.find(p);
        if (it == nearest.end()) {
            size_t best = 0;
            for (size_t i = 1; i < palette.size(); ++i)
                if (distance(p, palette[i]) < distance(p, palette[best])) best = i;
            it = nearest.emplace(p, uint8_t(best)).first;
        }
        indices.push_back(it->second);
    }
    return indices;
}

// Tile bodies (after the sub-encoding byte).
Bytes rawBody(const Picture &tile) {
    Bytes out;
    for (uint32_t p : tile.pixels) cpixel(out, p);
    return out;
}

Bytes solidBody(const Picture &tile) {
    Bytes out;
    cpixel(out, tile.pixels[0]);
    return out;
}

// Packed palette of `size` colours (2 to 16); returns the palette size used.
Bytes packedBody(const Picture &tile, size_t size, int32_t &used) {
    std::vector<uint32_t> palette;
    const std::vector<uint8_t> indices = quantise(tile, size, palette);
    used = std::max<int32_t>(2, int32_t(palette.size()));
    palette.resize(size_t(used), 0);
    const int bits = used <= 2 ? 1 : used <= 4 ? 2 : 4;
    Bytes out;
    for (uint32_t c : palette) cpixel(out, c);
    for (int32_t y = 0; y < tile.height; ++y) {
        uint32_t byte = 0;
        int filled = 0;
        for (int32_t x = 0; x < tile.width; ++x) {
            byte = (byte << bits) | indices[size_t(y) * size_t(tile.width) + size_t(x)];
            filled += bits;
            if (filled == 8) {
                out.push_back(uint8_t(byte));
                byte = 0;
                filled = 0;
            }
        }
        if (filled > 0) out.push_back(uint8_t(byte << (8 - filled)));
    }
    return out;
}

// Runs over the whole tile, wrapping from row to row.
template <typename Emit>
void runsOf(const std::vector<uint32_t> &values, Emit emit) {
    for (size_t i = 0; i < values.size();) {
        size_t j = i + 1;
        while (j < values.size() && values[j] == values[i]) ++j;
        emit(values[i], int32_t(j - i));
        i = j;
    }
}

Bytes plainRleBody(const Picture &tile) {
    std::vector<uint32_t> colours;
    for (uint32_t p : tile.pixels) colours.push_back(p & 0xffffff);
    Bytes out;
    runsOf(colours, [&](uint32_t c, int32_t run) {
        cpixel(out, c);
        runLength(out, run);
    });
    return out;
}

Bytes paletteRleBody(const Picture &tile, int32_t &used) {
    std::vector<uint32_t> palette;
    const std::vector<uint8_t> indices = quantise(tile, 127, palette);
    used = std::max<int32_t>(2, int32_t(palette.size()));
    palette.resize(size_t(used), 0);
    Bytes out;
    for (uint32_t c : palette) cpixel(out, c);
    runsOf(std::vector<uint32_t>(indices.begin(), indices.end()), [&](uint32_t index, int32_t run) {
        if (run == 1) {
            out.push_back(uint8_t(index));
        } else {
            out.push_back(uint8_t(index | 128));
            runLength(out, run);
        }
    });
    return out;
}

struct Tile {
    int32_t x, y;  // screen position
    int32_t subencoding;
    Bytes body;
};

enum class Kind { raw, solid, packed2, packed4, packed16, plainRle, paletteRle };

std::vector<Tile> encodeTiles(Kind kind) {
    const Picture &picture = kind == Kind::raw ? photoPicture() : desktopPicture();
    std::vector<Tile> out;
    for (int32_t y = 0; y + kTile <= picture.height; y += kTile)
        for (int32_t x = 0; x + kTile <= picture.width; x += kTile) {
            const Picture t = picture.crop(x, y, kTile, kTile);
            Tile tile{kMargin + x, kMargin + y, 0, {}};
            int32_t used = 0;
            switch (kind) {
                case Kind::raw: tile.body = rawBody(t); break;
                case Kind::solid: tile.subencoding = 1, tile.body = solidBody(t); break;
                case Kind::packed2: tile.body = packedBody(t, 2, used), tile.subencoding = used; break;
                case Kind::packed4: tile.body = packedBody(t, 4, used), tile.subencoding = used; break;
                case Kind::packed16: tile.body = packedBody(t, 16, used), tile.subencoding = used; break;
                case Kind::plainRle: tile.subencoding = 128, tile.body = plainRleBody(t); break;
                case Kind::paletteRle: tile.body = paletteRleBody(t, used), tile.subencoding = 128 + used; break;
            }
            out.push_back(std::move(tile));
        }
    return out;
}

const std::vector<Tile> &tilesOf(Kind kind) {
    static std::map<Kind, std::vector<Tile>> encoded;
    auto it = encoded.find(kind);
    if (it == encoded.end()) it = encoded.emplace(kind, encodeTiles(kind)).first;
    return it->second;
}

int32_t paint(const Tile &t, UiTileStream &s) {
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
    const std::vector<Tile> &tiles = tilesOf(kind);
    Screen &screen = desk();
    Plugin::get().byteOrder(1);
    int64_t inputBytes = 0;
    for (const Tile &t : tiles) inputBytes += int64_t(t.body.size()) + 1;
    bool ok = true;
    for (auto _ : state) {
        for (const Tile &t : tiles) {
            UiTileStream s{t.x, t.y, kTile, kTile, &screen.image(), &screen.dirty(), t.body.data(),
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
    const std::vector<Tile> &tiles = tilesOf(Kind::solid);
    Screen &screen = desk();
    std::vector<uint32_t> source(kTile * kTile, 0x3465a4);
    for (auto _ : state) {
        for (const Tile &t : tiles)
            for (int32_t y = 0; y < kTile; ++y) {
                if (copy)
                    std::memcpy(screen.at(t.x, t.y + y), source.data() + size_t(y) * kTile, 4 * kTile);
                else
                    std::memset(screen.at(t.x, t.y + y), 0x5a, 4 * kTile);
            }
        benchmark::ClobberMemory();
    }
    const int64_t pixels = int64_t(tiles.size()) * kTile * kTile;
    count(state, pixelsOf(pixels));
}

// ---------------------------------------------------------------------------
// Hextile
// ---------------------------------------------------------------------------

void pixel4(Bytes &out, uint32_t p) {
    cpixel(out, p);
    out.push_back(0);
}

struct Subrect {
    int32_t x, y, w, h;
    uint32_t colour;
};

// Single-colour rectangles covering every pixel that is not the background:
// from each uncovered pixel grow right, then down.
std::vector<Subrect> subrectsOf(const Picture &tile, uint32_t background) {
    std::vector<uint8_t> covered(tile.pixels.size(), 0);
    const auto index = [&](int32_t x, int32_t y) { return size_t(y) * size_t(tile.width) + size_t(x); };
    const auto open = [&](int32_t x, int32_t y, uint32_t c) {
        return (tile.at(x, y) & 0xffffff) == c && covered[index(x, y)] == 0;
    };
    std::vector<Subrect> out;
    for (int32_t y = 0; y < tile.height; ++y)
        for (int32_t x = 0; x < tile.width; ++x) {
            const uint32_t c = tile.at(x, y) & 0xffffff;
            if (c == background || covered[index(x, y)] != 0) continue;
            int32_t w = 1, h = 1;
            while (x + w < tile.width && open(x + w, y, c)) ++w;
            for (bool rowOpen = true; rowOpen && y + h < tile.height;) {
                for (int32_t i = 0; i < w && rowOpen; ++i) rowOpen = open(x + i, y + h, c);
                if (rowOpen) ++h;
            }
            for (int32_t j = 0; j < h; ++j)
                for (int32_t i = 0; i < w; ++i) covered[index(x + i, y + j)] = 1;
            out.push_back({x, y, w, h, c});
        }
    return out;
}

// One Hextile rectangle: per 16 x 16 tile the smallest of background only,
// background and foreground subrectangles, coloured subrectangles and raw.
Bytes encodeHextile(const Picture &picture) {
    Bytes out;
    bool known = false;  // background (and foreground) carried over
    uint32_t background = 0, foreground = 0;
    for (int32_t ty = 0; ty < picture.height; ty += 16)
        for (int32_t tx = 0; tx < picture.width; tx += 16) {
            const Picture tile =
                picture.crop(tx, ty, std::min(16, picture.width - tx), std::min(16, picture.height - ty));
            const std::vector<uint32_t> colours = coloursByFrequency(tile);
            const uint32_t bg = colours[0];
            const bool newBackground = !known || bg != background;
            if (colours.size() == 1) {
                out.push_back(newBackground ? 2 : 0);
                if (newBackground) pixel4(out, bg);
                background = bg;
                known = true;
                continue;
            }
            const std::vector<Subrect> rects = subrectsOf(tile, bg);
            const bool mono = colours.size() == 2;
            const bool newForeground = mono && (!known || colours[1] != foreground);
            const size_t size = 2 + (newBackground ? 4 : 0) + (newForeground ? 4 : 0) + rects.size() * (mono ? 2 : 6);
            if (rects.size() > 255 || size >= 1 + tile.pixels.size() * 4) {
                out.push_back(1);
                for (uint32_t p : tile.pixels) pixel4(out, p);
                known = false;  // a raw tile leaves both colours unspecified
                continue;
            }
            out.push_back(uint8_t(8 | (mono ? 0 : 16) | (newBackground ? 2 : 0) | (newForeground ? 4 : 0)));
            if (newBackground) pixel4(out, bg);
            if (newForeground) pixel4(out, colours[1]);
            out.push_back(uint8_t(rects.size()));
            for (const Subrect &r : rects) {
                if (!mono) pixel4(out, r.colour);
                out.push_back(uint8_t(r.x << 4 | r.y));
                out.push_back(uint8_t((r.w - 1) << 4 | (r.h - 1)));
            }
            background = bg;
            if (mono) foreground = colours[1];
            known = true;
        }
    return out;
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
