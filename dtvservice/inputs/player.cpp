// Plays files.
#include "player.h"

#include "service_log.h"

namespace dtvservice {

namespace {

/// The minimum time from one start of a file to the next. It keeps a very short file from occupying the loop.
constexpr std::chrono::milliseconds kShortestRound{50};
/// Time between two attempts to open a file.
constexpr std::chrono::seconds kPause{1};
/// Commands that run before a packet that is due, so that browsers who send without end do not stop the broadcast.
constexpr std::size_t kMostBeforePacket = 4;
constexpr const char* kAgain = "; trying again every second";

}  // namespace

Playback::Playback(std::string newPath, std::unique_ptr<PacketFile> newFile, broadcast::Demux& newDemux,
                   InputReport& newReport, const Playing& playing)
    : path(std::move(newPath)),
      demux(newDemux),
      report(newReport),
      repeat(playing.repeat),
      pacer(playing.bitRate),
      dueAt(EventLoop::Clock::now() + kPause),
      state(repeat == Repeat::once ? State::ended : State::closed) {
    if (newFile != nullptr) {
        use(std::move(newFile));
    } else {
        messages.tell(report.reason() + kAgain);  // the program has already told it
    }
}

std::optional<EventLoop::Clock::time_point> Playback::due() {
    if (state == State::reading) {
        packet = file->nextNearby();
        if (packet != nullptr) {
            state = State::packetDue;
            dueAt = pacer.due(broadcast::TsPacket{packet}, EventLoop::Clock::now());
        } else if (!file->isAtEnd()) {
            state = State::searching;
            dueAt = EventLoop::Clock::now();
        } else {
            endRound();
        }
    }
    return state == State::ended ? std::nullopt : std::optional<EventLoop::Clock::time_point>(dueAt);
}

void Playback::feed() {
    switch (state) {
        case State::closed:
            open();
            return;
        case State::roundDue:
            startRound();
            return;
        case State::packetDue:
            hasPackets = true;
            demux.feed(broadcast::TsPacket{packet});
            break;
        default:
            break;
    }
    state = State::reading;
}

void Playback::endRound() {
    if (!file->error().empty()) {
        if (const auto line = messages.tell(file->error())) {
            BLOG_TAGGED(blog::kFailure, "%s\n", line->c_str());
        }
    }
    if (repeat == Repeat::once) {
        report.ended();
        state = State::ended;
    } else {
        state = State::roundDue;
        dueAt = roundBegin + kShortestRound;
    }
}

void Playback::startRound() {
    if (file->isReplaced()) {
        if (const auto line = messages.tell(path + " has changed: the new file is played")) {
            BLOG_TAGGED(blog::kUnsupported, "%s\n", line->c_str());
        }
        open();
    } else if (hasPackets) {
        file->rewind();
        state = State::reading;
    } else {
        close(path + " has no more packets");
    }
    demux.discontinuity();
    pacer.discontinuity();
    roundBegin = EventLoop::Clock::now();
    hasPackets = false;
}

void Playback::open() {
    std::string error;
    std::unique_ptr<PacketFile> opened = PacketFile::open(path, error);
    if (opened == nullptr) {
        close(error);
        return;
    }
    if (const auto line = messages.tell(path + " has been opened")) {
        BLOG_TAGGED(blog::kOrdinary, "%s\n", line->c_str());
    }
    use(std::move(opened));
}

void Playback::use(std::unique_ptr<PacketFile> newFile) {
    file = std::move(newFile);
    file->countIn(report.counts);
    report.opened(EventLoop::Clock::now());
    state = State::reading;
}

void Playback::close(const std::string& problem) {
    report.failed(problem);
    if (const auto line = messages.tell(problem + kAgain)) {
        BLOG_TAGGED(blog::kFailure, "%s\n", line->c_str());
    }
    file.reset();
    state = State::closed;
    dueAt = EventLoop::Clock::now() + kPause;
}

void play(std::vector<Playback>& playbacks, EventLoop& loop, Others others) {
    while (true) {
        Playback* next = nullptr;
        EventLoop::Clock::time_point dueAt;
        for (Playback& playback : playbacks) {
            const std::optional<EventLoop::Clock::time_point> due = playback.due();
            if (due && (next == nullptr || *due < dueAt)) {
                next = &playback;
                dueAt = *due;
            }
        }
        if (next == nullptr) {
            if (others != Others::none) {
                loop.run();
            }
            return;
        }
        if (!loop.runUntil(dueAt, kMostBeforePacket)) {
            return;
        }
        next->feed();
    }
}

}  // namespace dtvservice
