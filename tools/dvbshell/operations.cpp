// The table of operations, and reading their arguments.
#include "operations.h"

#include <charconv>
#include <limits>

#include "hex.h"

namespace dvbshell {

namespace {

using velmora::dtv::DvbAPIInterface;

constexpr std::uint64_t kMostInt = std::numeric_limits<int>::max();
constexpr std::int64_t kLeastInt = std::numeric_limits<int>::min();
constexpr std::uint64_t kMost16 = 0xFFFF;
constexpr std::uint64_t kMost32 = 0xFFFFFFFF;
constexpr std::uint64_t kMost64 = std::numeric_limits<std::uint64_t>::max();

Parameter integer(const char* name) {
    return {name, Parameter::Kind::number, kLeastInt, kMostInt};
}
Parameter u16(const char* name) {
    return {name, Parameter::Kind::number, 0, kMost16};
}
Parameter u32(const char* name) {
    return {name, Parameter::Kind::number, 0, kMost32};
}
Parameter u64(const char* name) {
    return {name, Parameter::Kind::number, 0, kMost64};
}
Parameter text(const char* name) {
    return {name, Parameter::Kind::text};
}
Parameter hexBytes(const char* name) {
    return {name, Parameter::Kind::hexBytes};
}

Outcome done() {
    return {};
}
Outcome gave(int result) {
    return {result, std::nullopt};
}
Outcome gave(std::string result) {
    return {std::nullopt, std::move(result)};
}

Outcome currentChannel(DvbAPIInterface& api) {
    int onid = -1;
    int tsid = -1;
    int sid = -1;
    const int result = api.getCurrentChannelInfo(onid, tsid, sid);
    const std::string triplet = std::to_string(onid) + ":" + std::to_string(tsid) + ":" + std::to_string(sid);
    return {result, result == 0 ? triplet : std::string("unknown")};
}

std::vector<Operation> makeOperations() {
    return {
        {"current",
         "getCurrentChannelInfo",
         {},
         "the current channel as numbers",
         [](Host& host, const Values&) { return currentChannel(host.api); }},
        {"ccid",
         "getCurrentCCID",
         {},
         "the current channel's CCID",
         [](Host& host, const Values&) { return gave(host.api.getCurrentCCID()); }},
        {"dsd",
         "getCurrentDsd",
         {},
         "the stored delivery system descriptor, in hexadecimal",
         [](Host& host, const Values&) { return gave(hexOf(host.api.getCurrentDsd())); }},
        {"app-failed",
         "sendApplicationStartedFailed",
         {},
         "tell that the application could not be started",
         [](Host& host, const Values&) { return gave(host.api.sendApplicationStartedFailed()); }},
        {"app-started",
         "sendApplicationStartedSucceeded",
         {},
         "tell that the application runs",
         [](Host& host, const Values&) { return gave(host.api.sendApplicationStartedSucceeded()); }},
        {"ait-restart",
         "triggerAitRestart",
         {},
         "ask for the AIT again",
         [](Host& host, const Values&) { return host.api.triggerAitRestart(), done(); }},
        {"tune-numbers",
         "tuneToService",
         {integer("ID_TYPE"), integer("ONID"), integer("TSID"), integer("SID"), integer("FLAGS")},
         "tune by the five integers of the interface",
         [](Host& host, const Values& v) {
             return host.api.tuneToService(v[0].asInt(), v[1].asInt(), v[2].asInt(), v[3].asInt(), v[4].asInt()),
                    done();
         }},
        {"tune-dsd",
         "tuneToService",
         {hexBytes("DSD"), integer("SID"), integer("FLAGS")},
         "tune by the bytes of a delivery system descriptor",
         [](Host& host, const Values& v) {
             return host.api.tuneToService(v[0].text, v[1].asInt(), v[2].asInt()), done();
         }},
        {"tune-component",
         "tuneToComponent",
         {integer("FIRST"), integer("SECOND"), integer("THIRD")},
         "present one component",
         [](Host& host, const Values& v) {
             return host.api.tuneToComponent(v[0].asInt(), v[1].asInt(), v[2].asInt()), done();
         }},
        {"select",
         "selectComponent",
         {integer("TYPE")},
         "present components of a type: 0 video, 1 audio, 2 subtitle",
         [](Host& host, const Values& v) { return host.api.selectComponent(v[0].asInt()), done(); }},
        {"unselect",
         "unselectComponent",
         {integer("TYPE")},
         "stop presenting components of a type",
         [](Host& host, const Values& v) { return host.api.unselectComponent(v[0].asInt()), done(); }},
        {"audio-source",
         "setAudioSource",
         {text("SOURCE")},
         "change the audio source, and wait for the answer",
         [](Host& host, const Values& v) { return gave(host.api.setAudioSource(v[0].text)); }},
        {"listen",
         "addListener",
         {},
         "be told of events, as from the start",
         [](Host& host, const Values&) { return host.api.addListener(host.listener), done(); }},
        {"unlisten",
         "removeListener",
         {},
         "be told of no more events",
         [](Host& host, const Values&) { return host.api.removeListener(host.listener), done(); }},
        {"start-notify",
         "notifyMwhbStart",
         {},
         "tell that the browser has started",
         [](Host& host, const Values&) { return host.api.notifyMwhbStart(), done(); }},
        {"pts",
         "sendPtsRequest",
         {u32("REQUEST")},
         "ask for the presentation time stamp",
         [](Host& host, const Values& v) { return gave(host.api.sendPtsRequest(v[0].asU32())); }},
        {"temi-start",
         "startTemiTimelineRequest",
         {u32("FIRST"), u32("SECOND"), u32("THIRD")},
         "report a TEMI timeline",
         [](Host& host, const Values& v) {
             return gave(host.api.startTemiTimelineRequest(v[0].asU32(), v[1].asU32(), v[2].asU32()));
         }},
        {"temi-stop",
         "stopTemiTimelineRequest",
         {},
         "report no timeline any more",
         [](Host& host, const Values&) { return gave(host.api.stopTemiTimelineRequest()); }},
        {"osd-start",
         "startOSDDetection",
         {u32("LAYER")},
         "report a layer of the on-screen display",
         [](Host& host, const Values& v) { return gave(host.api.startOSDDetection(v[0].asU32())); }},
        {"osd-stop",
         "stopOSDDetection",
         {u32("LAYER")},
         "report the layer no more",
         [](Host& host, const Values& v) { return gave(host.api.stopOSDDetection(v[0].asU32())); }},
        {"drm-message",
         "sendDrmMessage",
         {u64("SESSION"), u16("CA_SYSTEM"), u16("SECOND"), text("FIRST_TEXT"), text("SECOND_TEXT")},
         "send a message to a CA/DRM system",
         [](Host& host, const Values& v) {
             return gave(host.api.sendDrmMessage(v[0].number, v[1].asU16(), v[2].asU16(), v[3].text, v[4].text));
         }},
        {"ca-connect",
         "connectCa",
         {u64("SESSION")},
         "connect to the CA system",
         [](Host& host, const Values& v) { return gave(host.api.connectCa(v[0].number)); }},
        {"ca-disconnect",
         "disconnectCa",
         {u16("SLOT")},
         "disconnect from the CA system",
         [](Host& host, const Values& v) { return gave(host.api.disconnectCa(v[0].asU16())); }},
        {"opapp-status",
         "sendOpAppInstallStatus",
         {integer("TYPE"), integer("STATUS")},
         "report an operator application's installation",
         [](Host& host, const Values& v) { return gave(host.api.sendOpAppInstallStatus(v[0].asInt(), v[1].asInt())); }},
        {"dtv-info",
         "vbStartDtvInfoRequest",
         {},
         "ask for the DTV information",
         [](Host& host, const Values&) { return host.api.vbStartDtvInfoRequest(), done(); }},
    };
}

template <typename Number>
bool parseWhole(const std::string& word, Number& number) {
    const bool hexadecimal = word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X');
    const char* const begin = word.data() + (hexadecimal ? 2 : 0);
    const char* const end = word.data() + word.size();
    const auto read = std::from_chars(begin, end, number, hexadecimal ? 16 : 10);
    return read.ec == std::errc() && read.ptr == end;
}

bool parseNumber(const Parameter& parameter, const std::string& word, std::uint64_t& number) {
    if (!word.empty() && word[0] == '-') {
        std::int64_t negative = 0;
        const bool good = parseWhole(word, negative) && negative >= parameter.least;
        number = static_cast<std::uint64_t>(negative);
        return good;
    }
    return parseWhole(word, number) && number <= parameter.most;
}

std::string allowed(const Parameter& parameter) {
    switch (parameter.kind) {
        case Parameter::Kind::number:
            return "a number from " + std::to_string(parameter.least) + " to " + std::to_string(parameter.most);
        case Parameter::Kind::hexBytes:
            return "bytes in hexadecimal";
        default:
            return "a text";
    }
}

bool parseValue(const Parameter& parameter, const std::string& word, Value& value) {
    switch (parameter.kind) {
        case Parameter::Kind::number:
            return parseNumber(parameter, word, value.number);
        case Parameter::Kind::hexBytes:
            return parseHex(word, value.text);
        default:
            value.text = word;
            return true;
    }
}

}  // namespace

const std::vector<Operation>& operations() {
    static const std::vector<Operation> table = makeOperations();
    return table;
}

const Operation* findOperation(const std::string& name) {
    for (const Operation& operation : operations()) {
        if (name == operation.name) {
            return &operation;
        }
    }
    return nullptr;
}

std::string synopsis(const Operation& operation) {
    std::string text = operation.name;
    for (const Parameter& parameter : operation.parameters) {
        text += std::string(" ") + parameter.name;
    }
    return text;
}

bool parseValues(const Operation& operation, const std::vector<std::string>& words, Values& values,
                 std::string& error) {
    if (words.size() != operation.parameters.size()) {
        error = std::string(operation.name) + " takes " + std::to_string(operation.parameters.size()) +
                " arguments: " + synopsis(operation);
        return false;
    }
    for (std::size_t index = 0; index < words.size(); ++index) {
        const Parameter& parameter = operation.parameters[index];
        values.emplace_back();
        if (!parseValue(parameter, words[index], values.back())) {
            error = std::string(operation.name) + ": " + parameter.name + ": \"" + words[index] + "\" is not " +
                    allowed(parameter);
            return false;
        }
    }
    return true;
}

bool parseHex(const std::string& word, std::string& bytes) {
    if (word.size() % 2 != 0) {
        return false;
    }
    for (std::size_t at = 0; at < word.size(); at += 2) {
        unsigned int byte = 0;
        const char* const end = word.data() + at + 2;
        const auto read = std::from_chars(word.data() + at, end, byte, 16);
        if (read.ec != std::errc() || read.ptr != end) {
            return false;
        }
        bytes += static_cast<char>(byte);
    }
    return true;
}

bool splitWords(const std::string& line, std::vector<std::string>& words, std::string& error) {
    std::optional<std::size_t> quote;  // the place of the one that is open
    bool inWord = false;
    words.clear();
    for (std::size_t at = 0; at < line.size(); ++at) {
        const bool blank = line[at] == ' ' || line[at] == '\t';
        if (blank && !quote) {
            inWord = false;
            continue;
        }
        if (!inWord) {
            words.emplace_back();
            inWord = true;
        }
        if (line[at] != '"') {
            words.back() += line[at];
        } else if (quote) {
            quote.reset();
        } else {
            quote = at;
        }
    }
    if (quote) {
        error = "the double quote at character " + std::to_string(*quote + 1) + " is not closed";
    }
    return !quote;
}

}  // namespace dvbshell
