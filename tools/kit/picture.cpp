// Raw and planar bitmap data, ZRLE tiles and Hextile rectangles.
#include "picture.h"

#include <algorithm>
#include <map>

namespace kit {

Picture Picture::crop(int32_t left, int32_t top, int32_t w, int32_t h) const {
    Picture out(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) out.at(x, y) = at(left + x, top + y);
    return out;
}

std::vector<uint32_t> bottomUp(const Picture &picture) {
    std::vector<uint32_t> rows;
    rows.reserve(picture.pixels.size());
    for (int y = picture.height - 1; y >= 0; --y)
        for (int x = 0; x < picture.width; ++x) rows.push_back(picture.at(x, y) & 0xFFFFFF);
    return rows;
}

Bytes rawBitmap(const Picture &picture, int bytesPerPixel) {
    Bytes out;
    for (uint32_t p : bottomUp(picture)) {
        out.colour(p);
        for (int extra = 3; extra < bytesPerPixel; ++extra) out.push_back(0x5A);
    }
    return out;
}

Bytes interleavedImages(const Picture &picture) {
    Bytes out;
    const std::vector<uint32_t> rows = bottomUp(picture);
    for (int32_t y = 0; y < picture.height; ++y) {
        out({0xF4}).u16(uint32_t(picture.width));
        for (int32_t x = 0; x < picture.width; ++x) out.colour(rows[size_t(y) * size_t(picture.width) + size_t(x)]);
    }
    return out;
}

Picture testPicture(int32_t width, int32_t height, uint32_t seed) {
    Picture p(width, height);
    uint32_t noise = seed * 2654435761u + 1;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            noise = noise * 1103515245u + 12345u;
            const int32_t band = (x / 7 + y / 5 + int32_t(seed)) % 4;
            p.at(x, y) = band == 0   ? 0x3366AA                                        // flat
                         : band == 1 ? uint32_t(x * 255 / (width + 1)) << 8 | uint32_t(y & 0xFF)  // gradient
                         : band == 2 ? ((x + y) & 4 ? 0xFFFFFF : 0x000000)            // two colours
                                     : (noise >> 8) & 0xFFFFFF;                       // noise
        }
    return p;
}

// ---------------------------------------------------------------------------
// Planar
// ---------------------------------------------------------------------------
namespace {

// A delta against the row above as the planar codec stores it: 2d for
// d >= 0, -2d - 1 for d < 0.
uint8_t deltaCode(uint8_t value, uint8_t above) {
    const int d = int8_t(uint8_t(value - above));
    return uint8_t(d >= 0 ? 2 * d : -2 * d - 1);
}

int countEqual(const Bytes &symbols, size_t pos, uint8_t value) {
    int k = 0;
    while (pos + k < symbols.size() && symbols[pos + k] == value) ++k;
    return k;
}

// One row of symbols (absolute values in the first row, delta codes below)
// as segments: up to 15 raw bytes, then a run repeating the last of them
// (0 at the start of the row); long runs on their own use the +16 / +32
// forms.
void encodePlaneRow(const Bytes &symbols, Bytes &out) {
    size_t pos = 0;
    uint8_t last = 0;
    while (pos < symbols.size()) {
        Bytes raw;
        while (pos < symbols.size() && raw.size() < 15 && countEqual(symbols, pos, last) < 3) {
            raw.push_back(symbols[pos]);
            last = symbols[pos++];
        }
        const int run = countEqual(symbols, pos, last);
        if (raw.empty()) {
            int length;
            if (run >= 32) {
                length = std::min(run, 47);
                out.push_back(uint8_t((length - 32) << 4 | 2));
            } else if (run >= 16) {
                length = std::min(run, 31);
                out.push_back(uint8_t((length - 16) << 4 | 1));
            } else {
                length = run;
                out.push_back(uint8_t(length));
            }
            pos += size_t(length);
            continue;
        }
        int length = std::min(run, 15);
        if (length < 3) length = 0;
        out.push_back(uint8_t(raw.size() << 4 | size_t(length)));
        out.insert(out.end(), raw.begin(), raw.end());
        pos += size_t(length);
    }
}

void encodePlane(const Bytes &plane, int width, int height, Bytes &out) {
    Bytes symbols(static_cast<size_t>(width), 0);
    for (int row = 0; row < height; ++row) {
        const uint8_t *values = &plane[size_t(row) * size_t(width)];
        for (int x = 0; x < width; ++x) symbols[x] = row == 0 ? values[x] : deltaCode(values[x], values[x - width]);
        encodePlaneRow(symbols, out);
    }
}

}  // namespace

