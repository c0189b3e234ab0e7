// The direct primitives in buffer coordinates (slots 11-14, 16 and 23): no
// origin, no clip rectangle; the image checks are the only bounds.
#include <gtest/gtest.h>

#include <climits>

#include "bytes.h"
#include "frame.h"
#include "library.h"

namespace {

using kit::Trail;
using S = ui::Site;

constexpr uint32_t kInk = 0xfedcba, kPaper = 0x010203;

// Source pixel i: bytes i + 1, 0x80 + i, 0x40 + i, 0xc0 + i (the fourth is ignored).
kit::Bytes sourcePixels(int count) {
    kit::Bytes b;
    for (int i = 0; i < count; ++i) b({uint8_t(i + 1), uint8_t(0x80 + i), uint8_t(0x40 + i), uint8_t(0xc0 + i)});
    return b;
}
uint32_t converted(const uint8_t *b, bool lowFirst) {
    return lowFirst ? uint32_t(b[2] << 16 | b[1] << 8 | b[0]) : uint32_t(b[0] << 16 | b[1] << 8 | b[2]);
}

// One primitive over the rectangle r of a 96 x 64 frame: 'f' fillBufferRect,
// 'h' hLine (length r.width), 'v' vLine (length r.height), 'c' drawChar8x16
// at (r.left, r.top), 'p' putPixels.  Drawn when nothing but the tile map is
// reported.  Apart from fillBufferRect's own edge checks, a refusal is the
// image check's (every edge and overflow in test_surface): right and bottom here.
struct Call {
    char kind;
    UiRect r;
    Trail trail;
    std::vector<int> tiles;  // of the 3 x 2 map
};
Trail tileText(const char *text) { return {kit::entry(S::tileRange, text)}; }

const Call kCalls[] = {
    {'f', {0, 0, 96, 64}, {}, {0, 1, 2, 3, 4, 5}},  {'f', {95, 63, 1, 1}, {}, {5}},
    {'f', {-1, 0, 200, 5}, kit::trail({S::bufferLeft})},  // left, then right, then top, then bottom
    {'f', {0, 0, 97, 64}, kit::trail({S::bufferRight})},   {'f', {90, -1, 10, 5}, kit::trail({S::bufferRight})},
    {'f', {0, -1, 5, 100}, kit::trail({S::bufferTop})},    {'f', {0, 0, 96, 65}, kit::trail({S::bufferBottom})},
    {'f', {10, 0, INT32_MAX, 5}, kit::trail({S::bufferRight})},  {'f', {0, 10, 5, INT32_MAX}, kit::trail({S::bufferBottom})},
    {'f', {10, 0, -5, 5}, kit::trail({S::imageWrite, S::fillSolid})},
    {'f', {0, 10, 5, INT32_MIN}, kit::trail({S::imageWrite, S::fillSolid})},
    {'f', {0, 32, 5, 0}, tileText("0,1->1,1 of 3,2")},  {'f', {0, 33, 5, 0}, {}, {3}},  // empty on / inside a tile
    {'f', {96, 0, 0, 5}, tileText("3,0->3,1 of 3,2")},
    {'h', {5, 5, 1, 1}, {}, {0}},  {'h', {30, 32, 4, 1}, {}, {3, 4}},  {'h', {0, 63, 96, 1}, {}, {3, 4, 5}},
    {'h', {5, 5, 0, 1}, kit::trail({S::hLineLength})},  {'h', {5, 5, INT32_MIN, 1}, kit::trail({S::hLineLength})},
    {'h', {93, 0, 4, 1}, kit::trail({S::imageWrite, S::hLine})},  {'h', {0, 64, 1, 1}, kit::trail({S::imageWrite, S::hLine})},
    {'v', {5, 5, 1, 1}, {}, {0}},  {'v', {64, 30, 1, 4}, {}, {2, 5}},  {'v', {95, 0, 1, 64}, {}, {2, 5}},
    {'v', {5, 5, 1, 0}, kit::trail({S::vLineLength})},  {'v', {5, 5, 1, -1}, kit::trail({S::vLineLength})},
    {'v', {0, 61, 1, 4}, kit::trail({S::imageWrite, S::vLine})},  {'v', {96, 0, 1, 1}, kit::trail({S::imageWrite, S::vLine})},
    {'c', {0, 0, 8, 16}, {}, {0}},  {'c', {88, 48, 8, 16}, {}, {5}},  {'c', {28, 20, 8, 16}, {}, {0, 1, 3, 4}},
    {'c', {89, 0, 8, 16}, kit::trail({S::imageWrite, S::charCell})},  {'c', {0, 49, 8, 16}, kit::trail({S::imageWrite, S::charCell})},
    {'p', {30, 28, 5, 7}, {}, {0, 1, 3, 4}},  {'p', {0, 0, 96, 64}, {}, {0, 1, 2, 3, 4, 5}},
    {'p', {0, 0, 97, 1}, kit::trail({S::imageWrite, S::putPixels})},  {'p', {60, 63, 4, 2}, kit::trail({S::imageWrite, S::putPixels})},
    {'p', {96, 0, 0, 5}, tileText("3,0->3,1 of 3,2")},  // drawn (nothing), so true
};

TEST(Primitives, DrawExactlyTheirRectangleOrReportAndDrawNothing) {
    test::Library lib;
    uint8_t cell[16];
    for (int r = 0; r < 16; ++r) cell[r] = uint8_t(0x81 ^ (r * 0x1d));  // every row differs; row 0 is 0x81
    for (const Call &c : kCalls)
        for (const uint8_t order : {0, 1}) {  // the byte order for putPixels; the tile map given or not
            SCOPED_TRACE(testing::Message() << c.kind << " " << c.r.left << "," << c.r.top << " " << c.r.width << "x" << c.r.height
                                            << ", order " << int(order));
            kit::Frame f(96, 64, kPaper);
            dirtybuf *map = order ? &f.dirty() : nullptr;
            const bool drawn = c.trail.empty() || c.trail[0].rfind("dirtybuf", 0) == 0;
            const kit::Bytes bytes = sourcePixels(drawn ? c.r.width * c.r.height : 0);
            const kit::GuardedInput src(bytes);  // exactly the rectangle's pixels
            lib.setSourceByteOrder(order);
            kit::LogCapture log;
            switch (c.kind) {
                case 'f': lib.fillBufferRect(&f.image(), map, c.r, kInk); break;
                case 'h': lib.hLine(&f.image(), map, c.r.left, c.r.top, c.r.width, kInk); break;
                case 'v': lib.vLine(&f.image(), map, c.r.left, c.r.top, c.r.height, kInk); break;
                case 'c': EXPECT_EQ(lib.drawChar8x16(&f.image(), map, c.r.left, c.r.top, cell, kInk), drawn); break;
                default: EXPECT_EQ(lib.putPixels(&f.image(), map, c.r, src.data()), drawn);
            }
            std::vector<uint32_t> want(96 * 64, kPaper);
            for (int32_t y = 0; drawn && y < c.r.height; ++y)
                for (int32_t x = 0; x < c.r.width; ++x) {
                    const uint32_t ink = c.kind == 'p' ? converted(&bytes[size_t(4 * (y * c.r.width + x))], order)
                                         : c.kind != 'c' || (cell[y] << x & 0x80) ? kInk : kPaper;
                    want[size_t((c.r.top + y) * 96 + c.r.left + x)] = ink;
                }
            EXPECT_EQ(f.pixels(), want);
            EXPECT_EQ(log.trail(), map || c.trail.empty() || !drawn ? c.trail : Trail{});
            EXPECT_EQ(f.markedTiles(), map ? c.tiles : std::vector<int>{});
            EXPECT_TRUE(f.guardsIntact());
        }
}

TEST(ImportImage32, TakesTheFirstWidthPixelsOfEachRowUpTo32) {
    test::Library lib;
    const struct {
        int32_t width, height, rowLength;
        int columns, rows;  // imported
    } cases[] = {{16, 2, 20, 16, 2}, {32, 1, 32, 32, 1}, {40, 2, 40, 32, 2}, {1, 3, 1, 1, 3}, {16, 0, 16, 0, 0},
                 {16, -5, 16, 0, 0}, {0, 2, 16, 0, 0},   {-3, 2, 16, 0, 0},  {16, 2, 15, 0, 0}, {16, 2, INT32_MIN, 0, 0}};
    for (const auto &c : cases)
        for (const uint8_t order : {0, 1}) {
            SCOPED_TRACE(testing::Message() << c.width << "x" << c.height << " rows of " << c.rowLength << ", order " << int(order));
            lib.setSourceByteOrder(order);
            const kit::Bytes bytes = sourcePixels(c.rows ? (c.rows - 1) * c.rowLength + c.columns : 0);
            const kit::GuardedInput src(bytes);  // ends right after the last pixel used
            std::vector<uint32_t> words(37 + 32 * 3 + 8, 0x5eed5eed);  // room for three rows, then a guard
            words[2] = uint32_t(c.width), words[3] = uint32_t(c.height);
            std::vector<uint32_t> want = words;
            lib.importImage32(*reinterpret_cast<UiImage32Record *>(words.data()), src.data(), c.rowLength);
            for (int r = 0; r < c.rows; ++r)
                for (int k = 0; k < c.columns; ++k) want[size_t(37 + 32 * r + k)] = converted(&bytes[size_t(4 * (r * c.rowLength + k))], order);
            EXPECT_EQ(words, want);
        }
}

}  // namespace
