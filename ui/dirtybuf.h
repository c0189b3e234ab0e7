// The dirty-tile map: dirtybuf::markRect is declared on the record itself
// (see imgbuf.h, which attaches the library's members to both records).
#pragma once

#include "imgbuf.h"

namespace ui {

inline constexpr int kTileSize = 32;

// Marks the tiles of a drawn rectangle when the caller was given a map.
inline void markIfGiven(dirtybuf *dirty, int32_t left, int32_t top, int32_t width, int32_t height) {
    if (dirty != nullptr) dirty->markRect(left, top, left + width, top + height);
}

}  // namespace ui
