// Adds an application's signalling to PMTs.
#include "added_application.h"

#include <set>

#include "si/ait_writer.h"

namespace broadcast {

namespace {

constexpr std::uint8_t kPrivateSections = 0x05;
constexpr std::uint8_t kApplicationSignalling = 0x6F;
constexpr std::uint8_t kAitVersion = 0;
constexpr std::size_t kLongestPmt = 1024;
constexpr std::uint16_t kHighestPid = 0x1FFE;
constexpr unsigned int kReservedPidBits = 0xE000;

void noteCaPids(const si::Descriptors& descriptors, std::set<std::uint16_t>& pids) {
    constexpr std::uint8_t kCaDescriptor = 0x09;
    constexpr std::size_t kPidAt = 2;
    constexpr std::uint16_t kPidBits = 0x1FFF;
    for (const si::Descriptor& descriptor : descriptors) {
        if (descriptor.tag == kCaDescriptor && descriptor.bytes.size() >= kPidAt + 2) {
            pids.insert(wordAt(descriptor.bytes, kPidAt) & kPidBits);
        }
    }
}

std::uint16_t unusedPid(const si::Pmt& pmt) {
    std::set<std::uint16_t> used = {pmt.pcrPid};
    noteCaPids(pmt.descriptors, used);
    for (const si::Pmt::Stream& stream : pmt.streams) {
        used.insert(stream.pid);
        noteCaPids(stream.descriptors, used);
    }
    std::uint16_t pid = kHighestPid;
    while (used.count(pid) != 0) {
        --pid;
    }
    return pid;
}

/// The entries of an application_signalling_descriptor that are not HbbTV's.
si::Descriptor withoutHbbTv(const si::Descriptor& signalling) {
    constexpr std::size_t kEntry = 3;
    constexpr std::uint16_t kTypeBits = 0x7FFF;
    si::Descriptor others = {signalling.tag, {}};
    for (std::size_t at = 0; at + kEntry <= signalling.bytes.size(); at += kEntry) {
        if ((wordAt(signalling.bytes, at) & kTypeBits) != si::kApplicationTypeHbbTv) {
            const auto entry = signalling.bytes.begin() + static_cast<std::ptrdiff_t>(at);
            others.bytes.insert(others.bytes.end(), entry, entry + kEntry);
        }
    }
    return others;
}

/// The stream without the signalling of HbbTV's AIT; no value if no signalling is left. A descriptor that lists no
/// application_type stands for any.
std::optional<si::Pmt::Stream> withoutHbbTv(const si::Pmt::Stream& stream) {
    si::Pmt::Stream others = stream;
    for (si::Descriptor& descriptor : others.descriptors) {
        if (stream.streamType == kPrivateSections && descriptor.tag == kApplicationSignalling) {
            descriptor = withoutHbbTv(descriptor);
            if (descriptor.bytes.empty()) {
                return std::nullopt;
            }
        }
    }
    return others;
}

si::Pmt::Stream aitStream(std::uint16_t pid) {
    return {kPrivateSections, pid, {{kApplicationSignalling, {0x80, si::kApplicationTypeHbbTv, 0xE0 | kAitVersion}}}};
}

void writeDescriptors(si::SectionWriter& writer, const si::Descriptors& descriptors) {
    writer.open12();
    for (const si::Descriptor& descriptor : descriptors) {
        writer.openDescriptor(descriptor.tag).text({descriptor.bytes.begin(), descriptor.bytes.end()}).close();
    }
    writer.close();
}

std::size_t sizeOf(const si::Descriptors& descriptors) {
    std::size_t size = 0;
    for (const si::Descriptor& descriptor : descriptors) {
        size += 2 + descriptor.bytes.size();
    }
    return size;
}

std::size_t sizeOf(const si::Pmt& pmt) {
    constexpr std::size_t kFrame = 16;  // header, PCR_PID, program_info_length and CRC_32
    constexpr std::size_t kStreamHeader = 5;
    std::size_t size = kFrame + sizeOf(pmt.descriptors);
    for (const si::Pmt::Stream& stream : pmt.streams) {
        size += kStreamHeader + sizeOf(stream.descriptors);
    }
    return size;
}

Section sectionOf(const si::Pmt& pmt) {
    constexpr std::uint8_t kTableId = 0x02;
    si::SectionWriter writer(kTableId, pmt.serviceId, pmt.version);
    writer.u16(kReservedPidBits | pmt.pcrPid);
    writeDescriptors(writer, pmt.descriptors);
    for (const si::Pmt::Stream& stream : pmt.streams) {
        writer.u8(stream.streamType).u16(kReservedPidBits | stream.pid);
        writeDescriptors(writer, stream.descriptors);
    }
    return writer.finish();
}

}  // namespace

AddedApplication::AddedApplication(si::Ait::Application application) {
    si::Ait ait;
    ait.applicationType = si::kApplicationTypeHbbTv;
    ait.version = kAitVersion;
    ait.applications.push_back(std::move(application));
    ait_ = si::aitSection(ait);
}

std::optional<Section> AddedApplication::signalledIn(const si::Pmt& pmt) const {
    si::Pmt changed = pmt;
    changed.streams.clear();
    for (const si::Pmt::Stream& stream : pmt.streams) {
        if (std::optional<si::Pmt::Stream> others = withoutHbbTv(stream)) {
            changed.streams.push_back(std::move(*others));
        }
    }
    changed.streams.push_back(aitStream(unusedPid(pmt)));
    return sizeOf(changed) > kLongestPmt ? std::nullopt : std::optional(sectionOf(changed));
}

}  // namespace broadcast
