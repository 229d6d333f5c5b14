// InputReport: what an input gives, for the operator: whether it plays, and if not, why.
// Threads: the loop's. Only `counts` may be written by the input's own thread.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "demux.h"

namespace dtvservice {

/// What an input has read. One thread writes, any thread reads.
struct InputCounts {
    using Count = std::atomic<std::uint64_t>;
    Count bytes{0};
    Count skippedBytes{0};  ///< bytes outside packets
    Count rtpLost{0};
    Count notRtp{0};          ///< datagrams that are no RTP packets
    Count droppedPackets{0};  ///< came faster than the service took them
};

class InputReport {
public:
    using Clock = broadcast::Clock;

    enum class State { starting, playing, silent, noPackets, noPat, ended, failed };

    InputCounts counts;

    /// The input as given on the command line.
    void setSource(std::string newSource) { source_ = std::move(newSource); }
    const std::string& source() const { return source_; }

    void opened(Clock::time_point now);
    void ended() { setState(State::ended, "ended"); }
    void failed(const std::string& problem) { setState(State::failed, problem); }

    /// Finds out what has come since the last call. Call this about once a second.
    void look(const broadcast::Demux& demux, Clock::time_point now);

    State state() const { return state_; }
    /// The state's name for programs.
    const char* stateName() const;
    /// The state in plain words, for example "silent for 3 s".
    const std::string& reason() const { return reason_; }

private:
    void setState(State newState, std::string newReason);
    void judge(Clock::time_point now);

    std::string source_;
    State state_ = State::starting;
    std::string reason_ = "starting";
    Clock::time_point lastBytes;    // when bytes have come; at first, when the input was opened
    Clock::time_point lastPackets;  // the same of packets
    Clock::time_point lastPat;      // the same of a PAT, but from the first packet on
    std::uint64_t bytes = 0;
    std::uint64_t packets = 0;
    std::uint64_t pats = 0;
    bool hasPackets = false;  // since it was opened
    bool hasPat = false;
};

}  // namespace dtvservice
