// A self-contained PNG writer: 8-bit RGB, per-row filter choice and a
// deflate stream with fixed Huffman codes and greedy LZ77 matching.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace demo {

// zlib-wrapped deflate of `data` (one fixed-code block).
std::vector<uint8_t> zlibCompress(const std::vector<uint8_t> &data);

// PNG file bytes of a width x height picture whose pixels are 0xRRGGBB words
// (bits 24-31 ignored), rows top to bottom, `stride` words apart.
std::vector<uint8_t> encodePng(const uint32_t *pixels, int width, int height, int stride);

// Writes encodePng to `path`; false (with errno set) when the file cannot be written.
bool writePng(const std::string &path, const uint32_t *pixels, int width, int height, int stride);

}  // namespace demo
