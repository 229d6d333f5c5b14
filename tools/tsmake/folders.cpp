// Reads folders.
#include "folders.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tsmake {

namespace {

namespace fs = std::filesystem;

bool readFolder(const fs::path& folder, std::map<std::string, std::string>& files, std::uint64_t& left,
                std::string& error) {
    std::error_code failure;
    for (fs::recursive_directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        if (entry->is_symlink() || !entry->is_regular_file()) {
            continue;
        }
        std::ifstream file(entry->path(), std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        if (!file.is_open() || file.bad()) {
            error = "cannot read " + entry->path().string();
            return false;
        }
        if (bytes.size() > left) {
            error = folder.string() + ": all folders together have more than " +
                    std::to_string(kMostFolderBytes >> 20U) + " MiB";
            return false;
        }
        left -= bytes.size();
        files[entry->path().lexically_relative(folder).generic_string()] = std::move(bytes);
    }
    if (failure) {
        error = "cannot read " + folder.string() + ": " + failure.message();
    }
    return !failure;
}

bool hasFile(const Carousel& carousel, const std::string& path) {
    return std::any_of(carousel.versions.begin(), carousel.versions.end(),
                       [&path](const CarouselVersion& version) { return version.files.count(path) != 0; });
}

/// A misspelt path would otherwise have no effect.
bool areTypesOfFiles(const Carousel& carousel, std::string& error) {
    for (const auto& [path, type] : carousel.contentTypes) {
        if (!hasFile(carousel, path)) {
            error = "contentTypes: carousel " + std::to_string(carousel.id) + " has no file " + path;
            return false;
        }
    }
    return true;
}

}  // namespace

bool readFolders(Multiplex& multiplex, const std::string& base, std::string& error) {
    std::uint64_t left = kMostFolderBytes;
    for (Service& service : multiplex.services) {
        for (Carousel& carousel : service.carousels) {
            for (CarouselVersion& version : carousel.versions) {
                if (!readFolder(fs::path(base) / version.folder, version.files, left, error)) {
                    return false;
                }
            }
            if (!areTypesOfFiles(carousel, error)) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace tsmake
