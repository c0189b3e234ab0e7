// The independent RDP codec library (Debian's FreeRDP 2) as a black box
// through its public API: encoders that make streams as real servers do, and
// decoders to compare with.  Host builds with the peer installed only.
#pragma once

#include <cstdint>
#include <vector>

#include "picture.h"

namespace kit {

// 24-bit interleaved stream of p (at most 64 x 64, widths a multiple of 4).
bool peerInterleaved(const Picture &p, Bytes &out);
// Planar stream with the encoder's flags (0: run-length planes, no alpha
// plane where the encoder finds them smaller).
bool peerPlanar(const Picture &p, uint32_t flags, Bytes &out);

// The peer's decoders into width x height 0x00RRGGBB words, rows top-down.
class PeerDecoders {
public:
    PeerDecoders();
    ~PeerDecoders();
    PeerDecoders(const PeerDecoders &) = delete;
    PeerDecoders &operator=(const PeerDecoders &) = delete;
    bool interleaved(const uint8_t *data, int32_t length, int32_t width, int32_t height, std::vector<uint32_t> &out);
    bool planar(const uint8_t *data, int32_t length, int32_t width, int32_t height, std::vector<uint32_t> &out);

    // The same into a buffer whose rows are `stride` bytes apart, the
    // bitmap's top-left at (x, y), B, G, R, X bytes as the peer writes them:
    // interleaved top-down; planar top-down when `flip`, else in stream order
    // (bottom row first).  The benchmarks time these.
    bool interleavedInto(const uint8_t *data, int32_t length, int32_t width, int32_t height, uint8_t *dst,
                         uint32_t stride, int32_t x, int32_t y);
    bool planarInto(const uint8_t *data, int32_t length, int32_t width, int32_t height, uint8_t *dst, uint32_t stride,
                    int32_t x, int32_t y, bool flip);

private:
    void *interleaved_, *planar_;
    int32_t planarWidth_ = 64, planarHeight_ = 64;  // the size the planar context was made for
};

}  // namespace kit
