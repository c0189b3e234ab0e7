// imgbuf::writePtr and imgbuf::readPtr: the bounds check in front of every
// pixel access of the library.
#include "imgbuf.h"

#include "ui.h"

namespace {

constexpr int kWriteSite = 99;
constexpr int kReadSite = 83;

// True when the rectangle lies inside a width x height image.  The sums are
// unsigned 32-bit: with all four values non-negative they cannot wrap, so a
// left + width beyond 2^31 is refused instead of passing as a negative number.
bool fits(const imgbuf &image, int32_t left, int32_t top, int32_t width, int32_t height) {
    if (left < 0 || top < 0 || width < 0 || height < 0) return false;
    return uint32_t(left) + uint32_t(width) <= image.width && uint32_t(top) + uint32_t(height) <= image.height;
}

uint32_t *pixelAt(const imgbuf &image, int32_t left, int32_t top) {
    // A null pixel pointer yields null whatever the offset, so that the
    // caller's own check refuses it instead of writing near address 0.
    if (image.pixels == nullptr) return nullptr;
    return ui::rowAt(image.pixels, image.stride, top) + left;
}

}  // namespace

uint32_t *imgbuf::writePtr(int32_t left, int32_t top, int32_t rectWidth, int32_t rectHeight) const {
    if (!fits(*this, left, top, rectWidth, rectHeight)) {
        ui::reportInternal("imgbuf", kWriteSite);
        return nullptr;
    }
    return pixelAt(*this, left, top);
}

const uint32_t *imgbuf::readPtr(int32_t left, int32_t top, int32_t rectWidth, int32_t rectHeight) const {
    if (!fits(*this, left, top, rectWidth, rectHeight)) {
        ui::reportInternal("imgbuf", kReadSite);
        return nullptr;
    }
    return pixelAt(*this, left, top);
}
