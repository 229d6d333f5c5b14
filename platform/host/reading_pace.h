// ReadingPace: how fast a service reads what one client sends. A client may send a burst. One that never stops is read
// at a steady rate; the rest waits on its side of the socket. So it takes a small part of the service's processor time,
// and the others' messages find the service's threads idle.
// Threads: one.
// Blocks:  never.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace host {

class ReadingPace {
public:
    using Clock = std::chrono::steady_clock;
    /// Packets in a burst after a pause.
    static constexpr int kBurst = 1000;

    /// `perSecond`: packets a second without a pause, up to a million; 0: any number.
    explicit ReadingPace(std::uint32_t perSecond)
        : packet(perSecond == 0 ? Clock::duration::zero() : Clock::duration(std::chrono::seconds(1)) / perSecond) {}

    bool isLimited() const { return packet != Clock::duration::zero(); }
    bool mayRead(Clock::time_point now) const { return now >= readableAt(); }
    /// When the next packet may be read.
    Clock::time_point readableAt() const { return usedUpTo - (kBurst - 1) * packet; }
    /// The same from now on, in whole milliseconds, so that the packet may be read then.
    int millisecondsFrom(Clock::time_point now) const {
        return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(readableAt() - now).count());
    }
    /// A packet has been read.
    void read(Clock::time_point now) { usedUpTo = std::max(usedUpTo, now) + packet; }

private:
    const Clock::duration packet;
    Clock::time_point usedUpTo;  // each packet uses up its share of the time
};

}  // namespace host
