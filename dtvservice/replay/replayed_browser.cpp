// A cursor for each lane.
#include "replayed_browser.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace dtvservice {

ReplayedBrowser::ReplayedBrowser(const RecordedBrowser& newRecorded, std::size_t newRound, Pace pace,
                                 Browsers& browsers, BusTap& tap, Browser browser)
    : recorded(newRecorded), stage(browsers, tap, browser), round(newRound) {
    for (Lane& lane : lanesOf(recorded)) {
        cursors.emplace_back(std::move(lane), pace, made, stage, Time::clock::now());
    }
}

Cursor::Found ReplayedBrowser::take(const message_fields::Message& command, const Cursor::Values& values) {
    for (Cursor& cursor : cursors) {
        if (const Cursor::Found found = cursor.take(command, values); found != Cursor::Found::none) {
            return found;
        }
    }
    return Cursor::Found::none;
}

std::optional<ReplayedBrowser::Time> ReplayedBrowser::run(Time now, std::size_t barrier) {
    std::optional<Time> next;
    for (Cursor& cursor : cursors) {
        const std::optional<Time> again = cursor.run(now, barrier);
        next = again && next ? std::min(*again, *next) : again ? again : next;
    }
    return next;
}

bool ReplayedBrowser::isBeside(const ReplayedBrowser& other) const {
    return &recorded != &other.recorded && round == other.round && !recorded.steps.empty() &&
           !other.recorded.steps.empty() && recorded.steps.front().record < other.recorded.steps.back().record &&
           other.recorded.steps.front().record < recorded.steps.back().record;
}

std::size_t ReplayedBrowser::done() const {
    return std::accumulate(cursors.begin(), cursors.end(), std::size_t{0},
                           [](std::size_t sum, const Cursor& cursor) { return sum + cursor.done(); });
}

std::size_t ReplayedBrowser::all() const {
    return std::accumulate(cursors.begin(), cursors.end(), std::size_t{0},
                           [](std::size_t sum, const Cursor& cursor) { return sum + cursor.all(); });
}

}  // namespace dtvservice
