// Copies: ScrBlt (copy, scrolling up, down, left and right, and xor),
// MemBlt, copyRect, putPixels and uncompressed bitmap updates; against
// memmove / memcpy of the same rows.
#include <cstring>
#include <vector>

#include "harness.h"

namespace bench {
namespace {

constexpr int32_t kScroll = 16;

struct Shift {
    const char *name;
    int32_t dx, dy;  // source = destination + (dx, dy)
};
constexpr Shift kShifts[] = {{"up", 0, kScroll}, {"down", 0, -kScroll}, {"left", kScroll, 0}, {"right", -kScroll, 0}};

// Row moves in the order a scroll needs: top to bottom when the source lies
// below, else bottom to top.
void memmoveRows(benchmark::State &state, Size s, Shift shift) {
    const UiRect r = s.place();
    const size_t bytes = 4 * size_t(r.width);
    kit::Frame &f = desk();
    const auto move = [&](int32_t y) { std::memmove(&f.at(r.left, y), &f.at(r.left + shift.dx, y + shift.dy), bytes); };
    repeat(state, s.area(), [&] {
        if (shift.dy > 0) {
            for (int32_t y = r.top; y < r.top + r.height; ++y) move(y);
        } else {
            for (int32_t y = r.top + r.height - 1; y >= r.top; --y) move(y);
        }
    });
}

// A source picture of the size's pixels outside the frame buffer.
std::vector<uint32_t> sourcePixels(Size s) {
    std::vector<uint32_t> pixels(size_t(s.area()));
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = uint32_t(i * 2654435761u) & 0xffffff;
    return pixels;
}

void memcpyRows(benchmark::State &state, Size s) {
    const UiRect r = s.place();
    const std::vector<uint32_t> src = sourcePixels(s);
    const size_t bytes = 4 * size_t(r.width);
    kit::Frame &f = desk();
    repeat(state, s.area(), [&] {
        for (int32_t y = 0; y < r.height; ++y)
            std::memcpy(&f.at(r.left, r.top + y), src.data() + size_t(y) * size_t(r.width), bytes);
    });
}

void scrBlt(benchmark::State &state, Size s, Shift shift, int32_t rop) {
    const UiRect r = s.place();
    const UiScrBltOrder order{r.left, r.top, r.width, r.height, rop, r.left + shift.dx, r.top + shift.dy};
    const kit::Table &t = table();
    UiSurface &surface = desk().surface();
    const UiClipRect clip = desk().all();
    repeat(state, s.area(), [&] { t.scrBlt(surface, order, clip); });
}

void copyRect(benchmark::State &state, Size s) {
    const UiRect r = s.place();
    const kit::Table &t = table();
    kit::Frame &f = desk();
    repeat(state, s.area(), [&] { t.copyRect(&f.image(), &f.dirty(), r, r.left, r.top + kScroll); });
}

void memBlt(benchmark::State &state, Size s) {
    const UiRect r = s.place();
    const std::vector<uint32_t> bitmap = sourcePixels(s);
    UiMemBltOrder order{};
    order.left = r.left;
    order.top = r.top;
    order.width = r.width;
    order.height = r.height;
    order.rop = kRopCopy;
    order.bitmapWidth = s.width;
    order.bitmapHeight = s.height;
    order.bitmapPixels = bitmap.data();
    const kit::Table &t = table();
    UiSurface &surface = desk().surface();
    const UiClipRect clip = desk().all();
    repeat(state, s.area(), [&] { t.memBlt(surface, order, clip); });
}

void putPixels(benchmark::State &state, Size s) {
    const UiRect r = s.place();
    const std::vector<uint32_t> src = sourcePixels(s);
    const auto *bytes = reinterpret_cast<const uint8_t *>(src.data());
    const kit::Table &t = table();
    t.setSourceByteOrder(1);
    kit::Frame &f = desk();
    repeat(state, s.area(), [&] { t.putPixels(&f.image(), &f.dirty(), r, bytes); });
}

// An uncompressed bitmap update of the whole rectangle, bytesPerPixel 3 or 4.
void bitmapUpdateRaw(benchmark::State &state, Size s, int32_t bytesPerPixel) {
    const UiRect r = s.place();
    std::vector<uint8_t> data(size_t(s.area()) * size_t(bytesPerPixel));
    for (size_t i = 0; i < data.size(); ++i) data[i] = uint8_t(i * 131 + (i >> 9));
    const UiBitmapData bitmap{r.left, r.top, r.left + r.width - 1, r.top + r.height - 1, s.width, s.height,
                              8 * bytesPerPixel, 0, int32_t(data.size()), data.data()};
    depth(bytesPerPixel);
    const kit::Table &t = table();
    UiSurface &surface = desk().surface();
    repeat(state, s.area(), [&] { t.bitmapUpdate(surface, bitmap); });
}

}  // namespace

void registerCopies() {
    for (const Size s : kRectSizes) {
        const std::string size = s.name();
        const double target = s.width == kScreenWidth ? 0.9 : 0;
        const std::string copyRef = "copies/memcpy/" + size;
        add({copyRef, [s](benchmark::State &st) { memcpyRows(st, s); }});
        for (const Shift shift : kShifts) {
            const std::string ref = std::string("copies/memmove ") + shift.name + "/" + size;
            add({ref, [s, shift](benchmark::State &st) { memmoveRows(st, s, shift); }});
            add({std::string("copies/scrBlt ") + shift.name + "/" + size,
                 [s, shift](benchmark::State &st) { scrBlt(st, s, shift, kRopCopy); }, ref, target});
        }
        const std::string upRef = "copies/memmove up/" + size;
        add({"copies/scrBlt xor up/" + size, [s](benchmark::State &st) { scrBlt(st, s, kShifts[0], kRopXor); }, upRef});
        add({"copies/copyRect up/" + size, [s](benchmark::State &st) { copyRect(st, s); }, upRef, target});
        add({"copies/memBlt/" + size, [s](benchmark::State &st) { memBlt(st, s); }, copyRef, target});
        add({"copies/putPixels/" + size, [s](benchmark::State &st) { putPixels(st, s); }, copyRef, target});
        add({"copies/bitmapUpdate raw 32-bit/" + size, [s](benchmark::State &st) { bitmapUpdateRaw(st, s, 4); },
             copyRef, target});
        add({"copies/bitmapUpdate raw 24-bit/" + size, [s](benchmark::State &st) { bitmapUpdateRaw(st, s, 3); },
             copyRef});
    }
}

}  // namespace bench
