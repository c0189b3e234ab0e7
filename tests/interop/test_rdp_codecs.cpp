// Bitmaps compressed by an independent RDP codec library (Debian's freerdp2,
// used as a black box through its public compressor and decompressor API)
// must decode through slot 8 and through slot 0 into a frame buffer to exactly
// the right pixels.
//
// Pictures: icons and pictures shipped by Debian packages, and synthetic
// desktop content (flat areas, 1-pixel text strokes, gradients, noise), cut
// into bitmaps of RDP sizes: 64 x 64 mostly, odd sizes, up to 65,536 pixels.
//
// Both encoders take the picture top-down and emit the bottom row first, as
// RDP bitmap updates carry it: slot 8 must therefore give the rows bottom-up
// and slot 0 must paint the picture the right way up.
//
// What each vector is compared with:
// - planar (headers 0x00, 0x10, 0x20, 0x30): the source picture's colours.
//   The peer's own decoder is run too and must agree with the source.
// - interleaved, 24 bits per pixel: the source picture when the peer's own
//   decoder reproduces it; otherwise the peer decoder's output.  That encoder
//   fills some colour-image orders with bytes of its scratch buffers instead
//   of the picture's pixels; such streams are valid, they just do not carry
//   the source, so the peer's decoding of the same stream is the reference.
//
// Known limits of the encoder that the vectors respect:
// - planar with run-length planes encodes width 1 invalidly: width-1 bitmaps
//   are encoded with raw planes only;
// - interleaved_compress takes widths that are multiples of 4, up to 64 x 64;
//   other sizes go through freerdp_bitmap_compress, up to 8,192 pixels
//   (32 KiB of 32-bit input) per call.
#include "frame.h"
#include "peerEncoders.h"
#include "guarded_input.h"
#include "library.h"
#include "log_capture.h"

#include <freerdp/codec/bitmap.h>
#include <freerdp/codec/interleaved.h>
#include <freerdp/codec/planar.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <winpr/stream.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "pictures.h"

using namespace ui32test;
using interop::Picture;
using interop::interleavedCompressEncode;
using interop::planarEncode;

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kFrameFill = 0x00123456;
constexpr int32_t kFrameMarginX = 7;  // the bitmap lands at (7, 5): tiles
constexpr int32_t kFrameMarginY = 5;  // are crossed at odd offsets
constexpr int32_t kBitmapLimit = 65536;
constexpr int32_t kBitmapCompressLimit = 8192;

// ---------------------------------------------------------------------------
// Sources
// ---------------------------------------------------------------------------

struct Source {
    std::string name;
    Picture picture;  // top-down; alpha used by the planar variants with alpha
};

Picture loadOrEmpty(const std::string &path) {
    Picture p;
    std::string error;
    if (!interop::loadPng(path, p, error)) ADD_FAILURE() << error;
    return p;
}

std::vector<Picture> desktopIcons() {
    std::vector<Picture> icons;
    for (const auto &[size, count] : {std::pair{48, 4}, std::pair{24, 6}, std::pair{16, 4}})
        for (const std::string &path : interop::iconPaths(size, size_t(count))) icons.push_back(loadOrEmpty(path));
    return icons;
}

const Picture &theDesktop() {
    static const Picture desktop = interop::desktop(640, 480, desktopIcons(), 0x5eed);
    return desktop;
}

void addTiles(std::vector<Source> &out, const std::string &name, const Picture &p, int32_t size) {
    for (int32_t y = 0; y + size <= p.height; y += size)
        for (int32_t x = 0; x + size <= p.width; x += size)
            out.push_back({name + " @" + std::to_string(x) + "," + std::to_string(y), p.crop(x, y, size, size)});
}

std::vector<Source> desktopTiles() {
    std::vector<Source> out;
    addTiles(out, "desktop 64x64", theDesktop(), 64);
    return out;
}

