// Judges what an input gives.
#include "input_report.h"

#include <utility>

namespace dtvservice {

namespace {

using broadcast::Clock;

/// Bytes and packets come all the time, and the first PAT comes within half a second.
constexpr std::chrono::seconds kPatience{2};
/// A file that is played in a loop may have its PATs in one part only.
constexpr std::chrono::seconds kPatienceForNextPat{10};
constexpr std::uint16_t kPatPid = 0;

std::string secondsOf(Clock::duration duration) {
    return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(duration).count()) + " s";
}

/// Keeps the count that is now; true if it was another one.
bool hasChanged(std::uint64_t& kept, std::uint64_t count) {
    const std::uint64_t before = std::exchange(kept, count);
    return before != count;
}

}  // namespace

void InputReport::opened(Clock::time_point now) {
    setState(State::starting, "starting");
    lastBytes = now;
    lastPackets = now;
    hasPackets = false;
    hasPat = false;
}

void InputReport::look(const broadcast::Demux& demux, Clock::time_point now) {
    if (state_ == State::ended || state_ == State::failed) {
        return;
    }
    if (hasChanged(bytes, counts.bytes.load())) {
        lastBytes = now;
    }
    if (hasChanged(packets, demux.packets())) {
        lastPackets = now;
        lastBytes = now;
        lastPat = hasPackets ? lastPat : now;
        hasPackets = true;
    }
    if (hasChanged(pats, demux.countsOf(kPatPid).sections)) {
        lastPat = now;
        hasPat = true;
    }
    judge(now);
}

void InputReport::judge(Clock::time_point now) {
    if (now - lastPackets >= kPatience) {
        if (now - lastBytes >= kPatience) {
            setState(State::silent, "silent for " + secondsOf(now - lastBytes));
        } else {
            setState(State::noPackets, "bytes without packets for " + secondsOf(now - lastPackets));
        }
    } else if (!hasPackets) {
        setState(State::starting, "starting");
    } else if (now - lastPat >= (hasPat ? kPatienceForNextPat : kPatience)) {
        setState(State::noPat, (hasPat ? "no PAT for " : "no PAT after ") + secondsOf(now - lastPat));
    } else {
        setState(State::playing, "playing");
    }
}

void InputReport::setState(State newState, std::string newReason) {
    state_ = newState;
    reason_ = std::move(newReason);
}

const char* InputReport::stateName() const {
    switch (state_) {
        case State::starting:
            return "starting";
        case State::playing:
            return "playing";
        case State::silent:
            return "silent";
        case State::noPackets:
            return "no_packets";
        case State::noPat:
            return "no_pat";
        case State::ended:
            return "ended";
        case State::failed:
            break;
    }
    return "failed";
}

}  // namespace dtvservice
