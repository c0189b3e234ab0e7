#include "log_capture.h"

#include <cstdarg>
#include <cstdio>

namespace ui32test {

namespace {
LogCapture *active = nullptr;
}

LogCapture::LogCapture() : previous_(active) { active = this; }
LogCapture::~LogCapture() { active = previous_; }

int LogCapture::callback(const char *level, const char *module, int site, const char *format, ...) {
    char text[1024];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    if (active != nullptr) active->reports_.push_back(Report{level, module, site, format, text});
    return 0;
}

std::vector<std::string> LogCapture::sites() const {
    std::vector<std::string> out;
    for (const Report &r : reports_) out.push_back(r.module + " " + std::to_string(r.site));
    return out;
}

}  // namespace ui32test
