// The objects of object carousels: directories, files, streams and stream events in modules, and the references that
// lead to them (BIOP: ISO/IEC 13818-6, clause 11.3; TR 101 202, clause 4.7; TS 102 809, Annex B.2).
// Threads: any.
// Blocks:  never.
// Fails:   never; stops at the first object that does not fit, and leaves out references that lead nowhere.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "si/section.h"

namespace si {

/// A carousel of another service, to which an entry may lead (LiteOptions profile).
struct ServiceLocation {
    std::uint32_t carouselId = 0;
    std::uint16_t transportStreamId = 0;
    std::uint16_t originalNetworkId = 0;
    std::uint16_t serviceId = 0;
};

/// Where an object is (BIOP profile).
struct ObjectReference {
    std::uint32_t carouselId = 0;
    std::uint16_t moduleId = 0;
    std::string key;
    /// The stream that carries the DownloadInfoIndication with the module, and that message's transaction_id.
    struct Delivery {
        std::uint16_t associationTag = 0;
        std::uint32_t transactionId = 0;
    };
    std::optional<Delivery> delivery = std::nullopt;
    std::optional<ServiceLocation> elsewhere = std::nullopt;  ///< then carousel, module and key are none

    /// Whether both lead to the same object, whatever the delivery.
    bool operator==(const ObjectReference& other) const {
        return carouselId == other.carouselId && moduleId == other.moduleId && key == other.key;
    }
};

struct CarouselObject {
    enum class Kind { directory, file, stream, streamEvent, other };
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
    std::vector<std::uint16_t> associationTags;  ///< of a stream's programmes, or of the streams that carry its events
    Bytes content;                               ///< of a file; within the module
    std::string contentType;                     ///< of a file, if its broadcaster says it
};

/// The objects of an uncompressed module, and the memory that they take, about; no value if that is more than
/// `mostBytes`.
std::optional<std::vector<CarouselObject>> carouselObjects(Bytes module, std::size_t mostBytes, std::size_t& cost);
/// Calls `take` for each directory and stream event object of the module. Directories have only the entries that lead
/// to more of these in the same carousel.
void eventObjects(Bytes module, const std::function<void(CarouselObject)>& take);

/// The memory that an object takes, at least.
std::size_t costOf(const CarouselObject& object);

}  // namespace si
