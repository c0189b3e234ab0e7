// The VNC snapshot client's protocol code, with ui32.so loaded by path as the
// client loads it, against a real VNC server (Debian's LibVNCServer) run in
// this process on 127.0.0.1.  For each encoding the client takes the whole
// desktop, then follows the server through a series of changes with
// incremental updates.  After every update the client's frame buffer must
// equal the server's, every tile whose pixels changed must be marked, and the
// marked tiles must be exactly those of the rectangles received.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "pictures.h"
#include "session.h"
#include "ui32Module.h"
#include "vnc_server.h"

namespace {

using interop::Canvas;
using interop::Picture;
using vncsnap::Rect;
using vncsnap::Session;

constexpr int kTimeoutMs = 5000;
// Odd sizes: the last column and row of 64 x 64, 16 x 16 and 32 x 32 tiles
// are partial.
constexpr int32_t kWidth = 397;
constexpr int32_t kHeight = 283;

std::vector<Picture> someIcons(int32_t size, size_t count) {
    std::vector<Picture> icons;
    for (const std::string &path : interop::iconPaths(size, count)) {
        Picture p;
        std::string error;
        if (interop::loadPng(path, p, error)) icons.push_back(p);
        else ADD_FAILURE() << error;
    }
    return icons;
}

// One change of the desktop between two incremental updates, and the
// rectangle the server is told has changed.
struct Change {
    const char *name;
    int32_t x, y, w, h;
    std::function<void(Picture &)> draw;
};

std::vector<Change> changes() {
    const std::vector<Picture> icons = someIcons(48, 3);
    return {
        {"a window opens", 150, 40, 200, 150, [](Picture &p) { Canvas(p).window(150, 40, 200, 150, 21); }},
        {"text is typed", 160, 70, 180, 10, [](Picture &p) { Canvas(p).text(160, 70, 30, 0xff000000, 22); }},
        {"an icon is dropped", 33, 201, 48, 48,
         [icons](Picture &p) {
             if (!icons.empty()) Canvas(p).blend(icons.front(), 33, 201);
         }},
        {"a photo is shown", 60, 60, 130, 90, [](Picture &p) { Canvas(p).photo(60, 60, 130, 90, 23); }},
        {"video noise", 250, 200, 70, 50, [](Picture &p) { Canvas(p).noise(250, 200, 70, 50, 24); }},
        {"a panel is cleared", 100, 100, 250, 150, [](Picture &p) { Canvas(p).fill(100, 100, 250, 150, 0xffdededa); }},
        {"a banded gradient header", 0, 0, kWidth, 70,
         [](Picture &p) {
             // Three bands per row, each its own gradient: many colours in
             // long runs.
             for (int32_t y = 0; y < 70; ++y)
                 for (int32_t x = 0; x < kWidth; ++x) {
                     const uint32_t band = uint32_t(x / 23 % 3);
                     p.at(x, y) = 0xff000000u | ((uint32_t(y * 3) + band * 40) << 16) | (uint32_t(255 - y) << 8) |
                                  band * 60;
                 }
         }},
        {"a dithered control", 200, 180, 90, 60,
         [](Picture &p) {
             for (int32_t y = 180; y < 240; ++y)
                 for (int32_t x = 200; x < 290; ++x) p.at(x, y) = ((x + y) & 1) ? 0xffbabdb6 : 0xff555753;
         }},
        {"a list scrolls", 160, 60, 180, 120,
         [](Picture &p) {
             const Picture before = p;
             for (int32_t y = 60; y < 168; ++y)
                 for (int32_t x = 160; x < 340; ++x) p.at(x, y) = before.at(x, y + 12);
             Canvas c(p);
             c.fill(160, 168, 180, 12, 0xfff6f5f4);
             c.text(164, 170, 25, 0xff2e3436, 25);
         }},
    };
}

// ---------------------------------------------------------------------------
// Checks
// ---------------------------------------------------------------------------

int differingPixels(const vncsnap::FrameBuffer &frame, const Picture &served, std::string &first) {
    int count = 0;
    for (int32_t y = 0; y < served.height; ++y)
        for (int32_t x = 0; x < served.width; ++x)
            if (frame.at(x, y) != served.at(x, y) && count++ == 0) {
                char b[96];
                std::snprintf(b, sizeof b, "(%d, %d) is 0x%06x, the server has 0x%06x", x, y, frame.at(x, y),
                              served.at(x, y));
                first = b;
            }
    return count;
}

// Every tile whose pixels changed is marked; the marked tiles are exactly
// those of the rectangles received.
void requireTiles(const vncsnap::FrameBuffer &frame, const Picture &before, const Picture &after,
                  const std::vector<Rect> &rects, const std::string &what) {
    const int32_t columns = frame.dirty.columns, rows = frame.dirty.rows;
    std::vector<bool> covered(size_t(columns) * size_t(rows), false);
    for (const Rect &r : rects)
        if (r.w > 0 && r.h > 0)
            for (int32_t ty = r.y / 32; ty <= (r.y + r.h - 1) / 32; ++ty)
                for (int32_t tx = r.x / 32; tx <= (r.x + r.w - 1) / 32; ++tx) covered[size_t(ty * columns + tx)] = true;
    int changedUnmarked = 0, wrongMarks = 0;
    for (int32_t ty = 0; ty < rows; ++ty)
        for (int32_t tx = 0; tx < columns; ++tx) {
            bool changed = false;
            for (int32_t y = ty * 32; y < std::min(ty * 32 + 32, after.height) && !changed; ++y)
                for (int32_t x = tx * 32; x < std::min(tx * 32 + 32, after.width); ++x)
                    if (before.at(x, y) != after.at(x, y)) {
                        changed = true;
                        break;
                    }
            const bool marked = frame.tileMarked(tx, ty);
            if (changed && !marked) ++changedUnmarked;
            if (marked != covered[size_t(ty * columns + tx)]) ++wrongMarks;
        }
    EXPECT_EQ(changedUnmarked, 0) << what << ": changed tiles left unmarked";
    EXPECT_EQ(wrongMarks, 0) << what << ": marks differ from the rectangles received";
    EXPECT_EQ(frame.dirty.changed, 1) << what;
}

// One update: ask, receive, compare.  `before` is the server's picture as the
// client last saw it.
void followUpdate(Session &session, bool incremental, const Picture &before, const Picture &after,
                  const std::string &what) {
    session.frame().clearTiles();
    std::vector<Rect> rects;
    ASSERT_TRUE(session.requestUpdate(incremental)) << what << ": " << session.error();
    ASSERT_TRUE(session.receiveUpdate(&rects)) << what << ": " << session.error();
    ASSERT_FALSE(rects.empty()) << what;
    std::string first;
    EXPECT_EQ(differingPixels(session.frame(), after, first), 0) << what << ": first difference " << first;
    requireTiles(session.frame(), before, after, rects, what);
}

std::string kindCounts(const vncsnap::TileKinds &k) {
    char b[160];
    std::snprintf(b, sizeof b, "raw %llu, solid %llu, packed palette %llu, plain RLE %llu, palette RLE %llu",
                  static_cast<unsigned long long>(k.raw), static_cast<unsigned long long>(k.solid),
                  static_cast<unsigned long long>(k.packedPalette), static_cast<unsigned long long>(k.plainRle),
                  static_cast<unsigned long long>(k.paletteRle));
    return b;
}

void requireAllTileKinds(const vncsnap::TileKinds &k, const char *encoding) {
    EXPECT_GT(k.raw, 0u) << encoding;
    EXPECT_GT(k.solid, 0u) << encoding;
    EXPECT_GT(k.packedPalette, 0u) << encoding;
    EXPECT_GT(k.plainRle, 0u) << encoding;
    EXPECT_GT(k.paletteRle, 0u) << encoding;
}

// ---------------------------------------------------------------------------
// The test, once per encoding
// ---------------------------------------------------------------------------

struct EncodingCase {
    const char *name;
    int32_t encoding;
};
void PrintTo(const EncodingCase &e, std::ostream *os) { *os << e.name; }

class VncSnapshot : public ::testing::TestWithParam<EncodingCase> {};

TEST_P(VncSnapshot, FollowsTheServerThroughIncrementalUpdates) {
    const EncodingCase &c = GetParam();
    // Loaded once for the process, as a client does.
    static vncsnap::Ui32Module module;
    static std::string loadError;
    static const bool loaded = module.load(UI32_MODULE_PATH, loadError);
    ASSERT_TRUE(loaded) << loadError;
    std::string error;
    const int reportsBefore = vncsnap::Ui32Module::reportCount();

    std::vector<Picture> icons = someIcons(48, 3);
    for (Picture &p : someIcons(24, 4)) icons.push_back(p);
    ASSERT_FALSE(icons.empty()) << "no icons: is adwaita-icon-theme installed (tools/packages/interop.txt)?";
    interop::VncServer server;
    ASSERT_TRUE(server.start(interop::desktop(kWidth, kHeight, icons, 0xd35c), error)) << error;

    Session session(module.table());
    ASSERT_TRUE(session.open(server.address(), c.encoding, kTimeoutMs)) << session.error();
    ASSERT_EQ(session.frame().width, kWidth);
    ASSERT_EQ(session.frame().height, kHeight);

    const Picture black(kWidth, kHeight, 0);
    Picture seen = server.served();
    ASSERT_NO_FATAL_FAILURE(followUpdate(session, false, black, seen, "whole desktop"));
    for (const Change &change : changes()) {
        ASSERT_TRUE(server.change(change.draw, change.x, change.y, change.w, change.h)) << change.name;
        const Picture now = server.served();
        ASSERT_NO_FATAL_FAILURE(followUpdate(session, true, seen, now, change.name));
        seen = now;
    }
    server.stop();
    EXPECT_EQ(vncsnap::Ui32Module::reportCount(), reportsBefore) << "ui32 reported while painting";

    const vncsnap::Stats &s = session.stats();
    std::printf("%s: rectangles:", c.name);
    for (const auto &[encoding, count] : s.rectangles)
        std::printf(" %s %llu", vncsnap::encodingName(encoding), static_cast<unsigned long long>(count));
    std::printf("\n");
    if (s.offeredKnown) {
        std::printf("  the server offers:");
        for (int32_t e : s.offered) std::printf(" %d", e);
        std::printf("\n");
    }
    switch (c.encoding) {
        case vncsnap::kZrle:
            std::printf("  ZRLE tiles: %s\n", kindCounts(s.zrle).c_str());
            EXPECT_GT(s.rectangles.count(vncsnap::kZrle), 0u);
            requireAllTileKinds(s.zrle, "ZRLE");
            break;
        case vncsnap::kTrle:
            if (s.offeredKnown && !s.offers(vncsnap::kTrle)) {
                // Asked for what the server lacks, the client still follows
                // it: every rectangle came in Raw.
                std::printf("  the server does not offer TRLE: the rectangles came in Raw\n");
                EXPECT_EQ(s.rectangles.count(vncsnap::kTrle), 0u);
                EXPECT_GT(s.rectangles.count(vncsnap::kRaw), 0u);
            } else {
                std::printf("  TRLE tiles: %s, reused palettes %llu\n", kindCounts(s.trle).c_str(),
                            static_cast<unsigned long long>(s.trle.reusedPackedPalette + s.trle.reusedPaletteRle));
                requireAllTileKinds(s.trle, "TRLE");
            }
            break;
        case vncsnap::kHextile: {
            std::printf("  Hextile tiles: %llu; with flag raw %llu, background %llu, foreground %llu, subrects %llu, "
                        "coloured subrects %llu\n  sub-encoding bytes seen:",
                        static_cast<unsigned long long>(s.hextileTiles),
                        static_cast<unsigned long long>(s.hextileFlag(1)),
                        static_cast<unsigned long long>(s.hextileFlag(2)),
                        static_cast<unsigned long long>(s.hextileFlag(4)),
                        static_cast<unsigned long long>(s.hextileFlag(8)),
                        static_cast<unsigned long long>(s.hextileFlag(16)));
            for (int v = 0; v < 256; ++v)
                if (s.hextileSubencodings[size_t(v)] > 0)
                    std::printf(" %d (%llu)", v, static_cast<unsigned long long>(s.hextileSubencodings[size_t(v)]));
            std::printf("\n");
            for (int flag : {1, 2, 4, 8, 16}) EXPECT_GT(s.hextileFlag(flag), 0u) << "Hextile flag " << flag;
            break;
        }
    }
    std::fflush(stdout);
}

INSTANTIATE_TEST_SUITE_P(Encodings, VncSnapshot,
                         ::testing::Values(EncodingCase{"ZRLE", vncsnap::kZrle}, EncodingCase{"TRLE", vncsnap::kTrle},
                                           EncodingCase{"Hextile", vncsnap::kHextile}),
                         [](const ::testing::TestParamInfo<EncodingCase> &info) { return std::string(info.param.name); });

}  // namespace
