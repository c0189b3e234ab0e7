// Captures every report of the library so that tests can assert exact report
// sequences: level, module, site, format and the formatted text.
#pragma once

#include <string>
#include <vector>

#include "imgbuf.h"  // ui32.h with the library's accessors

namespace ui32test {

struct Report {
    std::string level;
    std::string module;
    int site;
    std::string format;
    std::string text;  // format with its arguments applied
};

class LogCapture {
public:
    // The callback to hand to srn_get; appends to the active capture.
    static int callback(const char *level, const char *module, int site, const char *format, ...);

    LogCapture();   // becomes the active capture
    ~LogCapture();

    const std::vector<Report> &reports() const { return reports_; }
    // "module site" per report, e.g. {"imgbuf 99", "ui 1250"}.
    std::vector<std::string> sites() const;
    void clear() { reports_.clear(); }

private:
    std::vector<Report> reports_;
    LogCapture *previous_;
};

using Sites = std::vector<std::string>;

inline constexpr const char *kInternalError = "INTERNAL ERROR. Please, contact Nelvox tech support.";

}  // namespace ui32test
