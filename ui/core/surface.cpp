// Image-buffer checks, tile marking and clipping.
#include "surface.h"

#include <cstring>

#include "settings.h"

namespace {

constexpr int32_t kTile = 32;

// The sums are unsigned 32-bit: with all four values non-negative they cannot
// wrap, so a left + width beyond 2^31 is refused instead of passing negative.
bool fits(const imgbuf &image, int32_t left, int32_t top, int32_t width, int32_t height) {
    if (left < 0 || top < 0 || width < 0 || height < 0) return false;
    return uint32_t(left) + uint32_t(width) <= image.width && uint32_t(top) + uint32_t(height) <= image.height;
}

uint32_t *pixelAt(const imgbuf &image, int32_t left, int32_t top) {
    return image.pixels == nullptr ? nullptr : ui::rowAt(image.pixels, image.stride, top) + left;
}

// Clips one axis, start and size, against the inclusive range [low, high], in
// 64 bits so that hostile values cannot overflow; a surviving span lies
// inside [low, high] and fits 32 bits again.
bool clipAxis(int32_t &start, int32_t &size, int32_t low, int32_t high) {
    int64_t s = start, n = size;
    if (s < low) {
        n -= int64_t(low) - s;
        s = low;
    }
    if (s + n > int64_t(high) + 1) n = int64_t(high) + 1 - s;
    if (n < 1) return false;
    start = int32_t(s);
    size = int32_t(n);
    return true;
}

// Most rectangles lie inside the clip: checked first in 32 bits (right - left
// is exact once left lies in [clip.left, clip.right]).
bool inside(int32_t start, int32_t size, int32_t low, int32_t high) {
    return start >= low && start <= high && uint32_t(size - 1) <= uint32_t(high) - uint32_t(start);
}

}  // namespace

uint32_t *ui::writePtr(const imgbuf &image, int32_t left, int32_t top, int32_t width, int32_t height) {
    if (!fits(image, left, top, width, height)) return report(Site::imageWrite), nullptr;
    return pixelAt(image, left, top);
}

const uint32_t *ui::readPtr(const imgbuf &image, int32_t left, int32_t top, int32_t width, int32_t height) {
    if (!fits(image, left, top, width, height)) return report(Site::imageRead), nullptr;
    return pixelAt(image, left, top);
}

// Tile range in signed 32-bit arithmetic with truncating division; right + 31
// wraps as the words would, so a rectangle ending near INT32_MAX gives a
// negative tx1 and is refused rather than a huge range.
void ui::markRect(dirtybuf &dirty, int32_t left, int32_t top, int32_t right, int32_t bottom) {
    const int32_t tx0 = left / kTile, ty0 = top / kTile;
    const int32_t tx1 = wrapAdd(right, kTile - 1) / kTile, ty1 = wrapAdd(bottom, kTile - 1) / kTile;
    const bool valid = tx0 >= 0 && ty0 >= 0 && int64_t(tx1) - tx0 >= 1 && int64_t(ty1) - ty0 >= 1 &&
                       tx1 <= dirty.columns && ty1 <= dirty.rows && dirty.tiles != nullptr;
    if (!valid) return report(Site::tileRange, tx0, ty0, tx1, ty1, dirty.columns, dirty.rows);
    uint8_t *row = dirty.tiles + size_t(ty0) * size_t(dirty.columns) + size_t(tx0);
    const int32_t n = tx1 - tx0;
    for (int32_t ty = ty0; ty < ty1; ++ty, row += dirty.columns)
        if (n > 8)
            std::memset(row, 1, size_t(n));
        else
            for (int32_t i = 0; i < n; ++i) row[i] = 1;  // a small order's few tiles: no call
    dirty.changed = 1;
}

bool ui::clipToRect(UiRect &rect, const UiClipRect &clip) {
    if (rect.width <= 0 || rect.height <= 0) return false;
    if (inside(rect.left, rect.width, clip.left, clip.right) && inside(rect.top, rect.height, clip.top, clip.bottom))
        return true;
    return clipAxis(rect.left, rect.width, clip.left, clip.right) &&
           clipAxis(rect.top, rect.height, clip.top, clip.bottom);
}

bool ui::clipToRect(UiRect &rect, const UiClipRect &clip, int32_t &srcX, int32_t &srcY) {
    const int32_t oldLeft = rect.left, oldTop = rect.top;
    if (!clipToRect(rect, clip)) return false;
    srcX = wrapAdd(srcX, int64_t(rect.left) - oldLeft);
    srcY = wrapAdd(srcY, int64_t(rect.top) - oldTop);
    return true;
}
