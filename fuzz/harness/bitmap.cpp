// Bitmap harnesses: bitmapUpdate (slot 0) and decodeBitmap (slot 8) with
// interleaved run-length, planar and uncompressed data at every source depth.
#include "harness.h"

namespace fuzzharness {
namespace bitmap_detail {

// Source depths: 3 (interleaved), 4 (planar, set through slot 10), the other
// depths of at least 3 that the interleaved codec accepts, and depths it must
// refuse.
const int32_t kDepths[16] = {3, 4, 3, 4, 5, 6, 8, 2, 1, 0, -1, 255, INT32_MAX, INT32_MIN, 3, 4};

// Dimensions whose products sit at the decode buffer's limit or overflow 32
// bits (65536 x 65536 wraps to 0).
const int32_t kBigDimensions[16][2] = {
    {256, 256},   {257, 256},       {65536, 1},       {1, 65537},          {65537, 65537}, {65536, 65536},
    {46341, 46341}, {32768, 131072}, {INT32_MAX, 2},   {2, INT32_MAX},      {-1, 1},        {1, -1},
    {INT32_MIN, INT32_MIN}, {0x10000, 0x8000}, {0x40000000, 4}, {16384, 16384},
};

void dimensions(Reader &c, int32_t &width, int32_t &height) {
    switch (c.u8() & 3) {
        case 0:
        case 1:
            width = c.u8() % 97;
            height = c.u8() % 97;
            break;
        case 2:
            width = c.extent();
            height = c.extent();
            break;
        default: {
            const int32_t *pair = kBigDimensions[c.u8() & 15];
            width = pair[0];
            height = pair[1];
        }
    }
}

// The data of one bitmap: `declared` bytes from the stream (all that is left
// for the last bitmap), in an exact block.
InputBytes bitmapBytes(Reader &stream, size_t declared, bool last) {
    const uint8_t *bytes = nullptr;
    const size_t n = stream.take(last ? stream.size() : declared, bytes);
    return InputBytes(bytes, n);
}

// The length the client states: the data's length, a shorter one, or a
// negative one passed on from a corrupt record.  Never more than there is.
int32_t statedLength(Reader &c, int32_t size) {
    const uint8_t mode = c.u8();
    if ((mode & 7) == 6) return size - int32_t(c.u16() % uint32_t(size + 1));
    if ((mode & 7) == 7) {
        const int32_t any = c.i32();
        return any < 0 || any <= size ? any : size;
    }
    return size;
}

// Right (or bottom) edge: the bitmap's own size, a small size or any value.
int32_t farEdge(Reader &c, int32_t start, int32_t size) {
    switch (c.u8() & 3) {
        case 0:
        case 1: return int32_t(uint32_t(start) + uint32_t(size) - 1u);
        case 2: return int32_t(uint32_t(start) + uint32_t(c.u8()) - 1u);
        default: return c.coord();
    }
}

}  // namespace bitmap_detail

void runBitmapUpdate(const uint8_t *data, size_t size) {
    using namespace bitmap_detail;
    Input in = splitInput(data, size);
    Reader &c = in.control;
    startLibrary(kDepths[c.u8() & 15]);
    setByteOrder(c.u8());
    Frame frame(c);
    const int calls = 1 + c.u8() % 3;
    for (int i = 0; i < calls; ++i) {
        Record<UiBitmapData> b;
        dimensions(c, b->width, b->height);
        b->destLeft = c.coord();
        b->destTop = c.coord();
        b->destRight = farEdge(c, b->destLeft, b->width);
        b->destBottom = farEdge(c, b->destTop, b->height);
        b->bitsPerPixel = c.u8();
        b->flags = c.u8();
        b->flags |= uint32_t(c.u8()) << 24;
        InputBytes bytes = bitmapBytes(in.stream, c.u16(), i + 1 == calls);
        b->bitmapLength = statedLength(c, bytes.size());
        b->bitmapDataStream = bytes.data();
        if (bytes.size() == 0 && (c.u8() & 1)) b->bitmapDataStream = nullptr;
        b.freeze();

        currentEntry = "bitmapUpdate";
        frame.before();
        slot<UiBitmapUpdateFn>(UI_SLOT_BITMAP_UPDATE)(frame.surface(), b.get());
        frame.after();
        require(b.unchanged(), "the bitmap record was written");
        require(bytes.unchanged(), "the bitmap data was written");
    }
}

void runDecodeBitmap(const uint8_t *data, size_t size) {
    using namespace bitmap_detail;
    Input in = splitInput(data, size);
    Reader &c = in.control;
    startLibrary(kDepths[c.u8() & 15]);
    setByteOrder(c.u8());
    int32_t width = 0, height = 0;
    dimensions(c, width, height);
    const uint8_t compressed = c.u8();
    InputBytes bytes = bitmapBytes(in.stream, 0, true);
    const int32_t length = statedLength(c, bytes.size());

    // The client's array holds width x height pixels.  Sizes too large for
    // the harness to allocate are only tried where the library must refuse
    // them (more than 2^31 bytes), with an empty array.
    const int64_t pixels = width < 0 || height < 0 ? -1 : int64_t(width) * height;
    constexpr int64_t kLargestArray = int64_t(1) << 18;
    size_t arrayBytes = 0;
    if (pixels >= 0 && pixels <= kLargestArray)
        arrayBytes = size_t(pixels) * 4;
    else if (pixels > kLargestArray && pixels <= INT32_MAX / 4)
        return;
    Block output(arrayBytes);
    std::memset(output.data(), 0xa5, arrayBytes);

    currentEntry = "decodeBitmap";
    const int32_t result = slot<UiDecodeBitmapFn>(UI_SLOT_DECODE_BITMAP)(width, height, bytes.data(), length,
                                                                           compressed, output.as<uint32_t>());
    require(result == 0 || result == 1, "decodeBitmap returned neither 0 nor 1");
    drawnCount += uint32_t(result == 1);
    require(bytes.unchanged(), "the bitmap data was written");
}

}  // namespace fuzzharness
