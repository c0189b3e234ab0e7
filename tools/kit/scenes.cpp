#include "scenes.h"

#include <png.h>

#include <algorithm>
#include <filesystem>

namespace kit {

namespace {

// A small linear congruential generator: the same noise on every machine.
struct Random {
    uint32_t state;
    uint32_t next() { return (state = state * 1664525u + 1013904223u) >> 8; }
    int32_t below(int32_t n) { return int32_t(next() % uint32_t(n)); }
};

uint32_t channel(uint32_t c, int shift) { return (c >> shift) & 0xff; }

uint32_t rgb(uint32_t r, uint32_t g, uint32_t b) { return 0xff000000u | r << 16 | g << 8 | b; }

// Colour i of n from a to b, per channel in integers.
uint32_t mix(uint32_t a, uint32_t b, int32_t i, int32_t n) {
    uint32_t out = 0xff000000u;
    for (int s = 0; s < 24; s += 8)
        out |= uint32_t(int32_t(channel(a, s)) + (int32_t(channel(b, s)) - int32_t(channel(a, s))) * i / std::max(n - 1, 1))
               << s;
    return out;
}

uint32_t blendOver(uint32_t top, uint32_t below) {
    const uint32_t alpha = top >> 24;
    uint32_t out = 0xff000000u;
    for (int s = 0; s < 24; s += 8) out |= (channel(top, s) * alpha + channel(below, s) * (255 - alpha) + 127) / 255 << s;
    return out;
}

}  // namespace

bool loadPng(const std::string &path, Picture &out, std::string &error) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str())) {
        image.format = PNG_FORMAT_BGRA;  // bytes B, G, R, A: the word 0xAARRGGBB
        out = Picture(int32_t(image.width), int32_t(image.height));
        if (png_image_finish_read(&image, nullptr, out.pixels.data(), 0, nullptr)) return true;
    }
    error = path + ": " + image.message;
    png_image_free(&image);
    return false;
}

bool savePng(const std::string &path, const uint32_t *pixels, int32_t width, int32_t height, size_t stride,
             std::string &error) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = uint32_t(width);
    image.height = uint32_t(height);
    image.format = PNG_FORMAT_BGR;
    std::vector<uint8_t> bgr;
    for (int32_t y = 0; y < height; ++y)
        for (const uint32_t *p = pixels + size_t(y) * stride, *end = p + width; p != end; ++p)
            bgr.insert(bgr.end(), {uint8_t(*p), uint8_t(*p >> 8), uint8_t(*p >> 16)});
    if (png_image_write_to_file(&image, path.c_str(), 0, bgr.data(), 0, nullptr)) return true;
    return error = path + ": " + image.message, false;
}

bool savePng(const std::string &path, const Picture &picture) {
    std::string error;
    return savePng(path, picture.pixels.data(), picture.width, picture.height, size_t(picture.width), error);
}

std::vector<Picture> themeIcons(int32_t size, size_t count) {
    namespace fs = std::filesystem;
    const fs::path root = fs::path("/usr/share/icons/Adwaita") / (std::to_string(size) + "x" + std::to_string(size));
    std::vector<std::string> all;
    std::error_code ec;
    for (fs::recursive_directory_iterator it(root, ec), end; !ec && it != end; it.increment(ec))
        if (it->is_regular_file() && it->path().extension() == ".png") all.push_back(it->path().string());
    std::sort(all.begin(), all.end());
    std::vector<Picture> icons;
    std::string error;
    for (size_t i = 0; i < all.size() && icons.size() < count; i += std::max<size_t>(1, all.size() / count))
        if (Picture p; loadPng(all[i], p, error)) icons.push_back(p);
    return icons;
}

Picture over(const Picture &picture, uint32_t background) {
    Picture out = picture;
    for (uint32_t &p : out.pixels) p = blendOver(p, background);
    return out;
}

void Canvas::put(int32_t x, int32_t y, uint32_t colour) {
    if (x >= 0 && y >= 0 && x < p_.width && y < p_.height) p_.at(x, y) = colour;
}

void Canvas::fill(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t colour) {
    for (int32_t r = y; r < y + h; ++r)
        for (int32_t c = x; c < x + w; ++c) put(c, r, colour);
}

void Canvas::gradient(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t from, uint32_t to, bool vertical) {
    for (int32_t i = 0; i < (vertical ? h : w); ++i)
        vertical ? fill(x, y + i, w, 1, mix(from, to, i, h)) : fill(x + i, y, 1, h, mix(from, to, i, w));
}

void Canvas::noise(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t seed) {
    Random random{seed};
    for (int32_t r = y; r < y + h; ++r)
        for (int32_t c = x; c < x + w; ++c) put(c, r, 0xff000000u | (random.next() & 0xffffff));
}

