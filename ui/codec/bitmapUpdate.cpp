// Not implemented yet: the entry points of this file do nothing, so that every
// slot of the drawing table is callable while the subsystem is being built.
#include "../entry.h"

namespace ui {

void bitmapUpdate(UiSurface *, const UiBitmapData *) {}

int32_t decodeBitmap(int32_t, int32_t, const uint8_t *, int32_t, uint8_t, uint32_t *) { return 0; }

}  // namespace ui
