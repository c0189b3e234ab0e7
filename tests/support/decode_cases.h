// Table-driven checks of decompressBitmap shared by the codec tests: each
// case decodes one stream into a guarded output and compares the pixels,
// the result and the report trail.
#pragma once

#include <gtest/gtest.h>

#include "bitmap_streams.h"
#include "codec/decompressBitmap.h"
#include "library.h"

namespace ui32test {

using Pixels = std::vector<uint32_t>;
using Trail = std::vector<std::string>;

inline Pixels operator+(Pixels a, const Pixels &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// The first n bytes of a stream.
inline Bytes prefix(const Bytes &whole, int32_t n) {
    Bytes out;
    out.v.assign(whole.v.begin(), whole.v.begin() + n);
    return out;
}

struct DecodeCase {
    const char *name;
    int32_t width, height;
    Bytes stream;
    Pixels expected;
    Trail reports = {};
    int32_t result = 1;
};

inline void runDecodeCases(const std::vector<DecodeCase> &cases, int32_t bytesPerPixel) {
    Library lib(bytesPerPixel);
    for (const DecodeCase &c : cases) {
        SCOPED_TRACE(c.name);
        LogCapture log;
        const Decoded d = decodeGuarded(c.width, c.height, c.stream);
        EXPECT_EQ(d.result, c.result);
        EXPECT_EQ(d.pixels, c.expected);
        EXPECT_EQ(trail(log), c.reports);
        EXPECT_TRUE(d.guardsIntact);
    }
}

// Arguments decompressBitmap refuses (or, with result 1, accepts as
// empty): the 4-pixel output stays untouched.
struct ArgumentCase {
    const char *name;
    int32_t width, height, length, bytesPerPixel;
    Trail reports;
    int32_t result = 0;
};

inline void runArgumentCases(const std::vector<ArgumentCase> &cases, const uint8_t *data) {
    for (const ArgumentCase &c : cases) {
        SCOPED_TRACE(c.name);
        Library lib(c.bytesPerPixel);
        LogCapture log;
        uint32_t out[4] = {kUnwritten, kUnwritten, kUnwritten, kUnwritten};
        EXPECT_EQ(ui::decompressBitmap(c.width, c.height, data, c.length, out), c.result);
        EXPECT_EQ(Pixels(out, out + 4), Pixels(4, kUnwritten));
        EXPECT_EQ(trail(log), c.reports);
    }
}

}  // namespace ui32test
