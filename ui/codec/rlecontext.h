// rlecontext: the decoder context of one compressed bitmap, shared by the
// interleaved run-length decoder (interleaved.cpp) and the planar decoder
// (planar.cpp).  It lives on the stack of one decompressBitmap call.
//
// Output: width x height 32-bit pixels, rows in stream order (the first row
// decoded is row 0, at offset 0), no gap between rows.  Positions are kept in
// bytes (dstPos, dstSize, rowDelta) as the overrun report prints them.
#pragma once

#include <cstdint>

#include "streamInOps.h"

namespace ui {

// The longest order of the interleaved codec: a mega-mega dithered run of
// 65,535 pixel pairs.  The output size is limited so that dstPos, which
// advances by whole orders, still fits 32 bits after the last one.
inline constexpr int32_t kLongestOrderPixels = 2 * 65535;
inline constexpr int64_t kMaxOutputBytes = INT32_MAX - 4 * int64_t(kLongestOrderPixels);

class rlecontext {
public:
    // The caller has checked that width and height are not negative and that
    // width x height x 4 is at most kMaxOutputBytes.
    rlecontext(int32_t bitmapWidth, int32_t bitmapHeight, uint32_t *output, const uint8_t *data, int32_t dataLength)
        : width(bitmapWidth),
          height(bitmapHeight),
          dst(output),
          rowDelta(bitmapWidth * 4),
          dstSize(int32_t(int64_t(bitmapWidth) * 4 * bitmapHeight)),
          stream{data, dataLength} {}

    // Interleaved run-length data: 1, or 0 after an unknown order header.
    int32_t decodeInterleaved();
    // Planar data: 1, or 0 after a refused format header or a failed plane.
    int32_t decodePlanar();

    // The orders that take more than a fill: runLength pixels at dstPos.
    void process_FGBG_IMAGE();
    void process_COLOR_IMAGE();
    // One run-length plane into byte `position` (0 blue ... 3) of every
    // pixel; 1, or 0 when a segment overruns its row or the input runs out.
    int32_t RDP6_decompressPlane(int position);

    // Leading output pixels that hold decoded values.
    int32_t decodedPixels() const { return (dstPos < dstSize ? dstPos : dstSize) / 4; }

    int32_t runLength = 0;
    int32_t width;
    int32_t height;
    uint32_t *dst;
    int32_t rowDelta;
    int32_t dstSize;
    int32_t dstPos = 0;
    uint32_t fgPel = 0xFFFFFF;
    bool insertFgPel = false;
    bool suppressInsert = true;
    streamIn stream;

private:
    // Interleaved helpers (interleaved.cpp).
    bool runOrder(uint8_t header);
    int32_t regularRun(int32_t field);
    int32_t liteRun(int32_t field);
    int32_t megaRun();
    uint32_t readColour();
    void backgroundRun();
    void foregroundRun();
    void colourRun(uint32_t colour);
    void ditheredRun(uint32_t first, uint32_t second);
    void bitmaskPixels(uint32_t *p, unsigned mask, int32_t count, bool firstRow) const;
    void specialImage(unsigned mask);
    void singlePixel(uint32_t colour);
    uint32_t *out() const { return dst + dstPos / 4; }
    int32_t room() const { return (dstSize - dstPos) / 4; }
    bool inFirstRow() const { return dstPos < rowDelta; }

    // Planar helpers (planar.cpp).
    int32_t rawPlanes(bool alpha);
    bool skipAlphaPlane();
    template <bool kWholeWord>
    int32_t decodePlane(int position);
    template <bool kWholeWord>
    bool planeFirstRow(uint32_t *row, int position);
    template <bool kWholeWord>
    bool planeDeltaRow(uint32_t *row, int position);
};

}  // namespace ui
