// AITStorage: the AIT sections of one channel by section number; tells new content from repetitions.
// Threads: one at a time; the catcher sees to it.
// Blocks:  never.
// Fails:   a refusal is false, with a line.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "aitsection.h"

namespace velmora::dvbservice {

class AITStorage {
public:
    static constexpr int kSlots = 12;

    /// Begins with the channel's first section, whether or not it can be stored.
    explicit AITStorage(const std::vector<std::uint8_t>& firstSection);

    /// True when the section was stored; false for a repetition (the same CRC_32 in its slot) or a number above 11.
    bool saveAITSection(const std::vector<std::uint8_t>& section);
    /// The slot of that number; the last one, with a line, for a number above 11. A negative number is not caught.
    const AITSection& getAITSection(int index) const;
    /// Sections of the table, as the last change of version said. A channel that begins with version 0 has 0 until
    /// another version comes: 0 is also what the storage starts from, so it sees no change.
    int getAITSectionCount() const { return sectionCount; }

private:
    std::array<AITSection, kSlots> slots;  // sections of an old version stay until their number comes again
    std::int32_t sectionCount = 0;
    std::int32_t version = 0;
};

}  // namespace velmora::dvbservice
