// The demo desktop.  It is drawn the way a remote-desktop client would draw
// what a server sends: the wallpaper arrives as compressed bitmap updates,
// windows as orders (rectangles, brushes, lines, text), a remote machine's
// screen as RFB tiles, and the client adds its own task bar, console and
// pointer with the direct primitives.  Four frames; the tile map is cleared
// after each, as a client does once it has presented the changed tiles.
#include "scene.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "font.h"
#include "pictures.h"
#include "plugin.h"
#include "text.h"

namespace demo {
namespace {

constexpr uint32_t kFace = rgb(212, 208, 200);
constexpr uint32_t kShadow = rgb(128, 128, 128);
constexpr uint32_t kDark = rgb(64, 64, 64);
constexpr uint32_t kWhite = 0xFFFFFF;
constexpr uint32_t kBlack = 0;
constexpr int kTaskbarTop = 736;
constexpr uint8_t kDither[8] = {0xAA, 0x55, 0xAA, 0x55, 0xAA, 0x55, 0xAA, 0x55};

// Raster operations by their table index (copy is 12).
enum Rop2 { kRopBlack = 0, kRopNotCopy = 3, kRopInvert = 5, kRopXor = 6, kRopMask = 8, kRopCopy = 12, kRopMerge = 14 };

UiClipRect clipOf(int x, int y, int w, int h) { return {x, y, x + w - 1, y + h - 1}; }

struct Window {
    int x, y, w, h;
    const char *title;
    bool active;
    int clientX() const { return x + 4; }
    int clientY() const { return y + 26; }
    int clientW() const { return w - 8; }
    int clientH() const { return h - 30; }
    UiClipRect clip() const { return clipOf(x, y, w, h); }
    UiClipRect clientClip() const { return clipOf(clientX(), clientY(), clientW(), clientH()); }
};

const Window kTerminal{92, 14, 488, 262, "Terminal", false};
const Window kRemote{728, 14, 280, 356, "desk-02 (remote)", false};
const Window kPaint{92, 290, 360, 332, "Paint", false};
const Window kPhotos{470, 296, 284, 266, "Photos", false};
const Window kNotes{560, 408, 420, 310, "Notes", true};
const Window *const kWindows[] = {&kTerminal, &kRemote, &kPaint, &kPhotos, &kNotes};

using Encoder = kit::Bytes (*)(const Picture &);

// The Hextile read callback has no context argument: the bytes of the
// rectangle being decoded wait here.
struct HextileSource {
    const uint8_t *ptr = nullptr;
    size_t left = 0;
    long reads = 0;
} hextileSource;

int readHextile(uint8_t *buffer, int32_t length) {
    if (length < 0 || size_t(length) > hextileSource.left) return 0;
    std::memcpy(buffer, hextileSource.ptr, size_t(length));
    hextileSource.ptr += length;
    hextileSource.left -= size_t(length);
    ++hextileSource.reads;
    return 1;
}

// A record whose image holds more rows than UiImage32Record declares.
struct PointerRecord {
    UiImage32Record record;
    uint32_t moreRows[31 * 32];
};

class Scene {
public:
    Scene(const kit::Table &table, kit::Frame &screen)
        : t_(table), s_(screen), img_(&screen.image()), dirty_(&screen.dirty()), small_(makeFont(1)),
          large_(makeFont(2)), fixed_(makeFont(1, 6)), icons_(kIconCount * 3, 128), symbols_(kSymbolCount, 8) {
        for (int i = 0; i < kIconCount; ++i) {
            const std::vector<IconLayer> layers = iconLayers(Icon(i));
            for (size_t l = 0; l < layers.size(); ++l) {
                icons_.store(i * 3 + int(l), layers[l].mask, 0, 0);
                iconColours_[i][l] = layers[l].colour;
            }
        }
        for (int i = 0; i < kSymbolCount; ++i) symbols_.store(i, symbol(Symbol(i)), 0, 0);
    }

    SceneReport run() {
        frameWallpaper();
        endFrame("wallpaper");
        frameDesktop();
        endFrame("desktop");
        frameWindows();
        endFrame("windows");
        frameActivity();
        report_.lastFrameTiles = s_.markedTiles();
        endFrame("activity");
        check("guard bands around frame and tile map", 0, 0, s_.guardsIntact() ? nullptr : "a guard word changed");
        return report_;
    }

private:
    // ---------------------------------------------------------------------
    // Bookkeeping
    // ---------------------------------------------------------------------

    void endFrame(const char *name) {
        char line[160];
        const long calls = totalCalls();
        std::snprintf(line, sizeof line, "frame %zu %-10s %5ld calls, %3zu of %d tiles marked",
                      report_.frames.size() + 1, name, calls - callsAtFrameStart_, s_.markedTiles().size(),
                      dirty_->columns * dirty_->rows);
        report_.frames.push_back(line);
        callsAtFrameStart_ = calls;
        s_.clearTiles();
    }

    // A check's line: ok, or FAILED with the pixels that differ or, when the
    // check is not about pixels or the decoding itself failed, `why`.
    void check(const char *what, long mismatches, long total, const char *why = nullptr) {
        char line[200];
        if (why != nullptr) std::snprintf(line, sizeof line, "check %-40s FAILED: %s", what, why);
        else if (total == 0) std::snprintf(line, sizeof line, "check %-40s ok", what);
        else if (mismatches == 0) std::snprintf(line, sizeof line, "check %-40s ok (%ld pixels)", what, total);
        else std::snprintf(line, sizeof line, "check %-40s FAILED: %ld of %ld pixels differ", what, mismatches, total);
        report_.checks.push_back(line);
        report_.failedChecks += why != nullptr || mismatches != 0;
    }

