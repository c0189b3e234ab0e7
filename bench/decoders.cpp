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
#include "streams.h"

namespace bench {
namespace {

constexpr double kPeerTarget = 1.5;
constexpr double kUpdateOverDecodeTarget = 1 / 1.5;  // cost under 1.5x decode + memcpy

uint32_t *bitmapBuffer() {
    static std::vector<uint32_t> buffer(65536);
    return buffer.data();
}

UiBitmapData updateOf(const Bitmap &b, int32_t depth) {
    const int32_t left = kMargin + b.x, top = kMargin + b.y;
    return UiBitmapData{left, top, left + b.width - 1, top + b.height - 1, b.width, b.height, 8 * depth, 1,
                        int32_t(b.stream.size()), b.stream.data()};
}

Work workOf(const Workload &w) { return Work{w.pixels(), 4 * w.pixels(), w.inputBytes()}; }

void finish(benchmark::State &state, const Workload &w, bool ok) {
    if (!ok) state.SkipWithError("a decoder refused a stream");
    count(state, workOf(w));
}

void decode(benchmark::State &state, const Workload &w, int32_t depth) {
    Plugin::get().depth(depth);
    const auto decodeBitmap = Plugin::get().slot<UiDecodeBitmapFn>(UI_SLOT_DECODE_BITMAP);
    uint32_t *out = bitmapBuffer();
    bool ok = true;
    for (auto _ : state) {
        for (const Bitmap &b : w.bitmaps)
            ok &= decodeBitmap(b.width, b.height, b.stream.data(), int32_t(b.stream.size()), 1, out) == 1;
        benchmark::ClobberMemory();
    }
    finish(state, w, ok);
}

void update(benchmark::State &state, const Workload &w, int32_t depth) {
    Plugin::get().depth(depth);
    const auto bitmapUpdate = Plugin::get().slot<UiBitmapUpdateFn>(UI_SLOT_BITMAP_UPDATE);
    std::vector<UiBitmapData> updates;
    for (const Bitmap &b : w.bitmaps) updates.push_back(updateOf(b, depth));
    Screen &screen = desk();
    for (auto _ : state) {
        for (const UiBitmapData &u : updates) bitmapUpdate(&screen.surface(), &u);
        benchmark::ClobberMemory();
    }
    finish(state, w, true);
}

// What a bitmap update cannot do with less: decode, then one memcpy per row
// into the frame buffer, turning the rows the right way up.
void decodeAndCopy(benchmark::State &state, const Workload &w, int32_t depth) {
    Plugin::get().depth(depth);
    const auto decodeBitmap = Plugin::get().slot<UiDecodeBitmapFn>(UI_SLOT_DECODE_BITMAP);
    uint32_t *out = bitmapBuffer();
    Screen &screen = desk();
    bool ok = true;
    for (auto _ : state) {
        for (const Bitmap &b : w.bitmaps) {
            ok &= decodeBitmap(b.width, b.height, b.stream.data(), int32_t(b.stream.size()), 1, out) == 1;
            for (int32_t y = 0; y < b.height; ++y)
                std::memcpy(screen.at(kMargin + b.x, kMargin + b.y + y),
                            out + size_t(b.height - 1 - y) * size_t(b.width), 4 * size_t(b.width));
        }
        benchmark::ClobberMemory();
    }
    finish(state, w, ok);
}

void peerInterleaved(benchmark::State &state, const Workload &w, bool intoFrame) {
    PeerInterleaved peer;
    Screen &screen = desk();
    uint8_t *buffer = reinterpret_cast<uint8_t *>(bitmapBuffer());
    uint8_t *frame = reinterpret_cast<uint8_t *>(screen.row(0));
    const uint32_t frameStride = uint32_t(screen.strideBytes());
    bool ok = true;
    for (auto _ : state) {
        for (const Bitmap &b : w.bitmaps)
            ok &= intoFrame ? peer.decode(b, frame, frameStride, kMargin + b.x, kMargin + b.y)
                            : peer.decode(b, buffer, uint32_t(b.width) * 4);
        benchmark::ClobberMemory();
    }
    finish(state, w, ok);
}

void peerPlanar(benchmark::State &state, const Workload &w, bool intoFrame) {
    PeerPlanar peer(w.maxWidth, w.maxHeight);
    Screen &screen = desk();
    uint8_t *buffer = reinterpret_cast<uint8_t *>(bitmapBuffer());
    uint8_t *frame = reinterpret_cast<uint8_t *>(screen.row(0));
    const uint32_t frameStride = uint32_t(screen.strideBytes());
    bool ok = true;
    for (auto _ : state) {
        for (const Bitmap &b : w.bitmaps)
            ok &= intoFrame ? peer.decode(b, frame, frameStride, true, kMargin + b.x, kMargin + b.y)
                            : peer.decode(b, buffer, uint32_t(b.width) * 4, false);
        benchmark::ClobberMemory();
    }
    finish(state, w, ok);
}

// Before anything is measured: slot 8 must give exactly the peer's pixels
// (colour bits) for every stream, else the comparison is meaningless.
void requireSamePixels(const Workload &w, int32_t depth, const char *codec) {
    Plugin::get().depth(depth);
    const auto decodeBitmap = Plugin::get().slot<UiDecodeBitmapFn>(UI_SLOT_DECODE_BITMAP);
    PeerInterleaved interleaved;
    PeerPlanar planar(w.maxWidth, w.maxHeight);
    for (const Bitmap &b : w.bitmaps) {
        const size_t n = size_t(b.width) * size_t(b.height);
        std::vector<uint32_t> ours(n), peers(n);
        const bool decoded = decodeBitmap(b.width, b.height, b.stream.data(), int32_t(b.stream.size()), 1,
                                          ours.data()) == 1;
        // Both into stream order: the interleaved peer writes top-down, so
        // its rows are turned back.
        bool peerDecoded;
        if (depth == 4) {
            peerDecoded = planar.decode(b, reinterpret_cast<uint8_t *>(peers.data()), uint32_t(b.width) * 4, false);
        } else {
            std::vector<uint32_t> topDown(n);
            peerDecoded = interleaved.decode(b, reinterpret_cast<uint8_t *>(topDown.data()), uint32_t(b.width) * 4);
            for (int32_t y = 0; y < b.height; ++y)
                std::memcpy(peers.data() + size_t(y) * size_t(b.width),
                            topDown.data() + size_t(b.height - 1 - y) * size_t(b.width), 4 * size_t(b.width));
        }
        bool same = decoded && peerDecoded;
        for (size_t i = 0; same && i < n; ++i) same = ((ours[i] ^ peers[i]) & 0xffffff) == 0;
        if (!same) {
            std::fprintf(stderr, "bench: %s, %s: bitmap at (%d, %d) decodes differently from the peer\n", codec,
                         w.name.c_str(), b.x, b.y);
            std::exit(1);
        }
    }
}

}  // namespace

void registerDecoders() {
    for (const Workload &w : interleavedWorkloads()) {
        requireSamePixels(w, 3, "interleaved");
        const Workload *p = &w;
        const std::string peer = "decoders/interleaved peer decode/" + w.name;
        const std::string peerFrame = "decoders/interleaved peer into frame/" + w.name;
        const std::string copy = "decoders/interleaved slot 8 + memcpy/" + w.name;
        add({peer, [p](benchmark::State &st) { peerInterleaved(st, *p, false); }});
        add({peerFrame, [p](benchmark::State &st) { peerInterleaved(st, *p, true); }});
        add({copy, [p](benchmark::State &st) { decodeAndCopy(st, *p, 3); }});
        add({"decoders/interleaved decode/" + w.name, [p](benchmark::State &st) { decode(st, *p, 3); }, peer,
             kPeerTarget});
        add({"decoders/interleaved bitmapUpdate/" + w.name, [p](benchmark::State &st) { update(st, *p, 3); },
             peerFrame, kPeerTarget, copy, kUpdateOverDecodeTarget});
    }
    for (const uint8_t header : {0x00, 0x10, 0x20, 0x30}) {
        char variant[32];
        std::snprintf(variant, sizeof variant, "planar 0x%02x", header);
        for (const Workload &w : planarWorkloads(header)) {
            requireSamePixels(w, 4, variant);
            const Workload *p = &w;
            const std::string peer = std::string("decoders/") + variant + " peer decode/" + w.name;
            const std::string peerFrame = std::string("decoders/") + variant + " peer into frame/" + w.name;
            add({peer, [p](benchmark::State &st) { peerPlanar(st, *p, false); }});
            add({peerFrame, [p](benchmark::State &st) { peerPlanar(st, *p, true); }});
            add({std::string("decoders/") + variant + " decode/" + w.name,
                 [p](benchmark::State &st) { decode(st, *p, 4); }, peer, kPeerTarget});
            add({std::string("decoders/") + variant + " bitmapUpdate/" + w.name,
                 [p](benchmark::State &st) { update(st, *p, 4); }, peerFrame, kPeerTarget});
        }
    }
}

}  // namespace bench
