// Playing files.
#include "player.h"

#include "service_log.h"

namespace dtvservice {

namespace {

/// However short the file is, playing it again waits at least this long.
constexpr std::chrono::milliseconds kShortestRound{50};

}  // namespace

Playback::Playback(std::unique_ptr<broadcast::PacketFile> newFile, broadcast::Demux& newDemux, Repeat newRepeat)
    : file(std::move(newFile)), demux(newDemux), repeat(newRepeat) {}

std::optional<EventLoop::Clock::time_point> Playback::due() {
    if (state == State::reading) {
        packet = file->next();
        if (packet != nullptr) {
            state = State::packetDue;
            dueAt = pacer.due(broadcast::TsPacket{packet}, EventLoop::Clock::now());
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

void Playback::feed() {
    if (state == State::packetDue) {
        demux.feed(broadcast::TsPacket{packet});
    } else {
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

void scan(broadcast::PacketFile& file, broadcast::Demux& demux) {
    // Twice, as it would be played: what comes before the table that announces it is found in the second round.
    for (int round = 0; round < 2; ++round) {
        file.rewind();
        demux.discontinuity();
        while (const std::uint8_t* const bytes = file.next()) {
            demux.feed(broadcast::TsPacket{bytes});
        }
    }
}

}  // namespace dtvservice
