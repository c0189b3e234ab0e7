// Drives the built ui32.so only as a client does: dlopen by path, srn_get,
// then the drawing table.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "ui32.h"

namespace {

std::vector<std::string> reports;

int logToVector(const char *level, const char *module, int site, const char *format, ...) {
    char text[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    reports.push_back(std::string(level) + " " + module + " " + std::to_string(site) + " " + text);
    return 0;
}

const uint8_t kHatches[48] = {};

class Plugin : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        handle = dlopen(UI32_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(handle, nullptr) << dlerror();
        getTable = reinterpret_cast<decltype(getTable)>(dlsym(handle, "srn_get"));
        ASSERT_NE(getTable, nullptr);
        const UiConfig config{kHatches, 3};
        getTable(table, &logToVector, &config);
    }
    void SetUp() override {
        ASSERT_NE(getTable, nullptr);
        reports.clear();
    }
    static void *handle;
    static void (*getTable)(UiDrawTable, UiLogFn, const UiConfig *);
    static UiDrawTable table;
};
void *Plugin::handle = nullptr;
void (*Plugin::getTable)(UiDrawTable, UiLogFn, const UiConfig *) = nullptr;
UiDrawTable Plugin::table{};

// A 64 x 32 frame buffer with its 2 x 1 tile map.
struct Screen {
    std::vector<uint32_t> pixels = std::vector<uint32_t>(64 * 32, 0x101010);
    std::vector<uint8_t> tiles = std::vector<uint8_t>(2, 0);
    UiSurface surface{};
    Screen() {
        surface.image = imgbuf{pixels.data(), 0, 0, 64 * 4, 64, 32};
        surface.dirty.tiles = tiles.data();
        surface.dirty.columns = 2;
        surface.dirty.rows = 1;
    }
};

TEST_F(Plugin, ExportsOnlySrnGet) {
    EXPECT_EQ(dlsym(handle, "_ZN2ui6dstBltEP9UiSurfacePK13UiDstBltOrderPK10UiClipRect"), nullptr);
    EXPECT_EQ(dlsym(handle, "_ZN2ui8settingsE"), nullptr);
    for (int i = 0; i < UI_SLOT_COUNT; ++i) EXPECT_NE(table[i], nullptr) << "slot " << i;
}

TEST_F(Plugin, DrawsBlitsAndMarksTiles) {
    Screen screen;
    const UiClipRect clip{0, 0, 63, 31};
    const UiDstBltOrder white{0, 0, 8, 8, 0xFF};
    reinterpret_cast<UiDstBltFn>(table[UI_SLOT_DST_BLT])(&screen.surface, &white, &clip);
    const UiScrBltOrder copy{40, 0, 8, 8, 0xCC, 0, 0};
    reinterpret_cast<UiScrBltFn>(table[UI_SLOT_SCR_BLT])(&screen.surface, &copy, &clip);
    const uint32_t bitmap[4] = {1, 2, 3, 4};  // 2 x 2, bottom row first
    const UiMemBltOrder mem{0, 20, 20, 2, 2, 0xCC, 0, 0, 0, 2, 2, bitmap};
    reinterpret_cast<UiMemBltFn>(table[UI_SLOT_MEM_BLT])(&screen.surface, &mem, &clip);

    EXPECT_EQ(screen.pixels[7 * 64 + 7], 0xffffffu);
    EXPECT_EQ(screen.pixels[7 * 64 + 47], 0xffffffu);
    EXPECT_EQ(screen.pixels[8 * 64 + 47], 0x101010u);
    EXPECT_EQ(screen.pixels[20 * 64 + 20], 3u);
    EXPECT_EQ(screen.pixels[21 * 64 + 21], 2u);
    EXPECT_EQ(screen.tiles, (std::vector<uint8_t>{1, 1}));
    EXPECT_EQ(screen.surface.dirty.changed, 1);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Plugin, ReportsReachTheClientsCallback) {
    Screen screen;
    const UiClipRect clip{0, 0, 99, 99};
    const UiScrBltOrder order{0, 0, 8, 8, 0xCC, 60, 0};
    reinterpret_cast<UiScrBltFn>(table[UI_SLOT_SCR_BLT])(&screen.surface, &order, &clip);
    const std::string internal = "INTERNAL ERROR. Please, contact Nelvox tech support.";
    EXPECT_EQ(reports, (std::vector<std::string>{"ERROR imgbuf 83 " + internal, "ERROR ui 1567 " + internal}));
}

}  // namespace
