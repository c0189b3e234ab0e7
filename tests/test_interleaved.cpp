// The interleaved run-length decoder through slot 8: every order kind, the
// first-row and insertion rules, short input, unknown headers and overruns,
// by hand and through the reference decoder; then the two compared on
// generated streams at every width and truncation, which meet the rest.
#include <random>

#include "bitmapModels.h"

namespace {

using kit::Bytes;
using model::Pixels;
using model::operator+;
using ui::Line;

constexpr uint32_t W = 0xFFFFFF, A = 0x102030, B = 0x445566, C = 0x778899, X = 0xEEEEEEEE;

std::string s8(Line line) { return kit::shortRead(line); }
std::string overrun(int at, int size) { return kit::entry(ui::Site::overrun, model::text("%lld > %lld!", at, size)); }

const std::vector<model::Case> kCases = {
    // Every order kind.
    {"regular forms", 12, 1, Bytes{0x01, 0x21, 0x41, 0xA5, 0x61}.colour(A)({0x81}).colour(B),
     {0, W, W, 0, W, 0, 0, W, 0, W, A, B}},
    {"mega-mega forms", 12, 1,
     Bytes{0xF0}.u16(1)({0xF1}).u16(1)({0xF2}).u16(3)({0x05, 0xF3}).u16(1).colour(A)({0xF4}).u16(1).colour(B)({0xF6}).u16(1)
         .colour(C)({0xF7}).u16(2).colour(A)({0x02, 0xF8}).u16(1).colour(A).colour(B),
     {0, W, W, 0, W, A, B, C, 0, A, A, B}},
    {"extra length bytes: +32, +1, +16, +1", 53, 1,
     Bytes{0x60, 0x00}.colour(A)({0x40, 0x00, 0x01, 0xC0, 0x01}).colour(B)({0xD0, 0x02}).colour(C)({0x05}),
     Pixels(32, A) + Pixels{W} + Pixels(17, B) + Pixels{C, 0, C}},
    {"special fgbg 1 and 2, first and lower rows", 8, 3, {0xF9, 0xFA, 0xF9},
     {W, W, 0, 0, 0, 0, 0, 0, 0, W, W, 0, 0, 0, 0, 0, W, 0, W, 0, 0, 0, 0, 0}},
    {"colour image at 5 bytes per pixel: first three", 3, 1, {0x82, 0x30, 0x20, 0x10, 9, 9, 0x66, 0x55, 0x44, 9, 9, 0xFE},
     {A, B, 0}, {}, 1, 5},
    // Pixels above and the first-row rule.
    {"lower-row fg run: above xor fgPel", 2, 2, Bytes{0x62}.colour(B)({0xC2}).colour(A), {B, B, B ^ A, B ^ A}},
    {"fg run from the last first-row pixel keeps fgPel", 4, 2, Bytes{0x63}.colour(A)({0xC2}).colour(B), {A, A, A, B, B, X, X, X}},
    // Foreground insertion between background runs.
    {"second bg run in the first row starts with fgPel", 4, 1, Bytes{0xC1}.colour(A)({0x01, 0x02}), {A, 0, A, 0}},
    {"first bg run below the first row inserts nothing, the next does", 4, 2, {0x04, 0x02, 0x02}, {0, 0, 0, 0, 0, 0, W, 0}},
    {"mega bg run of 0 still writes the inserted pixel", 4, 1, Bytes{0x01, 0xF0}.u16(0)({0xFE}), {0, W, 0, X}},
    // Short input: the value reads as 0 and decoding goes on.  The cuts of
    // MatchesTheModel meet every other reading line.
    {"mega run, one byte left: 0, the byte the next header", 4, 1, {0xF1, 0x02}, {0, 0, X, X},
     {kit::shortRead(Line::megaRun, 0, true)}},
    {"colour without its last two bytes", 2, 1, {0x62, 0x33}, {0x33, 0x33}, {s8(Line::colourByte1), s8(Line::colourByte2)}},
    {"colour image block short: skipped, nothing moves", 4, 1, Bytes{0xF4}.u16(2)({0xFD, 0xFE}), {W, 0, X, X},
     kit::trail({ui::Site::shortBlock, ui::Site::colourImage})},
    // Overruns: only what fits is stored, the whole order counted.
    {"colour image past the end takes its whole block", 2, 1, Bytes{0x84}.colour(A).colour(B).colour(C).colour(W)({0xFD}),
     {A, B}, {overrun(16, 8)}},
};

TEST(Interleaved, OrdersRulesShortInputAndOverruns) {
    for (const model::Case &c : kCases) model::check(c, 3, model::interleaved);
    for (uint8_t header : {0xA0, 0xBF, 0xF5, 0xFB, 0xFC, 0xFF})
        model::check({"unknown header", 3, 1, {0xFD, header, 0xFD}, {W, X, X},
                      {kit::entry(ui::Site::unknownHeader, model::text("Unknown header 0x%02llx. Sync lost?", header))}, 0},
                     3, model::interleaved);
}

// Orders of every form with short runs, so that many meet in one bitmap.
Bytes randomOrders(std::mt19937 &random, int count, int32_t depth) {
    using model::K;
    Bytes s;
    while (count-- > 0) {
        const model::Form &f = model::kForms[random() % std::size(model::kForms)];
        const int header = f.lo + (random() % 4 == 0 ? 0 : int(random() % uint32_t(std::min(f.hi - f.lo + 1, 6))));
        const bool image = f.kind == K::image || f.kind == K::setImage;
        int run = (header & f.bits) * (image ? 8 : 1);
        s({uint8_t(header)});
        if (f.bits == 16) s.u16(uint32_t(run = int(random() % 12)));
        if (f.bits != 0 && f.bits != 16 && run == 0) s({uint8_t(run = int(random() % 4))}), run += int(f.extra);
        const int colours = f.kind == K::dithered ? 2 : f.kind == K::setFg || f.kind == K::setImage || f.kind == K::colourRun;
        for (int k = 3 * colours + (image ? (run + 7) / 8 : f.kind == K::colourImage ? run * depth : 0); k > 0; --k)
            s({uint8_t(random())});
    }
    return s;
}

// Every width and every truncation of generated streams, and the longest
// orders: the library and the reference decoder agree.
TEST(Interleaved, MatchesTheModel) {
    std::mt19937 random(2024);
    for (int32_t depth : {3, 5}) {
        const test::Library lib(depth);
        const auto same = [&](int32_t w, int32_t h, const Bytes &in) {
            EXPECT_EQ(model::slot8(lib, w, h, in), model::interleaved(w, h, in, depth))
                << depth << " bytes per pixel, " << w << "x" << h << ", " << testing::PrintToString(in);
            return !testing::Test::HasFailure();
        };
        for (int32_t width = 1; width <= 13; ++width)
            for (int32_t height : {1, 2, 4}) {
                const Bytes all = randomOrders(random, 10, depth);
                for (size_t n = 0; n <= all.size(); ++n) ASSERT_TRUE(same(width, height, all.first(n)));
            }
        for (const Bytes &in : {Bytes{0xF2}.u16(0xFFFF)({0x0F}), Bytes{0xF8}.u16(0xFFFF).colour(A).colour(B), Bytes{0x00, 0xFF}})
            ASSERT_TRUE(same(4, 1, in));
    }
}

}  // namespace
