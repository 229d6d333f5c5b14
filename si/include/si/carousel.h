// The parts of object carousels that stream events need: download messages, and the directories and stream event
// objects in modules (ISO/IEC 13818-6, clauses 7.3 and 11.3; TS 102 809, Annex B.2).
// Threads: any.
// Blocks:  never.
// Fails:   no value for another kind of message or malformed data.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "si/section.h"

namespace si {

constexpr std::uint8_t kDownloadControlTableId = 0x3B;
constexpr std::uint8_t kDownloadDataTableId = 0x3C;

/// The location of an object (BIOP::ObjectLocation).
struct ObjectReference {
    std::uint32_t carouselId = 0;
    std::uint16_t moduleId = 0;
    std::string key;

    bool operator==(const ObjectReference& other) const {
        return carouselId == other.carouselId && moduleId == other.moduleId && key == other.key;
    }
};

/// A DownloadInfoIndication. The downloadId of an object carousel is its carousel's identifier.
struct DownloadInfo {
    struct Module {
        std::uint16_t id = 0;
        std::uint32_t size = 0;  ///< as broadcast, which may be compressed
        std::uint8_t version = 0;
        std::optional<std::uint32_t> originalSize;  ///< uncompressed size; only for a compressed module
    };
    std::uint32_t downloadId = 0;
    std::uint16_t blockSize = 0;
    std::vector<Module> modules;
};

/// A DownloadDataBlock.
struct DownloadBlock {
    std::uint32_t downloadId = 0;
    std::uint16_t moduleId = 0;
    std::uint8_t moduleVersion = 0;
    std::uint16_t number = 0;
    Bytes data;  ///< within the section
};

struct CarouselObject {
    enum class Kind { directory, streamEvent, other };
    struct Entry {
        std::string name;
        Kind kind = Kind::other;
        ObjectReference object;
    };
    struct EventName {
        std::string name;
        std::uint16_t id = 0;
    };
    std::string key;
    Kind kind = Kind::other;
    std::vector<Entry> entries;                  ///< of a directory or the service gateway
    std::vector<EventName> events;               ///< of a stream event object
    std::vector<std::uint16_t> associationTags;  ///< of the streams that carry its events
};

/// The service gateway that a DownloadServerInitiate names.
std::optional<ObjectReference> serviceGateway(Bytes section);
std::optional<DownloadInfo> downloadInfo(Bytes section);
std::optional<DownloadBlock> downloadBlock(Bytes section);
/// The directories and stream event objects of an uncompressed module. Stops at the first object that does not fit.
std::vector<CarouselObject> carouselObjects(Bytes module);

}  // namespace si
