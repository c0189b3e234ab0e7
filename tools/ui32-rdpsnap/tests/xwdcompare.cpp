// xwdcompare SCREEN.xwd SNAPSHOT.png: compares an X screen dump (xwd -root,
// 24-bit TrueColor, 32 bits per pixel) with a snapshot pixel by pixel.
// Prints the number of differing pixels and their bounding box, and the
// first few differences; exits 0 only when the pictures are identical.
#include <png.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

uint32_t word(const std::vector<uint8_t> &b, size_t at, bool bigEndian) {
    return bigEndian ? uint32_t(b[at]) << 24 | uint32_t(b[at + 1]) << 16 | uint32_t(b[at + 2]) << 8 | b[at + 3]
                     : uint32_t(b[at + 3]) << 24 | uint32_t(b[at + 2]) << 16 | uint32_t(b[at + 1]) << 8 | b[at];
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: xwdcompare SCREEN.xwd SNAPSHOT.png\n");
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    const std::vector<uint8_t> x((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    // The header is 25 big-endian words; then the window name, the colour
    // map (12 bytes per entry) and the pixels in the server's byte order.
    if (x.size() < 100) return std::fprintf(stderr, "%s: not an xwd file\n", argv[1]), 2;
    const auto h = [&](int i) { return word(x, size_t(4 * i), true); };
    const uint32_t width = h(4), height = h(5), pixelsLsb = h(7) == 0, bpp = h(11), stride = h(12);
    const size_t start = size_t(h(0)) + size_t(h(19)) * 12;
    if (h(2) != 2 || bpp != 32 || h(14) != 0xff0000 || h(15) != 0xff00 || h(16) != 0xff ||
        start + size_t(stride) * height > x.size())
        return std::fprintf(stderr, "%s: not a 32-bit TrueColor ZPixmap dump\n", argv[1]), 2;

    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&png, argv[2])) return std::fprintf(stderr, "%s: %s\n", argv[2], png.message), 2;
    png.format = PNG_FORMAT_RGB;
    std::vector<uint8_t> rgb(PNG_IMAGE_SIZE(png));
    if (!png_image_finish_read(&png, nullptr, rgb.data(), 0, nullptr))
        return std::fprintf(stderr, "%s: %s\n", argv[2], png.message), 2;
    if (png.width != width || png.height != height) {
        std::printf("sizes differ: screen %ux%u, snapshot %ux%u\n", width, height, png.width, png.height);
        return 1;
    }
    uint64_t differing = 0;
    uint32_t left = width, top = height, right = 0, bottom = 0;
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t c = 0; c < width; ++c) {
            const uint32_t screen = word(x, start + size_t(y) * stride + 4 * c, !pixelsLsb) & 0xffffff;
            const uint8_t *p = &rgb[(size_t(y) * width + c) * 3];
            const uint32_t snap = uint32_t(p[0]) << 16 | uint32_t(p[1]) << 8 | p[2];
            if (screen == snap) continue;
            if (++differing <= 5) std::printf("(%u, %u): screen %06x, snapshot %06x\n", c, y, screen, snap);
            left = std::min(left, c), top = std::min(top, y), right = std::max(right, c), bottom = std::max(bottom, y);
        }
    if (differing == 0) {
        std::printf("%ux%u: 0 differing pixels\n", width, height);
        return 0;
    }
    std::printf("%ux%u: %llu differing pixels within (%u, %u)-(%u, %u)\n", width, height,
                static_cast<unsigned long long>(differing), left, top, right, bottom);
    return 1;
}
