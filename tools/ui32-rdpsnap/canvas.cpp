#include "canvas.h"

#include <algorithm>

namespace rdpsnap {

void Canvas::resize(int32_t width, int32_t height) {
    width_ = width;
    height_ = height;
    pixels_.assign(size_t(width) * size_t(height), 0);
    const int32_t columns = (width + 31) / 32, rows = (height + 31) / 32;
    tiles_.assign(size_t(columns) * size_t(rows), 0);
    surface_ = UiSurface{};
    surface_.image = imgbuf{pixels_.data(), 0, 0, uint32_t(width) * 4, uint32_t(width), uint32_t(height)};
    surface_.dirty = dirtybuf{tiles_.data(), 0, {0, 0, 0}, columns, rows};
    setBounds(nullptr);
}

void Canvas::setBounds(const int32_t *b) {
    clip_ = UiClipRect{0, 0, width_ - 1, height_ - 1};
    if (b == nullptr) return;
    clip_.left = std::max(clip_.left, b[0]);
    clip_.top = std::max(clip_.top, b[1]);
    clip_.right = std::min(clip_.right, b[2]);
    clip_.bottom = std::min(clip_.bottom, b[3]);
}

void Canvas::collectTiles() {
    if (!surface_.dirty.changed) return;
    for (uint8_t &tile : tiles_) {
        tilesMarked_ += tile;
        tile = 0;
    }
    surface_.dirty.changed = 0;
}

}  // namespace rdpsnap
