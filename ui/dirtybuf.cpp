// dirtybuf::markRect: marks the 32x32 tiles that a drawn rectangle touches.
#include "dirtybuf.h"

#include <cstring>

#include "ui.h"

namespace {
constexpr int kMarkSite = 114;
}

// right and bottom are exclusive.  The tile range is computed in signed 32-bit
// arithmetic with truncating division; an empty, negative or out-of-map range
// is reported with its six numbers and nothing is marked.
void dirtybuf::markRect(int32_t left, int32_t top, int32_t right, int32_t bottom) {
    using ui::kTileSize;
    const int32_t tx0 = left / kTileSize;
    const int32_t ty0 = top / kTileSize;
    // right + 31 wraps as 32-bit arithmetic does, so that a rectangle ending
    // near INT32_MAX gives a negative tx1 and is refused, never a huge range.
    const int32_t tx1 = int32_t(uint32_t(right) + (kTileSize - 1)) / kTileSize;
    const int32_t ty1 = int32_t(uint32_t(bottom) + (kTileSize - 1)) / kTileSize;
    const bool valid = tx0 >= 0 && ty0 >= 0 && int64_t(tx1) - tx0 >= 1 && int64_t(ty1) - ty0 >= 1 &&
                       tx1 <= columns && ty1 <= rows;
    if (!valid || tiles == nullptr) {
        ui::report("dirtybuf", kMarkSite, "%d,%d->%d,%d of %d,%d", tx0, ty0, tx1, ty1, columns, rows);
        return;
    }
    uint8_t *row = tiles + size_t(ty0) * size_t(columns) + size_t(tx0);
    for (int32_t ty = ty0; ty < ty1; ++ty, row += columns) std::memset(row, 1, size_t(tx1 - tx0));
    changed = 1;
}
