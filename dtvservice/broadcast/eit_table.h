// EitTable: the EIT present/following (actual) of one service.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include "sub_table.h"

namespace broadcast {

class EitTable {
public:
    static constexpr std::uint16_t kPid = 0x0012;

    /// Whether the section belongs to an EIT present/following (actual), of any service, and is below kMostSections.
    static bool isEit(si::Bytes section);
    /// original_network_id of a section for which isEit() is true.
    static std::uint16_t networkId(si::Bytes section);

    /// Stores a section by its section_number only, because some broadcasters give each section of an EIT its own
    /// version_number. Drops stored sections beyond the last one, which is last_section_number or, if higher, this
    /// section's own number.
    Update file(si::Bytes section);
    const Sections& sections() const { return sections_; }

private:
    Sections sections_;
};

}  // namespace broadcast
