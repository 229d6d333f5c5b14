// Following the AITs of a service.
#include "ait_table.h"

#include <algorithm>

#include "si/ait.h"

namespace broadcast {

namespace {

/// A limit on the memory that a service can use. Real services have one or two.
constexpr std::size_t kMostPids = 8;

}  // namespace

void AitTable::follow(const si::Pmt& pmt) {
    const bool wasSignalled = isSignalled();
    isListed = si::listsHbbTvAit(pmt);
    std::vector<std::uint16_t> newPids = si::hbbtvAitPids(pmt);
    newPids.resize(std::min(newPids.size(), kMostPids));
    if (newPids != pids) {
        pids = std::move(newPids);
        subscribe();
    }
    if (wasSignalled != isSignalled()) {
        listener.onSignalled(!wasSignalled);
    }
}

/// The AIT on another PID is another table, so the stored sections are dropped.
void AitTable::subscribe() {
    subscriptions.clear();
    tables.clear();
    for (const std::uint16_t pid : pids) {
        subscriptions.emplace_back(demux, pid, [this, pid](si::Bytes section) { onSection(pid, section); });
    }
}

/// test_application_flag is the top bit of the compared field, so AITs of test applications, which viewers must not
/// get, do not match.
void AitTable::onSection(std::uint16_t pid, si::Bytes section) {
    constexpr std::uint8_t kTableId = 0x74;
    if (!isCurrent(section, kTableId) || si::tableIdExtension(section) != si::kApplicationTypeHbbTv ||
        si::sectionNumber(section) >= kMostSections) {
        return;
    }
    const bool wasSignalled = isSignalled();
    const Update update = tables[pid].file(section);
    if (!wasSignalled) {
        listener.onSignalled(true);
    }
    if (update != Update::none) {
        listener.onSection(section, update);
    }
}

std::vector<Section> AitTable::sections() const {
    std::vector<Section> list;
    for (const auto& table : tables) {
        append(table.second.sections(), list);
    }
    return list;
}

}  // namespace broadcast
