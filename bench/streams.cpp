#include "streams.h"

#include "peerEncoders.h"

#include <freerdp/codec/interleaved.h>
#include <freerdp/codec/planar.h>
#include <winpr/stream.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace bench {
namespace {

using interop::Picture;

Picture loadOrEmpty(const std::string &path) {
    Picture p;
    std::string error;
    if (!interop::loadPng(path, p, error)) std::fprintf(stderr, "bench: %s\n", error.c_str());
    return p;
}

// The desktop icons of the interoperability tests.
std::vector<Picture> desktopIcons() {
    std::vector<Picture> icons;
    for (const auto &[size, count] : {std::pair{48, 4}, std::pair{24, 6}, std::pair{16, 4}})
        for (const std::string &path : interop::iconPaths(size, size_t(count))) icons.push_back(loadOrEmpty(path));
    return icons;
}

Picture buildIconPicture() {
    Picture out(1024, 512, 0xffd3d7cf);
    interop::Canvas canvas(out);
    int32_t x = 0;
    for (const std::string &path : interop::iconPaths(512, 2)) {
        const Picture icon = loadOrEmpty(path);
        canvas.blend(icon, x, 0);
        x += 512;
    }
    if (x == 0) std::fprintf(stderr, "bench: no 512 x 512 icons (adwaita-icon-theme); the icon picture is grey\n");
    return out;
}

Picture buildPhotoPicture() {
    Picture out(640, 448);
    interop::Canvas(out).photo(0, 0, 640, 448, 0x9e3779b9);
    return out;
}

// ---------------------------------------------------------------------------
// The peer's encoders
// ---------------------------------------------------------------------------

using interop::Bytes;

bool interleavedEncode(const Picture &p, Bytes &out) { return interop::interleavedCompressEncode(p, out); }

bool planarEncode(const Picture &p, uint8_t header, Bytes &out) {
    const uint32_t flags =
        ((header & 0x10) ? PLANAR_FORMAT_HEADER_RLE : 0) | ((header & 0x20) ? PLANAR_FORMAT_HEADER_NA : 0);
    return interop::planarEncode(p, flags, out) && out[0] == header;
}

// ---------------------------------------------------------------------------
// Workloads
// ---------------------------------------------------------------------------

struct Cut {
    const Picture *picture;
    int32_t x, y, width, height;
};

std::vector<Cut> tilesOf(const Picture &p, int32_t size) {
    std::vector<Cut> out;
    for (int32_t y = 0; y + size <= p.height; y += size)
        for (int32_t x = 0; x + size <= p.width; x += size) out.push_back({&p, x, y, size, size});
    return out;
}

struct Source {
    std::string name;
    std::vector<Cut> cuts;
};

std::vector<Source> sources(bool withLarge) {
    std::vector<Source> out = {
        {"desktop 64x64 tiles", tilesOf(desktopPicture(), 64)},
        {"icon art 64x64 tiles", tilesOf(iconPicture(), 64)},
        {"photo 64x64 tiles", tilesOf(photoPicture(), 64)},
    };
    if (withLarge) out.push_back({"desktop 256x256", {{&desktopPicture(), 192, 112, 256, 256}}});
    return out;
}

// Colours of a B, G, R, X buffer of w x h pixels.
std::vector<uint32_t> colours(const uint8_t *p, int32_t w, int32_t h, uint32_t stride) {
    std::vector<uint32_t> out;
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
            uint32_t v;
            std::memcpy(&v, p + size_t(y) * stride + 4 * size_t(x), 4);
            out.push_back(v & 0xffffff);
        }
    return out;
}

template <typename Encode, typename Accept>
Workload build(const Source &source, Encode encode, Accept accept, const char *what) {
    Workload w{source.name, {}, 0, 0};
    int declined = 0, refused = 0;
    for (const Cut &c : source.cuts) {
        const Picture p = c.picture->crop(c.x, c.y, c.width, c.height);
        Bitmap b{c.x, c.y, c.width, c.height, {}};
        if (!encode(p, b.stream)) {
            ++declined;
            continue;
        }
        if (!accept(p, b)) {
            ++refused;
            continue;
        }
        w.maxWidth = std::max(w.maxWidth, c.width);
        w.maxHeight = std::max(w.maxHeight, c.height);
        w.bitmaps.push_back(std::move(b));
    }
    if (declined + refused > 0)
        std::fprintf(stderr, "bench: %s, %s: %zu bitmaps (%d declined by the encoder, %d refused by its decoder)\n",
                     what, source.name.c_str(), w.bitmaps.size(), declined, refused);
    return w;
}

}  // namespace

