// Identifies the content of a PMT's streams.
#include <bitstream/mpeg/psi.h>

#include <algorithm>

#include "si/ait.h"
#include "si/tables.h"

namespace si {

namespace {

constexpr std::uint8_t kPrivateSections = 0x05;
constexpr std::uint8_t kPesPrivate = 0x06;
constexpr std::uint8_t kLanguageDescriptor = 0x0A;
constexpr std::uint8_t kStreamIdentifierDescriptor = 0x52;
constexpr std::uint8_t kTeletextDescriptor = 0x56;
constexpr std::uint8_t kSubtitlingDescriptor = 0x59;
constexpr std::uint8_t kAc3Descriptor = 0x6A;
constexpr std::uint8_t kApplicationSignallingDescriptor = 0x6F;
constexpr std::uint8_t kEnhancedAc3Descriptor = 0x7A;

const Descriptor* find(const Pmt::Stream& stream, std::uint8_t tag) {
    for (const Descriptor& descriptor : stream.descriptors) {
        if (descriptor.tag == tag) {
            return &descriptor;
        }
    }
    return nullptr;
}

struct PrivateStream {
    std::uint8_t tag;
    const char* name;
};

constexpr PrivateStream kPrivateStreams[] = {{kTeletextDescriptor, "teletext"},
                                             {kSubtitlingDescriptor, "DVB subtitles"},
                                             {kAc3Descriptor, "AC-3 audio"},
                                             {kEnhancedAc3Descriptor, "Enhanced AC-3 audio"}};

/// Whether the descriptor lists HbbTV's application_type. Its entries have 3 bytes; a reserved bit precedes the type.
bool listsHbbTv(const Descriptor& descriptor) {
    for (std::size_t at = 0; at + 3 <= descriptor.bytes.size(); at += 3) {
        if (((descriptor.bytes[at] & 0x7F) << 8 | descriptor.bytes[at + 1]) == kApplicationTypeHbbTv) {
            return true;
        }
    }
    return false;
}

bool carriesAit(const Pmt::Stream& stream) {
    return stream.streamType == kPrivateSections && find(stream, kApplicationSignallingDescriptor) != nullptr;
}

bool listsHbbTv(const Pmt::Stream& stream) {
    return carriesAit(stream) && listsHbbTv(*find(stream, kApplicationSignallingDescriptor));
}

const char* aitName(const Descriptor& signalling) {
    if (signalling.bytes.empty()) {
        return "AIT";
    }
    return listsHbbTv(signalling) ? "AIT (HbbTV)" : "AIT (not HbbTV)";
}

}  // namespace

std::string streamName(const Pmt::Stream& stream) {
    if (carriesAit(stream)) {
        return aitName(*find(stream, kApplicationSignallingDescriptor));
    }
    if (stream.streamType == kPesPrivate) {
        for (const PrivateStream& known : kPrivateStreams) {
            if (find(stream, known.tag) != nullptr) {
                return known.name;
            }
        }
    }
    return pmt_get_streamtype_txt(stream.streamType);
}

std::optional<std::uint8_t> componentTag(const Pmt::Stream& stream) {
    const Descriptor* const descriptor = find(stream, kStreamIdentifierDescriptor);
    if (descriptor == nullptr || descriptor->bytes.empty()) {
        return std::nullopt;
    }
    return descriptor->bytes[0];
}

bool hasAssociationTag(const Pmt::Stream& stream, std::uint16_t tag) {
    constexpr std::uint8_t kAssociationTagDescriptor = 0x14;
    bool hasOwn = false;
    for (const Descriptor& descriptor : stream.descriptors) {
        if (descriptor.tag == kAssociationTagDescriptor && descriptor.bytes.size() >= 2) {
            hasOwn = true;
            if ((descriptor.bytes[0] << 8U | descriptor.bytes[1]) == tag) {
                return true;
            }
        }
    }
    return !hasOwn && componentTag(stream) == tag;
}

std::string language(const Pmt::Stream& stream) {
    constexpr std::size_t kCode = 3;
    for (const std::uint8_t tag : {kLanguageDescriptor, kSubtitlingDescriptor, kTeletextDescriptor}) {
        const Descriptor* const descriptor = find(stream, tag);
        if (descriptor != nullptr && descriptor->bytes.size() >= kCode) {
            return {descriptor->bytes.begin(), descriptor->bytes.begin() + kCode};
        }
    }
    return {};
}

std::vector<std::uint16_t> hbbtvAitPids(const Pmt& pmt) {
    const bool isOnlyOne = std::count_if(pmt.streams.begin(), pmt.streams.end(), carriesAit) == 1;
    std::vector<std::uint16_t> pids;
    for (const Pmt::Stream& stream : pmt.streams) {
        if (listsHbbTv(stream) || (isOnlyOne && carriesAit(stream))) {
            pids.push_back(stream.pid);
        }
    }
    return pids;
}

bool listsHbbTvAit(const Pmt& pmt) {
    return std::any_of(pmt.streams.begin(), pmt.streams.end(),
                       [](const Pmt::Stream& stream) { return listsHbbTv(stream); });
}

}  // namespace si
