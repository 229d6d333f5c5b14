// Keeps sections of the EIT.
#include "eit_sections.h"

#include <algorithm>

#include "si/tables.h"
#include "sub_table.h"

namespace dtvservice {

namespace {

constexpr std::uint8_t kPresentActual = 0x4E;
constexpr std::uint8_t kFirstSchedule = 0x50;
constexpr std::uint8_t kLastSchedule = 0x6F;
constexpr std::size_t kTransportStreamAt = 8;
constexpr std::size_t kNetworkAt = 10;
constexpr std::size_t kLastOfSegmentAt = 12;
constexpr std::size_t kLastTableAt = 13;
constexpr std::size_t kShortest = 18;  // without events
constexpr unsigned int kSegment = 8;   // sections

bool isCurrentEit(si::Bytes section) {
    return section.size >= kShortest && section.data[0] >= kPresentActual && section.data[0] <= kLastSchedule &&
           (section.data[5] & 1U) != 0;
}

bool isSame(const std::vector<std::uint8_t>& one, si::Bytes other) {
    return one.size() == other.size && std::equal(one.begin(), one.end(), other.data);
}

}  // namespace

bool EitSections::add(std::size_t input, si::Bytes section) {
    if (!isCurrentEit(section)) {
        return true;
    }
    const Key key = {section.data[0], input, broadcast::wordAt(section, kNetworkAt),
                     broadcast::wordAt(section, kTransportStreamAt), si::tableIdExtension(section)};
    const auto table = tables.find(key);
    if (table != tables.end()) {
        const auto known = table->second.find(si::sectionNumber(section));
        if (known != table->second.end() && isSame(*known->second.section, section)) {
            return true;
        }
    }
    std::string error;
    const std::optional<si::Eit> eit = si::parseEit(section, error);
    if (!eit) {
        return true;
    }
    forgetOld(key, section);
    if (bytes + section.size > kMostBytes || events + eit->events.size() > kMostEvents) {
        return false;
    }
    bytes += section.size;
    events += eit->events.size();
    tables[key][eit->sectionNumber] = {
        std::make_shared<const std::vector<std::uint8_t>>(section.data, section.data + section.size),
        eit->events.size()};
    return true;
}

/// Forgets the section with the number of the newest one, and those that its table has no more: above the last number,
/// in its segment above the segment's last number, and in tables above the last table_id.
void EitSections::forgetOld(Key key, si::Bytes newest) {
    const unsigned int number = si::sectionNumber(newest);
    const unsigned int last = std::max<unsigned int>(si::lastSectionNumber(newest), number);
    const unsigned int lastOfSegment = std::max<unsigned int>(newest.data[kLastOfSegmentAt], number);
    const bool isSchedule = newest.data[0] >= kFirstSchedule;
    SubTable& table = tables[key];
    for (auto entry = table.begin(); entry != table.end();) {
        const auto each = entry++;
        const bool isBehindSegment =
            isSchedule && each->first / kSegment == number / kSegment && each->first > lastOfSegment;
        if (each->first == number || each->first > last || isBehindSegment) {
            forget(table, each);
        }
    }
    constexpr unsigned int kTablesOfAKind = 0x0F;
    const unsigned int lastTable = std::max(newest.data[kLastTableAt], newest.data[0]);
    for (unsigned int id = lastTable + 1; isSchedule && id <= (newest.data[0] | kTablesOfAKind); ++id) {
        std::get<0>(key) = static_cast<std::uint8_t>(id);
        const auto over = tables.find(key);
        while (over != tables.end() && !over->second.empty()) {
            forget(over->second, over->second.begin());
        }
    }
}

void EitSections::forget(SubTable& table, SubTable::iterator entry) {
    bytes -= entry->second.section->size();
    events -= entry->second.events;
    table.erase(entry);
}

std::vector<EitSections::Kept> EitSections::all() const {
    std::vector<Kept> list;
    for (const auto& [key, table] : tables) {
        for (const auto& entry : table) {
            list.push_back({std::get<1>(key), entry.second.section});
        }
    }
    return list;
}

}  // namespace dtvservice
