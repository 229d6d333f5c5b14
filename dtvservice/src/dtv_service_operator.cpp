// What a broadcast cannot tell and an operator does: on-screen display, CA modules, engine status; and what the
// operator may look at. Requests are JSON objects with a "command"; answers have "ok" and, where that is false, an
// "error".
#include <algorithm>
#include <nlohmann/json.hpp>
#include <tuple>

#include "dtv_service.h"

namespace dtvservice {

using nlohmann::json;

namespace {

constexpr unsigned short kNoSlot = 0xFFFF;
constexpr unsigned short kDone = 0;
constexpr unsigned short kFailed = 1;

/// A value of a request, or an exception that names it.
template <typename Value>
Value get(const json& request, const char* name) {
    if (!request.contains(name)) {
        throw std::invalid_argument(std::string(name) + " is missing");
    }
    try {
        return request.at(name).get<Value>();
    } catch (const json::exception&) {
        throw std::invalid_argument(std::string(name) + " is of the wrong kind");
    }
}

template <typename Number>
Number getNumber(const json& request, const char* name) {
    const auto value = get<std::int64_t>(request, name);
    const auto number = static_cast<Number>(value);
    // A number above the signed ones is another one as a signed one.
    const bool isNegative = value < 0 && !request.at(name).is_number_unsigned();
    if (!request.at(name).is_number_integer() || static_cast<std::int64_t>(number) != value ||
        isNegative != (number < 0)) {
        throw std::invalid_argument(std::string(name) + " is out of range");
    }
    return number;
}

/// The beginning of a text, not longer than a line of an answer has room for, and no character of it cut.
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

/// The oldest messages: an answer has to fit a line, whatever the texts are.
json listOf(const std::list<DrmMessage>& messages) {
    constexpr std::size_t kMostListed = 100;
    json list = json::array();
    for (const DrmMessage& message : messages) {
        if (list.size() == kMostListed) {
            break;
        }
        list.push_back({{"browser", message.browser},
                        {"session", message.session},
                        {"caSystemId", message.caSystemId},
                        {"type", beginningOf(message.type)},
                        {"message", beginningOf(message.text)},
                        {"length", message.text.size()}});
    }
    return list;
}

}  // namespace

int DtvService::cmdStartOSDDetection(frame::MsgIds& ids, const frame::TransportInfo&, unsigned int layer) {
    loop.post([this, ids, layer]() mutable {
        if (!osdFollowers.add(ids.peer, layer)) {
            BLOG_TAGGED_AS(blog::kUnsupported, "cmdStartOSDDetection",
                           "browser %u: layer %u refused: it follows %zu others\n", ids.peer, layer,
                           OsdFollowers::kMostLayers);
            return;
        }
        events->onOSDStateChanged(ids, kNoTransport, layer, osdLayers.count(layer) != 0 ? 1 : 0);
    });
    return 0;
}

int DtvService::cmdStopOSDDetection(frame::MsgIds& ids, const frame::TransportInfo&, unsigned int layer) {
    loop.post([this, browser = ids.peer, layer] { osdFollowers.remove(browser, layer); });
    return 0;
}

int DtvService::cmdCaDrmRequestConnect(frame::MsgIds& ids, const frame::TransportInfo&, unsigned long long session) {
    loop.post([this, ids, session]() mutable {
        const bool there = !caSlots.empty();
        events->onCaDrmConnected(ids, kNoTransport, session, there ? *caSlots.begin() : kNoSlot,
                                 there ? kDone : kFailed);
    });
    return 0;
}

int DtvService::cmdCaDrmRequestDisconnect(frame::MsgIds& ids, const frame::TransportInfo&, unsigned short slot) {
    loop.post([this, ids, slot]() mutable {
        events->onCaDrmDisonnected(ids, kNoTransport, slot, caSlots.count(slot) != 0 ? kDone : kFailed);
    });
    return 0;
}

/// The operator answers for the module. Without a module the answer is "unknown DRM system", and where the
/// operator answers none of too many, "cannot process request".
int DtvService::cmdSendDrmMessage(frame::MsgIds& ids, const frame::TransportInfo&, unsigned long long session,
                                  unsigned short caSystemId, unsigned short, const std::string& type,
                                  const std::string& message) {
    loop.post([this, ids, session, caSystemId, type, message]() mutable {
        constexpr unsigned char kCannotProcess = 2;
        constexpr unsigned char kUnknownDrmSystem = 5;
        if (caSlots.empty()) {
            events->onDrmResultReply(ids, kNoTransport, session, kUnknownDrmSystem, std::string(), kNoSlot);
            return;
        }
        if (!drmMessages.add({ids.peer, session, caSystemId, type, message})) {
            events->onDrmResultReply(ids, kNoTransport, session, kCannotProcess, std::string(), *caSlots.begin());
        }
    });
    return 0;
}

void DtvService::forgetOperated(std::uint32_t browser) {
    osdFollowers.forget(browser);
    drmMessages.forget(browser);
}

std::string DtvService::operate(const std::string& request) {
    json answer;
    try {
        const json parsed = json::parse(request, nullptr, false);
        if (!parsed.is_object()) {
            throw std::invalid_argument("a request is a JSON object in one line");
        }
        answer = operate(get<std::string>(parsed, "command"), parsed);
        answer["ok"] = true;
    } catch (const std::invalid_argument& error) {
        answer = {{"ok", false}, {"error", error.what()}};
    }
    return answer.dump(-1, ' ', false, json::error_handler_t::replace);
}

json DtvService::operate(const std::string& command, const json& request) {
    using Operation = json (DtvService::*)(const json&);
    static const std::map<std::string, Operation> kOperations = {{"channels", &DtvService::operateChannels},
                                                                 {"status", &DtvService::operateStatus},
                                                                 {"statistics", &DtvService::operateStatistics},
                                                                 {"tune", &DtvService::operateTune},
                                                                 {"osd", &DtvService::operateOsd},
                                                                 {"ca-insert", &DtvService::operateCaInsert},
                                                                 {"ca-remove", &DtvService::operateCaRemove},
                                                                 {"ca-reply", &DtvService::operateCaReply},
                                                                 {"engine", &DtvService::operateEngine},
                                                                 {"stop-terminals", &DtvService::operateStopTerminals}};
    const auto found = kOperations.find(command);
    if (found == kOperations.end()) {
        throw std::invalid_argument("unknown command " + command);
    }
    return (this->*found->second)(request);
}

json DtvService::operateChannels(const json&) {
    const auto described = [](const broadcast::Channel& channel) {
        return json{{"onid", channel.originalNetworkId ? json(*channel.originalNetworkId) : json()},
                    {"tsid", channel.transportStreamId},
                    {"sid", channel.serviceId},
                    {"name", channel.name},
                    {"input", json()},
                    {"pmt", false},
                    {"hbbtv", false},
                    {"presented", false}};
    };
    json list = json::array();
    for (std::size_t input = 0; input < multiplexes.size(); ++input) {
        const broadcast::SiDatabase& si = multiplexes[input].si;
        for (const broadcast::Channel& channel : si.channels()) {
            json entry = described(channel);
            entry["input"] = input + 1;
            entry["pmt"] = !si.pmt(channel.serviceId).empty();
            entry["hbbtv"] = si.signalsHbbTv(channel.serviceId);
            entry["presented"] = presentedChannel() == &channel;
            list.push_back(std::move(entry));
        }
    }
    for (const broadcast::Channel& channel : channelsWithoutInput()) {
        list.push_back(described(channel));
    }
    std::stable_sort(list.begin(), list.end(), [](const json& one, const json& other) {
        const auto key = [](const json& channel) {
            return std::make_tuple(channel["onid"].is_null() ? 0x10000U : channel["onid"].get<unsigned int>(),
                                   channel["tsid"].get<unsigned int>(), channel["sid"].get<unsigned int>());
        };
        return key(one) < key(other);
    });
    return {{"channels", list}};
}

json DtvService::operateStatus(const json&) {
    json layers = json::array();
    for (const unsigned int layer : osdLayers) {
        layers.push_back(layer);
    }
    json slots = json::array();
    for (const unsigned short slot : caSlots) {
        slots.push_back(slot);
    }
    const broadcast::Channel* const channel = presentedChannel();
    return {{"presented", channel == nullptr ? json() : json(channel->triplet())},
            {"name", channel == nullptr ? json() : json(channel->name)},
            {"browsers", browsers},
            {"osdLayers", layers},
            {"caSlots", slots},
            {"drmMessages", listOf(drmMessages.all())},
            {"drmWaiting", drmMessages.all().size()}};
}

json DtvService::operateStatistics(const json&) {
    json inputs = json::array();
    for (const Multiplex& multiplex : multiplexes) {
        const broadcast::SectionCounts counts = multiplex.demux.counts();
        inputs.push_back({{"packets", multiplex.demux.packets()},
                          {"sections", counts.sections},
                          {"continuityErrors", counts.continuityErrors},
                          {"crcErrors", counts.crcErrors},
                          {"cutSections", counts.cut},
                          {"unusablePackets", counts.unusable}});
    }
    const SectionFilters::Totals totals = filters.totals();
    return {{"inputs", inputs}, {"browsers", browsers}, {"filters", totals.filters}, {"queueDrops", totals.dropped}};
}

json DtvService::operateTune(const json& request) {
    const auto wanted = get<std::string>(request, "triplet");
    for (Multiplex& multiplex : multiplexes) {
        for (const broadcast::Channel& channel : multiplex.si.channels()) {
            if (channel.triplet() == wanted) {
                present(multiplex, channel);
                return json::object();
            }
        }
    }
    throw std::invalid_argument(whyNotReceived(wanted));
}

json DtvService::operateOsd(const json& request) {
    const auto layer = getNumber<std::uint32_t>(request, "layer");
    const bool on = get<bool>(request, "on");
    const bool changed = on ? osdLayers.insert(layer).second : osdLayers.erase(layer) != 0;
    for (const std::uint32_t browser : changed ? osdFollowers.followersOf(layer) : std::set<std::uint32_t>()) {
        frame::MsgIds ids = only(browser);
        events->onOSDStateChanged(ids, kNoTransport, layer, on ? 1 : 0);
    }
    return {{"changed", changed}};
}

json DtvService::operateCaInsert(const json& request) {
    return setCaSlot(getNumber<std::uint16_t>(request, "slot"), true);
}

json DtvService::operateCaRemove(const json& request) {
    return setCaSlot(getNumber<std::uint16_t>(request, "slot"), false);
}

json DtvService::setCaSlot(unsigned short slot, bool inserted) {
    const bool changed = inserted ? caSlots.insert(slot).second : caSlots.erase(slot) != 0;
    if (changed) {
        toEveryone(
            [&](frame::MsgIds ids) { events->onCaDrmSystemStatusChanged(ids, kNoTransport, slot, inserted ? 1 : 0); });
    }
    return {{"changed", changed}};
}

/// Answers the oldest message of a session.
json DtvService::operateCaReply(const json& request) {
    const auto session = getNumber<std::uint64_t>(request, "session");
    const auto code = getNumber<std::uint8_t>(request, "code");
    const std::string text = request.contains("text") ? get<std::string>(request, "text") : std::string();
    const std::optional<DrmMessage> message = drmMessages.take(session);
    if (!message) {
        throw std::invalid_argument("no message of session " + std::to_string(session) + " waits for an answer");
    }
    frame::MsgIds ids = only(message->browser);
    events->onDrmResultReply(ids, kNoTransport, session, code, text, caSlots.empty() ? kNoSlot : *caSlots.begin());
    return json::object();
}

json DtvService::operateEngine(const json& request) {
    const auto status = getNumber<std::int32_t>(request, "status");
    toEveryone([&](frame::MsgIds ids) { events->onHbbtvEngineStatusChanged(ids, kNoTransport, status); });
    return json::object();
}

json DtvService::operateStopTerminals(const json&) {
    toEveryone([&](frame::MsgIds ids) { events->onAllTerminalStoped(ids, kNoTransport); });
    return json::object();
}

}  // namespace dtvservice
