#include "frame.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace kit {

namespace {
constexpr uint8_t kTileGuard = 0xa5;
constexpr uint32_t kClient1 = 0x11111111, kClient2 = 0x22222222;

// Every word from `from` to `to` is the sentinel (compared a block at a time:
// the fuzz targets check the bands after every call).
bool sentinels(const uint32_t *from, const uint32_t *to) {
    static const std::vector<uint32_t> block(1024, kSentinel);
    for (; to - from > 1024; from += 1024)
        if (std::memcmp(from, block.data(), 4096) != 0) return false;
    return std::memcmp(from, block.data(), size_t(to - from) * 4) == 0;
}
}  // namespace

Frame::Frame(int32_t width, int32_t height, uint32_t fillColour, Layout layout)
    : width_(width), height_(height), rowWords_(size_t(width) + 2 * kGuard + size_t(layout.padWords)) {
    const size_t words = rowWords_ * size_t(height + 2 * kGuard);
    GuardedPages *pages = layout.pages;
    if (pages == nullptr) pages = (own_ = std::make_unique<GuardedPages>(words * 4, layout.place)).get();
    if (pages->size() < words * 4) std::abort();
    store_ = reinterpret_cast<uint32_t *>(pages->end()) - words;
    std::fill_n(store_, words, kSentinel);
    const int32_t columns = (width + 31) / 32, rows = (height + 31) / 32;
    tiles_.assign(size_t(columns * rows + 2 * kGuard), kTileGuard);
    imgbuf &i = surface_.image;
    i = imgbuf{store_ + kGuard * rowWords_ + kGuard, kClient1, kClient2, uint32_t(rowWords_ * 4),
               uint32_t(width), uint32_t(height)};
    surface_.dirty.tiles = tiles_.data() + kGuard;
    surface_.dirty.columns = columns;
    surface_.dirty.rows = rows;
    clearTiles();
    fill(fillColour);
}

void Frame::fill(uint32_t colour) {
    for (int32_t y = 0; y < height_; ++y) std::fill_n(&at(0, y), width_, colour);
}

std::vector<uint32_t> Frame::pixels() const {
    std::vector<uint32_t> out;
    for (int32_t y = 0; y < height_; ++y)
        for (int32_t x = 0; x < width_; ++x) out.push_back(at(x, y));
    return out;
}

void Frame::setPixels(const std::vector<uint32_t> &pixels) {
    for (int32_t y = 0; y < height_; ++y) std::copy_n(pixels.begin() + ptrdiff_t(y) * width_, width_, &at(0, y));
}

bool Frame::tile(int32_t tx, int32_t ty) const { return surface_.dirty.tiles[ty * surface_.dirty.columns + tx] != 0; }

std::vector<int> Frame::markedTiles() const {
    std::vector<int> out;
    for (int i = 0; i < surface_.dirty.columns * surface_.dirty.rows; ++i)
        if (surface_.dirty.tiles[i] != 0) out.push_back(i);
    return out;
}

void Frame::clearTiles() {
    std::fill(tiles_.begin() + kGuard, tiles_.end() - kGuard, 0);
    surface_.dirty.changed = 0;
}

bool Frame::guardsIntact() const {
    // The rows above, then from the end of each image row to the start of
    // the next (the last one runs into the rows below), then the rest.
    const uint32_t *first = store_ + kGuard * rowWords_ + kGuard, *end = store_ + rowWords_ * size_t(height_ + 2 * kGuard);
    if (!sentinels(store_, first)) return false;
    for (int32_t y = 0; y < height_; ++y)
        if (!sentinels(first + y * rowWords_ + width_, first + (y + 1) * rowWords_)) return false;
    if (!sentinels(first + height_ * rowWords_, end)) return false;
    const auto guard = [](uint8_t b) { return b == kTileGuard; };
    const uint8_t *pad = surface_.dirty.changedPad;
    return std::all_of(tiles_.begin(), tiles_.begin() + kGuard, guard) && std::all_of(tiles_.end() - kGuard, tiles_.end(), guard) &&
           surface_.image.client1 == kClient1 && surface_.image.client2 == kClient2 && (pad[0] | pad[1] | pad[2]) == 0;
}

}  // namespace kit
