// The components of a service as OIPF defines them (DAE, clause 7.16.5.2): the video, audio and subtitle streams of its
// PMT, described by PMT and EIT. Each subtitle page of a teletext stream is a component.
// Threads: any.
// Blocks:  never.
// Fails:   never; unknown values are 0 or absent.
#pragma once

#include "si/tables.h"

namespace si {

enum class ComponentType : std::uint32_t { video = 0, audio = 1, subtitle = 2 };

struct Component {
    std::uint16_t index = 0;  ///< in the order of the PMT, over all types
    ComponentType type = ComponentType::video;
    std::uint16_t pid = 0;
    /// stream_type. For private PES data (0x06) the high byte is the tag of the descriptor that identifies the coding.
    std::uint16_t encoding = 0;
    /// Of video, from the EIT's component descriptor: 2 for 4:3, 3 for 16:9, 4 for wider (the numbers of MPEG-2 video).
    std::uint16_t aspectRatio = 0;
    /// Of audio, from its AC-3 descriptor or the EIT's component descriptor: 1, 2, or 6 for surround sound.
    std::uint16_t audioChannels = 0;
    std::optional<std::uint8_t> tag;  ///< component_tag
    bool scrambled = false;           ///< the PMT has a CA descriptor for it
    std::string language;             ///< ISO 639-2, or empty
    bool audioDescription = false;    ///< of audio, for people who do not see well
    bool hearingImpaired = false;     ///< of subtitles, for people who do not hear well

    friend bool operator==(const Component& one, const Component& other) {
        return one.index == other.index && one.type == other.type && one.pid == other.pid &&
               one.encoding == other.encoding && one.aspectRatio == other.aspectRatio &&
               one.audioChannels == other.audioChannels && one.tag == other.tag && one.scrambled == other.scrambled &&
               one.language == other.language && one.audioDescription == other.audioDescription &&
               one.hearingImpaired == other.hearingImpaired;
    }
};

/// `presentEvent`: the descriptors of the EIT's present event.
std::vector<Component> components(const Pmt& pmt, const Descriptors& presentEvent);

/// The descriptors of the first event of an EIT section; empty if there is no event.
Descriptors firstEventDescriptors(Bytes eitSection);

}  // namespace si
