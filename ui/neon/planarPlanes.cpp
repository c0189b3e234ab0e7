// The run-length planes of the planar codec with NEON: the three colour
// planes, and the alpha plane read past.
//
// Each plane's segments become one code per pixel (its value in the plane's
// first row, its delta below it) in a byte buffer: sixteen raw bytes and 48
// run bytes (a long run has up to 47) at a time whatever the segment's counts,
// the next segment storing over the excess.  The reading loop goes on from
// one row to the next.
//
// The codes become pixels sixteen columns at a time, from the top row down,
// the column's sums (values) kept in registers.  A bitmap whose three planes
// fit the buffer (a 64 x 64 tile does) is stored once, as whole pixels, after
// its last plane; a larger one plane by plane, in bands of rows, each pixel
// loaded and stored back with the plane's byte replaced.  Rows wider than the
// buffer go through the plain form.
//
// Results, reports, what is stored and what is consumed are those of the
// plain form, which decodes the planes one after the other straight into the
// pixels: a plane that fails stores the codes of the segments read so far
// (the planes before it whole) and leaves the bytes of the planes after it as
// they were; near the end of the input the segments are read as the plain
// form reads them.
#if defined(__ARM_NEON)

#include <algorithm>
#include <array>

#include "../codec/rlecontext.h"
#include "rows.h"

namespace {

using ui::Line;
using ui::Site;

constexpr int32_t kBuffer = 3 * 64 * 64;  // codes: the three planes of a 64 x 64 tile
constexpr int32_t kExcess = 48;           // stored past the last code

// raw | pixels << 4 for each control byte: the low nibble is the run, the
// high one the raw count; runs of 1 and 2 stand for 16 + raw and 32 + raw
// pixels without raw bytes.
constexpr std::array<uint16_t, 256> kSegments = [] {
    std::array<uint16_t, 256> table{};
    for (int c = 0; c < 256; ++c) {
        const int raw = c >> 4, run = c & 15;
        table[size_t(c)] = uint16_t(run == 1 || run == 2 ? (raw + 16 * run) << 4 : raw | (raw + run) << 4);
    }
    return table;
}();

// The deltas of sixteen bytes: v >> 1, inverted when v is odd.
inline uint8x16_t deltas(uint8x16_t v) { return veorq_u8(vshrq_n_u8(v, 1), vtstq_u8(v, vdupq_n_u8(1))); }

// A segment near the end of the input, read as the plain form reads it: the
// control byte (failing, after the reader's report, when it is not there),
// the overrun check (failing after its report), then the raw bytes, one by
// one when they are not all there (a missing one is reported and counts as
// 0), into codes.  The caller's reader is a copy; its variables stay in
// registers.
struct Last {
    int32_t raw, pixels;
    uint8_t value;
    bool ok;
};

template <bool kFirst>
[[gnu::noinline]] Last lastSegment(ui::streamIn &in, uint8_t *codes, int32_t missing, uint8_t value) {
    const bool there = in.left >= 1;
    const uint32_t segment = kSegments[in.readU8(kFirst ? Line::firstRowControl : Line::deltaRowControl)];
    Last last{int32_t(segment & 15), int32_t(segment >> 4), value, there};
    if (!there) return last;
    if (missing < last.pixels)
        return last.ok = ui::fail(kFirst ? Site::planarRowOverrun : Site::planarDeltaOverrun), last;
    const uint8_t *bytes = in.take(last.raw);
    for (int32_t i = 0; i < last.raw; ++i) {
        const uint8_t b = bytes != nullptr ? bytes[i] : in.readU8(kFirst ? Line::firstRowRaw : Line::deltaRowRaw);
        codes[i] = last.value = kFirst ? b : uint8_t((b >> 1) ^ (0u - (b & 1u)));
    }
    return last;
}

// Where the codes go: the next one, the end of its row, the row's pixels
// still missing and the rows left (from this one on).  The run's code is 0
// at the start of a row and then the last code stored: the next segment
// stores from the next code on.
struct Cursor {
    uint8_t *next, *rowEnd;
    int32_t missing, rows;

