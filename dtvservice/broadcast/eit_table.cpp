// Stores EIT sections.
#include "eit_table.h"

#include <algorithm>

namespace broadcast {

bool EitTable::isEit(si::Bytes section) {
    constexpr std::uint8_t kPresentFollowingActual = 0x4E;
    constexpr std::size_t kShortest = 18;
    return isCurrent(section, kPresentFollowingActual) && section.size >= kShortest &&
           si::sectionNumber(section) < kMostSections;
}

std::uint16_t EitTable::networkId(si::Bytes section) {
    constexpr std::size_t kNetworkAt = 10;
    return wordAt(section, kNetworkAt);
}

Update EitTable::file(si::Bytes section) {
    const Update update = store(sections_, section);
    if (update == Update::none) {
        return Update::none;
    }
    const std::uint8_t last = std::max(si::sectionNumber(section), si::lastSectionNumber(section));
    sections_.erase(sections_.upper_bound(last), sections_.end());
    return update;
}

}  // namespace broadcast
