#include "session.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace vncsnap {

namespace {

constexpr int32_t kMaxFrameSide = 16384;
constexpr uint32_t kMaxNameLength = 1u << 20;
constexpr uint32_t kMaxZrleLength = 1u << 28;
constexpr int32_t kZrleTile = 64;
constexpr int32_t kTrleTile = 16;
// No valid TRLE body of a 16 x 16 tile is longer (the longest, palette
// run-length, is 381 palette bytes and at most 3 bytes per pixel).
constexpr size_t kMaxTrleBody = 2048;

// The Hextile decoder pulls its bytes through a callback without a context
// argument: the session decoding on this thread.
thread_local Session *hextileSession = nullptr;

void putU16(uint8_t *p, uint32_t v) {
    p[0] = uint8_t(v >> 8);
    p[1] = uint8_t(v);
}

void putU32(uint8_t *p, uint32_t v) {
    putU16(p, v >> 16);
    putU16(p + 2, v);
}

template <typename Fn>
Fn slot(const UiDrawTable &table, int index) {
    return reinterpret_cast<Fn>(table[index]);
}

}  // namespace

const char *encodingName(int32_t encoding) {
    switch (encoding) {
        case kRaw: return "Raw";
        case kHextile: return "Hextile";
        case kTrle: return "TRLE";
        case kZrle: return "ZRLE";
        case kLastRect: return "LastRect";
        case kSupportedEncodings: return "SupportedEncodings";
        default: return "other";
    }
}

void FrameBuffer::resize(int32_t w, int32_t h) {
    width = w;
    height = h;
    pixels.assign(size_t(w) * size_t(h), 0);
    const int32_t columns = (w + 31) / 32, rows = (h + 31) / 32;
    tiles.assign(size_t(columns) * size_t(rows), 0);
    image = imgbuf{pixels.data(), 0, 0, uint32_t(w) * 4, uint32_t(w), uint32_t(h)};
    dirty = dirtybuf{};
    dirty.tiles = tiles.data();
    dirty.columns = columns;
    dirty.rows = rows;
}

void FrameBuffer::clearTiles() {
    std::fill(tiles.begin(), tiles.end(), 0);
    dirty.changed = 0;
}

bool Stats::offers(int32_t encoding) const {
    return std::find(offered.begin(), offered.end(), encoding) != offered.end();
}

uint64_t Stats::hextileFlag(int flag) const {
    uint64_t n = 0;
    for (int s = 0; s < 256; ++s)
        if (s & flag) n += hextileSubencodings[size_t(s)];
    return n;
}

Session::Session(const UiDrawTable &table) : table_(table) {}

Session::~Session() {
    if (inflaterReady_) inflateEnd(&inflater_);
}

bool Session::fail(const std::string &what) {
    if (error_.empty()) error_ = what;
    return false;
}

bool Session::failRead() { return fail(connection_.error()); }

// ---------------------------------------------------------------------------
// Handshake
// ---------------------------------------------------------------------------

bool Session::open(const std::string &hostPort, int32_t preferred, int timeoutMs) {
    if (!connection_.open(hostPort, timeoutMs)) return failRead();
    // The tile and Hextile entry points read 4-byte pixels in this order:
    // byte 0 is blue, byte 2 red, as the pixel format below puts them.
    slot<UiSetSourceByteOrderFn>(table_, UI_SLOT_SET_SOURCE_BYTE_ORDER)(1);
    return handshake() && initialise() && setPixelFormat() && setEncodings(preferred);
}

bool Session::handshake() {
    char version[13] = {};
    if (!connection_.read(version, 12)) return failRead();
    int major = 0, minor = 0;
    if (std::sscanf(version, "RFB %3d.%3d\n", &major, &minor) != 2) return fail("not an RFB server");
    // 3.8 where the server has it; 3.7 and 3.3 for older servers.
    if (major > 3 || minor >= 8) minor = 8;
    else if (minor == 7) minor = 7;
    else minor = 3;
    char reply[13];
    std::snprintf(reply, sizeof reply, "RFB 003.%03d\n", minor);
    if (!connection_.write(reply, 12)) return failRead();
    return security(minor);
}

