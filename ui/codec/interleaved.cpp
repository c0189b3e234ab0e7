// The 24-bit interleaved run-length decoder.
//
// Each order is produced in one pass straight into the output.  An order that
// would reach past the last output pixel stores only the pixels that fit but
// consumes its input and advances dstPos as if the output went on, so that its
// input reads (and their shortage reports) and the final overrun report are
// those of the whole order.
#include <algorithm>
#include <cstring>

#include "../ui.h"
#include "pixelRows.h"
#include "rlecontext.h"

namespace {

constexpr int kOverrunSite = 341;
constexpr int kColourImageSite = 534;
constexpr int kUnknownHeaderSite = 1108;

// Caller lines of the stream reads.
constexpr int kRegularExtLine = 358;
constexpr int kRegularFgbgExtLine = 372;
constexpr int kLiteExtLine = 382;
constexpr int kLiteFgbgExtLine = 396;
constexpr int kMegaRunLine = 401;
constexpr int kColourLines[3] = {409, 410, 411};
constexpr int kMaskFirstRowLine = 555;
constexpr int kMaskFirstRowPartLine = 575;
constexpr int kMaskLowerRowLine = 589;
constexpr int kMaskLowerRowPartLine = 611;

constexpr uint32_t kWhite = 0xFFFFFF;
constexpr uint32_t kBlack = 0;

// All ones when bit k of mask is set, else 0.
inline uint32_t bitAsMask(unsigned mask, int k) { return 0u - ((mask >> k) & 1u); }

// Eight pixels from one bitmask byte, bit 0 first.  First row: set bits give
// fg, clear bits black.  Lower rows: the pixel above, XOR fg for set bits.
inline void maskEightFirstRow(uint32_t *p, unsigned mask, uint32_t fg) {
#pragma GCC unroll 8
    for (int k = 0; k < 8; ++k) p[k] = fg & bitAsMask(mask, k);
}
inline void maskEightLowerRow(uint32_t *p, unsigned mask, uint32_t fg, int32_t width) {
    const uint32_t *above = p - width;
#pragma GCC unroll 8
    for (int k = 0; k < 8; ++k) p[k] = above[k] ^ (fg & bitAsMask(mask, k));
}

}  // namespace

