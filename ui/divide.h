// Unsigned 64-bit division without the compiler's run-time routines on
// 32-bit ARM.
//
// ARMv7-A has no divide instruction for 64-bit (nor, without the idiv
// extension, for 32-bit) operands; the compiler then calls libgcc, whose
// division routines report a zero divisor through raise(), an import the
// plug-in may not have.  On ARM the quotient is therefore formed bit by bit
// (at most 64 shift-and-subtract steps); elsewhere the hardware divides.
// Both give the exact truncated quotient.
#pragma once

#include <bit>
#include <cstdint>

namespace ui {

// n / d and n % d; d must not be 0 and must be below 2^63.
inline uint64_t divideU64(uint64_t n, uint64_t d, uint64_t &remainder) {
#if defined(__arm__)
    uint64_t q = 0, r = 0;
    for (int i = int(std::bit_width(n)) - 1; i >= 0; --i) {
        r = (r << 1) | ((n >> i) & 1);
        if (r >= d) {
            r -= d;
            q |= uint64_t(1) << i;
        }
    }
    remainder = r;
    return q;
#else
    remainder = n % d;
    return n / d;
#endif
}

inline uint64_t divideU64(uint64_t n, uint64_t d) {
    uint64_t remainder = 0;
    return divideU64(n, d, remainder);
}

}  // namespace ui
