// The checked pixel accessors of the image buffer and the tile-marking rule of
// the dirty-tile map, attached to the client's records as member functions.
#pragma once

#include <cstddef>
#include <cstdint>

#define UI32_IMGBUF_METHODS                                                          \
    uint32_t *writePtr(int32_t left, int32_t top, int32_t width, int32_t height) const; \
    const uint32_t *readPtr(int32_t left, int32_t top, int32_t width, int32_t height) const;

#define UI32_DIRTYBUF_METHODS \
    void markRect(int32_t left, int32_t top, int32_t right, int32_t bottom);

#include "ui32.h"

namespace ui {

// Pixel pointer arithmetic by rows: `stride` bytes per row.
inline uint32_t *nextRow(uint32_t *p, uint32_t stride) {
    return reinterpret_cast<uint32_t *>(reinterpret_cast<uint8_t *>(p) + stride);
}
inline const uint32_t *nextRow(const uint32_t *p, uint32_t stride) {
    return reinterpret_cast<const uint32_t *>(reinterpret_cast<const uint8_t *>(p) + stride);
}
inline uint32_t *prevRow(uint32_t *p, uint32_t stride) {
    return reinterpret_cast<uint32_t *>(reinterpret_cast<uint8_t *>(p) - stride);
}
inline const uint32_t *prevRow(const uint32_t *p, uint32_t stride) {
    return reinterpret_cast<const uint32_t *>(reinterpret_cast<const uint8_t *>(p) - stride);
}
// Row `rows` (>= 0) below p.
inline uint32_t *rowAt(uint32_t *p, uint32_t stride, int32_t rows) {
    return reinterpret_cast<uint32_t *>(reinterpret_cast<uint8_t *>(p) + size_t(uint32_t(rows)) * stride);
}
inline const uint32_t *rowAt(const uint32_t *p, uint32_t stride, int32_t rows) {
    return reinterpret_cast<const uint32_t *>(reinterpret_cast<const uint8_t *>(p) + size_t(uint32_t(rows)) * stride);
}

}  // namespace ui
