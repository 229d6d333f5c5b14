// The calls.
#include "broadcast.h"

#include <map>

#include "inside.h"

namespace tvbrowser {

namespace {

constexpr std::uint64_t kMostExact = std::uint64_t{1} << 53U;  // a script's exact numbers
constexpr std::uint64_t kMostInt = 0x7FFFFFFF;
constexpr std::uint64_t kMostPid = 0x1FFF;
constexpr std::uint64_t kMostType = ComponentList::kTypes - 1;

int intOf(const Arguments& arguments, const std::string& key) {
    return static_cast<int>(arguments.number(key, kMostInt));
}

int flagsOf(const Arguments& arguments) {
    return arguments.has("flags") ? intOf(arguments, "flags") : 0;
}

int typeOf(const Arguments& arguments) {
    return static_cast<int>(arguments.number("type", kMostType));
}

StreamEvents::Target targetOf(const Arguments& arguments) {
    StreamEvents::Target target;
    if (arguments.has("componentTag")) {
        target.componentTag = static_cast<std::uint8_t>(arguments.number("componentTag", UINT8_MAX));
    }
    if (arguments.has("object")) {
        target.object = arguments.text("object");
        target.name = arguments.text("name");
    } else {
        arguments.number("componentTag", UINT8_MAX);  // without an object, it is needed
        target.eventId = arguments.word("eventId");
    }
    return target;
}

std::string descriptorOf(const Arguments& arguments) {
    const std::optional<std::string> bytes = bytesOfHex(arguments.text("dsd"));
    if (!bytes) {
        throw BadCall("tuneByDescriptor: dsd is not hexadecimal");
    }
    return *bytes;
}

}  // namespace

/// The calls with an argument. Each gets the inside and the argument.
struct Broadcast::Calls {
    using Call = json (*)(Inside&, const Arguments&);

    static json tune(Inside& inside, const Arguments& arguments) {
        const int idType = intOf(arguments, "idType");
        const si::Triplet to = arguments.triplet();
        const int flags = flagsOf(arguments);
        return inside.tune([to](const si::Triplet& service) { return service == to; },
                           [&] { inside.api.tuneToService(idType, to.onid, to.tsid, to.sid, flags); });
    }
    static json tuneByDescriptor(Inside& inside, const Arguments& arguments) {
        const std::string descriptor = descriptorOf(arguments);
        const std::uint16_t sid = arguments.word("sid");
        const int flags = flagsOf(arguments);
        return inside.tune([sid](const si::Triplet& service) { return service.sid == sid; },
                           [&] { inside.api.tuneToService(descriptor, sid, flags); });
    }
    static json selectComponent(Inside& inside, const Arguments& arguments) {
        const int type = typeOf(arguments);
        if (arguments.has("pid")) {
            inside.api.tuneToComponent(type, static_cast<int>(arguments.number("pid", kMostPid)), 0);
        } else {
            inside.api.selectComponent(type);
        }
        return true;
    }
    static json unselectComponent(Inside& inside, const Arguments& arguments) {
        inside.api.unselectComponent(typeOf(arguments));
        return true;
    }
    static json addStreamEventListener(Inside& inside, const Arguments& arguments) {
        return inside.streamEvents.add(arguments.number("id", kMostExact), targetOf(arguments));
    }
    static json removeStreamEventListener(Inside& inside, const Arguments& arguments) {
        return inside.streamEvents.remove(arguments.number("id", kMostExact));
    }
    static json sendDrmMessage(Inside& inside, const Arguments& arguments) {
        constexpr std::uint16_t kAnySlot = 0;
        return inside.api.sendDrmMessage(arguments.number("session", kMostExact), arguments.word("system"), kAnySlot,
                                         arguments.text("messageType"), arguments.text("message")) == 0;
    }
    static json connectCa(Inside& inside, const Arguments& arguments) {
        return inside.api.connectCa(arguments.number("session", kMostExact)) == 0;
    }
    static json disconnectCa(Inside& inside, const Arguments& arguments) {
        return inside.api.disconnectCa(arguments.word("slot")) == 0;
    }
    static json applicationStarted(Inside& inside, const Arguments& arguments) {
        const bool isOk = arguments.flag("ok");
        return (isOk ? inside.api.sendApplicationStartedSucceeded() : inside.api.sendApplicationStartedFailed()) == 0;
    }

    /// Null for a name that is not among them.
    static Call find(const std::string& name) {
        static constexpr struct {
            const char* name;
            Call call;
        } kCalls[] = {{"tune", &tune},
                      {"tuneByDescriptor", &tuneByDescriptor},
                      {"selectComponent", &selectComponent},
                      {"unselectComponent", &unselectComponent},
                      {"addStreamEventListener", &addStreamEventListener},
                      {"removeStreamEventListener", &removeStreamEventListener},
                      {"sendDrmMessage", &sendDrmMessage},
                      {"connectCa", &connectCa},
                      {"disconnectCa", &disconnectCa},
                      {"applicationStarted", &applicationStarted}};
        for (const auto& each : kCalls) {
            if (each.name == name) {
                return each.call;
            }
        }
        return nullptr;
    }
};

Broadcast::Broadcast(const Library& library, Post post, Sink sink)
    : inside(std::make_unique<Inside>(library, post, std::move(sink))) {}

Broadcast::~Broadcast() = default;

std::optional<si::Triplet> Broadcast::presented() const {
    return inside->presented;
}

QuestionNumber Broadcast::askForFile(const CarouselPlace& place, TakeAnswer take) {
    return inside->carouselFiles.ask(place, std::move(take));
}

void Broadcast::cancelFile(QuestionNumber number) {
    inside->carouselFiles.cancel(number);
}

void Broadcast::readCarousels() {
    inside->carouselFiles.readAhead();
}

bool Broadcast::isConnected() const {
    return inside->isConnected;
}

json Broadcast::call(const std::string& name, const json& argument) {
    if (const Calls::Call found = Calls::find(name)) {
        return found(*inside, Arguments(name, argument));
    }
    if (name == "schedule") {
        return inside->guide.value(argument, inside->programmes);
    }
    return question(name);
}

json Broadcast::question(const std::string& name) {
    if (name == "presented") {
        return inside->presented ? tripletValue(*inside->presented) : json();
    }
    if (name == "serviceState") {
        return {{"connected", inside->isConnected}};
    }
    if (name == "channels") {
        return inside->channels.value();
    }
    if (name == "components") {
        return inside->components.value();
    }
    if (name == "programmes") {
        return inside->programmes.value();
    }
    if (name == "applications") {
        return inside->applications.value();
    }
    if (name == "openSchedule") {
        return inside->guide.open();
    }
    if (name == "closeSchedule") {
        return inside->guide.close();
    }
    if (name == "requestPts") {
        return inside->api.sendPtsRequest(0) == 0;
    }
    throw BadCall("there is no call \"" + safeText(name) + "\"");
}

}  // namespace tvbrowser
