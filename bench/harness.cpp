#include "harness.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "ui.h"

namespace bench {

const uint8_t kHatchPatterns[48] = {
    0x00, 0x00, 0x00, 0xff, 0x00, 0x00, 0x00, 0x00,  // horizontal
    0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08, 0x08,  // vertical
    0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01,  // forward diagonal
    0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80,  // backward diagonal
    0x08, 0x08, 0x08, 0xff, 0x08, 0x08, 0x08, 0x08,  // cross
    0x81, 0x42, 0x24, 0x18, 0x18, 0x24, 0x42, 0x81,  // diagonal cross
};

namespace {

long reportCount = 0;

int logReport(const char *level, const char *module, int site, const char *format, ...) {
    if (++reportCount > 20) return 0;  // the first ones tell what is wrong
    std::fprintf(stderr, "bench: library report %s %s %d: ", level, module, site);
    va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
    std::fputc('\n', stderr);
    return 0;
}

}  // namespace

Plugin::Plugin() {
    const UiConfig config{kHatchPatterns, 3};
    srn_get(table_, logReport, &config);
}

Plugin &Plugin::get() {
    static Plugin plugin;
    return plugin;
}

void Plugin::depth(int32_t bytesPerPixel) {
    if (bytesPerPixel == 4) {
        slot<UiSetSourceBytesPerPixel4Fn>(UI_SLOT_SET_SOURCE_BYTES_PER_PIXEL_4)();
        return;
    }
    // The table offers no way back to 3 bytes but a new srn_get, which would
    // reserve a new fragment store each time; the setting is set directly.
    ui::settings.sourceBytesPerPixel = bytesPerPixel;
}

void Plugin::byteOrder(uint8_t order) { slot<UiSetSourceByteOrderFn>(UI_SLOT_SET_SOURCE_BYTE_ORDER)(order); }

long Plugin::reports() const { return reportCount; }

Screen::Screen(int32_t width, int32_t height, int32_t stridePixels)
    : width_(width), height_(height), stride_(stridePixels > 0 ? stridePixels : width) {
    pixels_.assign(size_t(stride_) * size_t(height), 0);
    const int32_t columns = (width + 31) / 32, rows = (height + 31) / 32;
    tiles_.assign(size_t(columns) * size_t(rows), 0);
    imgbuf &image = surface_.image;
    image.pixels = pixels_.data();
    image.stride = uint32_t(stride_) * 4;
    image.width = uint32_t(width);
    image.height = uint32_t(height);
    dirtybuf &dirty = surface_.dirty;
    dirty.tiles = tiles_.data();
    dirty.columns = columns;
    dirty.rows = rows;
}

void Screen::fill(uint32_t colour) { std::fill(pixels_.begin(), pixels_.end(), colour); }

Screen &desk() {
    static Screen screen(kScreenWidth + 2 * kMargin, kScreenHeight + 2 * kMargin);
    return screen;
}

void count(benchmark::State &state, const Work &w) {
    const double n = double(state.iterations());
    state.SetBytesProcessed(int64_t(n) * w.bytes);
    state.counters["pixels_per_second"] = benchmark::Counter(n * double(w.pixels), benchmark::Counter::kIsRate);
    if (w.inputBytes > 0)
        state.counters["input_bytes_per_second"] =
            benchmark::Counter(n * double(w.inputBytes), benchmark::Counter::kIsRate);
}

void add(Entry entry) {
    std::string label;
    const auto compare = [&label](const std::string &ref, double target) {
        if (ref.empty()) return;
        if (!label.empty()) label += "; ";
        label += "ref=" + ref;
        if (target > 0) {
            char t[32];
            std::snprintf(t, sizeof t, " target=%.4g", target);
            label += t;
        }
    };
    compare(entry.ref, entry.target);
    compare(entry.ref2, entry.target2);
    auto run = entry.run;
    benchmark::RegisterBenchmark(entry.name.c_str(), [run, label](benchmark::State &state) {
        run(state);
        if (!label.empty()) state.SetLabel(label);
    });
}

std::string sizeName(int32_t width, int32_t height) { return std::to_string(width) + "x" + std::to_string(height); }

}  // namespace bench

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    bench::Plugin::get();
    bench::registerFills();
    bench::registerCopies();
    bench::registerDecoders();
    bench::registerText();
    bench::registerLines();
    bench::registerRfb();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (bench::Plugin::get().reports() > 0) {
        std::fprintf(stderr, "bench: the library made %ld reports: the measurements are not valid\n",
                     bench::Plugin::get().reports());
        return 1;
    }
    return 0;
}
