// Reads the time stamps of an elementary stream's packet: the PTS of the PES packet that starts in it (ISO/IEC 13818-1,
// clause 2.4.3.7) and the TEMI timelines of its adaptation field (Annex U).
// Threads: any.
// Blocks:  never.
// Fails:   never; truncated or scrambled data gives no time stamp.
#pragma once

#include <optional>
#include <vector>

#include "ts_packet.h"

namespace broadcast {

/// PTS in ticks of 90 kHz, 33 bits.
std::optional<std::uint64_t> ptsOf(TsPacket packet);

/// A TEMI timeline descriptor. If it has only an NTP time stamp, mediaTimestamp is that one and timescale is 0.
struct TemiTimeline {
    std::uint8_t id = 0;
    bool forceReload = false;
    bool paused = false;
    bool discontinuity = false;
    std::uint32_t timescale = 0;       ///< ticks per second of the media time stamp
    std::uint64_t mediaTimestamp = 0;  ///< of the PES packet that starts in this packet, or of the next one
};

/// The packet's timelines that have a time stamp, in broadcast order.
std::vector<TemiTimeline> temiTimelinesOf(TsPacket packet);

}  // namespace broadcast
