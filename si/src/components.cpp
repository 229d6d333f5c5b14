// Makes components from the streams of a PMT.
#include "si/components.h"

#include <algorithm>
#include <set>

#include "cursor.h"

namespace si {

namespace {

constexpr std::uint8_t kPesPrivate = 0x06;
constexpr std::uint8_t kCaDescriptor = 0x09;
constexpr std::uint8_t kLanguageDescriptor = 0x0A;
constexpr std::uint8_t kComponentDescriptor = 0x50;
constexpr std::uint8_t kTeletextDescriptor = 0x56;
constexpr std::uint8_t kSubtitlingDescriptor = 0x59;
constexpr std::uint8_t kAc3Descriptor = 0x6A;
constexpr std::uint8_t kEnhancedAc3Descriptor = 0x7A;
constexpr std::uint8_t kDtsDescriptor = 0x7B;
constexpr std::uint8_t kAacDescriptor = 0x7C;
constexpr std::uint8_t kAc4Extension = 0x15;
constexpr std::uint8_t kExtensionDescriptor = 0x7F;
constexpr std::uint16_t kTeletextEncoding = kTeletextDescriptor << 8U | kPesPrivate;
constexpr std::uint16_t kSurround = 6;

const Descriptor* find(const Descriptors& descriptors, std::uint8_t tag) {
    const auto found = std::find_if(descriptors.begin(), descriptors.end(),
                                    [tag](const Descriptor& descriptor) { return descriptor.tag == tag; });
    return found == descriptors.end() ? nullptr : &*found;
}

bool isOneOf(std::uint8_t value, std::initializer_list<std::uint8_t> values) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

/// Type and encoding; no type if the stream is not a component.
std::optional<ComponentType> typeOf(const Pmt::Stream& stream, std::uint16_t& encoding) {
    encoding = stream.streamType;
    // MPEG-1, MPEG-2, MPEG-4, AVC, its extensions, HEVC and VVC video; MPEG audio, AAC, LATM, AC-3 and its extension.
    if (isOneOf(stream.streamType, {0x01, 0x02, 0x10, 0x1B, 0x1F, 0x20, 0x24, 0x25, 0x33, 0x42, 0xEA})) {
        return ComponentType::video;
    }
    if (isOneOf(stream.streamType, {0x03, 0x04, 0x0F, 0x11, 0x1C, 0x2D, 0x2E, 0x81, 0x87})) {
        return ComponentType::audio;
    }
    if (stream.streamType != kPesPrivate) {
        return std::nullopt;
    }
    const auto named = [&](std::uint8_t tag) {
        const bool is = find(stream.descriptors, tag) != nullptr;
        encoding = is ? static_cast<std::uint16_t>(tag << 8U | kPesPrivate) : encoding;
        return is;
    };
    if (named(kAc3Descriptor) || named(kEnhancedAc3Descriptor) || named(kDtsDescriptor) || named(kAacDescriptor)) {
        return ComponentType::audio;
    }
    const Descriptor* const extension = find(stream.descriptors, kExtensionDescriptor);
    if (extension != nullptr && !extension->bytes.empty() && extension->bytes[0] == kAc4Extension) {
        encoding = static_cast<std::uint16_t>(kExtensionDescriptor << 8U | kPesPrivate);
        return ComponentType::audio;
    }
    if (named(kSubtitlingDescriptor) || named(kTeletextDescriptor)) {
        return ComponentType::subtitle;
    }
    return std::nullopt;
}

/// The EIT's component descriptor for a component_tag (EN 300 468, clause 6.2.8).
struct EventComponent {
    unsigned int content = 0;
    unsigned int type = 0;
};

EventComponent eventComponent(const Descriptors& presentEvent, std::optional<std::uint8_t> tag) {
    constexpr std::size_t kTagAt = 2;
    for (const Descriptor& descriptor : presentEvent) {
        if (tag && descriptor.tag == kComponentDescriptor && descriptor.bytes.size() > kTagAt &&
            descriptor.bytes[kTagAt] == *tag) {
            return {descriptor.bytes[0] & 0x0FU, descriptor.bytes[1]};
        }
    }
    return {};
}

/// For stream_content 1 and 5 (MPEG-2 and AVC), component_type repeats every four values: 4:3, 16:9 with pan vectors,
/// 16:9 without, wider.
std::uint16_t aspectRatio(EventComponent told) {
    constexpr unsigned int kLastPictureType = 0x10;
    if ((told.content != 1 && told.content != 5) || told.type == 0 || told.type > kLastPictureType) {
        return 0;
    }
    constexpr std::uint16_t kRatios[] = {2, 3, 3, 4};
    return kRatios[(told.type - 1) % 4];
}

std::uint16_t ac3Channels(const Descriptor& descriptor) {
    constexpr std::uint8_t kHasComponentType = 0x80;
    constexpr std::uint16_t kByMode[] = {1, 2, 2, 2, kSurround, kSurround, 0, 0};
    if (descriptor.bytes.size() < 2 || (descriptor.bytes[0] & kHasComponentType) == 0) {
        return 0;
    }
    return kByMode[descriptor.bytes[1] & 0x07];
}

std::uint16_t audioChannels(const Pmt::Stream& stream, EventComponent told) {
    for (const std::uint8_t tag : {kAc3Descriptor, kEnhancedAc3Descriptor}) {
        const Descriptor* const descriptor = find(stream.descriptors, tag);
        if (descriptor != nullptr && ac3Channels(*descriptor) != 0) {
            return ac3Channels(*descriptor);
        }
    }
    // stream_content 2 and 6 (MPEG-1 layer 2, HE-AAC): 1 mono, 2 two languages, 3 stereo, 4 and 5 surround sound.
    if ((told.content != 2 && told.content != 6) || told.type == 0 || told.type > 5) {
        return 0;
    }
    constexpr std::uint16_t kByType[] = {1, 2, 2, kSurround, kSurround};
    return kByType[told.type - 1];
}

/// By the audio_type of the language descriptor (ISO/IEC 13818-1, clause 2.6.19) or the editorial classification of the
/// supplementary audio descriptor (EN 300 468, clause 6.4.11).
bool hasAudioDescription(const Pmt::Stream& stream) {
    constexpr std::size_t kAudioTypeAt = 3;
    constexpr std::uint8_t kVisualImpairedCommentary = 0x03;
    constexpr std::uint8_t kSupplementaryAudio = 0x06;
    constexpr std::uint8_t kEditorialClassification = 0x1F;
    return std::any_of(stream.descriptors.begin(), stream.descriptors.end(), [](const Descriptor& descriptor) {
        const std::vector<std::uint8_t>& bytes = descriptor.bytes;
        if (descriptor.tag == kExtensionDescriptor) {
            return bytes.size() > 1 && bytes[0] == kSupplementaryAudio &&
                   (bytes[1] >> 2U & kEditorialClassification) == 1;
        }
        return descriptor.tag == kLanguageDescriptor && bytes.size() > kAudioTypeAt &&
               bytes[kAudioTypeAt] == kVisualImpairedCommentary;
    });
}

/// What the list says of one subtitle component.
struct Subtitles {
    std::string language;
    bool hearingImpaired = false;
};

/// By the subtitling_type (EN 300 468, clause 6.2.41 and table 26).
Subtitles dvbSubtitles(const Pmt::Stream& stream) {
    constexpr std::size_t kTypeAt = 3;
    constexpr std::uint8_t kFirstForHardOfHearing = 0x20;
    constexpr std::uint8_t kLastForHardOfHearing = 0x26;
    const Descriptor* const descriptor = find(stream.descriptors, kSubtitlingDescriptor);
    const std::uint8_t type =
        descriptor == nullptr || descriptor->bytes.size() <= kTypeAt ? std::uint8_t{0} : descriptor->bytes[kTypeAt];
    return {language(stream), type >= kFirstForHardOfHearing && type <= kLastForHardOfHearing};
}

/// The subtitle pages of a teletext stream, each page once. Only teletext_type 2 and 5 (hard of hearing) are subtitles
/// (EN 300 468, clause 6.2.43).
std::vector<Subtitles> subtitlePages(const Pmt::Stream& stream) {
    constexpr std::size_t kPage = 5;
    constexpr std::size_t kLanguage = 3;
    constexpr std::uint64_t kForHardOfHearing = 5;
    std::vector<Subtitles> all;
    std::set<std::uint64_t> pages;
    for (const Descriptor& descriptor : stream.descriptors) {
        Cursor cursor(descriptor.bytes);
        while (descriptor.tag == kTeletextDescriptor && cursor.left() >= kPage) {
            const std::string language = plainText(cursor.take(kLanguage));
            const std::uint64_t typeAndPage = cursor.number(2);
            const std::uint64_t type = typeAndPage >> 11U;
            if ((type == 2 || type == kForHardOfHearing) && pages.insert(typeAndPage & 0x07FFU).second) {
                all.push_back({language, type == kForHardOfHearing});
            }
        }
    }
    return all;
}

}  // namespace

std::vector<Component> components(const Pmt& pmt, const Descriptors& presentEvent) {
    std::vector<Component> list;
    const bool serviceScrambled = find(pmt.descriptors, kCaDescriptor) != nullptr;
    for (const Pmt::Stream& stream : pmt.streams) {
        Component component;
        const std::optional<ComponentType> type = typeOf(stream, component.encoding);
        if (!type) {
            continue;
        }
        component.type = *type;
        component.pid = stream.pid;
        component.tag = componentTag(stream);
        component.scrambled = serviceScrambled || find(stream.descriptors, kCaDescriptor) != nullptr;
        const EventComponent told = eventComponent(presentEvent, component.tag);
        if (*type == ComponentType::video) {
            component.aspectRatio = aspectRatio(told);
        } else if (*type == ComponentType::audio) {
            component.audioChannels = audioChannels(stream, told);
            component.audioDescription = hasAudioDescription(stream);
        }
        const bool isTeletext = component.encoding == kTeletextEncoding;
        for (const Subtitles& each : isTeletext ? subtitlePages(stream) : std::vector{dvbSubtitles(stream)}) {
            component.index = static_cast<std::uint16_t>(list.size());
            component.language = each.language;
            component.hearingImpaired = each.hearingImpaired;
            list.push_back(component);
        }
    }
    return list;
}

Descriptors firstEventDescriptors(Bytes eitSection) {
    constexpr std::size_t kBeforeEvents = 14;
    constexpr std::size_t kBeforeLoop = 10;
    constexpr std::size_t kCrc = 4;
    Descriptors descriptors;
    if (eitSection.size > kBeforeEvents + kBeforeLoop + kCrc) {
        Cursor cursor({eitSection.data + kBeforeEvents, eitSection.size - kBeforeEvents - kCrc});
        cursor.take(kBeforeLoop);
        readDescriptors(cursor.takeLong(), descriptors);
    }
    return descriptors;
}

}  // namespace si
