// A run-length plane of the planar codec with NEON.  The segments of a row
// are first turned into one code per pixel (its value in the first row, its
// delta below it) in a buffer, sixteen raw bytes and sixteen run bytes (48
// for longer runs) at a time whatever the segment's counts (the next segment
// stores over the excess);
// then the codes go into byte `position` of the pixels sixteen at a time:
// the pixels and the row above loaded as byte planes, the plane's bytes
// replaced by the codes (plus the bytes above), stored back whole.  Below
// the first row, codes of many rows are stored in one pass: output rows
// follow one another, so each block's row above is complete before it.
//
// Results, reports, what is stored and what is consumed are those of the
// plain form: a segment that overruns its row or a missing control byte
// stores the codes gathered so far and fails; near the end of the input the
// segments are read as the plain form reads them.
#if defined(__ARM_NEON)

#include <array>

#include "../codec/rlecontext.h"
#include "rows.h"

namespace {

using ui::Line;
using ui::Site;

constexpr int32_t kChunk = 1024;  // codes gathered before they are stored

// raw | run << 4 for each control byte: the low nibble is the run, the high
// one the raw count; runs of 1 and 2 stand for 16 + raw and 32 + raw pixels
// without raw bytes.
constexpr std::array<uint16_t, 256> kSegments = [] {
    std::array<uint16_t, 256> table{};
    for (int c = 0; c < 256; ++c) {
        const int raw = c >> 4, run = c & 15;
        table[size_t(c)] = uint16_t(run == 1 || run == 2 ? (raw + 16 * run) << 4 : raw | run << 4);
    }
    return table;
}();

// The deltas of sixteen bytes: v >> 1, inverted when v is odd.
inline uint8x16_t deltas(uint8x16_t v) { return veorq_u8(vshrq_n_u8(v, 1), vtstq_u8(v, vdupq_n_u8(1))); }

// Sixteen codes into byte P of the pixels at out, over the bytes `above`
// bytes before them unless in the first row; the red plane also stores
// byte 3 as 0.
template <int P, bool kFirst>
inline void storeBlock(uint8_t *out, const uint8_t *codes, ptrdiff_t above) {
    uint8x16x4_t v = vld4q_u8(out);
    v.val[P] = kFirst ? vld1q_u8(codes) : vaddq_u8(vld1q_u8(codes), vld4q_u8(out + above).val[P]);
    if (P == 2) v.val[3] = vdupq_n_u8(0);
    vst4q_u8(out, v);
}

// n codes from the pixel at out on; the row above is width pixels earlier.
template <int P, bool kFirst>
void storeCodes(uint8_t *out, const uint8_t *codes, int32_t n, int32_t width) {
    const ptrdiff_t above = -4 * ptrdiff_t(width);
    if (n < 16) {
        for (int32_t i = 0; i < n; ++i, out += 4) {
            out[P] = uint8_t(codes[i] + (kFirst ? 0 : out[above + P]));
            if (P == 2) out[3] = 0;
        }
        return;
    }
    const uint8_t *end = codes + n;
    for (; end - codes >= 32; codes += 32, out += 128) {
        storeBlock<P, kFirst>(out, codes, above);
        storeBlock<P, kFirst>(out + 64, codes + 16, above);
    }
    if (end - codes >= 16) storeBlock<P, kFirst>(out, codes, above), codes += 16, out += 64;
    // The last sixteen again: the same values where they overlap.
    if (end != codes) storeBlock<P, kFirst>(out - 4 * (16 - (end - codes)), end - 16, above);
}

// A segment near the end of the input, read as the plain form reads it: the
// control byte (failing, after the reader's report, when it is not there),
// the overrun check (failing after its report), then the raw bytes, one by
// one when they are not all there (a missing one is reported and counts as
// 0), into codes.  The caller's reader is a copy; its variables stay in
// registers.
struct Last {
    int32_t raw, run;
    uint8_t value;
    bool ok;
};

template <bool kFirst>
[[gnu::noinline]] Last lastSegment(ui::streamIn &in, uint8_t *codes, int32_t missing, uint8_t value) {
    const bool there = in.left >= 1;
    const uint32_t segment = kSegments[in.readU8(kFirst ? Line::firstRowControl : Line::deltaRowControl)];
    Last last{int32_t(segment & 15), int32_t(segment >> 4), value, there};
    if (!there) return last;
    if (missing < last.raw + last.run)
        return last.ok = ui::fail(kFirst ? Site::planarRowOverrun : Site::planarDeltaOverrun), last;
    const uint8_t *bytes = in.take(last.raw);
    for (int32_t i = 0; i < last.raw; ++i) {
        const uint8_t b = bytes != nullptr ? bytes[i] : in.readU8(kFirst ? Line::firstRowRaw : Line::deltaRowRaw);
        codes[i] = last.value = kFirst ? b : uint8_t((b >> 1) ^ (0u - (b & 1u)));
    }
    return last;
}

// Where the codes go: the pixel of codes[0], the row width.
struct Output {
    uint8_t *pixel;
    int32_t width;
};

// Stores the codes from codes to next and gives where the next ones go.
template <int P>
uint8_t *store(Output &out, uint8_t *codes, const uint8_t *next, bool first) {
    const int32_t n = int32_t(next - codes);
    (first ? storeCodes<P, true> : storeCodes<P, false>)(out.pixel, codes, n, out.width);
    out.pixel += 4 * n;
    return codes;
}

// The run value's codes, sixteen at a time: 48 from at on.
inline void runCodes(uint8_t *at, uint8_t value) {
    const uint8x16_t repeated = vdupq_n_u8(value);
    vst1q_u8(at, repeated), vst1q_u8(at + 16, repeated), vst1q_u8(at + 32, repeated);
}

// One row's codes from next on; the end of its codes, or null, after the
// codes so far are stored, when the row fails.  Rows wider than the buffer
// (kWide) store it whenever it is full.
template <int P, bool kFirst, bool kWide>
uint8_t *row(ui::streamIn &in, Output &out, uint8_t *codes, uint8_t *next) {
    const Site overrun = kFirst ? Site::planarRowOverrun : Site::planarDeltaOverrun;
    uint8_t value = 0;  // the run's value or delta; 0 before the first raw byte
    for (int32_t missing = out.width; missing > 0;) {
        if (in.has(17)) {
            // Segments whose control byte has a window of sixteen bytes
            // after it (q is past the control byte, limit the last such q).
            // Raw bytes go out sixteen at a time, the run sixteen at a time
            // (48 for long runs).
            const uint8_t *q = in.ptr + 1, *limit = in.ptr + (in.left - 16);
            for (;;) {
                const uint32_t segment = kSegments[q[-1]];
                const int32_t raw = int32_t(segment & 15), run = int32_t(segment >> 4);
                if ((missing -= raw + run) < 0) {
                    in.take(q - in.ptr);
                    return store<P>(out, codes, next, kFirst), ui::fail(overrun), nullptr;
                }
                if (raw != 0) {
                    const uint8x16_t bytes = vld1q_u8(q);
                    vst1q_u8(next, kFirst ? bytes : deltas(bytes));
                    next += raw;
                    value = next[-1];
                }
                q += raw + 1;
                const uint8x16_t repeated = vdupq_n_u8(value);
                vst1q_u8(next, repeated);
                if (run > 16) vst1q_u8(next + 16, repeated), vst1q_u8(next + 32, repeated);
                next += run;
                if (kWide && next >= codes + kChunk) next = store<P>(out, codes, next, kFirst);
                if (missing == 0) [[unlikely]]  // the row's end
                    break;
                if (q > limit) [[unlikely]]
                    break;
            }
            in.take(q - 1 - in.ptr);
            continue;
        }
        ui::streamIn reader = in;
        const Last last = lastSegment<kFirst>(reader, next, missing, value);
        in = reader;
        if (!last.ok) return store<P>(out, codes, next, kFirst), nullptr;
        missing -= last.raw + last.run;
        value = last.value;
        runCodes(next += last.raw, value);
        next += last.run;
        if (kWide && next >= codes + kChunk) next = store<P>(out, codes, next, kFirst);
    }
    return next;
}

template <int P>
bool plane(ui::streamIn &stream, uint32_t *pixels, int32_t width, int32_t height) {
    ui::streamIn in = stream;  // a copy the compiler can keep in registers
    Output out{reinterpret_cast<uint8_t *>(pixels), width};
    uint8_t codes[kChunk + 64];
    uint8_t *next = codes;
    const bool wide = width > kChunk;
    for (int32_t y = 0; next != nullptr && y < height; ++y) {
        if (y == 0) {
            next = wide ? row<P, true, true>(in, out, codes, next) : row<P, true, false>(in, out, codes, next);
        } else {
            if (next - codes > kChunk - width) next = store<P>(out, codes, next, false);
            next = wide ? row<P, false, true>(in, out, codes, next) : row<P, false, false>(in, out, codes, next);
        }
        // The first row is stored on its own, and so is every row narrower
        // than a block: a block must not reach the row it reads.
        if (next != nullptr && (y == 0 || width < 16)) next = store<P>(out, codes, next, y == 0);
    }
    if (next != nullptr) store<P>(out, codes, next, false);
    stream = in;
    return next != nullptr;
}

}  // namespace

bool ui::neon::decodePlane(streamIn &in, uint32_t *pixels, int32_t width, int32_t height, int position) {
    return position == 2 ? plane<2>(in, pixels, width, height)
           : position == 1 ? plane<1>(in, pixels, width, height)
                           : plane<0>(in, pixels, width, height);
}

#endif
