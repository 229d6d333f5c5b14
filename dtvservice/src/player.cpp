// Playing files.
#include "player.h"

#include "pacer.h"
#include "service_log.h"

namespace dtvservice {

namespace {

/// However short the file is, playing it again waits at least this long.
constexpr std::chrono::milliseconds kShortestRound{50};

/// False once the loop is stopped.
bool playOnce(broadcast::PacketFile& file, broadcast::Demux& demux, broadcast::Pacer& pacer, EventLoop& loop) {
    while (const std::uint8_t* const bytes = file.next()) {
        const broadcast::TsPacket packet{bytes};
        if (!loop.runUntil(pacer.due(packet, EventLoop::Clock::now()))) {
            return false;
        }
        demux.feed(packet);
    }
    return true;
}

}  // namespace

void play(broadcast::PacketFile& file, broadcast::Demux& demux, EventLoop& loop, Repeat repeat) {
    broadcast::Pacer pacer;
    while (true) {
        const EventLoop::Clock::time_point begin = EventLoop::Clock::now();
        if (!playOnce(file, demux, pacer, loop) || !loop.runUntil(begin + kShortestRound)) {
            return;
        }
        if (!file.error().empty()) {
            BLOG_TAGGED(blog::kFailure, "%s\n", file.error().c_str());
        }
        if (repeat == Repeat::once) {
            return;
        }
        file.rewind();
        demux.discontinuity();
        pacer.discontinuity();
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
