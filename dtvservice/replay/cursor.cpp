// Walks.
#include "cursor.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace dtvservice {

namespace {

constexpr std::array<std::string_view, 3> kWaitedFor = {"cmdFilterOpen", "cmdFilterClose", "cmdSetAudioSource"};

/// A pause of a recording that is longer is this long.
constexpr std::chrono::hours kLongestPause{24};
constexpr std::chrono::milliseconds kPauseOfAFullQueue{2};
// A browser that gets a whole recording at once would be cut off as one that does not read.
constexpr std::size_t kMostAtOnce = std::size_t{64} << 10U;
constexpr std::size_t kBytesOfAStep = 64;
constexpr std::chrono::milliseconds kBreak{5};
constexpr Cursor::Time kWhenACommandComes = Cursor::Time::max();

std::size_t sizeOf(const RecordedStep& step) {
    std::size_t size = kBytesOfAStep + step.bytes.size();
    for (const message_fields::FieldValue& value : step.values) {
        const auto* const text = std::get_if<std::string>(&value.value);
        size += text == nullptr ? 0 : text->size();
    }
    return size;
}

}  // namespace

bool isWaitedFor(const message_fields::Message& command) {
    return std::find(kWaitedFor.begin(), kWaitedFor.end(), command.name) != kWaitedFor.end();
}

Cursor::Cursor(Lane newLane, Pace newPace, MadeValues& newMade, Stage& newStage, Time now)
    : lane(std::move(newLane)), pace(newPace), made(newMade), stage(newStage), reached(now) {
    for (std::size_t index = 0; index < all(); ++index) {
        if (lane.steps[index]->kind == RecordedStep::Kind::command) {
            free.insert(free.end(), index);
        }
    }
}

/// The next command is the most likely one; then a browser that is slow is more likely than one that is far ahead.
Cursor::Found Cursor::take(const message_fields::Message& command, const Values& values) {
    const auto fits = [&](std::size_t index) {
        const RecordedStep& step = *lane.steps[index];
        return step.message == &command && made.fit(command, step.values, values);
    };
    const auto next = free.lower_bound(position);
    auto found = next;
    if (next == free.end() || !fits(*next)) {
        found = std::find_if(free.begin(), next, fits);
        found = found != next ? found : std::find_if(next, free.end(), fits);
    }
    if (found == free.end()) {
        return Found::none;
    }
    const std::size_t index = *found;
    const Found result = found == next ? Found::next : index < position ? Found::late : Found::early;
    made.bind(lane.steps[index]->values, values);
    free.erase(found);
    awaited += index >= position && isWaitedFor(command) ? 1 : 0;
    return result;
}

std::optional<Cursor::Time> Cursor::run(Time now, std::size_t barrier) {
    while (!isAtEnd()) {
        const RecordedStep& step = current();
        if (const std::optional<Time> later = runStep(step, now, barrier)) {
            return later == kWhenACommandComes ? std::nullopt : later;
        }
        sinceBreak += sizeOf(step);
        if (sinceBreak > kMostAtOnce) {
            sinceBreak = 0;
            return now + kBreak;
        }
    }
    return std::nullopt;
}

std::size_t Cursor::awaitedRecord() const {
    const auto next = free.lower_bound(position);
    return next == free.end() ? kNoRecord : lane.steps[*next]->record;
}

/// What a browser gets after a command may be due to it. What a filter gets is due to the broadcast's time.
bool Cursor::isBehind(const RecordedStep& step, std::size_t barrier) const {
    return !lane.isOfAFilter && awaited == 0 && step.record > barrier;
}

/// A clock that was set back makes no pause.
Cursor::Time Cursor::dueOf(const RecordedStep& step) const {
    if (hurries() || position == 0 || step.record < origin.record) {
        return reached;
    }
    const RecordedStep& before = *lane.steps[position - 1];
    const bool isFirstBehind = before.record < origin.record;
    const std::uint64_t start = isFirstBehind ? origin.recorded : before.time;
    const std::uint64_t most = std::chrono::nanoseconds(kLongestPause).count();
    const std::uint64_t distance = step.time > start ? std::min(step.time - start, most) : 0;
    return (isFirstBehind ? origin.live : reached) + std::chrono::nanoseconds(distance);
}

/// When to go on with the step; nothing if it is done.
std::optional<Cursor::Time> Cursor::runStep(const RecordedStep& step, Time now, std::size_t barrier) {
    if (step.kind == RecordedStep::Kind::command) {
        return runCommand(step, now);
    }
    if (isBehind(step, barrier)) {
        return kWhenACommandComes;
    }
    const Time due = dueOf(step);
    if (now < due) {
        return due;
    }
    switch (step.kind) {
        case RecordedStep::Kind::event:
            sendEvent(step);
            break;
        case RecordedStep::Kind::section:
            if (const std::optional<Time> later = runSection(step, now)) {
                return later;
            }
            break;
        case RecordedStep::Kind::end:
            stage.left();
            break;
        default:
            stage.seen(step, made.liveFilter(step.text));
    }
    pass(hurries() ? now : due);
    return std::nullopt;
}

std::optional<Cursor::Time> Cursor::runCommand(const RecordedStep& step, Time now) {
    if (free.count(position) == 0) {
        awaited -= isWaitedFor(*step.message) ? 1 : 0;
        pass(now);
        return std::nullopt;
    }
    if (lane.isOfAFilter) {
        return kWhenACommandComes;
    }
    const std::chrono::milliseconds wait =
        awaited != 0 ? std::min<std::chrono::milliseconds>(pace.wait, Pace::kFastWait) : pace.wait;
    const Time end = dueOf(step) + wait;
    if (now < end) {
        return end;
    }
    stage.missed(step);
    pass(now);
    return std::nullopt;
}

std::optional<Cursor::Time> Cursor::runSection(const RecordedStep& step, Time now) {
    const std::string filter = made.liveFilter(step.text);
    if (!stage.section(filter, step.bytes)) {
        fullSince = fullSince.value_or(now);
        if (now < *fullSince + pace.wait) {
            return now + kPauseOfAFullQueue;
        }
        stage.sectionLost(filter, step.bytes);
    }
    fullSince.reset();
    return std::nullopt;
}

void Cursor::sendEvent(const RecordedStep& step) {
    std::vector<message_fields::Value> values;
    values.reserve(step.values.size());
    for (const message_fields::FieldValue& value : step.values) {
        values.push_back(made.liveOf(value));
    }
    stage.event(*step.message, values);
}

void Cursor::pass(Time at) {
    last = current().kind == RecordedStep::Kind::command ? &current() : last;
    reached = at;
    ++position;
}

}  // namespace dtvservice