std::vector<Source> desktopOddSizes() {
    const struct {
        int32_t x, y, w, h;
    } cuts[] = {
        {0, 0, 1, 1},      {301, 77, 1, 64},  {90, 200, 64, 1},   {13, 451, 2, 3},     {333, 100, 3, 7},
        {17, 29, 5, 5},    {250, 300, 7, 13}, {401, 333, 13, 64}, {99, 99, 31, 33},   {200, 150, 63, 63},
        {160, 80, 65, 17}, {5, 380, 100, 75}, {380, 120, 127, 64}, {70, 170, 90, 90}, {240, 144, 127, 129},
        {0, 0, 256, 256},  {300, 200, 255, 257}, {0, 300, 320, 180}, {0, 416, 640, 64}, {64, 64, 512, 128},
    };
    std::vector<Source> out;
    for (const auto &c : cuts)
        out.push_back({"desktop " + std::to_string(c.w) + "x" + std::to_string(c.h) + " @" + std::to_string(c.x) +
                           "," + std::to_string(c.y),
                       theDesktop().crop(c.x, c.y, c.w, c.h)});
    return out;
}

std::vector<Source> icons() {
    std::vector<Source> out;
    for (const auto &[size, count] :
         {std::pair{16, 6}, std::pair{24, 6}, std::pair{32, 6}, std::pair{48, 6}, std::pair{64, 6},
          std::pair{96, 4}, std::pair{256, 3}})
        for (const std::string &path : interop::iconPaths(size, size_t(count))) out.push_back({path, loadOrEmpty(path)});
    return out;
}

std::vector<Source> pictures() {
    std::vector<Source> out;
    for (const std::string &path : interop::iconPaths(512, 2)) {
        const Picture p = loadOrEmpty(path);
        addTiles(out, path + " 64x64", p, 64);
        if (p.width >= 320 && p.height >= 200)
            out.push_back({path + " 320x200 over grey", p.crop(96, 160, 320, 200).over(0xffd3d7cf)});
    }
    // libpng's test picture, where the documentation files are installed.
    const std::string photo = "/usr/share/doc/libpng-dev/examples/pngtest.png";
    if (access(photo.c_str(), R_OK) == 0) out.push_back({photo, loadOrEmpty(photo)});
    return out;
}

std::vector<Source> synthetic() {
    using interop::Canvas;
    std::vector<Source> out;
    const auto make = [&](const char *name, int32_t w, int32_t h, auto draw) {
        Picture p(w, h, 0xffffffff);
        Canvas c(p);
        draw(c, p);
        out.push_back({name, p});
    };
    make("flat", 64, 64, [](Canvas &c, Picture &) { c.fill(0, 0, 64, 64, 0xff3465a4); });
    make("black", 64, 64, [](Canvas &c, Picture &) { c.fill(0, 0, 64, 64, 0xff000000); });
    make("horizontal gradient", 64, 64,
         [](Canvas &c, Picture &) { c.horizontalGradient(0, 0, 64, 64, 0xff000000, 0xffffffff); });
    make("vertical gradient", 64, 64,
         [](Canvas &c, Picture &) { c.verticalGradient(0, 0, 64, 64, 0xff204a87, 0xfffce94f); });
    make("noise", 64, 64, [](Canvas &c, Picture &) { c.noise(0, 0, 64, 64, 7); });
    make("photo", 64, 64, [](Canvas &c, Picture &) { c.photo(0, 0, 64, 64, 11); });
    make("text on white", 64, 64, [](Canvas &c, Picture &) {
        for (int32_t y = 2; y < 60; y += 10) c.text(2, y, 10, 0xff2e3436, uint32_t(y));
    });
    make("text on title bar", 64, 24, [](Canvas &c, Picture &) {
        c.horizontalGradient(0, 0, 64, 24, 0xff204a87, 0xff729fcf);
        c.text(3, 7, 10, 0xffffffff, 3);
    });
    make("checkered", 64, 64, [](Canvas &, Picture &p) {
        for (int32_t y = 0; y < 64; ++y)
            for (int32_t x = 0; x < 64; ++x) p.at(x, y) = ((x + y) & 1) ? 0xffbabdb6 : 0xff888a85;
    });
    make("window", 64, 64, [](Canvas &c, Picture &) { c.window(-10, 3, 90, 70, 5); });
    make("strokes, odd size", 37, 23, [](Canvas &c, Picture &) {
        c.fill(0, 0, 37, 23, 0xffeeeeec);
        for (int32_t i = 0; i < 37; i += 3) c.fill(i, 0, 1, 23, 0xff000000);
        c.fill(0, 11, 37, 1, 0xffcc0000);
    });
    make("alpha ramp", 64, 64, [](Canvas &, Picture &p) {
        for (int32_t y = 0; y < 64; ++y)
            for (int32_t x = 0; x < 64; ++x) p.at(x, y) = (uint32_t(x * 4) << 24) | uint32_t(0x10203 * y);
    });
    return out;
}

