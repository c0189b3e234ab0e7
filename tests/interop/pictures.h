// Test pictures for the interoperability suites: icons and pictures shipped by
// Debian packages (read with libpng) and synthetic desktop-like content drawn
// on a canvas: flat areas, 1-pixel text strokes, gradients, noise.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace interop {

// Pixels are 32-bit words 0xAARRGGBB: in memory B, G, R, A, the layout the
// frame buffer uses for its colour (bits 0-23) with alpha in bits 24-31.
struct Picture {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint32_t> pixels;

    Picture() = default;
    Picture(int32_t w, int32_t h, uint32_t fill = 0xff000000);
    uint32_t &at(int32_t x, int32_t y) { return pixels[size_t(y) * size_t(width) + size_t(x)]; }
    uint32_t at(int32_t x, int32_t y) const { return pixels[size_t(y) * size_t(width) + size_t(x)]; }
    Picture crop(int32_t x, int32_t y, int32_t w, int32_t h) const;
    Picture flippedVertically() const;
    // The same picture with every alpha set to 255.
    Picture opaque() const;
    // Alpha-blended over a solid colour, opaque.
    Picture over(uint32_t background) const;
    bool hasVaryingAlpha() const;
};

// Reads a PNG file of any colour type; false with `error` set on failure.
bool loadPng(const std::string &path, Picture &out, std::string &error);

// Writes an opaque RGB PNG; false on failure.
bool savePng(const std::string &path, const Picture &picture);

// Icons of the installed icon theme, a fixed selection of every size
// (sorted, so the set is the same from run to run); empty if the theme is
// missing.
std::vector<std::string> iconPaths(int32_t size, size_t count);

// A small deterministic pseudo-random generator (LCG), so that noise is the
// same on every run and every machine.
class Random {
public:
    explicit Random(uint32_t seed) : state_(seed) {}
    uint32_t next() {
        state_ = state_ * 1664525u + 1013904223u;
        return state_ >> 8;
    }
    int32_t below(int32_t n) { return int32_t(next() % uint32_t(n)); }

private:
    uint32_t state_;
};

// Desktop-like drawing operations on a Picture.  Rectangles are clipped to
// the picture.
class Canvas {
public:
    explicit Canvas(Picture &picture) : p_(picture) {}
    void fill(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t colour);
    // Colour runs from `from` at the left (or top) edge to `to` at the other.
    void horizontalGradient(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t from, uint32_t to);
    void verticalGradient(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t from, uint32_t to);
    void noise(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t seed);
    // Photo-like content: smooth colour fields plus a little grain.
    void photo(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t seed);
    // A line of text-like glyphs drawn with 1-pixel strokes in 6 x 9 cells.
    void text(int32_t x, int32_t y, int32_t characters, uint32_t colour, uint32_t seed);
    // A window: border, title bar gradient, client area with text lines.
    void window(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t seed);
    // Alpha-blends `icon` with its top-left corner at (x, y).
    void blend(const Picture &icon, int32_t x, int32_t y);

private:
    void put(int32_t x, int32_t y, uint32_t colour);
    Picture &p_;
};

// A synthetic desktop: wallpaper gradient, windows with text, a dithered
// area, a photo, noise and the given icons.
Picture desktop(int32_t width, int32_t height, const std::vector<Picture> &icons, uint32_t seed);

}  // namespace interop
