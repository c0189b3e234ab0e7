// Loads ui32.so by path as a thin client does: dlopen, srn_get with a log
// callback and a configuration, then only the drawing table.  Load it once
// per process: every srn_get with a configuration reserves a new fragment
// store, and the module stays loaded until the process ends.
#pragma once

#include <string>

#include "ui32.h"

namespace vncsnap {

class Ui32Module {
public:
    Ui32Module() = default;
    ~Ui32Module();
    Ui32Module(const Ui32Module &) = delete;
    Ui32Module &operator=(const Ui32Module &) = delete;

    // Loads the module and fills the table; false with `error` set on failure.
    // Reports of the library go to stderr and are counted.
    bool load(const std::string &path, std::string &error);

    const UiDrawTable &table() const { return table_; }

    // Reports the library has made since the process started.
    static int reportCount();

private:
    void *handle_ = nullptr;
    UiDrawTable table_{};
};

}  // namespace vncsnap
