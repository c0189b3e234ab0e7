// A reference for the line clipper built on the hardware's binary64: the
// single operations the library computes on integers, and the whole clipping
// procedure in plain doubles with libc's correctly rounded std::fma.  On i386
// the code is compiled for SSE2, so that every operation is rounded once to
// double (the x87 unit would round to extended precision first).
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

#include "imgbuf.h"  // ui32.h with the library's accessors

#if defined(__i386__)
#define UI32TEST_REFERENCE_FP __attribute__((target("sse2,fpmath=sse"), noinline))
#else
#define UI32TEST_REFERENCE_FP __attribute__((noinline))
#endif

namespace ui32test {

UI32TEST_REFERENCE_FP inline double referenceQuotient(int32_t a, int32_t b) { return double(a) / double(b); }
UI32TEST_REFERENCE_FP inline double referenceDifference(double a, double b) { return a - b; }
UI32TEST_REFERENCE_FP inline double referenceProduct(double a, double b) { return a * b; }
inline double referenceFma(double a, double b, double c) { return std::fma(a, b, c); }

inline uint64_t bitsOf(double v) { return std::bit_cast<uint64_t>(v); }
inline double doubleOf(uint64_t bits) { return std::bit_cast<double>(bits); }

enum class ReferenceClip { accepted, rejected, unsettled };

struct ReferenceSegment {
    int32_t x1, y1, x2, y2;
};

struct ReferenceEdges {
    double l, t, r, b;
};

UI32TEST_REFERENCE_FP inline uint32_t referenceCode(double x, double y, const ReferenceEdges &e) {
    return (x < e.l ? 1u : 0u) | (x > e.r ? 2u : 0u) | (y < e.t ? 4u : 0u) | (y > e.b ? 8u : 0u);
}

UI32TEST_REFERENCE_FP inline void referenceMove(double &x, double &y, uint32_t code, const ReferenceEdges &e,
                                                double kx, double ky) {
    if (code & 1) {
        y = std::fma(e.l - x, ky, y);
        x = e.l;
    } else if (code & 2) {
        y = std::fma(e.r - x, ky, y);
        x = e.r;
    } else if (code & 4) {
        x = std::fma(e.t - y, kx, x);
        y = e.t;
    } else if (code & 8) {
        x = std::fma(e.b - y, kx, x);
        y = e.b;
    }
}

// Cohen-Sutherland in hardware doubles: at most five passes, each move of an
// end point one fma along the slope.  (No lambdas: they would not inherit the
// SSE2 code generation on i386.)
UI32TEST_REFERENCE_FP inline ReferenceClip referenceClip(ReferenceSegment &s, const UiClipRect &c) {
    const ReferenceEdges e{double(c.left), double(c.top), double(c.right), double(c.bottom)};
    double x1 = s.x1, y1 = s.y1, x2 = s.x2, y2 = s.y2;
    uint32_t c1 = referenceCode(x1, y1, e), c2 = referenceCode(x2, y2, e);
    if ((c1 | c2) == 0) return ReferenceClip::accepted;
    if (c1 & c2) return ReferenceClip::rejected;
    const int32_t dx = int32_t(uint32_t(s.x2) - uint32_t(s.x1)), dy = int32_t(uint32_t(s.y2) - uint32_t(s.y1));
    const double kx = double(dx) / double(dy), ky = double(dy) / double(dx);
    for (int pass = 1; pass <= 5; ++pass) {
        if (c1) referenceMove(x1, y1, c1, e, kx, ky);
        if (c2) referenceMove(x2, y2, c2, e, kx, ky);
        const uint32_t m1 = referenceCode(x1, y1, e), m2 = referenceCode(x2, y2, e);
        if ((m1 | m2) == 0) {
            s = ReferenceSegment{int32_t(x1), int32_t(y1), int32_t(x2), int32_t(y2)};
            return ReferenceClip::accepted;
        }
        if ((m1 & c2) || (m2 & (m1 | c1))) return ReferenceClip::rejected;
        c1 = m1;
        c2 = m2;
    }
    return ReferenceClip::unsettled;
}

}  // namespace ui32test
