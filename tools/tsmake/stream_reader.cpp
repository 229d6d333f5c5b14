// Goes through a file twice: for the PMT with the stream, then for its packets and the clock. The time of a packet is
// that of its place between two PCRs.
#include "stream_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>

#include "packet_file.h"
#include "si/components.h"
#include "stream_times.h"

namespace tsmake {

namespace {

constexpr std::uint16_t kFirstPid = 0x0020;
constexpr std::uint16_t kLastPid = 0x1FFE;
constexpr std::size_t kMostPackets = (std::size_t{512} << 20U) / kTsPacketSize;

struct Numbered {
    std::size_t number;
    TsPacketBytes bytes;
};

/// Of the adaptation field, random_access_indicator and elementary_stream_priority_indicator remain: the rest is of the
/// other stream's clock.
void clearAdaptation(TsPacketBytes& packet) {
    constexpr unsigned int kKeptFlags = 0x60;
    if (hasAdaptation(packet) && packet[kPacketHeaderSize] != 0) {
        packet[kPacketHeaderSize + 1] = static_cast<std::uint8_t>(packet[kPacketHeaderSize + 1] & kKeptFlags);
        std::fill(packet.begin() + kPacketHeaderSize + 2,
                  packet.begin() + static_cast<std::ptrdiff_t>(payloadOf(packet)), 0xFF);
    }
}

/// Collects the stream's packets and the clock, up to the end or to a jump of the clock.
void collect(const std::string& file, std::uint16_t pid, std::uint16_t clockPid, std::vector<Numbered>& taken,
             Clock& clock, Extent& extent) {
    std::optional<unsigned int> counter;
    forEachPacket(file, [&](std::size_t number, const TsPacketBytes& packet) {
        const std::optional<std::uint64_t> value = pidOf(packet) == clockPid ? clockOf(packet) : std::nullopt;
        if (value && !clock.add(number, *value)) {
            return false;
        }
        if (clock.hasBegun()) {
            extent.take(packet, clock.origin());
        }
        if (pidOf(packet) != pid || payloadOf(packet) == kTsPacketSize || counter == (packet[3] & 0x0FU)) {
            return true;  // a packet with the counter of the one before repeats it
        }
        if ((packet[3] & 0xC0U) != 0) {
            throw ReadError("packet " + std::to_string(number + 1) + " is scrambled");
        }
        if (taken.size() == kMostPackets) {
            throw ReadError("the stream has more than 512 MiB");
        }
        counter = packet[3] & 0x0FU;
        taken.push_back({number, packet});
        clearAdaptation(taken.back().bytes);
        return true;
    });
}

bool isRandomAccess(const TsPacketBytes& packet) {
    return hasAdaptation(packet) && packet[kPacketHeaderSize] != 0 && (packet[kPacketHeaderSize + 1] & 0x40U) != 0;
}

/// The part from the first PES packet to the last one that is whole, with times. Where a stream marks its random access
/// points, it begins with one.
void takePackets(const std::vector<Numbered>& taken, const Clock& clock, InsertedStream& stream) {
    const auto begins = [](const Numbered& one) { return startsUnit(one.bytes); };
    const auto timed = [&clock](const Numbered& one) { return clock.at(one.number).has_value(); };
    const auto end = std::find_if_not(std::find_if(taken.begin(), taken.end(), timed), taken.end(), timed);
    const auto start = std::find_if(std::find_if(taken.begin(), end, timed), end, begins);
    const auto access =
        std::find_if(start, end, [&begins](const Numbered& one) { return begins(one) && isRandomAccess(one.bytes); });
    const auto first = access == end ? start : access;
    const auto last = std::find_if(std::make_reverse_iterator(end), std::make_reverse_iterator(first), begins);
    const auto behind = last == std::make_reverse_iterator(first) ? first : last.base() - 1;
    TimeStamps timeStamps(stream, clock.origin());
    for (auto each = first; each != behind; ++each) {
        stream.packets.push_back({*clock.at(each->number), each->bytes});
        timeStamps.take(stream.packets.size() - 1);
    }
    if (stream.packets.empty()) {
        throw ReadError("the PID has no whole PES packet between the first PCR and the last");
    }
}

void describe(const si::Pmt& pmt, std::uint16_t pid, InsertedStream& stream) {
    constexpr std::uint8_t kTeletext = 0x56;
    constexpr std::uint8_t kStreamIdentifier = 0x52;
    const auto listed = std::find_if(pmt.streams.begin(), pmt.streams.end(),
                                     [pid](const si::Pmt::Stream& one) { return one.pid == pid; });
    const std::vector<si::Component> components = si::components(pmt, {});
    const auto component =
        std::find_if(components.begin(), components.end(), [pid](const si::Component& one) { return one.pid == pid; });
    bool isKnown = component != components.end();
    stream.kind = isKnown ? static_cast<ComponentKind>(component->type) : ComponentKind::teletext;
    stream.streamType = listed->streamType;
    for (const si::Descriptor& descriptor : listed->descriptors) {
        if (descriptor.tag == kTeletext) {
            stream.kind = ComponentKind::teletext;
            isKnown = true;
        }
        if (descriptor.tag != kStreamIdentifier) {
            stream.descriptors += {static_cast<char>(descriptor.tag), static_cast<char>(descriptor.bytes.size())};
            stream.descriptors.append(descriptor.bytes.begin(), descriptor.bytes.end());
        }
    }
    if (!isKnown) {
        throw ReadError("the PID has neither video nor audio, subtitles or teletext");
    }
}

std::shared_ptr<const InsertedStream> streamOf(const std::string& file, std::uint16_t pid) {
    const si::Pmt pmt = pmtOf(file, pid);
    auto stream = std::make_shared<InsertedStream>();
    describe(pmt, pid, *stream);
    std::vector<Numbered> taken;
    Clock clock;
    Extent extent(pmt);
    collect(file, pid, pmt.pcrPid, taken, clock, extent);
    if (!clock.isRunning()) {
        throw ReadError("PID " + std::to_string(pmt.pcrPid) + ", the clock, has fewer than two PCRs");
    }
    stream->length = std::max(clock.length(), extent.ticks());
    takePackets(taken, clock, *stream);
    return stream;
}

std::shared_ptr<const InsertedStream> readOrNull(const StreamPlace& place, const std::string& base,
                                                 std::string& error) {
    try {
        return streamOf((std::filesystem::path(base) / place.file).string(), place.pid);
    } catch (const ReadError& problem) {
        error = place.file + ":" + std::to_string(place.pid) + ": " + problem.what();
        return nullptr;
    }
}

std::string nameOf(ComponentKind kind) {
    constexpr std::array<const char*, 4> kNames{"video", "audio", "subtitle", "teletext"};
    return kNames[static_cast<std::size_t>(kind)];
}

}  // namespace

std::optional<StreamPlace> parseStreamPlace(const std::string& text, std::string& error) {
    constexpr int kDecimal = 10;
    constexpr int kHexadecimal = 16;
    const std::size_t colon = text.rfind(':');
    const std::string number = colon == std::string::npos ? "" : text.substr(colon + 1);
    const bool isHexadecimal = number.rfind("0x", 0) == 0;
    const char* const end = number.data() + number.size();
    StreamPlace place{text.substr(0, colon), 0};
    const auto [rest, problem] = std::from_chars(number.data() + (isHexadecimal ? 2 : 0), end, place.pid,
                                                 isHexadecimal ? kHexadecimal : kDecimal);
    if (place.file.empty() || problem != std::errc() || rest != end || place.pid < kFirstPid || place.pid > kLastPid) {
        error = "\"" + text + "\" is not FILE.ts:PID with a PID from 32 to 8190";
        return std::nullopt;
    }
    return place;
}

bool readStreams(Multiplex& multiplex, const std::string& base, std::string& error) {
    for (Service& service : multiplex.services) {
        for (Component& component : service.components) {
            if (!component.place) {
                continue;
            }
            component.stream = readOrNull(*component.place, base, error);
            if (!component.stream) {
                return false;
            }
            if (component.stream->kind != component.kind) {
                error = component.place->file + ":" + std::to_string(component.place->pid) + " is " +
                        nameOf(component.stream->kind) + ", and the component is " + nameOf(component.kind);
                return false;
            }
        }
    }
    return true;
}

bool insertStream(Multiplex& multiplex, const StreamPlace& place, std::string& error) {
    const std::shared_ptr<const InsertedStream> stream = readOrNull(place, "", error);
    if (!stream) {
        return false;
    }
    for (Service& service : multiplex.services) {
        for (Component& component : service.components) {
            if (component.kind == stream->kind && !component.stream && !service.isSilent) {
                component.stream = stream;
                return true;
            }
        }
    }
    error = place.file + ":" + std::to_string(place.pid) + ": no component of kind " + nameOf(stream->kind) +
            " is left for it";
    return false;
}

}  // namespace tsmake
