#include "rfbStreams.h"

#include <algorithm>
#include <map>

#include "streams.h"

namespace bench {
namespace {

using interop::Picture;
using Bytes = std::vector<uint8_t>;

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

std::vector<RfbTile> encodeTiles(RfbKind kind) {
    const Picture &picture = kind == RfbKind::raw ? photoPicture() : desktopPicture();
    std::vector<RfbTile> out;
    for (int32_t y = 0; y + kRfbTile <= picture.height; y += kRfbTile)
        for (int32_t x = 0; x + kRfbTile <= picture.width; x += kRfbTile) {
            const Picture t = picture.crop(x, y, kRfbTile, kRfbTile);
            RfbTile tile{x, y, 0, {}};
            int32_t used = 0;
            switch (kind) {
                case RfbKind::raw: tile.body = rawBody(t); break;
                case RfbKind::solid: tile.subencoding = 1, tile.body = solidBody(t); break;
                case RfbKind::packed2: tile.body = packedBody(t, 2, used), tile.subencoding = used; break;
                case RfbKind::packed4: tile.body = packedBody(t, 4, used), tile.subencoding = used; break;
                case RfbKind::packed16: tile.body = packedBody(t, 16, used), tile.subencoding = used; break;
                case RfbKind::plainRle: tile.subencoding = 128, tile.body = plainRleBody(t); break;
                case RfbKind::paletteRle: tile.body = paletteRleBody(t, used), tile.subencoding = 128 + used; break;
            }
            out.push_back(std::move(tile));
        }
    return out;
}

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

}  // namespace

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

const std::vector<RfbTile> &rfbTiles(RfbKind kind) {
    static std::map<RfbKind, std::vector<RfbTile>> encoded;
    auto it = encoded.find(kind);
    if (it == encoded.end()) it = encoded.emplace(kind, encodeTiles(kind)).first;
    return it->second;
}

}  // namespace bench
