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

private:
    void *interleaved_, *planar_;
};

}  // namespace kit
