// The loops of a table: whether its lengths fit, and walking its entries with the accessors of libbitstream. A
// descriptor whose length is wrong is no reason to lose what is beside it, so that descriptors are looked at by who
// reads them.
#pragma once

#include <cstdint>
#include <vector>

#include "si/section.h"

namespace si {

constexpr std::size_t kCrcSize = 4;

/// The number of bytes in the loop behind such a length of 12 bits in two bytes.
inline std::size_t loopLength(const std::uint8_t* length) {
    return static_cast<std::size_t>((length[0] & 0x0FU) << 8U | length[1]);
}

/// Whether a section has all of its header, and whether the loops before its entries end within it. Its table_id is
/// looked at, its CRC_32 is not.
bool catFits(const std::vector<std::uint8_t>& section);
bool pmtFits(const std::vector<std::uint8_t>& section);
bool nitFits(const std::vector<std::uint8_t>& section);
bool sdtFits(const std::vector<std::uint8_t>& section);
bool eitFits(const std::vector<std::uint8_t>& section);

constexpr int kMostEntries = 256;

/// Takes the entries of a table's loop, by number, until there are no more.
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

/// Takes the entries that have so many bytes and then a loop of descriptors, whose length ends those bytes. Gives what
/// is left from the first on that reaches beyond the section: where the next ones begin is not known then.
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
