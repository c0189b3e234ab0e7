// The client's direct primitives in buffer coordinates (slots 11-14, 17): a
// checked solid rectangle, one character cell, solid horizontal and vertical
// lines and a block copy inside the image.  No origin and no clip rectangle:
// the image checks are the only bounds.  A null tile map marks nothing.
#include <algorithm>
#include <cstring>

#include "../core/entry.h"
#include "../core/rows.h"
#include "../core/settings.h"
#include "../core/surface.h"

using ui::Site;

// The edges are checked in a fixed order, the far ones summed in 64 bits; a
// negative width or height passes them and fillSolid's check refuses it.
void ui::fillBufferRect(imgbuf *image, dirtybuf *dirty, const UiRect *rect, uint32_t colour) {
    const UiRect r = *rect;
    if (r.left < 0) return report(Site::bufferLeft);
    if (int64_t(r.left) + r.width > int64_t(image->width)) return report(Site::bufferRight);
    if (r.top < 0) return report(Site::bufferTop);
    if (int64_t(r.top) + r.height > int64_t(image->height)) return report(Site::bufferBottom);
    if (fillSolid(*image, r, colour)) markDrawn(dirty, r);
}

// 16 bytes, one per row, MSB leftmost; 1 bits take the colour.
bool ui::drawChar8x16(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, const uint8_t *cell, uint32_t colour) {
    uint32_t *p = writePtr(*image, x, y, 8, 16);
    if (p == nullptr) return fail(Site::charCell);
    for (int32_t r = 0; r < 16; ++r) {
        const uint32_t bits = cell[r];  // read once: the stores below may alias it
        uint32_t *row = rowAt(p, image->stride, r);
        for (int32_t c = 0; c < 8; ++c)
            if (bits & (0x80u >> c)) row[c] = colour;
    }
    markDrawn(dirty, UiRect{x, y, 8, 16});
    return true;
}

void ui::hLine(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, int32_t length, uint32_t colour) {
    if (length <= 0) return report(Site::hLineLength);
    uint32_t *p = writePtr(*image, x, y, length, 1);
    if (p == nullptr) return report(Site::hLine);
    rows::fillRow(p, length, colour);
    markDrawn(dirty, UiRect{x, y, length, 1});
}

void ui::vLine(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, int32_t length, uint32_t colour) {
    if (length <= 0) return report(Site::vLineLength);
    uint32_t *p = writePtr(*image, x, y, 1, length);
    if (p == nullptr) return report(Site::vLine);
    downColumn(p, image->stride, uint32_t(length), [colour](uint32_t *q) { *q = colour; });
    markDrawn(dirty, UiRect{x, y, 1, length});
}

// Rows move bottom-up when the source lies above the destination (or level
// with it), else top-down, each one overlap-safe block move.  The destination
// is checked before the source.
bool ui::copyRect(imgbuf *image, dirtybuf *dirty, const UiRect *dst, int32_t srcLeft, int32_t srcTop) {
    const UiRect r = *dst;
    if (r.width <= 0 || r.height <= 0) return fail(Site::copySize);
    uint32_t *to = writePtr(*image, r);
    if (to == nullptr) return fail(Site::copyDestination);
    const uint32_t *from = readPtr(*image, srcLeft, srcTop, r.width, r.height);
    if (from == nullptr) return fail(Site::copySource);
    const bool upward = srcTop <= r.top;
    for (int32_t k = 0; k < r.height; ++k) {
        const int32_t y = upward ? r.height - 1 - k : k;
        std::memmove(rowAt(to, image->stride, y), rowAt(from, image->stride, y), 4 * size_t(r.width));
    }
    markDrawn(dirty, r);
    return true;
}
