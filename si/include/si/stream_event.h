// Stream events: DSM-CC stream descriptor sections with stream event descriptors (ISO/IEC 13818-6, clause 8.3; TS 102
// 809, Annex B.2.4).
// Threads: any.
// Blocks:  never.
// Fails:   never; descriptors that do not fit are left out.
#pragma once

#include <vector>

#include "si/section.h"

namespace si {

constexpr std::uint8_t kStreamDescriptorTableId = 0x3D;

struct StreamEvent {
    std::uint16_t id = 0;
    std::uint64_t npt = 0;  ///< eventNPT, 33 bits; HbbTV receivers ignore it and fire every event at once
    std::vector<std::uint8_t> data;
};

/// The events of a section, in order; none for a section of another table.
std::vector<StreamEvent> streamEvents(Bytes section);

}  // namespace si
