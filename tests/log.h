// Captures the library's reports so that a test can assert exact trails, and
// spells expected trails with the names of the report registry.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "core/reports.h"

namespace kit {

// One entry per report: "module site" for the internal-error message,
// "module site: text" for any other message.
using Trail = std::vector<std::string>;

class LogCapture {
public:
    static int callback(const char *level, const char *module, int site, const char *format, ...);
    LogCapture();  // becomes the active capture until destroyed
    ~LogCapture();
    const Trail &trail() const { return trail_; }
    void clear() { trail_.clear(); }

private:
    Trail trail_;
    LogCapture *previous_;
};

// The entry of a site; `text` for messages with arguments.
std::string entry(ui::Site site, const std::string &text = "");
Trail trail(std::initializer_list<ui::Site> sites);
// The stream reader's shortage report naming a caller line (64, or 65 for
// readU16).
std::string shortRead(ui::Line line, int offset = 0, bool u16 = false);

}  // namespace kit
