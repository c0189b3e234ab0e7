// compare REFERENCE SNAPSHOT.png: compares a reference picture (an X screen
// dump made by xwd -root, 24-bit TrueColor at 32 bits per pixel, or a PNG)
// with a snapshot pixel by pixel.  Prints the number of differing pixels,
// their bounding box and the first few; exits 0 only for identical pictures.
#include <png.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

struct Picture {
    uint32_t width = 0, height = 0;
    std::vector<uint32_t> pixels;  // 0xRRGGBB
};

uint32_t word(const std::vector<uint8_t> &b, size_t at, bool bigEndian) {
    return bigEndian ? uint32_t(b[at]) << 24 | uint32_t(b[at + 1]) << 16 | uint32_t(b[at + 2]) << 8 | b[at + 3]
                     : uint32_t(b[at + 3]) << 24 | uint32_t(b[at + 2]) << 16 | uint32_t(b[at + 1]) << 8 | b[at];
}

bool readPng(const char *path, Picture &picture) {
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&png, path)) return false;
    png.format = PNG_FORMAT_RGB;
    std::vector<uint8_t> rgb(PNG_IMAGE_SIZE(png));
    if (!png_image_finish_read(&png, nullptr, rgb.data(), 0, nullptr)) return false;
    picture.width = png.width, picture.height = png.height;
    for (size_t i = 0; i < rgb.size(); i += 3)
        picture.pixels.push_back(uint32_t(rgb[i]) << 16 | uint32_t(rgb[i + 1]) << 8 | rgb[i + 2]);
    return true;
}

// The header is 25 big-endian words; then the window name, the colour map
// (12 bytes per entry) and the pixels in the byte order the header names.
bool readXwd(const std::vector<uint8_t> &x, Picture &picture) {
    if (x.size() < 100) return false;
    const auto h = [&](int i) { return word(x, size_t(4 * i), true); };
    const uint32_t stride = h(12);
    const size_t start = size_t(h(0)) + size_t(h(19)) * 12;
    picture.width = h(4), picture.height = h(5);
    if (h(2) != 2 || h(11) != 32 || h(14) != 0xff0000 || h(15) != 0xff00 || h(16) != 0xff ||
        start + size_t(stride) * picture.height > x.size())
        return false;
    for (uint32_t y = 0; y < picture.height; ++y)
        for (uint32_t c = 0; c < picture.width; ++c)
            picture.pixels.push_back(word(x, start + size_t(y) * stride + 4 * c, h(7) != 0) & 0xffffff);
    return true;
}

bool read(const char *path, Picture &picture) {
    std::ifstream in(path, std::ios::binary);
    const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (bytes.size() > 8 && bytes[1] == 'P' && bytes[2] == 'N' && bytes[3] == 'G') return readPng(path, picture);
    return readXwd(bytes, picture);
}

}  // namespace

int main(int argc, char **argv) {
    Picture reference, snapshot;
    if (argc != 3) return std::fprintf(stderr, "usage: compare REFERENCE SNAPSHOT.png\n"), 2;
    if (!read(argv[1], reference)) return std::fprintf(stderr, "%s: unreadable\n", argv[1]), 2;
    if (!read(argv[2], snapshot)) return std::fprintf(stderr, "%s: unreadable\n", argv[2]), 2;
    if (reference.width != snapshot.width || reference.height != snapshot.height) {
        std::printf("sizes differ: reference %ux%u, snapshot %ux%u\n", reference.width, reference.height,
                    snapshot.width, snapshot.height);
        return 1;
    }
    uint64_t differing = 0;
    uint32_t left = reference.width, top = reference.height, right = 0, bottom = 0;
    for (uint32_t y = 0; y < reference.height; ++y)
        for (uint32_t x = 0; x < reference.width; ++x) {
            const uint32_t a = reference.pixels[size_t(y) * reference.width + x];
            const uint32_t b = snapshot.pixels[size_t(y) * reference.width + x];
            if (a == b) continue;
            if (++differing <= 5) std::printf("(%u, %u): reference %06x, snapshot %06x\n", x, y, a, b);
            left = std::min(left, x), top = std::min(top, y), right = std::max(right, x), bottom = std::max(bottom, y);
        }
    std::printf("%ux%u: %llu differing pixels", reference.width, reference.height,
                static_cast<unsigned long long>(differing));
    if (differing > 0) std::printf(" within (%u, %u)-(%u, %u)", left, top, right, bottom);
    std::printf("\n");
    return differing == 0 ? 0 : 1;
}
