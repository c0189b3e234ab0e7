#include "script.h"

#include <freerdp/input.h>
#include <winpr/input.h>

#include <cstring>
#include <sstream>

namespace rdpsnap {

namespace {

// Printable ASCII on a US keyboard: the unshifted and shifted character of
// each key, and the key's virtual-key code.
struct KeyCap {
    char plain, shifted;
    uint32_t vk;
};
const KeyCap kKeyCaps[] = {
    {'`', '~', VK_OEM_3},      {'1', '!', '1'},           {'2', '@', '2'},           {'3', '#', '3'},
    {'4', '$', '4'},           {'5', '%', '5'},           {'6', '^', '6'},           {'7', '&', '7'},
    {'8', '*', '8'},           {'9', '(', '9'},           {'0', ')', '0'},           {'-', '_', VK_OEM_MINUS},
    {'=', '+', VK_OEM_PLUS},   {'[', '{', VK_OEM_4},      {']', '}', VK_OEM_6},      {'\\', '|', VK_OEM_5},
    {';', ':', VK_OEM_1},      {'\'', '"', VK_OEM_7},     {',', '<', VK_OEM_COMMA},  {'.', '>', VK_OEM_PERIOD},
    {'/', '?', VK_OEM_2},      {' ', ' ', VK_SPACE},
};

uint32_t scanCode(uint32_t vk) { return GetVirtualScanCodeFromVirtualKeyCode(vk, 4); }

void stroke(std::vector<InputEvent> &events, uint32_t vk, bool shift) {
    const uint32_t key = scanCode(vk), shiftKey = scanCode(VK_LSHIFT);
    if (shift) events.push_back({InputEvent::kKey, shiftKey, true, 0, 0});
    events.push_back({InputEvent::kKey, key, true, 0, 0});
    events.push_back({InputEvent::kKey, key, false, 0, 0});
    if (shift) events.push_back({InputEvent::kKey, shiftKey, false, 0, 0});
}

bool typeText(const std::string &text, std::vector<InputEvent> &events) {
    for (char c : text) {
        if (c >= 'a' && c <= 'z') stroke(events, uint32_t(c - 'a' + 'A'), false);
        else if (c >= 'A' && c <= 'Z') stroke(events, uint32_t(c), true);
        else {
            const KeyCap *cap = nullptr;
            for (const KeyCap &k : kKeyCaps)
                if (k.plain == c || k.shifted == c) cap = &k;
            if (cap == nullptr) return false;
            stroke(events, cap->vk, cap->plain != c);
        }
    }
    return true;
}

void pointer(std::vector<InputEvent> &events, uint32_t flags, int x, int y) {
    events.push_back({InputEvent::kPointer, flags, false, uint16_t(x), uint16_t(y)});
}

}  // namespace

bool parseScript(const std::string &text, std::vector<InputEvent> &events, std::string &error) {
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        line = line.substr(0, line.find('#'));
        std::istringstream words(line);
        std::string verb;
        if (!(words >> verb)) continue;
        int a = -1, b = -1, c = -1, d = -1;
        bool ok = true;
        if (verb == "wait" && (ok = bool(words >> a) && a >= 0)) {
            events.push_back({InputEvent::kWait, uint32_t(a), false, 0, 0});
        } else if ((verb == "move" || verb == "click" || verb == "press") &&
                   (ok = bool(words >> a >> b) && a >= 0 && b >= 0)) {
            pointer(events, PTR_FLAGS_MOVE, a, b);
            if (verb != "move") pointer(events, PTR_FLAGS_BUTTON1 | PTR_FLAGS_DOWN, a, b);
            if (verb == "click") pointer(events, PTR_FLAGS_BUTTON1, a, b);
        } else if (verb == "drag" && (ok = bool(words >> a >> b >> c >> d) && a >= 0 && b >= 0 && c >= 0 && d >= 0)) {
            pointer(events, PTR_FLAGS_MOVE, a, b);
            pointer(events, PTR_FLAGS_BUTTON1 | PTR_FLAGS_DOWN, a, b);
            for (int step = 1; step <= 4; ++step)
                pointer(events, PTR_FLAGS_MOVE, a + (c - a) * step / 4, b + (d - b) * step / 4);
            pointer(events, PTR_FLAGS_BUTTON1, c, d);
        } else if (verb == "key") {
            std::string name;
            const uint32_t vk = (words >> name) ? GetVirtualKeyCodeFromName(("VK_" + name).c_str()) : 0;
            if ((ok = vk != 0)) stroke(events, vk, false);
        } else if (verb == "type") {
            std::string rest;
            std::getline(words, rest);
            ok = rest.size() > 1 && typeText(rest.substr(1), events);
        } else {
            ok = false;
        }
        if (!ok) {
            error = "script line " + std::to_string(number) + ": cannot read \"" + line + "\"";
            return false;
        }
    }
    return true;
}

}  // namespace rdpsnap
