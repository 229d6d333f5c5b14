// Builds the carousel that names stream events.
#include "carousel.h"

#include <map>

#include "biop_writer.h"

namespace tsmake {

namespace {

using namespace biop;

constexpr std::uint32_t kDsiTransaction = 0x80000000;
constexpr std::uint32_t kDiiTransaction = 0x80000002;
constexpr std::size_t kBlockSize = 64;  // small, so that modules have several blocks
constexpr std::uint16_t kDirectories = 1;
constexpr std::uint16_t kObject = 2;
constexpr std::uint8_t kModuleVersion = 3;

std::string keyOf(std::size_t depth) {
    return be(depth + 1, 1);
}

Place placeOf(const StreamEvents& events, std::uint16_t module, std::size_t depth) {
    return {kCarouselId, events.carouselTag, kDiiTransaction & 0xFFFFU, module, keyOf(depth)};
}

std::vector<std::string> partsOf(const std::string& path) {
    std::vector<std::string> parts(1);
    for (const char letter : path) {
        if (letter == '/') {
            parts.emplace_back();
        } else {
            parts.back() += letter;
        }
    }
    return parts;
}

/// Directories with one entry each, down to the object.
std::string directories(const StreamEvents& events, const std::vector<std::string>& parts) {
    std::string module;
    for (std::size_t depth = 0; depth < parts.size(); ++depth) {
        const bool isLast = depth + 1 == parts.size();
        module += directory(depth == 0 ? kServiceGateway : kDirectory, keyOf(depth),
                            {{parts[depth], isLast ? kStreamEvent : kDirectory,
                              placeOf(events, isLast ? kObject : kDirectories, depth + 1)}});
    }
    return module;
}

std::string namedObject(const StreamEvents& events, std::size_t depth) {
    std::map<std::string, std::uint16_t> named;
    for (const StreamEvent& event : events.events) {
        if (!event.name.empty()) {
            named.emplace(event.name, event.eventId);
        }
    }
    return eventObject(keyOf(depth), named, events.tag.value_or(0));
}

}  // namespace

std::vector<Section> carouselSections(const StreamEvents& events) {
    const std::vector<std::string> parts = partsOf(events.object);
    const List list = {kCarouselId, kDiiTransaction, kBlockSize, events.carouselTag};
    const std::vector<Module> modules = {
        {kDirectories, kModuleVersion, directories(events, parts)},
        compressed({kObject, kModuleVersion, namedObject(events, parts.size())}),
    };
    std::vector<Section> sections = {serverInitiate(kDsiTransaction, placeOf(events, kDirectories, 0)),
                                     infoIndication(list, modules)};
    for (const Module& module : modules) {
        for (std::size_t block = 0; block < blockCount(list, module); ++block) {
            sections.push_back(dataBlock(list, module, block));
        }
    }
    return sections;
}

}  // namespace tsmake
