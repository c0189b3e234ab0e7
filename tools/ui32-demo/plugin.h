// The demo's client side of ui32: loads the plug-in by path, fills the
// drawing table through srn_get and calls the slots, counting per slot the
// calls, the reports that arrive during them, the calls that marked tiles
// and the calls whose result said failure.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "ui32.h"

namespace demo {

struct SlotStats {
    long calls = 0;
    long reports = 0;
    long marked = 0;  // calls after which the tile map's `changed` flag was set
    long failed = 0;  // calls whose result reported failure
};

// The client's frame buffer with its tile map, wrapped in a UiSurface.
struct Screen {
    int width;
    int height;
    std::vector<uint32_t> pixels;
    std::vector<uint8_t> tiles;
    UiSurface surface{};

    Screen(int w, int h);
    Screen(const Screen &) = delete;
    Screen &operator=(const Screen &) = delete;
    imgbuf *image() { return &surface.image; }
    dirtybuf *dirty() { return &surface.dirty; }
    uint32_t at(int x, int y) const { return pixels[size_t(y) * size_t(width) + size_t(x)] & 0xFFFFFF; }
    UiClipRect everything() const { return {0, 0, width - 1, height - 1}; }
    void clearDirty();   // the client's job after presenting a frame
    int dirtyTiles() const;
};

const char *slotName(int slot);

class Plugin {
public:
    // dlopen + srn_get with `config`; false with a message on failure.
    bool load(const std::string &path, const UiConfig &config, std::string &error);
    // The same with an srn_get already at hand (a statically linked library).
    bool attach(void (*srnGet)(UiDrawTable, UiLogFn, const UiConfig *), const UiConfig &config, std::string &error);
    // srn_get again with a configuration (resets the source depth and the
    // glyph fragment store).
    void configure(const UiConfig &config);

    void bitmapUpdate(Screen &s, const UiBitmapData &bitmap);
    void dstBlt(Screen &s, const UiDstBltOrder &order, const UiClipRect &clip);
    void patBlt(Screen &s, const UiPatBltOrder &order, const UiClipRect &clip);
    void scrBlt(Screen &s, const UiScrBltOrder &order, const UiClipRect &clip);
    void drawLine(Screen &s, const UiLineOrder &order, const UiClipRect &clip);
    void opaqueRect(Screen &s, const UiOpaqueRectOrder &order, const UiClipRect &clip);
    void glyphIndex(Screen &s, const UiGlyphIndexOrder &order, const UiClipRect &clip);
    void fastGlyph(Screen &s, const UiFastGlyphOrder &order, const UiClipRect &clip);
    bool decodeBitmap(int width, int height, const std::vector<uint8_t> &data, bool compressed, uint32_t *dst);
    void memBlt(Screen &s, const UiMemBltOrder &order, const UiClipRect &clip);
    void setSourceBytesPerPixel4();
    void fillBufferRect(imgbuf *image, dirtybuf *dirty, const UiRect &rect, uint32_t colour);
    bool drawChar8x16(imgbuf *image, dirtybuf *dirty, int x, int y, const uint8_t *cell, uint32_t colour);
    void hLine(imgbuf *image, dirtybuf *dirty, int x, int y, int length, uint32_t colour);
    void vLine(imgbuf *image, dirtybuf *dirty, int x, int y, int length, uint32_t colour);
    void setSourceByteOrder(uint8_t order);
    bool putPixels(Screen &s, const UiRect &rect, const uint8_t *src);
    bool copyRect(Screen &s, const UiRect &dst, int srcLeft, int srcTop);
    // One ZRLE tile whose sub-encoding byte the caller has read.
    int32_t zrleTile(int subencoding, UiTileStream &tile);
    void importImage32(UiImage32Record &record, const uint8_t *src, int rowLength);
    bool hextileRect(Screen &s, const UiRect &rect, UiReadFn read);

    const SlotStats &stats(int slot) const { return stats_[size_t(slot)]; }
    long totalReports() const;
    long unexpectedReports() const { return unattributed_; }

private:
    template <typename Fn>
    Fn fn(int slot) const;
    void begin(int slot, dirtybuf *dirty);
    void end(dirtybuf *dirty, bool ok);

    UiDrawTable table_{};
    void (*srnGet_)(UiDrawTable, UiLogFn, const UiConfig *) = nullptr;
    std::array<SlotStats, UI_SLOT_COUNT> stats_{};
    long unattributed_ = 0;
};

}  // namespace demo