const Picture &desktopPicture() {
    static const Picture p = interop::desktop(640, 480, desktopIcons(), 0x5eed);
    return p;
}
const Picture &iconPicture() {
    static const Picture p = buildIconPicture();
    return p;
}
const Picture &photoPicture() {
    static const Picture p = buildPhotoPicture();
    return p;
}

int64_t Workload::pixels() const {
    int64_t n = 0;
    for (const Bitmap &b : bitmaps) n += int64_t(b.width) * b.height;
    return n;
}
int64_t Workload::inputBytes() const {
    int64_t n = 0;
    for (const Bitmap &b : bitmaps) n += int64_t(b.stream.size());
    return n;
}

PeerInterleaved::PeerInterleaved() : context(bitmap_interleaved_context_new(FALSE)) {}
PeerInterleaved::~PeerInterleaved() {
    bitmap_interleaved_context_free(static_cast<BITMAP_INTERLEAVED_CONTEXT *>(context));
}
bool PeerInterleaved::decode(const Bitmap &b, uint8_t *dst, uint32_t stride, int32_t x, int32_t y) {
    return interleaved_decompress(static_cast<BITMAP_INTERLEAVED_CONTEXT *>(context), b.stream.data(),
                                  UINT32(b.stream.size()), uint32_t(b.width), uint32_t(b.height), 24, dst,
                                  PIXEL_FORMAT_BGRX32, stride, uint32_t(x), uint32_t(y), uint32_t(b.width),
                                  uint32_t(b.height), nullptr) != 0;
}

PeerPlanar::PeerPlanar(int32_t maxWidth, int32_t maxHeight)
    : context(freerdp_bitmap_planar_context_new(0, uint32_t(maxWidth), uint32_t(maxHeight))) {}
PeerPlanar::~PeerPlanar() { freerdp_bitmap_planar_context_free(static_cast<BITMAP_PLANAR_CONTEXT *>(context)); }
bool PeerPlanar::decode(const Bitmap &b, uint8_t *dst, uint32_t stride, bool flip, int32_t x, int32_t y) {
    return planar_decompress(static_cast<BITMAP_PLANAR_CONTEXT *>(context), b.stream.data(), UINT32(b.stream.size()),
                             uint32_t(b.width), uint32_t(b.height), dst, PIXEL_FORMAT_BGRX32, stride, uint32_t(x),
                             uint32_t(y), uint32_t(b.width), uint32_t(b.height), flip ? TRUE : FALSE) != 0;
}

const std::vector<Workload> &interleavedWorkloads() {
    static const std::vector<Workload> all = [] {
        std::vector<Workload> out;
        PeerInterleaved peer;
        std::vector<uint8_t> buffer;
        const auto accept = [&](const Picture &, const Bitmap &b) {
            buffer.assign(size_t(b.width) * size_t(b.height) * 4, 0);
            return peer.decode(b, buffer.data(), uint32_t(b.width) * 4);
        };
        for (const Source &s : sources(false)) out.push_back(build(s, interleavedEncode, accept, "interleaved"));
        return out;
    }();
    return all;
}

const std::vector<Workload> &planarWorkloads(uint8_t header) {
    static std::vector<Workload> byHeader[4];
    std::vector<Workload> &out = byHeader[(header >> 4) & 3];
    if (!out.empty()) return out;
    PeerPlanar peer(256, 256);
    std::vector<uint8_t> buffer;
    const auto encode = [header](const Picture &p, Bytes &stream) { return planarEncode(p, header, stream); };
    const auto accept = [&](const Picture &p, const Bitmap &b) {
        buffer.assign(size_t(b.width) * size_t(b.height) * 4, 0);
        if (!peer.decode(b, buffer.data(), uint32_t(b.width) * 4, true)) return false;
        std::vector<uint32_t> source(p.pixels);
        for (uint32_t &v : source) v &= 0xffffff;
        return colours(buffer.data(), b.width, b.height, uint32_t(b.width) * 4) == source;
    };
    char what[32];
    std::snprintf(what, sizeof what, "planar 0x%02x", header);
    for (const Source &s : sources(true)) out.push_back(build(s, encode, accept, what));
    return out;
}

}  // namespace bench
