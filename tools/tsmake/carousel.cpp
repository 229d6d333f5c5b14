// Builds the carousel.
#include "carousel.h"

#include <zlib.h>

#include <map>
#include <stdexcept>

namespace tsmake {

namespace {

constexpr std::uint32_t kDsiTransaction = 0x80000000;
constexpr std::uint32_t kDiiTransaction = 0x80000002;
constexpr std::size_t kBlockSize = 64;  // small, so that modules have several blocks
constexpr std::uint16_t kDirectories = 1;
constexpr std::uint16_t kObject = 2;
constexpr std::uint8_t kModuleVersion = 3;

const std::string kServiceGateway("srg\0", 4);
const std::string kDirectory("dir\0", 4);
const std::string kStreamEvent("ste\0", 4);

/// A big-endian number of `width` bytes, at most eight.
std::string be(std::uint64_t value, unsigned int width) {
    std::string bytes;
    while (width-- != 0) {
        bytes.push_back(static_cast<char>(value >> (8U * width) & 0xFFU));
    }
    return bytes;
}

std::string withLength(const std::string& bytes, unsigned int width) {
    return be(bytes.size(), width) + bytes;
}

/// The module and the object key of an object.
struct Place {
    std::uint16_t module;
    std::uint8_t key;
};

std::string tap(std::uint16_t use, std::uint16_t associationTag, const std::string& selector) {
    return be(0, 2) + be(use, 2) + be(associationTag, 2) + withLength(selector, 1);
}

std::string reference(const std::string& kind, const Place& place, std::uint8_t carouselTag) {
    constexpr std::uint32_t kBiopProfile = 0x49534F06;
    constexpr std::uint32_t kObjectLocation = 0x49534F50;
    constexpr std::uint32_t kConnBinder = 0x49534F40;
    constexpr std::uint16_t kDeliveryParaUse = 0x0016;
    const std::string location =
        be(kCarouselId, 4) + be(place.module, 2) + be(0x0100, 2) + withLength(be(place.key, 1), 1);
    const std::string selector = be(1, 2) + be(kDiiTransaction, 4) + be(0xFFFFFFFF, 4);
    const std::string binder = be(1, 1) + tap(kDeliveryParaUse, carouselTag, selector);
    const std::string profile = be(0, 1) + be(2, 1) + be(kObjectLocation, 4) + withLength(location, 1) +
                                be(kConnBinder, 4) + withLength(binder, 1);
    return withLength(kind, 4) + be(1, 4) + be(kBiopProfile, 4) + withLength(profile, 4);
}

std::string object(const std::string& kind, std::uint8_t key, const std::string& info, const std::string& body) {
    constexpr std::uint32_t kMagic = 0x42494F50;
    const std::string message =
        withLength(be(key, 1), 1) + withLength(kind, 4) + withLength(info, 2) + be(0, 1) + withLength(body, 4);
    return be(kMagic, 4) + be(0x0100, 2) + be(0, 2) + withLength(message, 4);
}

/// A directory with one entry.
std::string directory(const std::string& kind, std::uint8_t key, const std::string& name, const std::string& entryKind,
                      const Place& entry, std::uint8_t carouselTag) {
    const unsigned int bindingType = entryKind == kDirectory ? 2 : 1;
    const std::string binding = be(1, 1) + withLength(name + '\0', 1) + withLength(entryKind, 1) + be(bindingType, 1) +
                                reference(entryKind, entry, carouselTag) + be(0, 2);
    return object(kind, key, {}, be(1, 2) + binding);
}

std::string eventObject(std::uint8_t key, const StreamEvents& events) {
    constexpr std::uint16_t kEventUse = 0x000D;
    std::map<std::string, std::uint16_t> named;
    for (const StreamEvent& event : events.events) {
        if (!event.name.empty()) {
            named.emplace(event.name, event.eventId);
        }
    }
    std::string names;
    std::string ids;
    for (const auto& [name, id] : named) {
        names += withLength(name + '\0', 1);
        ids += be(id, 2);
    }
    // No description, no duration; the object has data, and neither audio nor video.
    const std::string info = be(0, 1) + be(0, 4) + be(0, 2) + be(0, 2) + be(1, 1) + be(named.size(), 2) + names;
    return object(kStreamEvent, key, info,
                  be(1, 1) + tap(kEventUse, events.tag.value_or(0), {}) + be(named.size(), 1) + ids);
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

std::string directories(const StreamEvents& events) {
    const std::vector<std::string> parts = partsOf(events.object);
    std::string module;
    for (std::size_t depth = 0; depth < parts.size(); ++depth) {
        const bool isLast = depth + 1 == parts.size();
        const auto key = static_cast<std::uint8_t>(depth + 1);
        const Place next = {isLast ? kObject : kDirectories, static_cast<std::uint8_t>(key + 1)};
        module += directory(depth == 0 ? kServiceGateway : kDirectory, key, parts[depth],
                            isLast ? kStreamEvent : kDirectory, next, events.carouselTag);
    }
    return module;
}

std::string compressed(const std::string& bytes) {
    uLongf size = compressBound(static_cast<uLong>(bytes.size()));
    std::string result(size, '\0');
    if (compress(reinterpret_cast<Bytef*>(result.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
                 static_cast<uLong>(bytes.size())) != Z_OK) {
        throw std::length_error("a module cannot be compressed");
    }
    result.resize(size);
    return result;
}

std::string moduleEntry(std::uint16_t id, const std::string& module, std::uint8_t carouselTag,
                        const std::string& userInfo) {
    constexpr std::uint16_t kObjectUse = 0x0017;
    const std::string info = be(0xFFFFFFFF, 4) + be(0xFFFFFFFF, 4) + be(0, 4) + be(1, 1) +
                             tap(kObjectUse, carouselTag, {}) + withLength(userInfo, 1);
    return be(id, 2) + be(module.size(), 4) + be(kModuleVersion, 1) + withLength(info, 1);
}

Section messageSection(std::uint8_t tableId, std::uint16_t extension, std::uint16_t messageId,
                       std::uint32_t transaction, const std::string& payload, std::uint8_t version = 0,
                       std::uint8_t number = 0, std::uint8_t lastNumber = 0) {
    SectionWriter writer(tableId, extension, version, number, lastNumber);
    writer.u8(0x11).u8(0x03).u16(messageId).u32(transaction).u8(0xFF).u8(0).text(withLength(payload, 2));
    return writer.finish();
}

void addBlocks(std::vector<Section>& sections, std::uint16_t id, const std::string& module) {
    constexpr std::uint8_t kTableId = 0x3C;
    constexpr std::uint16_t kDownloadDataBlock = 0x1003;
    const std::size_t blocks = (module.size() + kBlockSize - 1) / kBlockSize;
    for (std::size_t block = 0; block < blocks; ++block) {
        const std::string payload = be(id, 2) + be(kModuleVersion, 1) + be(0xFF, 1) + be(block, 2) +
                                    module.substr(block * kBlockSize, kBlockSize);
        sections.push_back(messageSection(kTableId, id, kDownloadDataBlock, kCarouselId, payload, kModuleVersion,
                                          static_cast<std::uint8_t>(block), static_cast<std::uint8_t>(blocks - 1)));
    }
}

}  // namespace

std::vector<Section> carouselSections(const StreamEvents& events) {
    constexpr std::uint8_t kControlTableId = 0x3B;
    constexpr std::uint16_t kServerInitiate = 0x1006;
    constexpr std::uint16_t kInfoIndication = 0x1002;
    constexpr std::uint8_t kCompressedModule = 0x09;
    constexpr std::uint8_t kZlib = 0x08;
    const std::string tree = directories(events);
    const std::string named = eventObject(static_cast<std::uint8_t>(partsOf(events.object).size() + 1), events);
    const std::string packed = compressed(named);
    const std::string gateway = reference(kServiceGateway, {kDirectories, 1}, events.carouselTag) + be(0, 4);
    const std::string modules =
        be(2, 2) + moduleEntry(kDirectories, tree, events.carouselTag, {}) +
        moduleEntry(kObject, packed, events.carouselTag,
                    be(kCompressedModule, 1) + withLength(be(kZlib, 1) + be(named.size(), 4), 1));
    std::vector<Section> sections = {
        messageSection(kControlTableId, 0, kServerInitiate, kDsiTransaction,
                       std::string(20, '\xFF') + be(0, 2) + withLength(gateway, 2)),
        messageSection(kControlTableId, kDiiTransaction & 0xFFFFU, kInfoIndication, kDiiTransaction,
                       be(kCarouselId, 4) + be(kBlockSize, 2) + std::string(10, '\0') + be(0, 2) + modules + be(0, 2))};
    addBlocks(sections, kDirectories, tree);
    addBlocks(sections, kObject, packed);
    return sections;
}

}  // namespace tsmake
