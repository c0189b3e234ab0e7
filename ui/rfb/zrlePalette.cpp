// The ZRLE/TRLE palette tiles: packed palette (slot 20, sub-encodings 2-16)
// and palette run-length (slot 22, sub-encodings 130-255).  A palette of
// CPIXELs comes first, then packed indices or runs of one index each.
//
// Palette entries that the body did not supply are black: the palette array
// is cleared before it is read, and every index a body can hold (4 bits
// packed, 7 bits in a run) lies inside the array.  So an index at or beyond
// the palette size paints 0x000000 and never reads outside the palette.
#include <array>
#include <cstdint>

#include "../entry.h"
#include "tileStream.h"

namespace {

using namespace ui::rfb;

constexpr int kPackedSizeSite = 3148;
constexpr int kPackedPaletteLine = 3160;  // and 3161, 3162
constexpr int kPackedImageSite = 3170;
constexpr int kPackedNullSite1 = 3181;
constexpr int kPackedNullSite2 = 3226;
constexpr int kPackedNullSite4 = 3267;
constexpr int kRlePaletteLine = 3384;  // and 3385, 3386
constexpr int kRleImageSite = 3394;
constexpr int kRleRunSite = 3421;

constexpr int32_t kMaxPackedPalette = 16;
constexpr int32_t kMaxRlePalette = 127;

using PackedPalette = std::array<uint32_t, kMaxPackedPalette>;     // 4-bit indices: 0-15
using RlePalette = std::array<uint32_t, kMaxRlePalette + 1>;       // 7-bit indices: 0-127

// Reads `size` CPIXELs (the caller checked that 3 x size bytes are there),
// one readU8 per byte, each naming its own caller line; the rest stay black.
template <size_t N>
void readPalette(ui::streamIn &in, int32_t size, std::array<uint32_t, N> &palette, int firstLine) {
    palette.fill(0);
    for (int32_t i = 0; i < size; ++i) {
        const uint32_t b0 = in.readU8("ui", firstLine);
        const uint32_t b1 = in.readU8("ui", firstLine + 1);
        const uint32_t b2 = in.readU8("ui", firstLine + 2);
        palette[size_t(i)] = b0 | (b1 << 8) | (b2 << 16);
    }
}

// Bits per packed index for a palette of `size` (0 to 16) entries.
int indexBits(int32_t size) { return size <= 2 ? 1 : size <= 4 ? 2 : 4; }

int nullSite(int bits) { return bits == 1 ? kPackedNullSite1 : bits == 2 ? kPackedNullSite2 : kPackedNullSite4; }

// Bytes of one packed row: every row starts on a new byte.
int64_t packedRowBytes(int32_t width, int bits) {
    const int64_t perByte = 8 / bits;
    return (int64_t(width) + perByte - 1) / perByte;
}

// Expands one packed row: whole bytes of 8 / Bits pixels each, first pixel in
// the most significant bits, then the partial last byte, whose bits beyond
// the width are ignored.
template <int Bits>
void expandRow(uint32_t *dst, const uint8_t *src, int32_t width, const PackedPalette &palette) {
    constexpr int kPerByte = 8 / Bits;
    constexpr uint32_t kMask = (1u << Bits) - 1;
    const int32_t whole = width / kPerByte;
    for (int32_t i = 0; i < whole; ++i, dst += kPerByte) {
        const uint32_t byte = *src++;
        for (int k = 0; k < kPerByte; ++k) dst[k] = palette[(byte >> (8 - Bits * (k + 1))) & kMask];
    }
    const int rest = int(width % kPerByte);
    if (rest == 0) return;
    const uint32_t byte = *src;
    for (int k = 0; k < rest; ++k) dst[k] = palette[(byte >> (8 - Bits * (k + 1))) & kMask];
}

template <int Bits>
void expandRows(uint32_t *origin, uint32_t stride, int32_t width, int32_t height, const uint8_t *src,
                int64_t rowBytes, const PackedPalette &palette) {
    for (int32_t r = 0; r < height; ++r, src += rowBytes)
        expandRow<Bits>(ui::rowAt(origin, stride, r), src, width, palette);
}

}  // namespace

int32_t ui::zrlePackedPaletteTile(UiTileStream *tile, int32_t size) {
    // Negative sizes are refused with the sizes above 16.
    if (tile == nullptr || uint32_t(size) > uint32_t(kMaxPackedPalette)) return reject(kPackedSizeSite);
    const int bits = indexBits(size);
    TileInput input(*tile);
    if (!input.has(3 * int64_t(size))) return kShortBody;
    if (size > 0 && input.missing()) return reject(nullSite(bits));
    PackedPalette palette;
    readPalette(input.in, size, palette, kPackedPaletteLine);

    uint32_t *origin = tileDestination(*tile);
    if (origin == nullptr) return reject(kPackedImageSite);
    const int64_t rowBytes = packedRowBytes(tile->width, bits);
    const int64_t need = rowBytes * tile->height;
    if (!input.has(need)) return kShortBody;
    const uint8_t *indices = input.in.ptr;
    input.pass(int32_t(need));
    if (indices == nullptr) return reject(nullSite(bits));

    const uint32_t stride = tile->image->stride;
    if (bits == 1)
        expandRows<1>(origin, stride, tile->width, tile->height, indices, rowBytes, palette);
    else if (bits == 2)
        expandRows<2>(origin, stride, tile->width, tile->height, indices, rowBytes, palette);
    else
        expandRows<4>(origin, stride, tile->width, tile->height, indices, rowBytes, palette);
    markTile(*tile);
    return kPainted;
}

int32_t ui::zrlePaletteRleTile(UiTileStream *tile, int32_t subencoding) {
    // Sub-encodings outside 128-255 would name a palette the array cannot hold.
    const uint32_t size = uint32_t(subencoding) - 128u;
    if (tile == nullptr || size > uint32_t(kMaxRlePalette)) return reject(kRleImageSite);
    TileInput input(*tile);
    if (!input.has(3 * int64_t(size))) return kShortBody;
    if (size > 0 && input.missing()) return reject(kRleImageSite);
    RlePalette palette;
    readPalette(input.in, int32_t(size), palette, kRlePaletteLine);

    uint32_t *origin = tileDestination(*tile);
    if (origin == nullptr) return reject(kRleImageSite);
    RunWriter out(origin, tile->image->stride, tile->width);
    for (int64_t toPaint = tileArea(*tile); toPaint > 0;) {
        if (!input.has(1)) return kShortBody;
        if (input.missing()) return reject(kRleImageSite);
        uint32_t index = *input.take(1);
        int64_t run = 1;
        if (index >= 128) {
            if (!input.takeRunLength(run)) return kShortBody;
            if (run > toPaint) return reject(kRleRunSite);
            index -= 128;
        }
        toPaint -= run;
        out.put(palette[index], run);
    }
    markTile(*tile);
    return kPainted;
}
