// The LineTo order (slot 4): its paths, reports and raster operations; sloped
// lines against a model of the 2.30 stepper and a binary64 reference of the
// clipper; hostile coordinates; SoftDouble against the host's binary64.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <optional>
#include <random>
#include <set>

#include "frame.h"
#include "library.h"
#include "orders/lineClip.h"
#include "orders/softDouble.h"

// On i386 the references use SSE2: each operation rounded once to binary64.
#if defined(__i386__)
#define REFERENCE __attribute__((target("sse2,fpmath=sse"), noipa))
#else
#define REFERENCE __attribute__((noinline))
#endif

namespace {

using ui::Site;
using Points = std::set<std::pair<int32_t, int32_t>>;  // (x, y)

// A w x h picture of `back` with `colour` at the points.
std::vector<uint32_t> picture(int32_t w, int32_t h, uint32_t back, const Points &points, uint32_t colour) {
    std::vector<uint32_t> out(size_t(w * h), back);
    for (auto [x, y] : points) out[size_t(y * w + x)] = colour;
    return out;
}

Points steps(int32_t x, int32_t y, int32_t sx, int32_t sy, int32_t n) {  // n points from (x, y) by (sx, sy)
    Points out;
    for (int32_t k = 0; k < n; ++k) out.insert({x + k * sx, y + k * sy});
    return out;
}

// Pixel k of a sloped run lies k steps along the major axis (y when the
// lengths are equal) and floor((2^29 + k x slope) / 2^30) along the minor one,
// slope = minor x 2^30 / major, truncated; |major| pixels, one more when
// clipping moved the end point.
Points stepper(int64_t x1, int64_t y1, int64_t x2, int64_t y2, bool endKept) {
    const int64_t ax = std::abs(x2 - x1), ay = std::abs(y2 - y1), major = std::max(ax, ay);
    Points out;
    for (int64_t k = 0; k < major + !endKept; ++k) {
        const int64_t across = major == 0 ? 0 : ((int64_t(1) << 29) + k * ((std::min(ax, ay) << 30) / major)) >> 30;
        const int64_t dx = ax > ay ? k : across, dy = ax > ay ? across : k;
        out.insert({int32_t(x1 + (x2 > x1 ? dx : -dx)), int32_t(y1 + (y2 > y1 ? dy : -dy))});
    }
    return out;
}

// Cohen-Sutherland in binary64: codes 1 left, 2 right, 4 above, 8 below (an
// edge is inside); each move one fused multiply-add along the slope; at most
// five passes.  0 rejected, 1 accepted (s clipped), 2 unsettled.
REFERENCE uint32_t code(double x, double y, const double (&e)[4]) {
    return uint32_t(x < e[0]) | uint32_t(x > e[2]) << 1 | uint32_t(y < e[1]) << 2 | uint32_t(y > e[3]) << 3;
}
REFERENCE void move(double &x, double &y, uint32_t c, const double (&e)[4], double kx, double ky) {
    if (c & 3) y = std::fma(e[c & 1 ? 0 : 2] - x, ky, y), x = e[c & 1 ? 0 : 2];
    else if (c & 12) x = std::fma(e[c & 4 ? 1 : 3] - y, kx, x), y = e[c & 4 ? 1 : 3];
}
REFERENCE int referenceClip(int32_t (&s)[4], const UiClipRect &clip) {
    const double e[4] = {double(clip.left), double(clip.top), double(clip.right), double(clip.bottom)};
    double x1 = s[0], y1 = s[1], x2 = s[2], y2 = s[3];
    uint32_t c1 = code(x1, y1, e), c2 = code(x2, y2, e);
    if ((c1 | c2) == 0 || (c1 & c2) != 0) return (c1 | c2) == 0;
    const double dx = int32_t(uint32_t(s[2]) - uint32_t(s[0])), dy = int32_t(uint32_t(s[3]) - uint32_t(s[1]));
    for (int pass = 1; pass <= 5; ++pass) {
        if (c1) move(x1, y1, c1, e, dx / dy, dy / dx);
        if (c2) move(x2, y2, c2, e, dx / dy, dy / dx);
        const uint32_t m1 = code(x1, y1, e), m2 = code(x2, y2, e);
        if ((m1 | m2) == 0) return s[0] = int32_t(x1), s[1] = int32_t(y1), s[2] = int32_t(x2), s[3] = int32_t(y2), 1;
        if ((m1 & c2) != 0 || (m2 & (m1 | c1)) != 0) return 0;
        c1 = m1, c2 = m2;
    }
    return 2;
}

// Raster operation r gives, bit by bit, bit (2 x pen + destination) of r.
uint32_t rop(int32_t r, uint32_t pen, uint32_t d) {
    uint32_t out = 0;
    for (int b = 0; b < 24; ++b) out |= uint32_t(r >> (2 * (pen >> b & 1) + (d >> b & 1)) & 1) << b;
    return out;
}

UiLineOrder lineOrder(int32_t x1, int32_t y1, int32_t x2, int32_t y2, int32_t r = 12, uint32_t pen = 0x123456) {
    return {x1, y1, x2, y2, r, {int32_t(pen >> 16), int32_t(pen >> 8 & 0xff), int32_t(pen & 0xff)}};
}

constexpr UiClipRect kFull{0, 0, 127, 95}, kAll{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
const Points kSlope3of10{{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 1}, {5, 1}, {6, 2}, {7, 2}, {8, 2}, {9, 3}};

// On a 128 x 96 frame (4 x 3 tiles).  A failure is reported after "imgbuf"
// 99, except clipping that never settles.  (The origin, clip edges and image
// checks of vertical and horizontal lines are in test_surface's clipping
// table; these rows are the paths, directions and tiles.)
const struct LineCase {
    const char *name;
    int32_t x1, y1, x2, y2;
    UiClipRect clip;
    Points pixels;
    std::vector<int> tiles;
    std::optional<Site> failure{};
} kLines[] = {
    {"one point", 5, 5, 5, 5, kFull, {{5, 5}}, {0}},
    {"diagonal neighbour across a tile corner: one pixel, one tile", 31, 31, 32, 32, kFull, {{31, 31}}, {0}},
    {"point outside the clip", 5, 5, 5, 5, {6, 0, 127, 95}, {}, {}},
    {"vertical down", 3, 4, 3, 10, kFull, steps(3, 4, 0, 1, 6), {0}},
    {"vertical up", 3, 10, 3, 4, kFull, steps(3, 5, 0, 1, 6), {0}},
    {"vertical up into the next tile row", 40, 64, 40, 60, kFull, steps(40, 61, 0, 1, 4), {5, 9}},
    {"vertical cut at both ends", 7, -5, 7, 200, {0, 10, 127, 12}, steps(7, 10, 0, 1, 3), {0}},
    {"horizontal right to left, clipped", 100, 0, 0, 0, {0, 0, 49, 49}, steps(1, 0, 1, 0, 49), {0, 1}},
    {"horizontal leftwards across a tile edge", 70, 3, 60, 3, kFull, steps(61, 3, 1, 0, 10), {1, 2}},
    {"slope 3/10", 0, 0, 10, 3, kFull, kSlope3of10, {0}},
    {"clipped on the right: the end on the edge drawn", 0, 0, 10, 3, {0, 0, 7, 95}, {kSlope3of10.begin(), std::next(kSlope3of10.begin(), 8)}, {0}},
    {"start clipped onto the order's end", 0, 0, 10, 10, {10, 10, 50, 50}, {}, {}},
    {"clipped to one pixel that is not the end", 20, 20, 23, 21, {20, 20, 20, 20}, {{20, 20}}, {0}},
    {"one pixel outside the image", 130, 5, 130, 5, kAll, {}, {}, Site::linePixel},
    {"sloped partly outside the image", 120, 0, 130, 5, kAll, {}, {}, Site::lineSloped},
    {"sloped from a negative start", -3, 0, 10, 5, kAll, {}, {}, Site::lineSloped},
    {"clipped to one pixel outside the image", 200, 100, 203, 101, {200, 100, 200, 100}, {}, {}, Site::lineClippedPixel},
    {"end on a clip corner never settles", -6, 20, 19, -2, {-18, -18, 19, -2}, {}, {}, Site::lineUnsettled},
};

// Every case with every raster operation: rop & 15 through the table, copy
// stored directly; failures draw and mark nothing.
TEST(DrawLine, PathsRasterOperationsAndReports) {
    test::Library lib;
    const uint32_t background = 0x5a0ff0, pen = 0x33cc55;
    for (const LineCase &c : kLines)
        for (int32_t r : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 28, -4}) {
            SCOPED_TRACE(testing::Message() << c.name << ", rop " << r);
            kit::LogCapture log;
            kit::Frame f(128, 96, background);
            lib.drawLine(f.surface(), lineOrder(c.x1, c.y1, c.x2, c.y2, r, pen), c.clip);
            EXPECT_EQ(f.pixels(), picture(128, 96, background, c.pixels, rop(r & 15, pen, background)));
            EXPECT_EQ(f.markedTiles(), c.tiles);
            const Site site = c.failure.value_or(Site::lineUnsettled);
            EXPECT_EQ(log.trail(), !c.failure ? kit::Trail{} : site == Site::lineUnsettled ? kit::trail({site}) : kit::trail({Site::imageWrite, site}));
            EXPECT_TRUE(f.guardsIntact());
        }
}

// Random sloped lines on a 64 x 64 frame: inside the clip, crossing it from
// near and far (up to anywhere in 32 bits), ending on its corners, starting
// on its edges; the pixels, the reports and the whole bounding box marked.
TEST(DrawLine, SlopedLinesMatchTheStepperAndTheClipperReference) {
    test::Library lib;
    kit::LogCapture log;
    kit::Frame f(64, 64);
    std::mt19937_64 rng(12);
    int moved = 0, unsettled = 0;
    for (int i = 0; i < 4000 && !testing::Test::HasFailure(); ++i) {
        const int kind = i % 6;
        const auto in = [&](int32_t low) { return low + int32_t(rng() % 32); };
        const UiClipRect clip = kind == 0 ? f.all() : UiClipRect{in(0), in(0), in(32), in(32)};
        const int64_t spread = kind == 0 ? 32 : kind == 2 ? 300 : kind == 3 ? int64_t(1) << 32 : 40;
        const auto coordinate = [&] { return int32_t(32 + int64_t(rng() % uint64_t(2 * spread)) - spread); };
        int32_t s[4] = {coordinate(), coordinate(), coordinate(), coordinate()}, r[4];
        if (kind == 4) s[2] = rng() & 1 ? clip.left : clip.right, s[3] = rng() & 1 ? clip.top : clip.bottom;
        if (kind == 5 && rng() % 2) s[0] = rng() % 2 ? clip.left : clip.right;
        else if (kind == 5) s[1] = rng() % 2 ? clip.top : clip.bottom;
        const int64_t dx = int32_t(uint32_t(s[2]) - uint32_t(s[0])), dy = int32_t(uint32_t(s[3]) - uint32_t(s[1]));
        if (dx == 0 || dy == 0 || (std::abs(dx) <= 1 && std::abs(dy) <= 1)) continue;
        SCOPED_TRACE(testing::Message() << s[0] << "," << s[1] << " -> " << s[2] << "," << s[3] << " clip " << clip.left << "," << clip.top << "," << clip.right << "," << clip.bottom);
        std::copy_n(s, 4, r);
        const int result = referenceClip(r, clip);
        const bool endKept = r[2] == s[2] && r[3] == s[3];
        const Points want = result == 1 ? stepper(r[0], r[1], r[2], r[3], endKept) : Points{};
        std::vector<int> tiles;
        for (int ty = std::min(r[1], r[3]) / 32; !want.empty() && ty <= std::max(r[1], r[3]) / 32; ++ty)
            for (int tx = std::min(r[0], r[2]) / 32; tx <= std::max(r[0], r[2]) / 32; ++tx) tiles.push_back(ty * 2 + tx);
        f.fill(0), f.clearTiles(), log.clear();
        lib.drawLine(f.surface(), lineOrder(s[0], s[1], s[2], s[3]), clip);
        ASSERT_EQ(f.pixels(), picture(64, 64, 0, want, 0x123456));
        ASSERT_EQ(log.trail(), result == 2 ? kit::trail({Site::lineUnsettled}) : kit::Trail{});
        ASSERT_EQ(f.markedTiles(), tiles);
        moved += result == 1 && !endKept, unsettled += result == 2;
    }
    EXPECT_GT(moved, 300);    // the sample exercises clipping
    EXPECT_GT(unsettled, 0);  // and the five-pass limit
    EXPECT_TRUE(f.guardsIntact());
}

// The clipper alone against the reference, where drawing cannot go: clips
// anywhere (some inverted) and ends near and beyond 2^24, where the exact
// first pass hands over to the doubles.
TEST(ClipLine, MatchesTheReferenceEverywhere) {
    std::mt19937_64 rng(5);
    const int64_t spreads[] = {40, 3000, int64_t(1) << 20, (int64_t(1) << 24) + 5};
    const ui::ClipResult results[] = {ui::ClipResult::rejected, ui::ClipResult::accepted, ui::ClipResult::unsettled};
    for (int i = 0; i < 20000; ++i) {
        const int64_t spread = spreads[i % 4];
        const auto c = [&] { return int32_t(int64_t(rng() % uint64_t(2 * spread)) - spread); };
        UiClipRect clip{c(), c(), c(), c()};
        if (i % 5 != 0 && clip.left > clip.right) std::swap(clip.left, clip.right);
        if (i % 5 != 0 && clip.top > clip.bottom) std::swap(clip.top, clip.bottom);
        int32_t s[4] = {c(), c(), c(), c()}, r[4];
        if (s[0] == s[2] || s[1] == s[3]) continue;
        std::copy_n(s, 4, r);
        const ui::ClipResult want = results[referenceClip(r, clip)];
        ui::LineSegment got{s[0], s[1], s[2], s[3]};
        ASSERT_EQ(ui::clipLine(got, clip), want) << s[0] << "," << s[1] << " -> " << s[2] << "," << s[3];
        if (want == ui::ClipResult::accepted)
            ASSERT_EQ((std::array{got.x1, got.y1, got.x2, got.y2}), (std::array{r[0], r[1], r[2], r[3]}));
    }
}

// Extreme coordinates, wrapped differences, inverted or enormous clips and a
// wrapping origin: nothing written outside the image, no report but the line's.
TEST(DrawLine, HostileCoordinatesStayInsideTheImage) {
    test::Library lib;
    kit::LogCapture log;
    kit::Frame f(64, 64);
    const int32_t values[] = {INT32_MIN, INT32_MIN + 1, -33, -1, 0, 31, 63, 64, INT32_MAX};
    const UiClipRect clips[] = {{0, 0, 63, 63}, kAll, {40, 40, 10, 10}, {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN}, {INT32_MIN, 0, 63, INT32_MAX}};
    f.surface().originX = INT32_MIN, f.surface().originY = INT32_MAX;
    for (int enabled : {0, 1})
        for (const UiClipRect &clip : clips)
            for (int32_t x1 : values)
                for (int32_t y1 : values)
                    for (int32_t x2 : values)
                        for (int32_t y2 : values) f.surface().originEnabled = uint8_t(enabled), lib.drawLine(f.surface(), lineOrder(x1, y1, x2, y2, 6), clip);
    const kit::Trail known = kit::trail({Site::imageWrite, Site::linePixel, Site::lineVertical, Site::lineHorizontal, Site::lineClippedPixel, Site::lineSloped, Site::lineUnsettled});
    for (const std::string &e : log.trail()) ASSERT_NE(std::find(known.begin(), known.end(), e), known.end()) << e;
    EXPECT_TRUE(f.guardsIntact());
}

// Exact conversions between SoftDouble and the host's binary64.
ui::SoftDouble soft(double v) {
    int e = 0;
    return v == 0 ? ui::SoftDouble{0, 0, std::signbit(v)} : ui::SoftDouble{uint64_t(std::ldexp(std::frexp(std::fabs(v), &e), 53)), e - 53, v < 0};
}
uint64_t bitsOf(const ui::SoftDouble &s) {
    if (s.mantissa == 0) return uint64_t(s.negative) << 63;
    EXPECT_EQ(s.mantissa >> 52, 1u) << "not normalised";
    return uint64_t(s.negative) << 63 | uint64_t(s.exponent + 52 + 1023) << 52 | (s.mantissa & ((uint64_t(1) << 52) - 1));
}
REFERENCE double quotient(int32_t a, int32_t b) { return double(a) / double(b); }
REFERENCE double difference(double a, double b) { return a - b; }
REFERENCE double product(double a, double b) { return a * b; }

// Quotients of integers, differences and fused multiply-adds of random
// operands, bit for bit; operands chosen for cancellation, rounding ties and
// far-apart magnitudes.
TEST(SoftDouble, MatchesTheHostBitForBit) {
    std::mt19937_64 rng(3);
    const auto real = [&](int low, int high) {  // 53 significant bits, exponent in [low, high]
        return std::ldexp(double(rng() >> 11 | uint64_t(1) << 52), low - 52 + int(rng() % uint64_t(high - low + 1))) * (rng() & 1 ? -1 : 1);
    };
    const auto tie = [&](int bits) { return std::ldexp(double(rng() >> (64 - bits) | uint64_t(1) << (bits - 1)), int(rng() % 40) - 20 - bits); };
    const auto integer = [&]() -> int32_t {
        const uint32_t r = uint32_t(rng());
        return rng() % 3 == 0 ? int32_t(r) : rng() % 2 ? int32_t(r % 2001) - 1000 : int32_t(r >> (r % 32)) * (rng() & 1 ? -1 : 1);
    };
    const auto next = [](double v, int by) { return std::bit_cast<double>(std::bit_cast<uint64_t>(v) + uint64_t(int64_t(by))); };
    for (int i = 0; i < 30000; ++i) {
        const int32_t n = integer(), d = i % 7 == 0 ? INT32_MIN : integer() | 1;
        ASSERT_EQ(bitsOf(ui::quotient(n, d)), std::bit_cast<uint64_t>(quotient(n, d))) << n << " / " << d;
        ASSERT_EQ(bitsOf(ui::SoftDouble::fromInt(i % 11 ? n : 0)), std::bit_cast<uint64_t>(double(i % 11 ? n : 0))) << n;
        const double a = real(-30, 30), b = i % 3 == 0 ? next(a, int(rng() % 9) - 4) : i % 3 == 1 ? real(-60, 60) : double(integer());
        ASSERT_EQ(bitsOf(ui::difference(soft(a), soft(b))), std::bit_cast<uint64_t>(difference(a, b))) << a << " - " << b;
        double x = real(-40, 40), y = real(-40, 40), z = real(-100, 100);
        if (i % 5 == 1) z = -product(x, y);                                  // the result: the product's rounding error
        if (i % 5 == 2) z = next(-product(x, y), int(rng() % 5) - 2);        // a little off it
        if (i % 5 == 3) x = tie(27), y = tie(28), z = rng() % 3 ? real(-300, -150) : 0;  // products on a tie
        if (i % 5 == 4) x = real(-40, 0), y = real(-40, 0), z = real(30, 60);            // only sticky bits count
        ASSERT_EQ(bitsOf(ui::fusedMultiplyAdd(soft(x), soft(y), soft(z))), std::bit_cast<uint64_t>(std::fma(x, y, z))) << x << " " << y << " " << z;
    }
}

}  // namespace
