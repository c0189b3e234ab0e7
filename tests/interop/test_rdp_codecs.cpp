// Bitmaps compressed by the peer's encoders (FreeRDP 2, public API) decode
// through slot 8 and slot 0 to exactly the pictures they were made from:
// desktop scenes cut into 64x64 tiles and odd sizes, icons of the installed
// theme, and synthetic pictures.  Planar streams are compared with the source
// (the peer's own decoder must agree, else the vector is skipped and
// counted); interleaved ones with the source where the peer's decoder gives
// it back, else with the peer decoder's output (its encoder fills some colour
// images with scratch bytes: valid streams that do not carry the source).
#include <freerdp/codec/planar.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <map>

#include "bytes.h"
#include "frame.h"
#include "library.h"
#include "peer.h"
#include "scenes.h"

namespace {

using kit::Picture;

struct Source {
    std::string name;
    Picture picture;
};

std::vector<Source> sources() {
    std::vector<Picture> icons = kit::themeIcons(48, 4);
    for (Picture &p : kit::themeIcons(24, 6)) icons.push_back(p);
    const Picture desk = kit::desktop(640, 480, icons, 0x5eed);
    std::vector<Source> out;
    for (int32_t y = 0; y + 64 <= 480; y += 64)
        for (int32_t x = 0; x + 64 <= 640; x += 64) out.push_back({"desktop tile", desk.crop(x, y, 64, 64)});
    for (auto [x, y, w, h] : std::vector<std::array<int32_t, 4>>{{0, 0, 1, 1}, {301, 77, 1, 64}, {90, 200, 64, 1},
                                                                  {13, 451, 2, 3}, {17, 29, 5, 5}, {250, 300, 7, 13},
                                                                  {99, 99, 31, 33}, {160, 80, 65, 17}, {70, 170, 90, 90},
                                                                  {0, 0, 256, 256}, {0, 416, 640, 64}})
        out.push_back({"desktop " + std::to_string(w) + "x" + std::to_string(h), desk.crop(x, y, w, h)});
    for (int32_t size : {16, 32, 64, 96, 256})
        for (const Picture &icon : kit::themeIcons(size, 3)) out.push_back({"icon", kit::over(icon, 0xffd3d7cf)});
    for (int32_t seed = 1; seed <= 4; ++seed) out.push_back({"synthetic", kit::testPicture(60 + seed, 64, uint32_t(seed))});
    return out;
}

std::vector<uint32_t> colours(const Picture &p) {
    std::vector<uint32_t> out(p.pixels);
    for (uint32_t &v : out) v &= 0xffffff;
    return out;
}

// Slot 8 gives `expected` (top-down) bottom row first; slot 0 paints it the
// right way up at (7, 5) of a larger frame and marks exactly its tiles.
void requireDecodes(const test::Library &lib, const kit::Bytes &stream, int32_t w, int32_t h,
                    const std::vector<uint32_t> &expected, const std::string &what) {
    const kit::GuardedInput input(stream);
    kit::LogCapture log;
    std::vector<uint32_t> decoded(size_t(w) * size_t(h), 0xa5a5a5a5), bottomUp;
    EXPECT_EQ(lib.decodeBitmap(w, h, input.data(), input.size(), true, decoded.data()), 1) << what;
    for (int32_t r = h - 1; r >= 0; --r) bottomUp.insert(bottomUp.end(), expected.begin() + r * w, expected.begin() + (r + 1) * w);
    EXPECT_TRUE(decoded == bottomUp) << what << ": slot 8";

    kit::Frame frame(w + 14, h + 10, 0x123456);
    lib.bitmapUpdate(frame.surface(), UiBitmapData{7, 5, 7 + w - 1, 5 + h - 1, w, h, 0, 1, input.size(), input.data()});
    int wrong = 0;
    std::vector<int> tiles;
    for (int32_t y = 0; y < frame.height(); ++y)
        for (int32_t x = 0; x < frame.width(); ++x) {
            const bool inside = x >= 7 && x < 7 + w && y >= 5 && y < 5 + h;
            wrong += frame.at(x, y) != (inside ? expected[size_t((y - 5) * w + x - 7)] : 0x123456u);
        }
    for (int32_t ty = 5 / 32; ty <= (5 + h - 1) / 32; ++ty)
        for (int32_t tx = 7 / 32; tx <= (7 + w - 1) / 32; ++tx) tiles.push_back(ty * frame.dirty().columns + tx);
    EXPECT_EQ(wrong, 0) << what << ": slot 0";
    EXPECT_EQ(frame.markedTiles(), tiles) << what;
    EXPECT_TRUE(frame.guardsIntact() && log.trail().empty()) << what;
}

std::map<std::string, std::array<int, 3>> tally;  // compared, declined by the encoder, refused by the peer decoder

void report() {
    for (const auto &[key, t] : tally)
        std::printf("%-26s %4d vectors compared, %d declined by the encoder, %d refused by the peer's decoder\n",
                    key.c_str(), t[0], t[1], t[2]);
}

TEST(RdpCodecs, PlanarStreamsOfThePeerDecodeExactly) {
    const std::vector<Source> all = sources();
    ASSERT_GT(all.size(), 90u) << "no icons: is adwaita-icon-theme installed?";
    test::Library lib(4);
    kit::PeerDecoders peer;
    for (uint32_t flags : {0u, uint32_t(PLANAR_FORMAT_HEADER_RLE), uint32_t(PLANAR_FORMAT_HEADER_NA),
                           uint32_t(PLANAR_FORMAT_HEADER_RLE | PLANAR_FORMAT_HEADER_NA)}) {
        auto &t = tally["planar flags " + std::to_string(flags)];
        for (const Source &s : all) {
            const Picture &p = s.picture;
            kit::Bytes stream;
            std::vector<uint32_t> theirs;
            if (p.width == 1 && (flags & PLANAR_FORMAT_HEADER_RLE)) continue;  // the encoder's known fault
            if (!kit::peerPlanar(p, flags, stream)) ++t[1];
            else if (!peer.planar(stream.data(), stream.length(), p.width, p.height, theirs) || theirs != colours(p)) ++t[2];
            else requireDecodes(lib, stream, p.width, p.height, colours(p), s.name + ", planar"), ++t[0];
        }
        EXPECT_GT(t[0], 80) << flags;
    }
}

TEST(RdpCodecs, InterleavedStreamsOfThePeerDecodeAsItsDecoderDecodesThem) {
    test::Library lib(3);
    kit::PeerDecoders peer;
    auto &t = tally["interleaved"];
    for (const Source &s : sources()) {
        const Picture &p = s.picture;
        if (p.width % 4 != 0 || p.width > 64 || p.height > 64) continue;
        kit::Bytes stream;
        std::vector<uint32_t> theirs;
        if (!kit::peerInterleaved(p, stream)) ++t[1];
        else if (!peer.interleaved(stream.data(), stream.length(), p.width, p.height, theirs)) ++t[2];
        else requireDecodes(lib, stream, p.width, p.height, theirs, s.name + ", interleaved"), ++t[0];
    }
    EXPECT_GT(t[0], 70);
    report();
}

}  // namespace
