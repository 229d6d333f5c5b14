// Describes the headers of DSM-CC download messages and stream descriptors (ISO/IEC 13818-6, clauses 2.1, 7.2, 7.3 and
// 8).
#include <bitstream/mpeg/psi.h>

#include "checked_section.h"
#include "cursor.h"
#include "describe.h"

namespace si {

namespace {

constexpr std::size_t kCrc = 4;
constexpr std::size_t kHeader = 8;
constexpr std::uint64_t kDownloadInfoIndication = 0x1002;
constexpr std::uint64_t kDownloadDataBlock = 0x1003;
constexpr std::uint64_t kDownloadServerInitiate = 0x1006;

const char* messageName(std::uint64_t messageId) {
    switch (messageId) {
        case kDownloadInfoIndication:
            return "DownloadInfoIndication";
        case kDownloadDataBlock:
            return "DownloadDataBlock";
        case kDownloadServerInitiate:
            return "DownloadServerInitiate";
        default:
            return "unknown";
    }
}

void describeModules(Cursor& cursor, Node& node) {
    const std::uint64_t count = cursor.number(2);
    for (std::uint64_t index = 0; index < count && cursor.good(); ++index) {
        Node& module = node.add("module");
        module.hex("moduleId", cursor.number(2), 4).number("moduleSize", cursor.number(4));
        module.number("moduleVersion", cursor.number(1)).bytes("moduleInfo", cursor.takeShort());
    }
}

void describeInfoIndication(Cursor& cursor, Node& node) {
    constexpr std::size_t kWindowsAndTimers = 10;
    node.hex("downloadId", cursor.number(4), 8).number("blockSize", cursor.number(2));
    cursor.take(kWindowsAndTimers);
    node.bytes("compatibilityDescriptor", cursor.take(cursor.size(2)));
    describeModules(cursor, node);
    node.bytes("privateData", cursor.take(cursor.size(2)));
}

void describeServerInitiate(Cursor& cursor, Node& node) {
    constexpr std::size_t kServerId = 20;
    node.bytes("serverId", cursor.take(kServerId));
    node.bytes("compatibilityDescriptor", cursor.take(cursor.size(2)));
    node.bytes("privateData", cursor.take(cursor.size(2)));
}

void describeDataBlock(Cursor& cursor, Node& node) {
    node.hex("moduleId", cursor.number(2), 4).number("moduleVersion", cursor.number(1));
    cursor.number(1);
    node.number("blockNumber", cursor.number(2)).number("blockDataBytes", cursor.left());
}

void describeStreamEvent(Bytes bytes, Node& node) {
    constexpr std::uint64_t kNptBits = 0x1FFFFFFFF;
    Cursor cursor(bytes);
    node.text("is", "stream_event").number("eventId", cursor.number(2));
    node.number("eventNPT", cursor.number(8) & kNptBits);
    node.bytes("privateData", cursor.rest());
}

void describeHeader(const std::uint8_t* section, Node& node) {
    node.hex("table_id_extension", psi_get_tableidext(section), 4);
    node.number("version_number", psi_get_version(section)).number("section_number", psi_get_section(section));
    node.number("last_section_number", psi_get_lastsection(section));
}

}  // namespace

bool describeDsmccMessage(Bytes section, Node& node, std::string& error) {
    const std::vector<std::uint8_t> bytes = checkedSection(section, "DSM-CC", error);
    if (bytes.empty()) {
        return false;
    }
    describeHeader(bytes.data(), node);
    Cursor cursor({bytes.data() + kHeader, bytes.size() - kHeader - kCrc});
    node.hex("protocolDiscriminator", cursor.number(1), 2).hex("dsmccType", cursor.number(1), 2);
    const std::uint64_t messageId = cursor.number(2);
    node.text("message", messageName(messageId)).hex("messageId", messageId, 4);
    node.hex(messageId == kDownloadDataBlock ? "downloadId" : "transactionId", cursor.number(4), 8);
    cursor.number(1);
    const std::size_t adaptation = cursor.size(1);
    node.number("messageLength", cursor.number(2));
    node.bytes("dsmccAdaptation", cursor.take(adaptation));
    if (messageId == kDownloadInfoIndication) {
        describeInfoIndication(cursor, node);
    } else if (messageId == kDownloadServerInitiate) {
        describeServerInitiate(cursor, node);
    } else if (messageId == kDownloadDataBlock) {
        describeDataBlock(cursor, node);
    }
    if (!cursor.good()) {
        error = "DSM-CC section: fields do not fit";
    }
    return cursor.good();
}

bool describeStreamDescriptors(Bytes section, Node& node, std::string& error) {
    constexpr std::uint8_t kStreamEvent = 0x1A;
    constexpr std::size_t kShortestEvent = 10;
    const std::vector<std::uint8_t> bytes = checkedSection(section, "DSM-CC", error);
    if (bytes.empty()) {
        return false;
    }
    describeHeader(bytes.data(), node);
    forEachDescriptor({bytes.data() + kHeader, bytes.size() - kHeader - kCrc}, node,
                      [](const Descriptor& descriptor, Node& added) {
                          if (descriptor.tag == kStreamEvent && descriptor.bytes.size() >= kShortestEvent) {
                              describeStreamEvent(descriptor.bytes, added);
                          } else {
                              added.bytes("bytes", descriptor.bytes);
                          }
                      });
    return true;
}

}  // namespace si