    // Compares a screen area with the picture that was sent for it.
    void checkScreen(const char *what, const Picture &picture, int x0, int y0) {
        long bad = 0;
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x)
                bad += ((s_.at(x0 + x, y0 + y) ^ picture.at(x, y)) & 0xFFFFFF) != 0;
        check(what, bad, long(picture.width) * picture.height);
    }

    // ---------------------------------------------------------------------
    // Order helpers
    // ---------------------------------------------------------------------

    // A picture as the client's own 4-byte pixels, rows `rowLength` pixels
    // apart: bytes red, green, blue in byte order 0, blue, green, red in 1.
    static std::vector<uint8_t> clientPixels(const Picture &p, uint8_t order, int rowLength) {
        std::vector<uint8_t> bytes(size_t(rowLength) * 4 * size_t(p.height), 0);
        for (int y = 0; y < p.height; ++y)
            for (int x = 0; x < p.width; ++x) {
                const uint32_t c = p.at(x, y);
                uint8_t *b = &bytes[(size_t(y) * size_t(rowLength) + size_t(x)) * 4];
                const uint32_t first = order == 0 ? c >> 16 : c, last = order == 0 ? c : c >> 16;
                b[0] = uint8_t(first), b[1] = uint8_t(c >> 8), b[2] = uint8_t(last);
            }
        return bytes;
    }

    void putPicture(const char *what, const Picture &p, int x, int y, uint8_t order) {
        t_.setSourceByteOrder(order);
        t_.putPixels(img_, dirty_, UiRect{x, y, p.width, p.height}, clientPixels(p, order, p.width).data());
        checkScreen(what, p, x, y);
    }

    void solid(int x, int y, int w, int h, uint32_t c, const UiClipRect &clip) {
        const auto rgbc = components(c);
        t_.opaqueRect(s_.surface(), UiOpaqueRectOrder{x, y, w, h, rgbc[0], rgbc[1], rgbc[2]}, clip);
    }

    void line(int x0, int y0, int x1, int y1, uint32_t c, int rop, const UiClipRect &clip) {
        const auto rgbc = components(c);
        t_.drawLine(s_.surface(), UiLineOrder{x0, y0, x1, y1, rop, {rgbc[0], rgbc[1], rgbc[2]}}, clip);
    }

    // Raised (or, with the colours swapped, sunken) edges drawn with LineTo.
    void bevel(int x, int y, int w, int h, uint32_t light, uint32_t dark, const UiClipRect &clip) {
        line(x, y, x + w - 1, y, light, kRopCopy, clip);
        line(x, y, x, y + h - 1, light, kRopCopy, clip);
        line(x, y + h - 1, x + w, y + h - 1, dark, kRopCopy, clip);
        line(x + w - 1, y, x + w - 1, y + h - 1, dark, kRopCopy, clip);
    }

    // The same edges drawn by the client itself with hLine / vLine.
    void clientBevel(int x, int y, int w, int h, uint32_t light, uint32_t dark) {
        t_.hLine(img_, dirty_, x, y, w, light);
        t_.vLine(img_, dirty_, x, y, h, light);
        t_.hLine(img_, dirty_, x, y + h - 1, w, dark);
        t_.vLine(img_, dirty_, x + w - 1, y, h, dark);
    }

    // A PatBlt order; `pattern` gives the 8 x 8 bits of a pattern brush.
    static UiPatBltOrder brush(int x, int y, int w, int h, int rop, uint32_t ones, uint32_t zeros, int style,
                               const uint8_t *pattern = nullptr) {
        UiPatBltOrder o{};
        o.left = x, o.top = y, o.width = w, o.height = h, o.rop = rop, o.brushStyle = style;
        setColour(o.backColor, ones);
        setColour(o.foreColor, zeros);
        if (pattern != nullptr) std::memcpy(o.brushBytes, pattern, 8);
        return o;
    }

    // Text in delta mode; returns the width drawn.
    int text(const Font &font, int x, int baseline, std::string_view s, uint32_t colour, const UiClipRect &clip) {
        GlyphString g(font, book_);
        g.text(s);
        t_.glyphIndex(s_.surface(), textOrder(font, g.bytes(), x, baseline, g.width(), colour), clip);
        return g.width();
    }

    GlyphString small() { return GlyphString(small_, book_); }

    void drawGlyphString(const Font &font, const GlyphString &g, int x, int baseline, uint32_t colour,
                         const UiClipRect &clip) {
        t_.glyphIndex(s_.surface(), textOrder(font, g.bytes(), x, baseline, g.width(), colour), clip);
    }

    // ---------------------------------------------------------------------
    // Frame 1: cache loads and the wallpaper as bitmap updates
    // ---------------------------------------------------------------------

    void sendBitmap(int x, int y, const Picture &tile, const kit::Bytes &data, bool compressed, int bpp) {
        UiBitmapData b{};
        b.destLeft = x, b.destTop = y, b.destRight = x + tile.width - 1, b.destBottom = y + tile.height - 1;
        b.width = tile.width, b.height = tile.height, b.bitsPerPixel = bpp, b.flags = compressed ? 1 : 0;
        b.bitmapLength = data.length();
        b.bitmapDataStream = data.data();
        t_.bitmapUpdate(s_.surface(), b);
    }

