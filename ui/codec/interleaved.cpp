// The 24-bit interleaved run-length decoder.
//
// Each order is produced in one pass straight into the output.  An order that
// would reach past the last output pixel stores only the pixels that fit but
// consumes its input and advances dstPos as if the output went on, so that its
// reads (and their shortage reports) and the final overrun report are those
// of the whole order.
#include <algorithm>
#include <cstring>

#include "../core/rows.h"
#include "rlecontext.h"

namespace {

using ui::Line;

enum class Kind {
    background, foreground, image, colourRun, colourImage, dithered, setForeground, setImage,
    special1, special2, white, black, unknown
};

// All ones when bit k of mask is set.
inline uint32_t bitMask(unsigned mask, int k) { return 0u - ((mask >> k) & 1u); }

class InterleavedDecoder : public ui::rlecontext {
public:
    explicit InterleavedDecoder(const rlecontext &c) : rlecontext(c) {}

    int32_t decode() {
        uint8_t header;
        while (dstPos < dstSize && stream.next(header)) {
            if (!runOrder(header)) return ui::report(ui::Site::unknownHeader, int(header)), 0;
        }
        if (dstPos > dstSize) ui::report(ui::Site::overrun, dstPos, dstSize);
        return 1;
    }

    // One foreground/background image of runLength pixels at dstPos: a
    // bitmask byte per eight pixels, bit 0 first, then one for the last 1-7.
    // Bytes for pixels past the output are still read.
    void process_FGBG_IMAGE() {
        const bool first = inFirstRow();
        const Line full = first ? Line::maskFirstRow : Line::maskLowerRow;
        const Line part = first ? Line::maskFirstRowPart : Line::maskLowerRowPart;
        uint32_t *p = out();
        int32_t space = room(), todo = runLength;
        for (; todo >= 8; todo -= 8) {
            const int32_t n = std::min(space, int32_t(8));
            maskPixels(p, stream.readU8(full), n, first);
            p += n;
            space -= n;
        }
        if (todo > 0) maskPixels(p, stream.readU8(part), std::min(space, todo), first);
        dstPos += 4 * runLength;
    }

    // runLength raw pixels converted straight out of the input.  A block
    // that is not all there is reported and skipped: nothing written or
    // consumed.
    void process_COLOR_IMAGE() {
        const int32_t depth = ui::settings.sourceBytesPerPixel;  // 3 or more
        const int64_t bytes = int64_t(runLength) * depth;
        const uint8_t *block = stream.getBlock(int32_t(std::min<int64_t>(bytes, INT32_MAX)));
        if (block == nullptr) return ui::report(ui::Site::colourImage);
        ui::convertStored(out(), block, std::min(runLength, room()), depth);
        dstPos += 4 * runLength;
    }

private:
    int32_t runLength = 0;
    uint32_t fgPel = 0xffffff;
    bool insertFgPel = false;
    bool suppressInsert = true;

    uint32_t *out() const { return dst + dstPos / 4; }
    int32_t room() const { return (dstSize - dstPos) / 4; }
    // The rule chosen when an order's header is read holds for all its pixels.
    bool inFirstRow() const { return dstPos < rowDelta; }

    // A zero length field means an extra byte follows, plus the form's
    // offset; images count their field in eights.
    int32_t shortRun(int32_t field, bool image, int32_t offset, Line line) {
        if (field != 0) return image ? field * 8 : field;
        return stream.readU8(line) + (image ? 1 : offset);
    }

    // Reads the order's length and names its kind.
    Kind classify(uint8_t h) {
        static constexpr Kind regular[] = {Kind::background, Kind::foreground, Kind::image, Kind::colourRun,
                                           Kind::colourImage};
        static constexpr Kind lite[] = {Kind::setForeground, Kind::setImage, Kind::dithered};
        static constexpr Kind mega[] = {Kind::background, Kind::foreground, Kind::image, Kind::colourRun,
                                        Kind::colourImage, Kind::unknown, Kind::setForeground, Kind::setImage,
                                        Kind::dithered};
        if (h < 0xA0) {
            const Kind k = regular[h >> 5];
            const bool image = k == Kind::image;
            runLength = shortRun(h & 0x1F, image, 32, image ? Line::regularImageRun : Line::regularRun);
            return k;
        }
        if (h < 0xC0) return Kind::unknown;
        if (h < 0xF0) {
            const Kind k = lite[(h >> 4) - 0xC];
            const bool image = k == Kind::setImage;
            runLength = shortRun(h & 0x0F, image, 16, image ? Line::liteImageRun : Line::liteRun);
            return k;
        }
        if (h <= 0xF8 && h != 0xF5) {
            runLength = stream.readU16(Line::megaRun);
            return mega[h - 0xF0];
        }
        switch (h) {
            case 0xF9: return Kind::special1;
            case 0xFA: return Kind::special2;
            case 0xFD: return Kind::white;
            case 0xFE: return Kind::black;
            default: return Kind::unknown;
        }
    }

