// The process-wide settings and the two setting slots (10 and 15).
#include "ui.h"

#include "entry.h"

namespace ui {

Settings settings{};

void setSourceBytesPerPixel4() { settings.sourceBytesPerPixel = 4; }

void setSourceByteOrder(uint8_t order) { settings.sourceByteOrder = order; }

}  // namespace ui
