// Text harnesses: GlyphIndex / FastIndex (slot 6) and FastGlyph (slot 7) with
// fuzzed order records, clipping rectangles, surfaces and a fuzzed glyph
// cache (entry size, entry count, glyph headers and bits).
#include "harness.h"

namespace fuzzharness {
namespace text_detail {

// The client's glyph cache: the descriptor and its entries, each an 8-byte
// glyph header followed by entryDataSize bytes, in one exact block.  Glyph
// indices are bytes, so at most 256 entries can ever be named; a larger
// count is backed by 256 entries.
class GlyphCache {
public:
    GlyphCache(Reader &c, Reader &stream) {
        const uint8_t mode = c.u8();
        int32_t size = c.u8();
        size |= (c.u8() & 3) << 8;  // 0 to 1023
        int32_t count = c.u8() % 64;
        if (mode & 0x01) count = c.u16() % 300;
        if (mode & 0x02) count = c.i32();
        if (mode & 0x04) size = -1 - int32_t(c.u8());  // a size the library must refuse
        descriptor_->entryDataSize = size;
        descriptor_->entryCount = count;

        const size_t entries = count > 0 && size >= 0 ? size_t(count < 256 ? count : 256) : 0;
        const size_t stride = size >= 0 ? size_t(size) + sizeof(UiGlyph) : 0;
        Block block(entries * stride);
        const uint8_t *bytes = nullptr;
        const size_t got = stream.take(block.size(), bytes);
        if (got != 0) std::memcpy(block.data(), bytes, got);
        for (size_t i = got; i < block.size(); ++i) block.data()[i] = uint8_t(i * 37 + 11);
        // Tame headers: widths and heights that mostly fit their entries,
        // so that the drawing paths are reached as well as the refusals.
        if (mode & 0x08) {
            for (size_t e = 0; e < entries; ++e) {
                uint8_t *h = block.data() + e * stride;
                const uint16_t cx = uint16_t((h[4] | (h[5] << 8)) % 40);
                uint16_t cy = uint16_t((h[6] | (h[7] << 8)) % 40);
                const size_t rowBytes = (size_t(cx) + 7) / 8;
                if (rowBytes != 0 && size_t(cy) * rowBytes > size_t(size)) cy = uint16_t(size_t(size) / rowBytes);
                h[4] = uint8_t(cx);
                h[5] = 0;
                h[6] = uint8_t(cy);
                h[7] = 0;
            }
        }
        entries_ = InputBytes(block.data(), block.size());
        descriptor_->entries = (mode & 0x10) ? nullptr : entries_.data();
        descriptor_.freeze();
        absent_ = (mode & 0xe0) == 0xe0;
    }

