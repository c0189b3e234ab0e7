// The snapshot client's TRLE path.  No VNC server in Debian offers TRLE, so a
// scripted server on 127.0.0.1 plays one: it runs the RFB 3.8 handshake and
// sends one TRLE rectangle that uses every tile sub-encoding, palette reuse
// included, in small pieces, so that tile bodies arrive split and the client
// must call the tile entry points again once more bytes are in.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "pictures.h"
#include "session.h"
#include "ui32Module.h"

namespace {

using Bytes = std::vector<uint8_t>;
using interop::Picture;

void putU16(Bytes &b, uint32_t v) {
    b.push_back(uint8_t(v >> 8));
    b.push_back(uint8_t(v));
}
void putU32(Bytes &b, uint32_t v) {
    putU16(b, v >> 16);
    putU16(b, v);
}
void putPixel(Bytes &b, uint32_t colour) {  // CPIXEL: blue, green, red
    b.push_back(uint8_t(colour));
    b.push_back(uint8_t(colour >> 8));
    b.push_back(uint8_t(colour >> 16));
}
void putRunLength(Bytes &b, int32_t length) {  // 1 + the sum of the bytes
    for (length -= 1; length >= 255; length -= 255) b.push_back(255);
    b.push_back(uint8_t(length));
}

// A TRLE encoder for 16 x 16 tiles that picks each sub-encoding by the
// tile's colours and runs, and reuses the previous palette when it is the
// same.
class TrleEncoder {
public:
    struct Counts {
        int raw = 0, solid = 0, packed = 0, plainRle = 0, paletteRle = 0, reusedPacked = 0, reusedRle = 0;
    } counts;

    Bytes rectangle(const Picture &p) {
        Bytes out;
        for (int32_t ty = 0; ty < p.height; ty += 16)
            for (int32_t tx = 0; tx < p.width; tx += 16) tile(out, p, tx, ty, std::min(16, p.width - tx),
                                                             std::min(16, p.height - ty));
        return out;
    }

private:
    void tile(Bytes &out, const Picture &p, int32_t x, int32_t y, int32_t w, int32_t h) {
        std::vector<uint32_t> pixels, palette;
        for (int32_t r = 0; r < h; ++r)
            for (int32_t c = 0; c < w; ++c) pixels.push_back(p.at(x + c, y + r) & 0xffffff);
        for (uint32_t v : pixels)
            if (std::find(palette.begin(), palette.end(), v) == palette.end() && palette.size() < 128)
                palette.push_back(v);
        int runs = 1;
        for (size_t i = 1; i < pixels.size(); ++i) runs += pixels[i] != pixels[i - 1];
        const auto index = [&](uint32_t v) { return int(std::find(palette.begin(), palette.end(), v) - palette.begin()); };
        const bool reuse = palette == previous_;

        if (palette.size() == 1) {
            out.push_back(1);
            putPixel(out, palette[0]);
            ++counts.solid;
        } else if (palette.size() <= 16 && runs > int(pixels.size()) / 4) {
            out.push_back(reuse ? 127 : uint8_t(palette.size()));
            if (!reuse)
                for (uint32_t v : palette) putPixel(out, v);
            ++(reuse ? counts.reusedPacked : counts.packed);
            const int bits = palette.size() <= 2 ? 1 : palette.size() <= 4 ? 2 : 4;
            for (int32_t r = 0; r < h; ++r) {
                int used = 0;
                uint8_t byte = 0;
                for (int32_t c = 0; c < w; ++c) {
                    byte = uint8_t(byte | index(pixels[size_t(r * w + c)]) << (8 - bits - used));
                    used += bits;
                    if (used == 8) {
                        out.push_back(byte);
                        byte = 0;
                        used = 0;
                    }
                }
                if (used > 0) out.push_back(byte);
            }
            previous_ = palette;
        } else if (palette.size() <= 127) {
            out.push_back(reuse ? 129 : uint8_t(128 + palette.size()));
            if (!reuse)
                for (uint32_t v : palette) putPixel(out, v);
            ++(reuse ? counts.reusedRle : counts.paletteRle);
            for (size_t i = 0; i < pixels.size();) {
                size_t j = i + 1;
                while (j < pixels.size() && pixels[j] == pixels[i]) ++j;
                if (j - i == 1) {
                    out.push_back(uint8_t(index(pixels[i])));
                } else {
                    out.push_back(uint8_t(128 + index(pixels[i])));
                    putRunLength(out, int32_t(j - i));
                }
                i = j;
            }
            previous_ = palette;
        } else if (runs * 4 < int(pixels.size()) * 3) {
            out.push_back(128);
            ++counts.plainRle;
            for (size_t i = 0; i < pixels.size();) {
                size_t j = i + 1;
                while (j < pixels.size() && pixels[j] == pixels[i]) ++j;
                putPixel(out, pixels[i]);
                putRunLength(out, int32_t(j - i));
                i = j;
            }
        } else {
            out.push_back(0);
            ++counts.raw;
            for (uint32_t v : pixels) putPixel(out, v);
        }
    }
    std::vector<uint32_t> previous_;
};

// The scripted server: one client, one update, then it closes.
class ScriptedServer {
public:
    explicit ScriptedServer(const Picture &picture, Bytes trle) : picture_(picture), trle_(std::move(trle)) {
        listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof a;
        if (listener_ >= 0 && bind(listener_, reinterpret_cast<sockaddr *>(&a), sizeof a) == 0 &&
            listen(listener_, 1) == 0 && getsockname(listener_, reinterpret_cast<sockaddr *>(&a), &len) == 0)
            port_ = ntohs(a.sin_port);
        if (port_ != 0) thread_ = std::thread([this] { serve(); });
    }
    ~ScriptedServer() {
        if (thread_.joinable()) thread_.join();
        if (listener_ >= 0) close(listener_);
    }
    int port() const { return port_; }
    bool ok() const { return ok_; }

private:
    bool readable(int fd) {
        pollfd p{fd, POLLIN, 0};
        return poll(&p, 1, 5000) == 1;
    }
    bool receive(int fd, size_t n, Bytes &out) {
        out.resize(n);
        for (size_t got = 0; got < n;) {
            if (!readable(fd)) return false;
            const ssize_t r = recv(fd, out.data() + got, n - got, 0);
            if (r <= 0) return false;
            got += size_t(r);
        }
        return true;
    }
    bool sendAll(int fd, const Bytes &b) { return send(fd, b.data(), b.size(), MSG_NOSIGNAL) == ssize_t(b.size()); }

