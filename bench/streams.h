// The inputs of the benchmarks, made from pictures by the kit's encoders and
// the peer RDP codec library's (Debian's freerdp2, a black box through its
// public API); the same bytes feed the x86 benchmarks and the input files of
// the ARM instruction counts (bench/arm/inputs.cpp).
//
// Pictures: the kit's synthetic desktop (windows, text, gradients, a photo,
// noise, icons of the installed icon theme), two large icons of that theme
// over a grey background, and a photo-like picture.  RDP bitmaps: each
// picture cut into 64 x 64 tiles as servers send bitmap updates, and for the
// planar codec also one 256 x 256 bitmap.  RFB: ZRLE tiles of each
// sub-encoding on the 70 tiles of 64 x 64 of a picture.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "picture.h"

namespace bench {

// Pictures, top-down, 0xAARRGGBB (alpha 255).
const kit::Picture &desktopPicture();  // 640 x 480
const kit::Picture &iconPicture();     // 1024 x 512: two 512 x 512 icons side by side
const kit::Picture &photoPicture();    // 640 x 448

// One compressed bitmap and where it lands (top-left in the picture; the
// benchmarks add the screen margin).
struct Bitmap {
    int32_t x, y, width, height;
    kit::Bytes stream;
};

struct Workload {
    std::string name;  // "desktop 64x64 tiles"
    std::vector<Bitmap> bitmaps;
    int64_t pixels() const;
    int64_t inputBytes() const;
};

// Streams of the interleaved codec at 24 bits per pixel, checked: the peer's
// decoder accepts each of them.
const std::vector<Workload> &interleavedWorkloads();

// Streams of the planar codec with the given format header (0x00, 0x10,
// 0x20, 0x30), checked: the peer's decoder gives the source picture back.
// Bitmaps the encoder declines (run-length planes larger than raw ones) are
// left out.
const std::vector<Workload> &planarWorkloads(uint8_t header);

// ZRLE tiles: the sub-encoding byte the client reads, then the body.
inline constexpr int32_t kRfbTile = 64;
struct RfbTile {
    int32_t x, y;  // top-left in the picture
    int32_t subencoding;
    kit::Bytes body;
};

// Tile contents: raw tiles carry the photo; plain run-length tiles the
// desktop (its wallpaper gradient makes one run per row); the palette kinds
// carry the desktop reduced to the palette's size (its most frequent colours,
// every other pixel mapped to the nearest of them), as a server sends
// content of few colours; solid tiles the desktop tile's first colour.  The
// kit's encoder writes each tile in the kind's sub-encoding.
enum class RfbKind { raw, solid, packed2, packed4, packed16, plainRle, paletteRle };
const std::vector<RfbTile> &rfbTiles(RfbKind kind);

// One Hextile rectangle of 256 x 256 at (192, 112) of the picture.
inline constexpr int32_t kHextileX = 192, kHextileY = 112, kHextileSize = 256;
kit::Bytes hextileRect(const kit::Picture &picture);

}  // namespace bench
