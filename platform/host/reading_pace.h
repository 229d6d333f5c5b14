// ReadingPace: how fast a service reads what one client sends. A client may send a burst. One that never stops is read
// at a steady rate; the rest waits on its side of the socket. So it takes a small part of the service's processor time,
// and the others' messages find the service's threads idle.
// Threads: one.
// Blocks:  never.
#pragma once

#include <algorithm>
#include <chrono>

namespace host {

class ReadingPace {
public:
    using Clock = std::chrono::steady_clock;
    /// Packets in a burst after a pause, and in a second without one.
    static constexpr int kBurst = 1000;
    static constexpr int kPerSecond = 2000;

    bool mayRead(Clock::time_point now) const { return now >= readableAt(); }
    /// When the next packet may be read.
    Clock::time_point readableAt() const { return usedUpTo - (kBurst - 1) * kPacket; }
    /// A packet has been read.
    void read(Clock::time_point now) { usedUpTo = std::max(usedUpTo, now) + kPacket; }

private:
    static constexpr Clock::duration kPacket = Clock::duration(std::chrono::seconds(1)) / kPerSecond;

    Clock::time_point usedUpTo;  // each packet uses up its share of the time
};

}  // namespace host
