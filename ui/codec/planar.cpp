// The planar bitmap decoder: a format header, an optional alpha plane (read
// past, never stored), then the red, green and blue planes, either raw
// (width x height bytes each) or run-length coded row by row, the rows after
// the first as deltas against the row above.
//
// Every pixel gets bits 24-31 zero: the raw path builds whole words, and the
// run-length path stores the red plane, which it decodes first, as whole
// words before green and blue fill in their bytes.
#include <cstring>

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
    return uint8_t(h ^ (0u - (v & 1u)));  // ~h when v is odd
}

// One sample into byte `shift` / 8 of a pixel word; kWholeWord stores it as
// the whole word (the first plane decoded, so that bits 24-31 become zero).
template <bool kWholeWord>
inline uint32_t withSample(uint32_t pixel, int shift, uint8_t value) {
    if constexpr (kWholeWord) return uint32_t(value) << shift;
    return (pixel & ~(0xFFu << shift)) | (uint32_t(value) << shift);
}

// The coded bytes of a row of a run-length plane are gathered before they
// are stored: raw bytes as they stand, a run as copies of the row's last raw
// byte (0 before the first), which stands for the run's value in the first
// row and for its delta in the others.  Storing them is then one loop over
// the pixels, sixteen per step, that the compiler can vectorise, and the
// segments cost a fixed-size copy and fill each instead of loops of 0 to 47
// steps.
constexpr int32_t kCodeCapacity = 1024;  // codes gathered before they are stored
constexpr int32_t kRawCopy = 16;         // a raw part (at most 15 bytes) is copied as 16
constexpr int32_t kRunFill = 48;         // a run (at most 47 pixels) is filled as 48
constexpr int32_t kSegmentRoom = kRawCopy + kRunFill;

// Stores n coded samples of the first row: the samples themselves.
template <bool kWholeWord>
void storeFirstRow(uint32_t *__restrict out, const uint8_t *__restrict codes, int32_t n, int shift) {
    int32_t i = 0;
    for (; i + 16 <= n; i += 16) {
        for (int k = 0; k < 16; ++k) out[i + k] = withSample<kWholeWord>(out[i + k], shift, codes[i + k]);
    }
    for (; i < n; ++i) out[i] = withSample<kWholeWord>(out[i], shift, codes[i]);
}

// Stores n coded samples of a later row: the sample above plus the delta.
template <bool kWholeWord>
void storeDeltaRow(uint32_t *__restrict out, const uint32_t *__restrict above, const uint8_t *__restrict codes,
                   int32_t n, int shift) {
    const auto sample = [&](int32_t i) { return uint8_t((above[i] >> shift) + deltaOf(codes[i])); };
    int32_t i = 0;
    for (; i + 16 <= n; i += 16) {
        for (int k = 0; k < 16; ++k) out[i + k] = withSample<kWholeWord>(out[i + k], shift, sample(i + k));
    }
    for (; i < n; ++i) out[i] = withSample<kWholeWord>(out[i], shift, sample(i));
}

// One row of a run-length plane into byte `position` of row[0 .. width - 1]
// (the row above, for deltas, is row - width).  A segment that overruns the
// row, or input that ends before the row is complete, fails it after the
// segments before have been stored; a raw byte that is missing inside a
// segment is reported and counts as 0.
template <bool kWholeWord, bool kFirstRow>
bool decodeRow(ui::streamIn &in, uint32_t *row, int32_t width, int position) {
    constexpr int kControlLine = kFirstRow ? kFirstRowControlLine : kDeltaRowControlLine;
    constexpr int kRawLine = kFirstRow ? kFirstRowRawLine : kDeltaRowRawLine;
    constexpr int kOverrunSite = kFirstRow ? kFirstRowOverrunSite : kDeltaRowOverrunSite;
    const int shift = 8 * position;
    uint8_t codes[kCodeCapacity];
    int32_t gathered = 0, stored = 0;
    uint32_t last = 0;  // the row's last raw byte, read from the input
    const auto store = [&] {
        uint32_t *out = row + stored;
        if constexpr (kFirstRow)
            storeFirstRow<kWholeWord>(out, codes, gathered, shift);
        else
            storeDeltaRow<kWholeWord>(out, out - width, codes, gathered, shift);
        stored += gathered;
        gathered = 0;
    };
    for (int32_t missing = width; missing > 0;) {
        if (gathered > kCodeCapacity - kSegmentRoom) store();
        const bool empty = in.left == 0;
        const Segment s = segmentOf(in.readU8("ui", kControlLine));
        if (empty) {
            store();
            return false;
        }
        missing -= s.raw + s.run;
        if (missing < 0) {
            store();
            ui::reportInternal("ui", kOverrunSite);
            return false;
        }
        uint8_t *code = codes + gathered;
        if (in.left >= kRawCopy) {
            // All sixteen bytes exist; those past the raw part are not used.
            std::memcpy(code, in.ptr, kRawCopy);
            if (s.raw > 0) last = in.ptr[s.raw - 1];
            in.ptr += s.raw;
            in.left -= s.raw;
        } else if (in.left >= s.raw) {
            std::memcpy(code, in.ptr, size_t(s.raw));
            if (s.raw > 0) last = in.ptr[s.raw - 1];
            in.ptr += s.raw;
            in.left -= s.raw;
        } else {
            for (int32_t i = 0; i < s.raw; ++i) last = code[i] = in.readU8("ui", kRawLine);
        }
        std::memset(code + s.raw, int(last), kRunFill);
        gathered += s.raw + s.run;
    }
    store();
    return true;
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
    return decodeRow<kWholeWord, true>(stream, row, width, position);
}

// Later rows add deltas to the row above; the last delta is the run delta.
template <bool kWholeWord>
bool rlecontext::planeDeltaRow(uint32_t *row, int position) {
    return decodeRow<kWholeWord, false>(stream, row, width, position);
}

}  // namespace ui
