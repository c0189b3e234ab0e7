// IEEE 754 binary64 arithmetic (round to nearest, ties to even) carried out
// in integer arithmetic, for the double-precision line clipper.
//
// Why not the hardware: the clipper's results must be the same pixels on
// every target, and each move of an end point is one fused multiply-add.
// None of the library's targets is guaranteed an FMA instruction (x86-64
// baseline, i386, ARMv7 with VFPv3), __builtin_fma would then call libm's
// fma, which the plug-in may not import, and on i386 the x87 unit evaluates
// in extended precision, so even plain subtraction and division can be
// rounded twice.  Doing the few operations the clipper needs on integers
// gives the exactly rounded binary64 result everywhere, whatever the FPU,
// its precision control or the compiler's excess-precision mode.
//
// The exponent is not limited: values never overflow to infinity nor become
// subnormal.  That is binary64 exactly for every value a clip can produce
// (magnitudes below 2^70; non-zero ones far above 2^-1022).
#pragma once

#include <cstdint>

namespace ui {

struct SoftDouble {
    // The value is (-1)^negative x mantissa x 2^exponent, with
    // 2^52 <= mantissa < 2^53, or zero when mantissa is 0.
    uint64_t mantissa;
    int32_t exponent;
    bool negative;

    static SoftDouble fromInt(int32_t v);  // exact

    bool isZero() const { return mantissa == 0; }
    // -1, 0 or 1 as a <, ==, > b (a zero equals a zero of either sign).
    static int compare(const SoftDouble &a, const SoftDouble &b);
    // Rounded toward zero; saturates outside the int64 range.
    int64_t truncate() const;
};

// round(num / den); den must not be 0.
SoftDouble quotient(int32_t num, int32_t den);
// round(a - b)
SoftDouble difference(const SoftDouble &a, const SoftDouble &b);
// round(a x b + c), rounded once: the fused multiply-add.
SoftDouble fusedMultiplyAdd(const SoftDouble &a, const SoftDouble &b, const SoftDouble &c);

}  // namespace ui
