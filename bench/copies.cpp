// Copies: ScrBlt (copy, scrolling up, down, left and right, and xor),
// MemBlt, copyRect, putPixels and uncompressed bitmap updates; against
// memmove / memcpy of the same rows.
#include <cstring>
#include <vector>

#include "harness.h"

namespace bench {
namespace {

constexpr int32_t kRopCopy = 12;
constexpr int32_t kRopXor = 6;
constexpr int32_t kScroll = 16;

UiRect place(Size s) {
    const int32_t offset = s.width >= kScreenWidth ? 0 : 101;
    return UiRect{kMargin + offset, kMargin + offset, s.width, s.height};
}

struct Shift {
    const char *name;
    int32_t dx, dy;  // source = destination + (dx, dy)
};
constexpr Shift kShifts[] = {{"up", 0, kScroll}, {"down", 0, -kScroll}, {"left", kScroll, 0}, {"right", -kScroll, 0}};

int64_t area(Size s) { return int64_t(s.width) * s.height; }

// Row moves in the order a scroll needs: top to bottom when the source lies
// below, else bottom to top.
void memmoveRows(benchmark::State &state, Size s, Shift shift) {
    Screen &screen = desk();
    const UiRect r = place(s);
    const size_t bytes = 4 * size_t(r.width);
    for (auto _ : state) {
        if (shift.dy > 0) {
            for (int32_t y = 0; y < r.height; ++y)
                std::memmove(screen.at(r.left, r.top + y), screen.at(r.left + shift.dx, r.top + y + shift.dy), bytes);
        } else {
            for (int32_t y = r.height - 1; y >= 0; --y)
                std::memmove(screen.at(r.left, r.top + y), screen.at(r.left + shift.dx, r.top + y + shift.dy), bytes);
        }
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(area(s)));
}

// A source picture of w x h pixels outside the frame buffer.
std::vector<uint32_t> sourcePixels(Size s) {
    std::vector<uint32_t> pixels(size_t(area(s)));
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = uint32_t(i * 2654435761u) & 0xffffff;
    return pixels;
}

void memcpyRows(benchmark::State &state, Size s) {
    Screen &screen = desk();
    const UiRect r = place(s);
    const std::vector<uint32_t> src = sourcePixels(s);
    const size_t bytes = 4 * size_t(r.width);
    for (auto _ : state) {
        for (int32_t y = 0; y < r.height; ++y)
            std::memcpy(screen.at(r.left, r.top + y), src.data() + size_t(y) * size_t(r.width), bytes);
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(area(s)));
}

void scrBlt(benchmark::State &state, Size s, Shift shift, int32_t rop) {
    Screen &screen = desk();
    const UiRect r = place(s);
    const UiScrBltOrder order{r.left, r.top, r.width, r.height, rop, r.left + shift.dx, r.top + shift.dy};
    const UiClipRect clip = screen.fullClip();
    const auto draw = Plugin::get().slot<UiScrBltFn>(UI_SLOT_SCR_BLT);
    for (auto _ : state) {
        draw(&screen.surface(), &order, &clip);
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(area(s)));
}

void copyRect(benchmark::State &state, Size s) {
    Screen &screen = desk();
    const UiRect r = place(s);
    const auto copy = Plugin::get().slot<UiCopyRectFn>(UI_SLOT_COPY_RECT);
    for (auto _ : state) {
        copy(&screen.image(), &screen.dirty(), &r, r.left, r.top + kScroll);
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(area(s)));
}

void memBlt(benchmark::State &state, Size s) {
    Screen &screen = desk();
    const UiRect r = place(s);
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
    const UiClipRect clip = screen.fullClip();
    const auto draw = Plugin::get().slot<UiMemBltFn>(UI_SLOT_MEM_BLT);
    for (auto _ : state) {
        draw(&screen.surface(), &order, &clip);
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(area(s)));
}

void putPixels(benchmark::State &state, Size s) {
    Screen &screen = desk();
    const UiRect r = place(s);
    const std::vector<uint32_t> src = sourcePixels(s);
    Plugin::get().byteOrder(1);
    const auto put = Plugin::get().slot<UiPutPixelsFn>(UI_SLOT_PUT_PIXELS);
    for (auto _ : state) {
        put(&screen.image(), &screen.dirty(), &r, reinterpret_cast<const uint8_t *>(src.data()));
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(area(s)));
}

// An uncompressed bitmap update of the whole rectangle, bytesPerPixel 3 or 4.
void bitmapUpdateRaw(benchmark::State &state, Size s, int32_t bytesPerPixel) {
    Screen &screen = desk();
    const UiRect r = place(s);
    std::vector<uint8_t> data(size_t(area(s)) * size_t(bytesPerPixel));
    for (size_t i = 0; i < data.size(); ++i) data[i] = uint8_t(i * 131 + (i >> 9));
    const UiBitmapData bitmap{r.left, r.top, r.left + r.width - 1, r.top + r.height - 1, s.width, s.height,
                              8 * bytesPerPixel, 0, int32_t(data.size()), data.data()};
    Plugin::get().depth(bytesPerPixel);
    const auto update = Plugin::get().slot<UiBitmapUpdateFn>(UI_SLOT_BITMAP_UPDATE);
    for (auto _ : state) {
        update(&screen.surface(), &bitmap);
        benchmark::ClobberMemory();
    }
    count(state, pixelsOf(area(s)));
}

}  // namespace

void registerCopies() {
    for (const Size s : kRectSizes) {
        const std::string size = sizeName(s.width, s.height);
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