// Bilinear interpolation of a coarse grid of random colours, plus grain.
void Canvas::photo(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t seed) {
    constexpr int32_t kCell = 24;
    const int32_t gw = w / kCell + 2, gh = h / kCell + 2;
    Random random{seed};
    std::vector<uint32_t> grid(size_t(gw) * size_t(gh));
    for (uint32_t &g : grid) g = random.next();
    for (int32_t r = 0; r < h; ++r)
        for (int32_t c = 0; c < w; ++c) {
            const int32_t gx = c / kCell, gy = r / kCell, fx = c % kCell, fy = r % kCell;
            uint32_t out = 0xff000000u;
            for (int s = 0; s < 24; s += 8) {
                const auto at = [&](int32_t i, int32_t j) { return int32_t(channel(grid[size_t(j * gw + i)], s)); };
                const int32_t top = at(gx, gy) * (kCell - fx) + at(gx + 1, gy) * fx;
                const int32_t bottom = at(gx, gy + 1) * (kCell - fx) + at(gx + 1, gy + 1) * fx;
                const int32_t v = (top * (kCell - fy) + bottom * fy) / (kCell * kCell) + random.below(7) - 3;
                out |= uint32_t(std::clamp(v, 0, 255)) << s;
            }
            put(x + c, y + r, out);
        }
}

// Glyph-like strokes in 6 x 9 cells: some of the seven strokes of a 5 x 7 box.
void Canvas::text(int32_t x, int32_t y, int32_t characters, uint32_t colour, uint32_t seed) {
    Random random{seed};
    for (int32_t i = 0; i < characters; ++i) {
        const int32_t gx = x + 6 * i, gy = y + 1;
        const uint32_t s = random.next() | 0x09;
        if (random.below(6) == 0) continue;  // a space
        if (s & 0x01) fill(gx, gy, 5, 1, colour);
        if (s & 0x02) fill(gx, gy + 3, 5, 1, colour);
        if (s & 0x04) fill(gx, gy + 6, 5, 1, colour);
        if (s & 0x08) fill(gx, gy, 1, 4, colour);
        if (s & 0x10) fill(gx, gy + 3, 1, 4, colour);
        if (s & 0x20) fill(gx + 4, gy, 1, 4, colour);
        if (s & 0x40) fill(gx + 4, gy + 3, 1, 4, colour);
    }
}

void Canvas::window(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t seed) {
    Random random{seed};
    fill(x, y, w, h, rgb(0x55, 0x57, 0x53));
    gradient(x + 1, y + 1, w - 2, 20, rgb(0x20, 0x4a, 0x87), rgb(0x72, 0x9f, 0xcf), false);
    text(x + 6, y + 6, std::max(1, (w - 60) / 12), rgb(255, 255, 255), random.next());
    fill(x + w - 18, y + 5, 12, 12, rgb(0xcc, 0x00, 0x00));
    fill(x + 1, y + 21, w - 2, h - 22, rgb(0xf6, 0xf5, 0xf4));
    for (int32_t line = y + 28; line + 9 < y + h - 4; line += 12)
        text(x + 8, line, std::max(1, (w - 16) / 6 - random.below(8)), rgb(0x2e, 0x34, 0x36), random.next());
}

void Canvas::blend(const Picture &icon, int32_t x, int32_t y) {
    for (int32_t r = 0; r < icon.height; ++r)
        for (int32_t c = 0; c < icon.width; ++c)
            if (x + c >= 0 && y + r >= 0 && x + c < p_.width && y + r < p_.height)
                p_.at(x + c, y + r) = blendOver(icon.at(c, r), p_.at(x + c, y + r));
}

Picture desktop(int32_t width, int32_t height, const std::vector<Picture> &icons, uint32_t seed) {
    Picture p(width, height);
    Canvas canvas(p);
    Random random{seed};
    canvas.gradient(0, 0, width, height, rgb(0x1c, 0x40, 0x6b), rgb(0x6c, 0x9a, 0xc8), true);
    canvas.window(width / 8, height / 12, width / 2, height / 2, random.next());
    const int32_t wx = width * 3 / 8, wy = height * 3 / 10, ww = width / 2, wh = height / 2;
    canvas.window(wx, wy, ww, wh, random.next());
    canvas.photo(wx + 10, wy + 30, ww / 2 - 10, wh / 2, random.next());
    canvas.noise(wx + ww / 2 + 6, wy + 30, ww / 4, wh / 5, random.next());
    for (int32_t r = 0; r < wh / 4; ++r)  // a dithered control
        for (int32_t c = 0; c < ww / 3; ++c)
            p.at(wx + ww / 2 + 6 + c, wy + wh - wh / 4 - 6 + r) = ((r + c) & 1) ? rgb(0xba, 0xbd, 0xb6) : rgb(0x88, 0x8a, 0x85);
    canvas.fill(0, height - 28, width, 28, rgb(0x2e, 0x34, 0x36));  // the task bar
    int32_t iy = 8, tx = 40;
    for (const Picture &icon : icons) {
        if (icon.width <= 64 && iy + icon.height <= height - 40) canvas.blend(icon, 8, iy), iy += icon.height + 12;
        if (icon.height <= 24 && tx + icon.width <= width - 80) canvas.blend(icon, tx, height - 26), tx += icon.width + 8;
    }
    canvas.text(width - 60, height - 20, 8, rgb(0xee, 0xee, 0xec), random.next());
    return p;
}

}  // namespace kit
