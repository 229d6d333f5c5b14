// Runs a fuzzer's function over the files of the folders on the command line: the corpus as a plain test.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "oracles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> filesOf(const char* folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

void replay(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    // The last line of an input that ends the process names it.
    std::fprintf(stderr, "%s\n", path.c_str());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t count = 0;
    for (int index = 1; index < argc; ++index) {
        for (const std::filesystem::path& path : filesOf(argv[index])) {
            replay(path);
            ++count;
        }
    }
    std::printf("%zu inputs; the most expensive one has %zu bytes and asks for %llu bytes of memory\n", count,
                fuzz::mostWork().inputSize, static_cast<unsigned long long>(fuzz::mostWork().bytes));
    return count == 0 ? 1 : 0;
}
