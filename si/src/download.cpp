// Reads download messages.
#include "si/download.h"

#include "biop_fields.h"

namespace si {

namespace {

constexpr std::size_t kHeader = 8;
constexpr std::size_t kCrc = 4;
constexpr std::uint16_t kDownloadInfoIndication = 0x1002;
constexpr std::uint16_t kDownloadDataBlock = 0x1003;
constexpr std::uint16_t kDownloadServerInitiate = 0x1006;

/// The header of every download message (dsmccMessageHeader, dsmccDownloadDataHeader).
struct Message {
    std::uint32_t transactionOrDownloadId = 0;
    Bytes payload;
};

std::optional<Message> messageOf(Bytes section, std::uint8_t tableId, std::uint16_t messageId) {
    if (section.size < kHeader + kCrc || section.data[0] != tableId) {
        return std::nullopt;
    }
    Cursor cursor({section.data + kHeader, section.size - kHeader - kCrc});
    constexpr std::uint64_t kProtocolAndType = 0x1103;
    const bool isIt = cursor.number(2) == kProtocolAndType && cursor.number(2) == messageId;
    Message message;
    message.transactionOrDownloadId = static_cast<std::uint32_t>(cursor.number(4));
    cursor.take(1);
    const std::size_t adaptation = cursor.size(1);
    const std::size_t length = cursor.size(2);
    cursor.take(adaptation);
    message.payload = length < adaptation ? Bytes() : cursor.take(length - adaptation);
    return isIt && cursor.good() ? std::optional(message) : std::nullopt;
}

/// The size from the compressed module descriptor.
std::optional<std::uint32_t> originalSizeIn(Bytes userInfo) {
    constexpr std::uint8_t kCompressedModule = 0x09;
    Descriptors descriptors;
    readDescriptors(userInfo, descriptors);
    for (const Descriptor& descriptor : descriptors) {
        if (descriptor.tag == kCompressedModule) {
            Cursor fields(descriptor.bytes);
            fields.take(1);  // the compression method, which the module's bytes contain, too
            const auto size = static_cast<std::uint32_t>(fields.number(4));
            return fields.good() ? std::optional(size) : std::nullopt;
        }
    }
    return std::nullopt;
}

/// Time-outs, taps and descriptors of a module (BIOP::ModuleInfo).
void readModuleInfo(Bytes info, DownloadInfo::Module& module) {
    constexpr std::size_t kTimeOuts = 12;
    constexpr std::uint64_t kObjectUse = 0x0017;
    Cursor cursor(info);
    cursor.take(kTimeOuts);
    readCounted(cursor, 1, [&] {
        const Tap tap = readTap(cursor);
        if (tap.use == kObjectUse && cursor.good() && !module.associationTag) {
            module.associationTag = tap.associationTag;
        }
    });
    module.originalSize = originalSizeIn(cursor.takeShort());
}

}  // namespace

std::optional<ObjectReference> serviceGateway(Bytes section) {
    const std::optional<Message> message = messageOf(section, kDownloadControlTableId, kDownloadServerInitiate);
    if (!message) {
        return std::nullopt;
    }
    constexpr std::size_t kServerId = 20;
    Cursor cursor(message->payload);
    cursor.take(kServerId);
    cursor.take(cursor.size(2));  // compatibility descriptor
    Cursor info(cursor.take(cursor.size(2)));
    const std::optional<ObjectReference> gateway = readReference(info);
    return gateway && !gateway->elsewhere ? gateway : std::nullopt;
}

std::optional<DownloadInfo> downloadInfo(Bytes section) {
    const std::optional<Message> message = messageOf(section, kDownloadControlTableId, kDownloadInfoIndication);
    if (!message) {
        return std::nullopt;
    }
    constexpr std::size_t kWindowsAndTimers = 10;
    Cursor cursor(message->payload);
    DownloadInfo info;
    info.transactionId = message->transactionOrDownloadId;
    info.downloadId = static_cast<std::uint32_t>(cursor.number(4));
    info.blockSize = static_cast<std::uint16_t>(cursor.number(2));
    cursor.take(kWindowsAndTimers);
    cursor.take(cursor.size(2));  // compatibility descriptor
    readCounted(cursor, 2, [&] {
        DownloadInfo::Module module;
        module.id = static_cast<std::uint16_t>(cursor.number(2));
        module.size = static_cast<std::uint32_t>(cursor.number(4));
        module.version = static_cast<std::uint8_t>(cursor.number(1));
        readModuleInfo(cursor.takeShort(), module);
        info.modules.push_back(module);
    });
    return cursor.good() ? std::optional(std::move(info)) : std::nullopt;
}

std::optional<DownloadBlock> downloadBlock(Bytes section) {
    const std::optional<Message> message = messageOf(section, kDownloadDataTableId, kDownloadDataBlock);
    if (!message) {
        return std::nullopt;
    }
    Cursor cursor(message->payload);
    DownloadBlock block;
    block.downloadId = message->transactionOrDownloadId;
    block.moduleId = static_cast<std::uint16_t>(cursor.number(2));
    block.moduleVersion = static_cast<std::uint8_t>(cursor.number(1));
    cursor.take(1);
    block.number = static_cast<std::uint16_t>(cursor.number(2));
    block.data = cursor.rest();
    return cursor.good() ? std::optional(block) : std::nullopt;
}

}  // namespace si
