#include "plugin.h"

#include <cstdarg>
#include <cstdio>

namespace demo {
namespace {

constexpr const char *kSlotNames[UI_SLOT_COUNT] = {
    "bitmapUpdate", "dstBlt", "patBlt", "scrBlt", "drawLine", "opaqueRect", "glyphIndex",
    "fastGlyph", "decodeBitmap", "memBlt", "setSourceBytesPerPixel4", "fillBufferRect", "drawChar8x16",
    "hLine", "vLine", "setSourceByteOrder", "putPixels", "copyRect", "zrleRawTile", "zrleSolidTile",
    "zrlePackedPaletteTile", "zrlePlainRleTile", "zrlePaletteRleTile", "importImage32", "hextileRect"};

// The log callback has no context argument: reports go to the slot being
// called at the time, or count as unattributed (during srn_get).
SlotStats *current = nullptr;
int currentSlot = -1;
long unattributed = 0;
int printed = 0;
constexpr int kPrintLimit = 20;

int logReport(const char *level, const char *module, int site, const char *format, ...) {
    ++(current != nullptr ? current->reports : unattributed);
    if (printed++ < kPrintLimit) {
        char text[256];
        va_list args;
        va_start(args, format);
        std::vsnprintf(text, sizeof text, format, args);
        va_end(args);
        std::fprintf(stderr, "report during %s: %s %s %d: %s\n", currentSlot >= 0 ? kSlotNames[currentSlot] : "srn_get",
                     level, module, site, text);
    }
    return 0;
}

}  // namespace

const char *slotName(int slot) { return slot >= 0 && slot < UI_SLOT_COUNT ? kSlotNames[slot] : "?"; }

bool Plugin::load(const std::string &path, const UiConfig &config, std::string &error) {
    return t_.load(path, &logReport, config, error);
}

long Plugin::totalReports() const {
    long n = unattributed;
    for (const SlotStats &s : stats_) n += s.reports;
    return n;
}

int Plugin::zrleSlot(int32_t subencoding) {
    return subencoding == 0     ? UI_SLOT_ZRLE_RAW_TILE
           : subencoding == 1   ? UI_SLOT_ZRLE_SOLID_TILE
           : subencoding == 128 ? UI_SLOT_ZRLE_PLAIN_RLE_TILE
           : subencoding > 128  ? UI_SLOT_ZRLE_PALETTE_RLE_TILE
                                : UI_SLOT_ZRLE_PACKED_PALETTE_TILE;
}

void Plugin::begin(int slot, dirtybuf *dirty) {
    current = &stats_[size_t(slot)];
    currentSlot = slot;
    ++current->calls;
    if (dirty != nullptr) dirty->changed = 0;
}

void Plugin::end(dirtybuf *dirty, bool ok) {
    if (dirty != nullptr && dirty->changed) ++current->marked;
    if (!ok) ++current->failed;
    current = nullptr;
    currentSlot = -1;
}

}  // namespace demo