    const UiGlyphCache *get() const { return absent_ ? nullptr : descriptor_.get(); }
    void check() const {
        require(descriptor_.unchanged(), "the glyph cache descriptor was written");
        require(entries_.unchanged(), "a glyph cache entry was written");
    }

private:
    Record<UiGlyphCache> descriptor_;
    InputBytes entries_;
    bool absent_ = false;
};

// Background and opaque rectangles: around the image or anywhere.
void edges(Reader &c, int32_t &left, int32_t &top, int32_t &right, int32_t &bottom) {
    left = c.coord();
    top = c.coord();
    if (c.u8() & 1) {
        right = c.coord();
        bottom = c.coord();
    } else {
        right = int32_t(uint32_t(left) + c.u8());
        bottom = int32_t(uint32_t(top) + c.u8());
    }
}

// The opaque rectangle: all 0 (the FastIndex form takes the background's
// edges), coded by flags in opTop with opBottom -32768, or any edges.
void opaqueEdges(Reader &c, int32_t &left, int32_t &top, int32_t &right, int32_t &bottom) {
    switch (c.u8() & 3) {
        case 0: left = top = right = bottom = 0; break;
        case 1:
            edges(c, left, top, right, bottom);
            bottom = -32768;
            top = c.u8();
            break;
        default: edges(c, left, top, right, bottom);
    }
}

int32_t drawingPoint(Reader &c) { return (c.u8() & 3) == 0 ? -32768 : c.coord(); }

template <typename Order>
void commonFields(Reader &c, Order &o) {
    for (int32_t &word : o.textColor) word = c.component();
    for (int32_t &word : o.opaqueColor) word = c.component();
    edges(c, o.bkLeft, o.bkTop, o.bkRight, o.bkBottom);
    opaqueEdges(c, o.opLeft, o.opTop, o.opRight, o.opBottom);
    o.x = drawingPoint(c);
    o.y = drawingPoint(c);
}

template <typename Order, typename Fn>
void draw(Frame &frame, Record<Order> &order, const GlyphCache &cache, Reader &c, const char *entry, Fn fn) {
    Record<UiClipRect> clip;
    *clip.get() = frame.clip(c);
    clip.freeze();
    order.freeze();
    currentEntry = entry;
    frame.before();
    fn(frame.surface(), order.get(), clip.get());
    frame.after();
    require(order.unchanged(), "the order record was written");
    require(clip.unchanged(), "the clipping rectangle was written");
    cache.check();
}

void glyphIndexOrder(Frame &frame, const GlyphCache &cache, Reader &c, Reader &stream) {
    Record<UiGlyphIndexOrder> o;
    o->cacheId = c.i32();
    o->flAccel = c.u8();
    o->ulCharInc = (c.u8() & 1) ? c.coord() : 0;
    o->fOpRedundant = c.u8() & 1;
    commonFields(c, *o.get());
    // cbData counts the meaningful bytes of rgbData; the string comes from
    // the stream and the rest of the field holds stale bytes.
    const uint8_t length = c.u8();
    o->cbData = c.u8() < 0xf0 ? int32_t(length) : c.i32();
    const uint8_t *bytes = nullptr;
    const size_t got = stream.take(length, bytes);
    std::memset(o->rgbData, 0xfe, sizeof o->rgbData);
    if (got != 0) std::memcpy(o->rgbData, bytes, got);
    o->glyphCache = cache.get();
    o->opRectExplicit = c.u8();
    o->opRectExplicitPad[0] = 0x99;
    draw(frame, o, cache, c, "glyphIndex", slot<UiGlyphIndexFn>(UI_SLOT_GLYPH_INDEX));
}

void fastGlyphOrder(Frame &frame, const GlyphCache &cache, Reader &c) {
    Record<UiFastGlyphOrder> o;
    o->cacheId = c.i32();
    o->flAccel = c.i32();
    o->ulCharInc = c.i32();
    commonFields(c, *o.get());
    o->cbData = c.i32();
    std::memset(o->rgbData, 0xfe, sizeof o->rgbData);
    o->rgbData[0] = c.u8();
    o->glyphCache = cache.get();
    draw(frame, o, cache, c, "fastGlyph", slot<UiFastGlyphFn>(UI_SLOT_FAST_GLYPH));
}

}  // namespace text_detail

void runGlyphIndex(const uint8_t *data, size_t size) {
    Input in = splitInput(data, size);
    Reader &c = in.control;
    startLibrary(3);  // an empty fragment store for every input
    setByteOrder(c.u8());
    Frame frame(c);
    const text_detail::GlyphCache cache(c, in.stream);
    // Several orders in a row: fragments stored by one are used by the next.
    const int calls = 1 + c.u8() % 4;
    for (int i = 0; i < calls; ++i) text_detail::glyphIndexOrder(frame, cache, c, in.stream);
}

void runFastGlyph(const uint8_t *data, size_t size) {
    Input in = splitInput(data, size);
    Reader &c = in.control;
    startLibrary(3);
    setByteOrder(c.u8());
    Frame frame(c);
    const text_detail::GlyphCache cache(c, in.stream);
    const int calls = 1 + c.u8() % 4;
    for (int i = 0; i < calls; ++i) text_detail::fastGlyphOrder(frame, cache, c);
}

}  // namespace fuzzharness