    // A bitmap for the client's cache, rows bottom-up as MemBlt reads them:
    // decoded by slot 8 in blocks of at most 64 x 64 (the most an
    // interleaved stream holds) and checked against the picture.
    std::vector<uint32_t> cacheBitmap(const char *what, const Picture &p, bool compressed, Encoder encode) {
        std::vector<uint32_t> bitmap(p.pixels.size()), block;
        bool decoded = true;
        for (int by = 0; by < p.height; by += 64)
            for (int bx = 0; bx < p.width; bx += 64) {
                const Picture piece = p.crop(bx, by, std::min(64, p.width - bx), std::min(64, p.height - by));
                const kit::Bytes data = encode(piece);
                block.assign(piece.pixels.size(), 0);
                decoded &= t_.decodeBitmap(piece.width, piece.height, data.data(), data.length(), compressed,
                                           block.data()) == 1;
                for (int r = 0; r < piece.height; ++r)  // block row r is bitmap row height - by - piece.height + r
                    std::copy_n(&block[size_t(r) * size_t(piece.width)], piece.width,
                                &bitmap[size_t(p.height - by - piece.height + r) * size_t(p.width) + size_t(bx)]);
            }
        if (!decoded) return check(what, 0, 0, "decoder returned 0"), bitmap;
        const std::vector<uint32_t> expected = kit::bottomUp(p);
        long bad = 0;
        for (size_t i = 0; i < expected.size(); ++i) bad += (bitmap[i] & 0xFFFFFF) != expected[i];
        check(what, bad, long(expected.size()));
        return bitmap;
    }

    // The wallpaper in 64 x 64 bitmap updates: the bottom half (water and
    // meadow) interleaved at 24 bits, then, from 32-bit sources on, the sky
    // in planar tiles, mostly run-length planes, some raw, some with alpha.
    // One tile of each half goes uncompressed.
    void frameWallpaper() {
        wallpaper_ = wallpaper(s_.width(), s_.height());
        // Bitmaps the later orders take from the client's bitmap cache,
        // while the source depth is still 3 bytes.
        photo_ = cacheBitmap("decodeBitmap interleaved photo", lakePhoto(256, 160), true, kit::interleavedImages);
        toolbar_ = cacheBitmap("decodeBitmap raw 24-bit toolbar", toolbarIcons(), false,
                               [](const Picture &p) { return kit::rawBitmap(p, 3); });
        int tiles[3] = {};  // interleaved, planar, raw
        long bytes[3] = {};
        for (const bool sky : {false, true}) {
            if (sky) {
                t_.setSourceBytesPerPixel4();
                thumbs_ = cacheBitmap("decodeBitmap planar thumbnails", thumbnailStrip(), true,
                                      [](const Picture &p) { return kit::planar(p, true, true); });
            }
            // Interleaved tiles are rows of colour images: the peer codec
            // library's encoder does not give most of these pictures back
            // (its own decoder disagrees with its streams), and every picture
            // here is checked.
            for (int ty = sky ? 0 : 6; ty < (sky ? 6 : 12); ++ty)
                for (int tx = 0; tx < 16; ++tx) {
                    const Picture tile = wallpaper_.crop(tx * 64, ty * 64, 64, 64);
                    const int kind = (tx == 3 && ty == 10) || (tx == 12 && ty == 1) ? 2 : sky ? 1 : 0;
                    const int variant = (tx + ty) % 8;
                    const kit::Bytes data = kind == 2 ? kit::rawBitmap(tile, sky ? 4 : 3)
                                            : sky     ? kit::planar(tile, variant >= 2, variant >= 1 && variant <= 3)
                                                      : kit::interleavedImages(tile);
                    ++tiles[kind];
                    bytes[kind] += data.length();
                    sendBitmap(tx * 64, ty * 64, tile, data, kind != 2, sky ? 32 : 24);
                }
        }
        checkScreen("wallpaper from bitmap updates", wallpaper_, 0, 0);
        char note[300];
        std::snprintf(note, sizeof note, "wallpaper: %d interleaved tiles (%ld bytes), %d planar tiles (%ld bytes), "
                      "%d raw tiles (%ld bytes)", tiles[0], bytes[0], tiles[1], bytes[1], tiles[2], bytes[2]);
        report_.notes.push_back(note);
    }

    // ---------------------------------------------------------------------
    // Frame 2: desktop icons and the client's task bar
    // ---------------------------------------------------------------------

    void frameDesktop() {
        static const char *const labels[kIconCount] = {"Computer", "Documents", "Network", "Trash"};
        const UiClipRect screen = s_.all();
        for (int i = 0; i < kIconCount; ++i) {
            const int x = 26, y = 22 + 88 * i;
            for (int l = 0; l < 3; ++l)
                t_.fastGlyph(s_.surface(), glyphOrder(icons_, i * 3 + l, x, y, iconColours_[i][l]), screen);
            const int baseline = y + 46;
            const int width = small_.width(labels[i]);
            const int left = 42 - width / 2;
            if (i == 0) {  // the selected icon: white on blue, opaque rectangle given explicitly
                GlyphString g(small_, book_);
                g.text(labels[i]);
                UiGlyphIndexOrder o = textOrder(small_, g.bytes(), left, baseline, g.width(), kWhite);
                setColour(o.opaqueColor, rgb(10, 36, 106));
                o.opLeft = left - 2, o.opTop = baseline - small_.ascent - 2;
                o.opRight = left + g.width() + 1, o.opBottom = baseline + small_.descent + 2;
                t_.glyphIndex(s_.surface(), o, screen);
                continue;
            }
            // A shadow, stored as a fragment, then the label again from it.
            drawGlyphString(small_, small().text(labels[i]).store(10 + i), left + 1, baseline + 1, kBlack, screen);
            drawGlyphString(small_, small().replay(10 + i), left, baseline, kWhite, screen);
        }
        taskbar();
    }

