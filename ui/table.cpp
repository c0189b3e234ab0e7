// srn_get: the library's one exported function.  It keeps the log callback,
// takes the configuration, reserves the glyph fragment store and fills the
// client's drawing table.
#include <cstdlib>
#include <cstring>

#include "entry.h"
#include "ui.h"

namespace {

constexpr int kScratchSite = 3782;

template <typename Fn>
void *slot(Fn fn) {
    return reinterpret_cast<void *>(fn);
}

// Slots 0-10: the RDP orders and bitmaps, which need the configuration.
void fillOrderSlots(UiDrawTable table) {
    table[UI_SLOT_BITMAP_UPDATE] = slot(UiBitmapUpdateFn(ui::bitmapUpdate));
    table[UI_SLOT_DST_BLT] = slot(UiDstBltFn(ui::dstBlt));
    table[UI_SLOT_PAT_BLT] = slot(UiPatBltFn(ui::patBlt));
    table[UI_SLOT_SCR_BLT] = slot(UiScrBltFn(ui::scrBlt));
    table[UI_SLOT_DRAW_LINE] = slot(UiDrawLineFn(ui::drawLine));
    table[UI_SLOT_OPAQUE_RECT] = slot(UiOpaqueRectFn(ui::opaqueRect));
    table[UI_SLOT_GLYPH_INDEX] = slot(UiGlyphIndexFn(ui::glyphIndex));
    table[UI_SLOT_FAST_GLYPH] = slot(UiFastGlyphFn(ui::fastGlyph));
    table[UI_SLOT_DECODE_BITMAP] = slot(UiDecodeBitmapFn(ui::decodeBitmap));
    table[UI_SLOT_MEM_BLT] = slot(UiMemBltFn(ui::memBlt));
    table[UI_SLOT_SET_SOURCE_BYTES_PER_PIXEL_4] = slot(UiSetSourceBytesPerPixel4Fn(ui::setSourceBytesPerPixel4));
}

// Slots 11-24: the direct primitives and the RFB decoders.
void fillPrimitiveSlots(UiDrawTable table) {
    table[UI_SLOT_FILL_BUFFER_RECT] = slot(UiFillBufferRectFn(ui::fillBufferRect));
    table[UI_SLOT_DRAW_CHAR_8X16] = slot(UiDrawChar8x16Fn(ui::drawChar8x16));
    table[UI_SLOT_H_LINE] = slot(UiHLineFn(ui::hLine));
    table[UI_SLOT_V_LINE] = slot(UiVLineFn(ui::vLine));
    table[UI_SLOT_SET_SOURCE_BYTE_ORDER] = slot(UiSetSourceByteOrderFn(ui::setSourceByteOrder));
    table[UI_SLOT_PUT_PIXELS] = slot(UiPutPixelsFn(ui::putPixels));
    table[UI_SLOT_COPY_RECT] = slot(UiCopyRectFn(ui::copyRect));
    table[UI_SLOT_ZRLE_RAW_TILE] = slot(UiZrleRawTileFn(ui::zrleRawTile));
    table[UI_SLOT_ZRLE_SOLID_TILE] = slot(UiZrleSolidTileFn(ui::zrleSolidTile));
    table[UI_SLOT_ZRLE_PACKED_PALETTE_TILE] = slot(UiZrlePackedPaletteTileFn(ui::zrlePackedPaletteTile));
    table[UI_SLOT_ZRLE_PLAIN_RLE_TILE] = slot(UiZrlePlainRleTileFn(ui::zrlePlainRleTile));
    table[UI_SLOT_ZRLE_PALETTE_RLE_TILE] = slot(UiZrlePaletteRleTileFn(ui::zrlePaletteRleTile));
    table[UI_SLOT_IMPORT_IMAGE32] = slot(UiImportImage32Fn(ui::importImage32));
    table[UI_SLOT_HEXTILE_RECT] = slot(UiHextileRectFn(ui::hextileRect));
}

// A new, zeroed fragment store: all 256 fragment slots empty.
void reserveScratchBuffer() {
    auto *buffer = static_cast<uint8_t *>(std::malloc(ui::kScratchBufferSize));
    if (buffer == nullptr) {
        ui::settings.scratchBuffer = nullptr;
        ui::reportInternal("ui", kScratchSite);
        return;
    }
    std::memset(buffer, 0, ui::kScratchBufferSize);
    ui::settings.scratchBuffer = buffer;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void srn_get(UiDrawTable table, UiLogFn log,
                                                                 const UiConfig *config) {
    ui::settings.log = log;
    if (config != nullptr) {
        fillOrderSlots(table);
        ui::settings.hatchPatterns = config->hatchPatterns;
        ui::settings.sourceBytesPerPixel = config->sourceBytesPerPixel;
        reserveScratchBuffer();
    }
    fillPrimitiveSlots(table);
}
