// The planar bitmap decoder: a format header, an optional alpha plane (read
// past, never stored), then the red, green and blue planes, either raw
// (width x height bytes each) or run-length coded row by row, the rows after
// the first as deltas against the row above.
//
// A run-length plane writes its own byte of every output word and nothing
// else, so a plane that fails leaves the bytes of the planes after it as they
// were.  The red plane also writes byte 3 as 0, so that no stale byte of the
// output (a decode buffer on the stack, say) reaches the frame buffer; the
// raw path builds whole words.
//
// Each sample goes straight into its byte: fewest instructions on ARM without
// NEON.  x86 runs the gathering twin in planarGather.h, NEON ui/neon's.
#include <cstring>

#include "../core/rows.h"
#include "planarGather.h"

namespace {

using ui::Line;
using ui::Site;

// Delta coding: h = v >> 1, negated (as ~h) when v is odd.  Only the low
// byte counts: the sum with the byte above is stored as a byte.
inline uint32_t deltaOf(uint32_t v) { return (v >> 1) ^ (0u - (v & 1u)); }

// Stores one sample at p; the red plane stores it with a zero byte 3.
template <bool kRed>
inline void put(uint8_t *p, uint32_t v) {
    if constexpr (kRed) {
        const uint16_t pair = uint8_t(v);
        std::memcpy(p, &pair, 2);
    } else {
        *p = uint8_t(v);
    }
}

// Pixel i = red[i] << 16 | green[i] << 8 | blue[i].  Copies 1 of this and of
// the decoder are the plain row functions: the decoder's own stay called once.
template <int kCopy = 0>
[[gnu::no_icf]] void mergePlanes(uint32_t *__restrict out, const uint8_t *__restrict red,
                                 const uint8_t *__restrict green, const uint8_t *__restrict blue, int32_t n) {
    int32_t i = 0;
    for (; i + 16 <= n; i += 16)
        for (int k = 0; k < 16; ++k) out[i + k] = uint32_t(red[i + k]) << 16 | uint32_t(green[i + k]) << 8 | blue[i + k];
    for (; i < n; ++i) out[i] = uint32_t(red[i]) << 16 | uint32_t(green[i]) << 8 | blue[i];
}

template <int kCopy = 0>
class PlanarDecoder : public ui::rlecontext {
public:
    explicit PlanarDecoder(const rlecontext &c) : rlecontext(c) {}

    int32_t decode() {
        uint8_t header = 0;
        stream.next(header);  // the caller refused empty data
        if ((header & 0xCF) != 0) return ui::fail(Site::planarHeader);
        const bool alpha = (header & 0x20) == 0;
        if ((header & 0x10) == 0) return rawPlanes(alpha);
        if (alpha && !skipAlphaPlane()) return ui::fail(Site::alphaPlane);
        if constexpr (ui::kNeonRows && kCopy == 0) {
            const int32_t done = ui::rows::decodePlanes(stream, dst, width, height);
            if (done < 3) return ui::fail(done == 0 ? Site::redPlane : done == 1 ? Site::greenPlane : Site::bluePlane);
        } else {
            if (!RDP6_decompressPlane(2)) return ui::fail(Site::redPlane);
            if (!RDP6_decompressPlane(1)) return ui::fail(Site::greenPlane);
            if (!RDP6_decompressPlane(0)) return ui::fail(Site::bluePlane);
        }
        dstPos = dstSize;
        return 1;
    }

    // One run-length plane into byte `position` (0 blue, 1 green, 2 red) of
    // every pixel: 1, or 0 when a segment overruns its row or the input runs
    // out before the plane is complete.  The rows work on a copy of the
    // reader, which the compiler can keep in registers.
    int32_t RDP6_decompressPlane(int position) {
        ui::streamIn in = stream;
        bool ok = true;
        for (int32_t y = 0; ok && y < height; ++y)
            ok = position == 2 ? row<true>(in, y, 2) : row<false>(in, y, position);
        stream = in;
        return ok;
    }

    // A raw-byte skip that falls short is reported by the reader and dropped;
    // input that runs out fails the plane, as does a segment past its row.
    bool skipAlphaPlane() {
        if constexpr (ui::kNeonRows && kCopy == 0) return ui::rows::skipPlane(stream, width, height);
        for (int32_t y = 0; y < height; ++y) {
            for (int32_t missing = width, raw, run; missing > 0;) {
                if (!segment(stream, Line::alphaControl, raw, run)) return false;
                missing -= raw + run;
                if (missing < 0) return ui::fail(Site::alphaOverrun);
                stream.skip(raw);
            }
        }
        return true;
    }

private:
    template <bool kRed>
    bool row(ui::streamIn &in, int32_t y, int position) const {
        uint32_t *words = dst + y * width;  // below dstSize / 4
        if constexpr (ui::kGatherPlanarRows) {
            const auto read = [](ui::streamIn &s, Line line, int32_t &raw, int32_t &run) {
                return segment(s, line, raw, run);
            };
            return y == 0 ? ui::gatherRow<true>(in, words, width, 8 * position, read)
                          : ui::gatherRow<false>(in, words, width, 8 * position, read);
        }
        uint8_t *bytes = reinterpret_cast<uint8_t *>(words) + position;
        return y == 0 ? planeRow<kRed, true>(in, bytes) : planeRow<kRed, false>(in, bytes);
    }

