// Keeps the sections of the schedule, and lists their events.
#include "schedule.h"

#include <algorithm>
#include <set>

namespace tvbrowser {

namespace {

constexpr std::uint8_t kFirstTable = 0x50;
constexpr std::uint8_t kLastTable = 0x6F;
constexpr unsigned int kSegment = 8;  // sections

/// Where an event stands in the list.
struct Listed {
    si::Triplet channel;
    const si::Eit::Event* event;
};

std::tuple<std::uint16_t, std::uint16_t, std::uint16_t> keyOf(const si::Triplet& triplet) {
    return {triplet.onid, triplet.tsid, triplet.sid};
}

bool isEarlier(const Listed& one, const Listed& other) {
    return one.event->start < other.event->start;
}

}  // namespace

void Schedule::add(si::Bytes section) {
    std::string error;
    std::optional<si::Eit> eit = si::parseEit(section, error);
    if (!eit || eit->tableId < kFirstTable || eit->tableId > kLastTable) {
        return;
    }
    const auto place = tables.try_emplace({keyOf(tripletOf(*eit)), eit->tableId}).first;
    SubTable& table = place->second;
    forgetOld(table, *eit);
    // Only now, because a section at the limit may take the place of what it replaces.
    if (held + eit->events.size() < kMost) {
        held += eit->events.size() + 1;
        isChanged = isChanged || !eit->events.empty();
        table[eit->sectionNumber] = std::move(*eit);
    }
    if (table.empty()) {
        tables.erase(place);
    }
}

/// The section of the same number, and the sections of other versions that the new version does not have: those above
/// its last number, and in its segment above the segment's last number.
void Schedule::forgetOld(SubTable& table, const si::Eit& newest) {
    const unsigned int segment = newest.sectionNumber / kSegment;
    for (auto each = table.begin(); each != table.end();) {
        const si::Eit& old = each->second;
        const bool isOfSegment = old.sectionNumber / kSegment == segment;
        const bool isGone =
            old.version != newest.version && (old.sectionNumber > newest.lastSectionNumber ||
                                              (isOfSegment && old.sectionNumber > newest.segmentLastSectionNumber));
        if (isGone || old.sectionNumber == newest.sectionNumber) {
            held -= old.events.size() + 1;
            isChanged = isChanged || !old.events.empty();
            each = table.erase(each);
        } else {
            ++each;
        }
    }
}

json Schedule::value(const std::optional<si::Triplet>& service, const std::vector<si::Eit>& present) const {
    std::vector<Listed> list;
    std::set<std::pair<ServiceKey, std::uint16_t>> taken;
    const auto take = [&](const si::Eit& eit) {
        const si::Triplet channel = tripletOf(eit);
        for (const si::Eit::Event& event : eit.events) {
            if ((!service || *service == channel) && taken.emplace(keyOf(channel), event.eventId).second) {
                list.push_back({channel, &event});
            }
        }
    };
    std::for_each(present.begin(), present.end(), take);
    for (const auto& [key, table] : tables) {
        for (const auto& [number, eit] : table) {
            take(eit);
        }
    }
    std::stable_sort(list.begin(), list.end(), isEarlier);
    json programmes = json::array();
    for (const Listed& each : list) {
        programmes.push_back(programmeValue(each.channel, *each.event));
    }
    return programmes;
}

}  // namespace tvbrowser
