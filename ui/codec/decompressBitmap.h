// decompressBitmap: decodes one compressed RDP bitmap into 32-bit pixels.
#pragma once

#include <cstdint>

namespace ui {

// Decodes `dataLength` bytes at `data` into `dst`, which holds width x height
// pixels; rows come out in stream order (bottom row of the picture first).
// sourceBytesPerPixel 4 selects the planar codec, any other depth of at least
// 3 the 24-bit interleaved run-length codec.  Returns 1 on success, 0 on
// failure (reported).  When `decodedPixels` is given it receives the number
// of leading output pixels that were written: all of them unless interleaved
// data ran out early, in which case the rest of `dst` is left as it was.
int32_t decompressBitmap(int32_t width, int32_t height, const uint8_t *data, int32_t dataLength, uint32_t *dst,
                         int32_t *decodedPixels = nullptr);

}  // namespace ui
