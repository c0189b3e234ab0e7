// compare REFERENCE SNAPSHOT.png: compares a reference picture (an X screen
// dump made by xwd -root, 24-bit TrueColor at 32 bits per pixel, or a PNG)
// with a snapshot pixel by pixel.  Prints the number of differing pixels,
// their bounding box and the first few; exits 0 only for identical pictures.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "scenes.h"

namespace {

using kit::Picture;

uint32_t word(const std::vector<uint8_t> &b, size_t at, bool bigEndian) {
    return bigEndian ? uint32_t(b[at]) << 24 | uint32_t(b[at + 1]) << 16 | uint32_t(b[at + 2]) << 8 | b[at + 3]
                     : uint32_t(b[at + 3]) << 24 | uint32_t(b[at + 2]) << 16 | uint32_t(b[at + 1]) << 8 | b[at];
}

// The header is 25 big-endian words; then the window name, the colour map
// (12 bytes per entry) and the pixels in the byte order the header names.
bool readXwd(const std::vector<uint8_t> &x, Picture &picture) {
    if (x.size() < 100) return false;
    const auto h = [&](int i) { return word(x, size_t(4 * i), true); };
    const uint32_t stride = h(12);
    const size_t start = size_t(h(0)) + size_t(h(19)) * 12;
    picture = Picture(int32_t(h(4)), int32_t(h(5)));
    if (h(2) != 2 || h(11) != 32 || h(14) != 0xff0000 || h(15) != 0xff00 || h(16) != 0xff ||
        start + size_t(stride) * size_t(picture.height) > x.size())
        return false;
    for (int32_t y = 0; y < picture.height; ++y)
        for (int32_t c = 0; c < picture.width; ++c)
            picture.at(c, y) = word(x, start + size_t(y) * stride + 4 * size_t(c), h(7) != 0);
    return true;
}

bool read(const char *path, Picture &picture) {
    std::ifstream in(path, std::ios::binary);
    const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::string error;
    const bool ok = bytes.size() > 8 && bytes[1] == 'P' && bytes[2] == 'N' && bytes[3] == 'G'
                        ? kit::loadPng(path, picture, error)
                        : readXwd(bytes, picture);
    for (uint32_t &p : picture.pixels) p &= 0xffffff;
    return ok;
}

}  // namespace

int main(int argc, char **argv) {
    Picture reference, snapshot;
    if (argc != 3) return std::fprintf(stderr, "usage: compare REFERENCE SNAPSHOT.png\n"), 2;
    if (!read(argv[1], reference)) return std::fprintf(stderr, "%s: unreadable\n", argv[1]), 2;
    if (!read(argv[2], snapshot)) return std::fprintf(stderr, "%s: unreadable\n", argv[2]), 2;
    if (reference.width != snapshot.width || reference.height != snapshot.height) {
        std::printf("sizes differ: reference %dx%d, snapshot %dx%d\n", reference.width, reference.height,
                    snapshot.width, snapshot.height);
        return 1;
    }
    uint64_t differing = 0;
    int32_t left = reference.width, top = reference.height, right = 0, bottom = 0;
    for (int32_t y = 0; y < reference.height; ++y)
        for (int32_t x = 0; x < reference.width; ++x) {
            const uint32_t a = reference.at(x, y), b = snapshot.at(x, y);
            if (a == b) continue;
            if (++differing <= 5) std::printf("(%d, %d): reference %06x, snapshot %06x\n", x, y, a, b);
            left = std::min(left, x), top = std::min(top, y), right = std::max(right, x), bottom = std::max(bottom, y);
        }
    std::printf("%dx%d: %llu differing pixels", reference.width, reference.height,
                static_cast<unsigned long long>(differing));
    if (differing > 0) std::printf(" within (%d, %d)-(%d, %d)", left, top, right, bottom);
    std::printf("\n");
    return differing == 0 ? 0 : 1;
}
