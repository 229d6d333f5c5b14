// The components of a service as OIPF counts them (DAE, clause 7.16.5.2): video, audio and subtitle streams of its PMT,
// with what PMT and EIT tell of each. Each subtitle page of a teletext stream is one.
// Threads: any.
// Blocks:  never.
// Fails:   never; what is not told is 0 or absent.
#pragma once

#include "si/tables.h"

namespace si {

enum class ComponentType : std::uint32_t { video = 0, audio = 1, subtitle = 2 };

struct Component {
    std::uint16_t index = 0;  ///< in the order of the PMT, over all types
    ComponentType type = ComponentType::video;
    std::uint16_t pid = 0;
    /// stream_type; for private PES data (0x06) the tag of the descriptor that names the coding stands in the high
    /// byte.
    std::uint16_t encoding = 0;
    /// Of a video, by the EIT's component descriptor: 2 for 4:3, 3 for 16:9, 4 for wider (as MPEG-2 video numbers
    /// them).
    std::uint16_t aspectRatio = 0;
    /// Of an audio, by its AC-3 descriptor or the EIT's component descriptor: 1, 2, or 6 for surround sound.
    std::uint16_t audioChannels = 0;
    std::optional<std::uint8_t> tag;  ///< component_tag
    bool scrambled = false;           ///< a CA descriptor stands in the PMT for it
    std::string language;             ///< ISO 639-2, or empty

    friend bool operator==(const Component& one, const Component& other) {
        return one.index == other.index && one.type == other.type && one.pid == other.pid &&
               one.encoding == other.encoding && one.aspectRatio == other.aspectRatio &&
               one.audioChannels == other.audioChannels && one.tag == other.tag && one.scrambled == other.scrambled &&
               one.language == other.language;
    }
};

/// `presentEvent`: the descriptors of the EIT's present event.
std::vector<Component> components(const Pmt& pmt, const Descriptors& presentEvent);

/// The descriptors of the first event of an EIT section; none for a section without one.
Descriptors firstEventDescriptors(Bytes eitSection);

}  // namespace si
