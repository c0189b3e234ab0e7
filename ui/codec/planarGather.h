// The x86 form of a run-length plane row (SSE2; planar.cpp's planeRow is the
// plain twin, which ARM cores run): the row's codes are gathered first, raw
// bytes as they stand and a run as copies of the last raw byte, one 16-byte
// copy and one 48-byte fill per segment, and then stored in one pass over
// whole words that the compiler vectorises.  Same results and reports as the
// twin, byte for byte.
#pragma once

#include <cstring>

#include "../core/fills.h"
#include "streamInOps.h"

namespace ui {

inline constexpr bool kGatherPlanarRows = kVectorLoops;  // x86: the compiler vectorises the store pass

inline constexpr int32_t kCodeCapacity = 1024, kRawCopy = 16, kRunFill = 48;

// Sample i of a gathered row, in bytes (so that vectors hold 16 of them): in
// the first row the code itself, in later rows the byte above plus the
// delta (h = c >> 1, as ~h when c is odd).
template <bool kFirst>
inline uint8_t gatheredSample(const uint32_t *above, const uint8_t *codes, int32_t i, int shift) {
    const uint8_t c = codes[i], delta = uint8_t(uint8_t(c >> 1) ^ (0u - (c & 1u)));
    return kFirst ? c : uint8_t(uint8_t(above[i] >> shift) + delta);
}

// n gathered codes into byte shift / 8 of out[0 .. n - 1]; the red plane
// (shift 16) clears byte 3.
template <bool kFirst>
void storeCodes(uint32_t *__restrict out, const uint32_t *__restrict above, const uint8_t *__restrict codes,
                int32_t n, int shift) {
    const uint32_t keep = shift == 16 ? 0xFFFFu : ~(0xFFu << shift);
    for (int32_t i = 0; i < n; ++i)
        out[i] = (out[i] & keep) | uint32_t(gatheredSample<kFirst>(above, codes, i, shift)) << shift;
}

// One row of width pixels at row (the row above at row - width), stored a
// batch at a time, all that came before a failure included.  segment reads
// a control byte as the twin does.  The reader and the last raw byte (a
// run's value or delta) are locals that the compiler keeps in registers.
template <bool kFirst, typename ReadSegment>
bool gatherRow(streamIn &reader, uint32_t *row, int32_t width, int shift, ReadSegment segment) {
    uint8_t codes[kCodeCapacity + kRawCopy + kRunFill];
    streamIn in = reader;
    int32_t gathered = 0, stored = 0;
    int last = 0;
    const auto flush = [&](bool ok) {
        storeCodes<kFirst>(row + stored, kFirst ? nullptr : row + stored - width, codes, gathered, shift);
        stored += gathered;
        gathered = 0;
        reader = in;
        return ok;
    };
    for (int32_t missing = width, raw, run; missing > 0;) {
        if (gathered > kCodeCapacity) flush(true);
        if (!segment(in, kFirst ? Line::firstRowControl : Line::deltaRowControl, raw, run)) return flush(false);
        missing -= raw + run;
        if (missing < 0) return flush(fail(kFirst ? Site::planarRowOverrun : Site::planarDeltaOverrun));
        uint8_t *code = codes + gathered;
        if (const uint8_t *window = in.window16(raw))
            std::memcpy(code, window, kRawCopy);
        else if (const uint8_t *bytes = in.take(raw))
            std::memcpy(code, bytes, size_t(raw));
        else
            for (int32_t i = 0; i < raw; ++i) code[i] = in.readU8(kFirst ? Line::firstRowRaw : Line::deltaRowRaw);
        if (raw > 0) last = code[raw - 1];
        std::memset(code + raw, last, kRunFill);
        gathered += raw + run;
    }
    return flush(true);
}

}  // namespace ui
