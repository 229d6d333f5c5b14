// Bit rates as people write them.
// Threads: any.
// Blocks:  never.
// Fails:   parseBitRate() returns nothing for any other text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace dtvservice {

constexpr std::uint64_t kLowestBitRate = 1000;
constexpr std::uint64_t kHighestBitRate = 500000000;

/// A number of bit/s, k for a thousand, M for a million behind it: "5000000", "500k", "4.5M". Nothing for an exponent,
/// or if it is not between the two limits.
std::optional<std::uint64_t> parseBitRate(const std::string& text);

/// For example "4.98 Mbit/s".
std::string shownBitRate(std::uint64_t bitRate);

}  // namespace dtvservice
