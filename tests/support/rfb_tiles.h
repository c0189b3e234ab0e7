// Helpers for the RFB tests: tile-stream records over a Frame, the consumption
// a call left in a record, and a scripted Hextile read callback.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "frame.h"
#include "guarded_input.h"

namespace ui32test {

using Bytes = std::vector<uint8_t>;

inline UiTileStream tileStream(Frame &frame, int32_t x, int32_t y, int32_t width, int32_t height, const uint8_t *ptr,
                               int32_t left) {
    return UiTileStream{x, y, width, height, &frame.image(), &frame.dirty(), ptr, left};
}

inline UiTileStream tileStream(Frame &frame, int32_t x, int32_t y, int32_t width, int32_t height,
                               const GuardedInput &input) {
    return tileStream(frame, x, y, width, height, input.data(), input.size());
}

// Bytes a call consumed, checked for consistency: ptr moved by exactly as
// much as left dropped.  -1 flags an inconsistent record.
inline int64_t consumed(const UiTileStream &after, const uint8_t *ptrBefore, int32_t leftBefore) {
    const int64_t moved =
        int64_t(reinterpret_cast<uintptr_t>(after.ptr)) - int64_t(reinterpret_cast<uintptr_t>(ptrBefore));
    const int64_t dropped = int64_t(leftBefore) - after.left;
    return moved == dropped ? moved : -1;
}

// Serves a byte stream through UiReadFn, which carries no context: the most
// recently constructed feed is the active one.  Each call is recorded by its
// length; the call with index failAt (0-based) and every later one fail, as
// does a call asking for more bytes than are left.
class HextileFeed {
public:
    explicit HextileFeed(Bytes bytes, int failAt = -1)
        : bytes_(std::move(bytes)), failAt_(failAt), previous_(active()) {
        active() = this;
    }
    ~HextileFeed() { active() = previous_; }
    HextileFeed(const HextileFeed &) = delete;
    HextileFeed &operator=(const HextileFeed &) = delete;

    static int read(uint8_t *buffer, int32_t length) {
        HextileFeed &feed = *active();
        feed.requests_.push_back(length);
        if (feed.failAt_ >= 0 && int(feed.requests_.size()) > feed.failAt_) return 0;
        if (length < 1 || size_t(length) > feed.bytes_.size() - feed.position_) return 0;
        for (int32_t i = 0; i < length; ++i) buffer[i] = feed.bytes_[feed.position_++];
        return 1;
    }

    const std::vector<int32_t> &requests() const { return requests_; }
    size_t position() const { return position_; }

private:
    static HextileFeed *&active() {
        static HextileFeed *feed = nullptr;
        return feed;
    }
    Bytes bytes_;
    int failAt_;
    HextileFeed *previous_;
    size_t position_ = 0;
    std::vector<int32_t> requests_;
};

}  // namespace ui32test
