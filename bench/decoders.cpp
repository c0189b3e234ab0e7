// Compressed bitmaps: the interleaved (24-bit) and planar (every format
// header) decoders on the peer's streams, each measured beside the peer's own
// decoder on the same streams into the same pixel format:
// - decode: slot 8 into a bitmap buffer in stream order, against the peer
//   decoding into a buffer of the same layout (its interleaved decoder only
//   writes top-down, which costs it nothing extra: it always converts from
//   a scratch buffer);
// - bitmap update: slot 0 into the frame buffer at the bitmap's place, against
//   the peer decoding into the same frame buffer at the same place, and, for
//   64 x 64 interleaved tiles, against slot 8 plus one memcpy per row.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "harness.h"
#include "peer.h"
#include "streams.h"

namespace bench {
namespace {

constexpr double kPeerTarget = 1.5;
constexpr double kUpdateOverDecodeTarget = 1 / 1.5;  // cost under 1.5x decode + memcpy

uint32_t *bitmapBuffer() {
    static std::vector<uint32_t> buffer(65536);
    return buffer.data();
}

enum class Codec { interleaved, planar };
int32_t depthOf(Codec c) { return c == Codec::planar ? 4 : 3; }

Work workOf(const Workload &w) { return Work{w.pixels(), 4 * w.pixels(), w.inputBytes()}; }

// Runs `pass` (all bitmaps once; false if a decoder refused one) per iteration.
template <typename Pass>
void measure(benchmark::State &state, const Workload &w, Pass pass) {
    bool ok = true;
    for (auto _ : state) {
        ok &= pass();
        benchmark::ClobberMemory();
    }
    if (!ok) state.SkipWithError("a decoder refused a stream");
    count(state, workOf(w));
}

bool decodeAll(const kit::Table &t, const Workload &w, uint32_t *out) {
    bool ok = true;
    for (const Bitmap &b : w.bitmaps) ok &= t.decodeBitmap(b.width, b.height, b.stream.data(), b.stream.length(), 1, out) == 1;
    return ok;
}

void decode(benchmark::State &state, const Workload &w, Codec codec) {
    depth(depthOf(codec));
    const kit::Table &t = table();
    uint32_t *out = bitmapBuffer();
    measure(state, w, [&] { return decodeAll(t, w, out); });
}

void update(benchmark::State &state, const Workload &w, Codec codec) {
    const int32_t bytesPerPixel = depthOf(codec);
    depth(bytesPerPixel);
    const kit::Table &t = table();
    std::vector<UiBitmapData> updates;
    for (const Bitmap &b : w.bitmaps) {
        const int32_t left = kMargin + b.x, top = kMargin + b.y;
        updates.push_back({left, top, left + b.width - 1, top + b.height - 1, b.width, b.height, 8 * bytesPerPixel, 1,
                           b.stream.length(), b.stream.data()});
    }
    UiSurface &surface = desk().surface();
    measure(state, w, [&] {
        for (const UiBitmapData &u : updates) t.bitmapUpdate(surface, u);
        return true;
    });
}

// What a bitmap update cannot do with less: decode, then one memcpy per row
// into the frame buffer, turning the rows the right way up.
void decodeAndCopy(benchmark::State &state, const Workload &w, Codec codec) {
    depth(depthOf(codec));
    const kit::Table &t = table();
    uint32_t *out = bitmapBuffer();
    kit::Frame &f = desk();
    measure(state, w, [&] {
        bool ok = true;
        for (const Bitmap &b : w.bitmaps) {
            ok &= t.decodeBitmap(b.width, b.height, b.stream.data(), b.stream.length(), 1, out) == 1;
            for (int32_t y = 0; y < b.height; ++y)
                std::memcpy(&f.at(kMargin + b.x, kMargin + b.y + y), out + size_t(b.height - 1 - y) * size_t(b.width),
                            4 * size_t(b.width));
        }
        return ok;
    });
}

// The peer decoding into a buffer of the bitmap's size (planar in stream
// order, as slot 8 writes it) or into the frame buffer at the bitmap's place.
void peer(benchmark::State &state, const Workload &w, Codec codec, bool intoFrame) {
    kit::PeerDecoders decoders;
    kit::Frame &f = desk();
    uint8_t *buffer = reinterpret_cast<uint8_t *>(bitmapBuffer());
    uint8_t *frame = reinterpret_cast<uint8_t *>(&f.at(0, 0));
    const uint32_t frameStride = f.image().stride;
    // The planar context sized for these bitmaps before the clock runs.
    const Bitmap &first = w.bitmaps.front();
    if (codec == Codec::planar)
        decoders.planarInto(first.stream.data(), first.stream.length(), first.width, first.height, buffer,
                            uint32_t(first.width) * 4, 0, 0, false);
    measure(state, w, [&] {
        bool ok = true;
        for (const Bitmap &b : w.bitmaps) {
            uint8_t *dst = intoFrame ? frame : buffer;
            const uint32_t stride = intoFrame ? frameStride : uint32_t(b.width) * 4;
            const int32_t x = intoFrame ? kMargin + b.x : 0, y = intoFrame ? kMargin + b.y : 0;
            ok &= codec == Codec::planar
                      ? decoders.planarInto(b.stream.data(), b.stream.length(), b.width, b.height, dst, stride, x, y,
                                            intoFrame)
                      : decoders.interleavedInto(b.stream.data(), b.stream.length(), b.width, b.height, dst, stride, x, y);
        }
        return ok;
    });
}

// Before anything is measured: slot 8 must give exactly the peer's pixels
// (colour bits) for every stream, else the comparison is meaningless.
void requireSamePixels(const Workload &w, Codec codec, const char *name) {
    depth(depthOf(codec));
    kit::PeerDecoders decoders;
    std::vector<uint32_t> theirs;
    for (const Bitmap &b : w.bitmaps) {
        std::vector<uint32_t> ours(size_t(b.width) * size_t(b.height));
        bool same = table().decodeBitmap(b.width, b.height, b.stream.data(), b.stream.length(), 1, ours.data()) == 1;
        same &= codec == Codec::planar ? decoders.planar(b.stream.data(), b.stream.length(), b.width, b.height, theirs)
                                       : decoders.interleaved(b.stream.data(), b.stream.length(), b.width, b.height, theirs);
        // Ours in stream order (bottom row first), the peer's top-down.
        for (int32_t y = 0; same && y < b.height; ++y)
            for (int32_t x = 0; same && x < b.width; ++x)
                same = ((ours[size_t(b.height - 1 - y) * size_t(b.width) + size_t(x)] ^
                         theirs[size_t(y) * size_t(b.width) + size_t(x)]) & 0xffffff) == 0;
        if (!same) {
            std::fprintf(stderr, "bench: %s, %s: bitmap at (%d, %d) decodes differently from the peer\n", name,
                         w.name.c_str(), b.x, b.y);
            std::exit(1);
        }
    }
}

void registerCodec(const Workload &w, Codec codec, const std::string &variant) {
    requireSamePixels(w, codec, variant.c_str());
    const Workload *p = &w;
    const std::string prefix = std::string("decoders/").append(variant), suffix = std::string("/").append(w.name);
    const std::string peerDecode = prefix + " peer decode" + suffix, peerFrame = prefix + " peer into frame" + suffix;
    add({peerDecode, [p, codec](benchmark::State &st) { peer(st, *p, codec, false); }});
    add({peerFrame, [p, codec](benchmark::State &st) { peer(st, *p, codec, true); }});
    std::string copy;
    if (codec == Codec::interleaved) {
        copy = prefix + " slot 8 + memcpy" + suffix;
        add({copy, [p, codec](benchmark::State &st) { decodeAndCopy(st, *p, codec); }});
    }
    add({prefix + " decode" + suffix, [p, codec](benchmark::State &st) { decode(st, *p, codec); }, peerDecode,
         kPeerTarget});
    add({prefix + " bitmapUpdate" + suffix, [p, codec](benchmark::State &st) { update(st, *p, codec); }, peerFrame,
         kPeerTarget, copy, copy.empty() ? 0 : kUpdateOverDecodeTarget});
}

}  // namespace

void registerDecoders() {
    for (const Workload &w : interleavedWorkloads()) registerCodec(w, Codec::interleaved, "interleaved");
    for (const uint8_t header : {0x00, 0x10, 0x20, 0x30}) {
        char variant[32];
        std::snprintf(variant, sizeof variant, "planar 0x%02x", header);
        for (const Workload &w : planarWorkloads(header)) registerCodec(w, Codec::planar, variant);
    }
}

}  // namespace bench
