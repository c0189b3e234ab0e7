// What the five ZRLE/TRLE tile entry points share: the record's bytes read
// through the bounded reader, the three-byte CPIXEL, run lengths, the tile's
// destination and marking, and the run writer that wraps from one row of the
// tile to the next.
#pragma once

#include <algorithm>
#include <cstdint>

#include "../core/rows.h"
#include "../codec/streamInOps.h"
#include "../core/settings.h"
#include "../core/surface.h"

namespace ui {

inline constexpr int32_t kPainted = 1, kShortBody = 0, kRejected = -1;

inline int32_t reject(Site site) { return report(site), kRejected; }

// b0 to bits 0-7, b1 to 8-15, b2 to 16-23, whatever sourceByteOrder says.
inline uint32_t cpixel(const uint8_t *b) { return uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16; }

// The record's ptr and left as a reader.  The call works on a copy that goes
// back into the record when the call ends, whatever its result, so that the
// record always tells exactly how much was consumed.
class TileInput : public streamIn {
public:
    explicit TileInput(UiTileStream &tile) : streamIn{tile.ptr, tile.left}, tile_(tile) {}
    ~TileInput() {
        tile_.ptr = ptr;
        tile_.left = left;
    }
    TileInput(const TileInput &) = delete;
    TileInput &operator=(const TileInput &) = delete;

    // Bytes of 255 continue a run length, the first other byte ends it; the
    // length is one plus their sum.  Every byte read is consumed.  False when
    // the body ends first (or has no bytes: a null ptr).
    bool runLength(int64_t &length) {
        length = 1;
        for (uint8_t b = 255; b == 255; length += b)
            if (!next(b)) return false;
        return true;
    }

private:
    UiTileStream &tile_;
};

// The tile's top-left pixel, or null ("imgbuf" 99 for a rectangle outside the
// image, nothing more for a null image or pixels).  The caller reports next.
inline uint32_t *tileDestination(const UiTileStream &t) {
    return t.image == nullptr ? nullptr : writePtr(*t.image, t.x, t.y, t.width, t.height);
}

inline int32_t painted(const UiTileStream &t) {
    markDrawn(t.dirty, UiRect{t.x, t.y, t.width, t.height});
    return kPainted;
}

// Stores runs of one colour left to right, wrapping from the last column to
// the first of the next row, the position carrying over from run to run.
// The caller never stores more than width x height pixels in all.
class RunWriter {
public:
    RunWriter(uint32_t *origin, uint32_t stride, int32_t width) : row_(origin), stride_(stride), width_(width) {}

    void put(uint32_t colour, int64_t count) {
        while (count > 0) {
            if (column_ == width_) {
                column_ = 0;
                row_ = rowAt(row_, stride_, 1);
            }
            const int32_t n = int32_t(std::min<int64_t>(count, width_ - column_));
            fillRow(row_ + column_, n, colour);
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

}  // namespace ui