    void taskbar() {
        const UiClipRect screen = s_.all();
        t_.fillBufferRect(img_, dirty_, UiRect{0, kTaskbarTop, s_.width(), s_.height() - kTaskbarTop}, kFace);
        t_.hLine(img_, dirty_, 0, kTaskbarTop + 1, s_.width(), kWhite);
        clientBevel(2, kTaskbarTop + 4, 60, 26, kWhite, kDark);
        text(large_, 8, kTaskbarTop + 22, "Start", kBlack, screen);
        t_.vLine(img_, dirty_, 66, kTaskbarTop + 4, 26, kShadow);
        for (int i = 0; i < 5; ++i) {
            const Window &w = *kWindows[i];
            const int x = 72 + 146 * i, y = kTaskbarTop + 4;
            const UiClipRect clip = clipOf(x + 2, y + 2, 138, 22);
            if (w.active) {  // pressed: dithered face, sunken edges
                t_.patBlt(s_.surface(), brush(x, y, 142, 26, kRopCopy, kWhite, kFace, 3, kDither), screen);
                clientBevel(x, y, 142, 26, kDark, kWhite);
            } else {
                clientBevel(x, y, 142, 26, kWhite, kDark);
            }
            text(small_, x + 8, y + 16, w.title, kBlack, clip);
        }
        clientBevel(930, kTaskbarTop + 4, 90, 26, kShadow, kWhite);
        clock("08:41");
    }

    // The clock: FastIndex form (opaque rectangle flags select the whole
    // background rectangle) with a fixed advance.
    void clock(const char *time) {
        UiGlyphIndexOrder o{};
        setColour(o.textColor, kBlack);
        setColour(o.opaqueColor, kFace);
        o.ulCharInc = 7;
        o.bkLeft = 950, o.bkTop = kTaskbarTop + 8, o.bkRight = 1010, o.bkBottom = kTaskbarTop + 24;
        o.opTop = 0x0F;  // top, right, bottom and left from the background rectangle
        o.opBottom = -32768;
        o.x = 958;
        o.y = kTaskbarTop + 20;
        o.cbData = int32_t(std::strlen(time));
        std::memcpy(o.rgbData, time, size_t(o.cbData));
        o.glyphCache = small_.cache.descriptor();
        o.opRectExplicit = 0;
        t_.glyphIndex(s_.surface(), o, s_.all());
    }

    // ---------------------------------------------------------------------
    // Frame 3: the windows, back to front
    // ---------------------------------------------------------------------

    void windowFrame(const Window &w) {
        const UiClipRect clip = w.clip();
        solid(w.x, w.y, w.w, w.h, kFace, clip);
        bevel(w.x, w.y, w.w, w.h, kWhite, kDark, clip);
        bevel(w.x + 1, w.y + 1, w.w - 2, w.h - 2, kFace, kShadow, clip);
        const int tx = w.x + 4, ty = w.y + 4, tw = w.w - 8, th = 20;
        if (w.active) {
            for (int band = 0; band < 32; ++band) {
                const int x0 = tx + tw * band / 32, x1 = tx + tw * (band + 1) / 32;
                solid(x0, ty, x1 - x0, th, mix(rgb(0, 0, 128), rgb(16, 132, 208), band / 31.0), clip);
            }
        } else {
            t_.patBlt(s_.surface(), brush(tx, ty, tw, th, kRopCopy, rgb(120, 120, 120), rgb(160, 160, 160), 3, kDither),
                      clip);
        }
        const UiClipRect titleClip = clipOf(tx, ty, tw - 60, th);
        text(large_, tx + 6, ty + 16, w.title, w.active ? kWhite : kFace, titleClip);
        for (int i = 0; i < 3; ++i) {
            const int bx = tx + tw - 18 * (3 - i) - 2, by = ty + 3;
            solid(bx, by, 16, 14, kFace, clip);
            bevel(bx, by, 16, 14, kWhite, kDark, clip);
            const Symbol sym = i == 0 ? kMinimise : i == 1 ? kMaximise : kClose;
            t_.fastGlyph(s_.surface(), glyphOrder(symbols_, sym, bx + 4, by + 3, kBlack), clip);
        }
    }

    void menuBar(const Window &w) {
        const UiClipRect clip = clipOf(w.clientX(), w.clientY(), w.clientW(), 14);
        const int baseline = w.clientY() + 10;
        GlyphString g(small_, book_);
        if (book_.slots[1].used) g.replay(1);  // the first menu stores the glyph run; later ones replay it
        else g.text("File").gap(10).text("Edit").gap(10).text("View").gap(10).text("Help").store(1);
        drawGlyphString(small_, g, w.clientX() + 6, baseline, kBlack, clip);
    }

    void frameWindows() {
        terminalWindow();
        remoteWindow();
        paintWindow();
        photosWindow();
        notesWindow();
    }

    // Terminal: the client's own console, 8 x 16 cells.
    static constexpr int kConsoleColumns = 60, kConsoleRows = 14;
    int consoleRow_ = 0;

    int consoleX() const { return kTerminal.clientX(); }
    int consoleY() const { return kTerminal.clientY() + 4; }

