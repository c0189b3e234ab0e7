// The bounded stream reader: the four reported reads (values, advances and
// exact shortage trails, the record unchanged on a shortage) and the three
// unreported ones, on input that ends right before an unreadable page.
#include <gtest/gtest.h>

#include "bytes.h"
#include "codec/streamInOps.h"
#include "library.h"

namespace {

using ui::Line;

struct Reader : ::testing::Test {
    test::Library lib;
    kit::LogCapture log;
    const kit::GuardedInput input{std::vector<uint8_t>{0x34, 0x12, 0xAB, 0xCD}};
    ui::streamIn s{input.data(), input.size()};
    void expectAt(int32_t consumed) {
        EXPECT_EQ(s.ptr, input.data() + consumed);
        EXPECT_EQ(s.left, input.size() - consumed);
    }
};

TEST_F(Reader, ValueReadsAdvanceAndAShortOneReportsItsCallerAndReadsZero) {
    EXPECT_EQ(s.readU16(Line::megaRun), 0x1234);
    EXPECT_EQ(s.readU8(Line::colourByte0), 0xAB);
    EXPECT_EQ(s.readU16(Line::megaRun), 0);  // a lone last byte stays
    expectAt(3);
    EXPECT_EQ(s.readU8(871), 0xCD);
    EXPECT_EQ(s.readU8(Line::colourByte2), 0);
    EXPECT_EQ(s.readU8(3160 + 1), 0);
    expectAt(4);
    EXPECT_EQ(log.trail(), (kit::Trail{kit::shortRead(Line::megaRun, 0, true), kit::shortRead(Line::colourByte2),
                                       kit::shortRead(Line::packedPalette, 1)}));
    EXPECT_EQ(log.trail()[1], "streamInOps 64: Not enough data in stream in ui line 411.");
}

TEST_F(Reader, BlocksAndSkipsCompareTheSignedCountWithWhatIsLeft) {
    const struct {
        bool skip;
        int32_t n;
        bool fits;
    } cases[] = {{false, 0, true},  {false, 3, true},   {false, 4, true},         {false, 5, false},
                 {false, -1, false}, {false, INT32_MAX, false}, {false, INT32_MIN, false}, {true, 0, true},
                 {true, 4, true},    {true, 5, false},  {true, -3, false},        {true, INT32_MIN, false}};
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << (c.skip ? "skip " : "block ") << c.n);
        log.clear();
        s = {input.data(), input.size()};
        const uint8_t *block = nullptr;
        if (c.skip) s.skip(c.n);
        else block = s.getBlock(c.n);
        expectAt(c.fits ? c.n : 0);
        EXPECT_EQ(block, c.fits && !c.skip ? input.data() : nullptr);
        const ui::Site site = c.skip ? ui::Site::shortSkip : ui::Site::shortBlock;
        EXPECT_EQ(log.trail(), c.fits ? kit::Trail{} : kit::trail({site}));
    }
}

TEST_F(Reader, UnreportedReadsNextHasTake) {
    uint8_t byte = 0;
    EXPECT_TRUE(s.next(byte));
    EXPECT_EQ(byte, 0x34);
    EXPECT_TRUE(s.has(3));
    EXPECT_FALSE(s.has(4));
    EXPECT_FALSE(s.has(-1));
    EXPECT_EQ(s.take(4), nullptr);  // more than is there: nothing consumed
    expectAt(1);
    EXPECT_EQ(s.take(0), input.data() + 1);
    EXPECT_EQ(s.take(2), input.data() + 1);
    EXPECT_EQ(s.take(-1), nullptr);
    expectAt(3);
    EXPECT_TRUE(s.next(byte));
    EXPECT_EQ(byte, 0xCD);
    EXPECT_FALSE(s.next(byte));
    EXPECT_TRUE(s.has(0));
    expectAt(4);
    EXPECT_TRUE(log.trail().empty());
}

TEST_F(Reader, NullDataAndNegativeCountsHoldNothing) {
    ui::streamIn null{nullptr, 4};
    uint8_t byte = 7;
    EXPECT_EQ(null.getBlock(2), nullptr);  // fits, but there is no data: unreported
    EXPECT_FALSE(null.next(byte));
    null.skip(1);
    EXPECT_EQ(null.take(1), nullptr);  // advanced as a plain address, never read
    EXPECT_EQ(null.left, 3);
    EXPECT_EQ(byte, 7);
    ui::streamIn negative{input.data(), -1};
    EXPECT_EQ(negative.readU8(Line::colourByte0), 0);
    EXPECT_FALSE(negative.next(byte));
    EXPECT_FALSE(negative.has(0));
    EXPECT_EQ(negative.getBlock(0), nullptr);
    EXPECT_EQ(negative.ptr, input.data());
    EXPECT_EQ(log.trail(), (kit::Trail{kit::shortRead(Line::colourByte0), kit::entry(ui::Site::shortBlock)}));
}

}  // namespace
