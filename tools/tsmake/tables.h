// The tables of a multiplex as sections (ISO/IEC 13818-1, clause 2.4.4; EN 300 468, clause 5.2; TS 102 809,
// clause 5.3.4).
#pragma once

#include "multiplex.h"
#include "section_writer.h"

namespace tsmake {

Section patSection(const Multiplex& multiplex);
Section pmtSection(const Service& service);
Section nitSection(const Multiplex& multiplex);
Section sdtSection(const Multiplex& multiplex);
/// EIT present/following actual: section 0 the present event, section 1 the following.
Section eitSection(const Multiplex& multiplex, const Service& service, bool following);
/// A section of the AIT after so many changes of its version, which begins with 1. An AIT that changes says in its
/// paths how often it has.
Section aitSection(const Service& service, unsigned int number = 0, unsigned int changes = 0);
/// The stream descriptor section of the service's event of that number.
Section streamEventSection(const Service& service, std::size_t number);
/// The time `secondsIn` after the start.
Section tdtSection(const Multiplex& multiplex, std::time_t secondsIn);

}  // namespace tsmake
