// Reads delivery systems and service lists.
#include "si/delivery_system.h"

#include "cursor.h"

namespace si {

namespace {

constexpr std::uint8_t kServiceListDescriptor = 0x41;
constexpr std::uint8_t kSatelliteDescriptor = 0x43;
constexpr std::uint8_t kCableDescriptor = 0x44;
constexpr std::uint8_t kTerrestrialDescriptor = 0x5A;
constexpr std::uint8_t kExtensionDescriptor = 0x7F;
constexpr std::uint8_t kT2Extension = 0x04;
constexpr std::uint8_t kC2Extension = 0x0D;

/// The modulation_system bit tells DVB-S2 from DVB-S.
IdType satelliteType(const std::vector<std::uint8_t>& bytes) {
    constexpr std::size_t kModulationAt = 6;
    constexpr std::uint8_t kModulationSystem = 0x04;
    return bytes.size() > kModulationAt && (bytes[kModulationAt] & kModulationSystem) != 0 ? IdType::dvbS2
                                                                                           : IdType::dvbS;
}

IdType typeOf(const Descriptor& descriptor) {
    switch (descriptor.tag) {
        case kSatelliteDescriptor:
            return satelliteType(descriptor.bytes);
        case kCableDescriptor:
            return IdType::dvbC;
        case kTerrestrialDescriptor:
            return IdType::dvbT;
        case kExtensionDescriptor:
            break;
        default:
            return IdType::none;
    }
    const std::uint8_t extension = descriptor.bytes.empty() ? std::uint8_t{0} : descriptor.bytes[0];
    if (extension == kT2Extension) {
        return IdType::dvbT2;
    }
    return extension == kC2Extension ? IdType::dvbC2 : IdType::none;
}

}  // namespace

DeliverySystem deliverySystem(const Descriptors& transportStream) {
    for (const Descriptor& descriptor : transportStream) {
        const IdType type = typeOf(descriptor);
        if (type != IdType::none) {
            std::string bytes = {static_cast<char>(descriptor.tag), static_cast<char>(descriptor.bytes.size())};
            bytes.append(descriptor.bytes.begin(), descriptor.bytes.end());
            return {type, std::move(bytes)};
        }
    }
    return {};
}

std::vector<ListedService> serviceList(const Descriptors& transportStream) {
    constexpr std::size_t kEntry = 3;
    std::vector<ListedService> services;
    for (const Descriptor& descriptor : transportStream) {
        Cursor cursor(descriptor.bytes);
        while (descriptor.tag == kServiceListDescriptor && cursor.left() >= kEntry) {
            const auto id = static_cast<std::uint16_t>(cursor.number(2));
            services.push_back({id, static_cast<std::uint8_t>(cursor.number(1))});
        }
    }
    return services;
}

}  // namespace si
