#include "pngFile.h"

#include <png.h>

#include <vector>

namespace rdpsnap {

bool writePng(const std::string &path, const uint32_t *pixels, int32_t width, int32_t height, std::string &error) {
    std::vector<uint8_t> rgb(size_t(width) * size_t(height) * 3);
    for (size_t i = 0; i < size_t(width) * size_t(height); ++i) {
        rgb[3 * i] = uint8_t(pixels[i] >> 16);
        rgb[3 * i + 1] = uint8_t(pixels[i] >> 8);
        rgb[3 * i + 2] = uint8_t(pixels[i]);
    }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = uint32_t(width);
    image.height = uint32_t(height);
    image.format = PNG_FORMAT_RGB;
    if (!png_image_write_to_file(&image, path.c_str(), 0, rgb.data(), 0, nullptr)) {
        error = path + ": " + image.message;
        return false;
    }
    return true;
}

}  // namespace rdpsnap