struct Family {
    const char *name;
    std::vector<Source> (*make)();
};
void PrintTo(const Family &f, std::ostream *os) { *os << f.name; }

const Family kFamilies[] = {
    {"DesktopTiles", desktopTiles}, {"DesktopOddSizes", desktopOddSizes}, {"Icons", icons},
    {"Pictures", pictures},         {"Synthetic", synthetic},
};

// ---------------------------------------------------------------------------
// Counts of the vectors, per codec and header variant
// ---------------------------------------------------------------------------

struct Tally {
    int vectors = 0;
    int againstSource = 0;
    int againstPeerDecoder = 0;
    int encoderDeclined = 0;  // the encoder returned no stream
    int peerRefused = 0;      // the stream failed the peer's own decoder
};

std::map<std::string, Tally> &totals() {
    static std::map<std::string, Tally> t;
    return t;
}

void print(const char *title, const std::map<std::string, Tally> &tallies) {
    std::printf("%s\n", title);
    for (const auto &[key, t] : tallies)
        std::printf("  %-38s %4d vectors: %4d compared with the source, %4d with the peer decoder"
                    " (skipped: %d declined by the encoder, %d refused by the peer decoder)\n",
                    key.c_str(), t.vectors, t.againstSource, t.againstPeerDecoder, t.encoderDeclined, t.peerRefused);
    std::fflush(stdout);
}

class PrintTotals : public ::testing::Environment {
public:
    void TearDown() override {
        if (!totals().empty()) print("Interoperability vectors, all families:", totals());
    }
};
const auto *const kPrintTotals = ::testing::AddGlobalTestEnvironment(new PrintTotals);

// ---------------------------------------------------------------------------
// Decoding through ui32 and comparing
// ---------------------------------------------------------------------------

std::string hex(const Bytes &bytes, size_t limit = 48) {
    std::string out;
    char b[4];
    for (size_t i = 0; i < bytes.size() && i < limit; ++i) {
        std::snprintf(b, sizeof b, "%02x ", bytes[i]);
        out += b;
    }
    if (bytes.size() > limit) out += "...";
    return out;
}

// Keeps the stream of a failing vector for a closer look.
std::string keep(const std::string &what, const Bytes &stream) {
    std::string name = "interop-failure-";
    for (char c : what) name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    name = name.substr(0, 120) + ".bin";
    if (FILE *f = std::fopen(name.c_str(), "wb")) {
        std::fwrite(stream.data(), 1, stream.size(), f);
        std::fclose(f);
    }
    return name;
}

// First position where two pixel arrays of w x h differ in the colour bits,
// or -1.
long firstDifference(const std::vector<uint32_t> &a, const std::vector<uint32_t> &b) {
    for (size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i]) return long(i);
    return -1;
}

std::vector<uint32_t> colours(const Picture &p) {
    std::vector<uint32_t> out(p.pixels);
    for (uint32_t &v : out) v &= 0xffffff;
    return out;
}

