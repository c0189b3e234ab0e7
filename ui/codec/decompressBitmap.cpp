// decompressBitmap: argument checks and the choice of codec.
#include "decompressBitmap.h"

#include "../ui.h"
#include "rlecontext.h"

namespace {

constexpr int kArgumentSite = 902;
constexpr int kPlanarSizeSite = 919;

// Output bytes of a width x height bitmap, or -1 when a dimension is
// negative.  The pixel count is formed in 64 bits (below 2^62, so hostile
// dimensions cannot wrap into a small positive size); beyond 2^31 pixels the
// result saturates, as every such size is refused anyway.
int64_t outputBytes(int32_t width, int32_t height) {
    if (width < 0 || height < 0) return -1;
    const int64_t pixels = int64_t(width) * height;
    return pixels > INT32_MAX ? 4 * int64_t(INT32_MAX) : 4 * pixels;
}

}  // namespace

int32_t ui::decompressBitmap(int32_t width, int32_t height, const uint8_t *data, int32_t dataLength, uint32_t *dst,
                             int32_t *decodedPixels) {
    if (decodedPixels != nullptr) *decodedPixels = 0;
    if (dataLength < 0) {
        reportInternal("ui", kArgumentSite);
        return 0;
    }
    const int64_t bytes = outputBytes(width, height);
    const bool planar = settings.sourceBytesPerPixel == 4;
    if (planar) {
        if (dataLength == 0 || bytes <= 0 || bytes > kMaxOutputBytes) {
            reportInternal("ui", kPlanarSizeSite);
            return 0;
        }
    } else if (bytes < 0 || bytes > kMaxOutputBytes || settings.sourceBytesPerPixel < 3) {
        // A depth below 3 would make a colour image read past its pixels.
        reportInternal("ui", kArgumentSite);
        return 0;
    }
    if ((data == nullptr && dataLength > 0) || (dst == nullptr && bytes > 0)) {
        reportInternal("ui", kArgumentSite);
        return 0;
    }
    if (bytes == 0) return 1;  // no output pixel: nothing to decode

    rlecontext context(width, height, dst, data, dataLength);
    const int32_t result = planar ? context.decodePlanar() : context.decodeInterleaved();
    if (decodedPixels != nullptr) *decodedPixels = context.decodedPixels();
    return result;
}
