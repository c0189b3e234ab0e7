// Shared machinery of the fuzz harnesses: failure reporting, the library
// start, the input reader, exact heap blocks and the checked frame buffer.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "harness.h"

namespace fuzzharness {

// ---------------------------------------------------------------------------
// Failures
// ---------------------------------------------------------------------------

namespace common_detail {

void abortOnFailure(const char *what) {
    std::fprintf(stderr, "harness check failed: %s\n", what);
    std::abort();
}

FailureHandler failureHandler = abortOnFailure;

}  // namespace common_detail

void setFailureHandler(FailureHandler handler) {
    common_detail::failureHandler = handler != nullptr ? handler : common_detail::abortOnFailure;
}

const char *currentEntry = "startup";

void fail(const char *what) {
    char text[256];
    std::snprintf(text, sizeof text, "after %s: %s", currentEntry, what);
    common_detail::failureHandler(text);
}

// ---------------------------------------------------------------------------
// The library
// ---------------------------------------------------------------------------

UiDrawTable table{};
uint32_t reportCount = 0;
char firstReport[256] = "";
uint32_t drawnCount = 0;

namespace common_detail {

// Six 8-byte hatch patterns in a block of exactly 48 bytes.
const uint8_t kHatchBytes[48] = {
    0x00, 0x00, 0x00, 0xff, 0x00, 0x00, 0x00, 0x00, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08,
    0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01, 0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80,
    0x08, 0x08, 0x08, 0xff, 0x08, 0x08, 0x08, 0x08, 0x81, 0x42, 0x24, 0x18, 0x18, 0x24, 0x42, 0x81,
};

const uint8_t *hatchPatterns() {
    static Block hatch(kHatchBytes, sizeof kHatchBytes);
    return hatch.data();
}

bool knownModule(const char *module) {
    static const char *const kModules[] = {"ui", "imgbuf", "dirtybuf", "streamInOps", "rdpclient-caches"};
    for (const char *known : kModules)
        if (std::strcmp(module, known) == 0) return true;
    return false;
}

// The client's log callback: checks the report's shape and formats it, so
// that a format whose arguments do not match is caught as well.
int checkReport(const char *level, const char *module, int site, const char *format, ...) {
    (void)site;
    require(level != nullptr && std::strcmp(level, "ERROR") == 0, "report level is not \"ERROR\"");
    require(module != nullptr && knownModule(module), "report from an unknown module");
    require(format != nullptr, "report without a format");
    if (format == nullptr) return 0;
    char text[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    if (reportCount++ == 0) std::snprintf(firstReport, sizeof firstReport, "%s %d: %s", module, site, text);
    return 0;
}

}  // namespace common_detail

void startLibrary(int32_t sourceBytesPerPixel) {
    // The library keeps its fragment store for the life of the process; the
    // harness releases the previous one so that inputs do not leak or depend
    // on each other.
    std::free(ui::settings.scratchBuffer);
    ui::settings.scratchBuffer = nullptr;
    const UiConfig config{common_detail::hatchPatterns(), sourceBytesPerPixel == 4 ? 3 : sourceBytesPerPixel};
    srn_get(table, &common_detail::checkReport, &config);
    if (sourceBytesPerPixel == 4) slot<UiSetSourceBytesPerPixel4Fn>(UI_SLOT_SET_SOURCE_BYTES_PER_PIXEL_4)();
    reportCount = 0;
    firstReport[0] = 0;
    drawnCount = 0;
}

void setByteOrder(uint8_t order) { slot<UiSetSourceByteOrderFn>(UI_SLOT_SET_SOURCE_BYTE_ORDER)(order); }

// ---------------------------------------------------------------------------
// Reading the input
// ---------------------------------------------------------------------------

namespace common_detail {

// Values at the edges of the 16- and 32-bit ranges and of typical checks.
const int32_t kEdgeValues[32] = {
    INT32_MIN, INT32_MIN + 1, INT32_MAX, INT32_MAX - 1, -32768, -32769, 32767,      32768,
    65535,     65536,         -65536,    -1,            0,      1,      0x40000000, 0x3fffffff,
    -0x40000000, 0x7fff8000,  0x8000,    255,           256,    0x01000000, 0x00ffffff, 0x20000000,
    0x1fffffff, 0x7ffffff0,  -0x7ffffff0, 46341,        65537,  0x4000000, 0x55555556, -2,
};

}  // namespace common_detail

int32_t Reader::coord() {
    const uint8_t mode = u8();
    switch (mode >> 5) {
        case 0:
        case 1:
        case 2: return int32_t(u16() % 700) - 200;  // around a small image
        case 3: return int32_t(int8_t(u8()));
        case 4: return int32_t(int16_t(u16()));
        case 5: return i32();
        case 6: return common_detail::kEdgeValues[mode & 31];
        default: return int32_t(u8());
    }
}

int32_t Reader::extent() {
    const uint8_t mode = u8();
    switch (mode >> 5) {
        case 0:
        case 1:
        case 2:
        case 3: return int32_t(u16() % 301);
        case 4: return int32_t(u8() % 21);
        case 5: return i32();
        case 6: return common_detail::kEdgeValues[mode & 31];
        default: return int32_t(int8_t(u8()));
    }
}

int32_t Reader::component() {
    const uint8_t value = u8();
    return u8() < 0xe0 ? int32_t(value) : i32();
}

Input splitInput(const uint8_t *data, size_t size) {
    if (size < 2) return Input{Reader(data, size), Reader(data + size, 0)};
    const size_t declared = size_t(data[0] | (data[1] << 8));
    const size_t control = declared < size - 2 ? declared : size - 2;
    return Input{Reader(data + 2, control), Reader(data + 2 + control, size - 2 - control)};
}

// ---------------------------------------------------------------------------
// Blocks
// ---------------------------------------------------------------------------

Block::Block(size_t size) : data_(static_cast<uint8_t *>(std::malloc(size))), size_(size) {
    if (data_ == nullptr && size != 0) {
        std::fprintf(stderr, "harness: out of memory for %zu bytes\n", size);
        std::abort();
    }
}

Block::Block(const uint8_t *bytes, size_t size) : Block(size) {
    if (size != 0) std::memcpy(data_, bytes, size);
}

Block::~Block() { std::free(data_); }

Block::Block(Block &&other) noexcept : data_(other.data_), size_(other.size_) {
    other.data_ = nullptr;
    other.size_ = 0;
}

Block &Block::operator=(Block &&other) noexcept {
    if (this != &other) {
        std::free(data_);
        data_ = other.data_;
        size_ = other.size_;
        other.data_ = nullptr;
        other.size_ = 0;
    }
    return *this;
}

// ---------------------------------------------------------------------------
// The frame
// ---------------------------------------------------------------------------

namespace common_detail {

constexpr uint32_t kPadSentinel = 0xa5c3f00du;
constexpr uint8_t kChangedPad[3] = {0x5a, 0xc3, 0x3c};
const uint32_t kPadWords[4] = {0, 1, 2, 7};

inline uint32_t patternPixel(uint32_t x, uint32_t y) { return (x * 0x9e3779b1u) ^ (y * 0x85ebca77u); }

}  // namespace common_detail

Frame::Frame(Reader &control) {
    using namespace common_detail;
    const uint32_t width = control.u8();
    const uint32_t height = control.u8();
    const uint8_t shape = control.u8();
    const uint8_t special = control.u8();
    padWords_ = kPadWords[shape & 3];
    const uint32_t stride = 4 * (width + padWords_);

    UiSurface &s = *surface_.get();
    s.originEnabled = uint8_t(shape & 0x80 ? 1 + (special >> 4) : 0);
    s.originX = control.coord();
    s.originY = control.coord();
    s.client2 = 0x11111111u;
    s.client3 = 0x22222222u;
    s.originEnabledPad[0] = 0x33;
    s.originEnabledPad[1] = 0x44;
    s.originEnabledPad[2] = 0x55;

    // The frame buffer: the last row ends at the end of the block.
    const size_t bytes = height == 0 ? 0 : size_t(stride) * (height - 1) + 4 * size_t(width);
    pixels_ = Block(bytes);
    for (uint32_t y = 0; y < height; ++y) {
        uint32_t *row = reinterpret_cast<uint32_t *>(pixels_.data() + size_t(y) * stride);
        for (uint32_t x = 0; x < width; ++x) row[x] = patternPixel(x, y);
        if (y + 1 < height)
            for (uint32_t k = 0; k < padWords_; ++k) row[width + k] = kPadSentinel;
    }
    s.image.pixels = (special & 1) ? nullptr : reinterpret_cast<uint32_t *>(pixels_.data());
    s.image.client1 = 0x66666666u;
    s.image.client2 = 0x77777777u;
    s.image.stride = stride;
    s.image.width = width;
    s.image.height = height;

    // The tile map: normally one byte per 32x32 tile of the image; sometimes
    // smaller or larger than the image needs.
    int32_t columns = int32_t((width + 31) / 32), rows = int32_t((height + 31) / 32);
    switch ((shape >> 2) & 7) {
        case 5: columns -= 1; break;
        case 6: rows -= 1; break;
        case 7:
            columns = int32_t(int8_t(control.u8()));
            rows = int32_t(int8_t(control.u8()));
            break;
        default: break;
    }
    const size_t tileBytes = columns > 0 && rows > 0 ? size_t(columns) * size_t(rows) : 0;
    tiles_ = Block(tileBytes);
    tilesBefore_ = Block(tileBytes);
    const uint8_t tilePattern = (shape & 0x20) ? control.u8() : 0;
    for (size_t i = 0; i < tileBytes; ++i) tiles_.data()[i] = uint8_t((tilePattern >> (i & 7)) & 1);
    s.dirty.tiles = (special & 2) ? nullptr : tiles_.data();
    s.dirty.changed = uint8_t((shape >> 6) & 1);
    std::memcpy(s.dirty.changedPad, kChangedPad, 3);
    s.dirty.columns = columns;
    s.dirty.rows = rows;
    surface_.freeze();
}

UiClipRect Frame::clip(Reader &control) const {
    const int32_t w = width(), h = height();
    switch (control.u8() & 3) {
        case 0: return UiClipRect{0, 0, w - 1, h - 1};
        case 1: return UiClipRect{control.coord(), control.coord(), control.coord(), control.coord()};
        case 2: {
            const int32_t left = control.u8() % (w + 1), top = control.u8() % (h + 1);
            return UiClipRect{left, top, left + control.u8() % (w + 1) - 1, top + control.u8() % (h + 1) - 1};
        }
        default:  // beyond the image: clipping alone must not make a rectangle drawable
            return UiClipRect{-int32_t(control.u8()), -int32_t(control.u8()), w + control.u8(), h + control.u8()};
    }
}

void Frame::before() {
    surface_.freeze();
    changedBefore_ = surface_->dirty.changed;
    if (tiles_.size() != 0) std::memcpy(tilesBefore_.data(), tiles_.data(), tiles_.size());
}

void Frame::after() {
    using namespace common_detail;
    UiSurface &s = *surface_.get();
    const uint8_t changed = s.dirty.changed;
    require(changed == 0 || changed == 1, "dirty.changed is neither 0 nor 1");
    require(changedBefore_ == 0 || changed == 1, "dirty.changed was cleared");
    // The record is the client's: only `changed` may differ.
    s.dirty.changed = changedBefore_;
    const bool recordIntact = surface_.unchanged();
    s.dirty.changed = changed;
    require(recordIntact, "the surface record was written outside dirty.changed");

    bool marked = false;
    for (size_t i = 0; i < tiles_.size(); ++i) {
        const uint8_t now = tiles_.data()[i], was = tilesBefore_.data()[i];
        require(now == 0 || now == 1, "a tile byte is neither 0 nor 1");
        require(was == 0 || now == 1, "a tile byte was cleared");
        if (now != was) marked = true;
    }
    require(!marked || changed == 1, "tiles were marked without setting dirty.changed");
    if (marked) ++drawnCount;

    // The words between one row's last pixel and the next row belong to the
    // client: a row written with the wrong stride or width shows up here.
    const uint32_t width = s.image.width, height = s.image.height;
    for (uint32_t y = 0; y + 1 < height; ++y) {
        const uint32_t *row = reinterpret_cast<const uint32_t *>(pixels_.data() + size_t(y) * s.image.stride);
        for (uint32_t k = 0; k < padWords_; ++k)
            if (row[width + k] != kPadSentinel) return fail("a padding word between image rows was written");
    }
}

}  // namespace fuzzharness