    void consoleLine(std::string_view s) {
        if (consoleRow_ == kConsoleRows) {  // scroll up one row
            const int bottom = consoleY() + (kConsoleRows - 1) * 16;
            t_.copyRect(img_, dirty_, UiRect{consoleX(), consoleY(), kConsoleColumns * 8, bottom - consoleY()},
                        consoleX(), consoleY() + 16);
            t_.fillBufferRect(img_, dirty_, UiRect{consoleX(), bottom, kConsoleColumns * 8, 16}, kBlack);
            --consoleRow_;
        }
        const bool prompt = s.substr(0, 5) == "user@";
        const size_t promptEnd = prompt ? s.find('$') + 1 : 0;
        for (size_t i = 0; i < s.size() && i < size_t(kConsoleColumns); ++i) {
            if (s[i] == ' ') continue;
            const uint32_t colour = i < promptEnd ? rgb(96, 224, 112) : prompt ? kWhite : rgb(190, 190, 190);
            const Cell8x16 cell = consoleCell(s[i]);
            t_.drawChar8x16(img_, dirty_, consoleX() + int(i) * 8, consoleY() + consoleRow_ * 16, cell.data(),
                            colour);
        }
        ++consoleRow_;
    }

    void terminalWindow() {
        windowFrame(kTerminal);
        t_.fillBufferRect(img_, nullptr,
                          UiRect{kTerminal.clientX(), kTerminal.clientY(), kTerminal.clientW(), kTerminal.clientH()},
                          kBlack);
        static const char *const session[] = {
            "user@thin-07:~$ uname -m",
            "armv7l",
            "user@thin-07:~$ ls /usr/lib/ui32",
            "ui32.so",
            "user@thin-07:~$ pkg-config --variable=plugindir ui32",
            "/usr/lib/ui32",
            "user@thin-07:~$ remote-session --size 1024x768 desk-02",
            "connecting to desk-02 ...",
            "session: 32 bpp, interleaved and planar bitmaps",
            "glyph caches: 5, fragment store 64 KiB",
            "frame 1: wallpaper, 192 bitmap updates",
            "frame 2: desktop icons and task bar",
            "frame 3: five windows",
            "rfb view: 12 zrle tiles, 1 hextile rectangle",
            "user@thin-07:~$ tail -f /var/log/session.log",
            "08:41:02 tiles presented: 768",
        };
        for (const char *s : session) consoleLine(s);
    }

    // Remote view: a second machine's screen as ZRLE tiles and Hextile.
    void remoteWindow() {
        windowFrame(kRemote);
        const Window &w = kRemote;
        t_.dstBlt(s_.surface(), UiDstBltOrder{w.clientX(), w.clientY(), w.clientW(), w.clientH(), 0}, w.clientClip());
        t_.setSourceByteOrder(1);
        const Picture desktop = remoteDesktop();
        const int zx = kRemote.clientX() + 8, zy = kRemote.clientY() + 4;
        const kit::Bytes zrle = kit::zrleRect(desktop);
        UiTileStream tile{};
        tile.image = img_, tile.dirty = dirty_, tile.ptr = zrle.data(), tile.left = zrle.length();
        bool painted = true;
        for (int ty = 0; ty < desktop.height; ty += 64)
            for (int tx = 0; tx < desktop.width && tile.left > 0; tx += 64) {
                const int sub = *tile.ptr++;  // the client reads the sub-encoding itself
                --tile.left;
                tile.x = zx + tx, tile.y = zy + ty;
                tile.width = std::min(64, desktop.width - tx), tile.height = std::min(64, desktop.height - ty);
                painted &= t_.zrleTile(sub, tile) == 1;
            }
        if (painted && tile.left == 0) checkScreen("ZRLE tiles of the remote desktop", desktop, zx, zy);
        else check("ZRLE tiles of the remote desktop", 0, 0, "a tile failed or bytes were left over");
        char note[200];
        std::snprintf(note, sizeof note, "zrle: %dx%d rectangle, %d tiles in %d bytes", desktop.width, desktop.height,
                      (desktop.width + 63) / 64 * ((desktop.height + 63) / 64), zrle.length());
        report_.notes.push_back(note);

        const Picture document = remoteDocument();
        const kit::Bytes hextile = kit::hextile(document);
        hextileSource = {hextile.data(), hextile.size(), 0};
        const int hx = zx, hy = zy + desktop.height + 4;
        if (t_.hextileRect(img_, dirty_, UiRect{hx, hy, document.width, document.height}, &readHextile) == 1 &&
            hextileSource.left == 0)
            checkScreen("Hextile rectangle of the remote document", document, hx, hy);
        else check("Hextile rectangle of the remote document", 0, 0, "decoder failed or left bytes unread");
        std::snprintf(note, sizeof note, "hextile: %dx%d rectangle, %zu bytes in %ld reads", document.width,
                      document.height, hextile.size(), hextileSource.reads);
        report_.notes.push_back(note);
    }

    void memBlt(int x, int y, int w, int h, int rop, int srcX, int srcY, const std::vector<uint32_t> &bitmap,
                int bitmapW, int bitmapH, const UiClipRect &clip) {
        UiMemBltOrder o{};
        o.left = x, o.top = y, o.width = w, o.height = h, o.rop = rop;
        o.srcLeft = srcX, o.srcTop = srcY;
        o.bitmapWidth = bitmapW, o.bitmapHeight = bitmapH, o.bitmapPixels = bitmap.data();
        t_.memBlt(s_.surface(), o, clip);
    }