Bytes planar(const Picture &picture, bool rle, bool alpha) {
    const std::vector<uint32_t> stream = bottomUp(picture);
    const size_t n = stream.size();
    Bytes planes[4];  // alpha, red, green, blue
    planes[0].assign(n, 0xFF);
    for (int c = 1; c < 4; ++c) planes[c].resize(n);
    for (size_t i = 0; i < n; ++i) {
        planes[1][i] = uint8_t(stream[i] >> 16);
        planes[2][i] = uint8_t(stream[i] >> 8);
        planes[3][i] = uint8_t(stream[i]);
    }
    Bytes out;
    out.push_back(uint8_t((rle ? 0x10 : 0) | (alpha ? 0 : 0x20)));
    for (int c = alpha ? 0 : 1; c < 4; ++c) {
        if (rle) encodePlane(planes[c], picture.width, picture.height, out);
        else out.insert(out.end(), planes[c].begin(), planes[c].end());
    }
    return out;
}

// ---------------------------------------------------------------------------
// ZRLE
// ---------------------------------------------------------------------------
namespace {

void cpixel(Bytes &out, uint32_t p) {
    out.push_back(uint8_t(p));
    out.push_back(uint8_t(p >> 8));
    out.push_back(uint8_t(p >> 16));
}

// Run length: 255s, then the remainder; the length is 1 + their sum.
void runLength(Bytes &out, int length) {
    int rest = length - 1;
    while (rest >= 255) {
        out.push_back(255);
        rest -= 255;
    }
    out.push_back(uint8_t(rest));
}
int runLengthBytes(int length) { return (length - 1) / 255 + 1; }

struct Run {
    uint32_t colour;
    int length;
};

std::vector<Run> runsOf(const Picture &tile) {
    std::vector<Run> runs;
    for (uint32_t p : tile.pixels) {
        p &= 0xFFFFFF;
        if (!runs.empty() && runs.back().colour == p) ++runs.back().length;
        else runs.push_back({p, 1});
    }
    return runs;
}

int bitsPerIndex(int paletteSize) { return paletteSize <= 2 ? 1 : paletteSize <= 4 ? 2 : 4; }

}  // namespace

Bytes zrleTile(const Picture &tile, int subencoding) {
    std::vector<uint32_t> palette;
    std::map<uint32_t, int> index;
    for (uint32_t p : tile.pixels) {
        p &= 0xFFFFFF;
        if (index.count(p) != 0) continue;
        index[p] = int(palette.size());
        palette.push_back(p);
        if (palette.size() == 128) break;  // too many for any palette sub-encoding
    }
    const int colours = int(palette.size());
    if ((subencoding == 2 && colours > 16) || (subencoding == 130 && colours > 127)) return {};
    const std::vector<Run> runs = runsOf(tile);
    Bytes out;
    if (subencoding == 1 || (subencoding < 0 && colours == 1)) {
        out.push_back(1);
        cpixel(out, palette[0]);
        return out;
    }
    int kind = subencoding;
    if (kind < 0) {
        const long area = long(tile.width) * tile.height;
        const long rawSize = 3 * area;
        long plainRleSize = 0;
        for (const Run &r : runs) plainRleSize += 3 + runLengthBytes(r.length);
        long packedSize = -1, paletteRleSize = -1;
        if (colours <= 16) {
            const int bits = bitsPerIndex(colours);
            packedSize = 3L * colours + long(tile.height) * ((tile.width * bits + 7) / 8);
        }
        if (colours <= 127) {
            paletteRleSize = 3L * colours;
            for (const Run &r : runs) paletteRleSize += r.length == 1 ? 1 : 1 + runLengthBytes(r.length);
        }
        long best = rawSize;
        kind = 0;
        if (plainRleSize < best) best = plainRleSize, kind = 128;
        if (packedSize >= 0 && packedSize < best) best = packedSize, kind = 2;
        if (paletteRleSize >= 0 && paletteRleSize < best) best = paletteRleSize, kind = 130;
    }
    // A palette of one colour would read as the solid sub-encoding.
    const int entries = std::max(colours, 2);
    palette.resize(size_t(entries), 0);

    if (kind == 0) {
        out.push_back(0);
        for (uint32_t p : tile.pixels) cpixel(out, p);
    } else if (kind == 128) {
        out.push_back(128);
        for (const Run &r : runs) {
            cpixel(out, r.colour);
            runLength(out, r.length);
        }
    } else if (kind == 2) {
        out.push_back(uint8_t(entries));
        for (uint32_t p : palette) cpixel(out, p);
        const int bits = bitsPerIndex(entries);
        for (int y = 0; y < tile.height; ++y) {
            int used = 0;
            uint8_t acc = 0;
            for (int x = 0; x < tile.width; ++x) {
                acc = uint8_t(acc << bits | index[tile.at(x, y) & 0xFFFFFF]);
                used += bits;
                if (used == 8) {
                    out.push_back(acc);
                    acc = 0;
                    used = 0;
                }
            }
            if (used > 0) out.push_back(uint8_t(acc << (8 - used)));
        }
    } else {
        out.push_back(uint8_t(128 + entries));
        for (uint32_t p : palette) cpixel(out, p);
        for (const Run &r : runs) {
            const int i = index[r.colour];
            if (r.length == 1) {
                out.push_back(uint8_t(i));
            } else {
                out.push_back(uint8_t(128 + i));
                runLength(out, r.length);
            }
        }
    }
    return out;
}

