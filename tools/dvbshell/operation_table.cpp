// The table of operations, one row each.
#include <array>
#include <limits>
#include <type_traits>
#include <utility>

#include "hex.h"
#include "operations.h"

namespace dvbshell {

namespace {

using Api = velmora::dtv::DvbAPIInterface;
using TuneByTriplet = void (Api::*)(int, int, int, int, int);
using TuneByDescriptor = void (Api::*)(const std::string&, int, int);

template <typename Argument>
constexpr bool isText = std::is_same_v<std::decay_t<Argument>, std::string>;

/// The range of an argument, from its C++ type.
template <typename Argument>
Parameter parameter(const char* name) {
    if constexpr (isText<Argument>) {
        return {name, Parameter::Kind::text};
    } else {
        using Limits = std::numeric_limits<Argument>;
        return {name, Parameter::Kind::number, static_cast<std::int64_t>(Limits::min()),
                static_cast<std::uint64_t>(Limits::max())};
    }
}

template <typename Argument>
std::decay_t<Argument> argument(const Value& value) {
    if constexpr (isText<Argument>) {
        return value.text;
    } else {
        return value.as<Argument>();
    }
}

Outcome outcome(int result) {
    return {result, std::nullopt};
}
Outcome outcome(std::string result) {
    return {std::nullopt, std::move(result)};
}

template <typename Result, typename... Arguments, std::size_t... indices>
Outcome call(Api& api, Result (Api::*slot)(Arguments...), [[maybe_unused]] const Values& values,
             std::index_sequence<indices...>) {
    if constexpr (std::is_void_v<Result>) {
        (api.*slot)(argument<Arguments>(values[indices])...);
        return {};
    } else {
        return outcome((api.*slot)(argument<Arguments>(values[indices])...));
    }
}

/// The row of an operation that takes the typed arguments and returns its result without conversion.
template <typename Result, typename... Arguments, std::size_t... indices>
Operation plainRow(const char* name, const char* slotName, Result (Api::*slot)(Arguments...),
                   [[maybe_unused]] const std::array<const char*, sizeof...(Arguments)>& arguments, const char* help,
                   std::index_sequence<indices...> all) {
    return {name,
            slotName,
            {parameter<Arguments>(arguments[indices])...},
            help,
            [slot, all](Host& host, const Values& values) { return call(host.api, slot, values, all); }};
}
template <typename Result, typename... Arguments>
Operation row(const char* name, const char* slotName, Result (Api::*slot)(Arguments...),
              const std::array<const char*, sizeof...(Arguments)>& arguments, const char* help) {
    return plainRow(name, slotName, slot, arguments, help, std::index_sequence_for<Arguments...>());
}

Outcome currentChannel(Host& host, const Values&) {
    int onid = -1;
    int tsid = -1;
    int sid = -1;
    const int result = host.api.getCurrentChannelInfo(onid, tsid, sid);
    const std::string triplet = std::to_string(onid) + ":" + std::to_string(tsid) + ":" + std::to_string(sid);
    return {result, result == 0 ? triplet : std::string("unknown")};
}
Outcome currentDsd(Host& host, const Values&) {
    return outcome(hexOf(host.api.getCurrentDsd()));
}
Outcome listen(Host& host, const Values&) {
    host.api.addListener(host.listener);
    return {};
}
Outcome unlisten(Host& host, const Values&) {
    host.api.removeListener(host.listener);
    return {};
}
/// The user types a descriptor in hexadecimal.
Operation inHexadecimal(Operation operation) {
    operation.parameters[0].kind = Parameter::Kind::hexBytes;
    return operation;
}

// clang-format off
const std::vector<Operation> kTable = {
    {"current", "getCurrentChannelInfo", {}, "the current channel as numbers", currentChannel},
    row("ccid", "getCurrentCCID", &Api::getCurrentCCID, {}, "the current channel's CCID"),
    {"dsd", "getCurrentDsd", {}, "the stored delivery system descriptor, in hexadecimal", currentDsd},
    row("app-failed", "sendApplicationStartedFailed", &Api::sendApplicationStartedFailed, {},
        "tell that the application could not be started"),
    row("app-started", "sendApplicationStartedSucceeded", &Api::sendApplicationStartedSucceeded, {},
        "tell that the application runs"),
    row("ait-restart", "triggerAitRestart", &Api::triggerAitRestart, {}, "ask for the AIT again"),
    row("tune-numbers", "tuneToService", static_cast<TuneByTriplet>(&Api::tuneToService),
        {"ID_TYPE", "ONID", "TSID", "SID", "FLAGS"}, "tune by the five integers of the interface"),
    inHexadecimal(row("tune-dsd", "tuneToService", static_cast<TuneByDescriptor>(&Api::tuneToService),
        {"DSD", "SID", "FLAGS"}, "tune by the bytes of a delivery system descriptor")),
    row("tune-component", "tuneToComponent", &Api::tuneToComponent, {"FIRST", "SECOND", "THIRD"},
        "present one component"),
    row("select", "selectComponent", &Api::selectComponent, {"TYPE"},
        "present components of a type: 0 video, 1 audio, 2 subtitle"),
    row("unselect", "unselectComponent", &Api::unselectComponent, {"TYPE"}, "stop presenting components of a type"),
    row("audio-source", "setAudioSource", &Api::setAudioSource, {"SOURCE"},
        "change the audio source, and wait for the answer"),
    {"listen", "addListener", {}, "be told of events, as from the start", listen},
    {"unlisten", "removeListener", {}, "be told of no more events", unlisten},
    row("start-notify", "notifyMwhbStart", &Api::notifyMwhbStart, {}, "tell that the browser has started"),
    row("pts", "sendPtsRequest", &Api::sendPtsRequest, {"REQUEST"}, "ask for the presentation time stamp"),
    row("temi-start", "startTemiTimelineRequest", &Api::startTemiTimelineRequest, {"FIRST", "SECOND", "THIRD"},
        "report a TEMI timeline"),
    row("temi-stop", "stopTemiTimelineRequest", &Api::stopTemiTimelineRequest, {}, "report no timeline any more"),
    row("osd-start", "startOSDDetection", &Api::startOSDDetection, {"LAYER"},
        "report a layer of the on-screen display"),
    row("osd-stop", "stopOSDDetection", &Api::stopOSDDetection, {"LAYER"}, "report the layer no more"),
    row("drm-message", "sendDrmMessage", &Api::sendDrmMessage,
        {"SESSION", "CA_SYSTEM", "SECOND", "FIRST_TEXT", "SECOND_TEXT"}, "send a message to a CA/DRM system"),
    row("ca-connect", "connectCa", &Api::connectCa, {"SESSION"}, "connect to the CA system"),
    row("ca-disconnect", "disconnectCa", &Api::disconnectCa, {"SLOT"}, "disconnect from the CA system"),
    row("opapp-status", "sendOpAppInstallStatus", &Api::sendOpAppInstallStatus, {"TYPE", "STATUS"},
        "report an operator application's installation"),
    row("dtv-info", "vbStartDtvInfoRequest", &Api::vbStartDtvInfoRequest, {}, "ask for the DTV information"),
};
// clang-format on

}  // namespace

const std::vector<Operation>& operations() {
    return kTable;
}

}  // namespace dvbshell
