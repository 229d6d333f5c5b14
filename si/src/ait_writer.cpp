// Writes AIT sections.
#include "si/ait_writer.h"

namespace si {

namespace {

void writeApplicationDescriptor(SectionWriter& writer, const Ait::Application& application) {
    constexpr std::uint8_t kApplicationDescriptor = 0x00;
    constexpr unsigned int kProfileSize = 5;
    constexpr unsigned int kReservedBits = 0x1F;
    writer.openDescriptor(kApplicationDescriptor);
    writer.u8(static_cast<unsigned int>(application.profiles.size()) * kProfileSize);
    for (const Ait::Profile& profile : application.profiles) {
        writer.u16(profile.profile).u8(profile.major).u8(profile.minor).u8(profile.micro);
    }
    const unsigned int serviceBound = application.isServiceBound ? 1 : 0;
    writer.u8(serviceBound << 7U | static_cast<unsigned int>(application.visibility) << 5U | kReservedBits);
    writer.u8(application.priority);
    for (const Ait::Transport& transport : application.transports) {
        writer.u8(transport.label);
    }
    writer.close();
}

void writeNames(SectionWriter& writer, const Ait::Application& application) {
    constexpr std::uint8_t kNameDescriptor = 0x01;
    if (!application.names.empty()) {
        writer.openDescriptor(kNameDescriptor);
        for (const Ait::Name& name : application.names) {
            writer.text(name.language).lengthText(name.text);
        }
        writer.close();
    }
}

void writeBoundaries(SectionWriter& writer, const Ait::Application& application) {
    constexpr std::uint8_t kBoundaryDescriptor = 0x17;
    if (!application.boundaries.empty()) {
        writer.openDescriptor(kBoundaryDescriptor).u8(static_cast<unsigned int>(application.boundaries.size()));
        for (const std::string& boundary : application.boundaries) {
            writer.lengthText(boundary);
        }
        writer.close();
    }
}

/// A transport with a component_tag is by a carousel of the service, any other by HTTP.
void writeTransport(SectionWriter& writer, const Ait::Transport& transport) {
    constexpr std::uint8_t kTransportDescriptor = 0x02;
    constexpr unsigned int kNoRemoteConnection = 0x7F;
    constexpr unsigned int kNoExtensions = 0;
    writer.openDescriptor(kTransportDescriptor).u16(transport.protocolId).u8(transport.label);
    if (transport.componentTag) {
        writer.u8(kNoRemoteConnection).u8(*transport.componentTag);
    } else {
        writer.lengthText(transport.urlBase).u8(kNoExtensions);
    }
    writer.close();
}

void writeApplication(SectionWriter& writer, const Ait::Application& application) {
    constexpr std::uint8_t kLocationDescriptor = 0x15;
    writer.u32(application.organisationId).u16(application.applicationId).u8(application.controlCode).open12();
    writeApplicationDescriptor(writer, application);
    writeNames(writer, application);
    for (const Ait::Transport& transport : application.transports) {
        writeTransport(writer, transport);
    }
    writer.openDescriptor(kLocationDescriptor).text(application.initialPath).close();
    writeBoundaries(writer, application);
    writer.close();
}

}  // namespace

Section aitSection(const Ait& ait) {
    constexpr std::uint8_t kTableId = 0x74;
    constexpr unsigned int kTestApplication = 0x8000;
    const unsigned int type = ait.applicationType | (ait.testApplication ? kTestApplication : 0U);
    SectionWriter writer(kTableId, static_cast<std::uint16_t>(type), ait.version, ait.sectionNumber,
                         ait.lastSectionNumber);
    writer.open12().close().open12();
    for (const Ait::Application& application : ait.applications) {
        writeApplication(writer, application);
    }
    writer.close();
    return writer.finish();
}

}  // namespace si
