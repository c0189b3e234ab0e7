#include "pictures.h"

#include <png.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace interop {

namespace {

uint32_t channel(uint32_t colour, int shift) { return (colour >> shift) & 0xff; }

uint32_t rgb(uint32_t r, uint32_t g, uint32_t b) {
    return 0xff000000u | (std::min(r, 255u) << 16) | (std::min(g, 255u) << 8) | std::min(b, 255u);
}

// Colour at position i of n between a and b (integer interpolation per
// channel, so the result is the same everywhere).
uint32_t mix(uint32_t a, uint32_t b, int32_t i, int32_t n) {
    if (n <= 1) return a;
    uint32_t out = 0xff000000u;
    for (int shift = 0; shift < 24; shift += 8) {
        const int32_t ca = int32_t(channel(a, shift)), cb = int32_t(channel(b, shift));
        out |= uint32_t(ca + (cb - ca) * i / (n - 1)) << shift;
    }
    return out;
}

uint32_t blendOver(uint32_t top, uint32_t below) {
    const uint32_t alpha = top >> 24;
    uint32_t out = 0xff000000u;
    for (int shift = 0; shift < 24; shift += 8) {
        const uint32_t c = (channel(top, shift) * alpha + channel(below, shift) * (255 - alpha) + 127) / 255;
        out |= c << shift;
    }
    return out;
}

}  // namespace

Picture::Picture(int32_t w, int32_t h, uint32_t fill)
    : width(w), height(h), pixels(size_t(w) * size_t(h), fill) {}

Picture Picture::crop(int32_t x, int32_t y, int32_t w, int32_t h) const {
    Picture out(w, h);
    for (int32_t r = 0; r < h; ++r)
        for (int32_t c = 0; c < w; ++c) out.at(c, r) = at(x + c, y + r);
    return out;
}

Picture Picture::flippedVertically() const {
    Picture out(width, height);
    for (int32_t r = 0; r < height; ++r)
        std::copy_n(pixels.begin() + ptrdiff_t(r) * width, width,
                    out.pixels.begin() + ptrdiff_t(height - 1 - r) * width);
    return out;
}

Picture Picture::opaque() const {
    Picture out = *this;
    for (uint32_t &p : out.pixels) p |= 0xff000000u;
    return out;
}

Picture Picture::over(uint32_t background) const {
    Picture out = *this;
    for (uint32_t &p : out.pixels) p = blendOver(p, background);
    return out;
}

bool Picture::hasVaryingAlpha() const {
    return std::any_of(pixels.begin(), pixels.end(), [](uint32_t p) { return (p >> 24) != 0xff; });
}

bool loadPng(const std::string &path, Picture &out, std::string &error) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) {
        error = path + ": " + image.message;
        return false;
    }
    image.format = PNG_FORMAT_BGRA;  // bytes B, G, R, A: the word 0xAARRGGBB
    out = Picture(int32_t(image.width), int32_t(image.height));
    if (!png_image_finish_read(&image, nullptr, out.pixels.data(), 0, nullptr)) {
        error = path + ": " + image.message;
        png_image_free(&image);
        return false;
    }
    return true;
}

bool savePng(const std::string &path, const Picture &picture) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = uint32_t(picture.width);
    image.height = uint32_t(picture.height);
    image.format = PNG_FORMAT_BGRA;
    const Picture solid = picture.opaque();
    return png_image_write_to_file(&image, path.c_str(), 0, solid.pixels.data(), 0, nullptr) != 0;
}

std::vector<std::string> iconPaths(int32_t size, size_t count) {
    namespace fs = std::filesystem;
    const std::string sizeDir = std::to_string(size) + "x" + std::to_string(size);
    const fs::path root = fs::path("/usr/share/icons/Adwaita") / sizeDir;
    std::vector<std::string> all;
    std::error_code ec;
    for (fs::recursive_directory_iterator it(root, ec), end; !ec && it != end; it.increment(ec))
        if (it->is_regular_file() && it->path().extension() == ".png") all.push_back(it->path().string());
    std::sort(all.begin(), all.end());
    std::vector<std::string> picked;
    if (all.empty() || count == 0) return picked;
    const size_t step = std::max<size_t>(1, all.size() / count);
    for (size_t i = 0; i < all.size() && picked.size() < count; i += step) picked.push_back(all[i]);
    return picked;
}

void Canvas::put(int32_t x, int32_t y, uint32_t colour) {
    if (x >= 0 && y >= 0 && x < p_.width && y < p_.height) p_.at(x, y) = colour;
}

void Canvas::fill(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t colour) {
    for (int32_t r = y; r < y + h; ++r)
        for (int32_t c = x; c < x + w; ++c) put(c, r, colour);
}

void Canvas::horizontalGradient(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t from, uint32_t to) {
    for (int32_t c = 0; c < w; ++c) fill(x + c, y, 1, h, mix(from, to, c, w));
}

void Canvas::verticalGradient(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t from, uint32_t to) {
    for (int32_t r = 0; r < h; ++r) fill(x, y + r, w, 1, mix(from, to, r, h));
}

void Canvas::noise(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t seed) {
    Random random(seed);
    for (int32_t r = y; r < y + h; ++r)
        for (int32_t c = x; c < x + w; ++c) put(c, r, 0xff000000u | (random.next() & 0xffffff));
}

