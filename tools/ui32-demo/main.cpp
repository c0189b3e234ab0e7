// ui32-demo: loads ui32.so, draws a 1024 x 768 desktop through all 25 slots
// of its drawing table and writes demo.png and demo-tiles.png (the same
// picture with the tiles marked by the last frame outlined).  Without
// libpng at build time it draws and checks everything but writes no file.
//
//   ui32-demo [--plugin PATH] [--out DIR]
//
// Exit status 0 when every slot was used, no report arrived, no call said
// failure, every round-trip check matched and nothing outside the frame
// buffer and its tile map was written.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

#include "pictures.h"
#include "plugin.h"
#include "scene.h"
#ifdef UI32_DEMO_PNG
#include "scenes.h"
#endif

#ifndef UI32_DEMO_PLUGIN
#define UI32_DEMO_PLUGIN "ui32.so"
#endif

namespace {

constexpr int kWidth = 1024;
constexpr int kHeight = 768;

#ifdef UI32_DEMO_PNG
// The picture with a two-pixel red outline around each of the given tiles.
kit::Picture outlineTiles(kit::Picture p, const std::vector<int> &tiles) {
    const int columns = (p.width + 31) / 32;
    const uint32_t red = demo::rgb(255, 32, 32);
    for (const int t : tiles) {
        const int x0 = t % columns * 32, y0 = t / columns * 32;
        for (int y = y0; y < y0 + 32 && y < p.height; ++y)
            for (int x = x0; x < x0 + 32 && x < p.width; ++x) {
                const bool edge = x - x0 < 2 || y - y0 < 2 || x0 + 31 - x < 2 || y0 + 31 - y < 2;
                p.at(x, y) = edge ? red : demo::mix(p.at(x, y) & 0xFFFFFF, red, 0.18);
            }
    }
    return p;
}
#endif

}  // namespace

int main(int argc, char **argv) {
    std::string pluginPath = UI32_DEMO_PLUGIN;
    std::string outDir = ".";
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--plugin") == 0 && i + 1 < argc) pluginPath = argv[++i];
        else if (std::strcmp(argv[i], "--out") == 0 && i + 1 < argc) outDir = argv[++i];
        else return std::fprintf(stderr, "usage: ui32-demo [--plugin PATH] [--out DIR]\n"), 2;
    }

    kit::Table table;
    std::string error;
    if (!demo::loadCounted(pluginPath, UiConfig{kit::kHatchPatterns, 3}, table, error)) {
        std::fprintf(stderr, "ui32-demo: cannot load %s: %s\n", pluginPath.c_str(), error.c_str());
        return 1;
    }
    std::printf("ui32-demo: %dx%d desktop drawn by %s\n", kWidth, kHeight, pluginPath.c_str());

    kit::Frame frame(kWidth, kHeight);
    const demo::SceneReport report = demo::drawDesktop(table, frame);

    for (const std::string &text : report.frames) std::printf("%s\n", text.c_str());
    for (const std::string &text : report.notes) std::printf("%s\n", text.c_str());
    int unused = 0;
    long calls = 0, failed = 0;
    for (int slot = 0; slot < UI_SLOT_COUNT; ++slot) {
        const demo::SlotStats &s = demo::slotStats(slot);
        calls += s.calls;
        failed += s.failed;
        if (s.calls == 0) {
            ++unused;
            std::printf("slot %2d %-23s not used\n", slot, demo::slotName(slot));
        } else {
            std::printf("slot %2d %-23s %5ld calls %4ld reports %5ld marking tiles %4ld failed\n", slot,
                        demo::slotName(slot), s.calls, s.reports, s.marked, s.failed);
        }
    }
    for (const std::string &text : report.checks) std::printf("%s\n", text.c_str());

    std::string written = "wrote no picture (built without libpng)";
#ifdef UI32_DEMO_PNG
    kit::Picture shot(kWidth, kHeight);
    shot.pixels = frame.pixels();
    const std::string picture = outDir + "/demo.png", tiles = outDir + "/demo-tiles.png";
    std::error_code ec;
    std::filesystem::create_directories(outDir, ec);
    if (!kit::savePng(picture, shot) || !kit::savePng(tiles, outlineTiles(shot, report.lastFrameTiles))) {
        std::fprintf(stderr, "ui32-demo: cannot write %s or %s\n", picture.c_str(), tiles.c_str());
        return 1;
    }
    written = "wrote " + picture + " and " + tiles;
#endif
    std::printf("ui32-demo: %d of %d slots used, %ld calls, %ld reports, %ld failed results, %d of %zu checks failed; "
                "%s\n",
                UI_SLOT_COUNT - unused, UI_SLOT_COUNT, calls, demo::totalReports(), failed, report.failedChecks,
                report.checks.size(), written.c_str());
    return unused == 0 && demo::totalReports() == 0 && failed == 0 && report.failedChecks == 0 ? 0 : 1;
}