bool Session::security(int minor) {
    auto reason = [&](const char *what) {
        uint32_t length = 0;
        std::string text;
        if (connection_.readU32(length) && length < 4096) {
            text.resize(length);
            if (!connection_.read(text.data(), length)) text.clear();
        }
        return fail(std::string(what) + (text.empty() ? "" : ": " + text));
    };
    if (minor == 3) {
        uint32_t type = 0;
        if (!connection_.readU32(type)) return failRead();
        if (type == 0) return reason("the server refused the connection");
        if (type != 1) return fail("the server requires authentication (security type " + std::to_string(type) + ")");
        return true;
    }
    uint8_t count = 0;
    if (!connection_.readU8(count)) return failRead();
    if (count == 0) return reason("the server refused the connection");
    uint8_t types[255];
    if (!connection_.read(types, count)) return failRead();
    if (std::find(types, types + count, uint8_t(1)) == types + count) {
        std::string offered;
        for (int i = 0; i < count; ++i) offered += (i ? ", " : "") + std::to_string(types[i]);
        return fail("the server does not offer security type None (offers " + offered + ")");
    }
    const uint8_t none = 1;
    if (!connection_.write(&none, 1)) return failRead();
    if (minor == 7) return true;  // 3.7 sends no result for None
    uint32_t result = 1;
    if (!connection_.readU32(result)) return failRead();
    if (result != 0) return reason("security handshake failed");
    return true;
}

bool Session::initialise() {
    const uint8_t shared = 1;
    if (!connection_.write(&shared, 1)) return failRead();
    uint16_t width = 0, height = 0;
    uint8_t format[16];
    uint32_t nameLength = 0;
    if (!connection_.readU16(width) || !connection_.readU16(height) || !connection_.read(format, 16) ||
        !connection_.readU32(nameLength))
        return failRead();
    if (width == 0 || height == 0 || width > kMaxFrameSide || height > kMaxFrameSide)
        return fail("unusable frame buffer size " + std::to_string(width) + "x" + std::to_string(height));
    if (nameLength > kMaxNameLength) return fail("desktop name too long");
    name_.resize(nameLength);
    if (!connection_.read(name_.data(), nameLength)) return failRead();
    frame_.resize(width, height);
    return true;
}

bool Session::setPixelFormat() {
    uint8_t m[20] = {0};
    m[4] = 32;   // bits per pixel
    m[5] = 24;   // depth
    m[6] = 0;    // little-endian
    m[7] = 1;    // true colour
    putU16(m + 8, 255);
    putU16(m + 10, 255);
    putU16(m + 12, 255);
    m[14] = 16;  // red shift
    m[15] = 8;   // green shift
    m[16] = 0;   // blue shift
    return connection_.write(m, sizeof m) || failRead();
}

bool Session::setEncodings(int32_t preferred) {
    const int32_t encodings[] = {preferred, kRaw, kLastRect, kSupportedEncodings};
    uint8_t m[4 + 4 * 4] = {2, 0};
    putU16(m + 2, 4);
    for (int i = 0; i < 4; ++i) putU32(m + 4 + 4 * i, uint32_t(encodings[i]));
    return connection_.write(m, sizeof m) || failRead();
}

bool Session::requestUpdate(bool incremental) {
    uint8_t m[10] = {3, uint8_t(incremental ? 1 : 0)};
    putU16(m + 6, uint32_t(frame_.width));
    putU16(m + 8, uint32_t(frame_.height));
    return connection_.write(m, sizeof m) || failRead();
}

// ---------------------------------------------------------------------------
// Server messages
// ---------------------------------------------------------------------------

bool Session::receiveUpdate(std::vector<Rect> *rects) {
    for (;;) {
        uint8_t type = 0;
        if (!connection_.readU8(type)) return failRead();
        switch (type) {
            case 0: return update(rects);
            case 1: {  // colour map entries: not used with true colour
                uint8_t header[5];
                if (!connection_.read(header, 5)) return failRead();
                if (!connection_.skip(6 * size_t(header[3] << 8 | header[4]))) return failRead();
                break;
            }
            case 2: break;  // bell
            case 3: {       // cut text
                uint8_t pad[3];
                uint32_t length = 0;
                if (!connection_.read(pad, 3) || !connection_.readU32(length) || !connection_.skip(length))
                    return failRead();
                break;
            }
            default: return fail("unknown server message type " + std::to_string(type));
        }
    }
}

