// The times of many round trips as counters of a benchmark: their median and 99th percentile, in microseconds.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace bench {

using Clock = std::chrono::steady_clock;

class Latencies {
public:
    void begin() { begun = Clock::now(); }
    /// A round trip has ended, and the next one begins.
    void next() {
        const Clock::time_point now = Clock::now();
        times.push_back(std::chrono::duration<float, std::micro>(now - begun).count());
        begun = now;
    }
    void tell(benchmark::State& state) {
        state.counters["p50_us"] = at(0.5);
        state.counters["p99_us"] = at(0.99);
    }

private:
    double at(double share) {
        if (times.empty()) {
            return 0;
        }
        const auto place = times.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(times.size() - 1));
        std::nth_element(times.begin(), place, times.end());
        return *place;
    }

    Clock::time_point begun;
    std::vector<float> times;
};

}  // namespace bench
