// The order-to-record mapping against the built ui32.so (32-bit session),
// for what the live servers do not send: raster-operation codes, brush
// origins and pattern kinds, FastGlyph's own glyph, MultiOpaqueRect, and the
// refusal of malformed orders.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "mapping.h"
#include "table.h"

namespace {

using namespace rdpsnap;

struct Mapping : testing::Test {
    static kit::Table table;
    Canvas canvas{table.slots};
    Caches caches;
    Mapper mapper{canvas, caches, 32};
    static void SetUpTestSuite() {
        std::string error;
        ASSERT_TRUE(table.load(UI32_MODULE_PATH, &kit::printReport, UiConfig{Mapper::kHatchPatterns, 4}, error)) << error;
    }
    void SetUp() override {
        canvas.resize(64, 48);
        caches.setGlyphCaches(
            {{{8, 4}, {8, 8}, {8, 32}, {8, 32}, {8, 32}, {8, 32}, {8, 32}, {8, 32}, {8, 32}, {8, 32}}});
    }
    uint32_t at(int x, int y) const { return canvas.pixels()[y * 64 + x]; }
};
kit::Table Mapping::table{};

TEST(RasterOperations, TernaryCodesMapToTheBinaryOperationOfTheirOperand) {
    struct { uint32_t rop3; int32_t destination, source, pattern; } cases[] = {
        {0x00, 0, 0, 0},     {0x55, 5, 5, 5},   {0xAA, 10, 10, 10}, {0xFF, 15, 15, 15}, {0xCC, -1, 12, -1},
        {0x66, -1, 6, -1},   {0x88, -1, 8, -1}, {0xEE, -1, 14, -1}, {0x33, -1, 3, -1},  {0xF0, -1, -1, 12},
        {0x5A, -1, -1, 6},   {0xA0, -1, -1, 8}, {0xFA, -1, -1, 14}, {0x0F, -1, -1, 3},  {0xB8, -1, -1, -1},
        {0xE2, -1, -1, -1},  {0x100, -1, -1, -1}};
    for (const auto &c : cases) {
        EXPECT_EQ(ropOfDestination(c.rop3), c.destination) << std::hex << c.rop3;
        EXPECT_EQ(ropOfSource(c.rop3), c.source) << std::hex << c.rop3;
        EXPECT_EQ(ropOfPattern(c.rop3), c.pattern) << std::hex << c.rop3;
    }
}

// The pattern pixel at (x, y) is brush pixel ((y - org.y) mod 8, (x - org.x) mod 8),
// for pattern, cached mono and cached colour brushes, clipped or not.
TEST_F(Mapping, BrushesAreAnchoredAtTheirOrigin) {
    const uint8_t rows[8] = {0x80, 0x41, 0x22, 0x14, 0x0f, 0x3c, 0x01, 0xe7};
    CACHE_BRUSH_ORDER mono{5, 1, 8, 8, 0x81, 8, {}}, colour{6, 32, 8, 8, 0x86, 256, {}};
    std::memcpy(mono.data, rows, 8);
    for (int i = 0; i < 64; ++i) colour.data[4 * i] = uint8_t(i), colour.data[4 * i + 2] = uint8_t(3 * i);
    ASSERT_TRUE(mapper.cacheBrush(mono) && mapper.cacheBrush(colour)) << mapper.error();
    const uint32_t back = 0x0000ff, fore = 0x00ff00;  // FreeRDP's wire order: red lowest
    static const int32_t clip[4] = {13, 2, 50, 40};
    for (uint32_t style : {3u, 0x81u, 0x86u})
        for (auto [ox, oy] : {std::pair{0u, 0u}, {3u, 5u}, {7u, 1u}})
            for (const int32_t *bounds : {static_cast<const int32_t *>(nullptr), clip}) {
                canvas.setBounds(bounds);
                const uint32_t index = style == 0x86 ? 6 : 5;
                PATBLT_ORDER o{4, 1, 50, 30, 0xF0, back, fore, {ox, oy, 0, style, 0, index, nullptr, {}}};
                std::memcpy(o.brush.p8x8, rows, 8);
                ASSERT_TRUE(mapper.patBlt(o)) << mapper.error();
                const int left = bounds ? 13 : 4, top = bounds ? 2 : 1;
                for (int y = top; y < 31; ++y)
                    for (int x = left; x < 54; ++x) {
                        const int r = (y - int(oy)) & 7, c = (x - int(ox)) & 7;
                        const uint32_t i = uint32_t(r * 8 + c);
                        const uint32_t want = style == 0x86          ? (3 * i & 0xff) << 16 | i
                                              : rows[r] & (0x80 >> c) ? 0xff0000u
                                                                      : 0x00ff00u;
                        ASSERT_EQ(at(x, y), want) << "style " << style << " origin " << ox << "," << oy << " at " << x
                                                  << "," << y;
                    }
            }
    EXPECT_EQ(kit::printedReports(), 0);
}

TEST_F(Mapping, FastGlyphCachesTheGlyphItCarriesAndMultiOpaqueRectDrawsEachEntry) {
    uint8_t bits[4] = {0xc0, 0xc0};
    FAST_GLYPH_ORDER glyph{1, 0, 0, 0xffffff, 0, 0, 0, 64, 48, 0, 0, 0, 0, 10, 20, 2, {3}, {3, -1, -2, 2, 2, 4, bits}};
    ASSERT_TRUE(mapper.fastGlyph(glyph)) << mapper.error();
    glyph.cbData = 1, glyph.x = 30, glyph.glyphData = {};
    ASSERT_TRUE(mapper.fastGlyph(glyph)) << mapper.error();
    for (int x : {9, 29}) EXPECT_TRUE(at(x, 18) == 0xffffff && at(x + 1, 19) == 0xffffff && at(x + 2, 18) == 0) << x;

    MULTI_OPAQUE_RECT_ORDER rects{0, 0, 64, 48, 0x0000ff, 2, 0, {{1, 40, 3, 2}, {60, 1, 2, 3}}};
    ASSERT_TRUE(mapper.multiOpaqueRect(rects)) << mapper.error();
    EXPECT_TRUE(at(1, 40) == 0xff0000 && at(3, 41) == 0xff0000 && at(61, 3) == 0xff0000 && at(4, 40) == 0);
    EXPECT_EQ(kit::printedReports(), 0);
}

TEST_F(Mapping, MalformedOrdersAreRefusedWithAReason) {
    uint8_t data[64] = {};
    BITMAP_DATA rect16{0, 0, 3, 3, 4, 4, 16, 0, 32, 0, 0, 0, 0, data, FALSE};
    BITMAP_UPDATE update16{1, 1, &rect16, FALSE};
    CACHE_BITMAP_V2_ORDER beyond{0, 0, 0, 0, 32, 4, 4, 64, 600, FALSE, 0, 0, 0, 0, data}, depth24 = beyond;
    depth24.bitmapBpp = 24, depth24.cacheIndex = 1;
    MEMBLT_ORDER unfilled{1, 0, 0, 0, 4, 4, 0xCC, 0, 0, 7, nullptr};
    CACHE_GLYPH_ORDER tooWide{0, 1, {{2, 0, 0, 8, 8, 8, data}}, nullptr};   // 8 bytes in 4-byte cells
    CACHE_GLYPH_ORDER tooShort{1, 1, {{2, 0, 0, 8, 8, 4, data}}, nullptr};  // 4 bytes for 8 rows
    MULTI_OPAQUE_RECT_ORDER rects46{};
    rects46.numRectangles = 46;
    CACHE_BRUSH_ORDER brush16{1, 16, 8, 8, 0x84, 128, {}};
    PATBLT_ORDER uncached{0, 0, 8, 8, 0xF0, 0, 0, {0, 0, 1, 0x81, 0, 9, nullptr, {}}};
    LINE_TO_ORDER rop0{1, 0, 0, 5, 5, 0, 0, 0, 1, 0};
    const std::pair<const char *, std::function<bool()>> cases[] = {
        {"16-bit bitmap update", [&] { return mapper.bitmapUpdate(update16); }},
        {"beyond the announced", [&] { return mapper.cacheBitmapV2(beyond); }},
        {"24-bit cached bitmap", [&] { return mapper.cacheBitmapV2(depth24); }},
        {"never filled", [&] { return mapper.memBlt(unfilled); }},
        {"does not fit its cell", [&] { return mapper.cacheGlyph(tooWide); }},
        {"does not fit its cell", [&] { return mapper.cacheGlyph(tooShort); }},
        {"46 rectangles", [&] { return mapper.multiOpaqueRect(rects46); }},
        {"16-bit brush", [&] { return mapper.cacheBrush(brush16); }},
        {"brush cache entry 9", [&] { return mapper.patBlt(uncached); }},
        {"raster operation 0", [&] { return mapper.lineTo(rop0); }},
    };
    for (const auto &[reason, order] : cases) {
        EXPECT_FALSE(order()) << reason;
        EXPECT_NE(mapper.error().find(reason), std::string::npos) << mapper.error();
    }
}

}  // namespace
