// The object carousel that names stream events: its directories and one stream event object (ISO/IEC 13818-6, clauses
// 7 and 11; TS 102 809, Annex B.2.4).
// Threads: any.
// Blocks:  never.
// Fails:   std::length_error when a section is too long.
#pragma once

#include "multiplex.h"
#include "section_writer.h"

namespace tsmake {

/// Of every carousel that is made: a service has one.
constexpr std::uint32_t kCarouselId = 1;

/// The carousel's sections in the order in which they are sent: DSI, DII, blocks of the modules. The directories are in
/// a module as it is, the object in a compressed one.
std::vector<Section> carouselSections(const StreamEvents& events);

}  // namespace tsmake
