// SubTable: stores the original sections of one sub-table. Also the checks and helpers that all tables share.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "si/section.h"

namespace broadcast {

using Section = std::vector<std::uint8_t>;
using Sections = std::map<std::uint8_t, Section>;  // by section_number

/// Sections with higher numbers are refused where a broadcast has one table per service or transport stream, to limit
/// the memory. No real table has as many.
constexpr std::uint8_t kMostSections = 32;

/// The effect of a section on the table: none (a repetition), a section of the first version, or a change.
enum class Update { none, first, changed };

/// Stores a section under its section_number, and compares it with the section that had this number before.
Update store(Sections& sections, si::Bytes section);

/// Keeps the sections of one version. The first section of a new version removes the old ones.
class SubTable {
public:
    /// Stores a section by its section_number.
    Update file(si::Bytes section);
    /// Whether all sections up to last_section_number of the latest section have arrived.
    bool isWhole(si::Bytes latest) const;
    const Sections& sections() const { return sections_; }

private:
    std::optional<std::uint8_t> version;
    Sections sections_;
    bool changed = false;  // something differs from the first version
};

/// Whether this is a long-form section with this table_id and current_next_indicator set.
bool isCurrent(si::Bytes section, std::uint8_t tableId);

/// The 16 bits at an offset. The section must be long enough.
std::uint16_t wordAt(si::Bytes section, std::size_t at);

Section copyOf(si::Bytes section);

/// Appends the sections to a list, in the order of section_number.
void append(const Sections& sections, std::vector<Section>& list);

}  // namespace broadcast
