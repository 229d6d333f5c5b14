// CarouselReader: puts an object carousel together from its sections, as far as its names are concerned (ISO/IEC
// 13818-6, clauses 7.3 and 11.3).
// Threads: one.
// Blocks:  never.
// Fails:   never; modules of more than 16 MiB and malformed ones have no objects.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "si/carousel.h"

namespace dvbshell {

class CarouselReader {
public:
    /// Takes a section of a carousel. Returns what is new in words: the gateway, modules.
    std::vector<std::string> add(const std::string& section);
    /// Whether the gateway is known, and all modules have arrived.
    bool isComplete() const;
    bool hasModules() const { return !modules.empty(); }
    /// How many of the modules have arrived.
    std::string progress() const;
    /// A line for each object that the directories name, beginning with the gateway.
    std::vector<std::string> paths() const;

private:
    struct Module {
        si::DownloadInfo::Module info;
        std::uint16_t blockSize = 0;
        std::map<std::uint16_t, std::string> blocks;
        bool arrived = false;
        std::vector<si::CarouselObject> objects;

        std::size_t blockCount() const;
        void read();
    };
    using Key = std::pair<std::uint32_t, std::uint16_t>;  // carousel and module

    void addBlock(const si::DownloadBlock& block);
    std::vector<std::string> addInfo(const si::DownloadInfo& info);
    const si::CarouselObject* find(const si::ObjectReference& reference) const;
    void walk(const si::ObjectReference& directory, const std::string& path, std::size_t depth,
              std::vector<std::string>& lines) const;

    std::optional<si::ObjectReference> gateway;
    std::map<Key, Module> modules;
};

}  // namespace dvbshell
