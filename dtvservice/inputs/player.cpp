// Plays files.
#include "player.h"

#include "service_log.h"

namespace dtvservice {

namespace {

/// The minimum time from one start of a file to the next. It keeps a very short file from occupying the loop.
constexpr std::chrono::milliseconds kShortestRound{50};
/// Time between two attempts to open a file.
constexpr std::chrono::seconds kPause{1};

}  // namespace

Playback::Playback(std::string newPath, std::unique_ptr<PacketFile> newFile, broadcast::Demux& newDemux,
                   Repeat newRepeat)
    : path(std::move(newPath)),
      file(std::move(newFile)),
      demux(newDemux),
      repeat(newRepeat),
      dueAt(EventLoop::Clock::now() + kPause),
      state(file != nullptr             ? State::reading
            : newRepeat == Repeat::once ? State::ended
                                        : State::closed) {}

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
            if (!file->error().empty()) {
                BLOG_TAGGED(blog::kFailure, "%s\n", file->error().c_str());
            }
            state = repeat == Repeat::once ? State::ended : State::roundDue;
            dueAt = roundBegin + kShortestRound;
        }
    }
    return state == State::ended ? std::nullopt : std::optional<EventLoop::Clock::time_point>(dueAt);
}

/// Does not report an error: the program already reported it at the start.
void Playback::open() {
    std::string error;
    file = PacketFile::open(path, error);
    dueAt = EventLoop::Clock::now() + kPause;
    if (file != nullptr) {
        BLOG_TAGGED(blog::kOrdinary, "%s has been opened\n", path.c_str());
        state = State::reading;
    }
}

void Playback::feed() {
    if (state == State::closed) {
        open();
        return;
    }
    if (state == State::packetDue) {
        demux.feed(broadcast::TsPacket{packet});
    } else if (state == State::roundDue) {
        file->rewind();
        demux.discontinuity();
        pacer.discontinuity();
        roundBegin = EventLoop::Clock::now();
    }
    state = State::reading;
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
            if (others == Others::none || !loop.runUntil(EventLoop::Clock::now() + std::chrono::hours(1))) {
                return;
            }
            continue;
        }
        if (!loop.runUntil(dueAt)) {
            return;
        }
        next->feed();
    }
}

void scan(PacketFile& file, broadcast::Demux& demux) {
    // Two rounds, because a section may come before the table that announces its PID. The second round finds it.
    for (int round = 0; round < 2; ++round) {
        file.rewind();
        demux.discontinuity();
        while (const std::uint8_t* const bytes = file.next()) {
            demux.feed(broadcast::TsPacket{bytes});
        }
    }
}

}  // namespace dtvservice
