// The table of operations, one row each.
#include <algorithm>
#include <cctype>
#include <limits>
#include <type_traits>
#include <utility>

#include "events.h"
#include "operations.h"

namespace dvbshell {

namespace {

using Api = velmora::dtv::DvbAPIInterface;
using TuneByTriplet = void (Api::*)(int, int, int, int, int);
using TuneByDescriptor = void (Api::*)(const std::string&, int, int);

template <typename Argument>
constexpr bool isText = std::is_same_v<std::decay_t<Argument>, std::string>;

/// The name of an argument is the field's, its range that of the C++ type.
template <typename Argument>
Parameter parameter(const message_fields::Field& field) {
    std::string name = field.name;
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char letter) { return std::toupper(letter); });
    if constexpr (isText<Argument>) {
        const bool isBytes = field.form->notation == message_fields::Notation::bytes;
        return {name, isBytes ? Parameter::Kind::hexBytes : Parameter::Kind::text};
    } else {
        using Limits = std::numeric_limits<Argument>;
        const bool isEnumeration = field.form->json == message_fields::JsonType::text;
        return {name, Parameter::Kind::number, static_cast<std::int64_t>(Limits::min()),
                static_cast<std::uint64_t>(Limits::max()),
                isEnumeration ? field.form->names : message_fields::List<message_fields::NamedValue>()};
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

template <typename Result, typename... Arguments, std::size_t... indices>
Outcome call(Api& api, Result (Api::*slot)(Arguments...), [[maybe_unused]] const Values& values,
             std::index_sequence<indices...>) {
    if constexpr (std::is_void_v<Result>) {
        (api.*slot)(argument<Arguments>(values[indices])...);
        return {};
    } else {
        return {(api.*slot)(argument<Arguments>(values[indices])...), {}, {}};
    }
}

/// The row of an operation that takes the typed arguments and returns its result without conversion.
template <typename Result, typename... Arguments, std::size_t... indices>
Operation plainRow(const char* name, const char* slotName, Result (Api::*slot)(Arguments...), const char* help,
                   std::index_sequence<indices...> all) {
    [[maybe_unused]] const std::vector<const message_fields::Field*> fields =
        message_fields::parametersOf(slotName, sizeof...(Arguments));
    return {name,
            slotName,
            {parameter<Arguments>(*fields.at(indices))...},
            help,
            [slot, all](Host& host, const Values& values) { return call(host.api, slot, values, all); }};
}
template <typename Result, typename... Arguments>
Operation row(const char* name, const char* slotName, Result (Api::*slot)(Arguments...), const char* help) {
    return plainRow(name, slotName, slot, help, std::index_sequence_for<Arguments...>());
}

Outcome currentChannel(Host& host, const Values&) {
    int onid = -1;
    int tsid = -1;
    int sid = -1;
    const int result = host.api.getCurrentChannelInfo(onid, tsid, sid);
    if (result != 0) {
        return {result, {}, {}};
    }
    return {result, {namedValue("onid", onid), namedValue("tsid", tsid), namedValue("sid", sid)}, {}};
}
Outcome currentCcid(Host& host, const Values&) {
    return {std::nullopt, {namedValue("ccid", host.api.getCurrentCCID())}, {}};
}
Outcome currentDsd(Host& host, const Values&) {
    return {std::nullopt, {namedValue("dsd", host.api.getCurrentDsd())}, {}};
}
Outcome listen(Host& host, const Values&) {
    host.api.addListener(host.listener);
    return {};
}
Outcome unlisten(Host& host, const Values&) {
    host.api.removeListener(host.listener);
    return {};
}
// clang-format off
const std::vector<Operation> kTable = {
    {"current", "getCurrentChannelInfo", {}, "the current channel; fails if it is unknown", currentChannel},
    {"ccid", "getCurrentCCID", {}, "the current channel's CCID", currentCcid},
    {"dsd", "getCurrentDsd", {}, "the stored delivery system descriptor, in hexadecimal", currentDsd},
    row("app-failed", "sendApplicationStartedFailed", &Api::sendApplicationStartedFailed,
        "tell that the application could not be started"),
    row("app-started", "sendApplicationStartedSucceeded", &Api::sendApplicationStartedSucceeded,
        "tell that the application runs"),
    row("ait-restart", "triggerAitRestart", &Api::triggerAitRestart, "ask for the AIT again"),
    row("tune-numbers", "tuneToService", static_cast<TuneByTriplet>(&Api::tuneToService),
        "tune by the five numbers of the interface"),
    row("tune-dsd", "tuneToService", static_cast<TuneByDescriptor>(&Api::tuneToService),
        "tune by the bytes of a delivery system descriptor"),
    row("tune-component", "tuneToComponent", &Api::tuneToComponent,
        "present one component (meanings chosen by the reference service)"),
    row("select", "selectComponent", &Api::selectComponent,
        "present components of a type: video, audio or subtitle"),
    row("unselect", "unselectComponent", &Api::unselectComponent, "stop presenting components of a type"),
    row("audio-source", "setAudioSource", &Api::setAudioSource, "change the audio source, and wait for the answer"),
    {"listen", "addListener", {}, "be told of events, as from the start", listen},
    {"unlisten", "removeListener", {}, "be told of no more events", unlisten},
    row("start-notify", "notifyMwhbStart", &Api::notifyMwhbStart, "tell that the browser has started"),
    row("pts", "sendPtsRequest", &Api::sendPtsRequest,
        "ask for the presentation time stamp (the reference service ignores the number)"),
    row("temi-start", "startTemiTimelineRequest", &Api::startTemiTimelineRequest,
        "report a TEMI timeline (meanings chosen by the reference service)"),
    row("temi-stop", "stopTemiTimelineRequest", &Api::stopTemiTimelineRequest, "report no timeline any more"),
    row("osd-start", "startOSDDetection", &Api::startOSDDetection, "report a layer of the on-screen display"),
    row("osd-stop", "stopOSDDetection", &Api::stopOSDDetection, "report the layer no more"),
    row("drm-message", "sendDrmMessage", &Api::sendDrmMessage,
        "send a message to a CA/DRM system (last three meanings chosen by the reference service)"),
    row("ca-connect", "connectCa", &Api::connectCa, "connect to the CA system"),
    row("ca-disconnect", "disconnectCa", &Api::disconnectCa, "disconnect from the CA system"),
    row("opapp-status", "sendOpAppInstallStatus", &Api::sendOpAppInstallStatus,
        "report an operator application's installation"),
    row("dtv-info", "vbStartDtvInfoRequest", &Api::vbStartDtvInfoRequest, "ask for the DTV information"),
};
// clang-format on

}  // namespace

const std::vector<Operation>& operations() {
    return kTable;
}

}  // namespace dvbshell
