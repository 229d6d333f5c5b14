// Waiting, and printing what comes.
#include "session.h"

#include <algorithm>
#include <thread>

#include "interrupt.h"

namespace dvbshell {

namespace {

/// How long a wait takes no notice of Ctrl-C and of the service.
constexpr std::chrono::milliseconds kSlice{50};

bool isSame(const message_fields::FieldValue& one, const message_fields::FieldValue& other) {
    return one.field == other.field && one.value == other.value;
}

bool isSame(const Event& one, const Event& other) {
    return one.name == other.name && one.section == other.section &&
           std::equal(one.values.begin(), one.values.end(), other.values.begin(), other.values.end(),
                      [](const auto& left, const auto& right) { return isSame(left, right); });
}

}  // namespace

void Session::announce() {
    constexpr std::chrono::milliseconds kQuiet{100};
    constexpr std::chrono::milliseconds kLongest{500};
    if (std::exchange(announced, true)) {
        return;
    }
    host.api.notifyMwhbStart();
    std::vector<Event> kept;
    const Clock::time_point end = Clock::now() + kLongest;
    while (std::optional<Event> event = events.take(std::min(end, Clock::now() + kQuiet))) {
        if (std::none_of(kept.begin(), kept.end(), [&event](const Event& each) { return isSame(each, *event); })) {
            kept.push_back(std::move(*event));
        }
    }
    for (Event& event : kept) {
        events.put(std::move(event));
    }
}

std::optional<Event> Session::next(EventQueue& queue, Clock::time_point until, bool evenWithoutService) {
    while (!isInterrupted() && !outputFailed()) {
        const Clock::time_point now = Clock::now();
        if (std::optional<Event> event = queue.take(std::min(until, now + kSlice))) {
            // An event tells that the service is back, before the next look does.
            noteConnection(connection.isGone());
            return event;
        }
        noteConnection();
        if (now >= until || (connection.isGone() && !evenWithoutService)) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

void Session::takeUntilQuiet(Clock::duration quiet, Clock::time_point end,
                             const std::function<void(const Event&)>& take) {
    // Some events, such as those of a timeline, never pause. An event that waits is taken even at the end of the time.
    while (const std::optional<Event> event = next(events, std::min(end, Clock::now() + quiet))) {
        take(*event);
        if (Clock::now() >= end) {
            return;
        }
    }
}

void Session::printUntilQuiet(Clock::duration quiet, Clock::time_point end) {
    takeUntilQuiet(quiet, end, [this](const Event& event) { print(event); });
}

void Session::print(const Event& event) {
    const std::optional<Triplet> channel = event.kind == EventKind::channel ? tripletOf(event) : std::nullopt;
    if (channel) {
        knownChannels.insert(tripletText(*channel));
    }
    printer.print(event, host.api.getCurrentCCID());
}

void Session::printWaiting() {
    while (const std::optional<Event> event = events.take(Clock::now())) {
        print(*event);
    }
}

void Session::report(const std::vector<std::string>& lines, const char* name,
                     std::vector<message_fields::FieldValue> values) {
    if (!json) {
        for (const std::string& line : lines) {
            printer.note(line);
        }
        return;
    }
    Event event;
    event.name = name;
    event.values = std::move(values);
    printer.print(event, "");
}

bool Session::noteConnection(bool now) {
    const std::optional<std::string> news = connection.news(now);
    if (news) {
        printer.note(*news);
    }
    return news.has_value();
}

std::optional<Triplet> Session::presented() const {
    int onid = -1;
    int tsid = -1;
    int sid = -1;
    const bool known = host.api.getCurrentChannelInfo(onid, tsid, sid) == 0;
    return known ? tripletOf(onid, tsid, sid) : std::nullopt;
}

void Session::awaitChannel() const {
    constexpr std::chrono::milliseconds kLongest{500};
    constexpr std::chrono::milliseconds kBetweenLooks{5};
    const Clock::time_point end = Clock::now() + kLongest;
    while (!presented() && Clock::now() < end) {
        std::this_thread::sleep_for(kBetweenLooks);
    }
}

bool Session::outputFailed() const {
    return std::ferror(output) != 0;
}

int fail(Session& session, const std::string& text) {
    if (session.atPrompt) {
        session.printer.note(text);
    } else {
        std::fprintf(stderr, "dvbshell: %s\n", text.c_str());
    }
    return kFailed;
}

int failInTime(Session& session, const std::string& text) {
    return isInterrupted() ? static_cast<int>(kFailed) : fail(session, text);
}

}  // namespace dvbshell
