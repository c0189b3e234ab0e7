// Shared machinery of the fuzz harnesses.  The same code runs inside the
// libFuzzer targets (fuzz/fuzz_target.cpp) and inside the regression replay
// test (tests/test_fuzz_regressions.cpp), so a crashing input found by the
// fuzzer replays exactly through the unit tests on every build.
//
// Every harness acts as a careful client: it allocates the frame buffer, the
// tile map, every record and every input buffer at exactly the size the
// client contract gives (on the heap, so AddressSanitizer sees a one-byte
// overrun), hands the library only what a client may hand it, and after each
// call checks what the library may and may not have written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "ui.h"  // ui32.h with the library's accessors, and the settings

namespace fuzzharness {

// ---------------------------------------------------------------------------
// Failures
// ---------------------------------------------------------------------------

// Called with a description whenever a check fails.  The fuzz targets print
// and abort (so that libFuzzer keeps the input); the replay test records it.
using FailureHandler = void (*)(const char *what);
void setFailureHandler(FailureHandler handler);
// The entry point being exercised, named in failure messages.
extern const char *currentEntry;
void fail(const char *what);
inline void require(bool ok, const char *what) {
    if (!ok) fail(what);
}

// ---------------------------------------------------------------------------
// The library as a client sees it
// ---------------------------------------------------------------------------

// The client's drawing table, filled by srn_get.
extern UiDrawTable table;

template <typename Fn>
Fn slot(int index) {
    return reinterpret_cast<Fn>(table[index]);
}

// srn_get with the checking log callback and a configuration: the hatch
// patterns (an exact 48-byte heap block) and the source depth.  A depth of 4
// is set as a client does it, through slot 10 after a configuration of 3.
// The fragment store of a previous start is released first (the library
// never releases it), so every input starts from an empty store.
void startLibrary(int32_t sourceBytesPerPixel);
// Slot 15.
void setByteOrder(uint8_t order);

// Reports made since the last startLibrary, and the first of them.
extern uint32_t reportCount;
extern char firstReport[256];
// Calls since the last startLibrary that marked a tile or decoded a bitmap.
extern uint32_t drawnCount;

// ---------------------------------------------------------------------------
// Reading the fuzz input
// ---------------------------------------------------------------------------

// Input layout: a 16-bit little-endian length n, n control bytes, then the
// stream bytes.  Control bytes choose sizes, coordinates and record fields;
// stream bytes are what decoders read.  Reads past the end give zeros.
class Reader {
public:
    Reader(const uint8_t *data, size_t size) : p_(data), n_(size) {}
    bool empty() const { return n_ == 0; }
    size_t size() const { return n_; }
    const uint8_t *data() const { return p_; }

    uint8_t u8() {
        if (n_ == 0) return 0;
        --n_;
        return *p_++;
    }
    // Little-endian; each byte read in its own statement (operands of one
    // expression are unsequenced).
    uint16_t u16() {
        const uint16_t low = u8();
        return uint16_t(low | (u8() << 8));
    }
    uint32_t u32() {
        const uint32_t low = u16();
        return low | (uint32_t(u16()) << 16);
    }
    int32_t i32() { return int32_t(u32()); }
    bool flag() { return (u8() & 1) != 0; }
    // Up to `count` bytes (fewer at the end).
    size_t take(size_t count, const uint8_t *&out) {
        const size_t k = count < n_ ? count : n_;
        out = p_;
        p_ += k;
        n_ -= k;
        return k;
    }

    // A coordinate: mostly small values around a small image, sometimes any
    // 32-bit value or one of the values at the edges of the 16- and 32-bit
    // ranges (where sums wrap and products overflow).
    int32_t coord();
    // A size or length: mostly 0 to 300, sometimes anything.
    int32_t extent();
    // A colour word: mostly 0-255, sometimes any 32-bit value.
    int32_t component();

private:
    const uint8_t *p_;
    size_t n_;
};

struct Input {
    Reader control;
    Reader stream;
};
Input splitInput(const uint8_t *data, size_t size);

// ---------------------------------------------------------------------------
// Exact-size heap blocks
// ---------------------------------------------------------------------------

// A heap block of exactly `size` bytes (malloc(0) for none), released on
// destruction.  `size` is capped by the caller.
class Block {
public:
    Block() = default;
    explicit Block(size_t size);
    Block(const uint8_t *bytes, size_t size);  // a copy
    ~Block();
    Block(const Block &) = delete;
    Block &operator=(const Block &) = delete;
    Block(Block &&other) noexcept;
    Block &operator=(Block &&other) noexcept;

