// The planar decoder through slot 8: refused headers, raw planes, run-length
// planes with their delta rows, overruns and short input, by hand and through
// the reference decoder; then the two compared on encoded pictures at every
// width: whole, changed, and cut at every byte (every plane's control bytes).
#include "bitmapModels.h"
#include "picture.h"

namespace {

using kit::Bytes;
using model::Pixels;
using model::operator+;
using ui::Line;
using ui::Site;

constexpr uint32_t X = 0xEEEEEEEE;

uint32_t rgb(uint32_t r, uint32_t g, uint32_t b) { return r << 16 | g << 8 | b; }
std::string s8(Line line) { return kit::shortRead(line); }
std::string at(Site site) { return kit::entry(site); }

const std::vector<model::Case> kCases = {
    {"raw, alpha, one byte short", 5, 7, kit::planar(kit::testPicture(5, 7), false, true).first(140), Pixels(35, X),
     {at(Site::rawPlanes)}, 0},
    {"raw, both sizes negative: width x height pixels", -1, -1, {0x20, 0x12, 0x34, 0x56}, {0x123456}},
    {"run-length, both sizes negative: no rows", -2, -3, {0x30}, Pixels(6, X)},
    {"first row: raw bytes, then runs of the last", 4, 1, {0x30, 0x40, 0x10, 0x20, 0x30, 0x40, 0x13, 0x55, 0x13, 0x07},
     {rgb(0x10, 0x55, 7), rgb(0x20, 0x55, 7), rgb(0x30, 0x55, 7), rgb(0x40, 0x55, 7)}},
    {"run length 1: 16 + raw count, no raw bytes", 19, 1,
     {0x30, 0x10, 0x05, 0x11, 0x10, 0x06, 0x10, 0x44, 0x21, 0x21, 0x10, 0x09},
     Pixels(18, rgb(5, 0x44, 0)) + Pixels{rgb(6, 0x44, 9)}},
    {"delta rows: raw deltas, run delta carried, restarted each row", 4, 3,
     {0x30, 0x40, 0x10, 0x20, 0x30, 0x40, 0x13, 0x03, 0x04, 0x04, 0x04, 0x04, 0x40, 1, 2, 3, 4, 0x40, 0x04, 0x03,
      0x06, 0x05, 0x40, 0xFF, 0xFE, 0x00, 0x01},
     {rgb(0x10, 0, 1), rgb(0x20, 0, 2), rgb(0x30, 0, 3), rgb(0x40, 0, 4), rgb(0x0E, 0, 3), rgb(0x1E, 0, 0),
      rgb(0x2E, 0, 6), rgb(0x3E, 0, 1), rgb(0x0E, 0, 0x83), rgb(0x1E, 0, 0x7F), rgb(0x2E, 0, 6), rgb(0x3E, 0, 0)}},
    // Failures: a plane stops at its failure; later planes keep their bytes.
    {"alpha segment past its row", 4, 1, {0x10, 0x05}, Pixels(4, X), {at(Site::alphaOverrun), at(Site::alphaPlane)}, 0},
    {"short alpha skip is dropped", 4, 1, {0x10, 0x40, 0x01, 0x02}, Pixels(4, X),
     {at(Site::shortSkip), at(Site::planarRowOverrun), at(Site::redPlane)}, 0},
    {"green segment past a delta row", 2, 2, {0x30, 0x20, 1, 2, 0x20, 0, 0, 0x20, 5, 6, 0x03},
     {0x000105EE, 0x000206EE, 0x0001EEEE, 0x0002EEEE}, {at(Site::planarDeltaOverrun), at(Site::greenPlane)}, 0},
    {"blue control byte missing", 1, 1, {0x30, 0x10, 0x7F, 0x10, 0x22}, {0x007F22EE},
     {s8(Line::firstRowControl), at(Site::bluePlane)}, 0},
    {"delta byte missing counts as delta 0", 1, 2, {0x30, 0x10, 0x05, 0x10}, {0x0005EEEE, 0x0005EEEE},
     {s8(Line::deltaRowRaw), s8(Line::firstRowControl), at(Site::greenPlane)}, 0},
    {"last blue raw byte missing: the plane completes", 1, 1, {0x30, 0x10, 0x05, 0x10, 0x06, 0x10}, {rgb(5, 6, 0)},
     {s8(Line::firstRowRaw)}},
};

TEST(Planar, RawAndRunLengthPlanesFailuresAndShortInput) {
    for (const model::Case &c : kCases) model::check(c, 4, model::planar);
    for (uint8_t header : {0x01, 0x02, 0x04, 0x08, 0x40, 0x80, 0x3F})
        model::check({"refused header", 2, 1, {header, 0x20, 1, 2, 0x20, 3, 4, 0x20, 5, 6}, {X, X}, {at(Site::planarHeader)}, 0}, 4,
                     model::planar);
}

// Desktop-like pictures, and flat ones with a few spots for the long runs,
// in all four layouts: whole, with one byte changed, and the run-length ones
// cut at every byte.
TEST(Planar, MatchesTheModelAtEveryWidthAndEveryTruncation) {
    const test::Library lib(4);
    for (int32_t width = 1; width <= 40; ++width) {
        const int32_t height = 1 + width % 3;
        kit::Picture p = width % 2 ? kit::testPicture(width, height, uint32_t(width)) : kit::Picture(width, height, 0x80FF01);
        for (int i = 0; i < 3 && width % 2 == 0; ++i) p.at((width * i) / 3, i % height) = 0x123456u * uint32_t(i + width);
        for (const int layout : {0x10, 0x30, 0x00, 0x20}) {
            const Bytes all = kit::planar(p, layout & 0x10, !(layout & 0x20));
            SCOPED_TRACE(testing::Message() << width << "x" << height << ", header " << layout);
            EXPECT_EQ(model::slot8(lib, width, height, all), (model::Decoded{1, kit::bottomUp(p), {}}));
            EXPECT_EQ(model::planar(width, height, all), (model::Decoded{1, kit::bottomUp(p), {}}));
            Bytes changed = all;
            changed[1 + size_t(width) * 7 % (all.size() - 1)] ^= uint8_t(0x5A + width);
            EXPECT_EQ(model::slot8(lib, width, height, changed), model::planar(width, height, changed));
            for (size_t n = 1; n < all.size(); n += layout & 0x10 ? 1 : all.size() - 2)
                ASSERT_EQ(model::slot8(lib, width, height, all.first(n)), model::planar(width, height, all.first(n))) << n;
        }
    }
}

}  // namespace
