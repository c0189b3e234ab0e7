// Encoders for the compressed formats the demo sends: the interleaved
// run-length and planar bitmap codecs, ZRLE tiles and Hextile rectangles.
// Pixels are 0xRRGGBB words, pictures top-down.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace demo {

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<uint32_t> pixels;  // rows top to bottom
    Picture() = default;
    Picture(int w, int h, uint32_t fill = 0) : width(w), height(h), pixels(size_t(w) * size_t(h), fill) {}
    uint32_t &at(int x, int y) { return pixels[size_t(y) * size_t(width) + size_t(x)]; }
    uint32_t at(int x, int y) const { return pixels[size_t(y) * size_t(width) + size_t(x)]; }
    Picture crop(int left, int top, int w, int h) const;
};

// Pixels of a picture in bitmap stream order: bottom row first.
std::vector<uint32_t> bottomUp(const Picture &picture);

// Uncompressed bitmap data: rows bottom-up, `bytesPerPixel` (3 or 4) bytes per
// pixel, blue first.
std::vector<uint8_t> rawBitmap(const Picture &picture, int bytesPerPixel);

// Which orders an interleaved stream used, for the demo's summary.
struct InterleavedStats {
    long backgroundRuns = 0, foregroundRuns = 0, setForegroundRuns = 0, colourRuns = 0, ditheredRuns = 0,
         colourImages = 0, fgbgImages = 0, specials = 0, whiteBlack = 0, megaMega = 0;
};

// 24-bit interleaved run-length stream of the picture (3 bytes per raw pixel).
std::vector<uint8_t> encodeInterleaved(const Picture &picture, InterleavedStats *stats = nullptr);

// Planar stream: `rle` selects run-length planes (else raw planes), `alpha`
// adds an (opaque) alpha plane.
std::vector<uint8_t> encodePlanar(const Picture &picture, bool rle, bool alpha);

// One ZRLE tile: the sub-encoding byte followed by its body.  CPIXELs are
// blue, green, red.  Tiles are at most 64 x 64.
std::vector<uint8_t> encodeZrleTile(const Picture &tile);

// A whole ZRLE rectangle's tile data, tiles of 64 x 64 row by row.
std::vector<uint8_t> encodeZrleRect(const Picture &picture);

// One Hextile rectangle (tiles of 16 x 16), 4-byte pixels blue, green, red, 0.
std::vector<uint8_t> encodeHextile(const Picture &picture);

}  // namespace demo
