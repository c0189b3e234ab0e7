// The fuzz harness: the libFuzzer targets (one binary, run under the name of
// the target), also compiled into the regression replay test and the seed
// writer.  An input is a frame buffer, the settings and a glyph cache, then
// a sequence of calls to the drawing table; every record is decoded from it
// with the kit's builders and handed over right before an inaccessible page;
// after every call the blocks the library only reads, the frame's guard
// bands, its tile map and the surface record are checked.  The differential
// targets read a size and a bitmap stream.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "bytes.h"
#include "core/settings.h"
#include "frame.h"
#include "picture.h"
#include "records.h"
#include "table.h"
#ifdef UI32_FUZZ_PEER
#include "peer.h"
#endif

namespace fuzz {

// Little-endian fields; past the end every read gives zeros.
class Reader {
public:
    Reader(const uint8_t *data, size_t size) : p_(data), end_(data + size) {}
    bool more() const { return p_ < end_; }
    uint8_t u8() { return p_ < end_ ? *p_++ : 0; }
    uint32_t u16() {
        const uint32_t low = u8();  // the low byte first: operands of | are unsequenced
        return low | uint32_t(u8()) << 8;
    }
    uint32_t u32() {
        const uint32_t low = u16();
        return low | u16() << 16;
    }
    // One byte for -64..127, or a tag byte and an edge value of the 16- and
    // 32-bit ranges, a 16-bit or a 32-bit value.
    int32_t num();
    kit::Bytes blob() {  // a 16-bit length, then that many bytes (fewer at the end)
        const size_t n = std::min<size_t>(u16(), size_t(end_ - p_));
        return p_ += n, kit::Bytes(p_ - n, p_);
    }
    kit::Bytes rest() { return kit::Bytes(p_, end_); }

private:
    const uint8_t *p_, *end_;
};

struct Target {
    const char *name;
    void (*run)(Reader &in);
};

// Called with a description when a check fails; prints and aborts by default.
void (*onFailure)(const char *what) = [](const char *what) {
    std::fprintf(stderr, "harness check failed: %s\n", what);
    std::abort();
};
// Reports made and calls that marked a tile or decoded since the input began.
int reports = 0, drawn = 0;
// Differential targets: inputs accepted by both decoders, by ui32 only, by
// the peer only, by neither, and by the peer in a form ui32 refuses by
// design; [0] interleaved, [1] planar.
struct Agreement {
    long both, ui32Only, peerOnly, neither, refusedForm;
} agreement[2] = {};

namespace {

const int32_t kEdges[32] = {INT32_MIN, INT32_MIN + 1, INT32_MAX, INT32_MAX - 1, -32768, -32769, 32767, 32768,
                            65535, 65536, -65536, -1, 0x40000000, 0x3fffffff, -0x40000000, 0x7fff8000,
                            255, 256, 0x01000000, 0x00ffffff, 0x20000000, 0x1fffffff, 0x7ffffff0, -0x7ffffff0,
                            46341, 65537, 0x4000000, 0x55555556, -2, 0x8000, 0x10000000, -0x10000000};

void check(bool ok, const char *what) {
    if (!ok) onFailure(what);
}

// The client's log callback: a report of the right shape, its format printed
// with its arguments (so that a mismatch shows up under the sanitizers).
int logReport(const char *level, const char *module, int, const char *format, ...) {
    check(level != nullptr && std::strcmp(level, "ERROR") == 0 && module != nullptr && format != nullptr,
          "a report without level ERROR, a module or a format");
    char text[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format != nullptr ? format : "", args);
    va_end(args);
    return ++reports;
}

// Page-guarded memory, mapped once per process and place and reused by every
// input (a mapping per record made the targets spend most of their time in
// the kernel): the largest frame store, and windows whose last bytes hold the
// blocks handed to one call, each ending right before an inaccessible page.
constexpr size_t kFrameBytes = 4 * (255 + 16 + 57) * (255 + 16), kWindowBytes = 4 * 256 * 256;
constexpr int kWindows = 6;  // the glyph cache and its entries, and three blocks of one call
struct Memory {
    explicit Memory(kit::Place place) : frame(kFrameBytes, place) {
        for (auto &w : windows) w = std::make_unique<kit::GuardedPages>(kWindowBytes, place);
    }
    kit::GuardedPages frame;  // mapped first: on i386 the frame gets the very top or bottom
    std::unique_ptr<kit::GuardedPages> windows[kWindows];
};
Memory &memory(kit::Place place) {
    static std::unique_ptr<Memory> memories[3];  // placement only means something on 32-bit targets
    auto &m = memories[sizeof(void *) == 4 ? int(place) : 0];
    if (m == nullptr) m = std::make_unique<Memory>(place);
    return *m;
}

kit::Table table;
const kit::GuardedInput hatch(kit::Bytes(kit::kHatchPatterns, kit::kHatchPatterns + 48));

// srn_get; a new fragment store replaces the old one, which the harness
// frees (the library never does) so that inputs do not leak.  Every input
// starts from fresh settings, an empty fragment store and no reports.
void start(const UiConfig *config, bool fresh = false) {
    uint8_t *old = ui::settings.scratchBuffer;
    if (fresh) ui::settings = ui::Settings{}, reports = drawn = 0;
    table.get(srn_get, logReport, config);
    if (ui::settings.scratchBuffer != old) std::free(old);
}

// One input: its reader, the frame, where records go and what was handed over.
struct Input {
    explicit Input(Reader &reader) : in(reader) {}
    Reader &in;
    Memory *records = nullptr;
    std::unique_ptr<kit::Frame> frame;
    uint8_t *tiles = nullptr;  // the whole map, even when the surface names less
    size_t tileCount = 0;
    const UiGlyphCache *cache = nullptr;
    std::vector<std::pair<const uint8_t *, kit::Bytes>> given;  // the library only reads these

