// Harness of the direct primitives in buffer coordinates: fillBufferRect,
// drawChar8x16, hLine, vLine, putPixels, copyRect and importImage32
// (slots 11-14, 16, 17, 23), with fuzzed rectangles and lengths.
#include "harness.h"

namespace fuzzharness {
namespace primitives_detail {

// Source bytes of an exact size: from the stream, then a filler.
InputBytes sourceBytes(Reader &stream, size_t size) {
    Block block(size);
    const uint8_t *bytes = nullptr;
    const size_t got = stream.take(size, bytes);
    if (got != 0) std::memcpy(block.data(), bytes, got);
    for (size_t i = got; i < size; ++i) block.data()[i] = uint8_t(i * 13 + 7);
    return InputBytes(block.data(), block.size());
}

Record<UiRect> rectRecord(Reader &c) {
    Record<UiRect> r;
    r->left = c.coord();
    r->top = c.coord();
    r->width = (c.u8() & 1) ? c.extent() : c.u8() % 70;
    r->height = (c.u8() & 1) ? c.extent() : c.u8() % 70;
    r.freeze();
    return r;
}

// The tile map, or none where the primitive accepts none.
dirtybuf *mapOrNone(Frame &frame, Reader &c) { return (c.u8() & 3) == 3 ? nullptr : frame.dirty(); }

// importImage32 has no checks of its own: the client guarantees a width of
// at most 32, a row length of at least the width and a record with room for
// the rows.  The record here ends right after the last row's last used word;
// the client's words and the unused words of each row hold a sentinel.
void importImage(Reader &c, Reader &stream) {
    constexpr uint32_t kClientWord = 0xc1c1c1c1u;
    constexpr size_t kImageWord = 37;
    const int32_t width = c.u8() % 33;
    const uint8_t h = c.u8();
    const int32_t height = h < 0xf8 ? h % 40 : -int32_t(h & 7);
    const int32_t rowLength = width + ((c.u8() & 1) ? c.u8() % 8 : 0);

    const size_t words = height >= 1 ? kImageWord + 32 * size_t(height - 1) + size_t(width) : kImageWord;
    Block record(words * 4);
    uint32_t *w = record.as<uint32_t>();
    for (size_t i = 0; i < words; ++i) w[i] = kClientWord;
    w[2] = uint32_t(width);
    w[3] = uint32_t(height);
    const size_t sourcePixels = height >= 1 ? size_t(height - 1) * size_t(rowLength) + size_t(width) : 0;
    InputBytes src = sourceBytes(stream, sourcePixels * 4);

    currentEntry = "importImage32";
    slot<UiImportImage32Fn>(UI_SLOT_IMPORT_IMAGE32)(reinterpret_cast<UiImage32Record *>(record.data()), src.data(),
                                                     rowLength);
    require(w[2] == uint32_t(width) && w[3] == uint32_t(height), "importImage32 wrote its width or height");
    for (size_t i = 0; i < words; ++i) {
        const bool clientWord = i < kImageWord;
        const bool unusedColumn = i >= kImageWord && (i - kImageWord) % 32 >= size_t(width);
        if ((clientWord && i != 2 && i != 3) || unusedColumn)
            require(w[i] == kClientWord, "importImage32 wrote outside the image's rows");
    }
    require(src.unchanged(), "the source pixels were written");
}

void primitive(Frame &frame, Reader &c, Reader &stream) {
    const uint8_t op = c.u8() % 7;
    if (op == 6) return importImage(c, stream);
    frame.before();
    switch (op) {
        case 0: {
            Record<UiRect> r = rectRecord(c);
            dirtybuf *dirty = mapOrNone(frame, c);
            const uint32_t colour = c.u32();
            currentEntry = "fillBufferRect";
            slot<UiFillBufferRectFn>(UI_SLOT_FILL_BUFFER_RECT)(frame.image(), dirty, r.get(), colour);
            require(r.unchanged(), "the rectangle record was written");
            break;
        }
        case 1: {
            const int32_t x = c.coord(), y = c.coord();
            dirtybuf *dirty = mapOrNone(frame, c);
            InputBytes cell = sourceBytes(stream, 16);
            const uint32_t colour = c.u32();
            currentEntry = "drawChar8x16";
            slot<UiDrawChar8x16Fn>(UI_SLOT_DRAW_CHAR_8X16)(frame.image(), dirty, x, y, cell.data(), colour);
            require(cell.unchanged(), "the character cell was written");
            break;
        }
        case 2:
        case 3: {
            const int32_t x = c.coord(), y = c.coord();
            const int32_t length = (c.u8() & 1) ? c.extent() : c.u8() % 300;
            dirtybuf *dirty = mapOrNone(frame, c);
            const uint32_t colour = c.u32();
            if (op == 2) {
                currentEntry = "hLine";
                slot<UiHLineFn>(UI_SLOT_H_LINE)(frame.image(), dirty, x, y, length, colour);
            } else {
                currentEntry = "vLine";
                slot<UiVLineFn>(UI_SLOT_V_LINE)(frame.image(), dirty, x, y, length, colour);
            }
            break;
        }
        case 4: {
            // The source holds width x height pixels.  No image of the
            // harness holds more than 65,536, so a larger rectangle cannot
            // pass the bounds check and gets an empty source.
            Record<UiRect> r = rectRecord(c);
            const int64_t pixels = r->width < 0 || r->height < 0 ? 0 : int64_t(r->width) * r->height;
            InputBytes src = sourceBytes(stream, pixels <= 65536 ? size_t(pixels) * 4 : 0);
            currentEntry = "putPixels";
            slot<UiPutPixelsFn>(UI_SLOT_PUT_PIXELS)(frame.image(), frame.dirty(), r.get(), src.data());
            require(r.unchanged(), "the rectangle record was written");
            require(src.unchanged(), "the source pixels were written");
            break;
        }
        default: {
            Record<UiRect> r = rectRecord(c);
            const int32_t srcLeft = c.coord(), srcTop = c.coord();
            currentEntry = "copyRect";
            slot<UiCopyRectFn>(UI_SLOT_COPY_RECT)(frame.image(), frame.dirty(), r.get(), srcLeft, srcTop);
            require(r.unchanged(), "the rectangle record was written");
        }
    }
    frame.after();
}

}  // namespace primitives_detail

void runPrimitives(const uint8_t *data, size_t size) {
    Input in = splitInput(data, size);
    Reader &c = in.control;
    startLibrary(3);
    setByteOrder(c.u8());
    Frame frame(c);
    const int calls = 1 + c.u8() % 8;
    for (int i = 0; i < calls; ++i) primitives_detail::primitive(frame, c, in.stream);
}

}  // namespace fuzzharness
