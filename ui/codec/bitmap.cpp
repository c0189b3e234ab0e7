// The entry points that take RDP bitmaps: bitmapUpdate (slot 0) paints one
// rectangle of a bitmap update, decodeBitmap (slot 8) decodes a bitmap for the
// client's bitmap cache; and decompressBitmap, which both use.
//
// Bitmap rows are stored bottom-up; bitmapUpdate turns them the right way up
// while copying, decodeBitmap keeps the stored order.
#include <algorithm>
#include <cstring>

#include "../core/entry.h"
#include "../core/rows.h"
#include "../core/surface.h"
#include "rlecontext.h"

namespace {

using ui::Site;

constexpr int32_t kDecodeBufferPixels = 65536;  // 256 KiB on the stack

// The visible part of a bitmap: its rectangle in the image and the column and
// top-down row of the bitmap that land on its top-left corner.
struct Placement {
    UiRect rect;
    int32_t dx, dy;
};

// Stored row of the bitmap that becomes visible row j.
int32_t storedRow(const UiBitmapData &b, const Placement &at, int32_t j) { return b.height - 1 - at.dy - j; }

void drawCompressed(imgbuf &image, const UiBitmapData &b, const Placement &at) {
    if (int64_t(b.width) * b.height > kDecodeBufferPixels) return ui::report(Site::bitmapTooLarge);
    uint32_t decoded[kDecodeBufferPixels];
    int32_t decodedPixels = 0;
    if (!ui::decompressBitmap(b.width, b.height, b.bitmapDataStream, b.bitmapLength, decoded, &decodedPixels))
        return ui::report(Site::bitmapDecode);
    const UiRect &r = at.rect;
    uint32_t *out = ui::writePtr(image, r);
    if (out == nullptr) return ui::report(Site::bitmapCompressedDestination);
    // Pixels that interleaved data ending early never decoded are not copied:
    // the frame buffer keeps its own there.
    for (int32_t j = 0; j < r.height; ++j) {
        const int32_t first = storedRow(b, at, j) * b.width + at.dx;
        const int32_t count = std::min(decodedPixels - first, r.width);
        if (count > 0) std::memcpy(ui::rowAt(out, image.stride, j), decoded + first, 4 * size_t(count));
    }
}

void drawUncompressed(imgbuf &image, const UiBitmapData &b, const Placement &at) {
    const UiRect &r = at.rect;
    uint32_t *out = ui::writePtr(image, r);
    if (out == nullptr) return ui::report(Site::bitmapRawDestination);
    // The data must hold every pixel read, up to the last visible one of the
    // topmost visible row (stored last); 64-bit, so nothing wraps.
    const int32_t depth = ui::settings.sourceBytesPerPixel;
    const int64_t pixels = int64_t(storedRow(b, at, 0)) * b.width + at.dx + r.width;
    if (depth < 3 || b.bitmapDataStream == nullptr || pixels > b.bitmapLength || pixels * depth > b.bitmapLength)
        return ui::report(Site::bitmapRawDestination);
    const size_t rowBytes = size_t(b.width) * size_t(depth);
    const uint8_t *src = b.bitmapDataStream + size_t(storedRow(b, at, 0)) * rowBytes + size_t(at.dx) * size_t(depth);
    for (int32_t j = 0;; src -= rowBytes) {  // the row above is stored before
        ui::convertStored(ui::rowAt(out, image.stride, j), src, r.width, depth);
        if (++j == r.height) break;
    }
}

}  // namespace

int32_t ui::decompressBitmap(int32_t width, int32_t height, const uint8_t *data, int32_t dataLength, uint32_t *dst,
                             int32_t *decodedPixels) {
    if (decodedPixels != nullptr) *decodedPixels = 0;
    if (dataLength < 0) return fail(Site::decodeArguments);
    // The pixel count fits 63 bits; beyond the largest output it saturates,
    // so that four times it cannot wrap into an acceptable size.
    const int64_t pixels = int64_t(width) * height;
    const int64_t bytes = pixels < 0 ? -1 : pixels > kMaxOutputBytes ? kMaxOutputBytes + 1 : 4 * pixels;
    const bool planar = settings.sourceBytesPerPixel == 4;
    if (planar && (dataLength == 0 || bytes <= 0 || bytes > kMaxOutputBytes)) return fail(Site::planarSize);
    // Interleaved rows refer to the row before by the width, so both sizes
    // must be positive; a depth below 3 would read colour images past their
    // pixels.
    if (!planar && (width < 0 || height < 0 || bytes > kMaxOutputBytes || settings.sourceBytesPerPixel < 3))
        return fail(Site::decodeArguments);
    if ((data == nullptr && dataLength > 0) || (dst == nullptr && bytes > 0)) return fail(Site::decodeArguments);
    if (bytes == 0) return 1;

    rlecontext context(width, height, dst, data, dataLength);
    const int32_t result = planar ? decodePlanar(context) : decodeInterleaved(context);
    if (decodedPixels != nullptr) *decodedPixels = context.decodedPixels();
    return result;
}

void ui::bitmapUpdate(UiSurface *surface, const UiBitmapData *bitmap) {
    const UiBitmapData &b = *bitmap;
    int32_t left = b.destLeft, top = b.destTop, right = b.destRight, bottom = b.destBottom;
    translate(*surface, left, top);
    translate(*surface, right, bottom);
    const int64_t cw = int64_t(right) - left + 1, ch = int64_t(bottom) - top + 1;
    if (cw > b.width || ch > b.height) return report(Site::bitmapSize);
    if (cw <= 0 || ch <= 0) return;

    const imgbuf &image = surface->image;
    const UiClipRect whole{0, 0, int32_t(std::min<uint32_t>(image.width, INT32_MAX)) - 1,
                           int32_t(std::min<uint32_t>(image.height, INT32_MAX)) - 1};
    Placement at{UiRect{left, top, int32_t(cw), int32_t(ch)}, 0, 0};
    if (!clipToRect(at.rect, whole, at.dx, at.dy)) return;
    markDrawn(&surface->dirty, at.rect);  // before decoding: it stands even if decoding fails
    if ((b.flags & 1) != 0)
        drawCompressed(surface->image, b, at);
    else
        drawUncompressed(surface->image, b, at);
}

int32_t ui::decodeBitmap(int32_t width, int32_t height, const uint8_t *data, int32_t dataLength, uint8_t compressed,
                         uint32_t *dst) {
    if (compressed != 0) return decompressBitmap(width, height, data, dataLength, dst);
    if (height <= 0 || width <= 0) return 1;
    // Stored rows follow one another without a gap in the data as in the
    // output: one run of width x height pixels.
    const int32_t depth = settings.sourceBytesPerPixel;
    const int64_t pixels = int64_t(width) * height;
    if (depth < 3 || data == nullptr || dst == nullptr || pixels > dataLength || pixels * depth > dataLength)
        return fail(Site::decodeArguments);
    convertStored(dst, data, int32_t(pixels), depth);
    return 1;
}
