// fillSolid, fillRop and fillPattern8x8.
#include "fills.h"

#include <algorithm>
#include <cstring>

#include "rop.h"
#include "ui.h"

namespace {

constexpr int kSolidSite = 1250;
constexpr int kRopSite = 1274;
constexpr int kPatternSite = 1308;
constexpr int kXPhaseLowSite = 1315;
constexpr int kXPhaseHighSite = 1316;
constexpr int kYPhaseLowSite = 1318;
constexpr int kYPhaseHighSite = 1319;

// The 8 colours of one pattern row, starting at pattern column xPhase.
std::array<uint32_t, 8> patternRow(uint8_t bits, int32_t xPhase, uint32_t oneColour, uint32_t zeroColour) {
    std::array<uint32_t, 8> row{};
    for (int k = 0; k < 8; ++k) row[k] = (bits & (0x80u >> ((xPhase + k) & 7))) ? oneColour : zeroColour;
    return row;
}

}  // namespace

bool ui::fillSolid(const imgbuf &image, const UiRect &rect, const uint32_t *colour) {
    uint32_t *p = image.writePtr(rect.left, rect.top, rect.width, rect.height);
    if (p == nullptr) {
        reportInternal("ui", kSolidSite);
        return false;
    }
    if (rect.height == 0) return true;
    // The first row is stored pixel by pixel and every further row is one
    // block copy of it: libc's block copy writes whole cache lines the
    // fastest way the processor offers, which a loop of single stores does
    // not, so that large fills run at the speed of memset.
    std::fill_n(p, rect.width, *colour);
    const size_t rowBytes = 4 * size_t(rect.width);
    uint32_t *row = p;
    for (int32_t y = 1; y < rect.height; ++y) {
        row = nextRow(row, image.stride);
        std::memcpy(row, p, rowBytes);
    }
    return true;
}

bool ui::fillRop(const imgbuf &image, const UiRect &rect, const uint32_t *colour, int32_t index) {
    if (index == kRopCopy) return fillSolid(image, rect, colour);
    uint32_t *p = image.writePtr(rect.left, rect.top, rect.width, rect.height);
    if (p == nullptr) {
        reportInternal("ui", kRopSite);
        return false;
    }
    const RopSolidSpan span = ropSolidSpans[size_t(index) & 15];
    const uint32_t c = *colour;
    for (int32_t y = 0; y < rect.height; ++y) span(rowAt(p, image.stride, y), c, rect.width);
    return true;
}

void ui::fillPattern8x8(const imgbuf &image, const UiPatBltOrder &order, const UiRect &rect, int32_t xPhase,
                        int32_t yPhase, const uint8_t *pattern) {
    uint32_t *p = image.writePtr(rect.left, rect.top, rect.width, rect.height);
    if (p == nullptr) {
        reportInternal("ui", kPatternSite);
        return;
    }
    const uint32_t oneColour = colourOf(order.backColor[0], order.backColor[1], order.backColor[2]);
    const uint32_t zeroColour = colourOf(order.foreColor[0], order.foreColor[1], order.foreColor[2]);
    if (xPhase < 0) return reportInternal("ui", kXPhaseLowSite);
    if (xPhase > 7) return reportInternal("ui", kXPhaseHighSite);
    if (yPhase < 0) return reportInternal("ui", kYPhaseLowSite);
    if (yPhase > 7) return reportInternal("ui", kYPhaseHighSite);

    const int32_t index = order.rop & 15;
    const RopSpan span = ropForwardSpans[size_t(index)];
    const size_t rowBytes = 4 * size_t(rect.width);
    for (int32_t i = 0; i < rect.height; ++i) {
        uint32_t *row = rowAt(p, image.stride, i);
        if (index == kRopCopy && i >= 8) {
            // The pattern repeats every eight rows: one block copy per row.
            std::memcpy(row, rowAt(p, image.stride, i - 8), rowBytes);
            continue;
        }
        const std::array<uint32_t, 8> colours = patternRow(pattern[(yPhase + i) & 7], xPhase, oneColour, zeroColour);
        if (index == kRopCopy) {
            for (int32_t x = 0; x < rect.width; ++x) row[x] = colours[size_t(x) & 7];
            continue;
        }
        // Other operations combine the row in runs of eight pattern pixels.
        for (int32_t x = 0; x < rect.width; x += 8) span(row + x, colours.data(), std::min(8, rect.width - x));
    }
}