void Canvas::photo(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t seed) {
    // Bilinear interpolation of a coarse grid of random colours, plus grain.
    constexpr int32_t kCell = 24;
    const int32_t gw = w / kCell + 2, gh = h / kCell + 2;
    Random random(seed);
    std::vector<uint32_t> grid(size_t(gw) * size_t(gh));
    for (uint32_t &g : grid) g = random.next();
    for (int32_t r = 0; r < h; ++r) {
        for (int32_t c = 0; c < w; ++c) {
            const int32_t gx = c / kCell, gy = r / kCell, fx = c % kCell, fy = r % kCell;
            uint32_t out = 0xff000000u;
            for (int shift = 0; shift < 24; shift += 8) {
                const auto at = [&](int32_t i, int32_t j) { return int32_t(channel(grid[size_t(j * gw + i)], shift)); };
                const int32_t top = at(gx, gy) * (kCell - fx) + at(gx + 1, gy) * fx;
                const int32_t bottom = at(gx, gy + 1) * (kCell - fx) + at(gx + 1, gy + 1) * fx;
                int32_t v = (top * (kCell - fy) + bottom * fy) / (kCell * kCell);
                v += random.below(7) - 3;
                out |= uint32_t(std::clamp(v, 0, 255)) << shift;
            }
            put(x + c, y + r, out);
        }
    }
}

void Canvas::text(int32_t x, int32_t y, int32_t characters, uint32_t colour, uint32_t seed) {
    // Seven strokes of a 5 x 7 glyph box: top, middle, bottom, upper left,
    // lower left, upper right, lower right; each glyph draws a few of them.
    Random random(seed);
    for (int32_t i = 0; i < characters; ++i) {
        const int32_t gx = x + 6 * i, gy = y + 1;
        uint32_t strokes = random.next();
        if (random.below(6) == 0) continue;  // a space
        if ((strokes & 0x7f) == 0) strokes |= 0x09;
        if (strokes & 0x01) fill(gx, gy, 5, 1, colour);
        if (strokes & 0x02) fill(gx, gy + 3, 5, 1, colour);
        if (strokes & 0x04) fill(gx, gy + 6, 5, 1, colour);
        if (strokes & 0x08) fill(gx, gy, 1, 4, colour);
        if (strokes & 0x10) fill(gx, gy + 3, 1, 4, colour);
        if (strokes & 0x20) fill(gx + 4, gy, 1, 4, colour);
        if (strokes & 0x40) fill(gx + 4, gy + 3, 1, 4, colour);
        if (strokes & 0x80) put(gx + 2, gy + 5, colour);
    }
}

void Canvas::window(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t seed) {
    Random random(seed);
    fill(x, y, w, h, rgb(0x55, 0x57, 0x53));                        // border
    horizontalGradient(x + 1, y + 1, w - 2, 20, rgb(0x20, 0x4a, 0x87), rgb(0x72, 0x9f, 0xcf));
    text(x + 6, y + 6, std::max(1, (w - 60) / 6 / 2), rgb(255, 255, 255), random.next());
    fill(x + w - 18, y + 5, 12, 12, rgb(0xcc, 0x00, 0x00));          // close button
    fill(x + 1, y + 21, w - 2, h - 22, rgb(0xf6, 0xf5, 0xf4));       // client area
    for (int32_t line = y + 28; line + 9 < y + h - 4; line += 12)
        text(x + 8, line, std::max(1, (w - 16) / 6 - random.below(8)), rgb(0x2e, 0x34, 0x36), random.next());
}

void Canvas::blend(const Picture &icon, int32_t x, int32_t y) {
    for (int32_t r = 0; r < icon.height; ++r)
        for (int32_t c = 0; c < icon.width; ++c) {
            const int32_t px = x + c, py = y + r;
            if (px >= 0 && py >= 0 && px < p_.width && py < p_.height)
                p_.at(px, py) = blendOver(icon.at(c, r), p_.at(px, py));
        }
}

Picture desktop(int32_t width, int32_t height, const std::vector<Picture> &icons, uint32_t seed) {
    Picture picture(width, height);
    Canvas canvas(picture);
    Random random(seed);
    canvas.verticalGradient(0, 0, width, height, rgb(0x1c, 0x40, 0x6b), rgb(0x6c, 0x9a, 0xc8));
    // Desktop icons down the left edge.
    int32_t iy = 8;
    for (const Picture &icon : icons) {
        if (icon.width > 64 || iy + icon.height > height - 40) continue;
        canvas.blend(icon, 8, iy);
        iy += icon.height + 12;
    }
    // Two overlapping windows, the second with a photo and a noisy area.
    canvas.window(width / 8, height / 12, width / 2, height / 2, random.next());
    const int32_t wx = width * 3 / 8, wy = height * 3 / 10, ww = width / 2, wh = height / 2;
    canvas.window(wx, wy, ww, wh, random.next());
    canvas.photo(wx + 10, wy + 30, ww / 2 - 10, wh / 2, random.next());
    canvas.noise(wx + ww / 2 + 6, wy + 30, ww / 4, wh / 5, random.next());
    // A dithered (checkered) area, as old themes draw disabled controls.
    for (int32_t r = 0; r < wh / 4; ++r)
        for (int32_t c = 0; c < ww / 3; ++c)
            picture.at(wx + ww / 2 + 6 + c, wy + wh - wh / 4 - 6 + r) =
                ((r + c) & 1) ? rgb(0xba, 0xbd, 0xb6) : rgb(0x88, 0x8a, 0x85);
    // Task bar with a clock and small icons.
    canvas.fill(0, height - 28, width, 28, rgb(0x2e, 0x34, 0x36));
    canvas.fill(0, height - 28, width, 1, rgb(0x88, 0x8a, 0x85));
    int32_t tx = 40;
    for (const Picture &icon : icons) {
        if (icon.height > 24 || tx + icon.width > width - 80) continue;
        canvas.blend(icon, tx, height - 26);
        tx += icon.width + 8;
    }
    canvas.text(width - 60, height - 20, 8, rgb(0xee, 0xee, 0xec), random.next());
    return picture;
}

}  // namespace interop
