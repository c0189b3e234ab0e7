// The sixteen binary raster operations of the RDP drawing orders, per pixel
// (rop2Table, index = the order's rop & 15) and per row (ropSpans), so that a
// call looks its operation up once and then runs a loop the compiler can
// inline.  Copy (12) is a direct store or block move in every form.
#pragma once

#include <array>
#include <cstdint>

namespace ui {

inline constexpr int32_t kRopCopy = 12;
inline constexpr uint32_t kWhite = 0xffffff;

// not(v) is 0xffffff - v: the complement of the low 24 bits (word or vector).
template <typename Pixel>
constexpr Pixel rop2(int32_t index, Pixel s, Pixel d) {
    const auto no = [](Pixel v) { return kWhite - v; };
    switch (index) {
        case 0: return s ^ s;
        case 1: return no(d | s);
        case 2: return d & no(s);
        case 3: return no(s);
        case 4: return no(d) & s;
        case 5: return no(d);
        case 6: return d ^ s;
        case 7: return no(d & s);
        case 8: return d & s;
        case 9: return d ^ no(s);
        case 10: return d;
        case 11: return d | no(s);
        case 12: return s;
        case 13: return no(d) | s;
        case 14: return d | s;
        default: return no(s ^ s);
    }
}

// Replaces *d with the operation of *s and *d.
using Rop2Fn = void (*)(const uint32_t *s, uint32_t *d);
extern const std::array<Rop2Fn, 16> rop2Table;

// One source colour over n pixels; a source row onto a destination row
// walking right (forward) or left (backward), for rows that overlap.
struct RopSpans {
    void (*solid)(uint32_t *d, uint32_t s, int32_t n);
    void (*forward)(uint32_t *d, const uint32_t *s, int32_t n);
    void (*backward)(uint32_t *d, const uint32_t *s, int32_t n);
};
extern const std::array<RopSpans, 16> ropSpans;

}  // namespace ui