    // Paint: toolbar from a cached bitmap, brushes of every kind, client
    // pixel imports and lines through several raster operations.
    void paintWindow() {
        const Window &w = kPaint;
        windowFrame(w);
        const UiClipRect client = w.clientClip();
        solid(w.clientX(), w.clientY(), w.clientW(), w.clientH(), kFace, client);
        menuBar(w);
        for (int i = 0; i < 6; ++i)
            memBlt(w.clientX() + 4 + 22 * i, w.clientY() + 17, 16, 16, 0xCC, 16 * i, 0, toolbar_, 96, 16, client);
        line(w.clientX() + 136, w.clientY() + 16, w.clientX() + 136, w.clientY() + 36, kShadow, kRopCopy, client);

        const int cx = w.clientX() + 4, cy = w.clientY() + 42, cw = w.clientW() - 8, ch = w.clientH() - 46;
        const UiClipRect canvas = clipOf(cx, cy, cw, ch);
        t_.dstBlt(s_.surface(), UiDstBltOrder{cx, cy, cw, ch, 0xFF}, canvas);

        // Row 1: the six hatches.
        static const uint32_t hatchInk[6] = {rgb(0, 0, 160), rgb(160, 0, 0), rgb(0, 120, 0), rgb(120, 0, 120),
                                             rgb(0, 100, 140), rgb(40, 40, 40)};
        for (int i = 0; i < 6; ++i) {
            UiPatBltOrder o = brush(cx + 8 + 56 * i, cy + 8, 50, 26, kRopCopy, hatchInk[i], kWhite, 2);
            o.brushBytes[0] = uint8_t(i);
            t_.patBlt(s_.surface(), o, canvas);
        }
        // Row 2: pattern brush, cached monochrome and colour brushes, solid.
        {
            const uint8_t bricks[8] = {0xFF, 0x80, 0x80, 0x80, 0xFF, 0x08, 0x08, 0x08};
            UiPatBltOrder o = brush(cx + 8, cy + 40, 76, 30, kRopCopy, rgb(250, 240, 230), rgb(178, 58, 34), 3, bricks);
            o.brushOrgX = 3;
            t_.patBlt(s_.surface(), o, canvas);
        }
        static const uint8_t weave[8] = {0xF0, 0x78, 0x3C, 0x1E, 0x0F, 0x87, 0xC3, 0xE1};
        {
            UiPatBltOrder o = brush(cx + 92, cy + 40, 76, 30, kRopCopy, rgb(30, 60, 150), rgb(200, 220, 250), 0x81);
            o.brushData = weave;
            t_.patBlt(s_.surface(), o, canvas);
        }
        tartan_.resize(64);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                uint32_t c = rgb(20, 90, 40);
                if (x == 2 || x == 3) c = rgb(170, 20, 30);
                if (y == 2 || y == 3) c = (x == 2 || x == 3) ? rgb(90, 10, 20) : rgb(170, 20, 30);
                if (x == 6 || y == 6) c = rgb(240, 210, 60);
                tartan_[size_t(y * 8 + x)] = c;
            }
        {
            UiPatBltOrder o = brush(cx + 176, cy + 40, 76, 30, kRopCopy, 0, 0, 0x85);
            o.brushData = reinterpret_cast<const uint8_t *>(tartan_.data());
            t_.patBlt(s_.surface(), o, canvas);
        }
        t_.patBlt(s_.surface(), brush(cx + 260, cy + 40, 76, 30, kRopCopy, 0, rgb(60, 170, 90), 0), canvas);
        // An inverting rectangle across the last two swatches (xor with white).
        t_.patBlt(s_.surface(), brush(cx + 220, cy + 48, 100, 16, kRopXor, 0, kWhite, 0), canvas);

        // The client's own pixels: a colour picker (bytes red, green, blue)
        // and a palette (bytes blue, green, red).
        const int px = cx + 8, py = cy + 80;
        putPicture("putPixels colour picker (byte order 0)", colourPicker(128, 64), px, py, 0);
        putPicture("putPixels palette (byte order 1)", paletteSwatches(128, 32), px, py + 70, 1);
        // Sixteen lines down the picker, one per raster operation, and three
        // across it: invert, mask (and) and merge (or).
        for (int rop = 0; rop < 16; ++rop)
            line(px + 4 + 8 * rop, py, px + 4 + 8 * rop, py + 64, rgb(0, 160, 255), rop, canvas);
        line(px, py + 12, px + 128, py + 12, 0, kRopInvert, canvas);
        line(px, py + 30, px + 128, py + 30, rgb(255, 255, 0), kRopMask, canvas);
        line(px, py + 48, px + 128, py + 48, rgb(0, 0, 255), kRopMerge, canvas);

        // A vertical caption: glyphs advance downward.
        {
            GlyphString g(fixed_, book_);
            const char *caption = "COLOURS";
            for (const char *c = caption; *c; ++c) g.text(std::string_view(c, 1)).gap(10 - fixed_.advance[uint8_t(*c)]);
            UiGlyphIndexOrder o = textOrder(fixed_, g.bytes(), px + 136, py + 8, 8, rgb(80, 80, 80));
            o.flAccel = 0x04;
            o.bkTop = py;
            o.bkBottom = py + 80;
            t_.glyphIndex(s_.surface(), o, canvas);
        }

