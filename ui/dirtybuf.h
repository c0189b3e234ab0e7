// The dirty-tile map: dirtybuf::markRect is declared on the record itself
// (see imgbuf.h, which attaches the library's members to both records).
#pragma once

#include "imgbuf.h"

namespace ui {

inline constexpr int kTileSize = 32;

// Marks the tiles of a drawn rectangle.  The right and bottom edges are
// summed as 32-bit words, without overflow.
inline void markDrawn(dirtybuf &dirty, int32_t left, int32_t top, int32_t width, int32_t height) {
    dirty.markRect(left, top, int32_t(uint32_t(left) + uint32_t(width)), int32_t(uint32_t(top) + uint32_t(height)));
}
inline void markDrawn(dirtybuf &dirty, const UiRect &r) { markDrawn(dirty, r.left, r.top, r.width, r.height); }

// The same when the caller may have been given no map.
inline void markIfGiven(dirtybuf *dirty, int32_t left, int32_t top, int32_t width, int32_t height) {
    if (dirty != nullptr) markDrawn(*dirty, left, top, width, height);
}

}  // namespace ui
