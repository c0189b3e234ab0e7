// Order harnesses: DstBlt, ScrBlt, MemBlt and OpaqueRect (slots 1, 3, 9, 5),
// PatBlt with every brush style (slot 2) and LineTo (slot 4), each with
// fuzzed records, clipping rectangles and surfaces.
#include "harness.h"

namespace fuzzharness {
namespace orders_detail {

// A clipping rectangle record in an exact block, frozen.
Record<UiClipRect> clipRecord(Frame &frame, Reader &c) {
    Record<UiClipRect> clip;
    *clip.get() = frame.clip(c);
    clip.freeze();
    return clip;
}

// A cached bitmap of MemBlt: bitmapWidth x bitmapHeight pixels in an exact
// block.
InputBytes cachedBitmap(Reader &c, int32_t width, int32_t height) {
    const size_t count = size_t(width) * size_t(height);
    Block pixels(count * 4);
    const uint32_t seed = c.u32();
    for (size_t i = 0; i < count; ++i) pixels.as<uint32_t>()[i] = uint32_t(i) * 0x01000193u ^ seed;
    return InputBytes(pixels.data(), pixels.size());
}

template <typename Order, typename Fn>
void draw(Frame &frame, Record<Order> &order, Record<UiClipRect> &clip, const char *entry, Fn fn) {
    order.freeze();
    currentEntry = entry;
    frame.before();
    fn(frame.surface(), order.get(), clip.get());
    frame.after();
    require(order.unchanged(), "the order record was written");
    require(clip.unchanged(), "the clipping rectangle was written");
}

void rectOrder(Frame &frame, Reader &c) {
    Record<UiClipRect> clip = clipRecord(frame, c);
    switch (c.u8() & 3) {
        case 0: {
            Record<UiDstBltOrder> o;
            o->left = c.coord();
            o->top = c.coord();
            o->width = c.extent();
            o->height = c.extent();
            o->rop = c.component();
            draw(frame, o, clip, "dstBlt", slot<UiDstBltFn>(UI_SLOT_DST_BLT));
            break;
        }
        case 1: {
            Record<UiScrBltOrder> o;
            o->left = c.coord();
            o->top = c.coord();
            o->width = c.extent();
            o->height = c.extent();
            o->rop = c.component();
            o->srcLeft = c.coord();
            o->srcTop = c.coord();
            draw(frame, o, clip, "scrBlt", slot<UiScrBltFn>(UI_SLOT_SCR_BLT));
            break;
        }
        case 2: {
            Record<UiMemBltOrder> o;
            o->client0 = c.i32();
            o->left = c.coord();
            o->top = c.coord();
            o->width = c.extent();
            o->height = c.extent();
            o->rop = c.component();
            o->srcLeft = c.coord();
            o->srcTop = c.coord();
            o->client8 = c.i32();
            o->bitmapWidth = c.u8() % 80;
            o->bitmapHeight = c.u8() % 80;
            InputBytes bitmap = cachedBitmap(c, o->bitmapWidth, o->bitmapHeight);
            o->bitmapPixels = (c.u8() & 15) == 15 ? nullptr : reinterpret_cast<const uint32_t *>(bitmap.data());
            draw(frame, o, clip, "memBlt", slot<UiMemBltFn>(UI_SLOT_MEM_BLT));
            require(bitmap.unchanged(), "the cached bitmap was written");
            break;
        }
        default: {
            Record<UiOpaqueRectOrder> o;
            o->left = c.coord();
            o->top = c.coord();
            o->width = c.extent();
            o->height = c.extent();
            o->red = c.component();
            o->green = c.component();
            o->blue = c.component();
            draw(frame, o, clip, "opaqueRect", slot<UiOpaqueRectFn>(UI_SLOT_OPAQUE_RECT));
        }
    }
}

// Brush styles: the five drawn kinds, refused cached kinds and refused plain
// values.
const int32_t kStyles[16] = {0, 1, 2, 3, 0x81, 0x85, 0x80, 0x83, 0x84, 0x8f, 0x91, 0x95, 0x181, 0x185, 4, 0xff};

// The cached brush a client resolves for the style: 8 bytes for a
// monochrome brush, 64 pixels for a colour one, nothing otherwise.
size_t brushDataSize(int32_t style) {
    if ((style & 0x80) == 0) return 0;
    switch (style & 15) {
        case 1: return 8;
        case 5: return 256;
        default: return 0;
    }
}

void patBltOrder(Frame &frame, Reader &c, Reader &stream) {
    Record<UiClipRect> clip = clipRecord(frame, c);
    Record<UiPatBltOrder> o;
    o->left = c.coord();
    o->top = c.coord();
    o->width = c.extent();
    o->height = c.extent();
    o->rop = c.component();
    for (int32_t &word : o->backColor) word = c.component();
    for (int32_t &word : o->foreColor) word = c.component();
    o->brushOrgX = c.coord();
    o->brushOrgY = c.coord();
    const uint8_t pick = c.u8();
    o->brushStyle = c.u8() < 0xf0 ? kStyles[pick & 15] : c.i32();
    for (uint8_t &byte : o->brushBytes) byte = c.u8();
    if (c.u8() & 1) o->brushBytes[0] &= 7;  // hatch numbers around the valid range

    const size_t brushSize = brushDataSize(o->brushStyle);
    Block brush(brushSize);
    const uint8_t *bytes = nullptr;
    const size_t got = stream.take(brushSize, bytes);
    if (got != 0) std::memcpy(brush.data(), bytes, got);
    if (brushSize > got) std::memset(brush.data() + got, 0x3c, brushSize - got);
    InputBytes brushData(brush.data(), brush.size());
    o->brushData = (c.u8() & 15) == 15 ? nullptr : brushData.data();
    draw(frame, o, clip, "patBlt", slot<UiPatBltFn>(UI_SLOT_PAT_BLT));
    require(brushData.unchanged(), "the brush data was written");
}

void lineOrder(Frame &frame, Reader &c) {
    Record<UiClipRect> clip = clipRecord(frame, c);
    Record<UiLineOrder> o;
    o->startX = c.coord();
    o->startY = c.coord();
    // The end point: anywhere, or a short step from the start (single-pixel,
    // horizontal, vertical and diagonal paths).
    if (c.u8() & 1) {
        o->endX = c.coord();
        o->endY = c.coord();
    } else {
        o->endX = int32_t(uint32_t(o->startX) + uint32_t(int32_t(int8_t(c.u8()))));
        o->endY = int32_t(uint32_t(o->startY) + uint32_t(int32_t(int8_t(c.u8()))));
    }
    o->rop = c.component();
    for (int32_t &word : o->penColor) word = c.component();
    draw(frame, o, clip, "drawLine", slot<UiDrawLineFn>(UI_SLOT_DRAW_LINE));
}

}  // namespace orders_detail

void runRectOrders(const uint8_t *data, size_t size) {
    Input in = splitInput(data, size);
    Reader &c = in.control;
    startLibrary(3);
    setByteOrder(c.u8());
    Frame frame(c);
    const int calls = 1 + c.u8() % 4;
    for (int i = 0; i < calls; ++i) orders_detail::rectOrder(frame, c);
}

void runPatBlt(const uint8_t *data, size_t size) {
    Input in = splitInput(data, size);
    Reader &c = in.control;
    startLibrary(3);
    setByteOrder(c.u8());
    Frame frame(c);
    const int calls = 1 + c.u8() % 4;
    for (int i = 0; i < calls; ++i) orders_detail::patBltOrder(frame, c, in.stream);
}

void runDrawLine(const uint8_t *data, size_t size) {
    Input in = splitInput(data, size);
    Reader &c = in.control;
    startLibrary(3);
    setByteOrder(c.u8());
    Frame frame(c);
    const int calls = 1 + c.u8() % 6;
    for (int i = 0; i < calls; ++i) orders_detail::lineOrder(frame, c);
}

}  // namespace fuzzharness