        // Line art, clipped to its own area.
        const int lx = cx + 160, ly = py, lw = cw - 168, lh = ch - 88;
        const UiClipRect art = clipOf(lx, ly, lw, lh);
        for (int gx = lx; gx < lx + lw; gx += 16) line(gx, ly, gx, ly + lh, rgb(224, 228, 236), kRopCopy, art);
        for (int gy = ly; gy < ly + lh; gy += 16) line(lx, gy, lx + lw, gy, rgb(224, 228, 236), kRopCopy, art);
        const int ox = lx + lw / 2, oy = ly + lh / 2 - 10;
        for (int i = 0; i < 36; ++i) {
            const double a = i * 3.14159265358979 / 18;
            const uint32_t colour = mix(rgb(230, 40, 40), rgb(40, 40, 230), std::fabs(std::sin(a)));
            line(ox, oy, ox + int(std::lround(150 * std::cos(a))), oy + int(std::lround(150 * std::sin(a))), colour,
                 kRopCopy, art);
        }
        // A sine curve as a polyline.
        int prevX = lx, prevY = ly + lh - 14;
        for (int x = lx + 6; x <= lx + lw; x += 6) {
            const int y = ly + lh - 14 + int(std::lround(9 * std::sin((x - lx) / 14.0)));
            line(prevX, prevY, x, y, rgb(0, 110, 40), kRopCopy, art);
            prevX = x, prevY = y;
        }
        // A selection rectangle drawn with xor, as a rubber band is.
        const int sx = ox - 40, sy = oy - 30, sx1 = ox + 40, sy1 = oy + 30;
        line(sx, sy, sx1, sy, kWhite, kRopXor, art);
        line(sx1, sy, sx1, sy1, kWhite, kRopXor, art);
        line(sx1, sy1, sx, sy1, kWhite, kRopXor, art);
        line(sx, sy1, sx, sy, kWhite, kRopXor, art);
        line(lx + 4, ly + 4, lx + lw - 4, ly + lh / 3, 0, kRopBlack, art);
        line(lx + 4, ly + lh / 3, lx + lw - 4, ly + 4, rgb(255, 160, 0), kRopNotCopy, art);
    }

    // Photos: cached bitmaps through MemBlt with several raster operations.
    void photosWindow() {
        const Window &w = kPhotos;
        windowFrame(w);
        const UiClipRect client = w.clientClip();
        solid(w.clientX(), w.clientY(), w.clientW(), 14, kFace, client);
        menuBar(w);
        const int ax = w.clientX(), ay = w.clientY() + 16;
        t_.dstBlt(s_.surface(), UiDstBltOrder{ax, ay, w.clientW(), w.clientH() - 16, 0x00}, client);
        memBlt(ax + 10, ay + 6, 256, 160, 0xCC, 0, 0, photo_, 256, 160, client);
        text(small_, ax + 10, ay + 178, "lake.bmp   256 x 160   24-bit", rgb(220, 220, 220), client);
        const int ty = ay + 184;
        for (int i = 0; i < 4; ++i) {
            const int tx = ax + 14 + 64 * i;
            if (i == 3) {  // "disabled": a hatch, then the picture ANDed over it
                UiPatBltOrder o = brush(tx, ty, 56, 32, kRopCopy, rgb(96, 96, 96), kWhite, 2);
                o.brushBytes[0] = 5;
                t_.patBlt(s_.surface(), o, client);
                memBlt(tx, ty, 56, 32, 0x88, 64 * i + 4, 8, thumbs_, 256, 48, client);
            } else if (i == 2) {  // tinted: ORed over dark blue
                solid(tx, ty, 56, 32, rgb(0, 0, 96), client);
                memBlt(tx, ty, 56, 32, 0xEE, 64 * i + 4, 8, thumbs_, 256, 48, client);
            } else {
                memBlt(tx, ty, 56, 32, 0xCC, 64 * i + 4, 8, thumbs_, 256, 48, client);
            }
        }
        // The selected thumbnail gets a yellow frame.
        bevel(ax + 12, ty - 2, 60, 36, rgb(255, 220, 0), rgb(255, 220, 0), client);
    }

    static constexpr int kNotesLine = 12;
    int notesLines_ = 0;

    int notesTop() const { return kNotes.clientY() + 16; }
    int notesBodyTop() const { return notesTop() + 26; }
    int notesBottom() const { return kNotes.clientY() + kNotes.clientH() - 16; }
    UiClipRect notesClip() const {
        return clipOf(kNotes.clientX() + 2, notesTop(), kNotes.clientW() - 4, notesBottom() - notesTop());
    }

    void notesLine(const GlyphString &g) {
        const int baseline = notesBodyTop() + 8 + kNotesLine * notesLines_++;
        drawGlyphString(small_, g, kNotes.clientX() + 10, baseline, rgb(24, 24, 24), notesClip());
    }
    void notesLine(std::string_view s) {
        if (s.empty()) {
            ++notesLines_;
            return;
        }
        notesLine(small().text(s));
    }

