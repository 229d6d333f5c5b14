// dtvctl: the operator's console of a running dtvserviced.
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <vector>

#include "command_line.h"
#include "command_line/arguments.h"
#include "command_line/output.h"
#include "command_line/standard_descriptors.h"
#include "epg.h"
#include "print_answers.h"
#include "run_scenario.h"
#include "safe_json.h"
#include "service_client.h"
#include "si/triplet.h"
#include "text/printable.h"
#include "watch.h"

namespace {

using nlohmann::json;
using Words = std::vector<std::string>;

[[noreturn]] void endWithUsage(const std::string& error) {
    command_line::endWithUsageError(dtvctl::commandLine(), error);
}

template <typename Number>
bool isAll(const std::string& word, Number& value) {
    const bool isHexadecimal = word.compare(0, 2, "0x") == 0;
    const char* const begin = word.data() + (isHexadecimal ? 2 : 0);
    const auto [end, failure] = std::from_chars(begin, word.data() + word.size(), value, isHexadecimal ? 16 : 10);
    return failure == std::errc() && end == word.data() + word.size();
}

/// Any signed or unsigned number of 64 bits, hexadecimal after 0x. The service checks the range.
json number(const std::string& name, const std::string& word) {
    std::uint64_t natural = 0;
    std::int64_t negative = 0;
    if (isAll(word, natural)) {
        return natural;
    }
    if (isAll(word, negative)) {
        return negative;
    }
    endWithUsage(name + ": \"" + word + "\" is not a number");
}

json tuneRequest(const Words& operands) {
    const std::optional<si::Triplet> channel = si::parseTriplet(operands[0]);
    if (!channel) {
        endWithUsage("tune: \"" + operands[0] + "\" is not ONID:TSID:SID, each from 0 to 65535");
    }
    return {{"command", "tune"}, {"onid", channel->onid}, {"tsid", channel->tsid}, {"sid", channel->sid}};
}

json osdRequest(const Words& operands) {
    if (operands[1] != "on" && operands[1] != "off") {
        endWithUsage("osd: \"" + operands[1] + "\" is neither on nor off");
    }
    return {{"command", "osd"}, {"layer", number("LAYER", operands[0])}, {"on", operands[1] == "on"}};
}

json caReplyRequest(const Words& operands) {
    json request = {{"command", "ca-reply"},
                    {"ca_session", number("CA_SESSION", operands[0])},
                    {"code", number("CODE", operands[1])}};
    if (operands.size() == 3) {
        request["message"] = operands[2];
    }
    return request;
}

json streamEventRequest(const Words& operands) {
    json request = {{"command", "stream-event"}, {"event_id", number("EVENT_ID", operands[0])}};
    if (operands.size() == 2) {
        request["data"] = operands[1];
    }
    return request;
}

/// The request of a command: its name, unless it is one of these.
json requestOf(const command_line::Verb& verb, const Words& operands) {
    static const std::map<std::string, std::function<json(const Words&)>> kRequests = {
        {"tune", tuneRequest},
        {"osd", osdRequest},
        {"ca insert",
         [](const Words& words) {
             return json{{"command", "ca-insert"}, {"slot", number("SLOT", words[0])}};
         }},
        {"ca remove",
         [](const Words& words) {
             return json{{"command", "ca-remove"}, {"slot", number("SLOT", words[0])}};
         }},
        {"ca reply", caReplyRequest},
        {"stop-scenario",
         [](const Words&) {
             return json{{"command", "scenario-stop"}};
         }},
        {"stream-event", streamEventRequest},
        {"engine", [](const Words& words) {
             return json{{"command", "engine"}, {"engine_status", number("ENGINE_STATUS", words[0])}};
         }}};
    const auto found = kRequests.find(verb.name);
    return found == kRequests.end() ? json{{"command", verb.name}} : found->second(operands);
}

void print(const json& answer, const std::string& command) {
    const std::string text = command == "channels"     ? dtvctl::channelsText(answer)
                             : command == "status"     ? dtvctl::statusText(answer)
                             : command == "statistics" ? dtvctl::statisticsText(answer)
                                                       : dtvctl::valuesText(answer);
    std::fputs(text.c_str(), stdout);
}

/// What the options of the command epg say.
struct Guide {
    bool asXmltv = false;
    std::chrono::seconds collected{0};
};

Guide guideOf(const command_line::Arguments& arguments) {
    constexpr std::uint64_t kLongest = 600;
    if (arguments.has("xmltv") && arguments.has("json")) {
        endWithUsage("epg: one of --json and --xmltv, not both");
    }
    const std::uint64_t seconds = command_line::numberOrEnd(dtvctl::commandLine(), "--seconds",
                                                            arguments.value("seconds").value_or("10"), 0, kLongest);
    return {arguments.has("xmltv"), std::chrono::seconds(seconds)};
}

/// The answer. A refusal is printed too.
json askForJson(dtvctl::ServiceClient& client, const json& request) {
    try {
        return client.ask(request);
    } catch (const dtvctl::Refused& error) {
        dtvctl::printJson({{"ok", false}, {"error", error.what()}});
        throw;
    }
}

/// The programmes as XMLTV, JSON or text.
void runEpg(dtvctl::ServiceClient& client, const command_line::Arguments& arguments, const Guide& guide) {
    const json request = {{"command", "epg"}, {"format", guide.asXmltv ? "xmltv" : "json"}};
    const json answer = dtvctl::askForGuide(client, request, guide.collected);
    if (guide.asXmltv) {
        std::fputs(answer.at("xmltv").get<std::string>().c_str(), stdout);
    } else if (arguments.has("json")) {
        dtvctl::printJson(answer);
    } else {
        std::fputs(dtvctl::guideText(answer).c_str(), stdout);
    }
}

/// Runs the scenario in a file; the exit code.
int runFile(const std::string& path, bool asJson) {
    const std::string text = dtvctl::scenarioText(path);
    dtvctl::ServiceClient client(control::defaultSocketPath(), dtvctl::kPatienceForScenarios);
    try {
        return dtvctl::runScenario(client, path, text, asJson) ? 0 : 1;
    } catch (const dtvctl::Refused& error) {
        if (asJson) {
            dtvctl::printJson({{"ok", false}, {"error", error.what()}});
        }
        throw;
    }
}

int run(int argc, char** argv) {
    const command_line::Arguments arguments = command_line::parseOrEnd(dtvctl::commandLine(), argc, argv);
    if (arguments.verb == nullptr) {
        endWithUsage("a command is needed");
    }
    const bool asJson = arguments.has("json");
    if (arguments.verb->name == "run") {
        return runFile(arguments.operands[0], asJson);
    }
    // A wrong argument is told also when no service runs.
    const json request = requestOf(*arguments.verb, arguments.operands);
    const Guide guide = guideOf(arguments);
    dtvctl::ServiceClient client(control::defaultSocketPath());
    if (arguments.verb->name == "watch") {
        dtvctl::watch(client, asJson);
        return 0;
    }
    if (arguments.verb->name == "epg") {
        runEpg(client, arguments, guide);
        return 0;
    }
    if (asJson) {
        dtvctl::printJson(askForJson(client, request));
    } else {
        print(client.ask(request), arguments.verb->name);
    }
    return 0;
}

int fail(const std::exception& error, int code) {
    std::fflush(stdout);
    std::fprintf(stderr, "dtvctl: %s\n", text::printable(error.what()).c_str());
    return code;
}

}  // namespace

int main(int argc, char** argv) {
    constexpr int kRefused = 1;
    constexpr int kNoService = 3;
    command_line::keepStandardDescriptors();
    command_line::checkOutputAtExit("dtvctl");
    try {
        return run(argc, argv);
    } catch (const dtvctl::NoService& error) {
        return fail(error, kNoService);
    } catch (const std::exception& error) {
        return fail(error, kRefused);
    }
}
