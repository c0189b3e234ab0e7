#include "streams.h"

#include <freerdp/codec/planar.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "peer.h"
#include "scenes.h"

namespace bench {
namespace {

using kit::Bytes;
using kit::Picture;

// The desktop icons: as many of each size as the interoperability tests use.
std::vector<Picture> desktopIcons() {
    std::vector<Picture> icons;
    for (const auto &[size, count] : {std::pair{48, 4}, std::pair{24, 6}, std::pair{16, 4}})
        for (Picture &icon : kit::themeIcons(size, size_t(count))) icons.push_back(std::move(icon));
    return icons;
}

Picture buildIconPicture() {
    Picture out(1024, 512, 0xffd3d7cf);
    kit::Canvas canvas(out);
    int32_t x = 0;
    for (const Picture &icon : kit::themeIcons(512, 2)) canvas.blend(icon, x, 0), x += 512;
    if (x == 0) std::fprintf(stderr, "bench: no 512 x 512 icons (adwaita-icon-theme); the icon picture is grey\n");
    return out;
}

Picture buildPhotoPicture() {
    Picture out(640, 448);
    kit::Canvas(out).photo(0, 0, 640, 448, 0x9e3779b9);
    return out;
}

// ---------------------------------------------------------------------------
// RDP bitmaps
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

// The bitmaps of a source that the encoder makes and the peer's decoder takes.
template <typename Encode, typename Accept>
Workload build(const Source &source, Encode encode, Accept accept, const char *what) {
    Workload w{source.name, {}};
    int declined = 0, refused = 0;
    for (const Cut &c : source.cuts) {
        const Picture p = c.picture->crop(c.x, c.y, c.width, c.height);
        Bitmap b{c.x, c.y, c.width, c.height, {}};
        if (!encode(p, b.stream)) {
            ++declined;
        } else if (!accept(p, b)) {
            ++refused;
        } else {
            w.bitmaps.push_back(std::move(b));
        }
    }
    if (declined + refused > 0)
        std::fprintf(stderr, "bench: %s, %s: %zu bitmaps (%d declined by the encoder, %d refused by its decoder)\n",
                     what, source.name.c_str(), w.bitmaps.size(), declined, refused);
    return w;
}

// ---------------------------------------------------------------------------
// RFB tiles
// ---------------------------------------------------------------------------

// The tile's colours by frequency, most frequent first (ties by value).
std::vector<uint32_t> coloursByFrequency(const Picture &tile) {
    std::map<uint32_t, int> counts;
    for (uint32_t p : tile.pixels) ++counts[p & 0xffffff];
    std::vector<std::pair<int, uint32_t>> order;
    for (const auto &[c, n] : counts) order.push_back({-n, c});
    std::sort(order.begin(), order.end());
    std::vector<uint32_t> out;
    for (const auto &[n, c] : order) out.push_back(c);
    return out;
}

int distance(uint32_t a, uint32_t b) {
    int d = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const int x = int((a >> shift) & 0xff) - int((b >> shift) & 0xff);
        d += x * x;
    }
    return d;
}

// The tile with every pixel replaced by the nearest of its `size` most
// frequent colours.
Picture reduced(const Picture &tile, size_t size) {
    std::vector<uint32_t> palette = coloursByFrequency(tile);
    if (palette.size() > size) palette.resize(size);
    std::map<uint32_t, uint32_t> nearest;
    Picture out = tile;
    for (uint32_t &p : out.pixels) {
        auto it = nearest.find(p & 0xffffff);
        if (it == nearest.end()) {
            uint32_t best = palette[0];
            for (uint32_t c : palette)
                if (distance(p, c) < distance(p, best)) best = c;
            it = nearest.emplace(p & 0xffffff, best).first;
        }
        p = it->second;
    }
    return out;
}

// The tile's picture and the sub-encoding asked of the kit's encoder.
std::pair<Picture, int> tileOf(RfbKind kind, const Picture &t) {
    switch (kind) {
        case RfbKind::raw: return {t, 0};
        case RfbKind::solid: return {t, 1};
        case RfbKind::packed2: return {reduced(t, 2), 2};
        case RfbKind::packed4: return {reduced(t, 4), 2};
        case RfbKind::packed16: return {reduced(t, 16), 2};
        case RfbKind::plainRle: return {t, 128};
        case RfbKind::paletteRle: return {reduced(t, 127), 130};
    }
    return {t, 0};
}

std::vector<RfbTile> encodeTiles(RfbKind kind) {
    const Picture &picture = kind == RfbKind::raw ? photoPicture() : desktopPicture();
    std::vector<RfbTile> out;
    for (int32_t y = 0; y + kRfbTile <= picture.height; y += kRfbTile)
        for (int32_t x = 0; x + kRfbTile <= picture.width; x += kRfbTile) {
            const auto [tile, subencoding] = tileOf(kind, picture.crop(x, y, kRfbTile, kRfbTile));
            const Bytes bytes = kit::zrleTile(tile, subencoding);
            if (bytes.empty()) std::abort();  // a palette kind with too many colours: reduced() prevents it
            out.push_back({x, y, bytes[0], Bytes(bytes.begin() + 1, bytes.end())});
        }
    return out;
}

}  // namespace

const Picture &desktopPicture() {
    static const Picture p = kit::desktop(640, 480, desktopIcons(), 0x5eed);
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

const std::vector<Workload> &interleavedWorkloads() {
    static const std::vector<Workload> all = [] {
        std::vector<Workload> out;
        kit::PeerDecoders peer;
        std::vector<uint32_t> pixels;
        const auto accept = [&](const Picture &, const Bitmap &b) {
            return peer.interleaved(b.stream.data(), b.stream.length(), b.width, b.height, pixels);
        };
        for (const Source &s : sources(false)) out.push_back(build(s, kit::peerInterleaved, accept, "interleaved"));
        return out;
    }();
    return all;
}

const std::vector<Workload> &planarWorkloads(uint8_t header) {
    static std::vector<Workload> byHeader[4];
    std::vector<Workload> &out = byHeader[(header >> 4) & 3];
    if (!out.empty()) return out;
    kit::PeerDecoders peer;
    std::vector<uint32_t> pixels;
    const auto encode = [header](const Picture &p, Bytes &stream) {
        const uint32_t flags =
            ((header & 0x10) ? PLANAR_FORMAT_HEADER_RLE : 0) | ((header & 0x20) ? PLANAR_FORMAT_HEADER_NA : 0);
        return kit::peerPlanar(p, flags, stream) && stream[0] == header;
    };
    const auto accept = [&](const Picture &p, const Bitmap &b) {
        if (!peer.planar(b.stream.data(), b.stream.length(), b.width, b.height, pixels)) return false;
        for (size_t i = 0; i < pixels.size(); ++i)
            if (pixels[i] != (p.pixels[i] & 0xffffff)) return false;
        return true;
    };
    char what[32];
    std::snprintf(what, sizeof what, "planar 0x%02x", header);
    for (const Source &s : sources(true)) out.push_back(build(s, encode, accept, what));
    return out;
}

const std::vector<RfbTile> &rfbTiles(RfbKind kind) {
    static std::map<RfbKind, std::vector<RfbTile>> encoded;
    auto it = encoded.find(kind);
    if (it == encoded.end()) it = encoded.emplace(kind, encodeTiles(kind)).first;
    return it->second;
}

Bytes hextileRect(const Picture &picture) {
    return kit::hextile(picture.crop(kHextileX, kHextileY, kHextileSize, kHextileSize));
}

}  // namespace bench
