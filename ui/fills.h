// Rectangle fills in buffer coordinates.  They neither translate, clip nor
// mark tiles: their callers clip first and call dirtybuf::markRect after.
#pragma once

#include "imgbuf.h"

namespace ui {

// Stores *colour into every pixel of rect.  False (after "imgbuf" 99 and
// "ui" 1250) when rect is negative or outside the image.
bool fillSolid(const imgbuf &image, const UiRect &rect, const uint32_t *colour);

// Applies rop2Table[index] with *colour as the source to every pixel of rect;
// index 12 is fillSolid.  Failure sites: 1274 (1250 for index 12).
bool fillRop(const imgbuf &image, const UiRect &rect, const uint32_t *colour, int32_t index);

// Fills rect with an 8x8 monochrome pattern: 1 bits take backColor, 0 bits
// foreColor, combined through order.rop & 15.  xPhase / yPhase are the pattern
// column / row on the rectangle's left column / top row.  Sites 1308, 1315,
// 1316, 1318, 1319.
void fillPattern8x8(const imgbuf &image, const UiPatBltOrder &order, const UiRect &rect, int32_t xPhase,
                    int32_t yPhase, const uint8_t *pattern);

}  // namespace ui
