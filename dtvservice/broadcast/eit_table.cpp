// Stores EIT sections.
#include "eit_table.h"

#include <algorithm>

namespace broadcast {

bool EitTable::isEit(si::Bytes section) {
    constexpr std::uint8_t kPresentFollowingActual = 0x4E;
    constexpr std::size_t kShortest = 18;
    return isCurrent(section, kPresentFollowingActual) && section.size >= kShortest;
}

std::uint16_t EitTable::networkId(si::Bytes section) {
    constexpr std::size_t kNetworkAt = 10;
    return wordAt(section, kNetworkAt);
}

Update EitTable::file(si::Bytes section) {
    const std::uint8_t number = si::sectionNumber(section);
    Section bytes = copyOf(section);
    const auto known = sections_.find(number);
    if (known != sections_.end() && known->second == bytes) {
        return Update::none;
    }
    const Update update = known == sections_.end() ? Update::first : Update::changed;
    sections_[number] = std::move(bytes);
    const std::uint8_t last = std::max(number, si::lastSectionNumber(section));
    sections_.erase(sections_.upper_bound(last), sections_.end());
    return update;
}

}  // namespace broadcast
