// An RFB 3.8 client session (also speaks 3.3 and 3.7 to older servers) that
// paints every rectangle through the ui32 drawing table: ZRLE and TRLE tiles
// through the tile entry points, Hextile through hextileRect, Raw through
// putPixels.  Security type None only; pixel format 32 bits per pixel, depth
// 24, true colour, little-endian, red shift 16, green 8, blue 0, so that a
// pixel on the wire is the frame buffer's own word.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <zlib.h>

#include "connection.h"
#include "ui32.h"

namespace vncsnap {

enum Encoding : int32_t {
    kRaw = 0,
    kHextile = 5,
    kTrle = 15,
    kZrle = 16,
    kLastRect = -224,                   // 0xFFFFFF20
    kSupportedEncodings = int32_t(0xFFFE0002),
};

const char *encodingName(int32_t encoding);

// The client's frame buffer and its 32 x 32 dirty-tile map.
struct FrameBuffer {
    int32_t width = 0, height = 0;
    std::vector<uint32_t> pixels;
    std::vector<uint8_t> tiles;
    imgbuf image{};
    dirtybuf dirty{};

    void resize(int32_t w, int32_t h);
    void clearTiles();
    bool tileMarked(int32_t tx, int32_t ty) const { return tiles[size_t(ty) * size_t(dirty.columns) + size_t(tx)] != 0; }
    uint32_t at(int32_t x, int32_t y) const { return pixels[size_t(y) * size_t(width) + size_t(x)]; }
};

// ZRLE / TRLE tile sub-encodings seen.
struct TileKinds {
    uint64_t raw = 0, solid = 0, packedPalette = 0, plainRle = 0, paletteRle = 0;
    uint64_t reusedPackedPalette = 0, reusedPaletteRle = 0;  // TRLE only
    uint64_t total() const {
        return raw + solid + packedPalette + plainRle + paletteRle + reusedPackedPalette + reusedPaletteRle;
    }
};

struct Stats {
    std::map<int32_t, uint64_t> rectangles;      // per encoding
    TileKinds zrle, trle;
    uint64_t trleRetries = 0;                   // TRLE tiles called again with more bytes
    std::array<uint64_t, 256> hextileSubencodings{};  // per sub-encoding byte
    uint64_t hextileTiles = 0;
    bool offeredKnown = false;                  // the server listed its encodings
    std::vector<int32_t> offered;
    bool offers(int32_t encoding) const;
    // Tiles whose sub-encoding byte has `flag` set.
    uint64_t hextileFlag(int flag) const;
};

struct Rect {
    int32_t x, y, w, h, encoding;
};

class Session {
public:
    explicit Session(const UiDrawTable &table);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // Connects, runs the handshake (version, security None, initialisation),
    // sets the pixel format and asks for `preferred` (then Raw).
    bool open(const std::string &hostPort, int32_t preferred, int timeoutMs);
    bool requestUpdate(bool incremental);
    // Waits for one frame buffer update and paints it; the rectangles painted
    // are appended to `rects` when given.  Other server messages on the way
    // are read and dropped.
    bool receiveUpdate(std::vector<Rect> *rects = nullptr);

    FrameBuffer &frame() { return frame_; }
    const FrameBuffer &frame() const { return frame_; }
    const Stats &stats() const { return stats_; }
    const std::string &serverName() const { return name_; }
    const std::string &error() const { return error_; }

private:
    bool fail(const std::string &what);
    bool failRead();
    bool handshake();
    bool security(int minor);
    bool initialise();
    bool setPixelFormat();
    bool setEncodings(int32_t preferred);
    bool update(std::vector<Rect> *rects);
    bool rectangle(const Rect &r);
    bool raw(const Rect &r);
    bool hextile(const Rect &r);
    bool zrle(const Rect &r);
    bool trle(const Rect &r);
    bool supportedEncodings(const Rect &r);
    bool zrleTile(UiTileStream &tile, uint8_t subencoding);
    bool trleTile(int32_t x, int32_t y, int32_t w, int32_t h);
    static int hextileRead(uint8_t *buffer, int32_t length);

    const UiDrawTable &table_;
    Connection connection_;
    FrameBuffer frame_;
    Stats stats_;
    std::string name_;
    std::string error_;

    // ZRLE: one zlib stream for the whole connection.
    z_stream inflater_{};
    bool inflaterReady_ = false;
    std::vector<uint8_t> inflated_;

    // TRLE: the last palette, for the sub-encodings that reuse it.
    std::array<uint8_t, 127 * 3> palette_{};
    int32_t paletteSize_ = 0;

    // Hextile: what the next read of the decoder will be, for the counts.
    int32_t hextilePendingReads_ = 0;
};

}  // namespace vncsnap
