// A frame buffer with its tile map, wrapped in a UiSurface, with guard bands:
// sentinel pixels around the image and guard bytes around the tile map, so a
// caller can prove that nothing outside the target was written.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "bytes.h"
#include "ui32.h"

namespace kit {

inline constexpr uint32_t kSentinel = 0xdeadbeef;

// Where a frame's store lies (it ends right before an inaccessible page) and
// how many sentinel words more than the guard band lie between its rows.
struct Layout {
    Place place = Place::anywhere;
    int32_t padWords = 0;
    // Pages mapped beforehand that hold the store (then `place` is theirs),
    // so that a caller making many frames maps memory once; null: new pages.
    GuardedPages *pages = nullptr;
};

class Frame {
public:
    // width x height pixels set to `fill`; ceil(width / 32) x ceil(height /
    // 32) tiles, all clear.
    Frame(int32_t width, int32_t height, uint32_t fill = 0, Layout layout = {});
    Frame(const Frame &) = delete;
    Frame &operator=(const Frame &) = delete;

    UiSurface &surface() { return surface_; }
    imgbuf &image() { return surface_.image; }
    dirtybuf &dirty() { return surface_.dirty; }
    int32_t width() const { return width_; }
    int32_t height() const { return height_; }
    UiClipRect all() const { return {0, 0, width_ - 1, height_ - 1}; }

    uint32_t &at(int32_t x, int32_t y) { return surface_.image.pixels[size_t(y) * rowWords_ + size_t(x)]; }
    uint32_t at(int32_t x, int32_t y) const { return surface_.image.pixels[size_t(y) * rowWords_ + size_t(x)]; }
    void fill(uint32_t colour);
    std::vector<uint32_t> pixels() const;  // row by row
    void setPixels(const std::vector<uint32_t> &pixels);

    bool tile(int32_t tx, int32_t ty) const;
    std::vector<int> markedTiles() const;  // ty * columns + tx, ascending
    void clearTiles();

    // No sentinel, tile guard or client word changed.
    bool guardsIntact() const;

private:
    static constexpr int32_t kGuard = 8;  // pixels left and right, rows above and below, tile bytes
    int32_t width_, height_;
    size_t rowWords_;
    std::unique_ptr<GuardedPages> own_;  // when the layout gave none
    uint32_t *store_;
    std::vector<uint8_t> tiles_;
    UiSurface surface_{};
};

}  // namespace kit
