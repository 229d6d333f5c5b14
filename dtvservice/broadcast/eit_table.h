// EitTable: the EIT present/following (actual) of one service.
// Threads: one.
// Blocks: never.
// Fails: never.
#pragma once

#include "sub_table.h"

namespace broadcast {

class EitTable {
public:
    static constexpr std::uint16_t kPid = 0x0012;

    /// Whether it is a section of such a table, of whatever service.
    static bool isEit(si::Bytes section);
    /// original_network_id of such a section.
    static std::uint16_t networkId(si::Bytes section);

    /// Files a section under its number alone: some broadcasters give each section of an EIT a version of its own.
    /// Sections behind the last one are forgotten.
    Update file(si::Bytes section);
    const Sections& sections() const { return sections_; }

private:
    Sections sections_;
};

}  // namespace broadcast