    uint8_t value(int32_t width) const { return missing == width ? 0 : next[-1]; }

    // After a segment: false when the last row is complete.
    bool more(int32_t width) {
        next = rowEnd - missing;
        if (missing != 0) return true;
        if (--rows == 0) return false;
        rowEnd += width, missing = width;
        return true;
    }
};

enum class Stop { rows, overrun, input };

// Segments whose control byte has sixteen readable bytes after it (at least
// the first one has), until the rows are complete or a segment overruns its
// row (Stop::overrun: its control byte consumed, its codes not stored).  A
// function of its own, so that the loop's state stays in registers.
template <bool kFirst>
[[gnu::noinline]] Stop segments(ui::streamIn &in, Cursor &at, int32_t width) {
    const uint8_t *q = in.ptr, *const limit = in.ptr + (in.left - 17);
    uint8_t *next = at.next, *rowEnd = at.rowEnd;
    int32_t missing = at.missing, rows = at.rows;
    uint8x16_t value = vdupq_n_u8(at.value(width));
    Stop stop = Stop::input;
    do {
        const uint32_t segment = kSegments[*q++];
        const int32_t raw = int32_t(segment & 15);
        if ((missing -= int32_t(segment >> 4)) < 0) {
            stop = Stop::overrun;
            break;
        }
        if (raw != 0) {
            const uint8x16_t bytes = vld1q_u8(q);
            vst1q_u8(next, kFirst ? bytes : deltas(bytes));
            q += raw, next += raw;
            value = vld1q_dup_u8(next - 1);
        }
        vst1q_u8(next, value), vst1q_u8(next + 16, value), vst1q_u8(next + 32, value);
        next = rowEnd - missing;
        if (missing == 0) {
            if (--rows == 0) {
                stop = Stop::rows;
                break;
            }
            rowEnd += width, missing = width, value = vdupq_n_u8(0);
        }
    } while (q <= limit);
    in.take(q - in.ptr);
    at = {next, rowEnd, missing, rows};
    return stop;
}

// Codes stored, and whether the rows were complete.
struct Gathered {
    int32_t codes;
    bool ok;
};

// The codes of `rows` rows of width pixels (more than 0) at codes: the
// plane's first row when kFirst, else rows of deltas.
template <bool kFirst>
Gathered gather(ui::streamIn &in, uint8_t *codes, int32_t width, int32_t rows) {
    Cursor at{codes, codes + width, width, rows};
    for (;;) {
        if (in.has(17)) {
            const Stop stop = segments<kFirst>(in, at, width);
            if (stop == Stop::rows) return {int32_t(at.next - codes), true};
            if (stop == Stop::overrun)
                return {int32_t(at.next - codes), ui::fail(kFirst ? Site::planarRowOverrun : Site::planarDeltaOverrun)};
            continue;
        }
        ui::streamIn reader = in;
        const Last last = lastSegment<kFirst>(reader, at.next, at.missing, at.value(width));
        in = reader;
        if (!last.ok) return {int32_t(at.next - codes), false};
        const uint8x16_t value = vdupq_n_u8(last.value);
        uint8_t *run = at.next + last.raw;
        vst1q_u8(run, value), vst1q_u8(run + 16, value), vst1q_u8(run + 32, value);
        at.missing -= last.pixels;
        if (!at.more(width)) return {int32_t(at.next - codes), true};
    }
}

// The codes of `rows` rows from row y of a plane on.
Gathered planeRows(ui::streamIn &in, uint8_t *codes, int32_t width, int32_t y, int32_t rows) {
    if (y > 0) return gather<false>(in, codes, width, rows);
    const Gathered first = gather<true>(in, codes, width, 1);
    if (!first.ok || rows == 1) return first;
    const Gathered rest = gather<false>(in, codes + width, width, rows - 1);
    return {first.codes + rest.codes, rest.ok};
}

// `count` codes of a band into byte P of the pixels from out on, a row of
// width pixels; the row above the band is complete unless `first`.  Whole
// rows column by column, the plain way below sixteen columns; then the codes
// of the last row when it is not whole.  The red plane also stores byte 3
// as 0.
template <int P>
void storePlane(uint8_t *out, const uint8_t *codes, int32_t width, int32_t count, bool first) {
    const int32_t rows = count / width;
    const ptrdiff_t stride = 4 * ptrdiff_t(width);
    const auto columns = [&](int32_t x) {
        uint8_t *p = out + 4 * x;
        const uint8_t *c = codes + x;
        uint8x16_t sum = first ? vdupq_n_u8(0) : vld4q_u8(p - stride).val[P];
        for (int32_t y = 0; y < rows; ++y, p += stride, c += width) {
            uint8x16x4_t v = vld4q_u8(p);
            v.val[P] = sum = vaddq_u8(sum, vld1q_u8(c));
            if constexpr (P == 2) v.val[3] = vdupq_n_u8(0);
            vst4q_u8(p, v);
        }
    };
    if (width >= 16) {
        int32_t x = 0;
        for (; x + 16 <= width; x += 16) columns(x);
        if (x < width) columns(width - 16);  // the last sixteen again: the same values where they overlap
    } else {
        for (int32_t x = 0; x < width; ++x) {
            uint8_t *p = out + 4 * x;
            uint8_t sum = first ? 0 : p[P - stride];
            for (int32_t y = 0; y < rows; ++y, p += stride) {
                p[P] = sum = uint8_t(sum + codes[y * width + x]);
                if constexpr (P == 2) p[3] = 0;
            }
        }
    }
    uint8_t *p = out + rows * stride;
    const bool above = !first || rows > 0;
    for (int32_t i = rows * width; i < count; ++i, p += 4) {
        p[P] = uint8_t(codes[i] + (above ? p[P - stride] : 0));
        if constexpr (P == 2) p[3] = 0;
    }
}

void storePlane(int position, uint8_t *out, const uint8_t *codes, int32_t width, int32_t count, bool first) {
    (position == 2 ? storePlane<2> : position == 1 ? storePlane<1> : storePlane<0>)(out, codes, width, count, first);
}

// Three complete planes of width x height codes from red on (then green and
// blue) into the pixels at out, whole.
void storePixels(uint8_t *out, const uint8_t *red, int32_t width, int32_t height) {
    const int32_t n = width * height;
    const auto columns = [&](int32_t x) {
        uint8_t *p = out + 4 * x;
        const uint8_t *r = red + x, *g = r + n, *b = g + n;
        uint8x16x4_t v{{vdupq_n_u8(0), vdupq_n_u8(0), vdupq_n_u8(0), vdupq_n_u8(0)}};  // blue, green, red, 0
        for (int32_t y = height; y > 0; --y, p += 4 * width, r += width, g += width, b += width) {
            v.val[0] = vaddq_u8(v.val[0], vld1q_u8(b));
            v.val[1] = vaddq_u8(v.val[1], vld1q_u8(g));
            v.val[2] = vaddq_u8(v.val[2], vld1q_u8(r));
            vst4q_u8(p, v);
        }
    };
    if (width >= 16) {
        int32_t x = 0;
        for (; x + 16 <= width; x += 16) columns(x);
        if (x < width) columns(width - 16);
        return;
    }
    for (int32_t x = 0; x < width; ++x) {
        uint8_t *p = out + 4 * x;
        uint8_t r = 0, g = 0, b = 0;
        for (int32_t i = x; i < n; i += width, p += 4 * width) {
            r = uint8_t(r + red[i]), g = uint8_t(g + red[i + n]), b = uint8_t(b + red[i + 2 * n]);
            p[0] = b, p[1] = g, p[2] = r, p[3] = 0;
        }
    }
}

// The planes of a bitmap whose three fit the buffer, each stored only once
// all are read; the planes complete.
int32_t wholePlanes(ui::streamIn &in, uint8_t *out, uint8_t *codes, int32_t width, int32_t height) {
    const int32_t n = width * height;
    for (int32_t k = 0; k < 3; ++k) {
        const Gathered plane = planeRows(in, codes + k * n, width, 0, height);
        if (!plane.ok) {
            for (int32_t j = 0; j < k; ++j) storePlane(2 - j, out, codes + j * n, width, n, true);
            storePlane(2 - k, out, codes + k * n, width, plane.codes, true);
            return k;
        }
    }
    storePixels(out, codes, width, height);
    return 3;
}

// The planes of a larger bitmap, plane by plane in bands of rows.
int32_t bandedPlanes(ui::streamIn &in, uint8_t *out, uint8_t *codes, int32_t width, int32_t height) {
    const int32_t band = kBuffer / width;
    for (int32_t k = 0; k < 3; ++k)
        for (int32_t y = 0; y < height; y += band) {
            const Gathered rows = planeRows(in, codes, width, y, std::min(band, height - y));
            storePlane(2 - k, out + 4 * ptrdiff_t(width) * y, codes, width, rows.codes, y == 0);
            if (!rows.ok) return k;
        }
    return 3;
}

// An alpha segment near the end of the input, read past as the plain form
// does: the control byte (false, after the reader's report, when it is not
// there), the overrun check (false after its report), the raw bytes (a skip
// that falls short is reported and dropped).
[[gnu::noinline]] bool skipLastSegment(ui::streamIn &in, int32_t &missing) {
    const bool there = in.left >= 1;
    const uint32_t segment = kSegments[in.readU8(Line::alphaControl)];
    if (!there) return false;
    if ((missing -= int32_t(segment >> 4)) < 0) return ui::fail(Site::alphaOverrun);
    in.skip(int32_t(segment & 15));
    return true;
}

}  // namespace

