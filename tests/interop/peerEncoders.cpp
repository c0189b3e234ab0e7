// The peer's encoders, driven through their public API only.
#include "peerEncoders.h"

#include <freerdp/codec/interleaved.h>
#include <freerdp/codec/planar.h>
#include <winpr/stream.h>

#include <cstring>

namespace interop {

bool interleavedCompressEncode(const Picture &p, Bytes &out) {
    BITMAP_INTERLEAVED_CONTEXT *context = bitmap_interleaved_context_new(TRUE);
    if (context == nullptr) return false;
    // Its scratch buffers (public members of the context) leak into some
    // colour-image orders: zeroed, the streams are the same on every run.
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

bool planarEncode(const Picture &p, uint32_t flags, Bytes &out) {
    BITMAP_PLANAR_CONTEXT *context = freerdp_bitmap_planar_context_new(flags, uint32_t(p.width), uint32_t(p.height));
    if (context == nullptr) return false;
    out.assign(size_t(p.width) * size_t(p.height) * 4 * 2 + 64, 0);
    UINT32 size = UINT32(out.size());
    const BYTE *written =
        freerdp_bitmap_compress_planar(context, reinterpret_cast<const BYTE *>(p.pixels.data()), PIXEL_FORMAT_BGRA32,
                                       uint32_t(p.width), uint32_t(p.height), uint32_t(p.width) * 4, out.data(), &size);
    freerdp_bitmap_planar_context_free(context);
    if (written != out.data() || size == 0 || size > out.size()) return false;
    out.resize(size);
    return true;
}

}  // namespace interop
