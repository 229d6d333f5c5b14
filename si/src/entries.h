// Walking the entries of a table with the accessors of libbitstream.
#pragma once

#include <cstdint>

namespace si {

/// Takes the entries of a table's loop, by number, until there are no more.
template <typename Get, typename Take>
void forEachEntry(Get get, Take take) {
    constexpr int kMostEntries = 256;
    for (int index = 0; index < kMostEntries; ++index) {
        auto* const entry = get(static_cast<std::uint8_t>(index));
        if (entry == nullptr) {
            return;
        }
        take(entry);
    }
}

}  // namespace si
