// The interleaved run-length decoder through decompressBitmap at 3 bytes per
// pixel: every order kind, the first-row and insertion rules, short input at
// every caller line, unknown headers, overruns and hostile streams.
#include <gtest/gtest.h>

#include <random>

#include "decode_cases.h"
#include "ui.h"

using namespace ui32test;

namespace {

constexpr uint32_t W = 0xFFFFFF, A = 0x112233, B = 0x445566, C = 0x778899, D = 0xAABBCC, K = kUnwritten;

void run(const std::vector<DecodeCase> &cases, int32_t bytesPerPixel = 3) { runDecodeCases(cases, bytesPerPixel); }

TEST(Interleaved, EveryOrderKind) {
    run({
        {"white", 1, 1, {0xFD}, {W}},
        {"black", 1, 1, {0xFE}, {0}},
        {"regular bg run, ext byte", 8, 5, {0x00, 0x00}, Pixels(32, 0) + Pixels(8, K)},
        {"fg run starts white", 2, 1, {0x21}, {W, K}},
        {"regular fg run, ext byte", 34, 1, {0x20, 0x01}, Pixels(33, W) + Pixels{K}},
        {"fgbg image bit 0 first, then a lower row", 8, 2, {0x41, 0xA5, 0x41, 0x0F},
         {W, 0, W, 0, 0, W, 0, W, 0, W, 0, W, 0, W, 0, W}},
        {"fgbg image of 1 pixel still takes a mask byte", 3, 1, {0x40, 0x00, 0x01, 0xFD}, {W, W, K}},
        {"fgbg image of 10 pixels takes two mask bytes", 12, 1, {0x40, 0x09, 0xFF, 0x02, 0xFE},
         Pixels(8, W) + Pixels{0, W, 0, K}},
        {"colour run", 4, 1, Bytes{0x63}.colour(A), {A, A, A, K}},
        {"colour run, ext byte", 33, 1, Bytes{0x60, 0x00}.colour(A), Pixels(32, A) + Pixels{K}},
        {"colour image", 3, 1, Bytes{0x82}.colour(A).colour(B), {A, B, K}},
        {"colour image, ext byte", 33, 1, Bytes{0x80, 0x00}.pixels(Pixels(32, C)), Pixels(32, C) + Pixels{K}},
        {"lite set fg run, fg persists", 3, 1, Bytes{0xC1}.colour(A)({0x21}), {A, A, K}},
        {"lite set fg run, ext byte", 18, 1, Bytes{0xC0, 0x01}.colour(B), Pixels(17, B) + Pixels{K}},
        {"lite set fg fgbg image", 8, 1, Bytes{0xD1}.colour(A)({0x81}), {A, 0, 0, 0, 0, 0, 0, A}},
        {"lite set fg fgbg image, ext byte", 4, 1, Bytes{0xD0, 0x02}.colour(A)({0x05}), {A, 0, A, K}},
        {"lite dithered run of 3 pairs", 8, 1, Bytes{0xE3}.colour(A).colour(B), {A, B, A, B, A, B, K, K}},
        {"lite dithered run, ext byte", 34, 1, Bytes{0xE0, 0x00}.colour(A).colour(B),
         [] { Pixels p; for (int i = 0; i < 16; ++i) p.insert(p.end(), {A, B}); return p + Pixels{K, K}; }()},
        {"mega bg run", 4, 1, Bytes{0xF0}.u16(3), {0, 0, 0, K}},
        {"mega fg run", 3, 1, Bytes{0xF1}.u16(2), {W, W, K}},
        {"mega fgbg image", 4, 1, Bytes{0xF2}.u16(3)({0x05}), {W, 0, W, K}},
        {"mega colour run", 3, 1, Bytes{0xF3}.u16(2).colour(A), {A, A, K}},
        {"mega colour image", 3, 1, Bytes{0xF4}.u16(2).colour(A).colour(B), {A, B, K}},
        {"mega set fg run", 3, 1, Bytes{0xF6}.u16(1).colour(A)({0x21}), {A, A, K}},
        {"mega set fgbg image", 3, 1, Bytes{0xF7}.u16(2).colour(A)({0x02}), {0, A, K}},
        {"mega dithered run", 5, 1, Bytes{0xF8}.u16(2).colour(A).colour(B), {A, B, A, B, K}},
        {"special fgbg 1 and 2, first row", 16, 1, {0xF9, 0xFA}, {W, W, 0, 0, 0, 0, 0, 0, W, 0, W, 0, 0, 0, 0, 0}},
        {"special fgbg 1 and 2, lower rows", 8, 3, Bytes{0x68}.colour(A)({0xF9, 0xFA}),
         Pixels(8, A) + Pixels{A ^ W, A ^ W, A, A, A, A, A, A} + Pixels{A, A ^ W, A ^ W, A, A, A, A, A}},
    });
}

TEST(Interleaved, PixelsAboveAndTheFirstRowRule) {
    run({
        {"lower-row fg run: above xor fg", 2, 2, Bytes{0x62}.colour(B)({0xC2}).colour(A), {B, B, B ^ A, B ^ A}},
        {"bg run longer than a row repeats the rows", 2, 4, Bytes{0xE1}.colour(A).colour(B)({0x06}),
         {A, B, A, B, A, B, A, B}},
        {"fg run longer than a row xors its own pixels", 2, 3, Bytes{0xE1}.colour(A).colour(B)({0x24}),
         {A, B, A ^ W, B ^ W, A, B}},
        {"fgbg image over rows narrower than 8", 2, 5, Bytes{0xE1}.colour(A).colour(B)({0xF2}).u16(8)({0xFF}),
         {A, B, A ^ W, B ^ W, A, B, A ^ W, B ^ W, A, B}},
        {"fg run from the last first-row pixel keeps fgPel", 4, 2, Bytes{0x63}.colour(A)({0xC2}).colour(B),
         {A, A, A, B, B, K, K, K}},
        {"bg run from the last first-row pixel stays black", 4, 2, Bytes{0x63}.colour(A)({0x03}),
         {A, A, A, 0, 0, 0, K, K}},
        {"fgbg image from the last first-row pixel", 4, 2, Bytes{0x63}.colour(A)({0x40, 0x02, 0x06}),
         {A, A, A, 0, W, W, K, K}},
    });
}

TEST(Interleaved, ForegroundInsertionBetweenBackgroundRuns) {
    run({
        {"second bg run in the first row starts with fgPel", 4, 1, {0x01, 0x02}, {0, W, 0, K}},
        {"inserted pixel takes the current fgPel", 4, 1, Bytes{0xC1}.colour(A)({0x01, 0x02}), {A, 0, A, 0}},
        {"another order in between: no insertion", 4, 1, Bytes{0x01, 0x61}.colour(A)({0x01}), {0, A, 0, K}},
        {"first bg run below the first row inserts nothing, the next does", 4, 2, {0x04, 0x02, 0x02},
         {0, 0, 0, 0, 0, 0, W, 0}},
        {"below the first row the inserted pixel is above xor fgPel", 2, 2, Bytes{0x62}.colour(A)({0x01, 0x01}),
         {A, A, A, A ^ W}},
        {"a mega bg run of 0 still writes the inserted pixel", 4, 1, Bytes{0x01, 0xF0}.u16(0)({0xFE}), {0, W, 0, K}},
        {"a mega bg run of 0 without insertion writes nothing", 4, 1, Bytes{0xF0}.u16(0)({0xFD}), {W, K, K, K}},
    });
}

TEST(Interleaved, ShortInputAtEveryCallerLine) {
    run({
        {"regular ext byte: run 32", 33, 1, {0x00}, Pixels(32, 0) + Pixels{K}, {shortRead(358)}},
        {"regular fgbg ext byte: run 1", 2, 1, {0x40}, {0, K}, {shortRead(372), shortRead(575)}},
        {"lite ext byte: run 16", 17, 1, {0xC0}, Pixels(16, 0) + Pixels{K},
         {shortRead(382), shortRead(409), shortRead(410), shortRead(411)}},
        {"lite fgbg ext byte: run 1", 2, 1, {0xD0}, {0, K},
         {shortRead(396), shortRead(409), shortRead(410), shortRead(411), shortRead(575)}},
        {"mega run: run 0", 2, 1, {0xF1}, {K, K}, {shortRead(401, 65)}},
        {"mega run with one byte left: the byte is the next header", 4, 1, {0xF1, 0x02}, {0, 0, K, K},
         {shortRead(401, 65)}},
        {"colour missing its last two bytes", 2, 1, {0x62, 0x33}, {0x33, 0x33}, {shortRead(410), shortRead(411)}},
        {"colour missing its last byte", 1, 1, {0x61, 0x33, 0x22}, {0x2233}, {shortRead(411)}},
        {"full mask byte, first row", 16, 1, {0x42, 0xFF}, Pixels(8, W) + Pixels(8, 0), {shortRead(555)}},
        {"full mask byte, lower rows", 8, 2, Bytes{0x68}.colour(A)({0x41}), Pixels(16, A), {shortRead(589)}},
        {"partial mask byte, lower rows", 4, 2, Bytes{0x64}.colour(A)({0x40, 0x02}), {A, A, A, A, A, A, A, K},
         {shortRead(611)}},
        {"colour image block short: nothing moves", 4, 1, {0x82, 0xFD, 0xFE}, {W, 0, K, K},
         {"streamInOps 275", "ui 534"}},
        {"mega colour image block short", 4, 1, Bytes{0xF4}.u16(2)({0xFD, 0xFE}), {W, 0, K, K},
         {"streamInOps 275", "ui 534"}},
        {"input ends before the output is full", 4, 1, Bytes{0x61}.colour(A), {A, K, K, K}},
    });
}

TEST(Interleaved, UnknownHeadersStopTheDecode) {
    for (uint8_t header : {0xA0, 0xA5, 0xBF, 0xF5, 0xFB, 0xFC, 0xFF}) {
        char text[64];
        std::snprintf(text, sizeof text, "ui 1108: Unknown header 0x%02x. Sync lost?", header);
        run({{"unknown", 3, 1, Bytes{0xFD, header, 0xFD}, {W, K, K}, {text}, 0}});
    }
}

TEST(Interleaved, OverrunsAreCutAndReported) {
    run({
        {"dithered run past the end", 3, 1, Bytes{0xE2}.colour(A).colour(B), {A, B, A}, {"ui 341: 16 > 12!"}},
        {"colour image past the end takes its whole block", 2, 1,
         Bytes{0x84}.colour(A).colour(B).colour(C).colour(D)({0xFD}), {A, B}, {"ui 341: 16 > 8!"}},
        {"huge bg run", 4, 1, Bytes{0xF0}.u16(0xFFFF), Pixels(4, 0), {"ui 341: 262140 > 16!"}},
        {"huge dithered run", 3, 1, Bytes{0xF8}.u16(0xFFFF).colour(A).colour(B), {A, B, A},
         {"ui 341: 524280 > 12!"}},
        {"special fgbg past the end", 2, 2, {0xFE, 0xFE, 0xFE, 0xF9}, {0, 0, 0, W}, {"ui 341: 44 > 16!"}},
        {"colour run past the end", 2, 1, Bytes{0x63}.colour(A), {A, A}, {"ui 341: 12 > 8!"}},
        {"lower-row fg run past the end", 2, 2, Bytes{0x62}.colour(A)({0x25}), {A, A, A ^ W, A ^ W},
         {"ui 341: 28 > 16!"}},
        {"lower-row bg run past the end", 2, 2, Bytes{0x62}.colour(A)({0x05}), {A, A, A, A}, {"ui 341: 28 > 16!"}},
        {"fgbg image past the end", 3, 1, {0x42, 0xFF, 0xFF, 0xFD}, {W, W, W}, {"ui 341: 64 > 12!"}},
        {"bg run exactly to the end is no overrun", 2, 2, {0x04}, {0, 0, 0, 0}},
    });
}

TEST(Interleaved, HugeFgbgImagePastTheEndStillReadsItsMaskBytes) {
    Library lib;
    LogCapture log;
    const Decoded d = decodeGuarded(4, 1, Bytes{0xF2}.u16(0xFFFF)({0x0F}));
    EXPECT_EQ(d.result, 1);
    EXPECT_EQ(d.pixels, Pixels(4, W));
    ASSERT_EQ(log.reports().size(), 8192u);  // 8190 full bytes and 1 partial missing, then the overrun
    EXPECT_EQ(trail(log)[0], shortRead(555));
    EXPECT_EQ(trail(log)[8190], shortRead(575));
    EXPECT_EQ(trail(log)[8191], "ui 341: 262140 > 16!");
    EXPECT_TRUE(d.guardsIntact);
}

TEST(Interleaved, RefusedArgumentsLeaveTheOutputAlone) {
    const uint8_t data[1] = {0xFD};
    runArgumentCases({{"negative data length", 2, 2, -1, 3, {"ui 902"}},
                      {"negative width", -2, 2, 1, 3, {"ui 902"}},
                      {"both negative", -2, -2, 1, 3, {"ui 902"}},
                      {"size past 2 GiB", 65536, 65536, 1, 3, {"ui 902"}},
                      {"product wraps to 0 in 32 bits", 65536, 16384, 1, 3, {"ui 902"}},
                      {"depth 2", 2, 2, 1, 2, {"ui 902"}},
                      {"depth 0", 2, 2, 1, 0, {"ui 902"}},
                      {"no pixels", 0, 5, 1, 3, {}, 1}},
                     data);
}

TEST(Interleaved, DeeperSourcePixelsUseTheirFirstThreeBytes) {
    run({{"colour image at 5 bytes per pixel", 3, 1, Bytes{0x82}.pixels({A, B}, 5)({0xFE}), {A, B, 0}}}, 5);
}

// Every order kind in one stream, cut at every length: no read past the
// input, no write past the output, only shortage reports.
TEST(InterleavedHostile, TruncatedAtEveryByte) {
    Library lib;
    Bytes all = Bytes{0x00, 0x05, 0x41, 0x5A, 0x63}.colour(A)({0x82}).colour(B).colour(C);
    all({0xC3}).colour(D)({0xD1}).colour(A)({0x3C, 0xE2}).colour(B).colour(C)({0xF0}).u16(40)({0xF1}).u16(9);
    all({0xF2}).u16(12)({0x55, 0x0A, 0xF3}).u16(5).colour(D)({0xF4}).u16(2).colour(A).colour(B);
    all({0xF6}).u16(3).colour(C)({0xF7}).u16(9).colour(W)({0xFF, 0x01, 0xF8}).u16(4).colour(A).colour(B);
    all({0xF9, 0xFA, 0xFD, 0xFE, 0x20, 0x10, 0x82}).colour(A).colour(B);
    const std::vector<std::string> allowed = {"streamInOps 64", "streamInOps 65", "streamInOps 275", "ui 534",
                                              "ui 341"};
    {
        LogCapture log;
        const Decoded whole = decodeGuarded(16, 16, all);
        EXPECT_EQ(whole.result, 1);
        EXPECT_TRUE(log.reports().empty());
    }
    for (int32_t cut = 0; cut < all.size(); ++cut) {
        SCOPED_TRACE(cut);
        LogCapture log;
        const Decoded d = decodeGuarded(16, 16, prefix(all, cut));
        EXPECT_EQ(d.result, 1);
        EXPECT_TRUE(d.guardsIntact);
        for (const std::string &site : log.sites())
            EXPECT_NE(std::find(allowed.begin(), allowed.end(), site), allowed.end()) << site;
    }
}

TEST(InterleavedHostile, RandomStreams) {
    Library lib;
    std::mt19937 random(20240611);
    for (int i = 0; i < 3000; ++i) {
        const int32_t width = int32_t(random() % 12) + 1, height = int32_t(random() % 6) + 1;
        Bytes stream;
        const size_t length = random() % 48;
        for (size_t k = 0; k < length; ++k) stream({uint8_t(random())});
        LogCapture log;
        const Decoded d = decodeGuarded(width, height, stream);
        ASSERT_TRUE(d.guardsIntact) << i;
        ASSERT_TRUE(d.result == 0 || d.result == 1) << i;
        if (d.result == 0) ASSERT_EQ(log.sites().back(), "ui 1108") << i;
    }
}

}  // namespace
