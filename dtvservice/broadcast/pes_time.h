// What a packet of an elementary stream says of time: the PTS of the PES packet that starts in it (ISO/IEC 13818-1,
// clause 2.4.3.7) and the TEMI timelines of its adaptation field (Annex U). Threads: any.   Blocks: never. Fails:
// never; what is cut or scrambled says nothing.
#pragma once

#include <optional>
#include <vector>

#include "ts_packet.h"

namespace broadcast {

/// PTS in ticks of 90 kHz, 33 bits.
std::optional<std::uint64_t> ptsOf(TsPacket packet);

/// A TEMI timeline descriptor. One with an NTP time stamp alone has it as its media time stamp, with timescale 0.
struct TemiTimeline {
    std::uint8_t id = 0;
    bool forceReload = false;
    bool paused = false;
    bool discontinuity = false;
    std::uint32_t timescale = 0;       ///< ticks of the media time stamp a second
    std::uint64_t mediaTimestamp = 0;  ///< of the frame whose PES packet starts here, or starts next
};

/// The timelines with a time stamp, in their order.
std::vector<TemiTimeline> temiTimelinesOf(TsPacket packet);

}  // namespace broadcast
