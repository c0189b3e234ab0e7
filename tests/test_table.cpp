// srn_get, the process-wide settings and the two setting slots.
#include <gtest/gtest.h>

#include <cstdlib>

#include "core/settings.h"
#include "library.h"

namespace {

void *const kMarker = reinterpret_cast<void *>(uintptr_t(0x5a5a5a5a));
int otherCalls = 0;
int otherLog(const char *, const char *, int, const char *, ...) { return ++otherCalls; }

struct Fresh : ::testing::Test {
    void SetUp() override {
        for (void *&s : t.slots) s = kMarker;
        std::free(ui::settings.scratchBuffer);
        ui::settings = ui::Settings{};
    }
    void TearDown() override { std::free(ui::settings.scratchBuffer), ui::settings = ui::Settings{}; }
    void get(const UiConfig *config) { t.get(srn_get, &kit::LogCapture::callback, config); }
    kit::Table t;
    kit::LogCapture log;
    const UiConfig config{kit::kHatchPatterns, 3};
};

TEST_F(Fresh, ConfigFillsEverySlotAndTheSettingsWithoutItOnly11To24) {
    get(nullptr);
    for (int i = 0; i < UI_SLOT_COUNT; ++i) EXPECT_EQ(t.slots[i] == kMarker, i <= 10) << "slot " << i;
    EXPECT_EQ(ui::settings.scratchBuffer, nullptr);
    get(&config);
    for (int i = 0; i < UI_SLOT_COUNT; ++i) EXPECT_NE(t.slots[i], kMarker) << "slot " << i;
    EXPECT_EQ(ui::settings.hatchPatterns, kit::kHatchPatterns);
    EXPECT_EQ(ui::settings.sourceBytesPerPixel, 3);
    uint8_t *store = ui::settings.scratchBuffer;
    ASSERT_NE(store, nullptr);
    for (int i = 0; i < ui::kScratchBufferSize; ++i) ASSERT_EQ(store[i], 0) << i;
    t.setSourceBytesPerPixel4();
    EXPECT_EQ(ui::settings.sourceBytesPerPixel, 4);
    get(nullptr);  // keeps the settings and the store
    EXPECT_EQ(ui::settings.scratchBuffer, store);
    EXPECT_EQ(ui::settings.sourceBytesPerPixel, 4);
    store[5] = 7;
    get(&config);  // a new, empty store
    EXPECT_NE(ui::settings.scratchBuffer, store);
    EXPECT_EQ(ui::settings.scratchBuffer[5], 0);
    std::free(store);
    EXPECT_TRUE(log.trail().empty());
}

TEST_F(Fresh, FailedReservationIsReportedAndTheTableStillFilled) {
    test::failNextMallocs(1);
    get(&config);
    EXPECT_EQ(log.trail(), kit::trail({ui::Site::noFragmentStore}));
    EXPECT_EQ(ui::settings.scratchBuffer, nullptr);
    EXPECT_EQ(ui::settings.sourceBytesPerPixel, 3);
    for (int i = 0; i < UI_SLOT_COUNT; ++i) EXPECT_NE(t.slots[i], kMarker) << "slot " << i;
    // Glyph string orders are refused at the same site; FastGlyph still works.
    UiSurface surface{};
    const UiGlyphIndexOrder order{};
    t.glyphIndex(surface, order, UiClipRect{});
    EXPECT_EQ(log.trail().back(), kit::entry(ui::Site::noFragmentStore));
}

// (The byte order slot is met through the pixels it orders: putPixels and
// importImage32 in test_direct, the ZRLE tiles and Hextile in test_rfb.)
TEST_F(Fresh, ReportsGoToTheLatestCallback) {
    get(&config);
    t.get(srn_get, &otherLog, nullptr);
    otherCalls = 0;
    t.fillBufferRect(nullptr, nullptr, UiRect{-1, 0, 1, 1}, 0);
    EXPECT_EQ(otherCalls, 1);
    EXPECT_TRUE(log.trail().empty());
}

}  // namespace
