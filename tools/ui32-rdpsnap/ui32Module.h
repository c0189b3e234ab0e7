// Loads ui32.so by path as a thin client does: dlopen, one srn_get with the
// log callback and the configuration (hatch patterns and the source depth),
// then only the drawing table.  The module stays loaded for the process.
#pragma once

#include <string>

#include "ui32.h"

namespace rdpsnap {

// Fills `table`; false with `error` set when the module cannot be used.
// sourceBytesPerPixel is 3 for a 24-bit session (interleaved bitmaps), 4 for
// a 32-bit one (planar).  Reports go to stderr and are counted.
bool loadUi32(const std::string &path, int32_t sourceBytesPerPixel, UiDrawTable table, std::string &error);

// Reports the library has made since the process started.
int ui32Reports();

// The log callback handed to srn_get.
int logReport(const char *level, const char *module, int site, const char *format, ...);

}  // namespace rdpsnap
