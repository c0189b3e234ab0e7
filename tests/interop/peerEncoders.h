// The independent RDP codec library's encoders, used as a black box through
// its public API by the interoperability tests and the benchmarks.
#pragma once

#include <cstdint>
#include <vector>

#include "pictures.h"

namespace interop {

using Bytes = std::vector<uint8_t>;

// 24-bit interleaved run-length stream of p (widths a multiple of 4, at most
// 64 x 64).  The encoder's scratch buffers are zeroed first so that the
// streams are the same on every run.
bool interleavedCompressEncode(const Picture &p, Bytes &out);

// Planar stream of p with the encoder's format flags (run-length planes, no
// alpha plane).
bool planarEncode(const Picture &p, uint32_t flags, Bytes &out);

}  // namespace interop
