// Stream events: DSM-CC stream descriptor sections with stream event descriptors (ISO/IEC 13818-6, clause 8.3; TS 102
// 809, Annex B.2.4).
// Threads: any.
// Blocks:  never.
// Fails:   never; what does not fit is left out.
#pragma once

#include <vector>

#include "si/section.h"

namespace si {

constexpr std::uint8_t kStreamDescriptorTableId = 0x3D;

struct StreamEvent {
    std::uint16_t id = 0;
    std::uint64_t npt = 0;  ///< eventNPT, 33 bits; receivers of HbbTV take every event for one to be done now
    std::vector<std::uint8_t> data;
};

/// The events of a section, in their order; none for a section of another table.
std::vector<StreamEvent> streamEvents(Bytes section);

}  // namespace si
