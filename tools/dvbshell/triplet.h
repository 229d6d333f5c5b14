// Triplets of the interface and of events as si::Triplet.
// Threads: any.
// Blocks:  never.
// Fails:   a number that is none of 16 bits gives no triplet.
#pragma once

#include "events.h"
#include "si/triplet.h"

namespace dvbshell {

using si::Triplet;
using si::tripletText;

/// Numbers of the interface; -1 is unknown there.
inline std::optional<Triplet> tripletOf(int onid, int tsid, int sid) {
    constexpr int kMost = 0xFFFF;
    for (const int number : {onid, tsid, sid}) {
        if (number < 0 || number > kMost) {
            return std::nullopt;
        }
    }
    return Triplet{static_cast<std::uint16_t>(onid), static_cast<std::uint16_t>(tsid), static_cast<std::uint16_t>(sid)};
}

inline std::optional<Triplet> tripletOf(const Event& event) {
    return tripletOf(event.onid, event.tsid, event.sid);
}

}  // namespace dvbshell