    // Fields after the header: the length, then colours, then bitmask bytes
    // or raw pixels.  False for a header that names no order.
    bool runOrder(uint8_t header) {
        switch (classify(header)) {
            case Kind::background: backgroundRun(); return true;
            case Kind::setForeground: fgPel = readColour(); [[fallthrough]];
            case Kind::foreground: foregroundRun(); break;
            case Kind::setImage: fgPel = readColour(); [[fallthrough]];
            case Kind::image: process_FGBG_IMAGE(); break;
            case Kind::colourRun: fillRun(readColour()); break;
            case Kind::colourImage: process_COLOR_IMAGE(); break;
            case Kind::dithered: {
                const uint32_t a = readColour();
                ditheredRun(a, readColour());
                break;
            }
            case Kind::special1: specialImage(0x03); break;
            case Kind::special2: specialImage(0x05); break;
            case Kind::white: singlePixel(0xffffff); break;
            case Kind::black: singlePixel(0); break;
            case Kind::unknown: return false;
        }
        insertFgPel = false;
        return true;
    }

    // Three bytes, first lowest; a missing byte counts as 0.
    uint32_t readColour() {
        const uint32_t b0 = stream.readU8(Line::colourByte0);
        const uint32_t b1 = stream.readU8(Line::colourByte1);
        return b0 | b1 << 8 | uint32_t(stream.readU8(Line::colourByte2)) << 16;
    }

    // Black in the first row, copies of the pixel above below it.  After a
    // background run the next one starts with one foreground pixel, except
    // the first that starts below the first row.
    void backgroundRun() {
        const bool first = inFirstRow();
        bool insert = insertFgPel;
        if (!first && suppressInsert) suppressInsert = insert = false;
        uint32_t *p = out();
        int32_t space = room(), rest = runLength, produced = rest;
        if (insert) {  // written even for a run of 0
            *p = first ? fgPel : p[-width] ^ fgPel;
            ++p;
            --space;
            rest = std::max(rest - 1, 0);
            produced = rest + 1;
        }
        int32_t n = std::min(rest, space);
        if (first) ui::rows::fillRow(p, n, 0);
        // Row by row: a run longer than a row repeats what it has just
        // written, and no chunk overlaps its source.
        for (int32_t chunk; !first && n > 0; p += chunk, n -= chunk) {
            chunk = std::min(n, width);
            std::memcpy(p, p - width, 4 * size_t(chunk));
        }
        dstPos += 4 * produced;
        insertFgPel = true;
    }

    // fgPel in the first row, the pixel above XOR fgPel below it.
    void foregroundRun() {
        uint32_t *p = out();
        const int32_t n = std::min(runLength, room());
        const uint32_t fg = fgPel;
        if (inFirstRow())
            ui::rows::fillRow(p, n, fg);
        else
            for (int32_t i = 0; i < n; ++i) p[i] = p[i - width] ^ fg;
        dstPos += 4 * runLength;
    }

    void fillRun(uint32_t colour) {
        ui::rows::fillRow(out(), std::min(runLength, room()), colour);
        dstPos += 4 * runLength;
    }

    // runLength pairs: a, b, a, b, ...
    void ditheredRun(uint32_t a, uint32_t b) {
        uint32_t *p = out();
        const int32_t n = std::min(2 * runLength, room());
        for (int32_t i = 0; i < n; ++i) p[i] = (i & 1) ? b : a;
        dstPos += 8 * runLength;
    }

    // count (0-8) pixels from the low bits of mask: fgPel or black in the
    // first row, the pixel above XOR fgPel or unchanged below it.
    void maskPixels(uint32_t *p, unsigned mask, int32_t count, bool first) const {
        const uint32_t fg = fgPel;
        if (count == 8 && first) {
#pragma GCC unroll 8
            for (int k = 0; k < 8; ++k) p[k] = fg & bitMask(mask, k);
        } else if (count == 8) {
#pragma GCC unroll 8
            for (int k = 0; k < 8; ++k) p[k] = p[k - width] ^ (fg & bitMask(mask, k));
        } else {
            for (int k = 0; k < count; ++k) p[k] = (first ? 0 : p[k - width]) ^ (fg & bitMask(mask, k));
        }
    }

    void specialImage(unsigned mask) {
        maskPixels(out(), mask, std::min(room(), int32_t(8)), inFirstRow());
        dstPos += 4 * 8;
    }

    void singlePixel(uint32_t colour) {
        *out() = colour;
        dstPos += 4;
    }
};

}  // namespace

int32_t ui::decodeInterleaved(rlecontext &context) {
    InterleavedDecoder decoder(context);
    const int32_t result = decoder.decode();
    context = decoder;
    return result;
}