    // A copy of the bytes that ends right before an inaccessible page.
    const uint8_t *keep(kit::Bytes bytes) {
        if (given.size() == kWindows || bytes.size() > kWindowBytes) std::abort();
        uint8_t *at = records->windows[given.size()]->end() - bytes.size();
        if (!bytes.empty()) std::memcpy(at, bytes.data(), bytes.size());
        given.emplace_back(at, std::move(bytes));
        return at;
    }
    template <typename T>
    const T *ro(const T &record) {
        const auto *p = reinterpret_cast<const uint8_t *>(&record);
        return reinterpret_cast<const T *>(keep(kit::Bytes(p, p + sizeof record)));
    }
    // The record with its first `count` 32-bit words read, each a num().
    template <typename T>
    T fill(T record, size_t count = sizeof(T) / 4) {
        for (size_t i = 0; i < count; ++i) {
            const int32_t word = in.num();
            std::memcpy(reinterpret_cast<uint8_t *>(&record) + 4 * i, &word, 4);
        }
        return record;
    }
    dirtybuf *dirtyOrNull() { return in.u8() & 1 ? nullptr : &frame->dirty(); }
};

// The header: frame geometry, placement and stride; origin; null pixels or
// tiles or a smaller tile map; the source depth and byte order; the glyph
// cache.
void setUp(Input &s) {
    Reader &in = s.in;
    static const kit::Place kPlaces[4] = {kit::Place::anywhere, kit::Place::top, kit::Place::bottom, kit::Place::anywhere};
    static const int32_t kPads[4] = {0, 1, 7, 57};
    const int32_t width = in.u8(), height = in.u8();
    const uint8_t shape = in.u8(), variant = shape & 0x80 ? in.u8() : 0;
    s.frame = std::make_unique<kit::Frame>(width, height, 0x405060,
                                           kit::Layout{{}, kPads[shape >> 4 & 3], &memory(kPlaces[shape & 3]).frame});
    s.records = &memory(kPlaces[shape >> 2 & 3]);
    UiSurface &surface = s.frame->surface();
    s.tiles = surface.dirty.tiles;
    s.tileCount = size_t(surface.dirty.columns * surface.dirty.rows);
    surface.originEnabled = shape >> 6 & 1;
    surface.originX = in.num();
    surface.originY = in.num();
    if (variant & 1) surface.image.pixels = nullptr;
    if (variant & 2) surface.dirty.tiles = nullptr;
    surface.dirty.columns -= variant >> 2 & 1;
    surface.dirty.rows -= variant >> 3 & 1;
    const UiConfig config{hatch.data(), in.num()};
    start(&config, true);
    table.setSourceByteOrder(in.u8());

    // Entries laid out at the size declared (0-1024), or a negative size
    // declared over entries of size 0; any count up to the entries there are.
    const int32_t count = in.u8() & 63, size = in.num(), laid = size < 0 ? 0 : size % 1025;
    const uint8_t form = in.u8();
    kit::GlyphCache glyphs(laid);
    for (int32_t i = 0; i < count; ++i) {
        UiGlyph g{};
        g.x = int16_t(in.num()), g.y = int16_t(in.num()), g.cx = uint16_t(in.num()), g.cy = uint16_t(in.num());
        glyphs.add(g, in.blob());
    }
    UiGlyphCache cache = *glyphs.cache();
    cache.entryDataSize = size < 0 ? size : laid;
    if (form & 4) cache.entryCount = std::min(in.num(), count);
    const uint8_t *entries = cache.entries;
    cache.entries = form & 1 ? nullptr : s.keep(kit::Bytes(entries, entries + size_t(count) * size_t(laid + 8)));
    s.cache = form & 2 ? nullptr : s.ro(cache);
}

// The Hextile read callback serves the current call's body.
struct {
    kit::Bytes body;
    size_t at;
    bool failed;
} source;

int readHextile(uint8_t *buffer, int32_t length) {
    check(!source.failed, "the read callback was called again after it failed");
    check(buffer != nullptr && length >= 1 && length <= 1530, "the read callback was asked for 1-1530 bytes");
    if (buffer == nullptr || length < 1 || size_t(length) > source.body.size() - source.at) return source.failed = true, 0;
    std::memcpy(buffer, source.body.data() + source.at, size_t(length));
    source.at += size_t(length);
    return 1;
}

// One call to `slot` (25: srn_get again) with its record decoded from the
// input.
void call(Input &s, int slot) {
    Reader &in = s.in;
    UiSurface &surface = s.frame->surface();
    imgbuf *image = &surface.image;
    const bool clipped = slot >= UI_SLOT_DST_BLT && slot <= UI_SLOT_MEM_BLT && slot != UI_SLOT_DECODE_BITMAP;
    const UiClipRect *clip = clipped ? s.ro(in.u8() & 1 ? s.fill(UiClipRect{}) : s.frame->all()) : nullptr;
    switch (slot) {
        case UI_SLOT_BITMAP_UPDATE: {
            UiBitmapData b = s.fill(UiBitmapData{}, 8);
            const int32_t stated = in.num();
            const kit::Bytes data = in.blob();
            b.bitmapLength = std::min(stated, data.length());  // the data holds what the record states
            b.bitmapDataStream = s.keep(data);
            return table.bitmapUpdate(surface, *s.ro(b));
        }
        case UI_SLOT_DST_BLT: return table.dstBlt(surface, *s.ro(s.fill(UiDstBltOrder{})), *clip);
        case UI_SLOT_PAT_BLT: {
            UiPatBltOrder o = s.fill(UiPatBltOrder{}, 16);  // up to the brush data
            // The client resolves a cached brush: 8 bytes or 64 pixels.
            const int32_t style = o.brushStyle;
            kit::Bytes brush = in.blob();
            brush.resize(style & 0x80 ? (style & 15) == 1 ? 8 : (style & 15) == 5 ? 256 : 0 : 0, 0x3c);
            o.brushData = in.u8() & 1 ? nullptr : s.keep(brush);
            return table.patBlt(surface, *s.ro(o), *clip);
        }
        case UI_SLOT_SCR_BLT: return table.scrBlt(surface, *s.ro(s.fill(UiScrBltOrder{})), *clip);
        case UI_SLOT_DRAW_LINE: return table.drawLine(surface, *s.ro(s.fill(UiLineOrder{})), *clip);
        case UI_SLOT_OPAQUE_RECT: return table.opaqueRect(surface, *s.ro(s.fill(UiOpaqueRectOrder{})), *clip);
        case UI_SLOT_GLYPH_INDEX: {
            UiGlyphIndexOrder o = s.fill(kit::glyphIndexOrder(s.cache, {}, 0, 0, {}), 20);  // up to cbData
            const int32_t cbData = in.num();
            o.opRectExplicit = in.u8();
            const kit::Bytes text = in.blob();
            std::copy_n(text.begin(), std::min(text.size(), sizeof o.rgbData), o.rgbData);
            o.cbData = cbData;
            return table.glyphIndex(surface, *s.ro(o), *clip);
        }
        case UI_SLOT_FAST_GLYPH: {
            UiFastGlyphOrder o = s.fill(kit::fastGlyphOrder(s.cache, {}, 0, 0, 0), 20);  // up to cbData
            o.rgbData[0] = in.u8();
            return table.fastGlyph(surface, *s.ro(o), *clip);
        }
        case UI_SLOT_DECODE_BITMAP: {
            const int32_t width = in.num(), height = in.num(), stated = in.num();
            const uint8_t compressed = in.u8();
            const kit::Bytes data = in.blob();
            // The client's array holds width x height words; arrays too large
            // to hold are only tried where sizes alone refuse them.
            const int64_t pixels = width < 0 || height < 0 ? 0 : int64_t(width) * height;
            if (pixels > (1 << 18) && pixels <= INT32_MAX / 4) return;
            std::vector<uint32_t> dst(pixels <= (1 << 18) ? size_t(pixels) : 0);
            const int32_t result =
                table.decodeBitmap(width, height, s.keep(data), std::min(stated, data.length()), compressed, dst.data());
            drawn += result == 1;
            return check(result == 0 || result == 1, "decodeBitmap returned neither 0 nor 1");
        }
        case UI_SLOT_MEM_BLT: {
            UiMemBltOrder o = s.fill(UiMemBltOrder{}, 11);
            o.bitmapWidth = int32_t(uint32_t(o.bitmapWidth) % 257), o.bitmapHeight = int32_t(uint32_t(o.bitmapHeight) % 257);
            kit::Bytes pixels(size_t(o.bitmapWidth) * size_t(o.bitmapHeight) * 4);
            for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = uint8_t(i * 7 + 1);
            o.bitmapPixels = in.u8() & 1 ? nullptr : reinterpret_cast<const uint32_t *>(s.keep(pixels));
            return table.memBlt(surface, *s.ro(o), *clip);
        }
        case UI_SLOT_SET_SOURCE_BYTES_PER_PIXEL_4: return table.setSourceBytesPerPixel4();
        case UI_SLOT_FILL_BUFFER_RECT: {
            const UiRect *r = s.ro(s.fill(UiRect{}));
            dirtybuf *dirty = s.dirtyOrNull();
            return table.fillBufferRect(image, dirty, *r, uint32_t(in.num()));
        }
        case UI_SLOT_DRAW_CHAR_8X16: {
            const int32_t x = in.num(), y = in.num();
            dirtybuf *dirty = s.dirtyOrNull();
            kit::Bytes cell = in.blob();
            cell.resize(16);
            const uint8_t *bits = s.keep(cell);
            return (void)table.drawChar8x16(image, dirty, x, y, bits, uint32_t(in.num()));
        }
        case UI_SLOT_H_LINE:
        case UI_SLOT_V_LINE: {
            const int32_t x = in.num(), y = in.num(), length = in.num();
            dirtybuf *dirty = s.dirtyOrNull();
            const uint32_t colour = uint32_t(in.num());
            return slot == UI_SLOT_H_LINE ? table.hLine(image, dirty, x, y, length, colour)
                                          : table.vLine(image, dirty, x, y, length, colour);
        }
        case UI_SLOT_SET_SOURCE_BYTE_ORDER: return table.setSourceByteOrder(in.u8());
        case UI_SLOT_PUT_PIXELS: {
            const UiRect r = s.fill(UiRect{});
            kit::Bytes src = in.blob();  // width x height pixels; no frame holds 65,536
            const int64_t pixels = r.width < 0 || r.height < 0 ? 0 : int64_t(r.width) * r.height;
            src.resize(pixels <= 65536 ? size_t(pixels) * 4 : 0, 0x5a);
            return (void)table.putPixels(image, &s.frame->dirty(), *s.ro(r), s.keep(src));
        }
        case UI_SLOT_COPY_RECT: {
            const UiRect *r = s.ro(s.fill(UiRect{}));
            const int32_t x = in.num(), y = in.num();
            return (void)table.copyRect(image, &s.frame->dirty(), *r, x, y);
        }
        case UI_SLOT_ZRLE_RAW_TILE ... UI_SLOT_ZRLE_PALETTE_RLE_TILE: {
            // The sub-encoding byte picks the entry point as the client
            // dispatches it (0, 1, 2-127, 128, 129-255).
            UiTileStream t = s.fill(UiTileStream{}, 4);
            const uint8_t sub = in.u8(), nulls = in.u8();
            const kit::Bytes body = in.blob();
            t.image = nulls & 1 ? nullptr : image;
            t.dirty = nulls & 2 ? nullptr : &s.frame->dirty();
            t.ptr = s.keep(body);
            t.left = body.length();
            const UiTileStream was = t;
            const int32_t result = table.zrleTile(sub, t);
            check(result >= -1 && result <= 1, "a tile entry point returned other than -1, 0 or 1");
            check(t.left >= 0 && t.left <= was.left && t.ptr == was.ptr + (was.left - t.left), "ptr and left disagree");
            t.ptr = was.ptr, t.left = was.left;
            return check(std::memcmp(&t, &was, sizeof t) == 0, "the tile record was written outside ptr and left");
        }
        case UI_SLOT_IMPORT_IMAGE32: {
            // No checks by design: width at most 32, rows at least as long,
            // a record with room for the rows (exactly, here).
            const int32_t width = in.u8() % 33, h = in.u8(), height = h < 0xf8 ? h % 40 : -(h & 7);
            const int32_t rowLength = width + in.u8() % 8;
            std::vector<uint32_t> record(37 + (height >= 1 ? 32 * size_t(height - 1) + size_t(width) : 0), 0xc1c1c1c1);
            record[2] = uint32_t(width), record[3] = uint32_t(height);
            kit::Bytes src = in.blob();
            src.resize(height >= 1 ? (size_t(height - 1) * size_t(rowLength) + size_t(width)) * 4 : 0, 0x77);
            const std::vector<uint32_t> was = record;
            table.importImage32(*reinterpret_cast<UiImage32Record *>(record.data()), s.keep(src), rowLength);
            for (size_t i = 0; i < record.size(); ++i)
                check(record[i] == was[i] || (i >= 37 && (i - 37) % 32 < size_t(width)), "importImage32 wrote outside the rows");
            return;
        }
        case UI_SLOT_HEXTILE_RECT: {
            const UiRect *r = s.ro(s.fill(UiRect{}));
            source.body = in.blob(), source.at = 0, source.failed = false;
            const int32_t result = table.hextileRect(image, &s.frame->dirty(), *r, readHextile);
            check(result == 0 || result == 1, "hextileRect returned neither 0 nor 1");
            return check(!source.failed || result == 0, "hextileRect succeeded after a failed read");
        }
        default: {  // srn_get again, with a configuration or without
            const uint8_t withConfig = in.u8() & 1;
            const UiConfig config{hatch.data(), in.num()};
            return start(withConfig ? &config : nullptr);
        }
    }
}

// Calls until the input ends (at most 64), each to the slot named when the
// target has it, else to one of the target's slots.  After each: the blocks
// handed over are unchanged; for a call given the frame, its guards, tile
// map and surface record are as they may be.
void session(Reader &in, const std::vector<int> &slots) {
    Input s(in);
    setUp(s);
    UiSurface &surface = s.frame->surface();
    const size_t held = s.given.size();
    std::vector<uint8_t> tiles(s.tileCount);
    for (int calls = 0; in.more() && calls < 64; ++calls) {
        const uint8_t op = in.u8();
        const int slot = std::find(slots.begin(), slots.end(), op) != slots.end() ? op : slots[op % slots.size()];
        UiSurface before;
        std::memcpy(&before, &surface, sizeof before);
        std::copy_n(s.tiles, s.tileCount, tiles.begin());
        call(s, slot);
        for (const auto &[at, bytes] : s.given)
            check(bytes.empty() || std::memcmp(at, bytes.data(), bytes.size()) == 0, "a block the library only reads was written");
        s.given.resize(held);
        // Slots 8, 10, 15, 23 and srn_get are not given the frame.
        if (slot == 8 || slot == 10 || slot == 15 || slot == 23 || slot >= 25) continue;

        const uint8_t changed = surface.dirty.changed;
        check(s.frame->guardsIntact(), "a guard band, tile guard, client word or pad byte was written");
        check(changed <= 1 && changed >= before.dirty.changed, "dirty.changed was cleared or set to other than 1");
        surface.dirty.changed = before.dirty.changed;
        check(std::memcmp(&surface, &before, sizeof before) == 0, "the surface record was written");
        surface.dirty.changed = changed;
        bool marked = false;
        for (size_t i = 0; i < s.tileCount; ++i) {
            check(s.tiles[i] <= 1 && s.tiles[i] >= tiles[i], "a tile byte was cleared or set to other than 1");
            marked |= s.tiles[i] != tiles[i];
        }
        check(!marked || changed == 1, "tiles were marked without setting dirty.changed");
        drawn += marked;
    }
}

// The bitmap decoders against the peer's: a width and height of 1-64, then
// the stream.  Whatever the peer decodes, ui32 decodes to the same pixels
// (bits 0-23; its array is bottom-up, the peer's top-down).
void differential(Reader &in, bool planar) {
    const UiConfig config{hatch.data(), planar ? 4 : 3};
    start(&config, true);
    const int32_t width = 1 + in.u8() % 64, height = 1 + in.u8() % 64;
    kit::Bytes data = in.rest();
    data.resize(std::min(data.size(), kWindowBytes));
    uint8_t *input = memory(kit::Place::anywhere).windows[0]->end() - data.size();
    if (!data.empty()) std::memcpy(input, data.data(), data.size());
    std::vector<uint32_t> ours(size_t(width * height), 0xff000000);  // byte 3 set: not written
    const bool accepted = table.decodeBitmap(width, height, input, data.length(), true, ours.data()) == 1;
    drawn += accepted;
    check(data.empty() || std::memcmp(input, data.data(), data.size()) == 0, "the decoder wrote into its input");
#ifdef UI32_FUZZ_PEER
    // The peer leaves the pixels its stream does not reach as its scratch
    // buffer held them: decoded once after a black and once after a white
    // picture, they differ, and those pixels are not compared.
    static kit::PeerDecoders peer;
    kit::Bytes copy = data;  // the peer reads its own copy, with room to spare
    copy.resize(data.size() + 4096);
    std::vector<uint32_t> theirs[2];
    bool peerAccepted = true;
    for (int pass = 0; pass < 2; ++pass) {
        const kit::Picture flat(width, height, pass ? 0xffffff : 0);
        const kit::Bytes prime = planar ? kit::planar(flat, false, false) : kit::interleavedImages(flat);
        const auto decode = [&](const kit::Bytes &bytes, int32_t length) {
            return planar ? peer.planar(bytes.data(), length, width, height, theirs[pass])
                          : peer.interleaved(bytes.data(), length, width, height, theirs[pass]);
        };
        decode(prime, prime.length());
        peerAccepted = decode(copy, data.length()) && peerAccepted;
    }
    // Planar colour loss and chroma subsampling are refused by design.
    const bool refusedForm = planar && !data.empty() && (data[0] & 0xcf) != 0;
    Agreement &a = agreement[planar];
    ++(accepted ? peerAccepted ? a.both : a.ui32Only : peerAccepted ? refusedForm ? a.refusedForm : a.peerOnly : a.neither);
    if (!peerAccepted || refusedForm) return;
    check(accepted, "the peer decodes a bitmap that ui32 refuses");
    for (int32_t y = 0; y < height && accepted; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const size_t i = size_t(y * width + x);
            if (theirs[0][i] == theirs[1][i] && ours[size_t((height - 1 - y) * width + x)] != theirs[0][i])
                return check(false, "ui32 and the peer decode different pixels");
        }
#endif
}

template <int... Slots>
void family(Reader &in) {
    static const std::vector<int> slots{Slots...};
    session(in, slots);
}

}  // namespace

int32_t Reader::num() {
    const uint8_t tag = u8();
    if (tag < 0xc0) return int32_t(tag) - 0x40;
    if (tag < 0xe0) return kEdges[tag & 31];
    if (tag < 0xf0) return int16_t(u16());
    return int32_t(u32());
}

// The writer's side, for the seeds.
kit::Bytes &num(kit::Bytes &out, int32_t v) {
    if (v >= -64 && v <= 127) return out({uint8_t(v + 0x40)});
    if (v == int16_t(v)) return out({0xe0}).u16(uint32_t(v));
    return out({0xf0}).u16(uint32_t(v)).u16(uint32_t(v) >> 16);
}

kit::Bytes &blob(kit::Bytes &out, const kit::Bytes &bytes) { return out.u16(uint32_t(bytes.size()))(bytes); }

const std::vector<Target> kTargets = {  // in the order of fuzz/targets.txt
    {"bitmap_update", family<0, 10, 15>},
    {"decode_bitmap", family<8, 10, 15>},
    {"rect_orders", family<1, 3, 5, 9>},
    {"pat_blt", family<2>},
    {"draw_line", family<4>},
    {"glyph_index", family<6>},
    {"fast_glyph", family<7>},
    {"zrle_tiles", family<18, 19, 20, 21, 22>},
    {"hextile", family<24>},
    {"primitives", family<11, 12, 13, 14, 16, 17, 23>},
    {"session", family<0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25>},
    {"interleaved_diff", [](Reader &in) { differential(in, false); }},
    {"planar_diff", [](Reader &in) { differential(in, true); }},
};

}  // namespace fuzz

#ifdef UI32_FUZZ_ENTRY
namespace {
const fuzz::Target *target = nullptr;
}

extern "C" int LLVMFuzzerInitialize(int *, char ***argv) {
    setenv("WLOG_LEVEL", "OFF", 0);  // the peer's own log
    const char *slash = std::strrchr((*argv)[0], '/'), *name = slash != nullptr ? slash + 1 : (*argv)[0];
    for (const fuzz::Target &t : fuzz::kTargets)
        if (std::strcmp(t.name, name) == 0) target = &t;
    if (target == nullptr) std::fprintf(stderr, "fuzz: run me under a target's name (fuzz/targets.txt)\n"), std::exit(2);
    std::atexit([] {  // the differential targets' agreement counts
        for (const fuzz::Agreement &a : fuzz::agreement)
            if (a.both + a.ui32Only + a.peerOnly + a.neither + a.refusedForm != 0)
                std::fprintf(stderr, "agreement: both %ld ui32-only %ld peer-only %ld neither %ld refused-form %ld\n",
                             a.both, a.ui32Only, a.peerOnly, a.neither, a.refusedForm);
    });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Reader in(data, size);
    target->run(in);
    return 0;
}
#endif
