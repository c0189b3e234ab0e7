// The bounded stream reader: values, advances and the exact shortage reports.
#include <gtest/gtest.h>

#include "bitmap_streams.h"
#include "guarded_input.h"
#include "library.h"
#include "codec/streamInOps.h"

using namespace ui32test;

namespace {

TEST(StreamIn, ValueReadsAdvanceAndShortReadsChangeNothing) {
    Library lib;
    LogCapture log;
    const GuardedInput input(std::vector<uint8_t>{0x34, 0x12, 0xAB});
    ui::streamIn s{input.data(), input.size()};
    EXPECT_EQ(s.readU16("ui", 1), 0x1234);
    EXPECT_EQ(s.left, 1);
    EXPECT_EQ(s.readU16("ui", 2), 0);  // a lone last byte stays
    EXPECT_EQ(s.left, 1);
    EXPECT_EQ(s.ptr, input.data() + 2);
    EXPECT_EQ(s.readU8("ui", 3), 0xAB);
    EXPECT_EQ(s.readU8("ui", 4), 0);
    EXPECT_EQ(s.left, 0);
    EXPECT_EQ(s.ptr, input.data() + 3);
    EXPECT_EQ(trail(log), (std::vector<std::string>{shortRead(2, 65), shortRead(4, 64)}));
    EXPECT_EQ(log.reports()[0].format, "Not enough data in stream in %s line %d.");
}

TEST(StreamIn, BlocksAndSkipsCompareSignedWithLeft) {
    Library lib;
    const GuardedInput input(std::vector<uint8_t>{1, 2, 3, 4});
    const struct {
        const char *name;
        bool skip;
        int32_t n;
        bool fits;
        int site;
    } cases[] = {
        {"empty block", false, 0, true, 0},     {"whole input", false, 4, true, 0},
        {"one byte too many", false, 5, false, 275}, {"negative count", false, -1, false, 275},
        {"huge count", false, INT32_MAX, false, 275}, {"skip all", true, 4, true, 0},
        {"skip past the end", true, 5, false, 283},  {"skip backwards", true, -3, false, 283},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        LogCapture log;
        ui::streamIn s{input.data(), input.size()};
        const uint8_t *block = nullptr;
        if (c.skip)
            s.skip(c.n);
        else
            block = s.getBlock(c.n);
        if (c.fits) {
            if (!c.skip) EXPECT_EQ(block, input.data());
            EXPECT_EQ(s.ptr, input.data() + c.n);
            EXPECT_EQ(s.left, 4 - c.n);
            EXPECT_TRUE(log.reports().empty());
        } else {
            EXPECT_EQ(block, nullptr);
            EXPECT_EQ(s.ptr, input.data());
            EXPECT_EQ(s.left, 4);
            EXPECT_EQ(trail(log), (std::vector<std::string>{"streamInOps " + std::to_string(c.site)}));
        }
    }
}

TEST(StreamIn, NullDataGivesNoBlock) {
    Library lib;
    LogCapture log;
    ui::streamIn s{nullptr, 0};
    EXPECT_EQ(s.getBlock(0), nullptr);
    EXPECT_EQ(s.readU8("ui", 7), 0);
    EXPECT_EQ(trail(log), (std::vector<std::string>{shortRead(7)}));
}

}  // namespace
