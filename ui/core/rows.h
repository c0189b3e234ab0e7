// The row functions of the hot loops, named once: rows::name is the NEON form
// (ui/neon/) where the compiler targets NEON, else the plain one.
#pragma once

#include "../codec/rlecontext.h"
#include "../neon/rows.h"
#include "fills.h"
#include "pixels.h"
#include "rop.h"

namespace ui {
#if defined(__ARM_NEON)
namespace rows = neon;
inline constexpr bool kNeonRows = true;
#else
namespace rows = ::ui;
inline constexpr bool kNeonRows = false;  // the planar decoder keeps its loops inline
#endif

// Stored bitmap pixels (first three bytes, low first) of any depth from 3 on.
inline void convertStored(uint32_t *dst, const uint8_t *src, int32_t n, int32_t step) {
    if (const RowFn row = rows::rowFor(step, true)) return row(dst, src, n);
    for (int32_t i = 0; i < n; ++i) dst[i] = lowFirst(src + size_t(step) * size_t(i));
}
}  // namespace ui
