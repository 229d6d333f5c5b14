// Reads stream event descriptors.
#include "si/stream_event.h"

#include "cursor.h"

namespace si {

namespace {

constexpr std::uint8_t kStreamEventDescriptor = 0x1A;
constexpr std::size_t kHeader = 8;
constexpr std::size_t kCrc = 4;

}  // namespace

std::vector<StreamEvent> streamEvents(Bytes section) {
    std::vector<StreamEvent> events;
    if (section.size < kHeader + kCrc || section.data[0] != kStreamDescriptorTableId) {
        return events;
    }
    Descriptors descriptors;
    readDescriptors({section.data + kHeader, section.size - kHeader - kCrc}, descriptors);
    for (const Descriptor& descriptor : descriptors) {
        if (descriptor.tag != kStreamEventDescriptor) {
            continue;
        }
        constexpr std::uint64_t kNptMask = 0x1FFFFFFFFULL;
        Cursor cursor(descriptor.bytes);
        StreamEvent event;
        event.id = static_cast<std::uint16_t>(cursor.number(2));
        event.npt = cursor.number(8) & kNptMask;
        const Bytes data = cursor.rest();
        if (cursor.good()) {
            event.data.assign(data.data, data.data + data.size);
            events.push_back(std::move(event));
        }
    }
    return events;
}

}  // namespace si
