// The demo's client side of ui32: the module's drawing table (kit::Table)
// with every slot routed through a counter, so that the scene calls the
// table as any client does while the demo counts, per slot, the calls, the
// reports that arrive during them, the calls that marked tiles and the calls
// whose result said failure.
#pragma once

#include <string>

#include "table.h"

namespace demo {

struct SlotStats {
    long calls = 0, reports = 0;
    long marked = 0;  // calls after which the tile map's `changed` flag was set
    long failed = 0;  // calls whose result was not 1 (or true)
};

// Loads the module by path and fills `table` with its slots, each behind a
// counter; false with `error` set otherwise.
bool loadCounted(const std::string &path, const UiConfig &config, kit::Table &table, std::string &error);

const char *slotName(int slot);
const SlotStats &slotStats(int slot);
long totalCalls();
long totalReports();  // including those outside any call (during srn_get)

}  // namespace demo
