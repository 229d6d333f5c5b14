// The programme guide: the events of each service, from the sections of the EIT.
// Threads: any.
// Blocks:  never.
// Fails:   never; what cannot be read is left out.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "eit_sections.h"
#include "si/tables.h"
#include "si/triplet.h"

namespace dtvservice {

/// A service of the channel list.
struct GuideChannel {
    std::size_t input = 0;  ///< 0 if no input carries it
    si::Triplet triplet;
    std::string name;
};

struct GuideService {
    si::Triplet triplet;
    std::string name;
    std::vector<si::Eit::Event> events;  ///< by start; those without a start first
};

/// The services of the channel list, and then others that have events. An event that several sections have counts once,
/// as the first of them has it. The service of an EIT (actual) is the input's, whatever its transport_stream_id says.
std::vector<GuideService> guideOf(const std::vector<GuideChannel>& channels,
                                  const std::vector<EitSections::Kept>& sections);

nlohmann::json guideJson(const std::vector<GuideService>& services);
/// A document of XMLTV. Leaves out events without a start.
std::string guideXmltv(const std::vector<GuideService>& services);

}  // namespace dtvservice
