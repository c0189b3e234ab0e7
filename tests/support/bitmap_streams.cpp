#include "bitmap_streams.h"

#include <algorithm>

#include "codec/decompressBitmap.h"
#include "guarded_input.h"

namespace ui32test {

Bytes &Bytes::operator()(std::initializer_list<uint8_t> bytes) {
    v.insert(v.end(), bytes);
    return *this;
}

Bytes &Bytes::operator()(const Bytes &more) {
    v.insert(v.end(), more.v.begin(), more.v.end());
    return *this;
}

Bytes &Bytes::u16(uint32_t value) { return (*this)({uint8_t(value), uint8_t(value >> 8)}); }

Bytes &Bytes::colour(uint32_t value) { return (*this)({uint8_t(value), uint8_t(value >> 8), uint8_t(value >> 16)}); }

Bytes &Bytes::pixels(const std::vector<uint32_t> &values, int bytesPerPixel) {
    for (uint32_t value : values) {
        colour(value);
        for (int k = 3; k < bytesPerPixel; ++k) v.push_back(0x5A);
    }
    return *this;
}

std::vector<std::string> trail(const LogCapture &log) {
    std::vector<std::string> out;
    for (const Report &r : log.reports()) {
        std::string entry = r.module + " " + std::to_string(r.site);
        if (r.text != kInternalError) entry += ": " + r.text;
        out.push_back(entry);
    }
    return out;
}

std::string shortRead(int callerLine, int readerSite) {
    return "streamInOps " + std::to_string(readerSite) + ": Not enough data in stream in ui line " +
           std::to_string(callerLine) + ".";
}

uint32_t picturePixel(int32_t column, int32_t row) { return 0x400000u + uint32_t(row) * 0x1000u + uint32_t(column); }

std::vector<uint32_t> storedPicture(int32_t width, int32_t height) {
    std::vector<uint32_t> out;
    for (int32_t stored = 0; stored < height; ++stored)
        for (int32_t c = 0; c < width; ++c) out.push_back(picturePixel(c, height - 1 - stored));
    return out;
}

Bytes interleavedPicture(int32_t width, int32_t height) {
    const std::vector<uint32_t> stored = storedPicture(width, height);
    Bytes out;
    for (size_t i = 0; i < stored.size(); i += 65535) {
        const size_t n = std::min<size_t>(65535, stored.size() - i);
        out({0xF4}).u16(uint32_t(n)).pixels(std::vector<uint32_t>(stored.begin() + long(i), stored.begin() + long(i + n)));
    }
    return out;
}

Bytes planarPicture(int32_t width, int32_t height, bool alpha) {
    const std::vector<uint32_t> stored = storedPicture(width, height);
    Bytes out{uint8_t(alpha ? 0x00 : 0x20)};
    if (alpha)
        for (size_t i = 0; i < stored.size(); ++i) out({0xEE});
    for (int shift : {16, 8, 0})
        for (uint32_t p : stored) out({uint8_t(p >> shift)});
    return out;
}

Decoded decodeGuarded(int32_t width, int32_t height, const Bytes &data, uint32_t fill) {
    constexpr size_t kGuard = 16;
    constexpr uint32_t kGuardWord = 0xdeadbeef;
    const size_t n = size_t(width) * size_t(height);
    std::vector<uint32_t> store(n + 2 * kGuard, kGuardWord);
    std::fill(store.begin() + kGuard, store.end() - kGuard, fill);
    const GuardedInput input(data.v);
    Decoded out;
    out.result = ui::decompressBitmap(width, height, input.data(), input.size(), store.data() + kGuard);
    out.pixels.assign(store.begin() + kGuard, store.end() - kGuard);
    out.guardsIntact = true;
    for (size_t i = 0; i < kGuard; ++i)
        if (store[i] != kGuardWord || store[store.size() - 1 - i] != kGuardWord) out.guardsIntact = false;
    return out;
}

}  // namespace ui32test
