// Run-length planar rows wider than the decoder gathers at once (it stores a
// row in pieces of up to about a thousand pixels): every kind of segment on
// both sides of the piece boundaries, rows ending in short input, and a
// segment overrunning a wide row after pieces were already stored.  The
// expected pixels come from a per-pixel model of the format.
#include <gtest/gtest.h>

#include "bitmap_streams.h"
#include "library.h"

using namespace ui32test;

namespace {

using Pixels = std::vector<uint32_t>;

// A segment: raw bytes, then a run.  Runs of 16 to 47 pixels carry no raw
// bytes (control low nibble 1 or 2); runs of 3 to 15 may follow raw bytes.
struct Segment {
    std::vector<uint8_t> raw;
    int32_t run;
};

uint8_t controlOf(const Segment &s) {
    if (s.run >= 32) return uint8_t(((s.run - 32) << 4) | 2);
    if (s.run >= 16) return uint8_t(((s.run - 16) << 4) | 1);
    return uint8_t((s.raw.size() << 4) | size_t(s.run));
}

enum class Mix { raw, longRuns, mixed };

class Lcg {
public:
    explicit Lcg(uint32_t seed) : state_(seed) {}
    uint32_t below(uint32_t n) {
        state_ = state_ * 1664525u + 1013904223u;
        return (state_ >> 8) % n;
    }

private:
    uint32_t state_;
};

// Segments covering exactly `width` pixels.
std::vector<Segment> rowSegments(int32_t width, Mix mix, Lcg &random) {
    std::vector<Segment> out;
    for (int32_t left = width; left > 0;) {
        Segment s;
        const bool longRun = mix == Mix::longRuns || (mix == Mix::mixed && random.below(3) == 0);
        if (longRun && left >= 16) {
            s.run = 16 + int32_t(random.below(uint32_t(std::min(left, 47) - 15)));
        } else {
            const int32_t raw = std::min<int32_t>(left, mix == Mix::raw ? 15 : 1 + int32_t(random.below(15)));
            for (int32_t i = 0; i < raw; ++i) s.raw.push_back(uint8_t(random.below(256)));
            const int32_t room = std::min(left - raw, 15);
            s.run = mix == Mix::raw || room < 3 ? 0 : 3 + int32_t(random.below(uint32_t(room - 2)));
        }
        left -= int32_t(s.raw.size()) + s.run;
        out.push_back(std::move(s));
    }
    return out;
}

// The format, pixel by pixel: the first row holds values, later rows deltas
// (v >> 1, complemented when v is odd) added to the sample above; a run
// repeats the row's last raw byte, or 0 before the first.
std::vector<uint8_t> modelPlane(const std::vector<std::vector<Segment>> &rows, int32_t width) {
    std::vector<uint8_t> plane;
    for (size_t r = 0; r < rows.size(); ++r) {
        uint8_t last = 0;
        for (const Segment &s : rows[r]) {
            std::vector<uint8_t> codes(s.raw);
            if (!s.raw.empty()) last = s.raw.back();
            codes.insert(codes.end(), size_t(s.run), last);
            for (uint8_t v : codes) {
                if (r == 0) {
                    plane.push_back(v);
                    continue;
                }
                const uint8_t h = uint8_t(v >> 1), delta = (v & 1) ? uint8_t(~h) : h;
                plane.push_back(uint8_t(plane[plane.size() - size_t(width)] + delta));
            }
        }
    }
    return plane;
}

void append(Bytes &stream, const std::vector<std::vector<Segment>> &rows) {
    for (const auto &row : rows)
        for (const Segment &s : row) {
            stream({controlOf(s)});
            for (uint8_t b : s.raw) stream({b});
        }
}

struct WideCase {
    const char *name;
    int32_t width, height;
    Mix mix;
};

TEST(PlanarWideRows, EverySegmentKindAcrossThePieceBoundaries) {
    const WideCase cases[] = {
        {"959 raw", 959, 2, Mix::raw},          {"960 long runs", 960, 2, Mix::longRuns},
        {"961 mixed", 961, 3, Mix::mixed},      {"1023 raw", 1023, 2, Mix::raw},
        {"1024 mixed", 1024, 2, Mix::mixed},    {"1025 long runs", 1025, 2, Mix::longRuns},
        {"2047 mixed", 2047, 3, Mix::mixed},    {"3001 raw", 3001, 2, Mix::raw},
        {"5000 mixed, one row", 5000, 1, Mix::mixed},
    };
    Library lib(4);
    for (const WideCase &c : cases) {
        SCOPED_TRACE(c.name);
        Lcg random(uint32_t(c.width * 7 + c.height));
        Bytes stream{0x30};  // run-length planes, no alpha
        std::vector<uint8_t> planes[3];
        for (std::vector<uint8_t> &plane : planes) {
            std::vector<std::vector<Segment>> rows;
            for (int32_t r = 0; r < c.height; ++r) rows.push_back(rowSegments(c.width, c.mix, random));
            append(stream, rows);
            plane = modelPlane(rows, c.width);
        }
        Pixels expected;
        for (size_t i = 0; i < planes[0].size(); ++i)
            expected.push_back(uint32_t(planes[0][i]) << 16 | uint32_t(planes[1][i]) << 8 | planes[2][i]);

        LogCapture log;
        const Decoded d = decodeGuarded(c.width, c.height, stream);
        EXPECT_EQ(d.result, 1);
        EXPECT_EQ(d.pixels, expected);
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(d.guardsIntact);
    }
}

// A red first row of 2000 pixels whose segments cover 1990, then one of 15
// raw bytes: the overrun is reported after the 1990 pixels (two pieces) are
// stored, and nothing after them is written.
TEST(PlanarWideRows, OverrunAfterStoredPiecesKeepsThem) {
    Library lib(4);
    Lcg random(5);
    const std::vector<Segment> row = rowSegments(1990, Mix::mixed, random);
    Bytes stream{0x30};
    append(stream, {row});
    stream({0xF0});
    for (int i = 0; i < 15; ++i) stream({uint8_t(i)});
    const std::vector<uint8_t> red = modelPlane({row}, 1990);
    Pixels expected(2000, kUnwritten);
    for (size_t i = 0; i < red.size(); ++i) expected[i] = uint32_t(red[i]) << 16;

    LogCapture log;
    const Decoded d = decodeGuarded(2000, 1, stream);
    EXPECT_EQ(d.result, 0);
    EXPECT_EQ(d.pixels, expected);
    EXPECT_EQ(trail(log), (std::vector<std::string>{"ui 812", "ui 944"}));
    EXPECT_TRUE(d.guardsIntact);
}

}  // namespace
