#include "frame.h"

#include <algorithm>

namespace ui32test {

Frame::Frame(int32_t width, int32_t height, uint32_t fill)
    : width_(width), height_(height), rowWords_(width + 2 * kGuardColumns) {
    store_.assign(size_t(rowWords_) * size_t(height + 2 * kGuardRows), kSentinel);
    const int32_t columns = (width + 31) / 32, rows = (height + 31) / 32;
    tileStore_.assign(size_t(columns * rows + 2 * kTileGuardBytes), kTileGuard);
    std::fill(tileStore_.begin() + kTileGuardBytes, tileStore_.end() - kTileGuardBytes, 0);

    imgbuf &img = surface_.image;
    img.pixels = store_.data() + size_t(kGuardRows) * size_t(rowWords_) + kGuardColumns;
    img.client1 = 0x11111111;
    img.client2 = 0x22222222;
    img.stride = uint32_t(rowWords_) * 4;
    img.width = uint32_t(width);
    img.height = uint32_t(height);
    dirtybuf &d = surface_.dirty;
    d.tiles = tileStore_.data() + kTileGuardBytes;
    d.changed = 0;
    d.columns = columns;
    d.rows = rows;
    this->fill(fill);
}

uint32_t &Frame::at(int32_t x, int32_t y) { return surface_.image.pixels[size_t(y) * size_t(rowWords_) + size_t(x)]; }
uint32_t Frame::at(int32_t x, int32_t y) const {
    return surface_.image.pixels[size_t(y) * size_t(rowWords_) + size_t(x)];
}

void Frame::fill(uint32_t colour) {
    for (int32_t y = 0; y < height_; ++y)
        for (int32_t x = 0; x < width_; ++x) at(x, y) = colour;
}

std::vector<uint32_t> Frame::pixels() const {
    std::vector<uint32_t> out;
    out.reserve(size_t(width_) * size_t(height_));
    for (int32_t y = 0; y < height_; ++y)
        for (int32_t x = 0; x < width_; ++x) out.push_back(at(x, y));
    return out;
}

void Frame::setPixels(const std::vector<uint32_t> &pixels) {
    size_t i = 0;
    for (int32_t y = 0; y < height_; ++y)
        for (int32_t x = 0; x < width_; ++x) at(x, y) = pixels.at(i++);
}

bool Frame::tile(int32_t tx, int32_t ty) const {
    return surface_.dirty.tiles[size_t(ty) * size_t(surface_.dirty.columns) + size_t(tx)] != 0;
}

std::vector<int> Frame::markedTiles() const {
    std::vector<int> out;
    const int count = surface_.dirty.columns * surface_.dirty.rows;
    for (int i = 0; i < count; ++i)
        if (surface_.dirty.tiles[i] != 0) out.push_back(i);
    return out;
}

void Frame::clearTiles() {
    std::fill(tileStore_.begin() + kTileGuardBytes, tileStore_.end() - kTileGuardBytes, 0);
    surface_.dirty.changed = 0;
}

bool Frame::guardsIntact() const {
    for (int32_t y = 0; y < height_ + 2 * kGuardRows; ++y) {
        for (int32_t x = 0; x < rowWords_; ++x) {
            const bool inside = y >= kGuardRows && y < kGuardRows + height_ && x >= kGuardColumns &&
                                x < kGuardColumns + width_;
            if (!inside && store_[size_t(y) * size_t(rowWords_) + size_t(x)] != kSentinel) return false;
        }
    }
    for (int32_t i = 0; i < kTileGuardBytes; ++i)
        if (tileStore_[size_t(i)] != kTileGuard || tileStore_[tileStore_.size() - 1 - size_t(i)] != kTileGuard)
            return false;
    const uint8_t *pad = surface_.dirty.changedPad;
    return surface_.image.client1 == 0x11111111 && surface_.image.client2 == 0x22222222 && pad[0] == 0 &&
           pad[1] == 0 && pad[2] == 0;
}

}  // namespace ui32test
