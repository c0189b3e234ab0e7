// Input scripts: one event per line, replayed once the first picture has
// settled, so that a test can make the server draw text, scroll and move
// windows.  '#' starts a comment.
//   wait MS            pause
//   move X Y           pointer motion
//   click X Y          left button down and up at X, Y
//   press X Y          left button down at X, Y (and kept down)
//   drag X1 Y1 X2 Y2   left button down at X1, Y1, motion, up at X2, Y2
//   key NAME           one key by its virtual-key name without "VK_" (RETURN, NEXT, F1 ...)
//   type TEXT          the rest of the line as US-layout key strokes
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace rdpsnap {

// One input event: a key (scan code with the extended bit as 0x100), a
// pointer event (FreeRDP's PTR_FLAGS_*) or a pause.
struct InputEvent {
    enum Kind { kKey, kPointer, kWait } kind;
    uint32_t code;   // scan code, pointer flags, or milliseconds
    bool down;       // keys
    uint16_t x, y;   // pointer
};

// Parses a script; false with `error` naming the line on a bad line.
bool parseScript(const std::string &text, std::vector<InputEvent> &events, std::string &error);

}  // namespace rdpsnap
