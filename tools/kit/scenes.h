// Pictures from files and desktop-like scenes: PNG reading and writing
// (libpng), the installed icon theme's icons, and a synthetic desktop with
// windows, text, gradients, a photo, noise and icons.  Host builds with the
// peers only.  Pixels 0xAARRGGBB; the encoders use the colour bits.
#pragma once

#include <string>
#include <vector>

#include "picture.h"

namespace kit {

bool loadPng(const std::string &path, Picture &out, std::string &error);
bool savePng(const std::string &path, const Picture &picture);  // opaque RGB
// Rows of width 0x00RRGGBB words, `stride` words apart, as an RGB PNG.
bool savePng(const std::string &path, const uint32_t *pixels, int32_t width, int32_t height, size_t stride,
             std::string &error);

// `count` icons of the installed theme of the given size, a fixed selection
// spread over the sorted list; empty if the theme is missing.
std::vector<Picture> themeIcons(int32_t size, size_t count);

// The picture alpha-blended over a solid colour.
Picture over(const Picture &picture, uint32_t background);

// A desktop of the given size: gradient wallpaper, icons down the left edge,
// two overlapping windows with title bars and text, a photo, noise, a
// checkered control, a task bar.  The same picture for the same seed.
Picture desktop(int32_t width, int32_t height, const std::vector<Picture> &icons, uint32_t seed);

// Desktop-like drawing on a picture, clipped to it.
class Canvas {
public:
    explicit Canvas(Picture &p) : p_(p) {}
    void fill(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t colour);
    void gradient(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t from, uint32_t to, bool vertical);
    void noise(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t seed);
    void photo(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t seed);
    void text(int32_t x, int32_t y, int32_t characters, uint32_t colour, uint32_t seed);
    void window(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t seed);
    void blend(const Picture &icon, int32_t x, int32_t y);

private:
    void put(int32_t x, int32_t y, uint32_t colour);
    Picture &p_;
};

}  // namespace kit