    uint8_t *data() const { return data_; }
    size_t size() const { return size_; }
    template <typename T>
    T *as() const {
        return reinterpret_cast<T *>(data_);
    }

private:
    uint8_t *data_ = nullptr;
    size_t size_ = 0;
};

// A record of type T in a block of exactly sizeof(T) bytes, zeroed, with a
// snapshot to prove afterwards that a read-only record was not written.
template <typename T>
class Record {
public:
    Record() : block_(sizeof(T)) { std::memset(block_.data(), 0, sizeof(T)); }
    T *get() const { return block_.as<T>(); }
    T *operator->() const { return get(); }
    void freeze() { std::memcpy(&copy_, get(), sizeof(T)); }
    bool unchanged() const { return std::memcmp(&copy_, get(), sizeof(T)) == 0; }

private:
    Block block_;
    T copy_{};
};

// Input bytes in an exact block, with a copy to prove they were only read.
class InputBytes {
public:
    InputBytes() = default;
    InputBytes(const uint8_t *bytes, size_t size) : block_(bytes, size), copy_(bytes, size) {}
    const uint8_t *data() const { return block_.data(); }
    int32_t size() const { return int32_t(block_.size()); }
    bool unchanged() const { return block_.size() == 0 || std::memcmp(block_.data(), copy_.data(), block_.size()) == 0; }

private:
    Block block_;
    Block copy_;
};

// ---------------------------------------------------------------------------
// The frame buffer and its tile map
// ---------------------------------------------------------------------------

// A UiSurface over a frame buffer of stride * (height - 1) + 4 * width bytes
// (the last row has no padding) and a tile map of columns * rows bytes, both
// exact heap blocks.  Pixels get a fixed pattern, the padding words between
// rows a sentinel.
class Frame {
public:
    explicit Frame(Reader &control);
    UiSurface *surface() { return surface_.get(); }
    imgbuf *image() { return &surface_->image; }
    dirtybuf *dirty() { return &surface_->dirty; }
    int32_t width() const { return int32_t(surface_->image.width); }
    int32_t height() const { return int32_t(surface_->image.height); }

    // A clip rectangle: the whole image, or fuzzed edges.
    UiClipRect clip(Reader &control) const;

    // Takes the state that the next call is checked against.
    void before();
    // Checks the frame after a library call: the surface record unchanged but
    // for `changed`; `changed` only ever set to 1 and its pad bytes never
    // written; every tile byte 0 or 1, tiles only ever set, and `changed` set
    // when a tile was; the padding words between rows intact.
    void after();

private:
    Record<UiSurface> surface_;
    Block pixels_;
    Block tiles_;
    Block tilesBefore_;
    uint8_t changedBefore_ = 0;
    uint32_t padWords_ = 0;
};

// ---------------------------------------------------------------------------
// The harnesses, one per attack surface
// ---------------------------------------------------------------------------

struct Target {
    const char *name;
    void (*run)(const uint8_t *data, size_t size);
};

// All targets, in a fixed order; `count` receives their number.
const Target *targets(size_t &count);
const Target *findTarget(const char *name);

void runBitmapUpdate(const uint8_t *data, size_t size);
void runDecodeBitmap(const uint8_t *data, size_t size);
void runRectOrders(const uint8_t *data, size_t size);
void runPatBlt(const uint8_t *data, size_t size);
void runDrawLine(const uint8_t *data, size_t size);
void runGlyphIndex(const uint8_t *data, size_t size);
void runFastGlyph(const uint8_t *data, size_t size);
void runZrleTiles(const uint8_t *data, size_t size);
void runHextile(const uint8_t *data, size_t size);
void runPrimitives(const uint8_t *data, size_t size);

}  // namespace fuzzharness
