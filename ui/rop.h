// The sixteen binary raster operations of the RDP drawing orders.
//
// rop2Table[index] is the per-pixel operation (index = ROP2 code - 1, that is
// the order's rop byte AND 15).  Beside it, for the fills and blits, each
// operation also comes as span functions that apply it to a whole row, so
// that an entry point looks the operation up once and then runs a loop the
// compiler can inline and vectorise.
#pragma once

#include <array>
#include <cstdint>

namespace ui {

inline constexpr int kRopCopy = 12;
inline constexpr uint32_t kWhite = 0xffffff;

// not(v) is the complement of the low 24 bits: 0xffffff - v.
constexpr uint32_t notColour(uint32_t v) { return kWhite - v; }

constexpr uint32_t rop2(int index, uint32_t s, uint32_t d) {
    switch (index) {
        case 0: return 0;                             // black
        case 1: return notColour(d | s);              // not merge
        case 2: return d & notColour(s);              // mask not source
        case 3: return notColour(s);                  // not copy
        case 4: return notColour(d) & s;              // mask source not
        case 5: return notColour(d);                  // invert
        case 6: return d ^ s;                         // xor
        case 7: return notColour(d & s);              // not mask
        case 8: return d & s;                         // mask
        case 9: return d ^ notColour(s);              // not xor
        case 10: return d;                            // no operation
        case 11: return d | notColour(s);             // merge not source
        case 12: return s;                            // copy
        case 13: return notColour(d) | s;             // merge source not
        case 14: return d | s;                        // merge
        default: return kWhite;                       // 15: white
    }
}

// Per-pixel form: replaces *d with the operation of *s and *d.
using Rop2Fn = void (*)(const uint32_t *s, uint32_t *d);
extern const std::array<Rop2Fn, 16> rop2Table;

// Span forms.  Solid: one source colour over n pixels.  Forward / Backward:
// source row s onto destination row d, walking left to right / right to left
// (the two may overlap inside one row, as in a screen-to-screen copy).
using RopSolidSpan = void (*)(uint32_t *d, uint32_t s, int32_t n);
using RopSpan = void (*)(uint32_t *d, const uint32_t *s, int32_t n);
extern const std::array<RopSolidSpan, 16> ropSolidSpans;
extern const std::array<RopSpan, 16> ropForwardSpans;
extern const std::array<RopSpan, 16> ropBackwardSpans;

}  // namespace ui
