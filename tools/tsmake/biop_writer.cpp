// Writes carousels' objects and messages.
#include "biop_writer.h"

#include <zlib.h>

#include <stdexcept>

namespace tsmake::biop {

namespace {

std::string tap(std::uint16_t use, std::uint16_t associationTag, const std::string& selector) {
    return be(0, 2) + be(use, 2) + be(associationTag, 2) + withLength(selector, 1);
}

std::string object(const std::string& kind, const std::string& key, const std::string& info, const std::string& body) {
    constexpr std::uint32_t kMagic = 0x42494F50;
    const std::string message =
        withLength(key, 1) + withLength(kind, 4) + withLength(info, 2) + be(0, 1) + withLength(body, 4);
    return be(kMagic, 4) + be(0x0100, 2) + be(0, 2) + withLength(message, 4);
}

std::string moduleEntry(const Module& module, std::uint16_t associationTag) {
    constexpr std::uint16_t kObjectUse = 0x0017;
    constexpr std::uint8_t kCompressedModule = 0x09;
    constexpr std::uint8_t kZlib = 0x08;
    const std::string userInfo =
        module.originalSize == 0 ? std::string()
                                 : be(kCompressedModule, 1) + withLength(be(kZlib, 1) + be(module.originalSize, 4), 1);
    const std::string info = be(0xFFFFFFFF, 4) + be(0xFFFFFFFF, 4) + be(0, 4) + be(1, 1) +
                             tap(kObjectUse, associationTag, {}) + withLength(userInfo, 1);
    return be(module.id, 2) + be(module.bytes.size(), 4) + be(module.version, 1) + withLength(info, 1);
}

struct Numbers {
    std::uint8_t version = 0;
    std::uint8_t number = 0;
    std::uint8_t lastNumber = 0;
};

Section messageSection(std::uint8_t tableId, std::uint16_t extension, const Numbers& numbers, std::uint16_t messageId,
                       std::uint32_t transaction, const std::string& payload) {
    SectionWriter writer(tableId, extension, numbers.version, numbers.number, numbers.lastNumber);
    writer.u8(0x11).u8(0x03).u16(messageId).u32(transaction).u8(0xFF).u8(0).text(withLength(payload, 2));
    return writer.finish();
}

constexpr std::uint8_t kControlTableId = 0x3B;

}  // namespace

std::string be(std::uint64_t value, unsigned int width) {
    std::string bytes;
    while (width-- != 0) {
        bytes.push_back(static_cast<char>(value >> (8U * width) & 0xFFU));
    }
    return bytes;
}

std::string withLength(const std::string& bytes, unsigned int width) {
    if (width < sizeof(std::uint64_t) && std::uint64_t{bytes.size()} >> (8U * width) != 0) {
        throw std::length_error("a name or an object of a carousel is too long");
    }
    return be(bytes.size(), width) + bytes;
}

std::string reference(const std::string& kind, const Place& place) {
    constexpr std::uint32_t kBiopProfile = 0x49534F06;
    constexpr std::uint32_t kObjectLocation = 0x49534F50;
    constexpr std::uint32_t kConnBinder = 0x49534F40;
    constexpr std::uint16_t kDeliveryParaUse = 0x0016;
    constexpr std::uint32_t kFromServer = 0x80000000;
    const std::string location = be(place.carousel, 4) + be(place.module, 2) + be(0x0100, 2) + withLength(place.key, 1);
    const std::string selector = be(1, 2) + be(kFromServer | place.list, 4) + be(0xFFFFFFFF, 4);
    const std::string binder = be(1, 1) + tap(kDeliveryParaUse, place.associationTag, selector);
    const std::string profile = be(0, 1) + be(2, 1) + be(kObjectLocation, 4) + withLength(location, 1) +
                                be(kConnBinder, 4) + withLength(binder, 1);
    return withLength(kind, 4) + be(1, 4) + be(kBiopProfile, 4) + withLength(profile, 4);
}

std::string directory(const std::string& kind, const std::string& key, const std::vector<Binding>& bindings) {
    std::string body;
    for (const Binding& binding : bindings) {
        const unsigned int bindingType = binding.kind == kDirectory ? 2 : 1;
        body += be(1, 1) + withLength(binding.name + '\0', 1) + withLength(binding.kind, 1) + be(bindingType, 1) +
                reference(binding.kind, binding.place) + be(0, 2);
    }
    return object(kind, key, {}, be(bindings.size(), 2) + body);
}

std::string file(const std::string& key, const std::string& content, const std::string& contentType) {
    constexpr std::uint8_t kContentType = 0x72;
    const std::string descriptor =
        contentType.empty() ? std::string() : be(kContentType, 1) + withLength(contentType, 1);
    return object(kFile, key, be(content.size(), 8) + descriptor, withLength(content, 4));
}

std::string eventObject(const std::string& key, const std::map<std::string, std::uint16_t>& idsByName,
                        std::uint16_t streamTag) {
    constexpr std::uint16_t kEventUse = 0x000D;
    std::string names;
    std::string ids;
    for (const auto& [name, id] : idsByName) {
        names += withLength(name + '\0', 1);
        ids += be(id, 2);
    }
    // No description, no duration; the object has data, and neither audio nor video.
    const std::string info = be(0, 1) + be(0, 4) + be(0, 2) + be(0, 2) + be(1, 1) + be(idsByName.size(), 2) + names;
    return object(kStreamEvent, key, info, be(1, 1) + tap(kEventUse, streamTag, {}) + be(idsByName.size(), 1) + ids);
}

Module compressed(Module module) {
    uLongf size = compressBound(static_cast<uLong>(module.bytes.size()));
    std::string result(size, '\0');
    if (compress(reinterpret_cast<Bytef*>(result.data()), &size, reinterpret_cast<const Bytef*>(module.bytes.data()),
                 static_cast<uLong>(module.bytes.size())) != Z_OK) {
        throw std::length_error("a module cannot be compressed");
    }
    result.resize(size);
    module.originalSize = module.bytes.size();
    module.bytes = std::move(result);
    return module;
}

Section serverInitiate(std::uint32_t transactionId, const Place& gateway) {
    constexpr std::uint16_t kServerInitiate = 0x1006;
    const std::string info = reference(kServiceGateway, gateway) + be(0, 4);
    return messageSection(kControlTableId, static_cast<std::uint16_t>(transactionId & 0xFFFFU), {}, kServerInitiate,
                          transactionId, std::string(20, '\xFF') + be(0, 2) + withLength(info, 2));
}

Section infoIndication(const List& list, const std::vector<Module>& modules) {
    constexpr std::uint16_t kInfoIndication = 0x1002;
    std::string entries = be(modules.size(), 2);
    for (const Module& module : modules) {
        entries += moduleEntry(module, list.associationTag);
    }
    return messageSection(
        kControlTableId, static_cast<std::uint16_t>(list.transactionId & 0xFFFFU), {}, kInfoIndication,
        list.transactionId,
        be(list.carousel, 4) + be(list.blockSize, 2) + std::string(10, '\0') + be(0, 2) + entries + be(0, 2));
}

/// section_number and last_section_number have 8 bits only (TR 101 202, clause 4.7.5).
Section dataBlock(const List& list, const Module& module, std::size_t number) {
    constexpr std::uint8_t kTableId = 0x3C;
    constexpr std::uint16_t kDownloadDataBlock = 0x1003;
    constexpr std::uint8_t kVersions = 32;
    const std::string payload = be(module.id, 2) + be(module.version, 1) + be(0xFF, 1) + be(number, 2) +
                                module.bytes.substr(number * list.blockSize, list.blockSize);
    const std::size_t last = blockCount(list, module) - 1;
    const std::size_t lastOfGroup = last >> 8U == number >> 8U ? last & 0xFFU : 0xFFU;
    const Numbers numbers = {static_cast<std::uint8_t>(module.version % kVersions),
                             static_cast<std::uint8_t>(number & 0xFFU), static_cast<std::uint8_t>(lastOfGroup)};
    return messageSection(kTableId, module.id, numbers, kDownloadDataBlock, list.carousel, payload);
}

std::size_t blockCount(const List& list, const Module& module) {
    return (module.bytes.size() + list.blockSize - 1) / list.blockSize;
}

}  // namespace tsmake::biop
