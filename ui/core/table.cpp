// srn_get, the library's one exported function, and the two setting slots.
#include <cstdlib>
#include <cstring>

#include "entry.h"
#include "settings.h"

namespace ui {

Settings settings{};

void setSourceBytesPerPixel4() { settings.sourceBytesPerPixel = 4; }

void setSourceByteOrder(uint8_t order) { settings.sourceByteOrder = order; }

}  // namespace ui

namespace {

template <typename Fn>
void *slot(Fn fn) {
    return reinterpret_cast<void *>(fn);
}

// Slots 0-10: the RDP orders and bitmaps, written only with a configuration.
void fillOrderSlots(UiDrawTable t) {
    t[UI_SLOT_BITMAP_UPDATE] = slot(UiBitmapUpdateFn(ui::bitmapUpdate));
    t[UI_SLOT_DST_BLT] = slot(UiDstBltFn(ui::dstBlt));
    t[UI_SLOT_PAT_BLT] = slot(UiPatBltFn(ui::patBlt));
    t[UI_SLOT_SCR_BLT] = slot(UiScrBltFn(ui::scrBlt));
    t[UI_SLOT_DRAW_LINE] = slot(UiDrawLineFn(ui::drawLine));
    t[UI_SLOT_OPAQUE_RECT] = slot(UiOpaqueRectFn(ui::opaqueRect));
    t[UI_SLOT_GLYPH_INDEX] = slot(UiGlyphIndexFn(ui::glyphIndex));
    t[UI_SLOT_FAST_GLYPH] = slot(UiFastGlyphFn(ui::fastGlyph));
    t[UI_SLOT_DECODE_BITMAP] = slot(UiDecodeBitmapFn(ui::decodeBitmap));
    t[UI_SLOT_MEM_BLT] = slot(UiMemBltFn(ui::memBlt));
    t[UI_SLOT_SET_SOURCE_BYTES_PER_PIXEL_4] = slot(UiSetSourceBytesPerPixel4Fn(ui::setSourceBytesPerPixel4));
}

// Slots 11-24: the direct primitives and the RFB decoders, always written.
void fillPrimitiveSlots(UiDrawTable t) {
    t[UI_SLOT_FILL_BUFFER_RECT] = slot(UiFillBufferRectFn(ui::fillBufferRect));
    t[UI_SLOT_DRAW_CHAR_8X16] = slot(UiDrawChar8x16Fn(ui::drawChar8x16));
    t[UI_SLOT_H_LINE] = slot(UiHLineFn(ui::hLine));
    t[UI_SLOT_V_LINE] = slot(UiVLineFn(ui::vLine));
    t[UI_SLOT_SET_SOURCE_BYTE_ORDER] = slot(UiSetSourceByteOrderFn(ui::setSourceByteOrder));
    t[UI_SLOT_PUT_PIXELS] = slot(UiPutPixelsFn(ui::putPixels));
    t[UI_SLOT_COPY_RECT] = slot(UiCopyRectFn(ui::copyRect));
    t[UI_SLOT_ZRLE_RAW_TILE] = slot(UiZrleRawTileFn(ui::zrleRawTile));
    t[UI_SLOT_ZRLE_SOLID_TILE] = slot(UiZrleSolidTileFn(ui::zrleSolidTile));
    t[UI_SLOT_ZRLE_PACKED_PALETTE_TILE] = slot(UiZrlePackedPaletteTileFn(ui::zrlePackedPaletteTile));
    t[UI_SLOT_ZRLE_PLAIN_RLE_TILE] = slot(UiZrlePlainRleTileFn(ui::zrlePlainRleTile));
    t[UI_SLOT_ZRLE_PALETTE_RLE_TILE] = slot(UiZrlePaletteRleTileFn(ui::zrlePaletteRleTile));
    t[UI_SLOT_IMPORT_IMAGE32] = slot(UiImportImage32Fn(ui::importImage32));
    t[UI_SLOT_HEXTILE_RECT] = slot(UiHextileRectFn(ui::hextileRect));
}

// A new fragment store with all 256 slots empty, or none after a report.
uint8_t *reserveScratchBuffer() {
    auto *buffer = static_cast<uint8_t *>(std::malloc(ui::kScratchBufferSize));
    if (buffer == nullptr) {
        ui::report(ui::Site::noFragmentStore);
        return nullptr;
    }
    return static_cast<uint8_t *>(std::memset(buffer, 0, ui::kScratchBufferSize));
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void srn_get(UiDrawTable table, UiLogFn log,
                                                                 const UiConfig *config) {
    ui::settings.log = log;
    if (config != nullptr) {
        fillOrderSlots(table);
        ui::settings.hatchPatterns = config->hatchPatterns;
        ui::settings.sourceBytesPerPixel = config->sourceBytesPerPixel;
        ui::settings.scratchBuffer = reserveScratchBuffer();
    }
    fillPrimitiveSlots(table);
}
