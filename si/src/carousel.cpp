// Reads carousels.
#include "si/carousel.h"

#include "cursor.h"

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

/// Removes the zero byte at the end of names and kinds.
std::string textOf(Bytes bytes) {
    std::string text = plainText(bytes);
    while (!text.empty() && text.back() == '\0') {
        text.pop_back();
    }
    return text;
}

CarouselObject::Kind kindOf(Bytes bytes) {
    const std::string kind = textOf(bytes);
    if (kind == "dir" || kind == "srg") {
        return CarouselObject::Kind::directory;
    }
    return kind == "ste" ? CarouselObject::Kind::streamEvent : CarouselObject::Kind::other;
}

/// The object location of a BIOP profile.
std::optional<ObjectReference> locationIn(Bytes profile) {
    constexpr std::uint64_t kObjectLocation = 0x49534F50;
    Cursor cursor(profile);
    cursor.take(1);  // byte order
    const std::uint64_t components = cursor.number(1);
    for (std::uint64_t index = 0; index < components && cursor.good(); ++index) {
        const bool isLocation = cursor.number(4) == kObjectLocation;
        const Bytes data = cursor.takeShort();
        if (isLocation && cursor.good()) {
            Cursor location(data);
            ObjectReference reference;
            reference.carouselId = static_cast<std::uint32_t>(location.number(4));
            reference.moduleId = static_cast<std::uint16_t>(location.number(2));
            location.take(2);  // version
            reference.key = plainText(location.takeShort());
            return location.good() ? std::optional(reference) : std::nullopt;
        }
    }
    return std::nullopt;
}

/// An interoperable object reference; none if it refers to an object outside the carousel.
std::optional<ObjectReference> referenceIn(Cursor& cursor) {
    constexpr std::uint64_t kBiopProfile = 0x49534F06;
    constexpr std::size_t kAlignment = 4;
    const std::size_t typeLength = cursor.size(4);
    cursor.take(typeLength);
    cursor.take((kAlignment - typeLength % kAlignment) % kAlignment);
    const std::uint64_t profiles = cursor.number(4);
    std::optional<ObjectReference> reference;
    for (std::uint64_t index = 0; index < profiles && cursor.good(); ++index) {
        const bool isBiop = cursor.number(4) == kBiopProfile;
        const Bytes profile = cursor.take(cursor.size(4));
        if (isBiop && cursor.good() && !reference) {
            reference = locationIn(profile);
        }
    }
    return reference;
}

/// Reads a count, then calls `read` as many times.
template <typename Read>
void readCounted(Cursor& cursor, std::size_t countWidth, Read read) {
    const std::uint64_t count = cursor.number(countWidth);
    for (std::uint64_t index = 0; index < count && cursor.good(); ++index) {
        read();
    }
}

