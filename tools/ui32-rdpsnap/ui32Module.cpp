#include "ui32Module.h"

#include <dlfcn.h>

#include <cstdarg>
#include <cstdio>

#include "mapping.h"

namespace rdpsnap {

namespace {
int reports = 0;
}

int logReport(const char *level, const char *module, int site, const char *format, ...) {
    char text[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    std::fprintf(stderr, "ui32: %s %s %d: %s\n", level, module, site, text);
    ++reports;
    return 0;
}

int ui32Reports() { return reports; }

bool loadUi32(const std::string &path, int32_t sourceBytesPerPixel, UiDrawTable table, std::string &error) {
    void *handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char *why = dlerror();
        error = why != nullptr ? why : "cannot load " + path;
        return false;
    }
    using SrnGet = void (*)(UiDrawTable, UiLogFn, const UiConfig *);
    const auto get = reinterpret_cast<SrnGet>(dlsym(handle, "srn_get"));
    if (get == nullptr) {
        error = path + ": no srn_get";
        return false;
    }
    const UiConfig config{Mapper::kHatchPatterns, sourceBytesPerPixel};
    get(table, &logReport, &config);
    for (int slot = 0; slot < UI_SLOT_COUNT; ++slot)
        if (table[slot] == nullptr) {
            error = path + ": srn_get left slot " + std::to_string(slot) + " empty";
            return false;
        }
    return true;
}

}  // namespace rdpsnap
