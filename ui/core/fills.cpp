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

    const uint32_t one = colourOf(order.backColor), zero = colourOf(order.foreColor);
    const int32_t index = order.rop & 15;
    const auto span = rows::ropSpans[size_t(index)].forward;
    for (int32_t i = 0; i < rect.height; ++i) {
        uint32_t *row = rowAt(p, image.stride, i);
        // With copy the pattern repeats every eight rows: one block copy.
        if (index == kRopCopy && i >= 8) {
            std::memcpy(row, rowAt(p, image.stride, i - 8), 4 * size_t(rect.width));
            continue;
        }
        // The row's byte turned so that its bit 7 falls on the first column.
        const uint32_t bits = pattern[(yPhase + i) & 7], turned = (bits << xPhase | bits >> (8 - xPhase)) & 0xff;
        uint32_t colours[8];
        for (int32_t k = 0; k < 8; ++k) colours[k] = zero ^ ((one ^ zero) & (0u - (turned >> (7 - k) & 1)));
        if (index == kRopCopy) {
            const int32_t n = std::min(8, rect.width);
            for (int32_t k = 0; k < n; ++k) row[k] = colours[k];
            repeatAcross(row, 8, rect.width);
            continue;
        }
        for (int32_t x = 0; x < rect.width; x += 8) span(row + x, colours, std::min(8, rect.width - x));
    }
}