    // A control byte: low nibble the run, high nibble the raw count; runs of
    // 1 and 2 stand for 16 + raw and 32 + raw pixels without raw bytes.  A
    // control byte that is not there fails the plane, after its report.
    static bool segment(ui::streamIn &in, Line line, int32_t &raw, int32_t &run) {
        const bool there = in.left >= 1;
        const uint8_t c = in.readU8(line);
        raw = c >> 4, run = c & 0x0F;
        if (run == 1 || run == 2) run = raw + 16 * run, raw = 0;
        return there;
    }

    // One row into every fourth byte from out.  The first row holds the
    // values themselves, later rows deltas added to the byte above; the last
    // raw byte is the run's value (delta), 0 before the first.  A raw byte
    // that is missing is reported and counts as 0.
    template <bool kRed, bool kFirst>
    bool planeRow(ui::streamIn &in, uint8_t *out) const {
        const ptrdiff_t above = -ptrdiff_t(rowDelta);  // the row before, for deltas
        uint32_t value = 0;
        for (int32_t missing = width, raw, run; missing > 0;) {
            if (!segment(in, kFirst ? Line::firstRowControl : Line::deltaRowControl, raw, run)) return false;
            missing -= raw + run;
            if (missing < 0) return ui::fail(kFirst ? Site::planarRowOverrun : Site::planarDeltaOverrun);
            if (const uint8_t *bytes = in.take(raw))
                out = storeRaw<kRed, kFirst>(out, above, bytes, raw, value);
            else
                out = storeShort<kRed, kFirst>(in, out, above, raw, value);  // copies: see storeShort
            out = storeRun<kRed, kFirst>(out, above, run, value);
        }
        return true;
    }

    template <bool kRed, bool kFirst>
    static uint8_t *storeRaw(uint8_t *__restrict out, ptrdiff_t above, const uint8_t *__restrict bytes, int32_t n,
                             uint32_t &value) {
        uint32_t v = value;
        for (const uint8_t *end = bytes + n; bytes != end; out += 4) {
            v = kFirst ? *bytes++ : deltaOf(*bytes++);
            put<kRed>(out, kFirst ? v : out[above] + v);
        }
        value = v;
        return out;
    }

    // Four samples per step: cores without vector units share the loop's own
    // instructions among them.
    template <bool kRed, bool kFirst>
    static uint8_t *storeRun(uint8_t *out, ptrdiff_t above, int32_t n, uint32_t value) {
        const auto one = [&](uint8_t *p) { put<kRed>(p, kFirst ? value : p[above] + value); };
        for (uint8_t *end = out + 16 * (n >> 2); out != end; out += 16) one(out), one(out + 4), one(out + 8), one(out + 12);
        for (uint8_t *end = out + 4 * (n & 3); out != end; out += 4) one(out);
        return out;
    }

    // Raw bytes that are not all there: each one read on its own, reported
    // when it is missing.  Reader and value go through copies, so that the
    // row's own stay in registers.
    template <bool kRed, bool kFirst>
    static uint8_t *storeShort(ui::streamIn &in, uint8_t *out, ptrdiff_t above, int32_t n, uint32_t &value) {
        ui::streamIn copy = in;
        uint32_t v = value;
        out = storeShortCold<kRed, kFirst>(copy, out, above, n, v);
        in = copy;
        value = v;
        return out;
    }

    template <bool kRed, bool kFirst>
    [[gnu::noinline, gnu::no_icf]] static uint8_t *storeShortCold(ui::streamIn &in, uint8_t *out, ptrdiff_t above,
                                                                  int32_t n, uint32_t &value) {
        for (int32_t i = 0; i < n; ++i) {
            const uint8_t b = in.readU8(kFirst ? Line::firstRowRaw : Line::deltaRowRaw);
            out = storeRaw<kRed, kFirst>(out, above, &b, 1, value);
        }
        return out;
    }

    // Three planes of n bytes (after the alpha plane's n, not checked on
    // their own); what follows them is ignored.
    int32_t rawPlanes(bool alpha) {
        const int32_t n = dstSize / 4;
        const uint8_t *planes = stream.take((alpha ? 4 : 3) * int64_t(n));
        if (planes == nullptr) return ui::fail(Site::rawPlanes);
        const uint8_t *red = planes + (alpha ? n : 0);
        (ui::kNeonRows ? ui::rows::mergePlanes : mergePlanes<>)(dst, red, red + n, red + 2 * n, n);
        dstPos = dstSize;
        return 1;
    }
};

}  // namespace

// The plain forms as row functions (rows.h), the twins of the NEON ones.
void ui::mergePlanes(uint32_t *out, const uint8_t *red, const uint8_t *green, const uint8_t *blue, int32_t n) {
    ::mergePlanes<1>(out, red, green, blue, n);
}

int32_t ui::decodePlanes(streamIn &in, uint32_t *pixels, int32_t width, int32_t height) {
    PlanarDecoder<1> planes(rlecontext(width, height, pixels, in.ptr, in.left));
    int32_t done = 0;
    while (done < 3 && planes.RDP6_decompressPlane(2 - done)) ++done;
    in = planes.stream;
    return done;
}

bool ui::skipPlane(streamIn &in, int32_t width, int32_t height) {
    PlanarDecoder<1> plane(rlecontext(width, height, nullptr, in.ptr, in.left));
    const bool ok = plane.skipAlphaPlane();
    in = plane.stream;
    return ok;
}

int32_t ui::decodePlanar(rlecontext &context) {
    PlanarDecoder decoder(context);
    const int32_t result = decoder.decode();
    context = decoder;
    return result;
}
