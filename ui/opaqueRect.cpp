// Not implemented yet: the entry points of this file do nothing, so that every
// slot of the drawing table is callable while the subsystem is being built.
#include "entry.h"

namespace ui {

void opaqueRect(UiSurface *, const UiOpaqueRectOrder *, const UiClipRect *) {}

}  // namespace ui
