#include "table.h"

#include <dlfcn.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace kit {

const uint8_t kHatchPatterns[48] = {
    0x00, 0x00, 0x00, 0xff, 0x00, 0x00, 0x00, 0x00,  // horizontal
    0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08,  // vertical
    0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01,  // forward diagonal
    0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80,  // backward diagonal
    0x08, 0x08, 0x08, 0xff, 0x08, 0x08, 0x08, 0x08,  // cross
    0x81, 0x42, 0x24, 0x18, 0x18, 0x24, 0x42, 0x81,  // diagonal cross
};

SrnGet openModule(const std::string &path, std::string &error) {
    void *module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) return error = dlerror(), nullptr;
    auto get = reinterpret_cast<SrnGet>(dlsym(module, "srn_get"));
    if (get == nullptr) error = path + " has no srn_get";
    return get;
}

namespace {
std::atomic<int> printed{0};
}

int printReport(const char *level, const char *module, int site, const char *format, ...) {
    char text[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    std::fprintf(stderr, "ui32: %s %s %d: %s\n", level, module, site, text);
    return ++printed, 0;
}

int printedReports() { return printed.load(); }

bool Table::load(const std::string &path, UiLogFn log, const UiConfig &config, std::string &error) {
    const SrnGet srnGet = openModule(path, error);
    if (srnGet == nullptr) return false;
    get(srnGet, log, &config);
    for (int i = 0; i < UI_SLOT_COUNT; ++i)
        if (slots[i] == nullptr) return error = path + ": srn_get left slot " + std::to_string(i) + " empty", false;
    return true;
}

int32_t Table::zrleTile(int32_t subencoding, UiTileStream &t) const {
    if (subencoding == 0) return slot<UiZrleRawTileFn>(UI_SLOT_ZRLE_RAW_TILE)(&t);
    if (subencoding == 1) return slot<UiZrleSolidTileFn>(UI_SLOT_ZRLE_SOLID_TILE)(&t);
    if (subencoding == 128) return slot<UiZrlePlainRleTileFn>(UI_SLOT_ZRLE_PLAIN_RLE_TILE)(&t);
    if (subencoding > 128) return slot<UiZrlePaletteRleTileFn>(UI_SLOT_ZRLE_PALETTE_RLE_TILE)(&t, subencoding);
    return slot<UiZrlePackedPaletteTileFn>(UI_SLOT_ZRLE_PACKED_PALETTE_TILE)(&t, subencoding);
}

}  // namespace kit
