// Process-wide settings and reporting, shared by every module of the library.
#pragma once

#include "imgbuf.h"  // ui32.h with the library's accessors attached

namespace ui {

// The settings are plain process-wide variables: srn_get and slots 10 and 15
// write them, every drawing call reads them.  All start zero / empty.
struct Settings {
    UiLogFn log;
    const uint8_t *hatchPatterns;
    int32_t sourceBytesPerPixel;
    uint8_t sourceByteOrder;
    uint8_t *scratchBuffer;  // the 64 KiB glyph fragment store, or null
};
extern Settings settings;

inline constexpr int kScratchBufferSize = 65536;
inline constexpr const char *kInternalError = "INTERNAL ERROR. Please, contact Nelvox tech support.";
inline constexpr const char *kShortStream = "Not enough data in stream in %s line %d.";

// One report: level "ERROR", the module, the site and a format with arguments.
template <typename... Args>
inline void report(const char *module, int site, const char *format, Args... args) {
    if (settings.log != nullptr) settings.log("ERROR", module, site, format, args...);
}

// The consistency-failure report used by almost every check.
inline void reportInternal(const char *module, int site) { report(module, site, kInternalError); }

// Builds a pixel word from an order's three colour components (first to bits 16-23).
inline uint32_t colourOf(int32_t first, int32_t second, int32_t third) {
    return (uint32_t(first) << 16) | (uint32_t(second) << 8) | uint32_t(third);
}

}  // namespace ui
