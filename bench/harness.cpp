#include "harness.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace bench {

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

kit::Table &mutableTable() {
    static kit::Table t;
    return t;
}

// srn_get of the linked library, or of the module named by UI32_BENCH_MODULE
// (another build of ui32.so, measured with the same benchmarks).
kit::SrnGet srnGet() {
    static const kit::SrnGet get = [] {
        const char *path = std::getenv("UI32_BENCH_MODULE");
        if (path == nullptr || *path == 0) return kit::SrnGet(srn_get);
        std::string error;
        const kit::SrnGet module = kit::openModule(path, error);
        if (module == nullptr) {
            std::fprintf(stderr, "bench: %s\n", error.c_str());
            std::exit(1);
        }
        return module;
    }();
    return get;
}

int32_t currentDepth = 0;

}  // namespace

const kit::Table &table() {
    if (currentDepth == 0) depth(3);
    return mutableTable();
}

void depth(int32_t bytesPerPixel) {
    if (bytesPerPixel == currentDepth) return;
    if (bytesPerPixel == 4 && currentDepth == 3) {
        mutableTable().setSourceBytesPerPixel4();
    } else {
        // The table's only way back to 3 bytes per pixel is a new srn_get
        // with a configuration, as a client makes on a new connection (each
        // reserves a new 64 KiB fragment store: a few MiB over a whole run).
        const UiConfig config{kit::kHatchPatterns, bytesPerPixel};
        mutableTable().get(srnGet(), logReport, &config);
    }
    currentDepth = bytesPerPixel;
}

kit::Frame &desk() {
    static kit::Frame frame(kScreenWidth + 2 * kMargin, kScreenHeight + 2 * kMargin);
    return frame;
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

}  // namespace bench

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    bench::table();
    bench::registerFills();
    bench::registerCopies();
#ifdef UI32_BENCH_PEERS
    bench::registerDecoders();
#endif
    bench::registerText();
    bench::registerLines();
#ifdef UI32_BENCH_PEERS
    bench::registerRfb();
#endif
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (bench::reportCount > 0) {
        std::fprintf(stderr, "bench: the library made %ld reports: the measurements are not valid\n",
                     bench::reportCount);
        return 1;
    }
    return 0;
}
