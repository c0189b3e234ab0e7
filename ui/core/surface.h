// The checked pixel accessors of the image buffer, the tile-marking rule of
// the tile map, and the origin translation and clipping that every entry
// point taking a UiSurface shares.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "ui32.h"

namespace ui {

// The pixel at (left, top) of a rectangle that lies inside the image, or null
// after the "imgbuf" report (99 for writes, 83 for reads).  A null `pixels`
// gives null for every rectangle that passes, unreported: the caller's own
// report follows either way.
uint32_t *writePtr(const imgbuf &image, int32_t left, int32_t top, int32_t width, int32_t height);
const uint32_t *readPtr(const imgbuf &image, int32_t left, int32_t top, int32_t width, int32_t height);
inline uint32_t *writePtr(const imgbuf &image, const UiRect &r) { return writePtr(image, r.left, r.top, r.width, r.height); }

// Marks the 32x32 tiles that the pixels [left, right) x [top, bottom) touch,
// or reports the range ("dirtybuf" 114) and marks nothing.
void markRect(dirtybuf &dirty, int32_t left, int32_t top, int32_t right, int32_t bottom);

// 32-bit two's-complement arithmetic without undefined behaviour: hostile
// coordinates wrap as the record's words would; results are bounds-checked.
inline int32_t wrapAdd(int32_t a, int64_t b) { return int32_t(uint32_t(a) + uint32_t(uint64_t(b))); }
inline int32_t wrapSub(int32_t a, int32_t b) { return int32_t(uint32_t(a) - uint32_t(b)); }

// Marks a drawn rectangle; a null map (where a slot allows one) marks nothing.
inline void markDrawn(dirtybuf *dirty, const UiRect &r) {
    if (dirty != nullptr) markRect(*dirty, r.left, r.top, wrapAdd(r.left, r.width), wrapAdd(r.top, r.height));
}

// Row `rows` (>= 0) below p, `stride` bytes per row.
template <typename Pixel>
Pixel *rowAt(Pixel *p, uint32_t stride, int32_t rows) {
    using Byte = std::conditional_t<std::is_const_v<Pixel>, const uint8_t, uint8_t>;
    return reinterpret_cast<Pixel *>(reinterpret_cast<Byte *>(p) + size_t(uint32_t(rows)) * stride);
}

// Subtracts the origin from a buffer-space point when originEnabled (always,
// for glyph drawing points).
inline void translate(const UiSurface &s, int32_t &x, int32_t &y, bool always = false) {
    if (s.originEnabled == 0 && !always) return;
    x = wrapSub(x, s.originX);
    y = wrapSub(y, s.originY);
}

// Clips rect against clip (right and bottom inclusive): false, silently, when
// it is empty before or after.  With a source point, moves it as far as the
// rectangle's left and top edges moved.
bool clipToRect(UiRect &rect, const UiClipRect &clip);
bool clipToRect(UiRect &rect, const UiClipRect &clip, int32_t &srcX, int32_t &srcY);

}  // namespace ui
