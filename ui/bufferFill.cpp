// fillBufferRect (slot 11): a solid rectangle in buffer coordinates, refused
// with the offending edge when it does not lie inside the image.
#include "dirtybuf.h"
#include "entry.h"
#include "fills.h"
#include "ui.h"

namespace {

constexpr int kLeftSite = 2946;
constexpr int kRightSite = 2947;
constexpr int kTopSite = 2948;
constexpr int kBottomSite = 2949;

// The edge checks in their fixed order; the far edges are summed in 64 bits,
// so a width or height that would overflow is refused at its own edge.
int failedEdge(const imgbuf &image, const UiRect &r) {
    if (r.left < 0) return kLeftSite;
    if (int64_t(r.left) + r.width > int64_t(image.width)) return kRightSite;
    if (r.top < 0) return kTopSite;
    if (int64_t(r.top) + r.height > int64_t(image.height)) return kBottomSite;
    return 0;
}

}  // namespace

void ui::fillBufferRect(imgbuf *image, dirtybuf *dirty, const UiRect *rect, uint32_t colour) {
    const UiRect r = *rect;
    if (const int site = failedEdge(*image, r); site != 0) return reportInternal("ui", site);
    // A negative width or height passes the edge checks; fillSolid's pixel
    // check refuses it.
    if (!fillSolid(*image, r, &colour)) return;
    markIfGiven(dirty, r.left, r.top, r.width, r.height);
}
