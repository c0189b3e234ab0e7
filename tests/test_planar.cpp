// The planar decoder through decompressBitmap at 4 bytes per pixel: raw and
// run-length planes with and without alpha, delta rows, refused headers,
// plane failures, short input at every caller line and hostile streams.
#include <gtest/gtest.h>

#include <random>

#include "decode_cases.h"

using namespace ui32test;

namespace {

constexpr uint32_t K = kUnwritten;

uint32_t rgb(uint32_t r, uint32_t g, uint32_t b) { return (r << 16) | (g << 8) | b; }

void run(const std::vector<DecodeCase> &cases) { runDecodeCases(cases, 4); }

Bytes withoutLastByte(const Bytes &b) { return prefix(b, b.size() - 1); }

TEST(Planar, RawPlanesWithAndWithoutAlpha) {
    const Pixels picture = storedPicture(5, 7);  // 35 pixels: two steps of 16 and a tail
    run({
        {"no alpha, exact length", 5, 7, planarPicture(5, 7), picture},
        {"alpha, exact length", 5, 7, planarPicture(5, 7, true), picture},
        {"trailing bytes ignored", 5, 7, planarPicture(5, 7)({1, 2, 3}), picture},
        {"no alpha, one byte short", 5, 7, withoutLastByte(planarPicture(5, 7)), Pixels(35, K), {"ui 973"}, 0},
        {"alpha, one byte short", 5, 7, withoutLastByte(planarPicture(5, 7, true)), Pixels(35, K), {"ui 973"}, 0},
        {"alpha plane longer than the data", 4, 4, {0x00, 1, 2, 3, 4, 5}, Pixels(16, K), {"ui 973"}, 0},
    });
}

TEST(Planar, RefusedHeadersWriteNothing) {
    for (uint8_t header : {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x40, 0x80, 0x11, 0xCF, 0xFF}) {
        SCOPED_TRACE(int(header));
        run({{"refused", 2, 1, Bytes{header, 0x04, 0x04, 0x04, 0x20, 1, 2, 3}, {K, K}, {"ui 929"}, 0}});
    }
}

TEST(Planar, RefusedSizes) {
    const uint8_t data[4] = {0x20, 1, 2, 3};
    runArgumentCases({{"no data", 2, 2, 0, 4, {"ui 919"}},
                      {"no columns", 0, 2, 4, 4, {"ui 919"}},
                      {"no rows", 2, 0, 4, 4, {"ui 919"}},
                      {"negative width", -2, 2, 4, 4, {"ui 919"}},
                      {"both negative", -2, -2, 4, 4, {"ui 919"}},
                      {"product wraps to 0", 65536, 16384, 4, 4, {"ui 919"}},
                      {"past 2 GiB", 40000, 40000, 4, 4, {"ui 919"}},
                      {"negative length", 2, 2, -4, 4, {"ui 902"}}},
                     data);
}

TEST(Planar, RunLengthPlanes) {
    Pixels deltaRows;
    const uint32_t red[12] = {0x10, 0x20, 0x30, 0x40, 0x0E, 0x1E, 0x2E, 0x3E, 0x0E, 0x1E, 0x2E, 0x3E};
    const uint32_t blue[12] = {0x01, 0x02, 0x03, 0x04, 0x03, 0x00, 0x06, 0x01, 0x83, 0x7F, 0x06, 0x00};
    for (int i = 0; i < 12; ++i) deltaRows.push_back(rgb(red[i], 0, blue[i]));
    run({
        {"first row: raw bytes, then a run of the last one", 4, 1,
         Bytes{0x30}({0x40, 0x10, 0x20, 0x30, 0x40})({0x13, 0x55})({0x13, 0x07}),
         {rgb(0x10, 0x55, 7), rgb(0x20, 0x55, 7), rgb(0x30, 0x55, 7), rgb(0x40, 0x55, 7)}},
        {"run lengths 1 and 2 are long runs", 19, 1,
         Bytes{0x30}({0x10, 0x05, 0x11, 0x10, 0x06})({0x10, 0x44, 0x21})({0x21, 0x10, 0x09}),
         Pixels(18, rgb(5, 0x44, 0)) + Pixels{rgb(6, 0x44, 9)}},
        {"delta rows: raw deltas, run delta carried, restarted per row", 4, 3,
         Bytes{0x30}({0x40, 0x10, 0x20, 0x30, 0x40, 0x13, 0x03, 0x04})({0x04, 0x04, 0x04})(
             {0x40, 1, 2, 3, 4, 0x40, 0x04, 0x03, 0x06, 0x05, 0x40, 0xFF, 0xFE, 0x00, 0x01}),
         deltaRows},
        {"alpha plane read past, never stored", 2, 2,
         Bytes{0x10}({0x20, 0xAA, 0xBB, 0x20, 0xCC, 0xDD})({0x20, 1, 2, 0x20, 2, 4})({0x20, 3, 4, 0x20, 0, 0})(
             {0x20, 5, 6, 0x20, 0, 1}),
         {rgb(1, 3, 5), rgb(2, 4, 6), rgb(2, 3, 5), rgb(4, 4, 5)}},
    });
}

TEST(Planar, PlaneFailuresAndShortInput) {
    run({
        {"alpha segment past its row", 4, 1, {0x10, 0x05}, Pixels(4, K), {"ui 764", "ui 939"}, 0},
        {"short alpha skip is dropped", 4, 1, {0x10, 0x40, 0x01, 0x02}, Pixels(4, K),
         {"streamInOps 283", "ui 812", "ui 944"}, 0},
        {"red segment past the first row", 4, 1, {0x30, 0x05}, Pixels(4, K), {"ui 812", "ui 944"}, 0},
        {"green segment past a delta row", 2, 2, {0x30, 0x20, 1, 2, 0x20, 0, 0, 0x20, 5, 6, 0x03},
         {rgb(1, 5, 0), rgb(2, 6, 0), rgb(1, 0, 0), rgb(2, 0, 0)}, {"ui 865", "ui 948"}, 0},
        {"blue segment past the first row", 4, 1, {0x30, 0x04, 0x04, 0x11}, Pixels(4, 0), {"ui 812", "ui 952"}, 0},
        {"alpha control byte missing", 1, 1, {0x10}, {K}, {shortRead(746), "ui 939"}, 0},
        {"first-row control byte missing", 1, 1, {0x30}, {K}, {shortRead(794), "ui 944"}, 0},
        {"first-row raw bytes missing count as 0", 3, 1, {0x30, 0x30, 0x01}, {rgb(1, 0, 0), 0, 0},
         {shortRead(818), shortRead(818), shortRead(794), "ui 948"}, 0},
        {"delta-row control byte missing", 1, 2, {0x30, 0x10, 0x05}, {rgb(5, 0, 0), K}, {shortRead(847), "ui 944"},
         0},
        {"delta byte missing counts as delta 0", 1, 2, {0x30, 0x10, 0x05, 0x10}, {rgb(5, 0, 0), rgb(5, 0, 0)},
         {shortRead(871), shortRead(794), "ui 948"}, 0},
        {"last blue raw byte missing: the plane still completes", 1, 1, {0x30, 0x10, 0x05, 0x10, 0x06, 0x10},
         {rgb(5, 6, 0)}, {shortRead(818)}, 1},
    });
}

// A valid stream cut at every length: nothing read or written out of bounds,
// and a plane that runs out of control bytes fails.
TEST(PlanarHostile, TruncatedAtEveryByte) {
    Library lib(4);
    Bytes rle{0x10};
    for (int plane = 0; plane < 4; ++plane)
        for (int row = 0; row < 3; ++row) rle({0x23, uint8_t(plane), uint8_t(row), 0x10, 0x05});
    for (const Bytes &whole : {rle, planarPicture(6, 3, true)}) {
        LogCapture full;
        EXPECT_EQ(decodeGuarded(6, 3, whole).result, 1);
        EXPECT_TRUE(full.reports().empty());
        for (int32_t cut = 0; cut < whole.size(); ++cut) {
            SCOPED_TRACE(cut);
            LogCapture log;
            const Decoded d = decodeGuarded(6, 3, prefix(whole, cut));
            EXPECT_TRUE(d.guardsIntact);
            ASSERT_FALSE(log.reports().empty());
            if (d.result == 1) EXPECT_EQ(log.sites()[0], "streamInOps 64");
        }
    }
}

TEST(PlanarHostile, RandomStreams) {
    Library lib(4);
    std::mt19937 random(7);
    for (int i = 0; i < 3000; ++i) {
        const int32_t width = int32_t(random() % 9) + 1, height = int32_t(random() % 5) + 1;
        Bytes stream{uint8_t((random() % 4) << 4)};
        const size_t length = random() % 64;
        for (size_t k = 0; k < length; ++k) stream({uint8_t(random())});
        LogCapture log;
        const Decoded d = decodeGuarded(width, height, stream);
        ASSERT_TRUE(d.guardsIntact) << i;
        ASSERT_TRUE(d.result == 0 || d.result == 1) << i;
    }
}

}  // namespace
