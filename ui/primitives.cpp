// The client's direct primitives in buffer coordinates (slots 12, 13, 14 and
// 17): one character cell, solid horizontal and vertical lines, and a block
// copy inside the image.  No origin, no clip rectangle: the pixel checks of
// imgbuf are the only bounds.
#include <algorithm>
#include <cstring>

#include "dirtybuf.h"
#include "entry.h"
#include "ui.h"

namespace {

constexpr int kCharSite = 2963;
constexpr int kHLineLengthSite = 2987;
constexpr int kHLineSite = 2993;
constexpr int kVLineLengthSite = 3006;
constexpr int kVLineSite = 3012;
constexpr int kCopySizeSite = 3470;
constexpr int kCopyDestinationSite = 3473;
constexpr int kCopySourceSite = 3476;

constexpr int32_t kCellWidth = 8;
constexpr int32_t kCellHeight = 16;

}  // namespace

// 16 bytes, one per row, most significant bit leftmost; 1 bits take the
// colour, 0 bits leave the pixel.
bool ui::drawChar8x16(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, const uint8_t *cell, uint32_t colour) {
    uint32_t *p = image->writePtr(x, y, kCellWidth, kCellHeight);
    if (p == nullptr) {
        reportInternal("ui", kCharSite);
        return false;
    }
    for (int32_t r = 0; r < kCellHeight; ++r) {
        uint32_t *row = rowAt(p, image->stride, r);
        const uint32_t bits = cell[r];
        for (int32_t c = 0; c < kCellWidth; ++c)
            if (bits & (0x80u >> c)) row[c] = colour;
    }
    markIfGiven(dirty, x, y, kCellWidth, kCellHeight);
    return true;
}

void ui::hLine(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, int32_t length, uint32_t colour) {
    if (length <= 0) return reportInternal("ui", kHLineLengthSite);
    uint32_t *p = image->writePtr(x, y, length, 1);
    if (p == nullptr) return reportInternal("ui", kHLineSite);
    std::fill_n(p, length, colour);
    markIfGiven(dirty, x, y, length, 1);
}

void ui::vLine(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, int32_t length, uint32_t colour) {
    if (length <= 0) return reportInternal("ui", kVLineLengthSite);
    uint32_t *p = image->writePtr(x, y, 1, length);
    if (p == nullptr) return reportInternal("ui", kVLineSite);
    for (int32_t i = 0; i < length; ++i) *rowAt(p, image->stride, i) = colour;
    markIfGiven(dirty, x, y, 1, length);
}

// Source and destination may overlap: rows are moved bottom-up when the
// source lies above the destination (or level with it), else top-down, and
// each row is one memmove, so every source row is read before it is
// overwritten.  The destination is checked before the source.
bool ui::copyRect(imgbuf *image, dirtybuf *dirty, const UiRect *dst, int32_t srcLeft, int32_t srcTop) {
    const UiRect r = *dst;
    if (r.width <= 0 || r.height <= 0) {
        reportInternal("ui", kCopySizeSite);
        return false;
    }
    uint32_t *to = image->writePtr(r.left, r.top, r.width, r.height);
    if (to == nullptr) {
        reportInternal("ui", kCopyDestinationSite);
        return false;
    }
    const uint32_t *from = image->readPtr(srcLeft, srcTop, r.width, r.height);
    if (from == nullptr) {
        reportInternal("ui", kCopySourceSite);
        return false;
    }
    const uint32_t stride = image->stride;
    const size_t rowBytes = 4 * size_t(r.width);
    if (srcTop <= r.top) {
        for (int32_t k = r.height - 1; k >= 0; --k) std::memmove(rowAt(to, stride, k), rowAt(from, stride, k), rowBytes);
    } else {
        for (int32_t k = 0; k < r.height; ++k) std::memmove(rowAt(to, stride, k), rowAt(from, stride, k), rowBytes);
    }
    markIfGiven(dirty, r.left, r.top, r.width, r.height);
    return true;
}
