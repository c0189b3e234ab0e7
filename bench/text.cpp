// Text: GlyphIndex strings of 80 glyphs of 8 x 16 (fixed advance, with an
// opaque background, with fragments, in delta mode, in delta mode with
// fragments), the same line as 80 FastGlyph orders, and 80 character cells
// through drawChar8x16.  The glyphs are the demo's console face (glyphs.h).
#include <cstring>
#include <string>
#include <vector>

#include "harness.h"  // first: the library's view of ui32.h

#include "glyphs.h"

namespace bench {
namespace {

constexpr int32_t kLeft = kMargin + 100;
constexpr int32_t kTop = kMargin + 200;
constexpr int64_t kPixels = int64_t(kGlyphs) * kCellWidth * kCellHeight;

using Form = GlyphForm;

// The glyph cache descriptor over the shared entries.
const UiGlyphCache *consoleCache() {
    static const UiGlyphCache cache{kCellHeight, kGlyphEntries, consoleCacheEntries().data()};
    return &cache;
}

UiGlyphIndexOrder glyphOrder(Form form) {
    UiGlyphIndexOrder o{};
    const bool delta = form == Form::delta || form == Form::deltaFragments;
    o.ulCharInc = delta ? 0 : kCellWidth;
    o.textColor[0] = 0x2e, o.textColor[1] = 0x34, o.textColor[2] = 0x36;
    o.opaqueColor[0] = 0xf6, o.opaqueColor[1] = 0xf5, o.opaqueColor[2] = 0xf4;
    o.bkLeft = kLeft;
    o.bkTop = kTop;
    o.bkRight = kLeft + kGlyphs * kCellWidth;
    o.bkBottom = kTop + kCellHeight;
    if (form == Form::opaque) {
        o.opLeft = o.bkLeft, o.opTop = o.bkTop, o.opRight = o.bkRight, o.opBottom = o.bkBottom;
    }
    o.x = kLeft;
    o.y = kTop;
    const std::vector<uint8_t> bytes = glyphString(form);
    o.cbData = int32_t(bytes.size());
    std::memcpy(o.rgbData, bytes.data(), bytes.size());
    o.glyphCache = consoleCache();
    o.opRectExplicit = 1;
    return o;
}

void glyphIndex(benchmark::State &state, Form form) {
    Screen &screen = desk();
    const UiGlyphIndexOrder order = glyphOrder(form);
    const UiClipRect clip = screen.fullClip();
    const auto draw = Plugin::get().slot<UiGlyphIndexFn>(UI_SLOT_GLYPH_INDEX);
    for (auto _ : state) {
        draw(&screen.surface(), &order, &clip);
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(kPixels));
}

void fastGlyph(benchmark::State &state) {
    Screen &screen = desk();
    std::vector<UiFastGlyphOrder> orders(kGlyphs);
    for (int i = 0; i < kGlyphs; ++i) {
        UiFastGlyphOrder &o = orders[size_t(i)];
        o = UiFastGlyphOrder{};
        o.textColor[0] = 0x2e, o.textColor[1] = 0x34, o.textColor[2] = 0x36;
        o.bkLeft = kLeft + i * kCellWidth;
        o.bkTop = kTop;
        o.bkRight = o.bkLeft + kCellWidth;
        o.bkBottom = kTop + kCellHeight;
        o.x = o.bkLeft;
        o.y = kTop;
        o.cbData = 1;
        o.rgbData[0] = uint8_t(kLine[i]);
        o.glyphCache = consoleCache();
    }
    const UiClipRect clip = screen.fullClip();
    const auto draw = Plugin::get().slot<UiFastGlyphFn>(UI_SLOT_FAST_GLYPH);
    for (auto _ : state) {
        for (const UiFastGlyphOrder &o : orders) draw(&screen.surface(), &o, &clip);
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(kPixels));
}

void drawChar(benchmark::State &state) {
    Screen &screen = desk();
    const auto draw = Plugin::get().slot<UiDrawChar8x16Fn>(UI_SLOT_DRAW_CHAR_8X16);
    bool ok = true;
    for (auto _ : state) {
        for (int i = 0; i < kGlyphs; ++i)
            ok &= draw(&screen.image(), &screen.dirty(), kLeft + i * kCellWidth, kTop, consoleCell(kLine[i]),
                       0x2e3436);
        benchmark::ClobberMemory();
    }
    if (!ok) state.SkipWithError("a cell did not fit");
    count(state, pixelsOf(kPixels));
}

}  // namespace

void registerText() {
    const std::string size = "80 glyphs 8x16";
    add({"text/glyphIndex fixed advance/" + size, [](benchmark::State &st) { glyphIndex(st, Form::fixed); }});
    add({"text/glyphIndex opaque background/" + size, [](benchmark::State &st) { glyphIndex(st, Form::opaque); }});
    add({"text/glyphIndex fragments/" + size, [](benchmark::State &st) { glyphIndex(st, Form::fragments); }});
    add({"text/glyphIndex delta mode/" + size, [](benchmark::State &st) { glyphIndex(st, Form::delta); }});
    add({"text/glyphIndex delta mode, fragments/" + size,
         [](benchmark::State &st) { glyphIndex(st, Form::deltaFragments); }});
    add({"text/fastGlyph x 80/" + size, fastGlyph});
    add({"text/drawChar8x16 x 80/" + size, drawChar});
}

}  // namespace bench
