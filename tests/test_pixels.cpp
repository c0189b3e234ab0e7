// Raw pixel import with the source byte order (slots 15, 16 and 23).
#include <gtest/gtest.h>

#include <climits>

#include "frame.h"
#include "guarded_input.h"
#include "library.h"
#include "log_capture.h"

using namespace ui32test;

namespace {

constexpr uint32_t kPaper = 0x010203;

// Source bytes whose pixels all differ: pixel i is i+1, 0x80+i, 0x40+i, 0xc0+i.
std::vector<uint8_t> sourcePixels(int count) {
    std::vector<uint8_t> bytes;
    for (int i = 0; i < count; ++i) {
        const uint8_t b = uint8_t(i);
        bytes.insert(bytes.end(), {uint8_t(b + 1), uint8_t(0x80 + b), uint8_t(0x40 + b), uint8_t(0xc0 + b)});
    }
    return bytes;
}

uint32_t inOrder(const uint8_t *b) { return uint32_t(b[2]) << 16 | uint32_t(b[1]) << 8 | b[0]; }
uint32_t swapped(const uint8_t *b) { return uint32_t(b[0]) << 16 | uint32_t(b[1]) << 8 | b[2]; }

struct Slots {
    explicit Slots(const Library &lib)
        : setOrder(lib.slot<UiSetSourceByteOrderFn>(UI_SLOT_SET_SOURCE_BYTE_ORDER)),
          put(lib.slot<UiPutPixelsFn>(UI_SLOT_PUT_PIXELS)),
          import(lib.slot<UiImportImage32Fn>(UI_SLOT_IMPORT_IMAGE32)) {}
    UiSetSourceByteOrderFn setOrder;
    UiPutPixelsFn put;
    UiImportImage32Fn import;
};

// Rows packed one after the other, top row first, into the rectangle only.
TEST(PutPixels, RowsArePackedFromTheTop) {
    Library lib;
    Slots slots(lib);
    for (uint8_t order : {0, 1}) {
        SCOPED_TRACE(int(order));
        Frame frame(64, 48, kPaper);
        slots.setOrder(order);
        const UiRect r{30, 28, 5, 7};
        const std::vector<uint8_t> bytes = sourcePixels(35);
        const GuardedInput src(bytes);  // exactly 5 x 7 pixels: a read past them faults
        LogCapture log;
        EXPECT_TRUE(slots.put(&frame.image(), &frame.dirty(), &r, src.data()));
        for (int32_t y = 0; y < 48; ++y)
            for (int32_t x = 0; x < 64; ++x) {
                const bool inside = x >= 30 && x < 35 && y >= 28 && y < 35;
                const uint8_t *b = bytes.data() + 4 * ((y - 28) * 5 + (x - 30));
                ASSERT_EQ(frame.at(x, y), inside ? (order ? inOrder(b) : swapped(b)) : kPaper) << x << "," << y;
            }
        EXPECT_EQ(frame.markedTiles(), (std::vector<int>{0, 1, 2, 3}));
        EXPECT_TRUE(log.reports().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

// Slot 15 between two calls changes only the later one; any non-zero flag
// means the frame buffer's own byte order.
TEST(PutPixels, ByteOrderChangeAppliesToLaterCallsOnly) {
    Library lib;
    Slots slots(lib);
    Frame frame(64, 32, kPaper);
    const uint8_t bytes[4] = {0x11, 0x22, 0x33, 0x44};
    const GuardedInput src(bytes, 4);
    const struct {
        uint8_t order;
        uint32_t word;
    } calls[] = {{0, 0x112233}, {1, 0x332211}, {0, 0x112233}, {0x80, 0x332211}};
    for (int32_t i = 0; i < 4; ++i) {
        slots.setOrder(calls[i].order);
        const UiRect r{i, 0, 1, 1};
        EXPECT_TRUE(slots.put(&frame.image(), &frame.dirty(), &r, src.data()));
    }
    for (int32_t i = 0; i < 4; ++i) EXPECT_EQ(frame.at(i, 0), calls[i].word) << i;
    EXPECT_TRUE(frame.guardsIntact());
}

TEST(PutPixels, RectangleOutsideTheImageIsRefused) {
    Library lib;
    Slots slots(lib);
    const UiRect cases[] = {{0, 0, 65, 1},      {0, 0, 1, 33},         {60, 0, 5, 1},          {-1, 0, 1, 1},
                            {0, -1, 1, 1},      {0, 0, -1, 1},         {1, 0, INT32_MAX, 1},   {INT32_MIN, 0, 1, 1},
                            {0, 31, 1, INT32_MAX}};
    const std::vector<uint8_t> bytes = sourcePixels(64);
    for (const UiRect &r : cases) {
        SCOPED_TRACE(testing::Message() << r.left << "," << r.top << " " << r.width << "x" << r.height);
        Frame frame(64, 32, kPaper);
        LogCapture log;
        EXPECT_FALSE(slots.put(&frame.image(), &frame.dirty(), &r, bytes.data()));
        EXPECT_EQ(log.sites(), Sites({"imgbuf 99", "ui 3449"}));
        for (const Report &rep : log.reports()) EXPECT_EQ(rep.text, kInternalError);
        for (uint32_t p : frame.pixels()) ASSERT_EQ(p, kPaper);
        EXPECT_TRUE(frame.markedTiles().empty());
        EXPECT_TRUE(frame.guardsIntact());
    }
}

TEST(PutPixels, FailedTileMarkingStillReturnsTrue) {
    Library lib;
    Slots slots(lib);
    Frame frame(64, 32, kPaper);
    frame.dirty().rows = 0;
    const std::vector<uint8_t> bytes = sourcePixels(4);
    const UiRect r{2, 2, 2, 2};
    LogCapture log;
    EXPECT_TRUE(slots.put(&frame.image(), &frame.dirty(), &r, bytes.data()));
    frame.dirty().rows = 1;
    EXPECT_EQ(log.sites(), Sites({"dirtybuf 114"}));
    EXPECT_EQ(frame.at(3, 3), swapped(bytes.data() + 12));
}

// A UiImage32Record with room for `rows` image rows and guard words after
// them; every word starts as a marker.
struct Image32 {
    static constexpr uint32_t kMarker = 0x5eed5eed;
    explicit Image32(int32_t width, int32_t height, int rows) : words(size_t(37 + 32 * rows + 8), kMarker) {
        record()->width = width;
        record()->height = height;
    }
    UiImage32Record *record() { return reinterpret_cast<UiImage32Record *>(words.data()); }
    std::vector<uint32_t> words;
};

TEST(ImportImage32, TakesTheFirstWidthPixelsOfEachRow) {
    Library lib;
    Slots slots(lib);
    for (uint8_t order : {0, 1}) {
        SCOPED_TRACE(int(order));
        slots.setOrder(order);
        Image32 image(16, 2, 3);
        const std::vector<uint8_t> bytes = sourcePixels(36);  // rows 20 pixels apart, 16 used of the second
        const GuardedInput src(bytes);
        slots.import(image.record(), src.data(), 20);
        for (size_t w = 0; w < image.words.size(); ++w) {
            int source = -1;
            if (w >= 37 && w <= 52) source = int(w - 37);
            if (w >= 69 && w <= 84) source = int(w - 69 + 20);
            uint32_t want = Image32::kMarker;
            if (w == 2) want = 16;
            if (w == 3) want = 2;
            if (source >= 0) {
                const uint8_t *b = bytes.data() + 4 * source;
                want = order ? inOrder(b) : swapped(b);
            }
            ASSERT_EQ(image.words[w], want) << "word " << w;
        }
    }
}

TEST(ImportImage32, NothingForAnEmptyImageOrShortRows) {
    Library lib;
    Slots slots(lib);
    const struct {
        int32_t width, height, rowLength;
    } cases[] = {{16, 0, 16}, {16, -5, 16}, {0, 2, 16}, {-3, 2, 16}, {16, 2, 15}, {16, 2, INT32_MIN}};
    const std::vector<uint8_t> bytes = sourcePixels(64);
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.width << "x" << c.height << " rows of " << c.rowLength);
        Image32 image(c.width, c.height, 2);
        slots.import(image.record(), bytes.data(), c.rowLength);
        for (size_t w = 4; w < image.words.size(); ++w) ASSERT_EQ(image.words[w], Image32::kMarker) << w;
    }
}

TEST(ImportImage32, WidthAbove32StaysInsideEachRow) {
    Library lib;
    Slots slots(lib);
    slots.setOrder(1);
    Image32 image(40, 2, 2);
    const std::vector<uint8_t> bytes = sourcePixels(80);
    slots.import(image.record(), bytes.data(), 40);
    for (int c = 0; c < 32; ++c) {
        EXPECT_EQ(image.words[size_t(37 + c)], inOrder(bytes.data() + 4 * c)) << c;
        EXPECT_EQ(image.words[size_t(69 + c)], inOrder(bytes.data() + 4 * (40 + c))) << c;
    }
    for (size_t w = 101; w < image.words.size(); ++w) EXPECT_EQ(image.words[w], Image32::kMarker);
}

}  // namespace
