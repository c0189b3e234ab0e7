// A frame buffer with guard bands: sentinel pixels in the rows above and below
// the image and in the columns left and right of every row, and guard bytes
// around the tile map, so that a test proves nothing outside the target was
// written.
#pragma once

#include <cstdint>
#include <vector>

#include "imgbuf.h"  // ui32.h with the library's accessors

namespace ui32test {

inline constexpr uint32_t kSentinel = 0xdeadbeef;
inline constexpr uint8_t kTileGuard = 0xa5;

class Frame {
public:
    // width x height pixels, every pixel set to `fill`; the tile map has
    // ceil(width / 32) x ceil(height / 32) tiles, all clear.
    Frame(int32_t width, int32_t height, uint32_t fill = 0);
    Frame(const Frame &) = delete;
    Frame &operator=(const Frame &) = delete;

    imgbuf &image() { return surface_.image; }
    dirtybuf &dirty() { return surface_.dirty; }
    UiSurface &surface() { return surface_; }
    int32_t width() const { return width_; }
    int32_t height() const { return height_; }

    uint32_t &at(int32_t x, int32_t y);
    uint32_t at(int32_t x, int32_t y) const;
    void fill(uint32_t colour);
    // Pixels row by row, for whole-picture comparisons.
    std::vector<uint32_t> pixels() const;
    void setPixels(const std::vector<uint32_t> &pixels);

    bool tile(int32_t tx, int32_t ty) const;
    // Indexes (ty * columns + tx) of the marked tiles, in order.
    std::vector<int> markedTiles() const;
    void clearTiles();

    // True when no sentinel pixel or tile guard byte has changed.
    bool guardsIntact() const;

    // A clip rectangle admitting the whole image.
    UiClipRect fullClip() const { return UiClipRect{0, 0, width_ - 1, height_ - 1}; }

private:
    static constexpr int32_t kGuardColumns = 8;
    static constexpr int32_t kGuardRows = 4;
    static constexpr int32_t kTileGuardBytes = 16;
    int32_t width_, height_, rowWords_;
    std::vector<uint32_t> store_;
    std::vector<uint8_t> tileStore_;
    UiSurface surface_{};
};

}  // namespace ui32test
