// Pictures (0xRRGGBB words, rows top-down) and the encoders of the formats
// the library decodes: raw and planar bitmap data, a plain interleaved
// stream, ZRLE/TRLE tiles and Hextile rectangles.  Interleaved and planar
// streams as real servers make them come from the peer codec (peer.h).
#pragma once

#include <cstdint>
#include <vector>

#include "bytes.h"

namespace kit {

struct Picture {
    int32_t width = 0, height = 0;
    std::vector<uint32_t> pixels;

    Picture() = default;
    Picture(int32_t w, int32_t h, uint32_t fill = 0) : width(w), height(h), pixels(size_t(w) * size_t(h), fill) {}
    uint32_t &at(int32_t x, int32_t y) { return pixels[size_t(y) * size_t(width) + size_t(x)]; }
    uint32_t at(int32_t x, int32_t y) const { return pixels[size_t(y) * size_t(width) + size_t(x)]; }
    Picture crop(int32_t left, int32_t top, int32_t w, int32_t h) const;
};

// A picture with flat areas, runs, gradients and noise, as desktops have:
// every codec path gets exercised.
Picture testPicture(int32_t width, int32_t height, uint32_t seed = 1);

// Pixels in bitmap stream order: bottom row first.
std::vector<uint32_t> bottomUp(const Picture &p);
// Uncompressed bitmap data: rows bottom-up, the colour lowest byte first,
// padded to `bytesPerPixel` with 0x5A.
Bytes rawBitmap(const Picture &p, int bytesPerPixel);
// Interleaved data made of mega-mega colour images, one per row.
Bytes interleavedImages(const Picture &p);
// Planar data: run-length planes or raw planes, with an (opaque) alpha plane
// or without.
Bytes planar(const Picture &p, bool rle, bool alpha);

// One ZRLE tile (at most 64 x 64): the sub-encoding byte, then the body of
// the smallest sub-encoding, or of the one asked for: 0 raw, 1 solid (the
// first pixel's colour), 128 plain run-length, 2 packed palette or 130
// palette run-length (a palette of the tile's colours, at least two; empty
// when the tile has too many colours for it).  A whole rectangle, 64 x 64
// tiles row by row.
Bytes zrleTile(const Picture &tile, int subencoding = -1);
Bytes zrleRect(const Picture &p);
// One Hextile rectangle, 4-byte pixels blue, green, red, 0.
Bytes hextile(const Picture &p);

}  // namespace kit
