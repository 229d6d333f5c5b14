// Reads carousels.
#include "broadcast_carousels.h"

#include <algorithm>

namespace tvbrowser {

namespace {

constexpr std::uint16_t kPatPid = 0x00;
constexpr std::uint8_t kPatTable = 0x00;
constexpr std::uint8_t kPmtTable = 0x02;

}  // namespace

void BroadcastCarousels::read(const si::Pmt& newPmt) {
    pmt = newPmt;
    if (!carousels) {
        carousels.emplace(mostBytes);
    }
    tell(carousels->setPmt(pmt));
    follow();
}

void BroadcastCarousels::stop() {
    carousels.reset();
    seen.clear();
    pmtPids.clear();
    follow();
}

std::map<BroadcastCarousels::Table, BroadcastCarousels::Receive> BroadcastCarousels::wanted() const {
    std::map<Table, Receive> tables;
    if (!carousels) {
        return tables;
    }
    for (const std::uint16_t pid : carousels->pids()) {
        tables[{pid, si::kDownloadControlTableId}] = &BroadcastCarousels::onSection;
        tables[{pid, si::kDownloadDataTableId}] = &BroadcastCarousels::onSection;
    }
    for (const std::uint16_t service : carousels->otherServices()) {
        const auto known = pmtPids.find(service);
        if (known == pmtPids.end()) {
            tables[{kPatPid, kPatTable}] = &BroadcastCarousels::onPat;
        } else {
            tables[{known->second, kPmtTable}] = &BroadcastCarousels::onOtherPmt;
        }
    }
    return tables;
}

void BroadcastCarousels::follow() {
    const std::map<Table, Receive> tables = wanted();
    for (auto each = open.begin(); each != open.end();) {
        if (tables.count(each->first) == 0) {
            filters.close(each->second);
            each = open.erase(each);
        } else {
            ++each;
        }
    }
    for (const auto& [table, receive] : tables) {
        const auto [each, isNew] = open.try_emplace(table);
        if (isNew) {
            each->second = filters.open(
                table.pid, SectionFilters::Pattern::table(table.id), SectionFilters::Repetitions::taken,
                [this, pid = table.pid, take = receive](si::Bytes section) { (this->*take)(pid, section); });
        }
    }
}

void BroadcastCarousels::onPat(std::uint16_t, si::Bytes section) {
    std::string error;
    if (const std::optional<si::Pat> pat = si::parsePat(section, error)) {
        for (const si::Pat::Program& program : pat->programs) {
            pmtPids[program.serviceId] = program.pmtPid;
        }
        follow();
    }
}

void BroadcastCarousels::onOtherPmt(std::uint16_t, si::Bytes section) {
    std::string error;
    const std::optional<si::Pmt> other = si::parsePmt(section, error);
    if (carousels && other) {
        carousels->setOtherPmt(*other);
        follow();
    }
}

void BroadcastCarousels::onSection(std::uint16_t pid, si::Bytes section) {
    if (!carousels || !si::crcIsRight(section)) {
        return;
    }
    const std::vector<si::ServiceCarousels::News> news = carousels->onSection(pid, section);
    follow();
    tell(news);
    const bool mayChange = !news.empty() || section.data[0] == si::kDownloadControlTableId;
    if (mayChange && hasChanged()) {
        seen.clear();
        change();
    }
}

/// Whether a tree is another one than find() has seen.
bool BroadcastCarousels::hasChanged() {
    return std::any_of(seen.begin(), seen.end(), [this](const auto& each) {
        const auto carousel = carousels->carousels().find(each.first);
        return carousel == carousels->carousels().end() || carousel->second.tree() != each.second;
    });
}

/// A module that does not come whole is broken in a broadcast, or has lost a packet: both are of interest.
void BroadcastCarousels::tell(const std::vector<si::ServiceCarousels::News>& news) const {
    using Kind = si::CarouselNews::Kind;
    for (const si::ServiceCarousels::News& each : news) {
        const Kind kind = each.news.kind;
        if (log && (kind == Kind::warning || kind == Kind::dropped || kind == Kind::leftOut)) {
            log("carousel on PID " + std::to_string(each.pid) + ": " + each.news.text);
        }
    }
}

std::vector<BroadcastCarousels::Found> BroadcastCarousels::find(std::optional<std::uint8_t> componentTag,
                                                                const std::string& path) {
    std::vector<Found> found;
    if (!carousels) {
        return found;
    }
    for (auto& [pid, carousel] : carousels->carousels()) {
        const bool isMeant =
            !componentTag ||
            std::any_of(pmt.streams.begin(), pmt.streams.end(), [&, root = pid](const si::Pmt::Stream& stream) {
                return stream.pid == root && si::componentTag(stream) == componentTag;
            });
        if (isMeant) {
            seen[pid] = carousel.tree();
            found.push_back(seen[pid]->find(path));
        }
    }
    return found;
}

}  // namespace tvbrowser
