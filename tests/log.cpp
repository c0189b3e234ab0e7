#include "log.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace kit {

namespace {
LogCapture *active = nullptr;
}

LogCapture::LogCapture() : previous_(active) { active = this; }
LogCapture::~LogCapture() { active = previous_; }

int LogCapture::callback(const char *level, const char *module, int site, const char *format, ...) {
    char text[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    std::string e = std::string(level) == "ERROR" ? "" : std::string(level) + " ";
    e += std::string(module) + " " + std::to_string(site);
    if (std::strcmp(format, UI32_INTERNAL) != 0) e += std::string(": ") + text;
    if (active != nullptr) active->trail_.push_back(e);
    return 0;
}

std::string entry(ui::Site site, const std::string &text) {
    const ui::ReportInfo &r = ui::info(site);
    return std::string(r.module) + " " + std::to_string(r.site) + (text.empty() ? "" : ": " + text);
}

Trail trail(std::initializer_list<ui::Site> sites) {
    Trail out;
    for (ui::Site s : sites) out.push_back(entry(s));
    return out;
}

std::string shortRead(ui::Line line, int offset, bool u16) {
    char text[64];
    std::snprintf(text, sizeof text, UI32_SHORT, "ui", ui::lineOf(line) + offset);
    return entry(u16 ? ui::Site::shortU16 : ui::Site::shortU8, text);
}

}  // namespace kit
