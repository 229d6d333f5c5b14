// Stores sections by version and number.
#include "sub_table.h"

namespace broadcast {

Update store(Sections& sections, si::Bytes section) {
    Section bytes = copyOf(section);
    const auto known = sections.find(si::sectionNumber(section));
    if (known == sections.end()) {
        sections.emplace(si::sectionNumber(section), std::move(bytes));
        return Update::first;
    }
    if (known->second == bytes) {
        return Update::none;
    }
    known->second = std::move(bytes);
    return Update::changed;
}

Update SubTable::file(si::Bytes section) {
    const std::uint8_t newVersion = si::sectionVersion(section);
    if (version != newVersion) {
        changed = version.has_value();
        version = newVersion;
        sections_.clear();
    }
    const Update update = store(sections_, section);
    if (update == Update::none) {
        return Update::none;
    }
    changed = changed || update == Update::changed;
    return changed ? Update::changed : Update::first;
}

bool SubTable::isWhole(si::Bytes latest) const {
    return sections_.size() == si::lastSectionNumber(latest) + std::size_t{1};
}

bool isCurrent(si::Bytes section, std::uint8_t tableId) {
    constexpr std::size_t kLongHeader = 8;
    constexpr std::uint8_t kSectionSyntaxIndicator = 0x80;
    constexpr std::uint8_t kCurrentNextIndicator = 0x01;
    return section.size > kLongHeader && section.data[0] == tableId &&
           (section.data[1] & kSectionSyntaxIndicator) != 0 && (section.data[5] & kCurrentNextIndicator) != 0;
}

std::uint16_t wordAt(si::Bytes section, std::size_t at) {
    return static_cast<std::uint16_t>(section.data[at] << 8U | section.data[at + 1]);
}

Section copyOf(si::Bytes section) {
    return {section.data, section.data + section.size};
}

void append(const Sections& sections, std::vector<Section>& list) {
    for (const auto& entry : sections) {
        list.push_back(entry.second);
    }
}

}  // namespace broadcast
