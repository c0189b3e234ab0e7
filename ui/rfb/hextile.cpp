// hextileRect (slot 24): one rectangle of the Hextile encoding, pulled from
// the client through its read callback in exactly the order of the encoding,
// decoded tile by tile into the frame buffer.  The rectangle's tiles are
// marked once, after its last tile; a failure leaves the tiles decoded so far
// painted and marks nothing.
#include <algorithm>
#include <cstdint>

#include "../dirtybuf.h"
#include "../entry.h"
#include "../ui.h"
#include "../sourcePixel.h"

namespace {

constexpr int kRectSite = 3673;
constexpr int kSubencodingSite = 3706;
constexpr int kRawTileSite = 3713;
constexpr int kBackgroundSite = 3719;
constexpr int kForegroundSite = 3724;
constexpr int kCountSite = 3736;
constexpr int kColouredTileSite = 3739;
constexpr int kPlainTileSite = 3743;
constexpr int kRawReadSite = 3550;
constexpr int kColouredCountSite = 3593;
constexpr int kColouredReadSite = 3595;
constexpr int kPlainCountSite = 3633;
constexpr int kPlainReadSite = 3635;

constexpr int32_t kTileSide = 16;
constexpr int32_t kPixelBytes = 4;

// Sub-encoding flags.
constexpr uint8_t kRaw = 1;
constexpr uint8_t kBackgroundGiven = 2;
constexpr uint8_t kForegroundGiven = 4;
constexpr uint8_t kSubrectsFollow = 8;
constexpr uint8_t kSubrectsColoured = 16;

// The tile being decoded.  background and foreground carry over from tile to
// tile within one rectangle.
struct UiHextileTile {
    uint32_t *destination;  // the tile's top-left pixel
    uint32_t stride;
    int32_t width;          // 1 to 16
    int32_t height;         // 1 to 16
    uint32_t background;
    uint32_t foreground;
    UiReadFn read;
    ui::PixelFn pixel;  // the sourceByteOrder converters, chosen once
    ui::RowFn row;      // per rectangle
};

// Exactly n bytes from the client, or false.  A missing callback delivers
// nothing.
bool pull(const UiHextileTile &tile, uint8_t *buffer, int32_t n) {
    return tile.read != nullptr && tile.read(buffer, n) != 0;
}

bool pullPixel(const UiHextileTile &tile, uint32_t &pixel) {
    uint8_t bytes[kPixelBytes];
    if (!pull(tile, bytes, kPixelBytes)) return false;
    pixel = tile.pixel(bytes);
    return true;
}

void fillArea(uint32_t *origin, uint32_t stride, int32_t width, int32_t height, uint32_t colour) {
    for (int32_t r = 0; r < height; ++r) std::fill_n(ui::rowAt(origin, stride, r), width, colour);
}

bool hextileRaw(UiHextileTile &tile) {
    uint8_t buffer[kTileSide * kTileSide * kPixelBytes];
    if (!pull(tile, buffer, tile.width * tile.height * kPixelBytes)) {
        ui::reportInternal("ui", kRawReadSite);
        return false;
    }
    const uint8_t *src = buffer;
    for (int32_t r = 0; r < tile.height; ++r, src += tile.width * kPixelBytes)
        tile.row(ui::rowAt(tile.destination, tile.stride, r), src, tile.width);
    return true;
}

// Paints one subrectangle record (xy, wh) when it lies inside the tile;
// one that does not fit is skipped.
void paintSubrect(const UiHextileTile &tile, uint8_t xy, uint8_t wh, uint32_t colour) {
    const int32_t x = xy >> 4, y = xy & 15;
    const int32_t w = (wh >> 4) + 1, h = (wh & 15) + 1;
    if (x + w > tile.width || y + h > tile.height) return;
    fillArea(ui::rowAt(tile.destination, tile.stride, y) + x, tile.stride, w, h, colour);
}

// The subrectangle operations: checks the count, reads all count records of
// Record bytes with one call, fills the tile with the background and paints
// each record with the colour colourOf gives it.  The record's last two bytes
// are xy and wh.
template <int32_t Record, int CountSite, int ReadSite, typename ColourOf>
bool paintSubrects(UiHextileTile &tile, uint32_t count, ColourOf colourOf) {
    if (count - 1 > 254) {
        ui::reportInternal("ui", CountSite);
        return false;
    }
    uint8_t records[255 * Record];
    if (!pull(tile, records, int32_t(count) * Record)) {
        ui::reportInternal("ui", ReadSite);
        return false;
    }
    fillArea(tile.destination, tile.stride, tile.width, tile.height, tile.background);
    for (const uint8_t *r = records; r != records + count * Record; r += Record)
        paintSubrect(tile, r[Record - 2], r[Record - 1], colourOf(r));
    return true;
}

// Subrectangles in the foreground colour: records of xy, wh.
bool hextileSubrects(UiHextileTile &tile, uint32_t count) {
    return paintSubrects<2, kPlainCountSite, kPlainReadSite>(tile, count,
                                                              [&](const uint8_t *) { return tile.foreground; });
}

// Subrectangles with their own pixel: records of a pixel, xy, wh.
bool hextileSubrectsColoured(UiHextileTile &tile, uint32_t count) {
    return paintSubrects<kPixelBytes + 2, kColouredCountSite, kColouredReadSite>(
        tile, count, [&](const uint8_t *record) { return tile.pixel(record); });
}

// Decodes the current tile.  Returns 0, or the entry point's site to report.
int decodeTile(UiHextileTile &tile) {
    uint8_t flags;
    if (!pull(tile, &flags, 1)) return kSubencodingSite;
    if ((flags & kRaw) != 0) return hextileRaw(tile) ? 0 : kRawTileSite;
    if ((flags & kBackgroundGiven) != 0 && !pullPixel(tile, tile.background)) return kBackgroundSite;
    if ((flags & kForegroundGiven) != 0 && !pullPixel(tile, tile.foreground)) return kForegroundSite;
    if ((flags & kSubrectsFollow) != 0) {
        uint8_t count;
        if (!pull(tile, &count, 1)) return kCountSite;
        if ((flags & kSubrectsColoured) != 0) return hextileSubrectsColoured(tile, count) ? 0 : kColouredTileSite;
        return hextileSubrects(tile, count) ? 0 : kPlainTileSite;
    }
    fillArea(tile.destination, tile.stride, tile.width, tile.height, tile.background);
    return 0;
}

}  // namespace

