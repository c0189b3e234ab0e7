// The planar bitmap decoder: a format header, an optional alpha plane (read
// past, never stored), then the red, green and blue planes, either raw
// (width x height bytes each) or run-length coded row by row, the rows after
// the first as deltas against the row above.
//
// Run-length planes are stored byte by byte straight into the output words,
// each plane into its own byte, so a plane that fails leaves the bytes of the
// planes after it as they were.  The red plane also writes byte 3 as 0, so
// that no stale byte of the output (a decode buffer on the stack, say)
// reaches the frame buffer; the raw path builds whole words.
#include <cstring>

#include "rlecontext.h"

namespace {

using ui::Line;
using ui::Site;

// Delta coding: h = v >> 1, negated (as ~h) when v is odd.
inline uint8_t deltaOf(uint8_t v) { return uint8_t((v >> 1) ^ (0u - (v & 1u))); }

// Stores one sample at p; the red plane stores it with a zero byte 3.
template <bool kRed>
inline void put(uint8_t *p, uint8_t v) {
    if constexpr (kRed) {
        const uint16_t pair = v;
        std::memcpy(p, &pair, 2);
    } else {
        *p = v;
    }
}

// Pixel i = red[i] << 16 | green[i] << 8 | blue[i].
void mergePlanes(uint32_t *__restrict out, const uint8_t *__restrict red, const uint8_t *__restrict green,
                 const uint8_t *__restrict blue, int32_t n) {
    for (uint32_t *end = out + n; out != end;) *out++ = uint32_t(*red++) << 16 | uint32_t(*green++) << 8 | *blue++;
}

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
        if (!RDP6_decompressPlane(2)) return ui::fail(Site::redPlane);
        if (!RDP6_decompressPlane(1)) return ui::fail(Site::greenPlane);
        if (!RDP6_decompressPlane(0)) return ui::fail(Site::bluePlane);
        dstPos = dstSize;
        return 1;
    }

    // One run-length plane into byte `position` (0 blue, 1 green, 2 red) of
    // every pixel: 1, or 0 when a segment overruns its row or the input runs
    // out before the plane is complete.
    int32_t RDP6_decompressPlane(int position) {
        uint8_t *row = reinterpret_cast<uint8_t *>(dst) + position;
        return position == 2 ? plane<true>(row) : plane<false>(row);
    }

private:
    template <bool kRed>
    bool plane(uint8_t *row) {
        for (int32_t y = 0; y < height; ++y, row += rowDelta)
            if (!(y == 0 ? planeRow<kRed, true>(row) : planeRow<kRed, false>(row))) return false;
        return true;
    }

    // A control byte: low nibble the run, high nibble the raw count; runs of
    // 1 and 2 stand for 16 + raw and 32 + raw pixels without raw bytes.  A
    // control byte that is not there fails the plane, after its report.
    bool segment(Line line, int32_t &raw, int32_t &run) {
        const bool there = stream.left >= 1;
        const uint8_t c = stream.readU8(line);
        raw = c >> 4;
        run = c & 0x0F;
        if (run == 1 || run == 2) {
            run = raw + 16 * run;
            raw = 0;
        }
        return there;
    }

    // One row into every fourth byte from out.  The first row holds the
    // values themselves, later rows deltas added to the byte above; the last
    // raw byte is the run's value (delta), 0 before the first.  A raw byte
    // that is missing is reported and counts as 0.
    template <bool kRed, bool kFirst>
    bool planeRow(uint8_t *out) {
        const uint8_t *above = kFirst ? out : out - rowDelta;
        uint8_t value = 0;
        const auto store = [&] {
            put<kRed>(out, kFirst ? value : uint8_t(*above + value));
            out += 4;
            above += 4;
        };
        const auto take = [&](uint8_t v) { value = kFirst ? v : deltaOf(v); };
        for (int32_t missing = width, raw, run; missing > 0;) {
            if (!segment(kFirst ? Line::firstRowControl : Line::deltaRowControl, raw, run)) return false;
            missing -= raw + run;
            if (missing < 0) return ui::fail(kFirst ? Site::planarRowOverrun : Site::planarDeltaOverrun);
            if (const uint8_t *bytes = stream.take(raw))
                for (int32_t i = 0; i < raw; ++i) take(bytes[i]), store();
            else
                for (int32_t i = 0; i < raw; ++i) take(stream.readU8(kFirst ? Line::firstRowRaw : Line::deltaRowRaw)), store();
            for (int32_t i = 0; i < run; ++i) store();
        }
        return true;
    }

    // A raw-byte skip that falls short is reported by the reader and dropped;
    // input that runs out fails the plane, as does a segment past its row.
    bool skipAlphaPlane() {
        for (int32_t y = 0; y < height; ++y) {
            for (int32_t missing = width, raw, run; missing > 0;) {
                if (!segment(Line::alphaControl, raw, run)) return false;
                missing -= raw + run;
                if (missing < 0) return ui::fail(Site::alphaOverrun);
                stream.skip(raw);
            }
        }
        return true;
    }

    // Three planes of n bytes (after the alpha plane's n, not checked on
    // their own); what follows them is ignored.
    int32_t rawPlanes(bool alpha) {
        const int32_t n = dstSize / 4;
        const uint8_t *planes = stream.take((alpha ? 4 : 3) * int64_t(n));
        if (planes == nullptr) return ui::fail(Site::rawPlanes);
        const uint8_t *red = planes + (alpha ? n : 0);
        mergePlanes(dst, red, red + n, red + 2 * n, n);
        dstPos = dstSize;
        return 1;
    }
};

}  // namespace

int32_t ui::decodePlanar(rlecontext &context) {
    PlanarDecoder decoder(context);
    const int32_t result = decoder.decode();
    context = decoder;
    return result;
}
