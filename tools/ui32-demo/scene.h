// The desktop the demo draws, frame by frame, through the drawing table.
#pragma once

#include <string>
#include <vector>

#include "plugin.h"

namespace demo {

struct SceneReport {
    std::vector<std::string> frames;    // one line per frame
    std::vector<std::string> checks;    // one line per round-trip check
    std::vector<std::string> notes;     // encoder statistics
    int failedChecks = 0;
    std::vector<uint8_t> lastFrameTiles;  // the tile map after the last frame
};

// Draws the whole scene into `screen`: wallpaper, desktop, windows, then a
// frame of activity whose dirty tiles stay in the report.
SceneReport drawDesktop(Plugin &plugin, Screen &screen);

}  // namespace demo
