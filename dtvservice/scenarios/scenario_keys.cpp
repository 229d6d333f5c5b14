// The tables of keys.
#include "scenario_keys.h"

#include <algorithm>

namespace dtvservice {

namespace {

using Kind = Key::Kind;

constexpr std::uint64_t kDay = 86400;
constexpr std::uint64_t kMostSixteen = 0xFFFF;
constexpr std::uint64_t kMostThirtyTwo = 0xFFFFFFFF;
constexpr std::uint64_t kMostSixtyFour = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kMostPid = 0x1FFF;
constexpr std::uint64_t kMostInputs = 1000;
constexpr std::uint64_t kMostRounds = 1000000;
constexpr std::uint64_t kLongestName = 100;
constexpr std::uint64_t kLongestText = 65535;

Key whole(const char* name, std::uint64_t most, const char* meaning, std::int64_t least = 0) {
    return {name, Kind::whole, true, least, most, meaning};
}

Key optional(Key key) {
    key.isRequired = false;
    return key;
}

Key seconds(const char* meaning = "how long it lasts; without it, until the end of the scenario or \"undo\"") {
    return {"seconds", Kind::number, false, 0, kDay, meaning};
}

Key times(const char* meaning) {
    return optional(whole("times", kMostThirtyTwo, meaning, 1));
}

Key input() {
    return optional(whole("input", kMostInputs, "the input, 1 for the first; without it, all", 1));
}

Key browser() {
    return optional(
        whole("browser", kMostThirtyTwo,
              "the browser's number in the log; without it, the one whose command the step is upon, else all", 1));
}

Key percent() {
    return {"percent", Kind::number, true, 0, 100, "how many of the packets, in percent"};
}

Key seed() {
    return optional(
        whole("seed", kMostThirtyTwo, "selects which packets; the same ones for the same number; default 1"));
}

Key pid(bool isRequired) {
    return {"pid", Kind::whole, isRequired, 0, kMostPid, isRequired ? "the PID" : "the PID; without it, all"};
}

Key event() {
    return {"event", Kind::event, false, 0, 0, "the event; without it, every event"};
}

std::vector<Action> requests() {
    using A = Action::Kind;
    const auto text = [](const char* name, bool isRequired, std::uint64_t most, const char* meaning) {
        return Key{name, Kind::text, isRequired, 0, most, meaning};
    };
    constexpr std::int64_t kLeastStatus = std::numeric_limits<std::int32_t>::min();
    constexpr std::uint64_t kMostStatus = std::numeric_limits<std::int32_t>::max();
    constexpr std::uint64_t kMostByte = 0xFF;
    constexpr std::uint64_t kMostData = 245;
    return {
        {"tune",
         A::request,
         "presents a service",
         {whole("onid", kMostSixteen, "original_network_id"), whole("tsid", kMostSixteen, "transport_stream_id"),
          whole("sid", kMostSixteen, "service_id")}},
        {"osd",
         A::request,
         "shows or hides a layer of the on-screen display",
         {whole("layer", kMostThirtyTwo, "the layer"), {"on", Kind::flag, true, 0, 0, "whether it is shown"}}},
        {"ca-insert", A::request, "a CA module comes", {whole("slot", kMostSixteen, "its slot")}},
        {"ca-remove", A::request, "a CA module goes", {whole("slot", kMostSixteen, "its slot")}},
        {"ca-reply",
         A::request,
         "answers a browser's message to the CA system",
         {optional(
              whole("ca_session", kMostSixtyFour, "the message's session; without it, that of the oldest message")),
          whole("code", kMostByte, "the result"), text("message", false, kLongestText, "the answer")}},
        {"engine",
         A::request,
         "tells browsers the HbbTV engine's status",
         {whole("engine_status", kMostStatus, "the status", kLeastStatus)}},
        {"stop-terminals", A::request, "tells browsers that all terminals have stopped", {}},
        {"stream-event",
         A::request,
         "signals a stream event as if the broadcast had it",
         {whole("event_id", kMostSixteen, "its identifier"),
          optional(whole("component_tag", kMostByte,
                         "of its stream; without it, the presented service's first stream of stream events")),
          text("data", false, kMostData, "its private data")}},
    };
}

std::vector<Action> faults() {
    using A = Action::Kind;
    constexpr std::uint64_t kLongestFreeze = 60;
    const Key late = {"by", Kind::number, true, 0, kDay, "how many seconds later; other events overtake it"};
    return {
        {"signal-lost", A::fault, "no packet of the input arrives", {input(), seconds()}},
        {"packets-lost", A::fault, "packets do not arrive", {percent(), input(), pid(false), seed(), seconds()}},
        {"packets-damaged",
         A::fault,
         "packets arrive with one wrong bit",
         {percent(), input(), pid(false), seed(), seconds()}},
        {"pid-withheld", A::fault, "no packet of the PID arrives", {pid(true), input(), seconds()}},
        {"service-stopped",
         A::fault,
         "browsers are disconnected, and cannot connect",
         {{"seconds", Kind::number, true, 0, kDay, "how long"}}},
        {"service-frozen",
         A::blow,
         "the service does nothing; connections stay, and commands wait",
         {{"seconds", Kind::number, true, 0, kLongestFreeze, "how long"}}},
        {"answer-withheld",
         A::fault,
         "events are not sent",
         {event(), browser(), times("how many; without it, all of them"), seconds()}},
        {"answer-late",
         A::fault,
         "events are sent later",
         {event(), late, browser(), times("how many; without it, all of them"), seconds()}},
        {"answer-twice",
         A::fault,
         "events are sent twice",
         {event(), browser(), times("how many; without it, all of them"), seconds()}},
        {"commands-dropped",
         A::fault,
         "commands are not handled, and nothing answers them",
         {{"operation", Kind::command, false, 0, 0, "the command; without it, every command"},
          browser(),
          times("how many; without it, all of them"),
          seconds()}},
        {"sections-dropped",
         A::fault,
         "sections find no room in the browser's queue",
         {{"filter", Kind::text, false, 0, kLongestText, "the filter's session; without it, all filters"},
          browser(),
          times("how many; without it, all of them"),
          seconds()}},
        {"browser-disconnected", A::blow, "the connection of a browser ends", {browser()}},
        {"undo", A::undo, "ends faults that last", {{"fault", Kind::fault, false, 0, 0, "which; without it, all"}}},
    };
}

std::vector<Action> allActions() {
    std::vector<Action> all = requests();
    for (Action& fault : faults()) {
        all.push_back(std::move(fault));
    }
    return all;
}

}  // namespace

const std::vector<Key>& scenarioKeys() {
    static const std::vector<Key> kKeys = {
        {"name", Kind::text, false, 0, kLongestName, "how the log and dtvctl call it; default: scenario"},
        {"seconds", Kind::number, false, 0, kDay,
         "when the scenario, or a round, ends; without it, when all steps are done and all faults with an end are "
         "over"},
        {"repeat", Kind::whole, false, 1, kMostRounds,
         "how many rounds, which begin a tenth of a second apart at least; default 1"},
        {"stay", Kind::flag, false, 0, 0, "whether faults without an end stay when the scenario has ended"},
    };
    return kKeys;
}

const std::vector<Key>& stepKeys() {
    static const std::vector<Key> kKeys = {
        {"at", Kind::number, false, 0, kDay, "when, in seconds since the scenario's start"},
        {"upon", Kind::command, false, 0, 0, "the browser's command upon which it is done, just before it is handled"},
        {"after", Kind::number, false, 0, kDay, "how many seconds behind the command, in place of before it"},
        {"nth", Kind::whole, false, 1, kMostThirtyTwo, "upon which of these commands; default 1, the next one"},
        {"every", Kind::flag, false, 0, 0, "upon each of these commands"},
        {"browser", Kind::whole, false, 1, kMostThirtyTwo, "whose command, by the browser's number in the log"},
    };
    return kKeys;
}

const std::vector<Action>& actions() {
    static const std::vector<Action> kActions = allActions();
    return kActions;
}

const Action* findAction(const std::string& name) {
    const auto found =
        std::find_if(actions().begin(), actions().end(), [&name](const Action& each) { return name == each.name; });
    return found == actions().end() ? nullptr : &*found;
}

const std::vector<CatalogueName>& commandNames() {
    static const std::vector<CatalogueName> kNames = {
#define COMMAND(identifier, operation, Message, fields) {#operation, identifier},
#include "browserdvbservice_messages.inc"
    };
    return kNames;
}

const std::vector<CatalogueName>& eventNames() {
    static const std::vector<CatalogueName> kNames = {
#define EVENT(identifier, operation, Message, decoder, fields) {#operation, identifier},
#include "browserdvbservice_messages.inc"
    };
    return kNames;
}

std::uint32_t identifierOf(const std::vector<CatalogueName>& names, const std::string& name) {
    const auto found =
        std::find_if(names.begin(), names.end(), [&name](const CatalogueName& each) { return name == each.name; });
    return found == names.end() ? 0 : found->identifier;
}

}  // namespace dtvservice
