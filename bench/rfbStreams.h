// The RFB inputs of the benchmarks: ZRLE/TRLE tile bodies of every kind on
// the 64 x 64 tiles of a picture, and Hextile rectangle bodies.  Built with
// nothing but the pictures, so that the x86 benchmarks and the input files of
// the ARM instruction counts carry the same bytes.
//
// Tile contents: raw tiles carry the photo; plain run-length tiles the
// desktop (its wallpaper gradient makes one run per row); the palette kinds
// carry the desktop reduced to the palette's size (its most frequent colours,
// every other pixel mapped to the nearest of them), as a server sends
// content of few colours; solid tiles carry the desktop tile's first colour.
#pragma once

#include <cstdint>
#include <vector>

#include "pictures.h"

namespace bench {

inline constexpr int32_t kRfbTile = 64;

struct RfbTile {
    int32_t x, y;          // top-left in the picture
    int32_t subencoding;   // the byte the client reads before the body
    std::vector<uint8_t> body;
};

enum class RfbKind { raw, solid, packed2, packed4, packed16, plainRle, paletteRle };

// Every 64 x 64 tile of the kind's picture (70 tiles), encoded once.
const std::vector<RfbTile> &rfbTiles(RfbKind kind);

// One Hextile rectangle: per 16 x 16 tile the smallest of background only,
// background and foreground subrectangles, coloured subrectangles and raw.
std::vector<uint8_t> encodeHextile(const interop::Picture &picture);

}  // namespace bench
