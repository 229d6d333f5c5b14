// The object carousel that names stream events: its directories and one stream event object (TS 102 809, Annex B.2.4).
// Threads: any.
// Blocks:  never.
// Fails:   std::length_error when a section is too long.
#pragma once

#include "multiplex.h"
#include "section_writer.h"

namespace tsmake {

/// Of the carousels that name stream events; a service has at most one of them.
constexpr std::uint32_t kCarouselId = 1;

/// The carousel's sections in sending order: DSI, DII, blocks of the modules. The module with the directories is not
/// compressed; the module with the stream event object is.
std::vector<Section> carouselSections(const StreamEvents& events);

}  // namespace tsmake
