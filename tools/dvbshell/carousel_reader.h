// CarouselReader: puts an object carousel together from its sections, as far as its names are concerned (ISO/IEC
// 13818-6, clauses 7.3 and 11.3).
// Threads: one.
// Blocks:  never.
// Fails:   never; modules of more than 16 MiB or compressed more than a hundred times, empty and malformed ones have no
//          objects. Modules beyond the limits of number and size are left out.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "events.h"
#include "si/download.h"

namespace dvbshell {

/// A line, and the same for programs.
struct CarouselNews {
    std::string text;
    std::vector<message_fields::FieldValue> values = {};
};

class CarouselReader {
public:
    /// Takes a section of a carousel. Returns what is new: gateways, modules, that modules are left out.
    std::vector<CarouselNews> add(const std::string& section);
    /// Whether the gateway of every carousel is known, and all modules have arrived.
    bool isComplete() const;
    bool hasModules() const { return !modules.empty(); }
    /// How many of the modules have arrived.
    std::string progress() const;
    /// A line for each object that the directories name, beginning with the gateways.
    std::vector<std::string> paths() const;

private:
    struct Module {
        si::DownloadInfo::Module info;
        std::uint16_t blockSize = 0;
        std::map<std::uint16_t, std::string> blocks;
        bool arrived = false;
        std::vector<si::CarouselObject> objects;

        std::size_t blockCount() const;
        /// Whether it has bytes, and block numbers and memory suffice for them.
        bool isReadable() const;
        /// How many bytes it may take until it is read, and its objects after that.
        std::size_t cost() const;
        void read();
    };
    using Key = std::pair<std::uint32_t, std::uint16_t>;  // carousel and module

    void addBlock(const si::DownloadBlock& block);
    std::vector<CarouselNews> addInfo(const si::DownloadInfo& info);
    std::vector<CarouselNews> addGateway(const si::ObjectReference& gateway);
    /// Whether a module may replace the one with the same key, if there is one.
    bool hasRoomFor(const Key& key, const Module& module) const;
    bool hasModuleOf(std::uint32_t carousel) const;
    const si::CarouselObject* find(const si::ObjectReference& reference) const;
    void walk(const si::ObjectReference& directory, const std::string& path, std::size_t depth,
              std::vector<std::string>& lines) const;

    std::map<std::uint32_t, si::ObjectReference> gateways;  // by carousel
    std::map<Key, Module> modules;
    bool leavesOut = false;  // modules, because of the limits
};

}  // namespace dvbshell
