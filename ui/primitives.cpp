// Not implemented yet: the entry points of this file do nothing, so that every
// slot of the drawing table is callable while the subsystem is being built.
#include "entry.h"

namespace ui {

bool drawChar8x16(imgbuf *, dirtybuf *, int32_t, int32_t, const uint8_t *, uint32_t) { return false; }

void hLine(imgbuf *, dirtybuf *, int32_t, int32_t, int32_t, uint32_t) {}

void vLine(imgbuf *, dirtybuf *, int32_t, int32_t, int32_t, uint32_t) {}

bool copyRect(imgbuf *, dirtybuf *, const UiRect *, int32_t, int32_t) { return false; }

}  // namespace ui
