// Describes AITs and their descriptors (TS 102 809, clauses 5.3.4 to 5.3.10), with a table of the known descriptors.
#include "cursor.h"
#include "describe.h"
#include "si/ait.h"
#include "si/text.h"

namespace si {

namespace {

void describeApplication(Cursor& cursor, Node& node) {
    constexpr unsigned int kServiceBound = 0x80;
    constexpr unsigned int kVisibilityShift = 5;
    constexpr unsigned int kVisibilityBits = 3;
    Cursor profiles(cursor.takeShort());
    while (profiles.left() != 0 && profiles.good()) {
        Node& profile = node.add("profile");
        profile.hex("application_profile", profiles.number(2), 4);
        const std::uint64_t major = profiles.number(1);
        const std::uint64_t minor = profiles.number(1);
        const std::uint64_t micro = profiles.number(1);
        profile.text("version", std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(micro));
    }
    const std::uint64_t flags = cursor.number(1);
    node.number("service_bound_flag", (flags & kServiceBound) != 0 ? 1 : 0);
    node.number("visibility", flags >> kVisibilityShift & kVisibilityBits);
    node.number("application_priority", cursor.number(1));
    node.bytes("transport_protocol_labels", cursor.rest());
}

void describeNames(Cursor& cursor, Node& node) {
    while (cursor.left() != 0 && cursor.good()) {
        Node& name = node.add("name");
        name.text("language", plainText(cursor.take(3))).text("application_name", toUtf8(cursor.takeShort()));
    }
}

void describeHttp(Cursor& cursor, Node& node) {
    while (cursor.left() != 0 && cursor.good()) {
        Node& url = node.add("URL");
        url.text("URL_base", plainText(cursor.takeShort()));
        for (std::uint64_t count = cursor.number(1); count != 0 && cursor.good(); --count) {
            url.text("URL_extension", plainText(cursor.takeShort()));
        }
    }
}

void describeCarousel(Cursor& cursor, Node& node) {
    constexpr unsigned int kRemote = 0x80;
    if ((cursor.number(1) & kRemote) != 0) {
        node.number("original_network_id", cursor.number(2)).number("transport_stream_id", cursor.number(2));
        node.number("service_id", cursor.number(2));
    }
    node.hex("component_tag", cursor.number(1), 2);
}

void describeTransport(Cursor& cursor, Node& node) {
    constexpr std::uint64_t kObjectCarousel = 0x0001;
    constexpr std::uint64_t kHttp = 0x0003;
    const std::uint64_t protocol = cursor.number(2);
    node.hex("protocol_id", protocol, 4).number("transport_protocol_label", cursor.number(1));
    if (protocol == kObjectCarousel) {
        node.text("protocol", "object carousel");
        describeCarousel(cursor, node);
    } else if (protocol == kHttp) {
        node.text("protocol", "HTTP");
        describeHttp(cursor, node);
    } else {
        node.bytes("selector", cursor.rest());
    }
}

void describeAuthorisation(Cursor& cursor, Node& node) {
    while (cursor.left() != 0 && cursor.good()) {
        Node& application = node.add("external_application");
        application.hex("organisation_id", cursor.number(4), 1).hex("application_id", cursor.number(2), 1);
        application.number("application_priority", cursor.number(1));
    }
}

void describeIcons(Cursor& cursor, Node& node) {
    node.text("icon_locator", plainText(cursor.takeShort())).hex("icon_flags", cursor.number(2), 4);
    cursor.rest();
}

void describeStorage(Cursor& cursor, Node& node) {
    constexpr std::uint64_t kVersionBits = 0x7FFFFFFF;
    node.number("storage_property", cursor.number(1)).hex("flags", cursor.number(1), 2);
    node.number("version", cursor.number(4) & kVersionBits).number("priority", cursor.number(1));
}

void describeGraphics(Cursor& cursor, Node& node) {
    const std::uint64_t flags = cursor.number(1);
    node.number("can_run_without_visible_ui", flags >> 2U & 1U);
    node.number("handles_configuration_changed", flags >> 1U & 1U);
    node.number("handles_externally_controlled_video", flags & 1U);
    node.bytes("graphics_configuration", cursor.rest());
}

void describeLocation(Cursor& cursor, Node& node) {
    node.text("initial_path", plainText(cursor.rest()));
}

void describeUsage(Cursor& cursor, Node& node) {
    node.hex("usage_type", cursor.number(1), 2);
}

void describeBoundary(Cursor& cursor, Node& node) {
    for (std::uint64_t count = cursor.number(1); count != 0 && cursor.good(); --count) {
        node.text("boundary_extension", plainText(cursor.takeShort()));
    }
}

struct KnownDescriptor {
    std::uint8_t tag;
    const char* name;
    void (*describe)(Cursor&, Node&);
};

constexpr KnownDescriptor kKnownDescriptors[] = {
    {0x00, "application", describeApplication},
    {0x01, "application_name", describeNames},
    {0x02, "transport_protocol", describeTransport},
    {0x05, "external_application_authorisation", describeAuthorisation},
    {0x0B, "application_icons", describeIcons},
    {0x10, "application_storage", describeStorage},
    {0x14, "graphics_constraints", describeGraphics},
    {0x15, "simple_application_location", describeLocation},
    {0x16, "application_usage", describeUsage},
    {0x17, "simple_application_boundary", describeBoundary},
};

/// Shows the fields of a known descriptor if it is long enough; anything else by its bytes.
void describeDescriptor(const Descriptor& descriptor, Node& node) {
    for (const KnownDescriptor& known : kKnownDescriptors) {
        if (known.tag == descriptor.tag) {
            Node read = node;
            read.text("is", known.name);
            Cursor cursor(descriptor.bytes);
            known.describe(cursor, read);
            if (cursor.good()) {
                node = std::move(read);
                return;
            }
        }
    }
    node.bytes("bytes", descriptor.bytes);
}

void describeLoop(const Descriptors& descriptors, Node& parent) {
    for (const Descriptor& descriptor : descriptors) {
        Node& node = parent.add("descriptor");
        node.hex("tag", descriptor.tag, 2).number("length", descriptor.bytes.size());
        describeDescriptor(descriptor, node);
    }
}

}  // namespace

bool describeAit(Bytes section, Node& node, std::string& error) {
    const std::optional<Ait> ait = parseAit(section, error);
    if (!ait) {
        return false;
    }
    node.number("test_application_flag", ait->testApplication ? 1 : 0);
    node.hex("application_type", ait->applicationType, 4).number("version_number", ait->version);
    node.number("section_number", ait->sectionNumber).number("last_section_number", ait->lastSectionNumber);
    describeLoop(ait->commonDescriptors, node);
    for (const Ait::Application& application : ait->applications) {
        Node& added = node.add("application");
        added.hex("organisation_id", application.organisationId, 1).hex("application_id", application.applicationId, 1);
        added.text("application_control_code", controlCodeName(application.controlCode));
        describeLoop(application.descriptors, added);
    }
    return true;
}

}  // namespace si
