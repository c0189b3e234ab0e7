// The two entry points that take RDP bitmaps: bitmapUpdate (slot 0) paints one
// rectangle of a bitmap update, decodeBitmap (slot 8) decodes a bitmap for the
// client's bitmap cache.
//
// Bitmap rows are stored bottom-up; bitmapUpdate turns them the right way up
// while copying, decodeBitmap keeps the stored order.
#include <cstring>

#include "../dirtybuf.h"
#include "../entry.h"
#include "../surface.h"
#include "../ui.h"
#include "decompressBitmap.h"
#include "pixelRows.h"

namespace {

constexpr int kSizeSite = 1168;
constexpr int kTooLargeSite = 1199;
constexpr int kDecodeFailedSite = 1205;
constexpr int kCompressedDestSite = 1210;
constexpr int kUncompressedDestSite = 1229;
constexpr int kDecodeArgumentSite = 902;

constexpr int32_t kDecodeBufferPixels = 65536;  // 256 KiB on the stack

// The visible part of the bitmap: destination rectangle in buffer coordinates
// and the column / top-down row of the bitmap that lands on its top-left.
struct Placement {
    UiRect rect;
    int32_t dx;
    int32_t dy;
};

// The clip rectangle of the whole image.
UiClipRect imageClip(const imgbuf &image) {
    const uint32_t w = image.width < uint32_t(INT32_MAX) ? image.width : uint32_t(INT32_MAX);
    const uint32_t h = image.height < uint32_t(INT32_MAX) ? image.height : uint32_t(INT32_MAX);
    return UiClipRect{0, 0, int32_t(w) - 1, int32_t(h) - 1};
}

// Stored row of the bitmap that becomes visible row j.
inline int32_t storedRow(const UiBitmapData &bitmap, const Placement &place, int32_t j) {
    return bitmap.height - 1 - place.dy - j;
}

void drawCompressed(UiSurface &surface, const UiBitmapData &bitmap, const Placement &place) {
    if (int64_t(bitmap.width) * bitmap.height > kDecodeBufferPixels) return ui::reportInternal("ui", kTooLargeSite);
    uint32_t decoded[kDecodeBufferPixels];
    int32_t decodedPixels = 0;
    if (ui::decompressBitmap(bitmap.width, bitmap.height, bitmap.bitmapDataStream, bitmap.bitmapLength, decoded,
                             &decodedPixels) == 0)
        return ui::reportInternal("ui", kDecodeFailedSite);

    const UiRect &r = place.rect;
    uint32_t *out = surface.image.writePtr(r.left, r.top, r.width, r.height);
    if (out == nullptr) return ui::reportInternal("ui", kCompressedDestSite);

    // Pixels past the decoded end (interleaved data that ran out early) hold
    // nothing: the frame buffer keeps its own there.
    for (int32_t j = 0; j < r.height; ++j) {
        const int32_t first = storedRow(bitmap, place, j) * bitmap.width + place.dx;
        const int32_t available = decodedPixels - first;
        const int32_t count = available < r.width ? available : r.width;
        if (count > 0) std::memcpy(ui::rowAt(out, surface.image.stride, j), decoded + first, 4 * size_t(count));
    }
}

void drawUncompressed(UiSurface &surface, const UiBitmapData &bitmap, const Placement &place) {
    const UiRect &r = place.rect;
    uint32_t *out = surface.image.writePtr(r.left, r.top, r.width, r.height);
    if (out == nullptr) return ui::reportInternal("ui", kUncompressedDestSite);

    // The data must hold every pixel that is read, up to the last visible one
    // of the topmost visible row (which is stored last).  Worked in 64 bits;
    // pixels is at most 2^62, and once it is at most bitmapLength the byte
    // count fits too.
    const int32_t bytesPerPixel = ui::settings.sourceBytesPerPixel;
    const int64_t pixels = int64_t(storedRow(bitmap, place, 0)) * bitmap.width + place.dx + r.width;
    if (bytesPerPixel < 3 || bitmap.bitmapDataStream == nullptr || pixels > bitmap.bitmapLength ||
        pixels * bytesPerPixel > bitmap.bitmapLength)
        return ui::reportInternal("ui", kUncompressedDestSite);

    const size_t rowBytes = size_t(bitmap.width) * size_t(bytesPerPixel);
    const uint8_t *src = bitmap.bitmapDataStream + size_t(storedRow(bitmap, place, 0)) * rowBytes +
                         size_t(place.dx) * size_t(bytesPerPixel);
    for (int32_t j = 0; j < r.height; ++j) {
        ui::convertPixels(ui::rowAt(out, surface.image.stride, j), src, r.width, bytesPerPixel);
        if (j + 1 < r.height) src -= rowBytes;  // the row above is stored before
    }
}

}  // namespace

void ui::bitmapUpdate(UiSurface *surface, const UiBitmapData *bitmap) {
    const UiBitmapData &b = *bitmap;
    int32_t left = b.destLeft, top = b.destTop, right = b.destRight, bottom = b.destBottom;
    translate(*surface, left, top);
    translate(*surface, right, bottom);

    const int64_t cw = int64_t(right) - left + 1, ch = int64_t(bottom) - top + 1;
    if (cw > b.width || ch > b.height) return reportInternal("ui", kSizeSite);
    if (cw <= 0 || ch <= 0) return;

    Placement place{UiRect{left, top, int32_t(cw), int32_t(ch)}, 0, 0};
    if (!clipToRect(place.rect, imageClip(surface->image), place.dx, place.dy)) return;
    const UiRect &r = place.rect;
    markDrawn(surface->dirty, r);

    if ((b.flags & 1) != 0)
        drawCompressed(*surface, b, place);
    else
        drawUncompressed(*surface, b, place);
}

int32_t ui::decodeBitmap(int32_t width, int32_t height, const uint8_t *data, int32_t dataLength, uint8_t compressed,
                         uint32_t *dst) {
    if (compressed != 0) return decompressBitmap(width, height, data, dataLength, dst);
    if (height <= 0 || width <= 0) return 1;  // no pixel to convert

    // Stored rows follow one another without a gap, in the output as in the
    // data: the bitmap converts as one run of width x height pixels.
    const int32_t bytesPerPixel = settings.sourceBytesPerPixel;
    const int64_t pixels = int64_t(width) * height;
    if (bytesPerPixel < 3 || data == nullptr || dst == nullptr || pixels > dataLength ||
        pixels * bytesPerPixel > dataLength) {
        reportInternal("ui", kDecodeArgumentSite);
        return 0;
    }
    convertPixels(dst, data, int32_t(pixels), bytesPerPixel);
    return 1;
}
