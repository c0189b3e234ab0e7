// fillSolid, fillRop, fillPattern8x8 and the row helpers they share.
#include "fills.h"

#include <algorithm>
#include <cstring>

#include "rows.h"
#include "settings.h"
#include "surface.h"

void ui::fillArea(uint32_t *p, uint32_t stride, int32_t width, int32_t height, uint32_t colour) {
    if (height <= 0) return;
    fillRow(p, width, colour);
    if (width < 16) {  // narrow rows: stores cost less than a call
        for (int32_t y = 1; y < height; ++y) fillRow(rowAt(p, stride, y), width, colour);
        return;
    }
    for (int32_t y = 1; y < height; ++y) std::memcpy(rowAt(p, stride, y), p, 4 * size_t(width));
}

// Where the compiler's vector loops are plain loops (x86), rows from the
// ninth on are block copies of the row eight above, which libc copies wider
// than those loops store; elsewhere every row is stored from registers.
void ui::fillPatternRows(uint32_t *p, uint32_t stride, int32_t width, int32_t height, const uint8_t *colours) {
    for (int32_t i = 0; i < height; ++i) {
        uint32_t *row = rowAt(p, stride, i);
        if (kVectorLoops && i >= 8)
            std::memcpy(row, rowAt(p, stride, i - 8), 4 * size_t(width));
        else
            rows::repeatRow(row, width, colours + 32 * (i & 7));
    }
}

bool ui::fillSolid(const imgbuf &image, const UiRect &rect, uint32_t colour) {
    uint32_t *p = writePtr(image, rect);
    if (p == nullptr) return fail(Site::fillSolid);
    rows::fillArea(p, image.stride, rect.width, rect.height, colour);
    return true;
}

bool ui::fillRop(const imgbuf &image, const UiRect &rect, uint32_t colour, int32_t index) {
    if (index == kRopCopy) return fillSolid(image, rect, colour);
    uint32_t *p = writePtr(image, rect);
    if (p == nullptr) return fail(Site::fillRop);
    const auto span = rows::ropSpans[size_t(index) & 15].solid;
    for (int32_t y = 0; y < rect.height; ++y) span(rowAt(p, image.stride, y), colour, rect.width);
    return true;
}

void ui::fillPattern8x8(const imgbuf &image, const UiPatBltOrder &order, const UiRect &rect, int32_t xPhase,
                        int32_t yPhase, const uint8_t *pattern) {
    uint32_t *p = writePtr(image, rect);
    if (p == nullptr) return report(Site::fillPattern);
    if (xPhase < 0) return report(Site::xPhaseLow);
    if (xPhase > 7) return report(Site::xPhaseHigh);
    if (yPhase < 0) return report(Site::yPhaseLow);
    if (yPhase > 7) return report(Site::yPhaseHigh);

    // Each pattern row's eight colours, the row's byte turned so that its
    // bit 7 falls on the first column.
    const uint32_t one = colourOf(order.backColor), zero = colourOf(order.foreColor);
    uint32_t colours[8][8];
    for (int32_t i = 0; i < 8 && i < rect.height; ++i) {
        const uint32_t bits = pattern[(yPhase + i) & 7], turned = (bits << xPhase | bits >> (8 - xPhase)) & 0xff;
        for (int32_t k = 0; k < 8; ++k)  // bit 7 - k spread over the word: all ones or zero
            colours[i][k] = zero ^ ((one ^ zero) & uint32_t(int32_t(turned << (24 + k)) >> 31));
    }
    const int32_t index = order.rop & 15;
    if (index == kRopCopy)
        return fillPatternRows(p, image.stride, rect.width, rect.height, reinterpret_cast<const uint8_t *>(colours));
    const auto span = rows::ropSpans[size_t(index)].forward;
    for (int32_t i = 0; i < rect.height; ++i) {
        uint32_t *row = rowAt(p, image.stride, i);
        for (int32_t x = 0; x < rect.width; x += 8) span(row + x, colours[i & 7], std::min(8, rect.width - x));
    }
}
