// The 25 entry points, in slot order, each with its slot type's signature.
#pragma once

#include "ui32.h"

namespace ui {

void bitmapUpdate(UiSurface *surface, const UiBitmapData *bitmap);                                  // 0
void dstBlt(UiSurface *surface, const UiDstBltOrder *order, const UiClipRect *clip);                // 1
void patBlt(UiSurface *surface, const UiPatBltOrder *order, const UiClipRect *clip);                // 2
void scrBlt(UiSurface *surface, const UiScrBltOrder *order, const UiClipRect *clip);                // 3
void drawLine(UiSurface *surface, const UiLineOrder *order, const UiClipRect *clip);                // 4
void opaqueRect(UiSurface *surface, const UiOpaqueRectOrder *order, const UiClipRect *clip);        // 5
void glyphIndex(UiSurface *surface, const UiGlyphIndexOrder *order, const UiClipRect *clip);        // 6
void fastGlyph(UiSurface *surface, const UiFastGlyphOrder *order, const UiClipRect *clip);          // 7
int32_t decodeBitmap(int32_t width, int32_t height, const uint8_t *data, int32_t dataLength, uint8_t compressed,
                     uint32_t *dst);                                                                // 8
void memBlt(UiSurface *surface, const UiMemBltOrder *order, const UiClipRect *clip);                // 9
void setSourceBytesPerPixel4();                                                                     // 10
void fillBufferRect(imgbuf *image, dirtybuf *dirty, const UiRect *rect, uint32_t colour);           // 11
bool drawChar8x16(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, const uint8_t *cell,
                  uint32_t colour);                                                                 // 12
void hLine(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, int32_t length, uint32_t colour);  // 13
void vLine(imgbuf *image, dirtybuf *dirty, int32_t x, int32_t y, int32_t length, uint32_t colour);  // 14
void setSourceByteOrder(uint8_t order);                                                             // 15
bool putPixels(imgbuf *image, dirtybuf *dirty, const UiRect *rect, const uint8_t *src);             // 16
bool copyRect(imgbuf *image, dirtybuf *dirty, const UiRect *dst, int32_t srcLeft, int32_t srcTop);  // 17
int32_t zrleRawTile(UiTileStream *tile);                                                            // 18
int32_t zrleSolidTile(UiTileStream *tile);                                                          // 19
int32_t zrlePackedPaletteTile(UiTileStream *tile, int32_t subencoding);                             // 20
int32_t zrlePlainRleTile(UiTileStream *tile);                                                       // 21
int32_t zrlePaletteRleTile(UiTileStream *tile, int32_t subencoding);                                // 22
void importImage32(UiImage32Record *record, const uint8_t *src, int32_t rowLength);                 // 23
int32_t hextileRect(imgbuf *image, dirtybuf *dirty, const UiRect *rect, UiReadFn read);             // 24

}  // namespace ui
