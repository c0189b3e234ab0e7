#include "plugin.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <tuple>
#include <type_traits>
#include <utility>

namespace demo {
namespace {

constexpr const char *kSlotNames[UI_SLOT_COUNT] = {
    "bitmapUpdate", "dstBlt", "patBlt", "scrBlt", "drawLine", "opaqueRect", "glyphIndex",
    "fastGlyph", "decodeBitmap", "memBlt", "setSourceBytesPerPixel4", "fillBufferRect", "drawChar8x16",
    "hLine", "vLine", "setSourceByteOrder", "putPixels", "copyRect", "zrleRawTile", "zrleSolidTile",
    "zrlePackedPaletteTile", "zrlePlainRleTile", "zrlePaletteRleTile", "importImage32", "hextileRect"};

// The slots' function types in slot order.
using SlotTypes = std::tuple<UiBitmapUpdateFn, UiDstBltFn, UiPatBltFn, UiScrBltFn, UiDrawLineFn, UiOpaqueRectFn,
                             UiGlyphIndexFn, UiFastGlyphFn, UiDecodeBitmapFn, UiMemBltFn, UiSetSourceBytesPerPixel4Fn,
                             UiFillBufferRectFn, UiDrawChar8x16Fn, UiHLineFn, UiVLineFn, UiSetSourceByteOrderFn,
                             UiPutPixelsFn, UiCopyRectFn, UiZrleRawTileFn, UiZrleSolidTileFn, UiZrlePackedPaletteTileFn,
                             UiZrlePlainRleTileFn, UiZrlePaletteRleTileFn, UiImportImage32Fn, UiHextileRectFn>;
static_assert(std::tuple_size_v<SlotTypes> == UI_SLOT_COUNT);

kit::Table library;  // the module's own slots
std::array<SlotStats, UI_SLOT_COUNT> stats;
// The log callback has no context argument: reports go to the slot being
// called at the time, or count as unattributed.
int current = -1;
long unattributed = 0;
int printed = 0;
constexpr int kPrintLimit = 20;

int logReport(const char *level, const char *module, int site, const char *format, ...) {
    ++(current >= 0 ? stats[size_t(current)].reports : unattributed);
    if (printed++ < kPrintLimit) {
        char text[256];
        va_list args;
        va_start(args, format);
        std::vsnprintf(text, sizeof text, format, args);
        va_end(args);
        std::fprintf(stderr, "report during %s: %s %s %d: %s\n", current >= 0 ? kSlotNames[current] : "srn_get", level,
                     module, site, text);
    }
    return 0;
}

// The tile map a call draws into, found among its arguments.
dirtybuf *dirtyOf(UiSurface *surface) { return &surface->dirty; }
dirtybuf *dirtyOf(dirtybuf *dirty) { return dirty; }
dirtybuf *dirtyOf(UiTileStream *tile) { return tile->dirty; }
template <typename T>
dirtybuf *dirtyOf(T) { return nullptr; }

template <int Slot, typename Fn>
struct Counted;

template <int Slot, typename R, typename... A>
struct Counted<Slot, R (*)(A...)> {
    static R call(A... args) {
        dirtybuf *dirty = nullptr;
        ((dirty = dirty != nullptr ? dirty : dirtyOf(args)), ...);
        SlotStats &s = stats[Slot];
        ++s.calls;
        if (dirty != nullptr) dirty->changed = 0;
        current = Slot;
        const auto finish = [&](bool ok) {
            current = -1;
            s.marked += dirty != nullptr && dirty->changed;
            s.failed += !ok;
        };
        if constexpr (std::is_void_v<R>) {
            library.slot<R (*)(A...)>(Slot)(args...);
            finish(true);
        } else {
            const R result = library.slot<R (*)(A...)>(Slot)(args...);
            finish(result == 1);
            return result;
        }
    }
};

}  // namespace

bool loadCounted(const std::string &path, const UiConfig &config, kit::Table &table, std::string &error) {
    if (!library.load(path, &logReport, config, error)) return false;
    [&]<size_t... S>(std::index_sequence<S...>) {
        ((table.slots[S] = reinterpret_cast<void *>(&Counted<int(S), std::tuple_element_t<S, SlotTypes>>::call)), ...);
    }(std::make_index_sequence<UI_SLOT_COUNT>{});
    return true;
}

const char *slotName(int slot) { return slot >= 0 && slot < UI_SLOT_COUNT ? kSlotNames[slot] : "?"; }

const SlotStats &slotStats(int slot) { return stats[size_t(slot)]; }

long totalCalls() {
    long n = 0;
    for (const SlotStats &s : stats) n += s.calls;
    return n;
}

long totalReports() {
    long n = unattributed;
    for (const SlotStats &s : stats) n += s.reports;
    return n;
}

}  // namespace demo
