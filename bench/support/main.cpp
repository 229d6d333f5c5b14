// The main function of every measuring program.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "browser.h"

int main(int count, char** arguments) {
    const std::string& folder = bench::runDirectory();
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    return 0;
}
