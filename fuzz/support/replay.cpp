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
    const fuzz::MostWork& most = fuzz::mostWork();
    std::printf("%zu inputs; nearest to its limit is one of %zu bytes: it asks for %llu of %llu bytes of memory\n",
                count, most.inputSize, static_cast<unsigned long long>(most.bytes),
                static_cast<unsigned long long>(most.allowed));
    return count == 0 ? 1 : 0;
}
