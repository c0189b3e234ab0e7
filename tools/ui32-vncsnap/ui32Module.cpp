#include "ui32Module.h"

#include <dlfcn.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace vncsnap {

namespace {

std::atomic<int> reports{0};

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

// RFB bitmaps never use the hatch patterns; the table still wants six.
const uint8_t kNoHatches[48] = {};

}  // namespace

// The library has no shutdown step and keeps its fragment store for the life
// of the process, so the module is never unloaded.
Ui32Module::~Ui32Module() = default;

bool Ui32Module::load(const std::string &path, std::string &error) {
    handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char *why = dlerror();
        error = why != nullptr ? why : "cannot load " + path;
        return false;
    }
    using SrnGet = void (*)(UiDrawTable, UiLogFn, const UiConfig *);
    const auto get = reinterpret_cast<SrnGet>(dlsym(handle_, "srn_get"));
    if (get == nullptr) {
        error = path + ": no srn_get";
        return false;
    }
    // 4 bytes per pixel: the depth of the RFB pixel format this client asks for.
    const UiConfig config{kNoHatches, 4};
    get(table_, &logReport, &config);
    for (void *slot : table_)
        if (slot == nullptr) {
            error = path + ": srn_get left a slot of the drawing table empty";
            return false;
        }
    return true;
}

int Ui32Module::reportCount() { return reports.load(); }

}  // namespace vncsnap