bool Session::update(std::vector<Rect> *rects) {
    uint8_t pad = 0;
    uint16_t count = 0;
    if (!connection_.readU8(pad) || !connection_.readU16(count)) return failRead();
    for (uint32_t i = 0; i < count; ++i) {
        uint16_t x, y, w, h;
        uint32_t encoding;
        if (!connection_.readU16(x) || !connection_.readU16(y) || !connection_.readU16(w) || !connection_.readU16(h) ||
            !connection_.readU32(encoding))
            return failRead();
        const Rect r{x, y, w, h, int32_t(encoding)};
        ++stats_.rectangles[r.encoding];
        if (r.encoding == kLastRect) break;
        if (!rectangle(r)) return false;
        if (rects != nullptr && r.encoding != kSupportedEncodings) rects->push_back(r);
    }
    return true;
}

bool Session::rectangle(const Rect &r) {
    if (r.encoding == kSupportedEncodings) return supportedEncodings(r);
    if (r.x + r.w > frame_.width || r.y + r.h > frame_.height)
        return fail("rectangle outside the frame buffer");
    switch (r.encoding) {
        case kRaw: return raw(r);
        case kHextile: return hextile(r);
        case kZrle: return zrle(r);
        case kTrle: return trle(r);
        default: return fail("the server sent encoding " + std::to_string(r.encoding) + ", which was not asked for");
    }
}

bool Session::supportedEncodings(const Rect &r) {
    // Width: the byte count; height: the number of encodings.
    std::vector<uint8_t> list(size_t(r.w));
    if (!connection_.read(list.data(), list.size())) return failRead();
    stats_.offeredKnown = true;
    stats_.offered.clear();
    for (size_t i = 0; i + 4 <= list.size(); i += 4)
        stats_.offered.push_back(int32_t(uint32_t(list[i]) << 24 | uint32_t(list[i + 1]) << 16 |
                                         uint32_t(list[i + 2]) << 8 | list[i + 3]));
    return true;
}

// ---------------------------------------------------------------------------
// Raw and Hextile
// ---------------------------------------------------------------------------

bool Session::raw(const Rect &r) {
    const auto putPixels = slot<UiPutPixelsFn>(table_, UI_SLOT_PUT_PIXELS);
    const size_t rowBytes = size_t(r.w) * 4;
    for (int32_t row = 0; row < r.h && r.w > 0; ++row) {
        if (!connection_.ensure(rowBytes)) return failRead();
        const UiRect line{r.x, r.y + row, r.w, 1};
        if (!putPixels(&frame_.image, &frame_.dirty, &line, connection_.data()))
            return fail("ui32 refused a Raw rectangle");
        connection_.consume(rowBytes);
    }
    return true;
}

int Session::hextileRead(uint8_t *buffer, int32_t length) {
    Session *s = hextileSession;
    if (s == nullptr || length <= 0 || !s->connection_.read(buffer, size_t(length))) return 0;
    // Follow the tile structure for the counts: a sub-encoding byte, then
    // either the raw pixels or background, foreground, count, subrectangles.
    if (s->hextilePendingReads_ == 0) {
        const uint8_t flags = buffer[0];
        ++s->stats_.hextileSubencodings[flags];
        ++s->stats_.hextileTiles;
        s->hextilePendingReads_ =
            (flags & 1) ? 1 : ((flags & 2) ? 1 : 0) + ((flags & 4) ? 1 : 0) + ((flags & 8) ? 2 : 0);
    } else {
        --s->hextilePendingReads_;
    }
    return 1;
}

bool Session::hextile(const Rect &r) {
    const UiRect rect{r.x, r.y, r.w, r.h};
    hextileSession = this;
    hextilePendingReads_ = 0;
    const int32_t result =
        slot<UiHextileRectFn>(table_, UI_SLOT_HEXTILE_RECT)(&frame_.image, &frame_.dirty, &rect, &hextileRead);
    hextileSession = nullptr;
    if (result == 1) return true;
    return connection_.error().empty() ? fail("ui32 rejected a Hextile rectangle") : failRead();
}

// ---------------------------------------------------------------------------
// ZRLE: zlib data of one stream per connection, 64 x 64 tiles
// ---------------------------------------------------------------------------

