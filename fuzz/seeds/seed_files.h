// The files of the seeds: a folder for each fuzzer, a numbered file for each seed.
// Threads: one.
// Blocks:  while writing.
// Fails:   ends the process if a file cannot be written.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace fuzz {

/// Bytes as fuzz::Input takes them apart again.
class Seed {
public:
    Seed& u8(unsigned int value) {
        bytes.push_back(static_cast<char>(value));
        return *this;
    }
    Seed& u16(unsigned int value) { return u8(value >> 8U).u8(value & 0xFFU); }
    /// Bytes behind their length of 16 bits.
    template <typename Bytes>
    Seed& chunk(const Bytes& content) {
        u16(static_cast<unsigned int>(content.size()));
        return raw(content);
    }
    template <typename Bytes>
    Seed& raw(const Bytes& content) {
        bytes.append(content.begin(), content.end());
        return *this;
    }

    std::string bytes;
};

class SeedFiles {
public:
    explicit SeedFiles(std::filesystem::path newFolder) : folder(std::move(newFolder)) {}

    void add(const std::string& fuzzer, const Seed& seed) {
        std::filesystem::create_directories(folder / fuzzer);
        char name[32];
        std::snprintf(name, sizeof name, "%03u", ++counts[fuzzer]);
        std::ofstream file(folder / fuzzer / name, std::ios::binary);
        file.write(seed.bytes.data(), static_cast<std::streamsize>(seed.bytes.size()));
        file.close();
        if (!file) {
            std::fprintf(stderr, "cannot write a seed to %s\n", folder.c_str());
            std::exit(1);
        }
    }

private:
    const std::filesystem::path folder;
    std::map<std::string, unsigned int> counts;  // by fuzzer
};

}  // namespace fuzz
