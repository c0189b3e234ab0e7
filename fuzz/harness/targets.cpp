// The list of harnesses: one per attack surface.  fuzz/targets.txt names the
// same targets in the same order for the build and run scripts.
#include "harness.h"

namespace fuzzharness {

namespace targets_detail {

const Target kTargets[] = {
    {"bitmap_update", runBitmapUpdate}, {"decode_bitmap", runDecodeBitmap}, {"rect_orders", runRectOrders},
    {"pat_blt", runPatBlt},             {"draw_line", runDrawLine},         {"glyph_index", runGlyphIndex},
    {"fast_glyph", runFastGlyph},       {"zrle_tiles", runZrleTiles},       {"hextile", runHextile},
    {"primitives", runPrimitives},
};

}  // namespace targets_detail

const Target *targets(size_t &count) {
    count = sizeof targets_detail::kTargets / sizeof targets_detail::kTargets[0];
    return targets_detail::kTargets;
}

const Target *findTarget(const char *name) {
    size_t count = 0;
    const Target *all = targets(count);
    for (size_t i = 0; i < count; ++i)
        if (std::strcmp(all[i].name, name) == 0) return &all[i];
    return nullptr;
}

}  // namespace fuzzharness
