// Clipping of an order's destination rectangle against its clip rectangle.
#include "surface.h"

namespace {

// Clips one axis: start and size against the inclusive range [low, high].
// Worked in 64 bits so that hostile values far apart cannot overflow; a
// surviving span lies inside [low, high] and so fits 32 bits again.
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

}  // namespace

bool ui::clipToRect(UiRect &rect, const UiClipRect &clip) {
    if (rect.width <= 0 || rect.height <= 0) return false;
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