bool Session::zrle(const Rect &r) {
    uint32_t length = 0;
    if (!connection_.readU32(length)) return failRead();
    if (length > kMaxZrleLength) return fail("ZRLE rectangle too long");
    if (!inflaterReady_) {
        if (inflateInit(&inflater_) != Z_OK) return fail("zlib initialisation failed");
        inflaterReady_ = true;
    }
    // The most a valid rectangle inflates to: 4 bytes per pixel (plain
    // run-length of single pixels) and a palette per tile.
    const int64_t tiles = int64_t((r.w + kZrleTile - 1) / kZrleTile) * ((r.h + kZrleTile - 1) / kZrleTile);
    const int64_t limit = std::min<int64_t>(int64_t(r.w) * r.h * 4 + tiles * 400 + 64, INT32_MAX / 2);
    size_t produced = 0;
    inflated_.resize(65536);
    while (length > 0) {
        if (connection_.buffered() == 0 && !connection_.receiveMore()) return failRead();
        const size_t take = std::min<size_t>(length, connection_.buffered());
        inflater_.next_in = const_cast<Bytef *>(connection_.data());
        inflater_.avail_in = uInt(take);
        do {
            if (inflated_.size() - produced < 16384) inflated_.resize(inflated_.size() * 2);
            inflater_.next_out = inflated_.data() + produced;
            inflater_.avail_out = uInt(inflated_.size() - produced);
            const int rc = inflate(&inflater_, Z_SYNC_FLUSH);
            produced = inflated_.size() - inflater_.avail_out;
            if (rc != Z_OK && rc != Z_BUF_ERROR) return fail("ZRLE data: zlib error " + std::to_string(rc));
            if (int64_t(produced) > limit) return fail("ZRLE rectangle inflates beyond its tiles");
            if (rc == Z_BUF_ERROR) {  // no progress possible
                if (inflater_.avail_in != 0) return fail("ZRLE data: zlib made no progress");
                break;
            }
        } while (inflater_.avail_in > 0 || inflater_.avail_out == 0);
        connection_.consume(take);
        length -= uint32_t(take);
    }

    const uint8_t *p = inflated_.data();
    int32_t left = int32_t(produced);
    for (int32_t ty = 0; ty < r.h; ty += kZrleTile)
        for (int32_t tx = 0; tx < r.w; tx += kZrleTile) {
            if (left < 1) return fail("ZRLE data ends before its last tile");
            const uint8_t subencoding = *p;
            UiTileStream tile{r.x + tx, r.y + ty, std::min(kZrleTile, r.w - tx), std::min(kZrleTile, r.h - ty),
                              &frame_.image, &frame_.dirty, p + 1, left - 1};
            if (!zrleTile(tile, subencoding)) return false;
            p = tile.ptr;
            left = tile.left;
        }
    if (left != 0) return fail("ZRLE rectangle has " + std::to_string(left) + " bytes after its last tile");
    return true;
}

bool Session::zrleTile(UiTileStream &tile, uint8_t subencoding) {
    int32_t result;
    if (subencoding == 0) {
        result = slot<UiZrleRawTileFn>(table_, UI_SLOT_ZRLE_RAW_TILE)(&tile);
        ++stats_.zrle.raw;
    } else if (subencoding == 1) {
        result = slot<UiZrleSolidTileFn>(table_, UI_SLOT_ZRLE_SOLID_TILE)(&tile);
        ++stats_.zrle.solid;
    } else if (subencoding <= 16) {
        result = slot<UiZrlePackedPaletteTileFn>(table_, UI_SLOT_ZRLE_PACKED_PALETTE_TILE)(&tile, subencoding);
        ++stats_.zrle.packedPalette;
    } else if (subencoding == 128) {
        result = slot<UiZrlePlainRleTileFn>(table_, UI_SLOT_ZRLE_PLAIN_RLE_TILE)(&tile);
        ++stats_.zrle.plainRle;
    } else if (subencoding >= 130) {
        result = slot<UiZrlePaletteRleTileFn>(table_, UI_SLOT_ZRLE_PALETTE_RLE_TILE)(&tile, subencoding);
        ++stats_.zrle.paletteRle;
    } else {
        return fail("invalid ZRLE sub-encoding " + std::to_string(subencoding));
    }
    if (result == 1) return true;
    return fail(result == 0 ? "ZRLE tile body too short" : "ui32 rejected a ZRLE tile");
}