Bytes zrleRect(const Picture &picture) {
    Bytes out;
    for (int ty = 0; ty < picture.height; ty += 64)
        for (int tx = 0; tx < picture.width; tx += 64) {
            const Picture tile =
                picture.crop(tx, ty, std::min(64, picture.width - tx), std::min(64, picture.height - ty));
            const Bytes bytes = zrleTile(tile);
            out.insert(out.end(), bytes.begin(), bytes.end());
        }
    return out;
}

// ---------------------------------------------------------------------------
// Hextile
// ---------------------------------------------------------------------------
namespace {

void pixel4(Bytes &out, uint32_t p) {
    cpixel(out, p);
    out.push_back(0);
}

struct Subrect {
    int x, y, w, h;
    uint32_t colour;
};

// Covers every pixel that is not the background with single-colour
// rectangles: grow right, then down, from the first uncovered pixel.
std::vector<Subrect> subrectsOf(const Picture &tile, uint32_t background) {
    Bytes covered(tile.pixels.size(), 0);
    auto free = [&](int x, int y, uint32_t c) {
        return (tile.at(x, y) & 0xFFFFFF) == c && !covered[size_t(y) * tile.width + x];
    };
    std::vector<Subrect> rects;
    for (int y = 0; y < tile.height; ++y)
        for (int x = 0; x < tile.width; ++x) {
            const uint32_t c = tile.at(x, y) & 0xFFFFFF;
            if (c == background || covered[size_t(y) * tile.width + x]) continue;
            int w = 1;
            while (x + w < tile.width && free(x + w, y, c)) ++w;
            int h = 1;
            for (; y + h < tile.height; ++h) {
                bool rowFree = true;
                for (int i = 0; i < w && rowFree; ++i) rowFree = free(x + i, y + h, c);
                if (!rowFree) break;
            }
            for (int j = 0; j < h; ++j)
                for (int i = 0; i < w; ++i) covered[size_t(y + j) * tile.width + x + i] = 1;
            rects.push_back({x, y, w, h, c});
        }
    return rects;
}

}  // namespace

Bytes hextile(const Picture &picture) {
    Bytes out;
    bool haveBackground = false, haveForeground = false;
    uint32_t background = 0, foreground = 0;
    for (int ty = 0; ty < picture.height; ty += 16)
        for (int tx = 0; tx < picture.width; tx += 16) {
            const Picture tile =
                picture.crop(tx, ty, std::min(16, picture.width - tx), std::min(16, picture.height - ty));
            std::map<uint32_t, int> counts;
            for (uint32_t p : tile.pixels) ++counts[p & 0xFFFFFF];
            if (counts.size() == 1) {
                const uint32_t c = counts.begin()->first;
                if (haveBackground && c == background) {
                    out.push_back(0);
                } else {
                    out.push_back(2);
                    pixel4(out, c);
                    background = c;
                    haveBackground = true;
                }
                continue;
            }
            uint32_t bg = counts.begin()->first;
            for (const auto &[c, n] : counts)
                if (n > counts[bg]) bg = c;
            const std::vector<Subrect> rects = subrectsOf(tile, bg);
            const bool mono = counts.size() == 2;
            uint32_t fg = 0;
            for (const auto &[c, n] : counts)
                if (c != bg) fg = c;
            const bool newBackground = !haveBackground || bg != background;
            const bool newForeground = mono && (!haveForeground || fg != foreground);
            const size_t size = 2 + (newBackground ? 4 : 0) + (newForeground ? 4 : 0) + rects.size() * (mono ? 2 : 6);
            const size_t rawSize = 1 + size_t(tile.width) * size_t(tile.height) * 4;
            if (rects.size() > 255 || size >= rawSize) {
                out.push_back(1);
                for (uint32_t p : tile.pixels) pixel4(out, p);
                haveBackground = haveForeground = false;  // a raw tile leaves both unspecified
                continue;
            }
            out.push_back(uint8_t(8 | (mono ? 0 : 16) | (newBackground ? 2 : 0) | (newForeground ? 4 : 0)));
            if (newBackground) pixel4(out, bg);
            if (newForeground) pixel4(out, fg);
            out.push_back(uint8_t(rects.size()));
            for (const Subrect &r : rects) {
                if (!mono) pixel4(out, r.colour);
                out.push_back(uint8_t(r.x << 4 | r.y));
                out.push_back(uint8_t((r.w - 1) << 4 | (r.h - 1)));
            }
            background = bg;
            haveBackground = true;
            if (mono) {
                foreground = fg;
                haveForeground = true;
            } else {
                haveForeground = false;  // coloured subrectangles leave it unspecified
            }
        }
    return out;
}

}  // namespace kit
