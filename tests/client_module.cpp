// The built ui32.so driven only as a client drives it: dlopen by path,
// srn_get, then the drawing table.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>

#include "frame.h"
#include "table.h"

namespace {

std::vector<std::string> reports;

int keep(const char *level, const char *module, int site, const char *format, ...) {
    char text[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    reports.push_back(std::string(level) + " " + module + " " + std::to_string(site) + " " + text);
    return 0;
}

TEST(Module, ExportsOnlySrnGetAndDrawsThroughTheTable) {
    std::string error;
    const kit::SrnGet get = kit::openModule(UI32_MODULE_PATH, error);
    ASSERT_NE(get, nullptr) << error;
    void *module = dlopen(UI32_MODULE_PATH, RTLD_NOW | RTLD_NOLOAD);
    EXPECT_EQ(dlsym(module, "_ZN2ui8settingsE"), nullptr);
    kit::Table t;
    const UiConfig config{kit::kHatchPatterns, 3};
    t.get(get, &keep, &config);
    for (int i = 0; i < UI_SLOT_COUNT; ++i) EXPECT_NE(t.slots[i], nullptr) << "slot " << i;

    kit::Frame f(64, 32, 0x101010);
    t.dstBlt(f.surface(), UiDstBltOrder{0, 0, 8, 8, 0xFF}, f.all());
    t.scrBlt(f.surface(), UiScrBltOrder{40, 0, 8, 8, 0xCC, 0, 0}, f.all());
    const uint32_t bitmap[4] = {1, 2, 3, 4};  // 2 x 2, bottom row first
    t.memBlt(f.surface(), UiMemBltOrder{0, 20, 20, 2, 2, 0xCC, 0, 0, 0, 2, 2, bitmap}, f.all());
    EXPECT_EQ(f.at(7, 7), 0xffffffu);
    EXPECT_EQ(f.at(47, 7), 0xffffffu);
    EXPECT_EQ(f.at(47, 8), 0x101010u);
    EXPECT_EQ(f.at(20, 20), 3u);
    EXPECT_EQ(f.at(21, 21), 2u);
    EXPECT_EQ(f.markedTiles(), (std::vector<int>{0, 1}));
    EXPECT_TRUE(reports.empty());

    t.scrBlt(f.surface(), UiScrBltOrder{0, 0, 8, 8, 0xCC, 60, 0}, UiClipRect{0, 0, 99, 99});
    const std::string internal = " INTERNAL ERROR. Please, contact Nelvox tech support.";
    EXPECT_EQ(reports, (std::vector<std::string>{"ERROR imgbuf 83" + internal, "ERROR ui 1567" + internal}));
    EXPECT_TRUE(f.guardsIntact());
}

}  // namespace
