// What the five ZRLE/TRLE tile entry points share: the record's stream, the
// three-byte CPIXEL, run lengths, the tile's destination and marking, and the
// run writer that wraps from one row of the tile to the next.
#pragma once

#include <algorithm>
#include <cstdint>

#include "../codec/streamInOps.h"
#include "../dirtybuf.h"
#include "../ui.h"

namespace ui::rfb {

inline constexpr int32_t kPainted = 1;
inline constexpr int32_t kShortBody = 0;
inline constexpr int32_t kRejected = -1;

// Reports a rejected tile ("ui", internal error) and gives the result -1.
inline int32_t reject(int site) {
    reportInternal("ui", site);
    return kRejected;
}

// A CPIXEL of a solid, run-length or palette tile: b0 to bits 0-7, b1 to
// bits 8-15, b2 to bits 16-23, whatever sourceByteOrder says.
inline uint32_t cpixel(const uint8_t *b) {
    return uint32_t(b[0]) | (uint32_t(b[1]) << 8) | (uint32_t(b[2]) << 16);
}

// The record's last two words read as a streamIn.  The call works on a copy
// that is stored back into the record when the call ends, whatever its
// result, so that the record always tells exactly how much was consumed.
class TileInput {
public:
    explicit TileInput(UiTileStream &tile) : in{tile.ptr, tile.left}, tile_(tile) {}
    ~TileInput() {
        tile_.ptr = in.ptr;
        tile_.left = in.left;
    }
    TileInput(const TileInput &) = delete;
    TileInput &operator=(const TileInput &) = delete;

    // True when at least n (>= 0) bytes are left; a negative `left` holds none.
    bool has(int64_t n) const { return in.left >= n; }

    // A null ptr holds no readable byte, whatever `left` claims.
    bool missing() const { return in.ptr == nullptr; }

    // Takes n bytes that has(n) and !missing() confirmed.
    const uint8_t *take(int32_t n) {
        const uint8_t *bytes = in.ptr;
        in.ptr += n;
        in.left -= n;
        return bytes;
    }

    // Passes over n bytes that has(n) confirmed without reading them.  A null
    // ptr is advanced as a plain address, never dereferenced, so that the
    // record shows the bytes as consumed.
    void pass(int32_t n) {
        if (in.ptr != nullptr)
            in.ptr += n;
        else
            in.ptr = reinterpret_cast<const uint8_t *>(uintptr_t(uint32_t(n)));
        in.left -= n;
    }

    // A run length: bytes of 255 continue it, the first other byte ends it,
    // and the length is one plus their sum.  Every byte read is consumed.
    // False when the body ends before the last byte (or holds none: null ptr).
    // The sum of at most 2^31 bytes stays far below 2^63.
    bool takeRunLength(int64_t &length) {
        int64_t sum = 1;
        for (;;) {
            if (in.left < 1 || in.ptr == nullptr) return false;
            const uint8_t b = *take(1);
            sum += b;
            if (b != 255) break;
        }
        length = sum;
        return true;
    }

    streamIn in;

private:
    UiTileStream &tile_;
};

// The tile's top-left pixel after the image check, or null ("imgbuf" 99 for
// a rectangle outside the image; nothing more for a null image record or
// pixel pointer).  The caller reports its own site.
inline uint32_t *tileDestination(const UiTileStream &tile) {
    if (tile.image == nullptr) return nullptr;
    return tile.image->writePtr(tile.x, tile.y, tile.width, tile.height);
}

// Marks the painted tile; a tile stream without a map marks nothing.
inline void markTile(const UiTileStream &tile) { markIfGiven(tile.dirty, tile.x, tile.y, tile.width, tile.height); }

// Pixels of a tile that passed the image check.
inline int64_t tileArea(const UiTileStream &tile) { return int64_t(tile.width) * int64_t(tile.height); }

// Stores runs of one colour into a tile, left to right, wrapping from the
// last column to the first column of the next row; the position carries over
// from run to run.  The caller never stores more than width x height pixels
// in all, so the writer steps to a next row only when that row exists.
class RunWriter {
public:
    RunWriter(uint32_t *origin, uint32_t stride, int32_t width) : row_(origin), stride_(stride), width_(width) {}

    void put(uint32_t colour, int64_t count) {
        while (count > 0) {
            if (column_ == width_) {
                column_ = 0;
                row_ = nextRow(row_, stride_);
            }
            const int32_t n = int32_t(std::min<int64_t>(count, width_ - column_));
            std::fill_n(row_ + column_, n, colour);
            column_ += n;
            count -= n;
        }
    }

private:
    uint32_t *row_;
    uint32_t stride_;
    int32_t width_;
    int32_t column_ = 0;
};

}  // namespace ui::rfb
