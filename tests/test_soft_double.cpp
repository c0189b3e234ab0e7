// The integer binary64 arithmetic of the line clipper, bit for bit against
// the hardware's correctly rounded operations.
#include <gtest/gtest.h>

#include <climits>
#include <random>

#include "line_reference.h"
#include "softDouble.h"

using namespace ui32test;
using ui::SoftDouble;

namespace {

SoftDouble soft(double v) { return SoftDouble::fromBits(bitsOf(v)); }

// A random normal double: 53-bit mantissa, exponent in [low, high], either sign.
double randomDouble(std::mt19937_64 &rng, int low, int high) {
    const uint64_t fraction = rng() & ((uint64_t(1) << 52) - 1);
    const uint64_t exponent = uint64_t(1023 + low + int(rng() % uint64_t(high - low + 1)));
    return doubleOf((rng() & 1) << 63 | exponent << 52 | fraction);
}

// A double with only `bits` significant bits, so that products land exactly
// on or next to rounding ties.
double shortDouble(std::mt19937_64 &rng, int bits, int exponent) {
    const uint64_t m = (uint64_t(1) << (bits - 1)) | (rng() & ((uint64_t(1) << (bits - 1)) - 1));
    return std::ldexp(double(m), exponent - bits + 1) * ((rng() & 1) ? -1.0 : 1.0);
}

int32_t randomInt(std::mt19937_64 &rng) {
    switch (rng() % 4) {
        case 0: return int32_t(uint32_t(rng()));                  // anywhere
        case 1: return int32_t(rng() % 2001) - 1000;               // small
        case 2: return (rng() & 1) ? INT32_MAX - int32_t(rng() % 4) : INT32_MIN + int32_t(rng() % 4);
        default: return int32_t(uint32_t(rng()) >> (rng() % 32)) * ((rng() & 1) ? -1 : 1);
    }
}

void expectSame(const SoftDouble &got, double want, const char *what) {
    ASSERT_EQ(got.bits(), bitsOf(want)) << what << ": got " << doubleOf(got.bits()) << " want " << want;
}

TEST(SoftDouble, ConversionsAndComparison) {
    for (int32_t v : {0, 1, -1, 7, 1 << 30, INT32_MAX, INT32_MIN, -123456789}) {
        EXPECT_EQ(SoftDouble::fromInt(v).bits(), bitsOf(double(v))) << v;
        EXPECT_EQ(SoftDouble::fromInt(v).truncate(), v);
    }
    const struct {
        double v;
        int64_t truncated;
    } cases[] = {{2.999999, 2}, {-2.999999, -2}, {0.5, 0}, {-0.5, 0}, {1e-300, 0},
                 {4294967296.75, 4294967296}, {-2147483648.5, -2147483648}, {1e300, INT64_MAX}, {-1e300, INT64_MIN}};
    for (const auto &c : cases) EXPECT_EQ(soft(c.v).truncate(), c.truncated) << c.v;

    const double ordered[] = {-1e30, -3.5, -1.0, -1e-30, 0.0, 1e-30, 0.75, 1.0, 1.0000000000000002, 2.0, 1e30};
    for (double a : ordered)
        for (double b : ordered) EXPECT_EQ(SoftDouble::compare(soft(a), soft(b)), (a > b) - (a < b)) << a << " " << b;
    EXPECT_EQ(SoftDouble::compare(soft(-0.0), soft(0.0)), 0);
}

TEST(SoftDouble, QuotientOfIntegers) {
    std::mt19937_64 rng(1);
    const int32_t fixed[] = {1, -1, 2, 3, 7, 10, -10, 1 << 30, INT32_MAX, INT32_MIN, INT32_MIN + 1, 1000003};
    for (int32_t a : fixed)
        for (int32_t b : fixed) expectSame(ui::quotient(a, b), referenceQuotient(a, b), "fixed quotient");
    for (int i = 0; i < 200000; ++i) {
        const int32_t a = randomInt(rng), b = randomInt(rng);
        if (a == 0 || b == 0) continue;
        expectSame(ui::quotient(a, b), referenceQuotient(a, b), "quotient");
    }
}

TEST(SoftDouble, Difference) {
    std::mt19937_64 rng(2);
    for (int i = 0; i < 200000; ++i) {
        double a = 0, b = 0;
        switch (i % 4) {
            case 0:  // unrelated magnitudes
                a = randomDouble(rng, -80, 80);
                b = randomDouble(rng, -80, 80);
                break;
            case 1:  // an edge minus a clipped coordinate
                a = double(randomInt(rng));
                b = randomDouble(rng, -10, 40);
                break;
            case 2:  // nearly equal: cancellation
                a = randomDouble(rng, -30, 30);
                b = doubleOf(bitsOf(a) + (rng() % 9) - 4);
                break;
            default:  // far apart: the smaller only rounds
                a = randomDouble(rng, 20, 40);
                b = randomDouble(rng, -60, -20);
                break;
        }
        expectSame(ui::difference(soft(a), soft(b)), referenceDifference(a, b), "difference");
    }
    expectSame(ui::difference(soft(5.0), soft(5.0)), 0.0, "exact cancellation");
}

TEST(SoftDouble, FusedMultiplyAddIsRoundedOnce) {
    std::mt19937_64 rng(3);
    for (int i = 0; i < 300000; ++i) {
        double a = 0, b = 0, c = 0;
        switch (i % 6) {
            case 0:  // unrelated
                a = randomDouble(rng, -60, 60);
                b = randomDouble(rng, -60, 60);
                c = randomDouble(rng, -100, 100);
                break;
            case 1:  // a move: (edge - x) x slope + y
                a = referenceDifference(double(randomInt(rng)), randomDouble(rng, -20, 31));
                b = referenceQuotient(randomInt(rng) | 1, randomInt(rng) | 1);
                c = randomDouble(rng, -20, 40);
                break;
            case 2: {  // c cancels the rounded product: the result is its rounding error
                a = randomDouble(rng, -40, 40);
                b = randomDouble(rng, -40, 40);
                c = -referenceProduct(a, b);
                break;
            }
            case 3:  // products on a tie, pushed by a tiny c either way or not at all
                a = shortDouble(rng, 27, int(rng() % 40) - 20);
                b = shortDouble(rng, 28, int(rng() % 40) - 20);
                c = (rng() % 3 == 0) ? 0.0 : randomDouble(rng, -300, -150);
                break;
            case 4:  // c far above the product: only the sticky bits of a x b count
                a = randomDouble(rng, -40, 0);
                b = randomDouble(rng, -40, 0);
                c = randomDouble(rng, 30, 60);
                break;
            default:  // c a little off the negated product
                a = randomDouble(rng, -40, 40);
                b = randomDouble(rng, -40, 40);
                c = doubleOf(bitsOf(-referenceProduct(a, b)) + (rng() % 5) - 2);
                break;
        }
        expectSame(ui::fusedMultiplyAdd(soft(a), soft(b), soft(c)), referenceFma(a, b, c), "fma");
    }
}

TEST(SoftDouble, FusedMultiplyAddKnownValues) {
    // 0.1 x 10 is 1 + 2^-54 exactly: rounded first it would be 1 and give 0.
    expectSame(ui::fusedMultiplyAdd(soft(0.1), soft(10.0), soft(-1.0)), 0x1p-54, "0.1 x 10 - 1");
    // (1 + 2^-30)(1 + 2^-23) = 1 + 2^-23 + 2^-30 + 2^-53: a tie, to even (down)
    // alone, up with the smallest push, down with the smallest pull.
    const double a = 1 + 0x1p-30, b = 1 + 0x1p-23;
    expectSame(ui::fusedMultiplyAdd(soft(a), soft(b), soft(0.0)), 1 + 0x1p-23 + 0x1p-30, "tie to even");
    expectSame(ui::fusedMultiplyAdd(soft(a), soft(b), soft(0x1p-200)), 1 + 0x1p-23 + 0x1p-30 + 0x1p-52, "tie pushed up");
    expectSame(ui::fusedMultiplyAdd(soft(a), soft(b), soft(-0x1p-200)), 1 + 0x1p-23 + 0x1p-30, "tie pulled down");
    expectSame(ui::fusedMultiplyAdd(soft(3.0), soft(-2.0), soft(6.0)), 0.0, "exact zero is +0");
}

}  // namespace
