#include "benchmark/benchmark.h"

#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <regex>
#include <string>
#include <vector>

namespace benchmark {

namespace {

struct Benchmark {
    std::string name;
    std::function<void(State &)> run;
};
std::vector<Benchmark> &registered() {
    static std::vector<Benchmark> all;
    return all;
}

struct Options {
    std::string filter = ".";
    int repetitions = 1;
    double minTime = 0.5;
    bool interleave = false;
    std::string out;
} options;

double cpuSeconds() {
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

// "--name=value": the value, or null when the argument is another option.
const char *value(const char *arg, const char *name) {
    const size_t n = std::strlen(name);
    return std::strncmp(arg, name, n) == 0 && arg[n] == '=' ? arg + n + 1 : nullptr;
}

std::string quoted(const std::string &s) {
    std::string out = "\"";
    for (char c : s) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

}  // namespace

void State::start() { started_ = cpuSeconds(); }
void State::stop() { seconds_ = cpuSeconds() - started_; }

struct Runner {
    // Iterations grown (at most tenfold a step) until one run lasts the
    // minimum time; that run is the measurement.
    static State measure(const Benchmark &b) {
        for (int64_t n = 1;;) {
            State state(n);
            b.run(state);
            const double t = state.seconds_;
            if (t >= options.minTime || n >= 1000000000 || !state.error_.empty()) return state;
            const double grow = t > 0 ? options.minTime * 1.4 / t : 10;
            n = std::max(n + 1, int64_t(double(n) * std::min(grow, 10.0)));
        }
    }

    static void print(const Benchmark &b, const State &s) {
        const auto px = s.counters.find("pixels_per_second");
        std::printf("%-64s %12.0f ns %10.1f Mpx/s%s%s\n", b.name.c_str(), s.seconds_ * 1e9 / double(s.iterations_),
                    px == s.counters.end() || s.seconds_ <= 0 ? 0.0 : px->second.value / s.seconds_ / 1e6,
                    s.error_.empty() ? "" : "  ERROR: ", s.error_.c_str());
        std::fflush(stdout);
    }

    static std::string json(const Benchmark &b, size_t family, int repetition, const State &s) {
        std::string out = "    {";
        const auto text = [&](const char *key, const std::string &v) {
            out += "\n      \"";
            out += key;
            out += "\": ";
            out += quoted(v);
            out += ",";
        };
        const auto number = [&](const char *key, double v) {
            char n[64];
            std::snprintf(n, sizeof n, "\n      \"%s\": %.6g,", key, v);
            out += n;
        };
        text("name", b.name);
        text("run_name", b.name);
        text("run_type", "iteration");
        number("family_index", double(family));
        number("per_family_instance_index", 0);
        number("repetitions", options.repetitions);
        number("repetition_index", repetition);
        number("iterations", double(s.iterations_));
        number("cpu_time", s.seconds_ * 1e9 / double(s.iterations_));
        text("time_unit", "ns");
        if (!s.error_.empty()) {
            out += "\n      \"error_occurred\": true,";
            text("error_message", s.error_);
        }
        if (s.seconds_ > 0) {
            if (s.bytes_ > 0) number("bytes_per_second", double(s.bytes_) / s.seconds_);
            for (const auto &[key, c] : s.counters)
                number(key.c_str(), c.flags == Counter::kIsRate ? c.value / s.seconds_ : c.value);
        }
        if (!s.label_.empty()) text("label", s.label_);
        out.back() = '\n';  // the last comma
        return out + "    }";
    }
};

void RegisterBenchmark(const char *name, std::function<void(State &)> run) {
    registered().push_back({name, std::move(run)});
}

void Initialize(int *argc, char **argv) {
    int kept = 1;
    for (int i = 1; i < *argc; ++i) {
        const char *a = argv[i], *v;
        if ((v = value(a, "--benchmark_filter"))) options.filter = v;
        else if ((v = value(a, "--benchmark_repetitions"))) options.repetitions = std::max(1, std::atoi(v));
        else if ((v = value(a, "--benchmark_min_time"))) options.minTime = std::atof(v);
        else if ((v = value(a, "--benchmark_enable_random_interleaving"))) options.interleave = std::strcmp(v, "true") == 0;
        else if ((v = value(a, "--benchmark_out"))) options.out = v;
        else if (value(a, "--benchmark_out_format") || value(a, "--benchmark_display_aggregates_only")) continue;
        else argv[kept++] = argv[i];
    }
    *argc = kept;
}

bool ReportUnrecognizedArguments(int argc, char **argv) {
    for (int i = 1; i < argc; ++i) std::fprintf(stderr, "%s: unrecognized argument '%s'\n", argv[0], argv[i]);
    return argc > 1;
}

// Every selected benchmark once per repetition; with interleaving the runs
// of all repetitions in random order.  JSON runs in registration order.
void RunSpecifiedBenchmarks() {
    const std::regex filter(options.filter);
    std::vector<std::pair<size_t, int>> runs;
    for (size_t i = 0; i < registered().size(); ++i)
        if (std::regex_search(registered()[i].name, filter))
            for (int r = 0; r < options.repetitions; ++r) runs.push_back({i, r});
    if (options.interleave) std::shuffle(runs.begin(), runs.end(), std::mt19937(std::random_device{}()));
    std::vector<std::string> results(runs.size());
    for (size_t k = 0; k < runs.size(); ++k) {
        const Benchmark &b = registered()[runs[k].first];
        const State s = Runner::measure(b);
        Runner::print(b, s);
        results[k] = Runner::json(b, runs[k].first, runs[k].second, s);
    }
    if (options.out.empty()) return;
    std::vector<size_t> order(runs.size());
    for (size_t k = 0; k < order.size(); ++k) order[k] = k;
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return runs[a] < runs[b]; });
    std::FILE *f = std::fopen(options.out.c_str(), "w");
    if (f == nullptr) {
        std::perror(options.out.c_str());
        std::exit(1);
    }
    char date[64];
    const std::time_t now = std::time(nullptr);
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S%z", std::localtime(&now));
    double load[3] = {0, 0, 0};
    if (getloadavg(load, 3) != 3) load[0] = load[1] = load[2] = 0;
    std::fprintf(f, "{\n  \"context\": {\n    \"date\": \"%s\",\n    \"num_cpus\": %ld,\n"
                    "    \"load_avg\": [%.2f, %.2f, %.2f],\n    \"library\": \"bench/lite\"\n  },\n  \"benchmarks\": [\n",
                 date, sysconf(_SC_NPROCESSORS_ONLN), load[0], load[1], load[2]);
    for (size_t k = 0; k < order.size(); ++k)
        std::fprintf(f, "%s%s\n", results[order[k]].c_str(), k + 1 < order.size() ? "," : "");
    std::fprintf(f, "  ]\n}\n");
    std::fclose(f);
}

}  // namespace benchmark
