// Lets the operator act as the CA modules.
#include "ca_room.h"
#include "request_values.h"

namespace dtvservice {

using nlohmann::json;

namespace {

constexpr unsigned short kNoSlot = 0xFFFF;
constexpr unsigned short kDone = 0;
constexpr unsigned short kFailed = 1;

/// The beginning of a UTF-8 text, short enough for a line of an answer. Does not cut a character.
std::string beginningOf(const std::string& text) {
    constexpr std::size_t kLongest = 200;
    constexpr unsigned int kContinuationMask = 0xC0;
    constexpr unsigned int kContinuation = 0x80;
    if (text.size() <= kLongest) {
        return text;
    }
    std::size_t end = kLongest;
    while (end != 0 && (static_cast<unsigned char>(text[end]) & kContinuationMask) == kContinuation) {
        --end;
    }
    return text.substr(0, end);
}

/// Lists only the oldest messages, because the answer must fit in one line.
json listOf(const std::list<DrmMessage>& messages) {
    constexpr std::size_t kMostListed = 100;
    json list = json::array();
    for (const DrmMessage& message : messages) {
        if (list.size() == kMostListed) {
            break;
        }
        list.push_back({{"browser", message.browser},
                        {"ca_session", message.session},
                        {"ca_system_id", message.caSystemId},
                        {"message_type", beginningOf(message.type)},
                        {"message", beginningOf(message.text)},
                        {"length", message.text.size()}});
    }
    return list;
}

}  // namespace

CaRoom::CaRoom(Core& newCore) : core(newCore) {
    core.commands.on.cmdCaDrmRequestConnect = calls(*this, &CaRoom::cmdCaDrmRequestConnect);
    core.commands.on.cmdCaDrmRequestDisconnect = calls(*this, &CaRoom::cmdCaDrmRequestDisconnect);
    core.commands.on.cmdSendDrmMessage = calls(*this, &CaRoom::cmdSendDrmMessage);
    core.requests.add("ca-insert", calls(*this, &CaRoom::insert));
    core.requests.add("ca-remove", calls(*this, &CaRoom::remove));
    core.requests.add("ca-reply", calls(*this, &CaRoom::reply));
    core.requests.add("status", calls(*this, &CaRoom::describe));
}

void CaRoom::cmdCaDrmRequestConnect(Browser asker, unsigned long long session) {
    core.browsers.tell({asker}, &Events::onCaDrmConnected, session, lowestSlot(), slots.empty() ? kFailed : kDone);
}

void CaRoom::cmdCaDrmRequestDisconnect(Browser asker, unsigned short slot) {
    core.browsers.tell({asker}, &Events::onCaDrmDisonnected, slot, slots.count(slot) != 0 ? kDone : kFailed);
}

/// The lowest slot with a module.
unsigned short CaRoom::lowestSlot() const {
    return slots.empty() ? kNoSlot : *slots.begin();
}

/// The operator answers for the module. Without a module the answer is "unknown DRM system". If too many of the
/// browser's messages wait for the operator, it is "cannot process request".
void CaRoom::cmdSendDrmMessage(Browser asker, unsigned long long session, unsigned short caSystemId, unsigned short,
                               const std::string& type, const std::string& message) {
    constexpr unsigned char kCannotProcess = 2;
    constexpr unsigned char kUnknownDrmSystem = 5;
    if (slots.empty()) {
        core.browsers.tell({asker}, &Events::onDrmResultReply, session, kUnknownDrmSystem, std::string(), lowestSlot());
        return;
    }
    if (!messages.add({asker, session, caSystemId, type, message})) {
        core.browsers.tell({asker}, &Events::onDrmResultReply, session, kCannotProcess, std::string(), lowestSlot());
    }
}

json CaRoom::insert(const json& request) {
    return setSlot(getNumber<std::uint16_t>(request, "slot"), true);
}

json CaRoom::remove(const json& request) {
    return setSlot(getNumber<std::uint16_t>(request, "slot"), false);
}

json CaRoom::setSlot(unsigned short slot, bool inserted) {
    const bool changed = inserted ? slots.insert(slot).second : slots.erase(slot) != 0;
    if (changed) {
        core.browsers.tell(core.browsers.all(), &Events::onCaDrmSystemStatusChanged, slot, inserted ? 1 : 0);
    }
    return {{"changed", changed}};
}

/// The session in the request, or else that of the oldest message.
std::uint64_t CaRoom::repliedSession(const json& request) const {
    if (request.contains("ca_session")) {
        return getNumber<std::uint64_t>(request, "ca_session");
    }
    if (messages.all().empty()) {
        throw std::invalid_argument("no message waits for an answer");
    }
    return messages.all().front().session;
}

/// Answers the oldest message of a session.
json CaRoom::reply(const json& request) {
    const std::uint64_t session = repliedSession(request);
    const auto code = getNumber<std::uint8_t>(request, "code");
    const std::string text = request.contains("message") ? get<std::string>(request, "message") : std::string();
    const std::optional<DrmMessage> message = messages.take(session);
    if (!message) {
        throw std::invalid_argument("no message of session " + std::to_string(session) + " waits for an answer");
    }
    core.browsers.tell({message->browser}, &Events::onDrmResultReply, session, code, text, lowestSlot());
    return json::object();
}

json CaRoom::describe(const json&) {
    return {{"ca_slots", slots}, {"drm_messages", listOf(messages.all())}, {"drm_waiting", messages.all().size()}};
}

}  // namespace dtvservice
