// Reads objects in modules.
#include "si/biop.h"

#include <algorithm>

#include "biop_fields.h"

namespace si {

namespace {

using Kind = CarouselObject::Kind;

/// Removes the zero byte at the end of names and kinds.
std::string textOf(Bytes bytes) {
    std::string text = plainText(bytes);
    while (!text.empty() && text.back() == '\0') {
        text.pop_back();
    }
    return text;
}

Kind kindOf(Bytes bytes) {
    const std::string kind = textOf(bytes);
    if (kind == "dir" || kind == "srg") {
        return Kind::directory;
    }
    if (kind == "fil") {
        return Kind::file;
    }
    if (kind == "str") {
        return Kind::stream;
    }
    return kind == "ste" ? Kind::streamEvent : Kind::other;
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
        std::optional<ObjectReference> reference = readReference(cursor);
        cursor.take(cursor.size(2));
        if (reference && cursor.good()) {
            entry.object = std::move(*reference);
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

/// Reads the taps of a stream or stream event object, and keeps the association tags of those for one of the uses.
template <typename IsMeant>
void readTaps(Cursor& cursor, CarouselObject& object, IsMeant isMeant) {
    readCounted(cursor, 1, [&] {
        const Tap tap = readTap(cursor);
        if (isMeant(tap.use) && cursor.good()) {
            object.associationTags.push_back(tap.associationTag);
        }
    });
}

void readStream(Bytes body, CarouselObject& object) {
    constexpr std::uint64_t kProgramUse = 0x0019;
    Cursor cursor(body);
    readTaps(cursor, object, [](std::uint64_t use) { return use == kProgramUse; });
}

/// Reads the events' identifiers, which follow the taps of the body in the order of the names.
void readStreamEvents(Bytes info, Bytes body, CarouselObject& object) {
    constexpr std::uint64_t kStatusAndEventUse = 0x000C;
    constexpr std::uint64_t kEventUse = 0x000D;
    Cursor cursor(body);
    readTaps(cursor, object, [](std::uint64_t use) { return use == kStatusAndEventUse || use == kEventUse; });
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

/// The content behind its length, and its type from the descriptors that follow the size in the information.
void readFile(Bytes info, Bytes body, CarouselObject& object) {
    constexpr std::size_t kContentSize = 8;
    constexpr std::uint8_t kContentType = 0x72;
    Cursor cursor(body);
    object.content = cursor.take(cursor.size(4));
    Cursor described(info);
    described.take(kContentSize);
    Descriptors descriptors;
    readDescriptors(described.rest(), descriptors);
    for (const Descriptor& descriptor : descriptors) {
        if (descriptor.tag == kContentType) {
            object.contentType = textOf(descriptor.bytes);
        }
    }
}

void readBody(Bytes info, Bytes body, CarouselObject& object) {
    switch (object.kind) {
        case Kind::directory:
            readDirectory(body, object);
            break;
        case Kind::file:
            readFile(info, body, object);
            break;
        case Kind::stream:
            readStream(body, object);
            break;
        case Kind::streamEvent:
            readStreamEvents(info, body, object);
            break;
        case Kind::other:
            break;
    }
}

/// `keep` takes each object that is meant, and says whether to go on.
template <typename IsMeant, typename Keep>
void readObjects(Bytes module, IsMeant isMeant, Keep keep) {
    constexpr std::uint64_t kMagic = 0x42494F50;
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
        if (isMeant(object.kind) && message.good()) {
            readBody(info, body, object);
            if (!keep(std::move(object))) {
                break;
            }
        }
    }
}

}  // namespace

std::optional<std::vector<CarouselObject>> carouselObjects(Bytes module, std::size_t mostBytes, std::size_t& cost) {
    std::vector<CarouselObject> objects;
    cost = 0;
    const auto isKnown = [](Kind kind) { return kind != Kind::other; };
    readObjects(module, isKnown, [&](CarouselObject object) {
        cost += costOf(object);
        objects.push_back(std::move(object));
        return cost <= mostBytes;
    });
    return cost <= mostBytes ? std::optional(std::move(objects)) : std::nullopt;
}

void eventObjects(Bytes module, const std::function<void(CarouselObject)>& take) {
    const auto leadsToEvents = [](Kind kind) { return kind == Kind::directory || kind == Kind::streamEvent; };
    readObjects(module, leadsToEvents, [&](CarouselObject object) {
        auto& entries = object.entries;
        entries.erase(std::remove_if(entries.begin(), entries.end(),
                                     [&](const CarouselObject::Entry& entry) {
                                         return !leadsToEvents(entry.kind) || entry.object.elsewhere;
                                     }),
                      entries.end());
        entries.shrink_to_fit();
        take(std::move(object));
        return true;
    });
}

std::size_t costOf(const CarouselObject& object) {
    std::size_t cost = sizeof object + object.key.size() + object.contentType.size() +
                       object.associationTags.size() * sizeof(std::uint16_t);
    for (const CarouselObject::Entry& entry : object.entries) {
        cost += sizeof entry + entry.name.size() + entry.object.key.size();
    }
    for (const CarouselObject::EventName& event : object.events) {
        cost += sizeof event + event.name.size();
    }
    return cost;
}

}  // namespace si