namespace ui {

int32_t rlecontext::decodeInterleaved() {
    while (stream.left != 0 && dstPos < dstSize) {
        const uint8_t header = *stream.ptr;  // left != 0: the byte is there
        ++stream.ptr;
        --stream.left;
        if (!runOrder(header)) {
            report("ui", kUnknownHeaderSite, "Unknown header 0x%02x. Sync lost?", int(header));
            return 0;
        }
    }
    if (dstPos > dstSize) report("ui", kOverrunSite, "%d > %d!", dstPos, dstSize);
    return 1;
}

// Reads the rest of one order and produces its pixels; false for a header
// that names no order.  Field order after the header: run length, colours,
// then bitmask bytes or raw pixels.
bool rlecontext::runOrder(uint8_t header) {
    if (header < 0xC0) {
        const int32_t field = header & 0x1F;
        switch (header >> 5) {
            case 0:  // REGULAR_BG_RUN
                runLength = regularRun(field);
                backgroundRun();
                return true;
            case 1:  // REGULAR_FG_RUN
                runLength = regularRun(field);
                foregroundRun();
                break;
            case 2:  // REGULAR_FGBG_IMAGE
                runLength = field != 0 ? field * 8 : stream.readU8("ui", kRegularFgbgExtLine) + 1;
                process_FGBG_IMAGE();
                break;
            case 3:  // REGULAR_COLOR_RUN
                runLength = regularRun(field);
                colourRun(readColour());
                break;
            case 4:  // REGULAR_COLOR_IMAGE
                runLength = regularRun(field);
                process_COLOR_IMAGE();
                break;
            default:
                return false;
        }
    } else if (header < 0xF0) {
        const int32_t field = header & 0x0F;
        switch (header >> 4) {
            case 0xC:  // LITE_SET_FG_FG_RUN
                runLength = liteRun(field);
                fgPel = readColour();
                foregroundRun();
                break;
            case 0xD:  // LITE_SET_FG_FGBG_IMAGE
                runLength = field != 0 ? field * 8 : stream.readU8("ui", kLiteFgbgExtLine) + 1;
                fgPel = readColour();
                process_FGBG_IMAGE();
                break;
            default: {  // 0xE: LITE_DITHERED_RUN
                runLength = liteRun(field);
                const uint32_t first = readColour();
                const uint32_t second = readColour();
                ditheredRun(first, second);
            }
        }
    } else {
        switch (header) {
            case 0xF0:  // MEGA_MEGA_BG_RUN
                runLength = megaRun();
                backgroundRun();
                return true;
            case 0xF1:  // MEGA_MEGA_FG_RUN
                runLength = megaRun();
                foregroundRun();
                break;
            case 0xF2:  // MEGA_MEGA_FGBG_IMAGE
                runLength = megaRun();
                process_FGBG_IMAGE();
                break;
            case 0xF3:  // MEGA_MEGA_COLOR_RUN
                runLength = megaRun();
                colourRun(readColour());
                break;
            case 0xF4:  // MEGA_MEGA_COLOR_IMAGE
                runLength = megaRun();
                process_COLOR_IMAGE();
                break;
            case 0xF6:  // MEGA_MEGA_SET_FG_RUN
                runLength = megaRun();
                fgPel = readColour();
                foregroundRun();
                break;
            case 0xF7:  // MEGA_MEGA_SET_FGBG_IMAGE
                runLength = megaRun();
                fgPel = readColour();
                process_FGBG_IMAGE();
                break;
            case 0xF8: {  // MEGA_MEGA_DITHERED_RUN
                runLength = megaRun();
                const uint32_t first = readColour();
                const uint32_t second = readColour();
                ditheredRun(first, second);
                break;
            }
            case 0xF9:  // SPECIAL_FGBG_1
                specialImage(0x03);
                break;
            case 0xFA:  // SPECIAL_FGBG_2
                specialImage(0x05);
                break;
            case 0xFD:  // WHITE
                singlePixel(kWhite);
                break;
            case 0xFE:  // BLACK
                singlePixel(kBlack);
                break;
            default:
                return false;
        }
    }
    insertFgPel = false;  // every order but the background runs
    return true;
}

// A zero run field means the run follows as one byte, plus the form's offset.
int32_t rlecontext::regularRun(int32_t field) {
    return field != 0 ? field : stream.readU8("ui", kRegularExtLine) + 32;
}
int32_t rlecontext::liteRun(int32_t field) { return field != 0 ? field : stream.readU8("ui", kLiteExtLine) + 16; }
int32_t rlecontext::megaRun() { return stream.readU16("ui", kMegaRunLine); }

// Three bytes, first lowest; a missing byte counts as 0.
uint32_t rlecontext::readColour() {
    const uint32_t b0 = stream.readU8("ui", kColourLines[0]);
    const uint32_t b1 = stream.readU8("ui", kColourLines[1]);
    const uint32_t b2 = stream.readU8("ui", kColourLines[2]);
    return b0 | (b1 << 8) | (b2 << 16);
}

// Black in the first row, copies of the pixel above below it.  After a
// background run (or at the very start below the first row, once) the next
// background run starts with one foreground pixel.
void rlecontext::backgroundRun() {
    const bool firstRow = inFirstRow();
    bool insert = insertFgPel;
    if (!firstRow && suppressInsert) {
        suppressInsert = false;
        insert = false;
    }
    uint32_t *p = out();
    int32_t space = room();  // at least 1 inside the main loop
    int32_t rest = runLength;
    int32_t produced = rest;
    if (insert) {
        *p = firstRow ? fgPel : p[-width] ^ fgPel;
        ++p;
        --space;
        rest = std::max(rest - 1, 0);
        produced = rest + 1;  // a run of 0 still produces the inserted pixel
    }
    int32_t n = std::min(rest, space);
    if (firstRow) {
        std::fill_n(p, n, kBlack);
    } else {
        // Row by row: a run longer than a row repeats the rows it has just
        // written, and no chunk overlaps its source.
        while (n > 0) {
            const int32_t chunk = std::min(n, width);
            std::memcpy(p, p - width, 4 * size_t(chunk));
            p += chunk;
            n -= chunk;
        }
    }
    dstPos += 4 * produced;
    insertFgPel = true;
}

// fgPel in the first row, the pixel above XOR fgPel below it.
void rlecontext::foregroundRun() {
    uint32_t *p = out();
    const int32_t n = std::min(runLength, room());
    if (inFirstRow()) {
        std::fill_n(p, n, fgPel);
    } else {
        const uint32_t fg = fgPel;
        for (int32_t i = 0; i < n; ++i) p[i] = p[i - width] ^ fg;
    }
    dstPos += 4 * runLength;
}

void rlecontext::colourRun(uint32_t colour) {
    std::fill_n(out(), std::min(runLength, room()), colour);
    dstPos += 4 * runLength;
}

// runLength pairs: first, second, first, second, ...
void rlecontext::ditheredRun(uint32_t first, uint32_t second) {
    uint32_t *p = out();
    const int32_t pixels = 2 * runLength;
    const int32_t n = std::min(pixels, room());
    int32_t i = 0;
    for (; i + 2 <= n; i += 2) {
        p[i] = first;
        p[i + 1] = second;
    }
    if (i < n) p[i] = first;
    dstPos += 4 * pixels;
}

// count (0 to 8) pixels from the low bits of mask.
void rlecontext::bitmaskPixels(uint32_t *p, unsigned mask, int32_t count, bool firstRow) const {
    if (count == 8) {
        if (firstRow)
            maskEightFirstRow(p, mask, fgPel);
        else
            maskEightLowerRow(p, mask, fgPel, width);
        return;
    }
    const uint32_t fg = fgPel;
    const int32_t w = width;
    for (int32_t k = 0; k < count; ++k) {
        const uint32_t bit = fg & bitAsMask(mask, k);
        p[k] = firstRow ? bit : p[k - w] ^ bit;
    }
}

// One bitmask byte per eight pixels, then one for the last 1 to 7.  Bytes
// for pixels past the end of the output are still read.
void rlecontext::process_FGBG_IMAGE() {
    const bool firstRow = inFirstRow();
    const int fullLine = firstRow ? kMaskFirstRowLine : kMaskLowerRowLine;
    const int partLine = firstRow ? kMaskFirstRowPartLine : kMaskLowerRowPartLine;
    uint32_t *p = out();
    int32_t space = room();
    int32_t todo = runLength;
    for (; todo >= 8; todo -= 8) {
        const unsigned mask = stream.readU8("ui", fullLine);
        const int32_t n = std::min(space, int32_t(8));
        bitmaskPixels(p, mask, n, firstRow);
        p += n;
        space -= n;
    }
    if (todo > 0) {
        const unsigned mask = stream.readU8("ui", partLine);
        bitmaskPixels(p, mask, std::min(space, todo), firstRow);
    }
    dstPos += 4 * runLength;
}

// Raw pixels converted straight out of the input block.  A block that is not
// all there is reported and skipped: nothing is written, nothing consumed.
void rlecontext::process_COLOR_IMAGE() {
    const int32_t bytesPerPixel = settings.sourceBytesPerPixel;  // at least 3
    const int64_t bytes = int64_t(runLength) * bytesPerPixel;
    const uint8_t *block = stream.getBlock(bytes > INT32_MAX ? INT32_MAX : int32_t(bytes));
    if (block == nullptr) {
        reportInternal("ui", kColourImageSite);
        return;
    }
    convertPixels(out(), block, std::min(runLength, room()), bytesPerPixel);
    dstPos += 4 * runLength;
}

void rlecontext::specialImage(unsigned mask) {
    bitmaskPixels(out(), mask, std::min(room(), int32_t(8)), inFirstRow());
    dstPos += 4 * 8;
}

void rlecontext::singlePixel(uint32_t colour) {
    *out() = colour;
    dstPos += 4;
}

}  // namespace ui
