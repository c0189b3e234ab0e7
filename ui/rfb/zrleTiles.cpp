// The ZRLE/TRLE tile bodies that carry their pixels directly: solid (slot 19),
// raw (slot 18) and plain run-length (slot 21).  Each paints one tile at the
// record's position, advances the record's ptr / left past what it consumed
// and returns 1 (painted), 0 (body too short, nothing reported) or -1
// (rejected, reported).
#include <algorithm>
#include <cstdint>

#include "../entry.h"
#include "../sourcePixel.h"
#include "tileStream.h"

namespace {

using namespace ui::rfb;

constexpr int kSolidSite = 3127;
constexpr int kRawNullSite = 3086;
constexpr int kRawImageSite = 3089;
constexpr int kPlainRleImageSite = 3306;
constexpr int kPlainRleRunSite = 3347;

void paintSolid(uint32_t *origin, uint32_t stride, int32_t width, int32_t height, uint32_t colour) {
    for (int32_t r = 0; r < height; ++r) std::fill_n(ui::rowAt(origin, stride, r), width, colour);
}

// Converts width x height packed three-byte pixels, row by row, with the
// byte order chosen once for the tile.
void paintRaw(uint32_t *origin, uint32_t stride, int32_t width, int32_t height, const uint8_t *src) {
    const ui::RowFn convert = ui::rowFor<3>(ui::settings.sourceByteOrder);
    const size_t rowBytes = 3 * size_t(width);
    for (int32_t r = 0; r < height; ++r, src += rowBytes) convert(ui::rowAt(origin, stride, r), src, width);
}

// Body bytes of a raw tile: three per pixel.  A negative width or height
// counts as no bytes at all (the image check then refuses the tile), and a
// tile of more pixels than any body can hold needs more than any `left`.
int64_t rawBodySize(int32_t width, int32_t height) {
    if (width < 0 || height < 0) return 0;
    const int64_t pixels = int64_t(width) * int64_t(height);
    return pixels > INT32_MAX ? int64_t(INT32_MAX) + 1 : 3 * pixels;
}

}  // namespace

int32_t ui::zrleSolidTile(UiTileStream *tile) {
    if (tile == nullptr) return reject(kSolidSite);
    TileInput input(*tile);
    if (!input.has(3)) return kShortBody;
    if (input.missing()) return reject(kSolidSite);
    const uint32_t colour = cpixel(input.take(3));

    uint32_t *origin = tileDestination(*tile);
    if (origin == nullptr) return reject(kSolidSite);
    paintSolid(origin, tile->image->stride, tile->width, tile->height, colour);
    markTile(*tile);
    return kPainted;
}

int32_t ui::zrleRawTile(UiTileStream *tile) {
    if (tile == nullptr) return reject(kRawNullSite);
    TileInput input(*tile);
    const int64_t need = rawBodySize(tile->width, tile->height);
    if (!input.has(need)) return kShortBody;
    const uint8_t *body = input.in.ptr;
    input.pass(int32_t(need));
    if (body == nullptr) return reject(kRawNullSite);

    uint32_t *origin = tileDestination(*tile);
    if (origin == nullptr) return reject(kRawImageSite);
    paintRaw(origin, tile->image->stride, tile->width, tile->height, body);
    markTile(*tile);
    return kPainted;
}

int32_t ui::zrlePlainRleTile(UiTileStream *tile) {
    if (tile == nullptr) return reject(kPlainRleImageSite);
    uint32_t *origin = tileDestination(*tile);
    if (origin == nullptr) return reject(kPlainRleImageSite);

    TileInput input(*tile);
    RunWriter out(origin, tile->image->stride, tile->width);
    for (int64_t toPaint = tileArea(*tile); toPaint > 0;) {
        if (!input.has(3)) return kShortBody;
        if (input.missing()) return reject(kPlainRleImageSite);
        const uint32_t colour = cpixel(input.take(3));
        int64_t run;
        if (!input.takeRunLength(run)) return kShortBody;
        if (run > toPaint) return reject(kPlainRleRunSite);
        toPaint -= run;
        out.put(colour, run);
    }
    markTile(*tile);
    return kPainted;
}