// The alpha plane, read past: while a control byte and fifteen bytes after
// it are there, one step per segment, from row to row.
bool ui::neon::skipPlane(streamIn &in, int32_t width, int32_t height) {
    if (width <= 0 || height <= 0) return true;
    streamIn stream = in;
    int32_t missing = width, rows = height;
    for (bool more = true; more;) {
        if (stream.has(16)) {
            const uint8_t *q = stream.ptr, *const limit = stream.ptr + (stream.left - 16);
            do {
                const uint32_t segment = kSegments[*q++];
                if ((missing -= int32_t(segment >> 4)) < 0) break;
                q += segment & 15;
                if (missing == 0) more = --rows != 0, missing = width;
            } while (more && q <= limit);
            stream.take(q - stream.ptr);
            if (missing < 0) return in = stream, ui::fail(Site::alphaOverrun);
            continue;
        }
        if (!skipLastSegment(stream, missing)) return in = stream, false;
        if (missing == 0) more = --rows != 0, missing = width;
    }
    in = stream;
    return true;
}

int32_t ui::neon::decodePlanes(streamIn &in, uint32_t *pixels, int32_t width, int32_t height) {
    if (width <= 0 || height <= 0) return 3;
    if (width > kBuffer) return ui::decodePlanes(in, pixels, width, height);
    streamIn stream = in;  // a copy the compiler can keep in registers
    uint8_t codes[kBuffer + kExcess];
    auto *out = reinterpret_cast<uint8_t *>(pixels);
    const int32_t done = 3 * int64_t(width) * height <= kBuffer ? wholePlanes(stream, out, codes, width, height)
                                                                 : bandedPlanes(stream, out, codes, width, height);
    in = stream;
    return done;
}

#endif
