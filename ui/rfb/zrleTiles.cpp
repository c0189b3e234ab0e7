// The ZRLE/TRLE tile bodies that carry their pixels directly: solid (slot 19),
// raw (slot 18) and plain run-length (slot 21).  Each paints one tile at the
// record's position, advances the record past what it consumed and returns 1
// (painted), 0 (body too short, not reported) or -1 (rejected, reported).
// Where a byte would have to be read from a null ptr the tile is rejected at
// its first site with nothing consumed.
#include "../core/entry.h"
#include "../core/rows.h"
#include "tiles.h"

int32_t ui::zrleSolidTile(UiTileStream *tile) {
    if (tile == nullptr) return reject(Site::solidTile);
    TileInput in(*tile);
    if (!in.has(3)) return kShortBody;
    if (in.ptr == nullptr) return reject(Site::solidTile);
    const uint32_t colour = cpixel(in.take(3));
    uint32_t *origin = tileDestination(*tile);
    if (origin == nullptr) return reject(Site::solidTile);
    rows::fillArea(origin, tile->image->stride, tile->width, tile->height, colour);
    return painted(*tile);
}

// Three bytes per pixel in the byte order of sourceByteOrder.  A negative size
// needs no bytes (the image check then refuses the tile); a tile of more
// pixels than any body holds needs more than any `left`.
int32_t ui::zrleRawTile(UiTileStream *tile) {
    if (tile == nullptr) return reject(Site::rawTileNull);
    TileInput in(*tile);
    const int32_t w = tile->width, h = tile->height;
    const int64_t pixels = w < 0 || h < 0 ? 0 : int64_t(w) * h;
    const int64_t need = pixels > INT32_MAX ? int64_t(INT32_MAX) + 1 : 3 * pixels;
    if (!in.has(need)) return kShortBody;
    const uint8_t *body = in.take(need);
    if (body == nullptr) return reject(Site::rawTileNull);
    uint32_t *origin = tileDestination(*tile);
    if (origin == nullptr) return reject(Site::rawTile);
    const RowFn convert = rows::rowFor(3, settings.sourceByteOrder != 0);
    for (int32_t r = 0; r < h; ++r) convert(rowAt(origin, tile->image->stride, r), body + 3 * size_t(w) * size_t(r), w);
    return painted(*tile);
}

// Runs of a CPIXEL and a run length until the tile is covered; bytes after
// it are not consumed.
int32_t ui::zrlePlainRleTile(UiTileStream *tile) {
    if (tile == nullptr) return reject(Site::plainRleTile);
    uint32_t *origin = tileDestination(*tile);
    if (origin == nullptr) return reject(Site::plainRleTile);
    TileInput in(*tile);
    RunWriter out(origin, tile->image->stride, tile->width);
    for (int64_t toPaint = int64_t(tile->width) * tile->height; toPaint > 0;) {
        if (!in.has(3)) return kShortBody;
        if (in.ptr == nullptr) return reject(Site::plainRleTile);
        const uint32_t colour = cpixel(in.take(3));
        int64_t run;
        if (!in.runLength(run)) return kShortBody;
        if (run > toPaint) return reject(Site::plainRleRun);
        toPaint -= run;
        out.put(colour, run);
    }
    return painted(*tile);
}
