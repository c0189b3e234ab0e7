// Exactly rounded binary64 arithmetic on integers.
//
// Every operation forms the exact result as a wide integer N times a power of
// two, plus a "sticky" flag that stands for a non-zero remainder below N's
// last bit (the exact value then lies strictly between N and N + 1), and
// rounds that once to a 53-bit mantissa, ties to even.
#include "softDouble.h"

#include <bit>
#include <utility>

namespace {

constexpr int kMantissaBits = 53;
constexpr uint64_t kMantissaLimit = uint64_t(1) << kMantissaBits;

// An unsigned 128-bit integer, portable to targets without __int128.
struct U128 {
    uint64_t hi, lo;
};

bool isZero(U128 v) { return (v.hi | v.lo) == 0; }

bool less(U128 a, U128 b) { return a.hi != b.hi ? a.hi < b.hi : a.lo < b.lo; }

int bitLength(U128 v) {
    return v.hi != 0 ? 64 + int(std::bit_width(v.hi)) : int(std::bit_width(v.lo));
}

U128 add(U128 a, U128 b) {
    U128 r{a.hi + b.hi, a.lo + b.lo};
    if (r.lo < a.lo) ++r.hi;
    return r;
}

// a - b for a >= b.
U128 subtract(U128 a, U128 b) {
    U128 r{a.hi - b.hi, a.lo - b.lo};
    if (a.lo < b.lo) --r.hi;
    return r;
}

// v << n for 0 <= n < 128 (the caller knows no bit is lost).
U128 shiftLeft(U128 v, int n) {
    if (n == 0) return v;
    if (n >= 64) return U128{v.lo << (n - 64), 0};
    return U128{(v.hi << n) | (v.lo >> (64 - n)), v.lo << n};
}

// v >> n for any n >= 0; sticky becomes true when a 1 bit is shifted out.
U128 shiftRightSticky(U128 v, int64_t n, bool &sticky) {
    if (n == 0) return v;
    if (n >= 128) {
        sticky = sticky || !isZero(v);
        return U128{0, 0};
    }
    if (n >= 64) {
        const int s = int(n - 64);
        const uint64_t lost = s == 0 ? v.lo : (v.lo | (v.hi << (64 - s)));
        sticky = sticky || lost != 0;
        return U128{0, v.hi >> s};
    }
    const int s = int(n);
    sticky = sticky || (v.lo << (64 - s)) != 0;
    return U128{v.hi >> s, (v.lo >> s) | (v.hi << (64 - s))};
}

// The full 128-bit product of two 64-bit values, from 32-bit halves.
U128 multiply(uint64_t a, uint64_t b) {
    const uint64_t a0 = uint32_t(a), a1 = a >> 32, b0 = uint32_t(b), b1 = b >> 32;
    const uint64_t p00 = a0 * b0, p01 = a0 * b1, p10 = a1 * b0, p11 = a1 * b1;
    const uint64_t middle = (p00 >> 32) + uint32_t(p01) + uint32_t(p10);
    return U128{p11 + (p01 >> 32) + (p10 >> 32) + (middle >> 32), (middle << 32) | uint32_t(p00)};
}

uint64_t magnitude(int32_t v) { return v < 0 ? uint64_t(-int64_t(v)) : uint64_t(v); }

ui::SoftDouble zero(bool negative) { return ui::SoftDouble{0, 0, negative}; }

// Rounds (n + sticky fraction) x 2^exponent to 53 bits, ties to even.  When
// sticky is set, n must have at least 55 bits, so that the fraction lies
// below both the last kept bit and the half bit (every caller ensures it).
ui::SoftDouble roundToBinary64(bool negative, U128 n, int64_t exponent, bool sticky) {
    if (isZero(n)) return zero(negative);
    int length = bitLength(n);
    if (length < kMantissaBits + 2) {  // exact: widen so that the code below has a half bit
        n = shiftLeft(n, kMantissaBits + 2 - length);
        exponent -= kMantissaBits + 2 - length;
        length = kMantissaBits + 2;
    }
    const int dropped = length - kMantissaBits;
    bool belowHalf = sticky;
    const U128 kept = shiftRightSticky(n, dropped - 1, belowHalf);  // 54 bits: mantissa and half bit
    const bool half = (kept.lo & 1) != 0;
    uint64_t mantissa = kept.lo >> 1;
    exponent += dropped;
    if (half && (belowHalf || (mantissa & 1) != 0)) {
        if (++mantissa == kMantissaLimit) {
            mantissa >>= 1;
            ++exponent;
        }
    }
    return ui::SoftDouble{mantissa, int32_t(exponent), negative};
}

// Brings a non-zero value to 126 bits (top bit at index 125), leaving one
// bit of headroom for the carry of an addition.
void normalise(U128 &v, int64_t &exponent) {
    const int shift = 126 - bitLength(v);
    v = shiftLeft(v, shift);
    exponent -= shift;
}

// round(a + b) for exact operands of at most 126 bits each.
ui::SoftDouble sum(bool negA, U128 a, int64_t ea, bool negB, U128 b, int64_t eb) {
    if (isZero(a) && isZero(b)) return zero(negA && negB);
    if (isZero(a)) return roundToBinary64(negB, b, eb, false);
    if (isZero(b)) return roundToBinary64(negA, a, ea, false);
    normalise(a, ea);
    normalise(b, eb);
    if (ea < eb || (ea == eb && less(a, b))) {  // make a the larger magnitude
        std::swap(a, b);
        std::swap(ea, eb);
        std::swap(negA, negB);
    }
    // Aligning b loses bits only when it lies more than 20 bits below a
    // (both hold at most 106 significant bits); a result then keeps at
    // least 124 bits, so the sticky fraction sits far below its half bit.
    bool sticky = false;
    b = shiftRightSticky(b, ea - eb, sticky);
    if (negA == negB) return roundToBinary64(negA, add(a, b), ea, sticky);
    // a - (b + f) with 0 < f < 1 equals (a - b - 1) + (1 - f): the remainder
    // stays a fraction strictly between 0 and 1.
    U128 n = subtract(a, b);
    if (sticky) n = subtract(n, U128{0, 1});
    if (isZero(n)) return zero(false);  // exact cancellation gives +0
    return roundToBinary64(negA, n, ea, sticky);
}

}  // namespace

