// Times of service information (EN 300 468, Annex C and clause 5.2.4).
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>

namespace si {

inline std::uint32_t fromBcd(std::uint8_t byte) {
    return (byte >> 4U) * 10U + (byte & 0x0FU);
}

/// start_time: 16 bits of Modified Julian Date, then six BCD digits of UTC (EN 300 468, Annex C).
inline std::optional<std::time_t> startTime(const std::uint8_t* field) {
    constexpr std::uint8_t kUndefinedTime = 0xFF;
    constexpr std::time_t kEpochMjd = 40587;
    constexpr std::time_t kDay = 86400;
    bool defined = false;
    for (int index = 0; index < 5; ++index) {
        defined = defined || field[index] != kUndefinedTime;
    }
    if (!defined) {
        return std::nullopt;
    }
    const std::time_t mjd = (field[0] << 8) | field[1];
    return (mjd - kEpochMjd) * kDay +
           static_cast<std::time_t>(fromBcd(field[2]) * 3600U + fromBcd(field[3]) * 60U + fromBcd(field[4]));
}

}  // namespace si
