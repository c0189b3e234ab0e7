// A small timing driver with the part of Google Benchmark's interface the
// benchmarks use, for the builds Debian ships no Google Benchmark for (i386:
// its libbenchmark-dev is for the host architecture, and the i386 one would
// need the foreign architecture's libc, which the multilib tool chain does not
// use).  Same command-line options as far as the benchmarks' run script uses
// them, same JSON output as far as bench/report reads it; CPU time of the
// process, iterations grown until a run lasts the minimum time.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace benchmark {

struct Counter {
    enum Flags { kDefaults = 0, kIsRate = 1 };
    Counter(double v = 0, Flags f = kDefaults) : value(v), flags(f) {}
    double value;
    Flags flags;
};

class State {
public:
    struct Value {
        ~Value() {}  // not a plain value: no warning that the loop variable goes unused
    };
    struct Iterator {
        int64_t left;
        State *state;
        bool operator!=(const Iterator &) {
            if (left > 0) return true;
            state->stop();
            return false;
        }
        void operator++() { --left; }
        Value operator*() const { return {}; }
    };
    Iterator begin() {
        start();
        return {iterations_, this};
    }
    Iterator end() { return {0, this}; }

    int64_t iterations() const { return iterations_; }
    void SetBytesProcessed(int64_t bytes) { bytes_ = bytes; }
    void SetLabel(const std::string &label) { label_ = label; }
    void SkipWithError(const char *message) { error_ = message; }
    std::map<std::string, Counter> counters;

private:
    friend struct Runner;
    explicit State(int64_t iterations) : iterations_(iterations) {}
    void start();
    void stop();
    int64_t iterations_;
    int64_t bytes_ = 0;
    double seconds_ = 0, started_ = 0;
    std::string label_, error_;
};

inline void ClobberMemory() { asm volatile("" : : : "memory"); }

void RegisterBenchmark(const char *name, std::function<void(State &)> run);
void Initialize(int *argc, char **argv);
bool ReportUnrecognizedArguments(int argc, char **argv);
void RunSpecifiedBenchmarks();
inline void Shutdown() {}

}  // namespace benchmark
