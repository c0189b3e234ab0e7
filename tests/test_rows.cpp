// The row functions of core/rows.h at every width from 0 to 70, at unaligned
// starts, with random data.  On NEON builds each NEON row is checked against
// its plain twin; elsewhere the plain rows are checked against the small
// models below.  Guard pixels around every output must come out untouched.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

#include "core/rows.h"
#include "core/surface.h"
#include "bytes.h"
#include "log.h"

namespace {

using Words = std::vector<uint32_t>;
std::mt19937 rng(20261123);
Words randomWords(size_t n) {
    Words w(n);
    for (uint32_t &v : w) v = rng();
    return w;
}
std::vector<uint8_t> randomBytes(size_t n) {
    std::vector<uint8_t> b(n);
    for (uint8_t &v : b) v = uint8_t(rng());
    return b;
}

#if defined(__ARM_NEON)
namespace ref = ui;  // the plain twins
#else
namespace ref {  // models: one pixel at a time, no tricks
void fillRow(uint32_t *p, int32_t n, uint32_t c) { std::fill(p, p + n, c); }
void repeatRow(uint32_t *p, int32_t n, const uint8_t *c) {
    for (int32_t i = 0; i < n; ++i) std::memcpy(p + i, c + 4 * (i % 8), 4);
}
void fillArea(uint32_t *p, uint32_t stride, int32_t w, int32_t h, uint32_t c) {
    for (int32_t y = 0; y < h; ++y) fillRow(ui::rowAt(p, stride, y), w, c);
}
template <int I> void solid(uint32_t *d, uint32_t s, int32_t n) { for (int32_t i = 0; i < n; ++i) d[i] = ui::rop2(I, s, d[i]); }
// Both directions as if the whole source row were read before any store.
template <int I> void span(uint32_t *d, const uint32_t *s, int32_t n) {
    const Words copy(s, s + n);
    for (int32_t i = 0; i < n; ++i) d[i] = ui::rop2(I, copy[size_t(i)], d[i]);
}
template <int... I> constexpr std::array<ui::RopSpans, 16> spans(std::integer_sequence<int, I...>) {
    return {ui::RopSpans{solid<I>, span<I>, span<I>}...};
}
const std::array<ui::RopSpans, 16> ropSpans = spans(std::make_integer_sequence<int, 16>{});
template <int Step, bool kLow> void convert(uint32_t *d, const uint8_t *s, int32_t n) {
    for (int32_t i = 0; i < n; ++i, s += Step) d[i] = kLow ? s[0] | s[1] << 8 | s[2] << 16 : s[2] | s[1] << 8 | s[0] << 16;
}
ui::RowFn rowFor(int32_t step, bool low) {
    return step == 4 ? (low ? convert<4, true> : convert<4, false>) : (low ? convert<3, true> : convert<3, false>);
}
void mergePlanes(uint32_t *out, const uint8_t *r, const uint8_t *g, const uint8_t *b, int32_t n) {
    for (int32_t i = 0; i < n; ++i) out[i] = r[i] << 16 | g[i] << 8 | b[i];
}
// Segments of raw bytes then a run of the last one; rows below the first
// add deltas (v >> 1, inverted when v is odd) to the byte above.  Missing
// raw bytes count as 0; a missing control byte or an overrun fails.
bool decodePlane(ui::streamIn &in, uint32_t *pixels, int32_t width, int32_t height, int position) {
    auto *bytes = reinterpret_cast<uint8_t *>(pixels);
    for (int32_t y = 0, x = 0; y < height; ++y, x = 0) {
        for (uint8_t value = 0; x < width;) {
            if (in.left < 1) return in.readU8(0), false;
            const uint8_t c = in.readU8(0);
            int32_t raw = c >> 4, run = c & 15;
            if (run == 1 || run == 2) run = raw + 16 * run, raw = 0;
            if (x + raw + run > width) return false;
            for (int32_t i = 0; i < raw + run; ++i, ++x) {
                if (i < raw) {
                    const uint8_t b = in.left > 0 ? in.readU8(0) : 0;
                    value = y == 0 ? b : uint8_t(b >> 1 ^ -(b & 1));
                }
                uint8_t *p = bytes + 4 * (size_t(y) * size_t(width) + size_t(x));
                p[position] = uint8_t(value + (y == 0 ? 0 : p[position - 4 * width]));
                if (position == 2) p[3] = 0;
            }
        }
    }
    return true;
}
int32_t decodePlanes(ui::streamIn &in, uint32_t *pixels, int32_t width, int32_t height) {
    int32_t done = 0;
    while (done < 3 && decodePlane(in, pixels, width, height, 2 - done)) ++done;
    return done;
}
// The same segments read past; raw bytes that are not all there are not
// consumed.
bool skipPlane(ui::streamIn &in, int32_t width, int32_t height) {
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width;) {
            if (in.left < 1) return in.readU8(0), false;
            const uint8_t c = in.readU8(0);
            int32_t raw = c >> 4, run = c & 15;
            if (run == 1 || run == 2) run = raw + 16 * run, raw = 0;
            if (x + raw + run > width) return false;
            x += raw + run;
            if (in.left >= raw) in.ptr += raw, in.left -= raw;
        }
    return true;
}
}  // namespace ref
#endif

