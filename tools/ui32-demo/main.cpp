// ui32-demo: loads ui32.so, draws a 1024 x 768 desktop through all 25 slots
// of its drawing table and writes demo.png and demo-tiles.png (the same
// picture with the tiles changed by the last frame outlined).
//
//   ui32-demo [--plugin PATH] [--out DIR]
//
// Exit status 0 when every slot was used, no report arrived and every
// round-trip check matched.
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "pictures.h"
#include "plugin.h"
#include "png.h"
#include "scene.h"

#ifndef UI32_DEMO_PLUGIN
#define UI32_DEMO_PLUGIN "ui32.so"
#endif

namespace {

constexpr int kWidth = 1024;
constexpr int kHeight = 768;

void usage() { std::fprintf(stderr, "usage: ui32-demo [--plugin PATH] [--out DIR]\n"); }

// The frame with a two-pixel red outline around every tile marked in `tiles`.
std::vector<uint32_t> outlineTiles(const demo::Screen &screen, const std::vector<uint8_t> &tiles) {
    std::vector<uint32_t> out(screen.pixels);
    const int columns = (screen.width + 31) / 32;
    const uint32_t red = demo::rgb(255, 32, 32);
    for (size_t t = 0; t < tiles.size(); ++t) {
        if (!tiles[t]) continue;
        const int x0 = int(t % size_t(columns)) * 32, y0 = int(t / size_t(columns)) * 32;
        for (int y = y0; y < y0 + 32 && y < screen.height; ++y)
            for (int x = x0; x < x0 + 32 && x < screen.width; ++x) {
                const bool edge = x - x0 < 2 || y - y0 < 2 || x0 + 31 - x < 2 || y0 + 31 - y < 2;
                uint32_t &px = out[size_t(y) * size_t(screen.width) + size_t(x)];
                px = edge ? red : demo::mix(px & 0xFFFFFF, red, 0.18);
            }
    }
    return out;
}

}  // namespace

int main(int argc, char **argv) {
    std::string pluginPath = UI32_DEMO_PLUGIN;
    std::string outDir = ".";
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--plugin") == 0 && i + 1 < argc) pluginPath = argv[++i];
        else if (std::strcmp(argv[i], "--out") == 0 && i + 1 < argc) outDir = argv[++i];
        else {
            usage();
            return 2;
        }
    }

    demo::Plugin plugin;
    std::string error;
    const UiConfig config{demo::kHatchPatterns.data(), 3};
    if (!plugin.load(pluginPath, config, error)) {
        std::fprintf(stderr, "ui32-demo: cannot load %s: %s\n", pluginPath.c_str(), error.c_str());
        return 1;
    }
    std::printf("ui32-demo: %dx%d desktop drawn by %s\n", kWidth, kHeight, pluginPath.c_str());

    demo::Screen screen(kWidth, kHeight);
    const demo::SceneReport report = demo::drawDesktop(plugin, screen);

    for (const std::string &line : report.frames) std::printf("%s\n", line.c_str());
    for (const std::string &line : report.notes) std::printf("%s\n", line.c_str());
    int unused = 0;
    long calls = 0;
    for (int slot = 0; slot < UI_SLOT_COUNT; ++slot) {
        const demo::SlotStats &s = plugin.stats(slot);
        calls += s.calls;
        if (s.calls == 0) {
            ++unused;
            std::printf("slot %2d %-23s not used\n", slot, demo::slotName(slot));
            continue;
        }
        std::printf("slot %2d %-23s %5ld calls %4ld reports %5ld marking tiles %4ld failed\n", slot,
                    demo::slotName(slot), s.calls, s.reports, s.marked, s.failed);
    }
    for (const std::string &line : report.checks) std::printf("%s\n", line.c_str());

    if (mkdir(outDir.c_str(), 0777) != 0 && errno != EEXIST) {
        std::fprintf(stderr, "ui32-demo: cannot create %s\n", outDir.c_str());
        return 1;
    }
    const std::string picture = outDir + "/demo.png";
    const std::string tiles = outDir + "/demo-tiles.png";
    bool written = demo::writePng(picture, screen.pixels.data(), kWidth, kHeight, kWidth);
    const std::vector<uint32_t> outlined = outlineTiles(screen, report.lastFrameTiles);
    written = demo::writePng(tiles, outlined.data(), kWidth, kHeight, kWidth) && written;
    if (!written) {
        std::fprintf(stderr, "ui32-demo: cannot write %s or %s\n", picture.c_str(), tiles.c_str());
        return 1;
    }

    long failedCalls = 0;
    for (int slot = 0; slot < UI_SLOT_COUNT; ++slot) failedCalls += plugin.stats(slot).failed;
    std::printf("ui32-demo: %d of %d slots used, %ld calls, %ld reports, %ld failed results, %d of %zu checks failed; "
                "wrote %s and %s\n",
                UI_SLOT_COUNT - unused, UI_SLOT_COUNT, calls, plugin.totalReports(), failedCalls, report.failedChecks,
                report.checks.size(), picture.c_str(), tiles.c_str());
    return unused == 0 && plugin.totalReports() == 0 && failedCalls == 0 && report.failedChecks == 0 ? 0 : 1;
}
