// rlecontext: what the two bitmap decoders share, the output being written
// and the input being read.  It lives on the stack of one decompressBitmap
// call.  The interleaved decoder (interleaved.cpp) and the planar decoder
// (planar.cpp) each build on it with their own state and helpers.
//
// Output: width x height 32-bit pixels, rows in stream order (the first row
// decoded is row 0, at offset 0), no gap between rows.  Positions are bytes,
// as the overrun report prints them.
#pragma once

#include <cstdint>

#include "streamInOps.h"

namespace ui {

// The longest interleaved order, a mega-mega dithered run, is 131,070 pixels;
// outputs are limited so that dstPos, which advances by whole orders, still
// fits 32 bits after the last one.
inline constexpr int64_t kMaxOutputBytes = INT32_MAX - 4 * int64_t(2 * 65535);

class rlecontext {
public:
    // width x 4 x height is at most kMaxOutputBytes and not negative.
    rlecontext(int32_t w, int32_t h, uint32_t *out, const uint8_t *data, int32_t length)
        : width(w), height(h), dst(out), rowDelta(4 * w), dstSize(int32_t(4 * int64_t(w) * h)), stream{data, length} {}

    // Leading output pixels that hold decoded values.
    int32_t decodedPixels() const { return (dstPos < dstSize ? dstPos : dstSize) / 4; }

    int32_t width;
    int32_t height;
    uint32_t *dst;
    int32_t rowDelta;
    int32_t dstSize;
    int32_t dstPos = 0;
    streamIn stream;
};

// 1, or 0 after an unknown order header (reported).
int32_t decodeInterleaved(rlecontext &context);
// 1, or 0 after a refused format header or a failed plane (reported).
int32_t decodePlanar(rlecontext &context);
// Row functions (rows.h): the three run-length colour planes (red, green,
// blue) into the pixels, giving how many were complete.
int32_t decodePlanes(streamIn &in, uint32_t *pixels, int32_t width, int32_t height);
bool skipPlane(streamIn &in, int32_t width, int32_t height);  // the alpha plane, read past
void mergePlanes(uint32_t *out, const uint8_t *red, const uint8_t *green, const uint8_t *blue, int32_t n);

// Decodes dataLength bytes into dst (width x height pixels, rows in stream
// order): sourceBytesPerPixel 4 selects the planar codec, 3 and up the
// interleaved one.  1 on success, 0 after a report.  decodedPixels, when
// given, receives how many leading pixels were written: all of them unless
// interleaved data ran out early.
int32_t decompressBitmap(int32_t width, int32_t height, const uint8_t *data, int32_t dataLength, uint32_t *dst,
                         int32_t *decodedPixels = nullptr);

}  // namespace ui