// ---------------------------------------------------------------------------
// TRLE: the same tile bodies, 16 x 16, straight from the connection
// ---------------------------------------------------------------------------

bool Session::trle(const Rect &r) {
    for (int32_t ty = 0; ty < r.h; ty += kTrleTile)
        for (int32_t tx = 0; tx < r.w; tx += kTrleTile)
            if (!trleTile(r.x + tx, r.y + ty, std::min(kTrleTile, r.w - tx), std::min(kTrleTile, r.h - ty)))
                return false;
    return true;
}

// The body's length is known only once it is decoded: the entry point is
// called on what has arrived, and again from the tile's start with more
// bytes when it answers that the body is too short.  Repainting is harmless.
bool Session::trleTile(int32_t x, int32_t y, int32_t w, int32_t h) {
    uint8_t subencoding = 0;
    if (!connection_.readU8(subencoding)) return failRead();
    const bool reuse = subencoding == 127 || subencoding == 129;
    if (reuse && (paletteSize_ == 0 || (subencoding == 127 && paletteSize_ > 16)))
        return fail("TRLE tile reuses a palette it cannot have");
    if (subencoding > 16 && subencoding < 127)
        return fail("invalid TRLE sub-encoding " + std::to_string(subencoding));

    const int32_t paletteBytes = reuse ? 3 * paletteSize_ : 0;
    std::vector<uint8_t> body;  // reused palette, then the bytes that arrived
    for (;;) {
        const size_t available = std::min(connection_.buffered(), kMaxTrleBody);
        const uint8_t *start = connection_.data();
        if (reuse) {
            body.assign(palette_.begin(), palette_.begin() + paletteBytes);
            body.insert(body.end(), start, start + available);
            start = body.data();
        }
        UiTileStream tile{x, y, w, h, &frame_.image, &frame_.dirty, start, int32_t(available) + paletteBytes};
        int32_t result;
        if (subencoding == 0) {
            result = slot<UiZrleRawTileFn>(table_, UI_SLOT_ZRLE_RAW_TILE)(&tile);
        } else if (subencoding == 1) {
            result = slot<UiZrleSolidTileFn>(table_, UI_SLOT_ZRLE_SOLID_TILE)(&tile);
        } else if (subencoding <= 16 || subencoding == 127) {
            result = slot<UiZrlePackedPaletteTileFn>(table_, UI_SLOT_ZRLE_PACKED_PALETTE_TILE)(
                &tile, reuse ? paletteSize_ : subencoding);
        } else if (subencoding == 128) {
            result = slot<UiZrlePlainRleTileFn>(table_, UI_SLOT_ZRLE_PLAIN_RLE_TILE)(&tile);
        } else {
            result = slot<UiZrlePaletteRleTileFn>(table_, UI_SLOT_ZRLE_PALETTE_RLE_TILE)(
                &tile, reuse ? 128 + paletteSize_ : subencoding);
        }
        if (result == -1) return fail("ui32 rejected a TRLE tile");
        if (result == 1) {
            const size_t used = size_t(tile.ptr - start) - size_t(paletteBytes);
            if (!reuse && ((subencoding >= 2 && subencoding <= 16) || subencoding >= 130)) {
                paletteSize_ = subencoding <= 16 ? subencoding : subencoding - 128;
                std::memcpy(palette_.data(), start, size_t(paletteSize_) * 3);
            }
            connection_.consume(used);
            TileKinds &k = stats_.trle;
            ++(subencoding == 0     ? k.raw
               : subencoding == 1   ? k.solid
               : subencoding <= 16  ? k.packedPalette
               : subencoding == 127 ? k.reusedPackedPalette
               : subencoding == 128 ? k.plainRle
               : subencoding == 129 ? k.reusedPaletteRle
                                    : k.paletteRle);
            return true;
        }
        if (available >= kMaxTrleBody) return fail("TRLE tile body longer than any valid tile");
        if (!connection_.receiveMore()) return failRead();
        ++stats_.trleRetries;
    }
}

}  // namespace vncsnap
