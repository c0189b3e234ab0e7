// Builders for bitmap test data (order streams, planes, stored pixels), a
// guarded decode of one compressed bitmap, and report trails that show the
// text of every report that is not the internal-error message.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "log_capture.h"

namespace ui32test {

// A byte stream assembled piece by piece.
struct Bytes {
    std::vector<uint8_t> v;

    Bytes() = default;
    Bytes(std::initializer_list<uint8_t> bytes) : v(bytes) {}
    Bytes &operator()(std::initializer_list<uint8_t> bytes);
    Bytes &operator()(const Bytes &more);
    Bytes &u16(uint32_t value);     // little-endian
    Bytes &colour(uint32_t value);  // three bytes, lowest first
    // Pixels at bytesPerPixel bytes each: the colour, then bytes 0x5A.
    Bytes &pixels(const std::vector<uint32_t> &values, int bytesPerPixel = 3);
    int32_t size() const { return int32_t(v.size()); }
};

// One entry per report: "module site" for the internal-error message,
// "module site: text" for every other message.
std::vector<std::string> trail(const LogCapture &log);
// The entry of a short read reported by the stream reader for a ui caller.
std::string shortRead(int callerLine, int readerSite = 64);

// A picture in which every pixel differs; (column, row) counted from the top.
uint32_t picturePixel(int32_t column, int32_t row);
// Its rows as stored in a bitmap: bottom row first.
std::vector<uint32_t> storedPicture(int32_t width, int32_t height);
// The stored picture as interleaved data: mega-mega colour images.
Bytes interleavedPicture(int32_t width, int32_t height);
// The stored picture as raw planar data (header 0x20, or 0x00 with a plane
// of alpha bytes first).
Bytes planarPicture(int32_t width, int32_t height, bool alpha = false);

// decompressBitmap with the input at the end of a guarded page and the
// output between guard words.
struct Decoded {
    int32_t result;
    std::vector<uint32_t> pixels;
    bool guardsIntact;
};
inline constexpr uint32_t kUnwritten = 0x7e7e7e7e;
Decoded decodeGuarded(int32_t width, int32_t height, const Bytes &data, uint32_t fill = kUnwritten);

}  // namespace ui32test