int32_t ui::hextileRect(imgbuf *image, dirtybuf *dirty, const UiRect *rect, UiReadFn read) {
    if (image == nullptr || rect == nullptr) {
        reportInternal("ui", kRectSite);
        return 0;
    }
    const UiRect r = *rect;
    uint32_t *origin = image->writePtr(r.left, r.top, r.width, r.height);
    if (origin == nullptr) {
        reportInternal("ui", kRectSite);
        return 0;
    }

    UiHextileTile tile{.destination = nullptr,
                       .stride = image->stride,
                       .width = 0,
                       .height = 0,
                       .background = 0,
                       .foreground = 0,
                       .read = read,
                       .pixel = ui::pixelFor(settings.sourceByteOrder),
                       .row = ui::rowFor<kPixelBytes>(settings.sourceByteOrder)};
    // Tiles row by row from the top-left; the last column and row take what
    // is left.  Steps never pass the rectangle's edge, so nothing wraps.
    for (int32_t ty = 0; ty < r.height && r.width > 0; ty += tile.height) {
        tile.height = std::min(kTileSide, r.height - ty);
        uint32_t *tileRow = rowAt(origin, tile.stride, ty);
        for (int32_t tx = 0; tx < r.width; tx += tile.width) {
            tile.width = std::min(kTileSide, r.width - tx);
            tile.destination = tileRow + tx;
            const int site = decodeTile(tile);
            if (site != 0) {
                reportInternal("ui", site);
                return 0;
            }
        }
    }
    markIfGiven(dirty, r.left, r.top, r.width, r.height);
    return 1;
}
