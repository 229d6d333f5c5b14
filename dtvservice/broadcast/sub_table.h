// SubTable: the sections of one table, as they came, and what a table looks at before it takes a section.
// Threads: one.
// Blocks: never.
// Fails: never.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "si/section.h"

namespace broadcast {

using Section = std::vector<std::uint8_t>;
using Sections = std::map<std::uint8_t, Section>;  // by section_number

/// What a section is to the table: a repetition, the first that came, or a change.
enum class Update { none, first, changed };

/// Sections of one version: a new version forgets those of the old one.
class SubTable {
public:
    /// Files a section under its number.
    Update file(si::Bytes section);
    /// Whether all sections are there, as the latest one counts them.
    bool isWhole(si::Bytes latest) const;
    const Sections& sections() const { return sections_; }

private:
    std::optional<std::uint8_t> version;
    Sections sections_;
    bool changed = false;  // since the first version
};

/// A long-form section of that table which is valid now.
bool isCurrent(si::Bytes section, std::uint8_t tableId);

/// Two bytes of a section that has them.
std::uint16_t wordAt(si::Bytes section, std::size_t at);

Section copyOf(si::Bytes section);

/// The sections in the order of their numbers, added to a list.
void append(const Sections& sections, std::vector<Section>& list);

}  // namespace broadcast