    void serve() {
        if (!readable(listener_)) return;
        const int fd = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0) return;
        ok_ = script(fd);
        close(fd);
    }

    bool script(int fd) {
        Bytes in;
        const std::string version = "RFB 003.008\n";
        if (!sendAll(fd, Bytes(version.begin(), version.end())) || !receive(fd, 12, in)) return false;
        if (!sendAll(fd, Bytes{1, 1}) || !receive(fd, 1, in) || in[0] != 1) return false;  // security None
        if (!sendAll(fd, Bytes{0, 0, 0, 0}) || !receive(fd, 1, in)) return false;         // result, ClientInit
        Bytes init;
        putU16(init, uint32_t(picture_.width));
        putU16(init, uint32_t(picture_.height));
        const uint8_t format[16] = {32, 24, 0, 1, 0, 255, 0, 255, 0, 255, 16, 8, 0};
        init.insert(init.end(), format, format + 16);
        putU32(init, 4);
        init.insert(init.end(), {'t', 'r', 'l', 'e'});
        if (!sendAll(fd, init)) return false;
        // SetPixelFormat, SetEncodings (TRLE first), FramebufferUpdateRequest.
        for (bool requested = false; !requested;) {
            if (!receive(fd, 1, in)) return false;
            if (in[0] == 0) {
                if (!receive(fd, 19, in) || in[3] != 32 || in[13] != 16) return false;
            } else if (in[0] == 2) {
                if (!receive(fd, 3, in)) return false;
                const size_t count = size_t(in[1] << 8 | in[2]);
                if (!receive(fd, 4 * count, in) || count == 0 || in[3] != 15) return false;
            } else if (in[0] == 3) {
                if (!receive(fd, 9, in)) return false;
                requested = true;
            } else {
                return false;
            }
        }
        Bytes update{0, 0};
        putU16(update, 1);
        putU16(update, 0);
        putU16(update, 0);
        putU16(update, uint32_t(picture_.width));
        putU16(update, uint32_t(picture_.height));
        putU32(update, 15);
        update.insert(update.end(), trle_.begin(), trle_.end());
        // In pieces of 97 bytes with a pause after each: tile bodies arrive
        // split.
        for (size_t at = 0; at < update.size(); at += 97) {
            const Bytes piece(update.begin() + ptrdiff_t(at),
                              update.begin() + ptrdiff_t(std::min(update.size(), at + 97)));
            if (!sendAll(fd, piece)) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }

    Picture picture_;
    Bytes trle_;
    int listener_ = -1;
    int port_ = 0;
    bool ok_ = false;
    std::thread thread_;
};

TEST(VncTrle, EveryTileKindAndPaletteReuseArrivingInPieces) {
    // A window with a title bar, text, a checkered area (packed palettes,
    // reused), a noise patch (raw), a flat area (solid), a banded gradient
    // (plain run-length) and text lines (palette run-length, reused).
    Picture p(203, 117, 0xffdededa);
    interop::Canvas c(p);
    c.window(4, 4, 120, 80, 31);
    for (int32_t y = 0; y < 32; ++y)
        for (int32_t x = 128; x < 192; ++x) p.at(x, y) = ((x + y) & 1) ? 0xffbabdb6 : 0xff555753;
    c.noise(130, 40, 40, 30, 32);
    for (int32_t y = 90; y < 117; ++y)
        for (int32_t x = 0; x < 203; ++x)
            p.at(x, y) = 0xff000000u | uint32_t(y * 2) << 16 | uint32_t(x) << 8 | uint32_t(x / 7 % 3) * 80;
    TrleEncoder encoder;
    const Bytes trle = encoder.rectangle(p);
    const TrleEncoder::Counts &k = encoder.counts;
    ASSERT_GT(k.raw * k.solid * k.packed * k.plainRle * k.paletteRle * k.reusedPacked * k.reusedRle, 0)
        << "the picture no longer exercises every sub-encoding";

    static vncsnap::Ui32Module module;
    static std::string loadError;
    static const bool loaded = module.load(UI32_MODULE_PATH, loadError);
    ASSERT_TRUE(loaded) << loadError;
    const int reportsBefore = vncsnap::Ui32Module::reportCount();

    ScriptedServer server(p, trle);
    ASSERT_NE(server.port(), 0);
    vncsnap::Session session(module.table());
    ASSERT_TRUE(session.open("127.0.0.1:" + std::to_string(server.port()), vncsnap::kTrle, 5000)) << session.error();
    std::vector<vncsnap::Rect> rects;
    ASSERT_TRUE(session.requestUpdate(false)) << session.error();
    ASSERT_TRUE(session.receiveUpdate(&rects)) << session.error();
    ASSERT_EQ(rects.size(), 1u);

    int wrong = 0;
    for (int32_t y = 0; y < p.height; ++y)
        for (int32_t x = 0; x < p.width; ++x) wrong += session.frame().at(x, y) != (p.at(x, y) & 0xffffff);
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(std::all_of(session.frame().tiles.begin(), session.frame().tiles.end(), [](uint8_t t) { return t == 1; }));
    const vncsnap::TileKinds &seen = session.stats().trle;
    EXPECT_EQ(seen.raw, uint64_t(k.raw));
    EXPECT_EQ(seen.solid, uint64_t(k.solid));
    EXPECT_EQ(seen.packedPalette, uint64_t(k.packed));
    EXPECT_EQ(seen.plainRle, uint64_t(k.plainRle));
    EXPECT_EQ(seen.paletteRle, uint64_t(k.paletteRle));
    EXPECT_EQ(seen.reusedPackedPalette, uint64_t(k.reusedPacked));
    EXPECT_EQ(seen.reusedPaletteRle, uint64_t(k.reusedRle));
    EXPECT_GT(session.stats().trleRetries, 0u) << "no tile body arrived split";
    EXPECT_EQ(vncsnap::Ui32Module::reportCount(), reportsBefore);
    std::printf("TRLE tiles (scripted server): raw %d, solid %d, packed palette %d (+%d reused), plain RLE %d, "
                "palette RLE %d (+%d reused); %llu tiles called again with more bytes\n",
                k.raw, k.solid, k.packed, k.reusedPacked, k.plainRle, k.paletteRle, k.reusedRle,
                static_cast<unsigned long long>(session.stats().trleRetries));
}

}  // namespace
