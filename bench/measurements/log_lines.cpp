// Log lines: one that nobody wants, beside none; and one to a file, beside snprintf() and write() of the same text.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "browser.h"
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

/// A line of the same length, with the time, by the simplest means.
void byHand(benchmark::State& state) {
    const std::string path = bench::runDirectory() + "/by_hand";
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    const int process = getpid();
    int value = 0;
    while (state.KeepRunning()) {
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        char line[256];
        const int length = std::snprintf(line, sizeof line, "%02d:%02d:%02d.%03ld %d F [%s] %s:%d:%s(): value %d\n", 12,
                                         0, static_cast<int>(now.tv_sec % 60), now.tv_nsec / 1000000, process, kBlogTag,
                                         blog_base_name(__FILE__), __LINE__, __func__, ++value);
        if (write(file, line, static_cast<std::size_t>(length)) != length) {
            state.SkipWithError("the file takes no line");
        }
    }
    close(file);
}

BENCHMARK(unwanted)->Name("log/unwanted");
BENCHMARK(noLine)->Name("log/no_line");
BENCHMARK(wanted)->Name("log/wanted");
BENCHMARK(byHand)->Name("log/by_hand");

}  // namespace
