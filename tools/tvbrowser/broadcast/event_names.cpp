// Reads carousels.
#include "event_names.h"

#include <algorithm>

namespace tvbrowser {

void EventNames::read(const si::Pmt& newPmt) {
    pmt = newPmt;
    if (!carousels) {
        carousels.emplace(kMostBytes);
    }
    carousels->setPmt(*pmt);
    follow();
}

void EventNames::stop() {
    carousels.reset();
    follow();
}

void EventNames::follow() {
    const std::set<std::uint16_t> pids = carousels ? carousels->pids() : std::set<std::uint16_t>();
    for (auto each = open.begin(); each != open.end();) {
        if (pids.count(each->first) != 0) {
            ++each;
            continue;
        }
        for (const SectionFilters::Id id : each->second) {
            filters.close(id);
        }
        each = open.erase(each);
    }
    for (const std::uint16_t pid : pids) {
        if (open.count(pid) != 0) {
            continue;
        }
        for (const std::uint8_t table : {si::kDownloadControlTableId, si::kDownloadDataTableId}) {
            open[pid].push_back(filters.open(pid, SectionFilters::Pattern::table(table),
                                             SectionFilters::Repetitions::taken,
                                             [this, pid](si::Bytes section) { onSection(pid, section); }));
        }
    }
}

void EventNames::onSection(std::uint16_t pid, si::Bytes section) {
    using Kind = si::CarouselNews::Kind;
    if (!carousels || !si::crcIsRight(section)) {
        return;
    }
    const std::vector<si::ServiceCarousels::News> news = carousels->onSection(pid, section);
    follow();
    if (std::any_of(news.begin(), news.end(), [](const si::ServiceCarousels::News& each) {
            return each.news.kind == Kind::module || each.news.kind == Kind::tree || each.news.kind == Kind::leftOut;
        })) {
        change();
    }
}

EventNames::Answer EventNames::answerFrom(const Found& found, const std::string& name) {
    if (found.state == si::CarouselTree::State::awaited) {
        return {State::awaited};
    }
    if (found.state == si::CarouselTree::State::absent || found.object->kind != si::CarouselObject::Kind::streamEvent) {
        return {State::absent};
    }
    for (const si::CarouselObject::EventName& event : found.object->events) {
        if (event.name == name) {
            return {State::found, event.id, found.object->associationTags};
        }
    }
    return {State::absent};
}

EventNames::Answer EventNames::find(std::optional<std::uint8_t> componentTag, const std::string& path,
                                    const std::string& name) {
    Answer best;
    const auto isOf = [componentTag](const si::Pmt::Stream& stream, std::uint16_t pid) {
        return stream.pid == pid && si::componentTag(stream) == componentTag;
    };
    if (!carousels) {
        return best;
    }
    for (auto& [pid, carousel] : carousels->carousels()) {
        const std::uint16_t root = pid;
        const bool isMeant = !componentTag || std::any_of(pmt->streams.begin(), pmt->streams.end(),
                                                          [&](const auto& stream) { return isOf(stream, root); });
        if (!isMeant) {
            continue;
        }
        Answer answer = answerFrom(carousel.tree()->find(path), name);
        if (answer.state == State::found) {
            return answer;
        }
        best.state = answer.state == State::awaited ? State::awaited : best.state;
    }
    return best;
}

}  // namespace tvbrowser
