// AITStorage: the AIT sections of one channel by section number. Distinguishes new sections from repetitions.
// Threads: one at a time; the catcher ensures it.
// Blocks:  never.
// Fails:   a refused section gives false and a line.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "aitsection.h"

namespace velmora::dvbservice {

class AITStorage {
public:
    static constexpr int kSlots = 12;

    /// Starts with the channel's first section, even if that cannot be stored.
    explicit AITStorage(const std::vector<std::uint8_t>& firstSection);

    /// True when the section was stored; false for a repetition (the same CRC_32 in its slot) or a number above 11.
    bool saveAITSection(const std::vector<std::uint8_t>& section);
    /// The slot of that number; for a number above 11 the last slot, with a line. Negative numbers are not checked.
    const AITSection& getAITSection(int index) const;
    /// Number of sections in the table, taken from the section that last changed the version. For a channel that begins
    /// with version 0 it stays 0 until another version arrives: the storage itself starts at version 0 and sees no
    /// change.
    int getAITSectionCount() const { return sectionCount; }

private:
    std::array<AITSection, kSlots> slots;  // a section of an old version stays until its number arrives again
    std::int32_t sectionCount = 0;
    std::int32_t version = 0;
};

}  // namespace velmora::dvbservice
