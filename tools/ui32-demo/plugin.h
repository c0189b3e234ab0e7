// The demo's client side of ui32: kit::Table loads the module and calls its
// slots; Plugin counts per slot the calls, the reports that arrive during
// them, the calls that marked tiles and the calls whose result said failure.
#pragma once

#include <array>
#include <string>
#include <type_traits>

#include "frame.h"
#include "table.h"

namespace demo {

struct SlotStats {
    long calls = 0, reports = 0;
    long marked = 0;  // calls after which the tile map's `changed` flag was set
    long failed = 0;  // calls whose result reported failure
};

const char *slotName(int slot);

class Plugin {
public:
    bool load(const std::string &path, const UiConfig &config, std::string &error);
    const SlotStats &stats(int slot) const { return stats_[size_t(slot)]; }
    long totalReports() const;

    using Frame = kit::Frame;
    void bitmapUpdate(Frame &f, const UiBitmapData &b) {
        run(UI_SLOT_BITMAP_UPDATE, &f.dirty(), [&] { t_.bitmapUpdate(f.surface(), b); });
    }
    void dstBlt(Frame &f, const UiDstBltOrder &o, const UiClipRect &c) {
        run(UI_SLOT_DST_BLT, &f.dirty(), [&] { t_.dstBlt(f.surface(), o, c); });
    }
    void patBlt(Frame &f, const UiPatBltOrder &o, const UiClipRect &c) {
        run(UI_SLOT_PAT_BLT, &f.dirty(), [&] { t_.patBlt(f.surface(), o, c); });
    }
    void scrBlt(Frame &f, const UiScrBltOrder &o, const UiClipRect &c) {
        run(UI_SLOT_SCR_BLT, &f.dirty(), [&] { t_.scrBlt(f.surface(), o, c); });
    }
    void drawLine(Frame &f, const UiLineOrder &o, const UiClipRect &c) {
        run(UI_SLOT_DRAW_LINE, &f.dirty(), [&] { t_.drawLine(f.surface(), o, c); });
    }
    void opaqueRect(Frame &f, const UiOpaqueRectOrder &o, const UiClipRect &c) {
        run(UI_SLOT_OPAQUE_RECT, &f.dirty(), [&] { t_.opaqueRect(f.surface(), o, c); });
    }
    void glyphIndex(Frame &f, const UiGlyphIndexOrder &o, const UiClipRect &c) {
        run(UI_SLOT_GLYPH_INDEX, &f.dirty(), [&] { t_.glyphIndex(f.surface(), o, c); });
    }
    void fastGlyph(Frame &f, const UiFastGlyphOrder &o, const UiClipRect &c) {
        run(UI_SLOT_FAST_GLYPH, &f.dirty(), [&] { t_.fastGlyph(f.surface(), o, c); });
    }
    bool decodeBitmap(int32_t w, int32_t h, const kit::Bytes &data, bool compressed, uint32_t *dst) {
        const auto call = [&] { return t_.decodeBitmap(w, h, data.data(), data.length(), compressed, dst); };
        return run(UI_SLOT_DECODE_BITMAP, nullptr, call) == 1;
    }
    void memBlt(Frame &f, const UiMemBltOrder &o, const UiClipRect &c) {
        run(UI_SLOT_MEM_BLT, &f.dirty(), [&] { t_.memBlt(f.surface(), o, c); });
    }
    void setSourceBytesPerPixel4() {
        run(UI_SLOT_SET_SOURCE_BYTES_PER_PIXEL_4, nullptr, [&] { t_.setSourceBytesPerPixel4(); });
    }
    void fillBufferRect(imgbuf *i, dirtybuf *d, const UiRect &r, uint32_t colour) {
        run(UI_SLOT_FILL_BUFFER_RECT, d, [&] { t_.fillBufferRect(i, d, r, colour); });
    }
    bool drawChar8x16(imgbuf *i, dirtybuf *d, int32_t x, int32_t y, const uint8_t *cell, uint32_t colour) {
        return run(UI_SLOT_DRAW_CHAR_8X16, d, [&] { return t_.drawChar8x16(i, d, x, y, cell, colour); });
    }
    void hLine(imgbuf *i, dirtybuf *d, int32_t x, int32_t y, int32_t n, uint32_t c) {
        run(UI_SLOT_H_LINE, d, [&] { t_.hLine(i, d, x, y, n, c); });
    }
    void vLine(imgbuf *i, dirtybuf *d, int32_t x, int32_t y, int32_t n, uint32_t c) {
        run(UI_SLOT_V_LINE, d, [&] { t_.vLine(i, d, x, y, n, c); });
    }
    void setSourceByteOrder(uint8_t order) {
        run(UI_SLOT_SET_SOURCE_BYTE_ORDER, nullptr, [&] { t_.setSourceByteOrder(order); });
    }
    bool putPixels(Frame &f, const UiRect &r, const uint8_t *src) {
        return run(UI_SLOT_PUT_PIXELS, &f.dirty(), [&] { return t_.putPixels(&f.image(), &f.dirty(), r, src); });
    }
    bool copyRect(Frame &f, const UiRect &r, int32_t x, int32_t y) {
        return run(UI_SLOT_COPY_RECT, &f.dirty(), [&] { return t_.copyRect(&f.image(), &f.dirty(), r, x, y); });
    }
    // One ZRLE tile whose sub-encoding byte the caller has read (a defined one).
    int32_t zrleTile(int32_t subencoding, UiTileStream &tile) {
        return run(zrleSlot(subencoding), tile.dirty, [&] { return t_.zrleTile(subencoding, tile); });
    }
    void importImage32(UiImage32Record &r, const uint8_t *src, int32_t rowLength) {
        run(UI_SLOT_IMPORT_IMAGE32, nullptr, [&] { t_.importImage32(r, src, rowLength); });
    }
    bool hextileRect(Frame &f, const UiRect &r, UiReadFn read) {
        const auto call = [&] { return t_.hextileRect(&f.image(), &f.dirty(), r, read); };
        return run(UI_SLOT_HEXTILE_RECT, &f.dirty(), call) == 1;
    }

private:
    static int zrleSlot(int32_t subencoding);
    void begin(int slot, dirtybuf *dirty);
    void end(dirtybuf *dirty, bool ok);
    // Calls `call` as slot `slot`, counted; a result of 1 (or true) is success.
    template <typename Call>
    std::invoke_result_t<Call> run(int slot, dirtybuf *dirty, Call call) {
        begin(slot, dirty);
        if constexpr (std::is_void_v<std::invoke_result_t<Call>>) {
            call();
            end(dirty, true);
        } else {
            const auto result = call();
            end(dirty, result == 1);
            return result;
        }
    }

    kit::Table t_;
    std::array<SlotStats, UI_SLOT_COUNT> stats_{};
};

}  // namespace demo
