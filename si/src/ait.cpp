// Reads AIT sections.
#include "si/ait.h"

#include <algorithm>

#include "checked_section.h"
#include "cursor.h"
#include "si/text.h"

namespace si {

namespace {

constexpr std::uint8_t kAitTableId = 0x74;
constexpr std::uint8_t kApplicationDescriptor = 0x00;
constexpr std::uint8_t kNameDescriptor = 0x01;
constexpr std::uint8_t kTransportDescriptor = 0x02;
constexpr std::uint8_t kLocationDescriptor = 0x15;
constexpr std::uint8_t kUsageDescriptor = 0x16;
constexpr std::uint8_t kBoundaryDescriptor = 0x17;
constexpr std::uint16_t kProtocolCarousel = 0x0001;
constexpr std::uint16_t kProtocolHttp = 0x0003;
constexpr std::size_t kHeader = 8;
constexpr std::size_t kCrc = 4;
constexpr std::size_t kApplicationHeader = 9;

void readNames(Bytes bytes, Ait::Application& application) {
    Cursor cursor(bytes);
    while (cursor.left() != 0 && cursor.good()) {
        Ait::Name name;
        name.language = plainText(cursor.take(3));
        name.text = toUtf8(cursor.takeShort());
        if (cursor.good()) {
            application.names.push_back(name);
        }
    }
}

/// The component_tag of a carousel that no other service has (TS 102 809, clause 5.3.6.1).
std::optional<std::uint8_t> carouselTag(Cursor& selector) {
    constexpr std::uint64_t kRemoteConnection = 0x80;
    if ((selector.number(1) & kRemoteConnection) != 0) {
        return std::nullopt;
    }
    const auto tag = static_cast<std::uint8_t>(selector.number(1));
    return selector.good() ? std::optional(tag) : std::nullopt;
}

std::optional<Ait::Transport> transportOf(Bytes bytes) {
    Cursor cursor(bytes);
    Ait::Transport transport;
    transport.protocolId = static_cast<std::uint16_t>(cursor.number(2));
    transport.label = static_cast<std::uint8_t>(cursor.number(1));
    if (transport.protocolId == kProtocolHttp) {
        transport.urlBase = plainText(cursor.takeShort());
    } else if (transport.protocolId == kProtocolCarousel) {
        transport.componentTag = carouselTag(cursor);
    }
    return cursor.good() ? std::optional(transport) : std::nullopt;
}

void readTransport(Bytes bytes, Ait::Application& application) {
    if (const std::optional<Ait::Transport> transport = transportOf(bytes)) {
        application.transports.push_back(*transport);
    }
}

/// A transport in the common loop is one of all applications that list its label (TS 102 809, clause 5.3.6).
void addCommonTransports(const Descriptors& common, Bytes labels, Ait::Application& application) {
    for (const Descriptor& descriptor : common) {
        const std::optional<Ait::Transport> transport =
            descriptor.tag == kTransportDescriptor ? transportOf(descriptor.bytes) : std::nullopt;
        if (transport &&
            std::find(labels.data, labels.data + labels.size, transport->label) != labels.data + labels.size) {
            application.transports.push_back(*transport);
        }
    }
}

/// The application descriptor: profiles, a byte of flags, the priority, labels of transports (TS 102 809, clause
/// 5.3.5.3).
void readApplicationDescriptor(Bytes bytes, const Descriptors& common, Ait::Application& application) {
    Cursor cursor(bytes);
    Cursor profiles(cursor.takeShort());
    const std::uint64_t flags = cursor.number(1);
    application.isServiceBound = (flags & 0x80U) != 0;
    application.visibility = static_cast<std::uint8_t>(flags >> 5U & 0x03U);
    application.priority = static_cast<std::uint8_t>(cursor.number(1));
    addCommonTransports(common, cursor.rest(), application);
    while (profiles.left() != 0 && profiles.good()) {
        Ait::Profile profile;
        profile.profile = static_cast<std::uint16_t>(profiles.number(2));
        profile.major = static_cast<std::uint8_t>(profiles.number(1));
        profile.minor = static_cast<std::uint8_t>(profiles.number(1));
        profile.micro = static_cast<std::uint8_t>(profiles.number(1));
        if (profiles.good()) {
            application.profiles.push_back(profile);
        }
    }
}

void readBoundaries(Bytes bytes, Ait::Application& application) {
    Cursor cursor(bytes);
    const std::size_t count = cursor.size(1);
    for (std::size_t index = 0; index < count && cursor.good(); ++index) {
        std::string boundary = plainText(cursor.takeShort());
        if (cursor.good()) {
            application.boundaries.push_back(std::move(boundary));
        }
    }
}

void readApplicationDescriptors(const Descriptors& common, Ait::Application& application) {
    for (const Descriptor& descriptor : application.descriptors) {
        if (descriptor.tag == kNameDescriptor) {
            readNames(descriptor.bytes, application);
        } else if (descriptor.tag == kTransportDescriptor) {
            readTransport(descriptor.bytes, application);
        } else if (descriptor.tag == kLocationDescriptor) {
            application.initialPath = plainText(descriptor.bytes);
        } else if (descriptor.tag == kApplicationDescriptor) {
            readApplicationDescriptor(descriptor.bytes, common, application);
        } else if (descriptor.tag == kUsageDescriptor && !descriptor.bytes.empty()) {
            application.usage = descriptor.bytes[0];
        } else if (descriptor.tag == kBoundaryDescriptor) {
            readBoundaries(descriptor.bytes, application);
        }
    }
}

/// The application descriptor lists the labels in the order in which a terminal is to prefer the transports (TS 102
/// 809, clause 5.3.5.3). Those that it does not list come last.
void orderTransports(Ait::Application& application) {
    constexpr std::size_t kFlagsAndPriority = 2;
    Bytes labels;
    for (const Descriptor& descriptor : application.descriptors) {
        if (descriptor.tag == kApplicationDescriptor) {
            Cursor cursor(descriptor.bytes);
            cursor.takeShort();
            cursor.take(kFlagsAndPriority);
            labels = cursor.rest();
        }
    }
    const auto placeOf = [&labels](const Ait::Transport& transport) {
        return std::find(labels.data, labels.data + labels.size, transport.label) - labels.data;
    };
    std::stable_sort(application.transports.begin(), application.transports.end(),
                     [&placeOf](const auto& one, const auto& other) { return placeOf(one) < placeOf(other); });
}

bool readApplications(Bytes loop, Ait& ait) {
    Cursor cursor(loop);
    while (cursor.left() != 0) {
        if (cursor.left() < kApplicationHeader) {
            return false;
        }
        Ait::Application application;
        application.organisationId = static_cast<std::uint32_t>(cursor.number(4));
        application.applicationId = static_cast<std::uint16_t>(cursor.number(2));
        application.controlCode = static_cast<std::uint8_t>(cursor.number(1));
        if (!readDescriptors(cursor.takeLong(), application.descriptors) || !cursor.good()) {
            return false;
        }
        readApplicationDescriptors(ait.commonDescriptors, application);
        orderTransports(application);
        ait.applications.push_back(application);
    }
    return true;
}

constexpr const char* kControlCodes[] = {"",         "AUTOSTART", "PRESENT",  "DESTROY",           "KILL",
                                         "PREFETCH", "REMOTE",    "DISABLED", "PLAYBACK_AUTOSTART"};

}  // namespace

std::string Ait::Application::urlBase() const {
    for (const Transport& transport : transports) {
        if (transport.protocolId == kProtocolHttp) {
            return transport.urlBase;
        }
    }
    return {};
}

std::string Ait::Application::url() const {
    return urlBase() + initialPath;
}

std::optional<Ait> parseAit(Bytes section, std::string& error) {
    const std::vector<std::uint8_t> bytes = checkedSection(section, "AIT", error);
    if (bytes.empty()) {
        return std::nullopt;
    }
    if (bytes[0] != kAitTableId) {
        error = "AIT section: table_id is " + std::to_string(bytes[0]);
        return std::nullopt;
    }
    Ait ait;
    ait.testApplication = (bytes[3] & 0x80) != 0;
    ait.applicationType = static_cast<std::uint16_t>((bytes[3] & 0x7F) << 8 | bytes[4]);
    ait.version = (bytes[5] >> 1) & 0x1F;
    ait.sectionNumber = bytes[6];
    ait.lastSectionNumber = bytes[7];
    Cursor cursor({bytes.data() + kHeader, bytes.size() - kHeader - kCrc});
    const bool commonFits = readDescriptors(cursor.takeLong(), ait.commonDescriptors);
    const Bytes loop = cursor.takeLong();
    if (!commonFits || !cursor.good()) {
        error = "AIT section: common descriptors do not fit";
        return std::nullopt;
    }
    if (cursor.left() != 0 || !readApplications(loop, ait)) {
        error = "AIT section: application loop does not fit, application " + std::to_string(ait.applications.size());
        return std::nullopt;
    }
    return ait;
}

std::string controlCodeName(std::uint8_t controlCode) {
    if (controlCode == 0 || controlCode >= std::size(kControlCodes)) {
        return std::to_string(controlCode);
    }
    return kControlCodes[controlCode];
}

}  // namespace si
