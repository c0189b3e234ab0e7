// hextileRect (slot 24): one rectangle of the Hextile encoding, pulled from
// the client through its read callback in exactly the order of the encoding
// and decoded tile by tile, 16x16 from the top-left, into the frame buffer.
// The rectangle's tiles are marked once, after its last tile; a failure
// leaves the tiles decoded so far painted and marks nothing.
#include <algorithm>

#include "../core/entry.h"
#include "../core/rows.h"
#include "../core/settings.h"
#include "../core/surface.h"

namespace {

using ui::Site;

// The tile being decoded; background and foreground carry over from tile to
// tile within the rectangle.
struct UiHextileTile {
    uint32_t *destination;  // the tile's top-left pixel
    uint32_t stride;
    int32_t width, height;  // 1 to 16
    uint32_t background, foreground;
    UiReadFn read;
    ui::PixelFn pixel;  // the byte order, chosen once per rectangle
    ui::RowFn row;

    // Exactly n bytes from the client, or false; no callback delivers none.
    bool pull(uint8_t *buffer, int32_t n) const { return read != nullptr && read(buffer, n) != 0; }

    bool pullPixel(uint32_t &p) const {
        uint8_t b[4];
        return pull(b, 4) && (p = pixel(b), true);
    }

    void fill(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t colour) const {
        ui::rows::fillArea(ui::rowAt(destination, stride, y) + x, stride, w, h, colour);
    }
};

// The tile's pixels, row by row, with one read.
bool hextileRaw(UiHextileTile &t) {
    uint8_t buffer[16 * 16 * 4];
    if (!t.pull(buffer, 4 * t.width * t.height)) return ui::fail(Site::hextileRaw);
    for (int32_t r = 0; r < t.height; ++r) t.row(ui::rowAt(t.destination, t.stride, r), buffer + 4 * t.width * r, t.width);
    return true;
}

// count records of Record bytes (a pixel when coloured, then xy and wh) with
// one read: the tile takes the background, then each record that fits in it
// its colour; one that does not fit is skipped.
template <int32_t Record>
bool subrects(UiHextileTile &t, uint32_t count, Site countSite, Site readSite) {
    if (count - 1 > 254) return ui::fail(countSite);
    uint8_t records[255 * Record];
    if (!t.pull(records, int32_t(count) * Record)) return ui::fail(readSite);
    t.fill(0, 0, t.width, t.height, t.background);
    for (const uint8_t *r = records; r != records + count * Record; r += Record) {
        const int32_t x = r[Record - 2] >> 4, y = r[Record - 2] & 15;
        const int32_t w = (r[Record - 1] >> 4) + 1, h = (r[Record - 1] & 15) + 1;
        if (x + w <= t.width && y + h <= t.height) t.fill(x, y, w, h, Record == 2 ? t.foreground : t.pixel(r));
    }
    return true;
}

// Flags: 1 raw (nothing else follows), 2 background, 4 foreground, 8
// subrectangles, 16 coloured ones.  Returns the site to report, or none.
bool decodeTile(UiHextileTile &t, Site &failed) {
    uint8_t flags, count;
    const auto fails = [&](Site s) { return failed = s, false; };
    if (!t.pull(&flags, 1)) return fails(Site::hextileSubencoding);
    if (flags & 1) return hextileRaw(t) || fails(Site::hextileRawTile);
    if ((flags & 2) && !t.pullPixel(t.background)) return fails(Site::hextileBackground);
    if ((flags & 4) && !t.pullPixel(t.foreground)) return fails(Site::hextileForeground);
    if ((flags & 8) == 0) return t.fill(0, 0, t.width, t.height, t.background), true;
    if (!t.pull(&count, 1)) return fails(Site::hextileCountRead);
    if (flags & 16)
        return subrects<6>(t, count, Site::hextileColouredCount, Site::hextileColouredRead) ||
               fails(Site::hextileColouredTile);
    return subrects<2>(t, count, Site::hextileCount, Site::hextileRead) || fails(Site::hextilePlainTile);
}

}  // namespace

int32_t ui::hextileRect(imgbuf *image, dirtybuf *dirty, const UiRect *rect, UiReadFn read) {
    if (image == nullptr || rect == nullptr) return fail(Site::hextileRect);
    const UiRect r = *rect;
    uint32_t *origin = writePtr(*image, r);
    if (origin == nullptr) return fail(Site::hextileRect);
    UiHextileTile t{nullptr, image->stride, 0, 0, 0, 0, read, pixelFor(settings.sourceByteOrder),
                    rows::rowFor(4, settings.sourceByteOrder != 0)};
    // The last column and row take what is left; steps never pass the edge.
    for (int32_t ty = 0; ty < r.height && r.width > 0; ty += t.height) {
        t.height = std::min(16, r.height - ty);
        for (int32_t tx = 0; tx < r.width; tx += t.width) {
            t.width = std::min(16, r.width - tx);
            t.destination = rowAt(origin, t.stride, ty) + tx;
            Site failed;
            if (!decodeTile(t, failed)) return fail(failed);
        }
    }
    markDrawn(dirty, r);
    return 1;
}
