// Building the tables.
#include "tables.h"

#include <algorithm>

#include "si/section.h"

namespace tsmake {

namespace {

constexpr unsigned int kReservedPidBits = 0xE000;
constexpr std::uint16_t kNitPid = 0x0010;
constexpr std::uint16_t kHbbTv = 0x0010;
constexpr std::time_t kEventLength = 3600;
constexpr unsigned int kRunning = 4;
constexpr unsigned int kNotRunning = 1;

unsigned int bcd(unsigned int value) {
    return value / 10 << 4U | value % 10;
}

/// Hours, minutes and seconds as six BCD digits.
void writeClock(SectionWriter& writer, std::time_t seconds) {
    const auto time = static_cast<unsigned int>(seconds % 86400);
    writer.u8(bcd(time / 3600)).u8(bcd(time / 60 % 60)).u8(bcd(time % 60));
}

/// Modified Julian Date and UTC (EN 300 468, Annex C).
void writeTime(SectionWriter& writer, std::time_t time) {
    constexpr std::time_t kEpochMjd = 40587;
    writer.u16(static_cast<unsigned int>(time / 86400 + kEpochMjd));
    writeClock(writer, time);
}

void writeStream(SectionWriter& writer, unsigned int streamType, std::uint16_t pid, unsigned int componentTag) {
    constexpr std::uint8_t kStreamIdentifier = 0x52;
    writer.u8(streamType).u16(kReservedPidBits | pid).open12();
    writer.openDescriptor(kStreamIdentifier).u8(componentTag).close();
}

void writeApplication(SectionWriter& writer, const Application& application) {
    constexpr std::uint8_t kApplicationDescriptor = 0x00;
    constexpr std::uint8_t kNameDescriptor = 0x01;
    constexpr std::uint8_t kTransportDescriptor = 0x02;
    constexpr std::uint8_t kLocationDescriptor = 0x15;
    constexpr unsigned int kHttp = 0x0003;
    constexpr unsigned int kLabel = 1;
    writer.u32(application.organisationId).u16(application.applicationId).u8(application.controlCode).open12();
    // One profile, version 1.2.1; service bound, visible to users and applications; priority 1.
    writer.openDescriptor(kApplicationDescriptor).u8(5).u16(0).u8(1).u8(2).u8(1).u8(0xFF).u8(1).u8(kLabel).close();
    writer.openDescriptor(kNameDescriptor).text("eng").lengthText(application.name).close();
    writer.openDescriptor(kTransportDescriptor).u16(kHttp).u8(kLabel);
    writer.lengthText(application.urlBase).u8(0).close();
    writer.openDescriptor(kLocationDescriptor).text(application.initialPath).close();
    writer.close();
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

Section pmtSection(const Service& service) {
    constexpr unsigned int kH264 = 0x1B;
    constexpr unsigned int kMpegAudio = 0x03;
    constexpr unsigned int kPrivateSections = 0x05;
    constexpr unsigned int kStreamDescriptors = 0x0C;
    constexpr std::uint8_t kLanguage = 0x0A;
    constexpr std::uint8_t kApplicationSignalling = 0x6F;
    SectionWriter writer(0x02, service.serviceId, 0);
    writer.u16(kReservedPidBits | service.pcrPid()).open12().close();
    if (service.hasVideo) {
        writeStream(writer, kH264, service.videoPid, 1);
        writer.close();
    }
    writeStream(writer, kMpegAudio, service.audioPid, 2);
    writer.openDescriptor(kLanguage).text("eng").u8(0).close().close();
    if (!service.applications.empty()) {
        writeStream(writer, kPrivateSections, service.aitPid, 5);
        writer.openDescriptor(kApplicationSignalling).u16(0x8000U | kHbbTv).u8(0xE0).close().close();
    }
    if (!service.streamEvents.empty()) {
        writeStream(writer, kStreamDescriptors, service.streamEventPid, 7);
        writer.close();
    }
    return writer.finish();
}

Section nitSection(const Multiplex& multiplex) {
    constexpr std::uint8_t kNetworkName = 0x40;
    constexpr std::uint8_t kCableDelivery = 0x44;
    SectionWriter writer(0x40, multiplex.originalNetworkId, 0);
    writer.open12().openDescriptor(kNetworkName).text(multiplex.networkName).close().close();
    writer.open12().u16(multiplex.transportStreamId).u16(multiplex.originalNetworkId).open12();
    // 346 MHz, 256-QAM, 6.9 Msymbol/s.
    writer.openDescriptor(kCableDelivery).u32(0x03460000).u16(0xFFF2).u8(0x05).u32(0x00690000U | 0x0F).close();
    writer.close().close();
    return writer.finish();
}

Section sdtSection(const Multiplex& multiplex) {
    constexpr std::uint8_t kServiceDescriptor = 0x48;
    SectionWriter writer(0x42, multiplex.transportStreamId, 0);
    writer.u16(multiplex.originalNetworkId).u8(0xFF);
    for (const Service& service : multiplex.services) {
        constexpr unsigned int kEitPresentFollowing = 0xFD;
        writer.u16(service.serviceId).u8(kEitPresentFollowing).open12(kRunning << 1U);
        writer.openDescriptor(kServiceDescriptor).u8(service.serviceType);
        writer.lengthText(multiplex.provider).lengthText(service.name).close().close();
    }
    return writer.finish();
}

Section eitSection(const Multiplex& multiplex, const Service& service, bool following) {
    constexpr std::uint8_t kShortEvent = 0x4D;
    constexpr unsigned int kTableId = 0x4E;
    const Event& event = following ? service.following : service.present;
    SectionWriter writer(kTableId, service.serviceId, 0, following ? 1 : 0, 1);
    writer.u16(multiplex.transportStreamId).u16(multiplex.originalNetworkId).u8(1).u8(kTableId);
    writer.u16(event.eventId);
    writeTime(writer, multiplex.start + (following ? kEventLength : 0));
    writeClock(writer, kEventLength);
    writer.open12((following ? kNotRunning : kRunning) << 1U);
    writer.openDescriptor(kShortEvent).text("eng").lengthText(event.name).lengthText(event.text).close().close();
    return writer.finish();
}

Section aitSection(const Service& service, unsigned int number, unsigned int changes) {
    constexpr unsigned int kVersions = 32;
    const auto version = static_cast<std::uint8_t>((1 + changes) % kVersions);
    SectionWriter writer(0x74, kHbbTv, version, static_cast<std::uint8_t>(number),
                         static_cast<std::uint8_t>(service.aitSections - 1));
    writer.open12().close().open12();
    for (std::size_t index = number; index < service.applications.size(); index += service.aitSections) {
        Application application = service.applications[index];
        if (service.aitLifetime != 0) {
            application.initialPath += "?changes=" + std::to_string(changes);
        }
        writeApplication(writer, application);
    }
    writer.close();
    return writer.finish();
}

Section streamEventSection(const Service& service, std::size_t number) {
    constexpr std::uint8_t kTableId = 0x3D;
    constexpr std::uint8_t kStreamEvent = 0x1A;
    constexpr std::uint16_t kLowBits = 0x3FFF;  // those above say that it is to be done now
    constexpr unsigned int kVersions = 32;
    const StreamEvent& event = service.streamEvents[number];
    SectionWriter writer(kTableId, event.eventId & kLowBits, static_cast<std::uint8_t>(number % kVersions));
    writer.openDescriptor(kStreamEvent).u16(event.eventId).u32(0xFFFFFFFE).u32(0).text(event.data).close();
    return writer.finish();
}

Section tdtSection(const Multiplex& multiplex, std::time_t secondsIn) {
    // A short form: neither version nor CRC_32.
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
