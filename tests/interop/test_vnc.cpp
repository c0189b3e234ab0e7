// The VNC snapshot client's protocol code with ui32.so loaded by path, as the
// client loads it, against real servers on 127.0.0.1: LibVNCServer in this
// process (ZRLE, Hextile; TRLE, which it does not offer, falls back to Raw),
// followed through a series of incremental updates; and a scripted server
// sending one TRLE rectangle with every sub-encoding and palette reuse, in
// pieces.  The client's frame buffer must equal the server's after every
// update, every changed tile must be marked and the marks must be exactly
// those of the rectangles received.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "scenes.h"
#include "session.h"
#include "table.h"
#include "vncServer.h"

namespace {

using kit::Canvas;
using kit::Picture;

// Loaded once for the process, as a client does.
const UiDrawTable &table() {
    static kit::Table t;
    static std::string error;
    static const bool loaded = t.load(UI32_MODULE_PATH, &kit::printReport, UiConfig{kit::kHatchPatterns, 4}, error);
    EXPECT_TRUE(loaded) << error;
    return t.slots;
}

int differences(const vncsnap::FrameBuffer &f, const Picture &p) {
    int n = 0;
    for (int32_t y = 0; y < p.height; ++y)
        for (int32_t x = 0; x < p.width; ++x) n += f.at(x, y) != (p.at(x, y) & 0xffffff);
    return n;
}

// One update: ask, receive, compare pixels and tiles.
void follow(vncsnap::Session &s, bool incremental, const Picture &before, const Picture &after, const char *what) {
    s.frame().clearTiles();
    std::vector<vncsnap::Rect> rects;
    ASSERT_TRUE(s.requestUpdate(incremental) && s.receiveUpdate(&rects)) << what << ": " << s.error();
    EXPECT_EQ(differences(s.frame(), after), 0) << what;
    const vncsnap::FrameBuffer &f = s.frame();
    for (int32_t ty = 0; ty < f.dirty.rows; ++ty)
        for (int32_t tx = 0; tx < f.dirty.columns; ++tx) {
            bool covered = false, changed = false;
            for (const vncsnap::Rect &r : rects)
                covered |= r.w > 0 && r.h > 0 && tx >= r.x / 32 && tx <= (r.x + r.w - 1) / 32 && ty >= r.y / 32 &&
                           ty <= (r.y + r.h - 1) / 32;
            for (int32_t y = ty * 32; y < std::min(ty * 32 + 32, after.height); ++y)
                for (int32_t x = tx * 32; x < std::min(tx * 32 + 32, after.width); ++x)
                    changed |= (before.at(x, y) ^ after.at(x, y)) & 0xffffff;
            EXPECT_EQ(f.tileMarked(tx, ty), covered) << what << ": tile " << tx << "," << ty;
            EXPECT_TRUE(!changed || f.tileMarked(tx, ty)) << what << ": changed tile unmarked " << tx << "," << ty;
        }
}

struct Change {
    const char *name;
    int32_t x, y, w, h;
    std::function<void(Picture &)> draw;
};

class VncSnapshot : public ::testing::TestWithParam<int32_t> {};

TEST_P(VncSnapshot, FollowsTheServerThroughIncrementalUpdates) {
    constexpr int32_t kWidth = 397, kHeight = 283;  // partial last tiles of every size
    std::vector<Picture> icons = kit::themeIcons(48, 3);
    ASSERT_FALSE(icons.empty()) << "no icons: is adwaita-icon-theme installed?";
    const std::vector<Change> changes = {
        {"window", 150, 40, 200, 150, [](Picture &p) { Canvas(p).window(150, 40, 200, 150, 21); }},
        {"text", 160, 70, 180, 10, [](Picture &p) { Canvas(p).text(160, 70, 30, 0xff000000, 22); }},
        {"icon", 33, 201, 48, 48, [&](Picture &p) { Canvas(p).blend(icons.front(), 33, 201); }},
        {"photo", 60, 60, 130, 90, [](Picture &p) { Canvas(p).photo(60, 60, 130, 90, 23); }},
        {"noise", 250, 200, 70, 50, [](Picture &p) { Canvas(p).noise(250, 200, 70, 50, 24); }},
        {"cleared", 100, 100, 250, 150, [](Picture &p) { Canvas(p).fill(100, 100, 250, 150, 0xffdededa); }},
        {"banded gradient", 0, 0, kWidth, 70,
         [](Picture &p) {
             for (int32_t y = 0; y < 70; ++y)
                 for (int32_t x = 0; x < kWidth; ++x)
                     p.at(x, y) = uint32_t(y * 3 + x / 23 % 3 * 40) << 16 | uint32_t(255 - y) << 8 | x / 23 % 3 * 60;
         }},
        {"dithered", 200, 180, 90, 60,
         [](Picture &p) {
             for (int32_t y = 180; y < 240; ++y)
                 for (int32_t x = 200; x < 290; ++x) p.at(x, y) = ((x + y) & 1) ? 0xbabdb6 : 0x555753;
         }},
        {"scroll", 160, 60, 180, 120,
         [](Picture &p) {
             for (int32_t y = 60; y < 168; ++y)
                 for (int32_t x = 160; x < 340; ++x) p.at(x, y) = p.at(x, y + 12);
             Canvas(p).fill(160, 168, 180, 12, 0xf6f5f4);
         }},
    };
    const int reports = kit::printedReports();
    VncServer server;
    ASSERT_TRUE(server.start(kit::desktop(kWidth, kHeight, icons, 0xd35c)));
    vncsnap::Session session(table());
    ASSERT_TRUE(session.open(server.address(), GetParam(), 5000)) << session.error();
    Picture seen = server.served();
    follow(session, false, Picture(kWidth, kHeight), seen, "whole desktop");
    for (const Change &c : changes) {
        ASSERT_TRUE(server.change(c.draw, c.x, c.y, c.w, c.h)) << c.name;
        follow(session, true, seen, server.served(), c.name);
        seen = server.served();
    }
    server.stop();
    EXPECT_EQ(kit::printedReports(), reports) << "ui32 reported while painting";

    const vncsnap::Stats &s = session.stats();
    const vncsnap::TileKinds &z = s.zrle;
    std::printf("%s: ZRLE tiles raw %llu solid %llu packed %llu plain %llu palette-rle %llu; Hextile tiles %llu\n",
                vncsnap::encodingName(GetParam()), (unsigned long long)z.raw, (unsigned long long)z.solid,
                (unsigned long long)z.packedPalette, (unsigned long long)z.plainRle, (unsigned long long)z.paletteRle,
                (unsigned long long)s.hextileTiles);
    if (GetParam() == vncsnap::kZrle) EXPECT_GT(z.raw * z.solid * z.packedPalette * z.plainRle * z.paletteRle, 0u);
    if (GetParam() == vncsnap::kHextile)
        for (int flag : {1, 2, 4, 8, 16}) EXPECT_GT(s.hextileFlag(flag), 0u) << "Hextile flag " << flag;
    if (GetParam() == vncsnap::kTrle) EXPECT_GT(s.rectangles.count(vncsnap::kRaw), 0u);  // not offered: Raw
}

INSTANTIATE_TEST_SUITE_P(Encodings, VncSnapshot, ::testing::Values(vncsnap::kZrle, vncsnap::kHextile, vncsnap::kTrle),
                         [](const auto &info) { return std::string(vncsnap::encodingName(info.param)); });

// A TRLE rectangle: the kit's ZRLE tile encoder on 16x16 tiles, a palette
// equal to the last one sent replaced by its reuse form (127 packed, 129 run-
// length); `kinds` counts the sub-encodings as the client counts them.
kit::Bytes trleRectangle(const Picture &p, vncsnap::TileKinds &kinds) {
    kit::Bytes out, lastPalette;
    for (int32_t ty = 0; ty < p.height; ty += 16)
        for (int32_t tx = 0; tx < p.width; tx += 16) {
            kit::Bytes t = kit::zrleTile(p.crop(tx, ty, std::min(16, p.width - tx), std::min(16, p.height - ty)));
            const uint8_t sub = t[0];
            const size_t size = sub >= 2 && sub <= 16 ? sub : sub > 128 ? sub - 128 : 0;
            const kit::Bytes palette(t.begin() + 1, t.begin() + 1 + ptrdiff_t(3 * size));
            if (size > 0 && palette == lastPalette) {
                t.erase(t.begin() + 1, t.begin() + 1 + ptrdiff_t(3 * size));
                t[0] = sub > 128 ? 129 : 127;
            }
            if (size > 0) lastPalette = palette;
            ++(t[0] == 0 ? kinds.raw : t[0] == 1 ? kinds.solid : t[0] == 127 ? kinds.reusedPackedPalette
               : t[0] == 129 ? kinds.reusedPaletteRle : t[0] == 128 ? kinds.plainRle : t[0] > 128 ? kinds.paletteRle
               : kinds.packedPalette);
            out(t);
        }
    return out;
}

bool sendAll(int fd, const kit::Bytes &b) { return send(fd, b.data(), b.size(), MSG_NOSIGNAL) == ssize_t(b.size()); }
bool receive(int fd, size_t n, kit::Bytes &in) {
    in.resize(n);
    pollfd p{fd, POLLIN, 0};
    for (size_t got = 0; got < n;) {
        const ssize_t r = poll(&p, 1, 5000) == 1 ? recv(fd, in.data() + got, n - got, 0) : -1;
        if (r <= 0) return false;
        got += size_t(r);
    }
    return true;
}

// The server's side: RFB 3.8 handshake with security None, the client's
// format and encodings (TRLE first), one request, then the rectangle in
// pieces of 97 bytes so that tile bodies arrive split.
bool serveTrle(int listener, const Picture &p, const kit::Bytes &trle) {
    pollfd pl{listener, POLLIN, 0};
    const int fd = poll(&pl, 1, 5000) == 1 ? accept4(listener, nullptr, nullptr, SOCK_CLOEXEC) : -1;
    kit::Bytes in, init{uint8_t(p.width >> 8), uint8_t(p.width), uint8_t(p.height >> 8), uint8_t(p.height),
                        32, 24, 0, 1, 0, 255, 0, 255, 0, 255, 16, 8, 0, 0, 0, 0, 0, 0, 0, 4, 't', 'r', 'l', 'e'};
    bool ok = fd >= 0 && sendAll(fd, {'R', 'F', 'B', ' ', '0', '0', '3', '.', '0', '0', '8', '\n'}) &&
              receive(fd, 12, in) && sendAll(fd, {1, 1}) && receive(fd, 1, in) && sendAll(fd, {0, 0, 0, 0}) &&
              receive(fd, 1, in) && sendAll(fd, init);
    for (bool requested = false; ok && !requested;) {
        ok = receive(fd, 1, in);
        const uint8_t type = in[0];
        if (type == 0) ok = ok && receive(fd, 19, in) && in[3] == 32;
        else if (type == 2) ok = ok && receive(fd, 3, in) && receive(fd, 4 * size_t(in[1] << 8 | in[2]), in) && in[3] == 15;
        else ok = ok && type == 3 && receive(fd, 9, in) && (requested = true);
    }
    kit::Bytes update{0, 0, 0, 1, 0, 0, 0, 0, uint8_t(p.width >> 8), uint8_t(p.width), uint8_t(p.height >> 8),
                      uint8_t(p.height), 0, 0, 0, 15};
    update(trle);
    for (size_t at = 0; ok && at < update.size(); at += 97, usleep(1000))
        ok = sendAll(fd, kit::Bytes(update.begin() + ptrdiff_t(at), update.begin() + ptrdiff_t(std::min(update.size(), at + 97))));
    if (fd >= 0) close(fd);
    return ok;
}

TEST(VncTrle, EveryTileKindAndPaletteReuseArrivingInPieces) {
    Picture p(203, 117, 0xdededa);
    Canvas c(p);
    c.window(4, 4, 120, 80, 31);
    for (int32_t y = 0; y < 32; ++y)
        for (int32_t x = 128; x < 192; ++x) p.at(x, y) = ((x + y) & 1) ? 0xbabdb6 : 0x555753;
    c.noise(130, 40, 40, 30, 32);
    for (int32_t y = 90; y < 117; ++y)
        for (int32_t x = 0; x < 203; ++x) p.at(x, y) = uint32_t(y * 2) << 16 | uint32_t(x) << 8 | uint32_t(x / 7 % 3) * 80;
    vncsnap::TileKinds kinds;
    const kit::Bytes trle = trleRectangle(p, kinds);
    ASSERT_GT(kinds.raw * kinds.solid * kinds.packedPalette * kinds.plainRle * kinds.paletteRle, 0u);
    ASSERT_GT(kinds.reusedPackedPalette + kinds.reusedPaletteRle, 0u);

    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof a;
    ASSERT_TRUE(bind(listener, reinterpret_cast<sockaddr *>(&a), sizeof a) == 0 && listen(listener, 1) == 0 &&
                getsockname(listener, reinterpret_cast<sockaddr *>(&a), &length) == 0);
    bool served = false;
    std::thread server([&] { served = serveTrle(listener, p, trle); });
    const int reports = kit::printedReports();
    vncsnap::Session session(table());
    const bool opened = session.open("127.0.0.1:" + std::to_string(ntohs(a.sin_port)), vncsnap::kTrle, 5000);
    std::vector<vncsnap::Rect> rects;
    const bool received = opened && session.requestUpdate(false) && session.receiveUpdate(&rects);
    server.join();
    close(listener);
    ASSERT_TRUE(received && served) << session.error();
    EXPECT_EQ(differences(session.frame(), p), 0);
    EXPECT_TRUE(std::all_of(session.frame().tiles.begin(), session.frame().tiles.end(), [](uint8_t t) { return t == 1; }));
    const vncsnap::TileKinds &seen = session.stats().trle;
    EXPECT_EQ(std::tie(seen.raw, seen.solid, seen.packedPalette, seen.plainRle, seen.paletteRle, seen.reusedPackedPalette,
                       seen.reusedPaletteRle),
              std::tie(kinds.raw, kinds.solid, kinds.packedPalette, kinds.plainRle, kinds.paletteRle,
                       kinds.reusedPackedPalette, kinds.reusedPaletteRle));
    EXPECT_GT(session.stats().trleRetries, 0u) << "no tile body arrived split";
    EXPECT_EQ(kit::printedReports(), reports);
}

}  // namespace
