// What every benchmark shares: the library's table (srn_get of the statically
// linked library, called as a client calls it), the frame buffer with its
// tile map, and the registration of one measured operation with its counters
// and the reference it is compared with.
//
// Naming: "<section>/<operation>/<size>".  A benchmark that has a reference
// (memset / memcpy / memmove of the same rows, a plain line stepper on the
// same line, or the peer decoder on the same streams) carries it in its label
// as "ref=<name>", and a target ratio of its throughput to the reference's as
// "target=<ratio>"; bench/report reads both.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <string>

#include "frame.h"
#include "table.h"

namespace bench {

// The drawing table, filled by srn_get with the standard hatch patterns: the
// linked library's, or with UI32_BENCH_MODULE=<path> another ui32.so's.  A
// benchmark run must produce no report: any report is a fault in the
// benchmark's input and makes the run fail.
const kit::Table &table();
// Source depth of the bitmap slots: 3 (interleaved) or 4 (planar).
void depth(int32_t bytesPerPixel);

// The desktop-sized frame every drawing benchmark draws into: a 1920 x 1080
// screen with a 32-pixel margin on every side (so that full-screen
// rectangles can be scrolled by 16 pixels in any direction), 1984 x 1144.
inline constexpr int32_t kMargin = 32;
inline constexpr int32_t kScreenWidth = 1920;
inline constexpr int32_t kScreenHeight = 1080;
kit::Frame &desk();

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

// Runs `draw` once per iteration and counts `pixels` written by each.
template <typename Draw>
void repeat(benchmark::State &state, int64_t pixels, Draw draw) {
    for (auto _ : state) {
        draw();
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(pixels));
}

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

// The sizes of the fill and copy benchmarks: "1920x1080" and where a
// rectangle of that size lands (full-screen sizes at the screen's corner,
// smaller ones at an odd place inside it).
struct Size {
    int32_t width, height;
    std::string name() const { return std::to_string(width) + "x" + std::to_string(height); }
    int64_t area() const { return int64_t(width) * height; }
    UiRect place() const {
        const int32_t offset = width >= kScreenWidth ? 0 : 101;
        return UiRect{kMargin + offset, kMargin + offset, width, height};
    }
};
inline constexpr Size kRectSizes[] = {{1920, 1080}, {256, 256}, {64, 64}, {8, 8}};

inline constexpr int32_t kRopCopy = 12;
inline constexpr int32_t kRopXor = 6;
inline constexpr int32_t kRopInvert = 5;  // not destination

// Registration, one function per section.
void registerFills();
void registerCopies();
void registerText();
void registerLines();
#ifdef UI32_BENCH_PEERS
void registerDecoders();
void registerRfb();
#endif

}  // namespace bench
