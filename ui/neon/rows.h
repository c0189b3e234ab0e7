// The NEON row functions, each the twin of a plain one in ui/core or
// ui/codec with the same name, arguments and results (ui/core/rows.h picks
// between them).  Compiled only where the compiler targets NEON.
#pragma once

#if defined(__ARM_NEON)

#include <arm_neon.h>

#include <array>
#include <cstdint>

#include "../codec/streamInOps.h"
#include "../core/pixels.h"
#include "../core/rop.h"

namespace ui::neon {

// fillRow and fillArea: fillRow.h.  glyphRow: glyphRow.h (the glyph
// blitter includes it).

// The sixteen raster operations on rows (rop.cpp).
extern const std::array<RopSpans, 16> ropSpans;

// Source pixels of 3 or 4 bytes, either byte order, into words (convert.cpp).
RowFn rowFor(int32_t step, bool low);

// Three byte planes into words (mergePlanes.cpp).
void mergePlanes(uint32_t *out, const uint8_t *red, const uint8_t *green, const uint8_t *blue, int32_t n);

// The three run-length colour planes of the planar codec into the pixels;
// the planes completed (planarPlanes.cpp).
int32_t decodePlanes(streamIn &in, uint32_t *pixels, int32_t width, int32_t height);
// The run-length alpha plane, read past (planarPlanes.cpp).
bool skipPlane(streamIn &in, int32_t width, int32_t height);

}  // namespace ui::neon

#include "fillRow.h"

#endif
