// Times of service information (EN 300 468, Annex C and clause 5.2.4).
#pragma once

#include <cstdint>
#include <optional>

#include "si/calendar.h"

namespace si {

inline std::uint32_t fromBcd(std::uint8_t byte) {
    return (byte >> 4U) * 10U + (byte & 0x0FU);
}

/// start_time: 16 bits of Modified Julian Date, then six BCD digits of UTC (EN 300 468, Annex C).
inline std::optional<UtcSeconds> startTime(const std::uint8_t* field) {
    constexpr std::uint8_t kUndefinedTime = 0xFF;
    bool defined = false;
    for (int index = 0; index < 5; ++index) {
        defined = defined || field[index] != kUndefinedTime;
    }
    if (!defined) {
        return std::nullopt;
    }
    const std::int64_t mjd = (field[0] << 8) | field[1];
    const std::uint32_t second = fromBcd(field[2]) * 3600U + fromBcd(field[3]) * 60U + fromBcd(field[4]);
    return (mjd - kEpochMjd) * kSecondsOfDay + second;
}

}  // namespace si