std::vector<int> tilesOf(int32_t columns, int32_t left, int32_t top, int32_t width, int32_t height) {
    std::vector<int> out;
    for (int32_t ty = top / 32; ty <= (top + height - 1) / 32; ++ty)
        for (int32_t tx = left / 32; tx <= (left + width - 1) / 32; ++tx) out.push_back(ty * columns + tx);
    return out;
}

// Decodes `stream` through slot 8 and slot 0 of the library in its current
// depth and requires `expected` (top-down colours, bits 24-31 zero).
void requireDecodes(const Library &lib, const Bytes &stream, int32_t width, int32_t height,
                    const std::vector<uint32_t> &expected, const std::string &what) {
    const GuardedInput input(stream);
    LogCapture log;

    // Slot 8: rows in stream order, bottom row first.
    std::vector<uint32_t> decoded(size_t(width) * size_t(height), 0xa5a5a5a5);
    const int32_t result =
        lib.slot<UiDecodeBitmapFn>(UI_SLOT_DECODE_BITMAP)(width, height, input.data(), input.size(), 1, decoded.data());
    std::vector<uint32_t> bottomUp(expected.size());
    for (int32_t r = 0; r < height; ++r)
        std::copy_n(expected.begin() + ptrdiff_t(r) * width, width, bottomUp.begin() + ptrdiff_t(height - 1 - r) * width);
    const long at = firstDifference(decoded, bottomUp);
    EXPECT_EQ(result, 1) << what;
    if (at >= 0)
        ADD_FAILURE() << what << ": slot 8 pixel (" << at % width << ", stored row " << at / width << ") is 0x"
                      << std::hex << decoded[size_t(at)] << ", expected 0x" << bottomUp[size_t(at)] << std::dec << "; "
                      << stream.size() << " bytes: " << hex(stream) << " (kept in " << keep(what, stream) << ")";

    // Slot 0: painted the right way up at an odd place in a larger frame.
    Frame frame(width + 2 * kFrameMarginX, height + 2 * kFrameMarginY, kFrameFill);
    const UiBitmapData bitmap{kFrameMarginX, kFrameMarginY, kFrameMarginX + width - 1, kFrameMarginY + height - 1,
                              width, height, 0, 1, input.size(), input.data()};
    lib.slot<UiBitmapUpdateFn>(UI_SLOT_BITMAP_UPDATE)(&frame.surface(), &bitmap);
    int wrong = 0;
    std::string firstWrong;
    for (int32_t y = 0; y < frame.height(); ++y)
        for (int32_t x = 0; x < frame.width(); ++x) {
            const int32_t c = x - kFrameMarginX, r = y - kFrameMarginY;
            const bool inside = c >= 0 && c < width && r >= 0 && r < height;
            const uint32_t want = inside ? expected[size_t(r) * size_t(width) + size_t(c)] : kFrameFill;
            if (frame.at(x, y) != want && wrong++ == 0) {
                char b[96];
                std::snprintf(b, sizeof b, "frame pixel (%d, %d) is 0x%06x, expected 0x%06x", x, y, frame.at(x, y),
                              want);
                firstWrong = b;
            }
        }
    EXPECT_EQ(wrong, 0) << what << ": slot 0: " << firstWrong;
    EXPECT_EQ(frame.markedTiles(), tilesOf(frame.dirty().columns, kFrameMarginX, kFrameMarginY, width, height))
        << what;
    EXPECT_TRUE(frame.guardsIntact()) << what;
    EXPECT_TRUE(log.reports().empty()) << what << ": first report " << log.sites().front();
}

// ---------------------------------------------------------------------------
// The peer's planar codec
// ---------------------------------------------------------------------------

struct PlanarVariant {
    uint8_t header;  // what the encoder is asked for, and writes
    DWORD flags;
};
const PlanarVariant kPlanarVariants[] = {
    {0x00, 0},
    {0x10, PLANAR_FORMAT_HEADER_RLE},
    {0x20, PLANAR_FORMAT_HEADER_NA},
    {0x30, PLANAR_FORMAT_HEADER_RLE | PLANAR_FORMAT_HEADER_NA},
};

