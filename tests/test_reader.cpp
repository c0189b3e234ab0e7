// The bounded stream reader on the last bytes before an unreadable page, and
// on null data: the four reported reads (value, advance, exact shortage
// trail, the record left as it was) and the three unreported ones.
#include <gtest/gtest.h>

#include "bytes.h"
#include "codec/streamInOps.h"
#include "library.h"

namespace {

using ui::Line;
using ui::Site;

TEST(Reader, ReadsOnlyWhatIsLeftAndReportsShortages) {
    enum Op { u8, u16, block, skip, next, has, take };
    const test::Library lib;
    const kit::GuardedInput input(std::vector<uint8_t>{0x34, 0x12, 0xAB, 0xCD});
    const kit::Trail none, u8Short{kit::shortRead(Line::colourByte2)}, u16Short{kit::shortRead(Line::megaRun, 0, true)},
        blockShort = kit::trail({Site::shortBlock}), skipShort = kit::trail({Site::shortSkip});
    // The last `left` bytes readable, or null data; the value read (a
    // pointer as its offset from the record's start, null as -1).
    const struct { Op op; int32_t left; bool null; int64_t n, value; int32_t consumed; const kit::Trail &trail; } cases[] = {
        {u8, 4, 0, 0, 0x34, 1, none},        {u8, 0, 0, 0, 0, 0, u8Short},          {u8, -1, 0, 0, 0, 0, u8Short},
        {u16, 2, 0, 0, 0xCDAB, 2, none},     {u16, 1, 0, 0, 0, 0, u16Short},  // a lone last byte stays
        {block, 4, 0, 0, 0, 0, none},        {block, 4, 0, 4, 0, 4, none},          {block, 4, 0, 5, -1, 0, blockShort},
        {block, 4, 0, -1, -1, 0, blockShort}, {block, 4, 0, INT32_MAX, -1, 0, blockShort}, {block, -1, 0, 0, -1, 0, blockShort},
        {block, 4, 1, 2, -1, 0, none},       {skip, 3, 0, 3, 0, 3, none},           {skip, 3, 0, 4, 0, 0, skipShort},
        {skip, 3, 0, INT32_MIN, 0, 0, skipShort}, {skip, 4, 1, 1, 0, 0, none},      {next, 1, 0, 0, 0xCD, 1, none},
        {next, 0, 0, 0, -1, 0, none},        {next, -1, 0, 0, -1, 0, none},         {next, 4, 1, 0, -1, 0, none},
        {has, 3, 0, 3, 1, 0, none},          {has, 3, 0, 4, 0, 0, none},            {has, 3, 0, -1, 0, 0, none},
        {has, -1, 0, 0, 0, 0, none},         {take, 3, 0, 3, 0, 3, none},           {take, 3, 0, 4, -1, 0, none},
        {take, 3, 0, -1, -1, 0, none},       {take, 0, 0, 0, 0, 0, none},           {take, 4, 1, 3, -1, 3, none},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "case " << &c - cases);
        kit::LogCapture log;
        const uint8_t *start = c.null ? nullptr : input.data() + 4 - std::max(c.left, 0);
        ui::streamIn s{start, c.left};
        const auto offset = [&](const uint8_t *p) { return p == nullptr ? -1 : p - start; };
        uint8_t byte = 0;
        const int64_t value = c.op == u8      ? s.readU8(Line::colourByte2)
                              : c.op == u16   ? s.readU16(Line::megaRun)
                              : c.op == block ? offset(s.getBlock(int32_t(c.n)))
                              : c.op == skip  ? (s.skip(int32_t(c.n)), 0)
                              : c.op == next  ? (s.next(byte) ? byte : -1)
                              : c.op == has   ? s.has(c.n)
                                              : offset(s.take(c.n));
        EXPECT_EQ(value, c.value);
        EXPECT_EQ(uintptr_t(s.ptr) - uintptr_t(start), uintptr_t(c.consumed));
        EXPECT_EQ(s.left, c.left - c.consumed);
        EXPECT_EQ(log.trail(), c.trail);
    }
}

}  // namespace
