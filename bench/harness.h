// What every benchmark shares: the library set up through srn_get, a frame
// buffer with its tile map, and the registration of one measured operation
// with its counters and the reference it is compared with.
//
// Naming: "<section>/<operation>/<size>".  A benchmark that has a reference
// (memset / memcpy / memmove of the same rows, or the peer decoder on the same
// streams) carries it in its label as "ref=<name>", and a target ratio of its
// throughput to the reference's as "target=<ratio>"; bench/report reads both.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "imgbuf.h"  // ui32.h with the library's accessors, as the library sees it

namespace bench {

// The library's drawing table, filled once by srn_get with standard hatch
// patterns and 3 bytes per pixel.  Reports go to stderr: a benchmark run must
// produce none, so any report is a fault in the benchmark's input.
class Plugin {
public:
    static Plugin &get();

    template <typename Fn>
    Fn slot(int index) const {
        return reinterpret_cast<Fn>(table_[index]);
    }
    // Source depth of the bitmap slots: 3 (interleaved) or 4 (planar).
    void depth(int32_t bytesPerPixel);
    // Source byte order of the 4-byte and raw-tile pixels (slot 15).
    void byteOrder(uint8_t order);
    // Reports seen since the start.
    long reports() const;

private:
    Plugin();
    UiDrawTable table_{};
};

extern const uint8_t kHatchPatterns[48];

// A frame buffer: `width` x `height` pixels, rows `stride` pixels apart, with
// its dirty-tile map.
class Screen {
public:
    Screen(int32_t width, int32_t height, int32_t stridePixels = 0);
    Screen(const Screen &) = delete;
    Screen &operator=(const Screen &) = delete;

    UiSurface &surface() { return surface_; }
    imgbuf &image() { return surface_.image; }
    dirtybuf &dirty() { return surface_.dirty; }
    uint32_t *row(int32_t y) { return pixels_.data() + size_t(y) * size_t(stride_); }
    uint32_t *at(int32_t x, int32_t y) { return row(y) + x; }
    int32_t width() const { return width_; }
    int32_t height() const { return height_; }
    int32_t stridePixels() const { return stride_; }
    size_t strideBytes() const { return 4 * size_t(stride_); }
    void fill(uint32_t colour);
    UiClipRect fullClip() const { return UiClipRect{0, 0, width_ - 1, height_ - 1}; }

private:
    int32_t width_, height_, stride_;
    std::vector<uint32_t> pixels_;
    std::vector<uint8_t> tiles_;
    UiSurface surface_{};
};

// The desktop-sized frame every drawing benchmark draws into: a 1920 x 1080
// screen with a 32-pixel margin on every side (so that full-screen
// rectangles can be scrolled by 16 pixels in any direction), 1984 x 1144.
inline constexpr int32_t kMargin = 32;
inline constexpr int32_t kScreenWidth = 1920;
inline constexpr int32_t kScreenHeight = 1080;
Screen &desk();

// Work done by one iteration: pixels and bytes written to the frame buffer
// (and input bytes read, for decoders).
struct Work {
    int64_t pixels = 0;
    int64_t bytes = 0;
    int64_t inputBytes = 0;
};
inline Work pixelsOf(int64_t pixels) { return Work{pixels, 4 * pixels, 0}; }

// Sets the pixels/s and bytes/s counters (and input bytes/s when given) for
// the iterations run.
void count(benchmark::State &state, const Work &perIteration);

// Registers one benchmark.  `ref` names the reference benchmark and `target`
// the least ratio (throughput / reference throughput) it should reach; both
// may be empty.  The label lists each comparison as "ref=<name>
// [target=<ratio>]", comparisons separated by "; ".
struct Entry {
    std::string name;
    std::function<void(benchmark::State &)> run;
    std::string ref = {};
    double target = 0;
    // A second comparison, for operations measured against two things.
    std::string ref2 = {};
    double target2 = 0;
};
void add(Entry entry);

// "1920x1080".
std::string sizeName(int32_t width, int32_t height);

// The sizes of the fill and copy benchmarks.
struct Size {
    int32_t width, height;
};
inline constexpr Size kRectSizes[] = {{1920, 1080}, {256, 256}, {64, 64}, {8, 8}};

// Registration, one function per section.
void registerFills();
void registerCopies();
void registerDecoders();
void registerText();
void registerLines();
void registerRfb();

}  // namespace bench
