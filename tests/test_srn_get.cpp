// srn_get, the settings and the setting slots.
#include <gtest/gtest.h>

#include <cstdlib>

#include "library.h"
#include "log_capture.h"
#include "ui.h"

using namespace ui32test;

namespace {

void *const kMarker = reinterpret_cast<void *>(uintptr_t(0x5a5a5a5a));

struct Fresh : ::testing::Test {
    void SetUp() override {
        std::free(ui::settings.scratchBuffer);
        ui::settings = ui::Settings{};
        for (void *&s : table) s = kMarker;
    }
    void TearDown() override {
        std::free(ui::settings.scratchBuffer);
        ui::settings = ui::Settings{};
    }
    UiDrawTable table;
    LogCapture log;
};

TEST_F(Fresh, WithConfigFillsEverySlotAndTakesTheSettings) {
    const UiConfig config{kHatchPatterns, 3};
    srn_get(table, &LogCapture::callback, &config);
    for (int i = 0; i < UI_SLOT_COUNT; ++i) {
        EXPECT_NE(table[i], nullptr) << "slot " << i;
        EXPECT_NE(table[i], kMarker) << "slot " << i;
    }
    EXPECT_EQ(ui::settings.hatchPatterns, kHatchPatterns);
    EXPECT_EQ(ui::settings.sourceBytesPerPixel, 3);
    ASSERT_NE(ui::settings.scratchBuffer, nullptr);
    for (int i = 0; i < ui::kScratchBufferSize; ++i) ASSERT_EQ(ui::settings.scratchBuffer[i], 0) << i;
    EXPECT_TRUE(log.reports().empty());

    reinterpret_cast<UiSetSourceBytesPerPixel4Fn>(table[UI_SLOT_SET_SOURCE_BYTES_PER_PIXEL_4])();
    EXPECT_EQ(ui::settings.sourceBytesPerPixel, 4);
}

TEST_F(Fresh, WithoutConfigFillsOnlySlots11To24AndKeepsTheSettings) {
    srn_get(table, &LogCapture::callback, nullptr);
    for (int i = 0; i <= 10; ++i) EXPECT_EQ(table[i], kMarker) << "slot " << i;
    for (int i = 11; i < UI_SLOT_COUNT; ++i) EXPECT_NE(table[i], kMarker) << "slot " << i;
    EXPECT_EQ(ui::settings.scratchBuffer, nullptr);
    EXPECT_EQ(ui::settings.hatchPatterns, nullptr);

    const UiConfig config{kHatchPatterns, 4};
    srn_get(table, &LogCapture::callback, &config);
    uint8_t *store = ui::settings.scratchBuffer;
    srn_get(table, &LogCapture::callback, nullptr);
    EXPECT_EQ(ui::settings.scratchBuffer, store);
    EXPECT_EQ(ui::settings.hatchPatterns, kHatchPatterns);
    EXPECT_EQ(ui::settings.sourceBytesPerPixel, 4);
}

TEST_F(Fresh, SecondCallWithConfigReservesANewEmptyStore) {
    const UiConfig config{kHatchPatterns, 3};
    srn_get(table, &LogCapture::callback, &config);
    uint8_t *first = ui::settings.scratchBuffer;
    first[5] = 7;
    srn_get(table, &LogCapture::callback, &config);
    ASSERT_NE(ui::settings.scratchBuffer, first);
    EXPECT_EQ(ui::settings.scratchBuffer[5], 0);
    std::free(first);
}

TEST_F(Fresh, FailedReservationIsReportedAndTheTableStillFilled) {
    const UiConfig config{kHatchPatterns, 3};
    failNextMallocs(1);
    srn_get(table, &LogCapture::callback, &config);
    ASSERT_EQ(log.sites(), Sites({"ui 3782"}));
    EXPECT_EQ(log.reports()[0].level, "ERROR");
    EXPECT_EQ(log.reports()[0].text, kInternalError);
    EXPECT_EQ(ui::settings.scratchBuffer, nullptr);
    EXPECT_EQ(ui::settings.sourceBytesPerPixel, 3);
    for (int i = 0; i < UI_SLOT_COUNT; ++i) EXPECT_NE(table[i], kMarker) << "slot " << i;
}

int secondLogCalls = 0;
int secondLog(const char *, const char *, int, const char *, ...) { return ++secondLogCalls; }

TEST_F(Fresh, ReportsGoToTheLatestCallback) {
    const UiConfig config{kHatchPatterns, 3};
    srn_get(table, &LogCapture::callback, &config);
    srn_get(table, &secondLog, nullptr);
    secondLogCalls = 0;
    imgbuf image{};
    EXPECT_EQ(image.writePtr(0, 0, 1, 1), nullptr);
    EXPECT_EQ(secondLogCalls, 1);
    EXPECT_TRUE(log.reports().empty());
}

TEST_F(Fresh, ByteOrderSlotStoresTheByte) {
    srn_get(table, &LogCapture::callback, nullptr);
    auto setOrder = reinterpret_cast<UiSetSourceByteOrderFn>(table[UI_SLOT_SET_SOURCE_BYTE_ORDER]);
    setOrder(1);
    EXPECT_EQ(ui::settings.sourceByteOrder, 1);
    setOrder(0);
    EXPECT_EQ(ui::settings.sourceByteOrder, 0);
}

}  // namespace