    // Notes: the active window; text in both sizes with fragments.
    void notesWindow() {
        const Window &w = kNotes;
        windowFrame(w);
        const UiClipRect client = w.clientClip();
        solid(w.clientX(), w.clientY(), w.clientW(), w.clientH(), kFace, client);
        menuBar(w);
        solid(w.clientX() + 2, notesTop(), w.clientW() - 4, notesBottom() - notesTop(), kWhite, client);
        bevel(w.clientX() + 1, notesTop() - 1, w.clientW() - 2, notesBottom() - notesTop() + 2, kShadow, kWhite,
              client);
        text(large_, w.clientX() + 10, notesTop() + 19, "Release notes", rgb(10, 36, 106), notesClip());
        notesLine(small().text("ui32 draws remote desktop orders into the ").mark().text("frame buffer").store(2));
        notesLine("of a thin client and marks the 32x32 tiles it changed.");
        notesLine("");
        notesLine("- bitmap updates: interleaved and planar codecs");
        notesLine(small().text("- text: glyph strings with deltas and ").mark().text("fragments").store(3));
        notesLine("- brushes: solid, hatched, pattern and cached");
        notesLine("- lines through all sixteen raster operations");
        notesLine("- RFB: every ZRLE tile kind and Hextile");
        notesLine(small().text("- copies inside the ").replay(2).text(" overlap-safely"));
        notesLine(small().text("- ").replay(3).text(" persist from order to order"));  // its stored delta places it
        // A line of code in a fixed-pitch face: glyphs advance by their width.
        {
            std::vector<uint8_t> data;
            const std::string_view code = "srn_get(table, log, &config);";
            data.assign(code.begin(), code.end());
            const int baseline = notesBodyTop() + 8 + kNotesLine * notesLines_++;
            UiGlyphIndexOrder o =
                textOrder(fixed_, data, w.clientX() + 22, baseline, 6 * int(code.size()), rgb(128, 0, 64));
            o.flAccel = 0x20;
            t_.glyphIndex(s_.surface(), o, notesClip());
        }
        notesLine("Everything arrives as a record of 32-bit words; nothing is");
        notesLine("kept between calls except the glyph fragments.");
        notesLine("Select a line to see DstBlt invert it.");
        // Selection: invert one line.
        const int selTop = notesBodyTop() + kNotesLine * 3 - 1;
        const int selWidth = small_.width("- bitmap updates: interleaved and planar codecs") + 3;
        t_.dstBlt(s_.surface(), UiDstBltOrder{w.clientX() + 8, selTop, selWidth, kNotesLine, 0x55}, notesClip());
        statusBar("Ln 4, Col 1");
    }

    // Status line: GlyphIndex form, empty opaque rectangle marked redundant,
    // so the background rectangle is filled.
    void statusBar(const char *s) {
        const Window &w = kNotes;
        GlyphString g(small_, book_);
        g.text(s);
        const int baseline = w.clientY() + w.clientH() - 4;
        UiGlyphIndexOrder o = textOrder(small_, g.bytes(), w.clientX() + 4, baseline, w.clientW() - 8, kBlack);
        setColour(o.opaqueColor, kFace);
        o.fOpRedundant = 1;
        t_.glyphIndex(s_.surface(), o, w.clientClip());
    }

    // ---------------------------------------------------------------------
    // Frame 4: activity — the console scrolls, the notes scroll, the clock
    // ticks, the pointer appears.
    // ---------------------------------------------------------------------

    void frameActivity() {
        consoleLine("08:41:57 input: key press forwarded to desk-02");
        consoleLine("08:42:00 clock tick");

        // Notes: scroll the body up two lines and write two new ones.
        const int bodyTop = notesBodyTop();
        const int bodyHeight = notesBottom() - bodyTop - 2;
        const int shift = 2 * kNotesLine;
        t_.scrBlt(s_.surface(),
                  UiScrBltOrder{kNotes.clientX() + 2, bodyTop, kNotes.clientW() - 4, bodyHeight - shift, 0xCC,
                                kNotes.clientX() + 2, bodyTop + shift},
                  notesClip());
        solid(kNotes.clientX() + 2, bodyTop + bodyHeight - shift, kNotes.clientW() - 4, shift, kWhite, notesClip());
        notesLines_ -= 2;
        notesLine("New: the demo draws through all 25 slots.");
        notesLine("New: install with the .deb or cmake --install.");
        statusBar("Ln 16, Col 1");
        clock("08:42");
        pointer(kNotes.x + 300, kNotes.y + 200);
    }

    // The pointer: its colours imported into a 32-pixel-wide client record,
    // then drawn with the classic AND mask and XOR image through MemBlt.
    void pointer(int x, int y) {
        const Pointer arrow = arrowPointer();
        constexpr int kRowLength = 20;  // the source rows carry padding
        t_.setSourceByteOrder(1);
        PointerRecord record{};
        record.record.width = arrow.colours.width;
        record.record.height = arrow.colours.height;
        t_.importImage32(record.record, clientPixels(arrow.colours, 1, kRowLength).data(), kRowLength);
        const uint32_t *image = record.record.image;
        long bad = 0;
        for (int r = 0; r < arrow.colours.height; ++r)
            for (int c = 0; c < arrow.colours.width; ++c)
                bad += (image[r * 32 + c] & 0xFFFFFF) != arrow.colours.at(c, r);
        check("importImage32 pointer record", bad, long(arrow.colours.width) * arrow.colours.height);

        const int w = arrow.colours.width, h = arrow.colours.height;
        std::vector<uint32_t> andMask(size_t(w) * h), xorImage(size_t(w) * h);
        for (int r = 0; r < h; ++r)
            for (int c = 0; c < w; ++c) {
                const size_t at = size_t(h - 1 - r) * w + c;  // bottom-up, as cached bitmaps are
                const bool opaque = arrow.opaque.at(c, r);
                andMask[at] = opaque ? 0 : 0xFFFFFF;
                xorImage[at] = opaque ? image[r * 32 + c] : 0;
            }
        memBlt(x, y, w, h, 0x88, 0, 0, andMask, w, h, s_.all());
        memBlt(x, y, w, h, 0x66, 0, 0, xorImage, w, h, s_.all());
    }

    const kit::Table &t_;
    kit::Frame &s_;
    imgbuf *const img_;
    dirtybuf *const dirty_;
    Font small_, large_, fixed_;
    GlyphCache icons_, symbols_;
    uint32_t iconColours_[kIconCount][3] = {};
    FragmentBook book_;
    Picture wallpaper_;
    std::vector<uint32_t> photo_, toolbar_, thumbs_, tartan_;
    SceneReport report_;
    long callsAtFrameStart_ = 0;
};

}  // namespace

SceneReport drawDesktop(const kit::Table &table, kit::Frame &screen) {
    Scene scene(table, screen);
    return scene.run();
}

}  // namespace demo
