// The loops of a table: checks their lengths and walks the entries with the accessors of libbitstream. Does not check
// descriptors: a wrong descriptor must not hide the entries beside it, so the code that reads descriptors checks them.
#pragma once

#include <cstdint>
#include <vector>

#include "si/section.h"

namespace si {

constexpr std::size_t kCrcSize = 4;

/// The number of bytes in a loop, from its length field of 12 bits in two bytes.
inline std::size_t loopLength(const std::uint8_t* length) {
    return static_cast<std::size_t>((length[0] & 0x0FU) << 8U | length[1]);
}

/// Whether a section has its complete header, and the loops before its entries end within it. Checks table_id but not
/// CRC_32.
bool pmtFits(const std::vector<std::uint8_t>& section);
bool nitFits(const std::vector<std::uint8_t>& section);
bool sdtFits(const std::vector<std::uint8_t>& section);
bool eitFits(const std::vector<std::uint8_t>& section);

constexpr int kMostEntries = 256;

/// Takes all entries of a table's loop in order.
template <typename Get, typename Take>
void forEachEntry(Get get, Take take) {
    for (int index = 0; index < kMostEntries; ++index) {
        auto* const entry = get(static_cast<std::uint8_t>(index));
        if (entry == nullptr) {
            return;
        }
        take(entry);
    }
}

/// Takes all entries that consist of `header` bytes, the last two being a length, and a loop of descriptors. Stops at
/// an entry that reaches beyond the section, because the start of the next one is unknown, and returns the bytes from
/// there on.
template <typename Get, typename Take>
Bytes forEachEntryWithLoop(std::vector<std::uint8_t>& section, std::size_t header, Get get, Take take) {
    constexpr std::size_t kLength = 2;
    const std::uint8_t* const end = section.data() + section.size() - kCrcSize;
    for (int index = 0; index < kMostEntries; ++index) {
        std::uint8_t* const entry = get(section.data(), static_cast<std::uint8_t>(index));
        if (entry == nullptr) {
            break;
        }
        const auto left = static_cast<std::size_t>(end - entry);
        if (left < header || left - header < loopLength(entry + header - kLength)) {
            return {entry, left};
        }
        take(entry);
    }
    return {};
}

}  // namespace si