namespace ui {

SoftDouble SoftDouble::fromInt(int32_t v) {
    return roundToBinary64(v < 0, U128{0, magnitude(v)}, 0, false);
}

int SoftDouble::compare(const SoftDouble &a, const SoftDouble &b) {
    const int signA = a.mantissa == 0 ? 0 : (a.negative ? -1 : 1);
    const int signB = b.mantissa == 0 ? 0 : (b.negative ? -1 : 1);
    if (signA != signB) return signA < signB ? -1 : 1;
    if (signA == 0) return 0;
    int order = 0;
    if (a.exponent != b.exponent)
        order = a.exponent < b.exponent ? -1 : 1;
    else if (a.mantissa != b.mantissa)
        order = a.mantissa < b.mantissa ? -1 : 1;
    return signA < 0 ? -order : order;
}

int64_t SoftDouble::truncate() const {
    if (mantissa == 0) return 0;
    if (exponent >= 64 - kMantissaBits) return negative ? INT64_MIN : INT64_MAX;  // |v| >= 2^63
    uint64_t m = 0;
    if (exponent >= 0)
        m = mantissa << exponent;
    else if (exponent > -64)
        m = mantissa >> -exponent;
    return negative ? -int64_t(m) : int64_t(m);
}

SoftDouble quotient(int32_t num, int32_t den) {
    const bool negative = (num < 0) != (den < 0);
    const uint64_t n = magnitude(num), d = magnitude(den);
    // Long division of n x 2^90 (below 2^122) by d in 32-bit digits; with
    // d <= 2^31 the quotient has at least 60 bits, the remainder is sticky.
    const uint64_t high = n << 26;
    const uint32_t digits[4] = {uint32_t(high >> 32), uint32_t(high), 0, 0};
    uint32_t q[4];
    uint64_t remainder = 0;
    for (int i = 0; i < 4; ++i) {
        const uint64_t current = (remainder << 32) | digits[i];
        q[i] = uint32_t(current / d);
        remainder = current % d;
    }
    const U128 result{(uint64_t(q[0]) << 32) | q[1], (uint64_t(q[2]) << 32) | q[3]};
    return roundToBinary64(negative, result, -90, remainder != 0);
}

SoftDouble difference(const SoftDouble &a, const SoftDouble &b) {
    return sum(a.negative, U128{0, a.mantissa}, a.exponent, !b.negative, U128{0, b.mantissa}, b.exponent);
}

SoftDouble fusedMultiplyAdd(const SoftDouble &a, const SoftDouble &b, const SoftDouble &c) {
    const U128 product = multiply(a.mantissa, b.mantissa);  // exact, at most 106 bits
    return sum(a.negative != b.negative, product, int64_t(a.exponent) + b.exponent, c.negative,
               U128{0, c.mantissa}, c.exponent);
}

}  // namespace ui
