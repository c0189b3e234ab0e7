// The desktop the demo draws, frame by frame, through the drawing table.
#pragma once

#include <string>
#include <vector>

#include "frame.h"
#include "table.h"

namespace demo {

struct SceneReport {
    std::vector<std::string> frames;  // one line per frame
    std::vector<std::string> checks;  // one line per round-trip check
    std::vector<std::string> notes;   // what the encoders made
    int failedChecks = 0;
    std::vector<int> lastFrameTiles;  // the tiles marked by the last frame
};

// Draws the whole scene into `frame`: wallpaper, desktop, windows, then a
// frame of activity whose marked tiles stay in the report.
SceneReport drawDesktop(const kit::Table &table, kit::Frame &frame);

}  // namespace demo
