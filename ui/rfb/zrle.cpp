// Not implemented yet: the entry points of this file do nothing, so that every
// slot of the drawing table is callable while the subsystem is being built.
#include "../entry.h"

namespace ui {

int32_t zrleRawTile(UiTileStream *) { return -1; }

int32_t zrleSolidTile(UiTileStream *) { return -1; }

int32_t zrlePackedPaletteTile(UiTileStream *, int32_t) { return -1; }

int32_t zrlePlainRleTile(UiTileStream *) { return -1; }

int32_t zrlePaletteRleTile(UiTileStream *, int32_t) { return -1; }

}  // namespace ui