// The peer's own decoding, top-down, colours only.
bool planarPeerDecode(const Bytes &stream, int32_t width, int32_t height, std::vector<uint32_t> &out) {
    BITMAP_PLANAR_CONTEXT *context = freerdp_bitmap_planar_context_new(0, uint32_t(width), uint32_t(height));
    if (context == nullptr) return false;
    out.assign(size_t(width) * size_t(height), 0);
    const BOOL ok = planar_decompress(context, stream.data(), UINT32(stream.size()), uint32_t(width),
                                      uint32_t(height), reinterpret_cast<BYTE *>(out.data()), PIXEL_FORMAT_BGRX32,
                                      uint32_t(width) * 4, 0, 0, uint32_t(width), uint32_t(height), TRUE);
    freerdp_bitmap_planar_context_free(context);
    for (uint32_t &v : out) v &= 0xffffff;
    return ok;
}

// ---------------------------------------------------------------------------
// The peer's interleaved codec, 24 bits per pixel
// ---------------------------------------------------------------------------

// freerdp_bitmap_compress reads 32-bit pixels (B, G, R, X), rows width * 4
// bytes apart, from `start_line` upwards.
bool bitmapCompressEncode(const Picture &p, Bytes &out) {
    const size_t capacity = size_t(p.width) * size_t(p.height) * 4 + 1024;
    wStream *s = Stream_New(nullptr, capacity);
    wStream *scratch = Stream_New(nullptr, capacity);
    if (s == nullptr || scratch == nullptr) return false;
    std::memset(Stream_Buffer(s), 0, capacity);
    std::memset(Stream_Buffer(scratch), 0, capacity);
    const SSIZE_T lines = freerdp_bitmap_compress(p.pixels.data(), uint32_t(p.width), uint32_t(p.height), s, 24,
                                                  UINT32(capacity), uint32_t(p.height - 1), scratch, 0);
    const size_t size = Stream_GetPosition(s);
    out.assign(Stream_Buffer(s), Stream_Buffer(s) + size);
    Stream_Free(s, TRUE);
    Stream_Free(scratch, TRUE);
    return lines == p.height && size > 0;
}

bool interleavedPeerDecode(const Bytes &stream, int32_t width, int32_t height, std::vector<uint32_t> &out) {
    BITMAP_INTERLEAVED_CONTEXT *context = bitmap_interleaved_context_new(FALSE);
    if (context == nullptr) return false;
    out.assign(size_t(width) * size_t(height), 0);
    const BOOL ok = interleaved_decompress(context, stream.data(), UINT32(stream.size()), uint32_t(width),
                                          uint32_t(height), 24, reinterpret_cast<BYTE *>(out.data()),
                                          PIXEL_FORMAT_BGRX32, uint32_t(width) * 4, 0, 0, uint32_t(width),
                                          uint32_t(height), nullptr);
    bitmap_interleaved_context_free(context);
    for (uint32_t &v : out) v &= 0xffffff;
    return ok;
}

// ---------------------------------------------------------------------------
// The tests, one per codec and picture family
// ---------------------------------------------------------------------------

class RdpCodecInterop : public ::testing::TestWithParam<Family> {};

