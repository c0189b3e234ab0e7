// The statically linked library set up as a client sets it up: fresh
// settings, srn_get with the report capture, the kit's hatch table and a
// source depth.  Tests reach every slot through the kit's typed calls.
#pragma once

#include "log.h"
#include "table.h"

namespace test {

struct Library : kit::Table {
    explicit Library(int32_t bytesPerPixel = 3);
    ~Library();
};

// Makes the next `count` malloc calls of the process fail.
void failNextMallocs(int count);

}  // namespace test
