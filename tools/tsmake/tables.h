// The tables of a multiplex as sections (ISO/IEC 13818-1, clause 2.4.4; EN 300 468, clause 5.2; TS 102 809,
// clause 5.3.4).
#pragma once

#include "multiplex.h"
#include "section_writer.h"

namespace tsmake {

Section patSection(const Multiplex& multiplex);
/// The PMT has version 0, or version 1 after the end of the service's AIT.
Section pmtSection(const Service& service, bool aitHasEnded = false);
/// NIT actual; it lists the other transport streams too.
Section nitSection(const Multiplex& multiplex);
Section sdtSection(const Multiplex& multiplex);
Section otherSdtSection(const OtherStream& stream, const std::string& provider);
/// EIT present/following actual, while event `present` of the service is present. The version counts the events.
/// Section 0 has the present event. Section 1 has the following event, and is empty when there is none.
Section eitSection(const Multiplex& multiplex, const Service& service, bool following, std::size_t present = 0);
/// EIT schedule actual: all events of the service, in segments of three hours from the midnight before the broadcast
/// on. Leaves out what is later than the tables reach, and what a segment has no room for.
std::vector<Section> eitScheduleSections(const Multiplex& multiplex, const Service& service);
/// Section `number` of the AIT in state `state`.
Section aitSection(const Service& service, unsigned int number = 0, std::size_t state = 0);
/// The stream descriptor section of stream event `number` of the service.
Section streamEventSection(const Service& service, std::size_t number);
/// Private section `number`. version_number, table_id_extension and the first four bytes count the sections.
Section privateSection(const PrivateSections& sections, std::uint32_t number);
/// The TDT of the time `secondsIn` after the start.
Section tdtSection(const Multiplex& multiplex, std::int64_t secondsIn);

}  // namespace tsmake