/// The size from the compressed module descriptor, after the time-outs and taps (BIOP::ModuleInfo).
std::optional<std::uint32_t> originalSizeIn(Bytes info) {
    constexpr std::uint8_t kCompressedModule = 0x09;
    constexpr std::size_t kTimeOuts = 12;
    constexpr std::size_t kTapHead = 6;
    Cursor cursor(info);
    cursor.take(kTimeOuts);
    readCounted(cursor, 1, [&cursor] {
        cursor.take(kTapHead);
        cursor.takeShort();
    });
    Descriptors descriptors;
    readDescriptors(cursor.takeShort(), descriptors);
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

void readDirectory(Bytes body, CarouselObject& object) {
    Cursor cursor(body);
    readCounted(cursor, 2, [&] {
        CarouselObject::Entry entry;
        readCounted(cursor, 1, [&] {
            entry.name = textOf(cursor.takeShort());
            entry.kind = kindOf(cursor.takeShort());
        });
        cursor.take(1);  // binding type
        const std::optional<ObjectReference> reference = referenceIn(cursor);
        cursor.take(cursor.size(2));
        if (reference && cursor.good()) {
            entry.object = *reference;
            object.entries.push_back(std::move(entry));
        }
    });
}

struct EventNames {
    std::vector<std::string> names;
    std::size_t left = 0;  ///< bytes after the names
};

/// The names in a stream event object's information, after a description, a duration, and three bytes that say whether
/// the stream has audio, video and data.
std::optional<EventNames> namesBehind(Bytes info, std::size_t microsecondsWidth) {
    constexpr std::size_t kSeconds = 4;
    constexpr std::size_t kStreams = 3;
    Cursor cursor(info);
    cursor.takeShort();
    cursor.take(kSeconds + microsecondsWidth + kStreams);
    EventNames events;
    readCounted(cursor, 2, [&] { events.names.push_back(textOf(cursor.takeShort())); });
    events.left = cursor.left();
    return cursor.good() ? std::optional(std::move(events)) : std::nullopt;
}

/// Broadcasters write the duration's microseconds in two or four bytes. The right width gives as many names as there
/// are identifiers. If both do, the right one leaves fewer bytes unread: with the wrong width, the name of a single
/// event may appear to be empty.
std::vector<std::string> eventNames(Bytes info, std::size_t count) {
    std::optional<EventNames> best;
    for (const std::size_t width : {std::size_t{2}, std::size_t{4}}) {
        std::optional<EventNames> read = namesBehind(info, width);
        if (read && read->names.size() == count && (!best || read->left < best->left)) {
            best = std::move(read);
        }
    }
    return best ? best->names : std::vector<std::string>();
}

/// Reads the events' identifiers, which follow the taps of the body in the order of the names.
void readStreamEvents(Bytes info, Bytes body, CarouselObject& object) {
    constexpr std::uint64_t kStatusAndEventUse = 0x000C;
    constexpr std::uint64_t kEventUse = 0x000D;
    Cursor cursor(body);
    readCounted(cursor, 1, [&] {
        cursor.take(2);
        const std::uint64_t use = cursor.number(2);
        const auto tag = static_cast<std::uint16_t>(cursor.number(2));
        cursor.takeShort();
        if (use == kStatusAndEventUse || use == kEventUse) {
            object.associationTags.push_back(tag);
        }
    });
    std::vector<std::uint16_t> ids;
    readCounted(cursor, 1, [&] { ids.push_back(static_cast<std::uint16_t>(cursor.number(2))); });
    if (!cursor.good()) {
        return;
    }
    const std::vector<std::string> names = eventNames(info, ids.size());
    for (std::size_t index = 0; index < names.size(); ++index) {
        object.events.push_back({names[index], ids[index]});
    }
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
    return referenceIn(info);
}

std::optional<DownloadInfo> downloadInfo(Bytes section) {
    const std::optional<Message> message = messageOf(section, kDownloadControlTableId, kDownloadInfoIndication);
    if (!message) {
        return std::nullopt;
    }
    constexpr std::size_t kWindowsAndTimers = 10;
    Cursor cursor(message->payload);
    DownloadInfo info;
    info.downloadId = static_cast<std::uint32_t>(cursor.number(4));
    info.blockSize = static_cast<std::uint16_t>(cursor.number(2));
    cursor.take(kWindowsAndTimers);
    cursor.take(cursor.size(2));  // compatibility descriptor
    readCounted(cursor, 2, [&] {
        DownloadInfo::Module module;
        module.id = static_cast<std::uint16_t>(cursor.number(2));
        module.size = static_cast<std::uint32_t>(cursor.number(4));
        module.version = static_cast<std::uint8_t>(cursor.number(1));
        module.originalSize = originalSizeIn(cursor.takeShort());
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

std::vector<CarouselObject> carouselObjects(Bytes module) {
    constexpr std::uint64_t kMagic = 0x42494F50;
    std::vector<CarouselObject> objects;
    Cursor cursor(module);
    while (cursor.left() != 0) {
        const bool isMessage = cursor.number(4) == kMagic;
        cursor.take(4);  // version, byte order, message type
        Cursor message(cursor.take(cursor.size(4)));
        if (!isMessage || !cursor.good()) {
            break;
        }
        CarouselObject object;
        object.key = plainText(message.takeShort());
        object.kind = kindOf(message.take(message.size(4)));
        const Bytes info = message.take(message.size(2));
        readCounted(message, 1, [&message] {
            message.take(4);
            message.take(message.size(2));
        });
        const Bytes body = message.take(message.size(4));
        if (object.kind == CarouselObject::Kind::other || !message.good()) {
            continue;
        }
        if (object.kind == CarouselObject::Kind::directory) {
            readDirectory(body, object);
        } else {
            readStreamEvents(info, body, object);
        }
        objects.push_back(std::move(object));
    }
    return objects;
}

}  // namespace si
