// The ZRLE/TRLE palette tiles: packed palette (slot 20, sub-encodings 2-16)
// and palette run-length (slot 22, sub-encodings 130-255).  A palette of
// CPIXELs comes first, then packed indexes or runs of one index each.
//
// Palette entries that the body did not supply are black: the palette is
// cleared before it is read, and every index a body can hold (4 bits packed,
// 7 in a run) lies inside the array, so nothing outside it is ever read.
#include <array>

#include "../core/entry.h"
#include "tiles.h"

namespace {

using ui::Line;
using ui::Site;

// `size` CPIXELs (the caller checked that 3 x size bytes are there), each
// byte one readU8 naming its own line.
template <size_t N>
std::array<uint32_t, N> readPalette(ui::streamIn &in, int32_t size, Line first) {
    std::array<uint32_t, N> palette{};
    for (int32_t i = 0; i < size; ++i) {
        const uint32_t b0 = in.readU8(ui::lineOf(first)), b1 = in.readU8(ui::lineOf(first) + 1);
        palette[size_t(i)] = b0 | b1 << 8 | uint32_t(in.readU8(ui::lineOf(first) + 2)) << 16;
    }
    return palette;
}

// Packed rows: whole bytes of 8 / Bits pixels, first pixel in the top bits,
// then the partial last byte, whose bits beyond the width are ignored; each
// row starts on a new byte.
template <int Bits>
void expandRows(uint32_t *origin, uint32_t stride, int32_t width, int32_t height, const uint8_t *s, size_t rowBytes,
                const std::array<uint32_t, 16> &palette) {
    constexpr int kPerByte = 8 / Bits;
    for (int32_t r = 0; r < height; ++r, s += rowBytes) {
        uint32_t *d = ui::rowAt(origin, stride, r);
        const uint8_t *byte = s;
        const auto expand = [&](uint32_t bits, int n) {
            for (int k = 0; k < n; ++k) *d++ = palette[(bits >> (8 - Bits * (k + 1))) & ((1u << Bits) - 1)];
        };
        for (int32_t i = 0; i < width / kPerByte; ++i) expand(*byte++, kPerByte);
        if (width % kPerByte != 0) expand(*byte, width % kPerByte);
    }
}

}  // namespace

// Negative sizes are refused with those above 16; sizes 0 and 1 use 1-bit
// indexes.
int32_t ui::zrlePackedPaletteTile(UiTileStream *tile, int32_t size) {
    if (tile == nullptr || uint32_t(size) > 16u) return reject(Site::packedSize);
    const int bits = size <= 2 ? 1 : size <= 4 ? 2 : 4;
    const Site nullSite = bits == 1 ? Site::packedNull1 : bits == 2 ? Site::packedNull2 : Site::packedNull4;
    TileInput in(*tile);
    if (!in.has(3 * int64_t(size))) return kShortBody;
    if (size > 0 && in.ptr == nullptr) return reject(nullSite);
    const auto palette = readPalette<16>(in, size, Line::packedPalette);
    uint32_t *origin = tileDestination(*tile);
    if (origin == nullptr) return reject(Site::packedTile);

    const int64_t rowBytes = (int64_t(tile->width) * bits + 7) / 8;
    if (!in.has(rowBytes * tile->height)) return kShortBody;
    const uint8_t *indexes = in.take(rowBytes * tile->height);
    if (indexes == nullptr) return reject(nullSite);
    const auto expand = bits == 1 ? expandRows<1> : bits == 2 ? expandRows<2> : expandRows<4>;
    expand(origin, tile->image->stride, tile->width, tile->height, indexes, size_t(rowBytes), palette);
    return painted(*tile);
}

// Sub-encodings outside 128-255 would name a palette the array cannot hold.
int32_t ui::zrlePaletteRleTile(UiTileStream *tile, int32_t subencoding) {
    const uint32_t size = uint32_t(subencoding) - 128u;
    if (tile == nullptr || size > 127u) return reject(Site::paletteRleTile);
    TileInput in(*tile);
    if (!in.has(3 * int64_t(size))) return kShortBody;
    if (size > 0 && in.ptr == nullptr) return reject(Site::paletteRleTile);
    const auto palette = readPalette<128>(in, int32_t(size), Line::rlePalette);
    uint32_t *origin = tileDestination(*tile);
    if (origin == nullptr) return reject(Site::paletteRleTile);

    RunWriter out(origin, tile->image->stride, tile->width);
    for (int64_t toPaint = int64_t(tile->width) * tile->height; toPaint > 0;) {
        uint8_t index;
        if (!in.has(1)) return kShortBody;
        if (!in.next(index)) return reject(Site::paletteRleTile);  // a null ptr
        int64_t run = 1;
        if (index >= 128) {
            if (!in.runLength(run)) return kShortBody;
            if (run > toPaint) return reject(Site::paletteRleRun);
            index -= 128;
        }
        toPaint -= run;
        out.put(palette[index], run);
    }
    return painted(*tile);
}