TEST_P(RdpCodecInterop, PlanarEveryHeaderVariantDecodesExactly) {
    const std::vector<Source> sources = GetParam().make();
    ASSERT_FALSE(sources.empty()) << "no pictures: is adwaita-icon-theme installed (tools/packages/interop.txt)?";
    Library lib(3);
    lib.slot<UiSetSourceBytesPerPixel4Fn>(UI_SLOT_SET_SOURCE_BYTES_PER_PIXEL_4)();
    std::map<std::string, Tally> tallies;
    for (const Source &s : sources) {
        const Picture &p = s.picture;
        ASSERT_GT(p.width, 0) << s.name;
        ASSERT_LE(int64_t(p.width) * p.height, kBitmapLimit) << s.name;
        const std::vector<uint32_t> expected = colours(p);
        for (const PlanarVariant &v : kPlanarVariants) {
            if (p.width == 1 && (v.flags & PLANAR_FORMAT_HEADER_RLE)) continue;  // the encoder's known fault
            char header[8];
            std::snprintf(header, sizeof header, "0x%02x", v.header);
            const std::string what = s.name + ", planar " + header;
            const std::string key = std::string("planar header ") + header;
            Bytes stream;
            if (!planarEncode(p, v.flags, stream)) {
                // Run-length planes longer than raw ones: the encoder gives up.
                for (Tally *t : {&tallies[key], &totals()[key]}) ++t->encoderDeclined;
                continue;
            }
            ASSERT_EQ(stream[0], v.header) << what;
            std::vector<uint32_t> peer;
            if (!planarPeerDecode(stream, p.width, p.height, peer) || firstDifference(peer, expected) != -1) {
                // Not a valid vector: the peer's own decoder refuses it (on
                // tiny noisy bitmaps the encoder drops the last plane rows).
                for (Tally *t : {&tallies[key], &totals()[key]}) ++t->peerRefused;
                std::printf("  skipped, refused by the peer's own decoder: %s (%zu bytes: %s)\n", what.c_str(),
                            stream.size(), hex(stream).c_str());
                continue;
            }
            requireDecodes(lib, stream, p.width, p.height, expected, what);
            for (Tally *t : {&tallies[key], &totals()[key]}) {
                ++t->vectors;
                ++t->againstSource;
            }
        }
    }
    print(GetParam().name, tallies);
    for (const PlanarVariant &v : kPlanarVariants) {
        char header[8];
        std::snprintf(header, sizeof header, "0x%02x", v.header);
        EXPECT_GT(tallies[std::string("planar header ") + header].vectors, 0) << header;
    }
}

TEST_P(RdpCodecInterop, Interleaved24BitDecodesExactly) {
    const std::vector<Source> sources = GetParam().make();
    ASSERT_FALSE(sources.empty()) << "no pictures: is adwaita-icon-theme installed (tools/packages/interop.txt)?";
    Library lib(3);
    std::map<std::string, Tally> tallies;
    for (const Source &s : sources) {
        const Picture &p = s.picture;
        const bool viaInterleavedCompress = p.width % 4 == 0 && p.width <= 64 && p.height <= 64;
        if (!viaInterleavedCompress && int64_t(p.width) * p.height > kBitmapCompressLimit) continue;
        const std::string encoder = viaInterleavedCompress ? "interleaved_compress" : "freerdp_bitmap_compress";
        const std::string what = s.name + ", interleaved 24-bit by " + encoder;
        Bytes stream;
        ASSERT_TRUE(viaInterleavedCompress ? interleavedCompressEncode(p, stream) : bitmapCompressEncode(p, stream))
            << what << ": the encoder failed";
        std::vector<uint32_t> peer;
        ASSERT_TRUE(interleavedPeerDecode(stream, p.width, p.height, peer)) << what;
        const bool reproducesSource = firstDifference(peer, colours(p)) == -1;
        requireDecodes(lib, stream, p.width, p.height, peer, what);
        for (Tally *t : {&tallies["interleaved, " + encoder], &totals()["interleaved, " + encoder]}) {
            ++t->vectors;
            ++(reproducesSource ? t->againstSource : t->againstPeerDecoder);
        }
    }
    print(GetParam().name, tallies);
    int vectors = 0;
    for (const auto &[key, t] : tallies) vectors += t.vectors;
    EXPECT_GT(vectors, 0);
}

INSTANTIATE_TEST_SUITE_P(Pictures, RdpCodecInterop, ::testing::ValuesIn(kFamilies),
                         [](const ::testing::TestParamInfo<Family> &info) { return std::string(info.param.name); });

}  // namespace