// Runs `run` on a copy of `frame` with each implementation and compares the
// whole frame, guards included.
template <typename Run>
void same(const Words &frame, Run run, const char *what, int32_t n, int offset) {
    Words expected = frame, actual = frame;
    run(expected.data(), true), run(actual.data(), false);
    const auto diff = std::mismatch(expected.begin(), expected.end(), actual.begin());
    ASSERT_TRUE(diff.first == expected.end()) << what << " width " << n << " case " << offset << ": word "
                                              << (diff.first - expected.begin()) << " " << std::hex << *diff.first
                                              << " expected, " << *diff.second << " stored";
}

TEST(Rows, SolidFillsAndAreas) {
    for (int32_t n = 0; n <= 70; ++n)
        for (int offset = 0; offset < 4; ++offset) {
            const Words frame = randomWords(size_t(n) * 3 + 40);
            const uint32_t c = rng(), stride = 4 * uint32_t(n + 5);
            same(frame, [&](uint32_t *f, bool r) { (r ? ref::fillRow : ui::rows::fillRow)(f + 8 + offset, n, c); }, "fillRow", n, offset);
            const std::vector<uint8_t> colours = randomBytes(33);  // from byte `offset & 1`: any alignment
            same(frame, [&](uint32_t *f, bool r) { (r ? ref::repeatRow : ui::rows::repeatRow)(f + 8 + offset, n, colours.data() + (offset & 1)); }, "repeatRow", n, offset);
            for (int32_t h = 0; h <= 2; ++h)
                same(frame, [&](uint32_t *f, bool r) { (r ? ref::fillArea : ui::rows::fillArea)(f + 4 + offset, stride, n, h, c); }, "fillArea", n, h);
        }
}

TEST(Rows, RasterOperationsOnRows) {
    for (int op = 0; op < 16; ++op)
        for (int32_t n = 0; n <= 70; ++n)
            for (int offset = 0; offset < 4; ++offset) {
                const Words frame = randomWords(3 * size_t(n) + 64);
                const ui::RopSpans &r = ref::ropSpans[size_t(op)], &c = ui::rows::ropSpans[size_t(op)];
                const uint32_t colour = rng();
                same(frame, [&](uint32_t *f, bool isRef) { (isRef ? r : c).solid(f + 8 + offset, colour, n); }, "solid", n, op);
                // The source apart, or overlapping: forward reads at or right
                // of what it stores, backward at or left of it.
                for (int32_t shift : {0, 1, 3, 4, 9, n + 6}) {
                    same(frame, [&](uint32_t *f, bool isRef) {
                        (isRef ? r : c).forward(f + 8 + offset, f + 8 + offset + shift, n); }, "forward", n, op * 100 + shift);
                    same(frame, [&](uint32_t *f, bool isRef) {
                        (isRef ? r : c).backward(f + 8 + offset + shift, f + 8 + offset, n); }, "backward", n, op * 100 + shift);
                }
            }
}

TEST(Rows, SourcePixelsAndPlanesIntoWords) {
    for (int32_t n = 0; n <= 70; ++n)
        for (int offset = 0; offset < 4; ++offset) {
            const Words frame = randomWords(size_t(n) + 16);
            const std::vector<uint8_t> src = randomBytes(4 * size_t(n) + 8);
            for (int32_t step : {3, 4})
                for (bool low : {false, true})
                    same(frame, [&](uint32_t *f, bool r) {
                        (r ? ref::rowFor : ui::rows::rowFor)(step, low)(f + 4 + offset, src.data() + offset, n);
                    }, "rowFor", n, step * 10 + low);
            const uint8_t *red = src.data() + offset;
            same(frame, [&](uint32_t *f, bool r) {
                (r ? ref::mergePlanes : ui::rows::mergePlanes)(f + 4 + offset, red, red + n + 1, red + 2 * n + 3, n);
            }, "mergePlanes", n, offset);
        }
}

