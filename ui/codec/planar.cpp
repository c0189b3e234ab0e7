// The planar bitmap decoder: a format header, an optional alpha plane (read
// past, never stored), then the red, green and blue planes, either raw
// (width x height bytes each) or run-length coded row by row, the rows after
// the first as deltas against the row above.
//
// Every pixel gets bits 24-31 zero: the raw path builds whole words, and the
// run-length path stores the red plane, which it decodes first, as whole
// words before green and blue fill in their bytes.
#include <bit>

#include "../ui.h"
#include "rlecontext.h"

namespace {

constexpr int kHeaderSite = 929;
constexpr int kAlphaPlaneSite = 939;
constexpr int kRedPlaneSite = 944;
constexpr int kGreenPlaneSite = 948;
constexpr int kBluePlaneSite = 952;
constexpr int kRawPlanesSite = 973;
constexpr int kAlphaOverrunSite = 764;
constexpr int kFirstRowOverrunSite = 812;
constexpr int kDeltaRowOverrunSite = 865;

// Caller lines of the stream reads.
constexpr int kAlphaControlLine = 746;
constexpr int kFirstRowControlLine = 794;
constexpr int kFirstRowRawLine = 818;
constexpr int kDeltaRowControlLine = 847;
constexpr int kDeltaRowRawLine = 871;

constexpr uint8_t kRefusedHeaderBits = 0xCF;  // colour loss, subsampling, reserved
constexpr uint8_t kRleBit = 0x10;
constexpr uint8_t kNoAlphaBit = 0x20;

// One run-length segment: raw bytes first, then a run.
struct Segment {
    int32_t raw;
    int32_t run;
};

// Low nibble the run, high nibble the raw count; runs of 1 and 2 stand for
// long runs of 16 + raw and 32 + raw pixels without raw bytes.
inline Segment segmentOf(uint8_t control) {
    const int32_t run = control & 0x0F, raw = control >> 4;
    if (run == 1) return {0, raw + 16};
    if (run == 2) return {0, raw + 32};
    return {raw, run};
}

// Delta coding of the rows after the first: h = v >> 1, negated (as ~h) when
// v is odd; added to the byte above modulo 256.
inline uint8_t deltaOf(uint8_t v) {
    const uint8_t h = uint8_t(v >> 1);
    return (v & 1) != 0 ? uint8_t(~h) : h;
}

// Byte `position` of a pixel word (position 0 = bits 0-7).
inline uint8_t sampleOf(const uint32_t *pixel, int position) { return uint8_t(*pixel >> (8 * position)); }

template <bool kWholeWord>
inline void storeSample(uint32_t *pixel, int position, uint8_t value) {
    if constexpr (kWholeWord) {
        *pixel = uint32_t(value) << (8 * position);
    } else {
        const int index = std::endian::native == std::endian::little ? position : 3 - position;
        reinterpret_cast<uint8_t *>(pixel)[index] = value;
    }
}

// Pixel i = red[i] << 16 | green[i] << 8 | blue[i], sixteen per step.
void mergePlanes(uint32_t *__restrict out, const uint8_t *__restrict red, const uint8_t *__restrict green,
                 const uint8_t *__restrict blue, int32_t count) {
    int32_t i = 0;
    for (; i + 16 <= count; i += 16) {
        for (int k = 0; k < 16; ++k)
            out[i + k] = (uint32_t(red[i + k]) << 16) | (uint32_t(green[i + k]) << 8) | blue[i + k];
    }
    for (; i < count; ++i) out[i] = (uint32_t(red[i]) << 16) | (uint32_t(green[i]) << 8) | blue[i];
}

}  // namespace

