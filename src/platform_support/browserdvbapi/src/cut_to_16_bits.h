// cutTo16Bits(): converts an identifier to the 16 bits that listeners and clients take.
#pragma once

#include <cstdint>

namespace velmora::dvbservice {

/// The lower 16 bits: an unknown identifier, -1, becomes 65535.
constexpr std::uint16_t cutTo16Bits(int identifier) {
    return static_cast<std::uint16_t>(identifier);
}

}  // namespace velmora::dvbservice
