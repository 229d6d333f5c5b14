// Channel: a service as its multiplex lists it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "si/tables.h"
#include "si/triplet.h"

namespace broadcast {

/// Most services of one transport stream that are followed, to limit memory and time. No real one has nearly as many.
constexpr std::size_t kMostServices = 1000;

struct Channel {
    std::optional<std::uint16_t> originalNetworkId;  ///< absent until an SDT, NIT or EIT gives it
    std::uint16_t transportStreamId = 0;
    std::uint16_t serviceId = 0;
    std::uint16_t pmtPid = 0;
    std::string name;  ///< UTF-8; empty until an SDT gives it

    /// The original_network_id, or si::kUnknownNetworkId.
    std::uint16_t networkId() const { return originalNetworkId.value_or(si::kUnknownNetworkId); }
    /// "onid:tsid:sid" in decimal.
    std::string triplet() const { return si::tripletText({networkId(), transportStreamId, serviceId}); }
};

}  // namespace broadcast
