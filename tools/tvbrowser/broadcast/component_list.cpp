// Combines reports and PMT.
#include "component_list.h"

#include <algorithm>

namespace tvbrowser {

namespace {

constexpr std::uint16_t kNoTag = 0xFFFF;

/// Three letters, the first in bits 16 to 23; what is no ASCII letter or digit cannot be a code.
std::string languageText(std::uint32_t code) {
    constexpr unsigned int kByte = 8;
    std::string text;
    for (const unsigned int shift : {2 * kByte, kByte, 0U}) {
        const auto letter = static_cast<unsigned char>(code >> shift & 0xFFU);
        const bool isPart =
            (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || (letter >= '0' && letter <= '9');
        if (!isPart) {
            return "";
        }
        text += static_cast<char>(letter);
    }
    return text;
}

}  // namespace

void ComponentList::clear() {
    *this = ComponentList();
}

void ComponentList::setPmt(const si::Pmt& pmt) {
    inPmt = si::components(pmt, {});
    std::set<std::uint32_t> pids;
    for (const si::Pmt::Stream& stream : pmt.streams) {
        pids.insert(stream.pid);
    }
    for (auto report = reports.begin(); report != reports.end();) {
        const bool isHere = pids.count(report->second.pid) != 0 && report->first < inPmt.size();
        report = isHere ? std::next(report) : reports.erase(report);
    }
}

void ComponentList::add(const ComponentReport& report) {
    if (report.type >= kTypes) {
        return;
    }
    reports[report.index] = report;
    if (report.isPresented) {
        // The event that says so follows; select() is to find it new.
        return;
    }
    std::optional<Place>& place = selected[report.type];
    if (place && place->index == report.index) {
        place.reset();
    }
}

bool ComponentList::select(std::uint32_t type, std::uint32_t index, std::uint16_t pid) {
    constexpr std::uint32_t kNoIndex = 0xFFFFFFFF;
    if (type >= kTypes) {
        return false;
    }
    const std::optional<Place> place = index == kNoIndex ? std::nullopt : std::optional(Place{index, pid});
    for (auto& [number, report] : reports) {
        if (report.type == type) {
            report.isPresented = place && number == place->index;
        }
    }
    const bool isNew = !(place == selected[type]);
    selected[type] = place;
    return isNew;
}

json ComponentList::valueOf(const ComponentReport& report) const {
    const auto known = std::find_if(inPmt.begin(), inPmt.end(), [&report](const si::Component& component) {
        return component.index == report.index && component.pid == report.pid;
    });
    const bool isKnown = known != inPmt.end();
    return {{"index", report.index},
            {"type", report.type},
            {"pid", report.pid},
            {"encoding", report.encoding},
            {"tag", report.tag == kNoTag ? json() : json(report.tag)},
            {"language", languageText(report.language)},
            {"aspectRatio", report.aspectRatio},
            {"audioChannels", report.audioChannels},
            {"encrypted", report.isScrambled},
            {"audioDescription", isKnown && known->audioDescription},
            {"hearingImpaired", isKnown && known->hearingImpaired}};
}

json ComponentList::value() const {
    json list = json::array();
    for (const auto& [index, report] : reports) {
        list.push_back(valueOf(report));
        list.back()["active"] = report.isPresented;
    }
    return list;
}

std::vector<std::uint32_t> ComponentList::news() {
    std::map<std::uint32_t, json> now;
    for (const auto& [index, report] : reports) {
        now[report.type].push_back(valueOf(report));
    }
    std::vector<std::uint32_t> types;
    for (std::uint32_t type = 0; type < kTypes; ++type) {
        if (now[type] != told[type]) {
            types.push_back(type);
        }
    }
    told = std::move(now);
    return types;
}

}  // namespace tvbrowser
