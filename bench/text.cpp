// Text: GlyphIndex strings of 80 glyphs of 8 x 16 (fixed advance, with an
// opaque background, with fragments, in delta mode, in delta mode with
// fragments), the same line as 80 FastGlyph orders, and 80 character cells
// through drawChar8x16.  The glyphs are the demo's console face (glyphs.h).
#include <cstring>
#include <string>
#include <vector>

#include "glyphs.h"
#include "harness.h"

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
    const UiGlyphIndexOrder order = glyphOrder(form);
    const kit::Table &t = table();
    UiSurface &surface = desk().surface();
    const UiClipRect clip = desk().all();
    repeat(state, kPixels, [&] { t.glyphIndex(surface, order, clip); });
}

void fastGlyph(benchmark::State &state) {
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
    const kit::Table &t = table();
    UiSurface &surface = desk().surface();
    const UiClipRect clip = desk().all();
    repeat(state, kPixels, [&] {
        for (const UiFastGlyphOrder &o : orders) t.fastGlyph(surface, o, clip);
    });
}

void drawChar(benchmark::State &state) {
    const kit::Table &t = table();
    kit::Frame &f = desk();
    bool ok = true;
    repeat(state, kPixels, [&] {
        for (int i = 0; i < kGlyphs; ++i)
            ok &= t.drawChar8x16(&f.image(), &f.dirty(), kLeft + i * kCellWidth, kTop, consoleCell(kLine[i]), 0x2e3436);
    });
    if (!ok) state.SkipWithError("a cell did not fit");
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
