// RFB harnesses: the five ZRLE/TRLE tile entry points (slots 18-22) driven
// as a client drives them, tile after tile on one stream, and the Hextile
// decoder (slot 24) with a read callback serving the fuzz input.
#include "harness.h"

namespace fuzzharness {
namespace rfb_detail {

// Tile geometry: tiles of a rectangle laid out as a client walks them (64 x 64
// for ZRLE, smaller for TRLE), or tiles anywhere with any size.
struct TileWalk {
    explicit TileWalk(Reader &c) {
        mode = c.u8();
        left = c.coord();
        top = c.coord();
        width = c.u8();
        height = c.u8();
        tile = (mode & 2) ? 16 : 64;
    }
    bool next(Reader &c, UiTileStream &t) {
        if (mode & 1) {  // anywhere
            t.x = c.coord();
            t.y = c.coord();
            t.width = (c.u8() & 1) ? c.extent() : c.u8() % 70;
            t.height = (c.u8() & 1) ? c.extent() : c.u8() % 70;
            return true;
        }
        if (ty >= height) return false;
        t.x = int32_t(uint32_t(left) + uint32_t(tx));
        t.y = int32_t(uint32_t(top) + uint32_t(ty));
        t.width = width - tx < tile ? width - tx : tile;
        t.height = height - ty < tile ? height - ty : tile;
        tx += tile;
        if (tx >= width) {
            tx = 0;
            ty += tile;
        }
        return true;
    }
    uint8_t mode;
    int32_t left, top, width, height, tile;
    int32_t tx = 0, ty = 0;
};

// Calls the entry point for the tile's sub-encoding byte, as a client
// dispatches it: 0 raw, 1 solid, 2-127 packed palette (sizes above 16 are
// the library's to refuse), 128 plain run-length, 129-255 palette
// run-length.
int32_t callTile(UiTileStream *t, uint8_t subencoding) {
    if (subencoding == 0) {
        currentEntry = "zrleRawTile";
        return slot<UiZrleRawTileFn>(UI_SLOT_ZRLE_RAW_TILE)(t);
    }
    if (subencoding == 1) {
        currentEntry = "zrleSolidTile";
        return slot<UiZrleSolidTileFn>(UI_SLOT_ZRLE_SOLID_TILE)(t);
    }
    if (subencoding < 128) {
        currentEntry = "zrlePackedPaletteTile";
        return slot<UiZrlePackedPaletteTileFn>(UI_SLOT_ZRLE_PACKED_PALETTE_TILE)(t, subencoding);
    }
    if (subencoding == 128) {
        currentEntry = "zrlePlainRleTile";
        return slot<UiZrlePlainRleTileFn>(UI_SLOT_ZRLE_PLAIN_RLE_TILE)(t);
    }
    currentEntry = "zrlePaletteRleTile";
    return slot<UiZrlePaletteRleTileFn>(UI_SLOT_ZRLE_PALETTE_RLE_TILE)(t, subencoding);
}

// The Hextile read callback has no context argument: it serves the bytes of
// the current input from here.
struct HextileSource {
    const uint8_t *ptr = nullptr;
    size_t left = 0;
    bool failed = false;  // a read failed during the current call
    uint32_t calls = 0;
};
HextileSource source;

int readHextile(uint8_t *buffer, int32_t length) {
    ++source.calls;
    require(!source.failed, "the read callback was called again after it failed");
    require(buffer != nullptr, "the read callback was given no buffer");
    require(length >= 1 && length <= 1530, "the read callback was asked for a length outside 1-1530");
    if (buffer == nullptr || length < 1 || size_t(length) > source.left) {
        source.failed = true;
        return 0;
    }
    std::memcpy(buffer, source.ptr, size_t(length));  // the buffer must hold `length` bytes
    source.ptr += length;
    source.left -= size_t(length);
    return 1;
}

}  // namespace rfb_detail

void runZrleTiles(const uint8_t *data, size_t size) {
    using namespace rfb_detail;
    Input in = splitInput(data, size);
    Reader &c = in.control;
    startLibrary(3);
    setByteOrder(c.u8());
    Frame frame(c);
    const uint8_t *bytes = nullptr;
    const size_t count = in.stream.take(in.stream.size(), bytes);
    InputBytes body(bytes, count);
    const bool noBody = body.size() == 0 && (c.u8() & 1);  // a client with nothing inflated yet

    Record<UiTileStream> t;
    t->image = frame.image();
    t->dirty = frame.dirty();
    t->ptr = noBody ? nullptr : body.data();
    t->left = body.size();
    const uintptr_t begin = reinterpret_cast<uintptr_t>(t->ptr);
    TileWalk walk(c);
    for (int i = 0; i < 32 && walk.next(c, *t.get()); ++i) {
        const uint8_t subencoding = c.u8();
        t.freeze();
        const UiTileStream was = *t.get();
        frame.before();
        const int32_t result = callTile(t.get(), subencoding);
        frame.after();
        require(result >= -1 && result <= 1, "a tile entry point returned other than -1, 0 or 1");
        // The record tells how far the client's stream was consumed: only
        // ptr and left change, forward, and they stay consistent.
        UiTileStream now = *t.get();
        require(now.left >= 0 && now.left <= was.left, "left grew or went negative");
        const uintptr_t consumed = reinterpret_cast<uintptr_t>(now.ptr) - begin;
        require(consumed == uintptr_t(body.size() - now.left), "ptr and left disagree");
        now.ptr = was.ptr;
        now.left = was.left;
        require(std::memcmp(&now, &was, sizeof now) == 0, "the tile record was written outside ptr and left");
        require(body.unchanged(), "the tile body was written");
        if (result != 1) break;
    }
}

void runHextile(const uint8_t *data, size_t size) {
    using namespace rfb_detail;
    Input in = splitInput(data, size);
    Reader &c = in.control;
    startLibrary(3);
    setByteOrder(c.u8());
    Frame frame(c);
    const uint8_t *bytes = nullptr;
    const size_t count = in.stream.take(in.stream.size(), bytes);
    InputBytes body(bytes, count);
    source = HextileSource{body.data(), size_t(body.size()), false, 0};

    const int calls = 1 + c.u8() % 4;
    for (int i = 0; i < calls; ++i) {
        Record<UiRect> rect;
        rect->left = c.coord();
        rect->top = c.coord();
        rect->width = (c.u8() & 1) ? c.extent() : c.u8() % 80;
        rect->height = (c.u8() & 1) ? c.extent() : c.u8() % 80;
        rect.freeze();
        source.failed = false;
        currentEntry = "hextileRect";
        frame.before();
        const int32_t result = slot<UiHextileRectFn>(UI_SLOT_HEXTILE_RECT)(frame.image(), frame.dirty(), rect.get(),
                                                                           &readHextile);
        frame.after();
        require(result == 0 || result == 1, "hextileRect returned neither 0 nor 1");
        require(!source.failed || result == 0, "hextileRect succeeded after a failed read");
        require(rect.unchanged(), "the rectangle record was written");
        require(body.unchanged(), "the input was written");
        if (result != 1) break;
    }
    source = HextileSource{};
}

}  // namespace fuzzharness
