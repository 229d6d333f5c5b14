// The tables of a multiplex as sections (ISO/IEC 13818-1, clause 2.4.4; EN 300 468, clause 5.2; TS 102 809,
// clause 5.3.4).
#pragma once

#include "multiplex.h"
#include "section_writer.h"

namespace tsmake {

Section patSection(const Multiplex& multiplex);
/// Version 1 is the one after the end of the service's AIT.
Section pmtSection(const Service& service, bool aitHasEnded = false);
/// NIT actual, with the other transport streams.
Section nitSection(const Multiplex& multiplex);
Section sdtSection(const Multiplex& multiplex);
Section otherSdtSection(const OtherStream& stream, const std::string& provider);
/// EIT present/following actual while the service's event of that number is present, which is its version too:
/// section 0 the present event, section 1 the following, which may be missing.
Section eitSection(const Multiplex& multiplex, const Service& service, bool following, std::size_t present = 0);
/// A section of the AIT in the state of that number.
Section aitSection(const Service& service, unsigned int number = 0, std::size_t state = 0);
/// The stream descriptor section of the service's event of that number.
Section streamEventSection(const Service& service, std::size_t number);
/// The private section of that number: version_number, table_id_extension and the first four bytes count.
Section privateSection(const PrivateSections& sections, std::uint32_t number);
/// The time `secondsIn` after the start.
Section tdtSection(const Multiplex& multiplex, std::int64_t secondsIn);

}  // namespace tsmake
