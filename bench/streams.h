// The pictures the benchmarks draw and the compressed bitmap streams made of
// them by the peer RDP codec library (Debian's freerdp2, used as a black box
// through its public compressor API).
//
// Pictures: the synthetic desktop of the interoperability tests (windows,
// text, gradients, a photo, noise, icons of the installed icon theme), two
// large icons of that theme over a grey background, and a photo-like
// picture; each cut into 64 x 64 tiles as RDP servers send bitmap updates,
// and for the planar codec also one 256 x 256 bitmap.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "pictures.h"

namespace bench {

// Pictures, top-down, 0xAARRGGBB (alpha 255).
const interop::Picture &desktopPicture();  // 640 x 480
const interop::Picture &iconPicture();     // 1024 x 512: two 512 x 512 icons side by side
const interop::Picture &photoPicture();    // 640 x 448

// One compressed bitmap and where it lands on the screen (top-left, in
// screen coordinates inside the margin).
struct Bitmap {
    int32_t x, y, width, height;
    std::vector<uint8_t> stream;
};

struct Workload {
    std::string name;  // "desktop 64x64 tiles"
    std::vector<Bitmap> bitmaps;
    int32_t maxWidth = 0, maxHeight = 0;
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

// Decoding by the peer into 32-bit B, G, R, X pixels of a buffer whose rows
// are `stride` bytes apart, the bitmap's top-left at (x, y): interleaved
// always writes the picture top-down; planar writes it top-down when `flip`,
// else in stream order (bottom row first).
struct PeerInterleaved {
    PeerInterleaved();
    ~PeerInterleaved();
    PeerInterleaved(const PeerInterleaved &) = delete;
    PeerInterleaved &operator=(const PeerInterleaved &) = delete;
    bool decode(const Bitmap &b, uint8_t *dst, uint32_t stride, int32_t x = 0, int32_t y = 0);
    void *context;
};
struct PeerPlanar {
    PeerPlanar(int32_t maxWidth, int32_t maxHeight);
    ~PeerPlanar();
    PeerPlanar(const PeerPlanar &) = delete;
    PeerPlanar &operator=(const PeerPlanar &) = delete;
    bool decode(const Bitmap &b, uint8_t *dst, uint32_t stride, bool flip, int32_t x = 0, int32_t y = 0);
    void *context;
};

}  // namespace bench
