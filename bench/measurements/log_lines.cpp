// Log lines: one that nobody wants, beside none; and one to a file, beside snprintf() and write() of the same text.
#include <benchmark/benchmark.h>

#include "line_by_hand.h"
#include "ovx/log.h"

namespace {

constexpr const char* kBlogTag = "bench";

void unwanted(benchmark::State& state) {
    int value = 0;
    while (state.KeepRunning()) {
        BLOG_TAGGED(blog::kTrace, "value %d\n", value);
        benchmark::DoNotOptimize(++value);
    }
}

/// The loop around it alone.
void noLine(benchmark::State& state) {
    int value = 0;
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(++value);
    }
}

void wanted(benchmark::State& state) {
    int value = 0;
    while (state.KeepRunning()) {
        BLOG_TAGGED(blog::kFailure, "value %d\n", ++value);
    }
}

void byHand(benchmark::State& state) {
    bench::LineByHand line;
    int value = 0;
    while (state.KeepRunning()) {
        if (!line.write(++value)) {
            state.SkipWithError("the file takes no line");
        }
    }
}

BENCHMARK(unwanted)->Name("log/unwanted");
BENCHMARK(noLine)->Name("log/no_line");
BENCHMARK(wanted)->Name("log/wanted");
BENCHMARK(byHand)->Name("log/by_hand");

}  // namespace
