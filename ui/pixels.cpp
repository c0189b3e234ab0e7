// Import of raw 32-bit pixels (slots 16 and 23), converted by the source
// byte order that slot 15 set.
#include <algorithm>

#include "dirtybuf.h"
#include "entry.h"
#include "sourcePixel.h"
#include "ui.h"

namespace {

constexpr int kPutPixelsSite = 3449;
constexpr int32_t kImage32Words = 32;   // pixels per row of a UiImage32Record image
constexpr size_t kImage32FirstWord = 37;

}  // namespace

// width x height source pixels, packed row after row, into the rectangle.
bool ui::putPixels(imgbuf *image, dirtybuf *dirty, const UiRect *rect, const uint8_t *src) {
    const UiRect r = *rect;
    uint32_t *p = image->writePtr(r.left, r.top, r.width, r.height);
    if (p == nullptr) {
        reportInternal("ui", kPutPixelsSite);
        return false;
    }
    const ui::RowFn convert = ui::rowFor<4>(settings.sourceByteOrder);
    const size_t sourceRowBytes = 4 * size_t(r.width);
    for (int32_t y = 0; y < r.height; ++y) convert(rowAt(p, image->stride, y), src + size_t(y) * sourceRowBytes, r.width);
    markIfGiven(dirty, r.left, r.top, r.width, r.height);
    return true;
}

// The first width pixels of each of the first height source rows (rowLength
// pixels apart) into the record's 32-pixel-wide image.  The caller vouches
// for the record's size; a width above 32 is cut to 32 and a row length
// shorter than the width imports nothing, so that no row is overrun.
void ui::importImage32(UiImage32Record *record, const uint8_t *src, int32_t rowLength) {
    const int32_t height = record->height;
    if (height < 1) return;
    const int32_t width = std::min(record->width, kImage32Words);
    if (width < 1 || rowLength < width) return;
    const ui::RowFn convert = ui::rowFor<4>(settings.sourceByteOrder);
    uint32_t *words = reinterpret_cast<uint32_t *>(record) + kImage32FirstWord;
    for (int32_t r = 0; r < height; ++r)
        convert(words + size_t(r) * kImage32Words, src + 4 * size_t(r) * size_t(rowLength), width);
}
