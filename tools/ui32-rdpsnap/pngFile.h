// Writes a frame buffer of 0x00RRGGBB words as an RGB PNG file (libpng).
#pragma once

#include <cstdint>
#include <string>

namespace rdpsnap {

bool writePng(const std::string &path, const uint32_t *pixels, int32_t width, int32_t height, std::string &error);

}  // namespace rdpsnap
