// The frame buffer the client owns: 32-bit pixels, the 32x32 tile map, the
// ui32 drawing table and the clip rectangle of the current order.  Every slot
// call goes through call(), which counts it and collects the tiles it marked.
#pragma once

#include <cstdint>
#include <type_traits>
#include <vector>

#include "ui32.h"

namespace rdpsnap {

class Canvas {
public:
    explicit Canvas(const UiDrawTable &table) : table_(table) {}

    // A new desktop size: black pixels, clean tile map, full-screen clip.
    void resize(int32_t width, int32_t height);

    // Clip rectangle in buffer coordinates, right and bottom inclusive.
    // Without bounds it is the whole frame buffer; the order's bounds are cut
    // to the frame buffer, because the library reports, rather than clips,
    // pixels outside the image.
    void setBounds(const int32_t *leftTopRightBottom);
    const UiClipRect &clip() const { return clip_; }

    template <typename Fn, typename... Args>
    auto call(UiSlot slot, Args... args) {
        ++slotCalls_[slot];
        const auto fn = reinterpret_cast<Fn>(table_[slot]);
        if constexpr (std::is_void_v<decltype(fn(args...))>) {
            fn(args...);
            collectTiles();
        } else {
            const auto result = fn(args...);
            collectTiles();
            return result;
        }
    }

    UiSurface *surface() { return &surface_; }
    int32_t width() const { return width_; }
    int32_t height() const { return height_; }
    const uint32_t *pixels() const { return pixels_.data(); }
    uint64_t slotCalls(int slot) const { return slotCalls_[slot]; }
    uint64_t tilesMarked() const { return tilesMarked_; }

private:
    // Counts the tiles the last call marked and clears them for the next one.
    void collectTiles();

    const UiDrawTable &table_;
    int32_t width_ = 0, height_ = 0;
    std::vector<uint32_t> pixels_;
    std::vector<uint8_t> tiles_;
    UiSurface surface_{};
    UiClipRect clip_{};
    uint64_t slotCalls_[UI_SLOT_COUNT] = {};
    uint64_t tilesMarked_ = 0;
};

}  // namespace rdpsnap
