// Not implemented yet: the entry points of this file do nothing, so that every
// slot of the drawing table is callable while the subsystem is being built.
#include "entry.h"

namespace ui {

bool putPixels(imgbuf *, dirtybuf *, const UiRect *, const uint8_t *) { return false; }

void importImage32(UiImage32Record *, const uint8_t *, int32_t) {}

}  // namespace ui
