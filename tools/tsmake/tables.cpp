// Builds the tables.
#include "tables.h"

#include <algorithm>

#include "carousel.h"
#include "si/ait_writer.h"
#include "time_fields.h"

namespace tsmake {

namespace {

constexpr unsigned int kReservedPidBits = 0xE000;
constexpr std::uint16_t kNitPid = 0x0010;
constexpr unsigned int kRunning = 4;
constexpr std::uint8_t kLanguage = 0x0A;

/// Leaves the stream's descriptor loop open.
void writeStream(SectionWriter& writer, unsigned int streamType, std::uint16_t pid, std::optional<std::uint8_t> tag) {
    constexpr std::uint8_t kStreamIdentifier = 0x52;
    writer.u8(streamType).u16(kReservedPidBits | pid).open12();
    if (tag) {
        writer.openDescriptor(kStreamIdentifier).u8(*tag).close();
    }
}

/// The language, or "und", the ISO 639-2 code for an undetermined language.
std::string codeOf(const std::string& language) {
    return language.empty() ? "und" : language;
}

/// Pages 800 to 899 belong to magazine 0.
void writeTeletextPage(SectionWriter& writer, const TeletextPage& page) {
    const unsigned int magazine = page.number / 100 % 8;
    writer.text(codeOf(page.language))
        .u8(static_cast<unsigned int>(page.type) << 3U | magazine)
        .u8(bcd(page.number % 100));
}

/// As the PMT of the other transport stream describes it; a language of the component's own takes the place of its.
void writeInserted(SectionWriter& writer, const Component& component) {
    const std::string& descriptors = component.stream->descriptors;
    const bool hasLanguage = !component.language.empty();
    writeStream(writer, component.stream->streamType, component.pid, component.tag);
    for (std::size_t at = 0; at < descriptors.size();) {
        const std::size_t size = 2 + static_cast<std::uint8_t>(descriptors[at + 1]);
        if (!hasLanguage || descriptors[at] != kLanguage) {
            writer.text(descriptors.substr(at, size));
        }
        at += size;
    }
    if (hasLanguage) {
        writer.openDescriptor(kLanguage).text(component.language).u8(0).close();
    }
    writer.close();
}

void writeComponent(SectionWriter& writer, const Component& component) {
    if (component.stream) {
        writeInserted(writer, component);
        return;
    }
    constexpr unsigned int kH264 = 0x1B;
    constexpr unsigned int kMpegAudio = 0x03;
    constexpr unsigned int kPesPrivate = 0x06;
    constexpr std::uint8_t kTeletext = 0x56;
    constexpr std::uint8_t kSubtitling = 0x59;
    switch (component.kind) {
        case Component::Kind::video:
            writeStream(writer, kH264, component.pid, component.tag);
            break;
        case Component::Kind::audio:
            writeStream(writer, kMpegAudio, component.pid, component.tag);
            if (!component.language.empty()) {
                writer.openDescriptor(kLanguage).text(component.language).u8(0).close();
            }
            break;
        case Component::Kind::subtitle:
            // Normal subtitles for any aspect ratio; composition page and ancillary page 1.
            writeStream(writer, kPesPrivate, component.pid, component.tag);
            writer.openDescriptor(kSubtitling).text(codeOf(component.language));
            writer.u8(0x10).u16(1).u16(1).close();
            break;
        case Component::Kind::teletext:
            writeStream(writer, kPesPrivate, component.pid, component.tag);
            writer.openDescriptor(kTeletext);
            for (const TeletextPage& page : component.pages) {
                writeTeletextPage(writer, page);
            }
            writer.close();
            break;
    }
    writer.close();
}

/// Leaves the stream's descriptor loop open.
void writeCarouselStream(SectionWriter& writer, std::uint16_t pid, std::uint8_t tag, std::uint32_t carouselId) {
    constexpr unsigned int kCarouselMessages = 0x0B;
    constexpr std::uint8_t kCarouselIdentifier = 0x13;
    writeStream(writer, kCarouselMessages, pid, tag);
    writer.openDescriptor(kCarouselIdentifier).u32(carouselId).u8(0).close();
}

/// Ends the descriptor loop of the stream with the DownloadServerInitiate.
void closeCarouselStream(SectionWriter& writer) {
    constexpr std::uint8_t kDataBroadcastId = 0x66;
    constexpr unsigned int kHbbTvCarousel = 0x0123;
    writer.openDescriptor(kDataBroadcastId).u16(kHbbTvCarousel).close().close();
}

void writeStreamEvents(SectionWriter& writer, const StreamEvents& events) {
    constexpr unsigned int kStreamDescriptors = 0x0C;
    writeStream(writer, kStreamDescriptors, events.pid, events.tag);
    writer.close();
    if (!events.object.empty()) {
        writeCarouselStream(writer, events.carouselPid, events.carouselTag, kCarouselId);
        closeCarouselStream(writer);
    }
}

void writeCarousel(SectionWriter& writer, const Carousel& carousel) {
    writeCarouselStream(writer, carousel.pid, carousel.tag, carousel.id);
    closeCarouselStream(writer);
    if (carousel.blockTag) {
        writeCarouselStream(writer, carousel.blockPid, *carousel.blockTag, carousel.id);
        writer.close();
    }
}

void writeService(SectionWriter& writer, std::uint16_t id, std::uint8_t type, const std::string& provider,
                  const std::string& name) {
    constexpr std::uint8_t kServiceDescriptor = 0x48;
    constexpr unsigned int kEitPresentFollowing = 0xFD;
    writer.u16(id).u8(kEitPresentFollowing).open12(kRunning << 1U);
    writer.openDescriptor(kServiceDescriptor).u8(type).lengthText(provider).lengthText(name).close().close();
}

void writeTransportStream(SectionWriter& writer, std::uint16_t tsid, std::uint16_t onid,
                          const std::string& deliverySystem) {
    writer.u16(tsid).u16(onid).open12().text(deliverySystem).close();
}

/// The best first.
std::vector<si::Ait::Transport> transportsOf(const Application& application) {
    constexpr std::uint16_t kCarousel = 0x0001;
    constexpr std::uint16_t kHttp = 0x0003;
    constexpr std::uint8_t kHttpLabel = 1;
    constexpr std::uint8_t kCarouselLabel = 2;
    std::vector<si::Ait::Transport> transports;
    if (!application.urlBase.empty() || !application.carouselTag) {
        transports.push_back({kHttp, kHttpLabel, application.urlBase});
    }
    if (application.carouselTag) {
        transports.insert(application.isCarouselFirst ? transports.begin() : transports.end(),
                          {kCarousel, kCarouselLabel, "", application.carouselTag});
    }
    return transports;
}

/// As an AIT has it.
si::Ait::Application signalled(const Application& application) {
    si::Ait::Application plain;
    plain.organisationId = application.organisationId;
    plain.applicationId = application.applicationId;
    plain.controlCode = application.controlCode;
    plain.names = {{"eng", application.name}};
    plain.transports = transportsOf(application);
    plain.initialPath = application.initialPath;
    for (const Profile& profile : application.profiles) {
        plain.profiles.push_back({profile.profile, profile.major, profile.minor, profile.micro});
    }
    plain.priority = application.priority;
    plain.isServiceBound = application.isServiceBound;
    plain.visibility = application.visibility;
    plain.boundaries = application.boundaries;
    return plain;
}

}  // namespace

Section patSection(const Multiplex& multiplex) {
    SectionWriter writer(0x00, multiplex.transportStreamId, 0);
    writer.u16(0).u16(kReservedPidBits | kNitPid);
    for (const Service& service : multiplex.services) {
        writer.u16(service.serviceId).u16(kReservedPidBits | service.pmtPid);
    }
    return writer.finish();
}

Section pmtSection(const Service& service, bool aitHasEnded) {
    constexpr unsigned int kPrivateSections = 0x05;
    constexpr std::uint8_t kApplicationSignalling = 0x6F;
    SectionWriter writer(0x02, service.serviceId, aitHasEnded ? 1 : 0);
    writer.u16(kReservedPidBits | service.pcrPid()).open12().close();
    for (const Component& component : service.components) {
        writeComponent(writer, component);
    }
    if (!service.ait.versions.empty() && !aitHasEnded) {
        writeStream(writer, kPrivateSections, service.ait.pid, service.ait.tag);
        writer.openDescriptor(kApplicationSignalling);
        if (!service.ait.emptySignalling) {
            writer.u16(0x8000U | si::kApplicationTypeHbbTv).u8(0xE0);
        }
        writer.close().close();
    }
    if (!service.streamEvents.events.empty()) {
        writeStreamEvents(writer, service.streamEvents);
    }
    for (const Carousel& carousel : service.carousels) {
        writeCarousel(writer, carousel);
    }
    for (const PrivateSections& sections : service.privateSections) {
        writeStream(writer, kPrivateSections, sections.pid, sections.tag);
        writer.close();
    }
    return writer.finish();
}

Section nitSection(const Multiplex& multiplex) {
    constexpr std::uint8_t kNetworkName = 0x40;
    SectionWriter writer(0x40, multiplex.originalNetworkId, 0);
    writer.open12().openDescriptor(kNetworkName).text(multiplex.networkName).close().close().open12();
    writeTransportStream(writer, multiplex.transportStreamId, multiplex.originalNetworkId, multiplex.deliverySystem);
    for (const OtherStream& other : multiplex.otherStreams) {
        writeTransportStream(writer, other.transportStreamId, other.originalNetworkId, other.deliverySystem);
    }
    writer.close();
    return writer.finish();
}

Section sdtSection(const Multiplex& multiplex) {
    SectionWriter writer(0x42, multiplex.transportStreamId, 0);
    writer.u16(multiplex.originalNetworkId).u8(0xFF);
    for (const Service& service : multiplex.services) {
        writeService(writer, service.serviceId, service.serviceType, multiplex.provider, service.name);
    }
    return writer.finish();
}

Section otherSdtSection(const OtherStream& stream, const std::string& provider) {
    SectionWriter writer(0x46, stream.transportStreamId, 0);
    writer.u16(stream.originalNetworkId).u8(0xFF);
    for (const OtherService& service : stream.services) {
        writeService(writer, service.serviceId, service.serviceType, provider, service.name);
    }
    return writer.finish();
}

Section aitSection(const Service& service, unsigned int number, std::size_t state) {
    const AitVersion& current = service.ait.versions[state];
    si::Ait ait;
    ait.applicationType = si::kApplicationTypeHbbTv;
    ait.version = current.version;
    ait.sectionNumber = static_cast<std::uint8_t>(number);
    ait.lastSectionNumber = static_cast<std::uint8_t>(service.ait.sections - 1);
    for (std::size_t index = number; index < current.applications.size(); index += service.ait.sections) {
        ait.applications.push_back(signalled(current.applications[index]));
    }
    return si::aitSection(ait);
}

Section streamEventSection(const Service& service, std::size_t number) {
    constexpr std::uint8_t kTableId = 0x3D;
    constexpr std::uint8_t kStreamEvent = 0x1A;
    constexpr std::uint16_t kLowBits = 0x3FFF;  // the two bits above, left 0, mean "do it now"
    constexpr unsigned int kVersions = 32;
    const StreamEvent& event = service.streamEvents.events[number];
    SectionWriter writer(kTableId, event.eventId & kLowBits, static_cast<std::uint8_t>(number % kVersions));
    writer.openDescriptor(kStreamEvent).u16(event.eventId).u32(0xFFFFFFFE).u32(0).text(event.data).close();
    return writer.finish();
}

Section privateSection(const PrivateSections& sections, std::uint32_t number) {
    constexpr std::size_t kFrame = 16;  // header, number and CRC_32
    constexpr unsigned int kVersions = 32;
    constexpr char kFiller = 0x55;
    SectionWriter writer(sections.tableId, static_cast<std::uint16_t>(number),
                         static_cast<std::uint8_t>(number % kVersions));
    return writer.u32(number).text(std::string(sections.size - kFrame, kFiller)).finish();
}

Section tdtSection(const Multiplex& multiplex, std::int64_t secondsIn) {
    // The TDT is a short-form section without version_number and CRC_32.
    SectionWriter writer(0x70, 0, 0);
    writeTime(writer, multiplex.start + secondsIn);
    Section section = writer.finish();
    constexpr std::size_t kLongHeader = 8;
    constexpr std::size_t kUtc = 5;
    Section shortForm(kUtc + si::kSectionHeaderSize);
    shortForm[0] = 0x70;
    shortForm[1] = 0x70;
    shortForm[2] = kUtc;
    std::copy_n(section.begin() + kLongHeader, kUtc, shortForm.begin() + si::kSectionHeaderSize);
    return shortForm;
}

}  // namespace tsmake