namespace ui {

int32_t rlecontext::decodePlanar() {
    const uint8_t header = *stream.ptr;  // the caller refused empty data
    ++stream.ptr;
    --stream.left;
    if ((header & kRefusedHeaderBits) != 0) {
        reportInternal("ui", kHeaderSite);
        return 0;
    }
    const bool alpha = (header & kNoAlphaBit) == 0;
    if ((header & kRleBit) == 0) return rawPlanes(alpha);

    if (alpha && !skipAlphaPlane()) {
        reportInternal("ui", kAlphaPlaneSite);
        return 0;
    }
    if (decodePlane<true>(2) == 0) {
        reportInternal("ui", kRedPlaneSite);
        return 0;
    }
    if (RDP6_decompressPlane(1) == 0) {
        reportInternal("ui", kGreenPlaneSite);
        return 0;
    }
    if (RDP6_decompressPlane(0) == 0) {
        reportInternal("ui", kBluePlaneSite);
        return 0;
    }
    dstPos = dstSize;
    return 1;
}

// Three (after the alpha plane, four) planes of n bytes; what follows them
// is ignored.
int32_t rlecontext::rawPlanes(bool alpha) {
    const int32_t n = dstSize / 4;
    const int32_t alphaBytes = alpha ? n : 0;
    if (int64_t(stream.left) - alphaBytes < 3 * int64_t(n)) {
        reportInternal("ui", kRawPlanesSite);
        return 0;
    }
    const uint8_t *red = stream.ptr + alphaBytes;
    mergePlanes(dst, red, red + n, red + 2 * size_t(n), n);
    dstPos = dstSize;
    return 1;
}

// Reads past a run-length alpha plane.  A raw-byte skip that falls short is
// reported by the reader and dropped; input that runs out before the plane is
// complete fails it, as does a segment past the end of its row.
bool rlecontext::skipAlphaPlane() {
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t missing = width; missing > 0;) {
            const bool empty = stream.left == 0;
            const Segment s = segmentOf(stream.readU8("ui", kAlphaControlLine));
            if (empty) return false;
            missing -= s.raw + s.run;
            if (missing < 0) {
                reportInternal("ui", kAlphaOverrunSite);
                return false;
            }
            stream.skip(s.raw);
        }
    }
    return true;
}

int32_t rlecontext::RDP6_decompressPlane(int position) { return decodePlane<false>(position); }

// One run-length plane, row by row.  kWholeWord stores the sample as the
// whole pixel word (the first plane decoded) instead of its byte alone.
template <bool kWholeWord>
int32_t rlecontext::decodePlane(int position) {
    uint32_t *row = dst;
    if (!planeFirstRow<kWholeWord>(row, position)) return 0;
    for (int32_t y = 1; y < height; ++y) {
        row += width;
        if (!planeDeltaRow<kWholeWord>(row, position)) return 0;
    }
    return 1;
}

// The first row holds absolute values; the last raw byte is the run value.
template <bool kWholeWord>
bool rlecontext::planeFirstRow(uint32_t *row, int position) {
    uint8_t value = 0;
    uint32_t *p = row;
    for (int32_t missing = width; missing > 0;) {
        const bool empty = stream.left == 0;
        const Segment s = segmentOf(stream.readU8("ui", kFirstRowControlLine));
        if (empty) return false;
        missing -= s.raw + s.run;
        if (missing < 0) {
            reportInternal("ui", kFirstRowOverrunSite);
            return false;
        }
        if (stream.left >= s.raw) {
            const uint8_t *raw = stream.ptr;
            stream.ptr += s.raw;
            stream.left -= s.raw;
            for (int32_t i = 0; i < s.raw; ++i) storeSample<kWholeWord>(p++, position, value = raw[i]);
        } else {
            // Some raw bytes missing: each is reported and counts as 0.
            for (int32_t i = 0; i < s.raw; ++i)
                storeSample<kWholeWord>(p++, position, value = stream.readU8("ui", kFirstRowRawLine));
        }
        for (int32_t i = 0; i < s.run; ++i) storeSample<kWholeWord>(p++, position, value);
    }
    return true;
}

// Later rows add deltas to the row above; the last delta is the run delta.
template <bool kWholeWord>
bool rlecontext::planeDeltaRow(uint32_t *row, int position) {
    uint8_t delta = 0;
    uint32_t *p = row;
    const int32_t w = width;
    for (int32_t missing = w; missing > 0;) {
        const bool empty = stream.left == 0;
        const Segment s = segmentOf(stream.readU8("ui", kDeltaRowControlLine));
        if (empty) return false;
        missing -= s.raw + s.run;
        if (missing < 0) {
            reportInternal("ui", kDeltaRowOverrunSite);
            return false;
        }
        if (stream.left >= s.raw) {
            const uint8_t *raw = stream.ptr;
            stream.ptr += s.raw;
            stream.left -= s.raw;
            for (int32_t i = 0; i < s.raw; ++i, ++p) {
                delta = deltaOf(raw[i]);
                storeSample<kWholeWord>(p, position, uint8_t(sampleOf(p - w, position) + delta));
            }
        } else {
            for (int32_t i = 0; i < s.raw; ++i, ++p) {
                delta = deltaOf(stream.readU8("ui", kDeltaRowRawLine));
                storeSample<kWholeWord>(p, position, uint8_t(sampleOf(p - w, position) + delta));
            }
        }
        for (int32_t i = 0; i < s.run; ++i, ++p)
            storeSample<kWholeWord>(p, position, uint8_t(sampleOf(p - w, position) + delta));
    }
    return true;
}

}  // namespace ui
