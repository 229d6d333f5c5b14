// fuzz_seeds FOLDER DESCRIPTION: writes the fuzzers' seeds, from generated broadcasts and from the message catalogue.
#include <cstdio>
#include <iterator>

#include "seeds.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: fuzz_seeds FOLDER DESCRIPTION\n");
        return 2;
    }
    std::ifstream file(argv[2], std::ios::binary);
    const std::string everything((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::filesystem::remove_all(argv[1]);
    fuzz::SeedFiles files(argv[1]);
    fuzz::writeBroadcastSeeds(files, everything, std::filesystem::path(argv[2]).parent_path().string());
    fuzz::writeMessageSeeds(files);
    fuzz::writeTextSeeds(files, everything);
    return 0;
}
