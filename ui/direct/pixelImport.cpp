// Raw 4-byte source pixels into the image (slot 16) or into a client record's
// 32-pixel-wide image (slot 23), in the byte order slot 15 set, read once
// per call.
#include <algorithm>

#include "../core/entry.h"
#include "../core/rows.h"
#include "../core/settings.h"
#include "../core/surface.h"

// width x height pixels, packed row after row.
bool ui::putPixels(imgbuf *image, dirtybuf *dirty, const UiRect *rect, const uint8_t *src) {
    const UiRect r = *rect;
    uint32_t *p = writePtr(*image, r);
    if (p == nullptr) return fail(Site::putPixels);
    const RowFn convert = rows::rowFor(4, settings.sourceByteOrder != 0);
    for (int32_t y = 0; y < r.height; ++y) convert(rowAt(p, image->stride, y), src + 4 * size_t(r.width) * size_t(y), r.width);
    markDrawn(dirty, r);
    return true;
}

// The first width pixels of each of the first height rows (rowLength pixels
// apart).  The caller vouches for the record's size; a width above 32 is cut
// to 32 and a row length shorter than the width imports nothing, so that no
// row is overrun.
void ui::importImage32(UiImage32Record *record, const uint8_t *src, int32_t rowLength) {
    const int32_t height = record->height, width = std::min(record->width, int32_t(32));
    if (height < 1 || width < 1 || rowLength < width) return;
    const RowFn convert = rows::rowFor(4, settings.sourceByteOrder != 0);
    uint32_t *words = reinterpret_cast<uint32_t *>(record) + 37;
    for (int32_t r = 0; r < height; ++r) convert(words + 32 * size_t(r), src + 4 * size_t(r) * size_t(rowLength), width);
}
