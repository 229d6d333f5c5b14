// Sections whose length and check bytes are right, whatever else is in them.
#pragma once

#include <cstdint>
#include <vector>

#include "si/section.h"

namespace fuzz {

/// Puts section_length and CRC_32 right where the section has them.
inline void putRight(std::vector<std::uint8_t>& section) {
    constexpr std::size_t kCrcSize = 4;
    constexpr std::uint8_t kTot = 0x73;
    if (section.size() < si::kSectionHeaderSize + kCrcSize || section.size() > si::kLongestSection) {
        return;
    }
    const std::size_t length = section.size() - si::kSectionHeaderSize;
    section[1] = static_cast<std::uint8_t>((section[1] & 0xF0U) | length >> 8U);
    section[2] = static_cast<std::uint8_t>(length);
    if ((section[1] & 0x80U) != 0 || section[0] == kTot) {
        const std::size_t end = section.size() - kCrcSize;
        const std::uint32_t crc = si::crc32({section.data(), end});
        for (std::size_t index = 0; index < kCrcSize; ++index) {
            section[end + index] = static_cast<std::uint8_t>(crc >> (24U - 8U * index));
        }
    }
}

}  // namespace fuzz
