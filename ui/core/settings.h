// The process-wide settings and the one way to report.
#pragma once

#include <cstdint>

#include "reports.h"
#include "ui32.h"

namespace ui {

// Plain process-wide variables: srn_get and slots 10 and 15 write them, every
// drawing call reads them.  All start zero / empty.
struct Settings {
    UiLogFn log;
    const uint8_t *hatchPatterns;
    int32_t sourceBytesPerPixel;
    uint8_t sourceByteOrder;
    uint8_t *scratchBuffer;  // the 64 KiB glyph fragment store, or null
};
extern Settings settings;

inline constexpr int32_t kScratchBufferSize = 65536;

// One report: level "ERROR", the site's module, number and format.
template <typename... Args>
void report(Site site, Args... args) {
    const ReportInfo &r = info(site);
    if (settings.log != nullptr) settings.log("ERROR", r.module, r.site, r.format, args...);
}

// Reports and gives false, for checks that end a call.
template <typename... Args>
bool fail(Site site, Args... args) {
    report(site, args...);
    return false;
}

// An order's colour: the first component to bits 16-23, not masked.
inline uint32_t colourOf(const int32_t c[3]) {
    return (uint32_t(c[0]) << 16) | (uint32_t(c[1]) << 8) | uint32_t(c[2]);
}

}  // namespace ui