// Three plane streams of whole rows of segments, at times with one byte
// changed or cut short, so that overruns and missing bytes are met too.
std::vector<uint8_t> planeStreams(int32_t width, int32_t height) {
    std::vector<uint8_t> s;
    for (int32_t y = 0; y < 3 * height; ++y)
        for (int32_t x = 0; x < width;) {
            int32_t raw = int32_t(rng() % 16), run = int32_t(rng() % 16);
            if (raw + run > width - x) raw = std::min(raw, width - x), run = width - x - raw;
            if (run == 1 || run == 2) run = 0;
            if (raw + run == 0) raw = 1;
            const bool long_ = rng() % 4 == 0 && width - x >= 33;  // 16 or 32 plus 0 or 1, no raw bytes
            s.push_back(long_ ? uint8_t(1 + rng() % 2 + (rng() % 2) * 16) : uint8_t(raw << 4 | run));
            x += long_ ? 16 * (s.back() & 15) + (s.back() >> 4) : raw + run;
            for (int32_t i = 0; i < (long_ ? 0 : raw); ++i) s.push_back(uint8_t(rng()));
        }
    const uint32_t fault = rng() % 4;
    if (fault == 1 && !s.empty()) s[rng() % s.size()] = uint8_t(rng());
    if (fault == 2 && !s.empty()) s.resize(rng() % s.size());
    return s;
}

// Widths 0 to 70 in a few rows; then bitmaps whose three planes do not fit
// the NEON form's buffer together (70 x 60), nor one plane in one band
// (70 x 200, 15 x 900), and rows wider than it.  The streams end at an
// unreadable page.  The same streams are read past as one plane of three
// times the rows.
TEST(Rows, RunLengthPlanes) {
    std::vector<std::pair<int32_t, int32_t>> sizes;
    for (int32_t w = 0; w <= 70; ++w)
        for (int32_t h = 1; h <= 4; ++h) sizes.push_back({w, h});
    for (int32_t h : {60, 200}) sizes.insert(sizes.end(), {{70, h}, {64, h}});
    sizes.insert(sizes.end(), {{15, 900}, {1023, 2}, {2100, 4}, {12300, 1}});
    for (const auto &[w, h] : sizes)
        for (int round = 0; round < (w <= 70 && h <= 4 ? 4 : 8); ++round) {
            const kit::GuardedInput stream(planeStreams(w, h));  // a read past it faults
            ASSERT_NE(stream.data(), nullptr);
            const Words frame = randomWords(size_t(w) * size_t(h) + 8);
            ui::streamIn ins[2];
            int32_t done[2];
            kit::Trail trails[2];
            same(frame, [&](uint32_t *f, bool r) {
                kit::LogCapture log;
                ui::streamIn &in = ins[r] = ui::streamIn{stream.data(), stream.size()};
                done[r] = (r ? ref::decodePlanes : ui::rows::decodePlanes)(in, f + 4, w, h);
                trails[r] = log.trail();
            }, "decodePlanes", w, h * 100 + round);
            EXPECT_EQ(done[0], done[1]) << w << "x" << h << " " << round;
            EXPECT_EQ(ins[0].ptr, ins[1].ptr) << w << "x" << h << " " << round;
            EXPECT_EQ(ins[0].left, ins[1].left) << w << "x" << h << " " << round;
#if defined(__ARM_NEON)
            EXPECT_EQ(trails[0], trails[1]) << w << "x" << h << " " << round;
#endif
            bool skipped[2];
            for (int r = 0; r < 2; ++r) {
                kit::LogCapture log;
                ui::streamIn &in = ins[r] = ui::streamIn{stream.data(), stream.size()};
                skipped[r] = (r ? ref::skipPlane : ui::rows::skipPlane)(in, w, 3 * h);
                trails[r] = log.trail();
            }
            EXPECT_EQ(skipped[0], skipped[1]) << w << "x" << h << " " << round;
            EXPECT_EQ(ins[0].ptr, ins[1].ptr) << w << "x" << h << " " << round;
#if defined(__ARM_NEON)
            EXPECT_EQ(trails[0], trails[1]) << w << "x" << h << " " << round;
#endif
        }
}

}  // namespace
