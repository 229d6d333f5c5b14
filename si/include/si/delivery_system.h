// What a transport stream's descriptors in the NIT say (EN 300 468, clauses 6.2.13, 6.2.35 and 6.4.6).
// Threads: any.
// Blocks:  never.
// Fails:   never; what does not fit is left out.
#pragma once

#include <string>
#include <vector>

#include "si/section.h"

namespace si {

/// The numbers that OIPF DAE, clause 7.13.11, gives to the ways in which a channel comes.
enum class IdType : unsigned int {
    none = 0,
    dvbC = 10,
    dvbS = 11,
    dvbT = 12,
    dvbC2 = 14,
    dvbS2 = 15,
    dvbT2 = 16,
};

struct DeliverySystem {
    IdType idType = IdType::none;
    std::string descriptor;  ///< the first delivery system descriptor, tag and length included; empty if there is none
};
DeliverySystem deliverySystem(const Descriptors& transportStream);

struct ListedService {
    std::uint16_t serviceId = 0;
    std::uint8_t serviceType = 0;
};
/// The services that the stream's service list descriptors name.
std::vector<ListedService> serviceList(const Descriptors& transportStream);

}  // namespace si
