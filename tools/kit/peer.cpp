#include "peer.h"

#include <freerdp/codec/interleaved.h>
#include <freerdp/codec/planar.h>
#include <winpr/stream.h>

#include <cstring>

namespace kit {

bool peerInterleaved(const Picture &p, Bytes &out) {
    BITMAP_INTERLEAVED_CONTEXT *context = bitmap_interleaved_context_new(TRUE);
    if (context == nullptr) return false;
    // Its scratch buffers leak into some colour-image orders: zeroed, the
    // streams are the same on every run.
    std::memset(context->TempBuffer, 0, context->TempSize);
    std::memset(Stream_Buffer(context->bts), 0, Stream_Capacity(context->bts));
    out.assign(64 * 64 * 4 + 1024, 0);
    UINT32 size = UINT32(out.size());
    const BOOL ok = interleaved_compress(context, out.data(), &size, uint32_t(p.width), uint32_t(p.height),
                                         reinterpret_cast<const BYTE *>(p.pixels.data()), PIXEL_FORMAT_BGRX32,
                                         uint32_t(p.width) * 4, 0, 0, nullptr, 24);
    bitmap_interleaved_context_free(context);
    if (!ok || size == 0 || size > out.size()) return false;
    out.resize(size);
    return true;
}

bool peerPlanar(const Picture &p, uint32_t flags, Bytes &out) {
    BITMAP_PLANAR_CONTEXT *context = freerdp_bitmap_planar_context_new(flags, uint32_t(p.width), uint32_t(p.height));
    if (context == nullptr) return false;
    out.assign(size_t(p.width) * size_t(p.height) * 8 + 64, 0);
    UINT32 size = UINT32(out.size());
    const BYTE *written =
        freerdp_bitmap_compress_planar(context, reinterpret_cast<const BYTE *>(p.pixels.data()), PIXEL_FORMAT_BGRA32,
                                       uint32_t(p.width), uint32_t(p.height), uint32_t(p.width) * 4, out.data(), &size);
    freerdp_bitmap_planar_context_free(context);
    if (written != out.data() || size == 0 || size > out.size()) return false;
    out.resize(size);
    return true;
}

PeerDecoders::PeerDecoders()
    : interleaved_(bitmap_interleaved_context_new(FALSE)), planar_(freerdp_bitmap_planar_context_new(0, 64, 64)) {}

PeerDecoders::~PeerDecoders() {
    bitmap_interleaved_context_free(static_cast<BITMAP_INTERLEAVED_CONTEXT *>(interleaved_));
    freerdp_bitmap_planar_context_free(static_cast<BITMAP_PLANAR_CONTEXT *>(planar_));
}

bool PeerDecoders::interleaved(const uint8_t *data, int32_t length, int32_t w, int32_t h, std::vector<uint32_t> &out) {
    out.assign(size_t(w) * size_t(h), 0);
    const bool ok = interleavedInto(data, length, w, h, reinterpret_cast<uint8_t *>(out.data()), uint32_t(w) * 4, 0, 0);
    for (uint32_t &p : out) p &= 0xFFFFFF;
    return ok;
}

bool PeerDecoders::planar(const uint8_t *data, int32_t length, int32_t w, int32_t h, std::vector<uint32_t> &out) {
    out.assign(size_t(w) * size_t(h), 0);
    // A fresh context for every bitmap: nothing of an earlier stream shows.
    if (!freerdp_bitmap_planar_context_reset(static_cast<BITMAP_PLANAR_CONTEXT *>(planar_), uint32_t(w), uint32_t(h)))
        return false;
    planarWidth_ = w, planarHeight_ = h;
    const bool ok = planarInto(data, length, w, h, reinterpret_cast<uint8_t *>(out.data()), uint32_t(w) * 4, 0, 0, true);
    for (uint32_t &p : out) p &= 0xFFFFFF;
    return ok;
}

bool PeerDecoders::interleavedInto(const uint8_t *data, int32_t length, int32_t w, int32_t h, uint8_t *dst,
                                   uint32_t stride, int32_t x, int32_t y) {
    return interleaved_decompress(static_cast<BITMAP_INTERLEAVED_CONTEXT *>(interleaved_), data, UINT32(length),
                                  uint32_t(w), uint32_t(h), 24, dst, PIXEL_FORMAT_BGRX32, stride, uint32_t(x),
                                  uint32_t(y), uint32_t(w), uint32_t(h), nullptr) != 0;
}

bool PeerDecoders::planarInto(const uint8_t *data, int32_t length, int32_t w, int32_t h, uint8_t *dst, uint32_t stride,
                              int32_t x, int32_t y, bool flip) {
    auto *context = static_cast<BITMAP_PLANAR_CONTEXT *>(planar_);
    // Made for one size: remade only when the size changes, so that a run of
    // bitmaps of one size is decoded with the context a client keeps.
    if (w != planarWidth_ || h != planarHeight_) {
        if (!freerdp_bitmap_planar_context_reset(context, uint32_t(w), uint32_t(h))) return false;
        planarWidth_ = w, planarHeight_ = h;
    }
    return planar_decompress(context, data, UINT32(length), uint32_t(w), uint32_t(h), dst, PIXEL_FORMAT_BGRX32, stride,
                             uint32_t(x), uint32_t(y), uint32_t(w), uint32_t(h), flip ? TRUE : FALSE) != 0;
}

}  // namespace kit
