// Origin translation and clipping shared by every entry point that takes a
// UiSurface and a UiClipRect.
#pragma once

#include "imgbuf.h"

namespace ui {

// 32-bit two's-complement arithmetic without undefined behaviour: hostile
// coordinates wrap exactly as the record's words would, and every result is
// bounds-checked before use anyway.
inline int32_t wrapAdd(int32_t a, int64_t b) { return int32_t(uint32_t(a) + uint32_t(uint64_t(b))); }
inline int32_t wrapSub(int32_t a, int32_t b) { return int32_t(uint32_t(a) - uint32_t(b)); }

// Subtracts the surface origin from a buffer-space point when originEnabled.
inline void translate(const UiSurface &surface, int32_t &x, int32_t &y) {
    if (surface.originEnabled == 0) return;
    x = wrapSub(x, surface.originX);
    y = wrapSub(y, surface.originY);
}

// The same translation whatever originEnabled says (glyph drawing points).
inline void translateAlways(const UiSurface &surface, int32_t &x, int32_t &y) {
    x = wrapSub(x, surface.originX);
    y = wrapSub(y, surface.originY);
}

// Clips rect against clip (right and bottom inclusive).  Returns false when
// the rectangle is empty before or after clipping; nothing is reported.
bool clipToRect(UiRect &rect, const UiClipRect &clip);

// As clipToRect, and moves the source point by the amounts by which the
// destination's left and top edges moved.
bool clipToRect(UiRect &rect, const UiClipRect &clip, int32_t &srcX, int32_t &srcY);

}  // namespace ui
