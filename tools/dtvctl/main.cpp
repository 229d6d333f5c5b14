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
#include "control_socket.h"
#include "si/printable.h"

namespace {

using nlohmann::json;
using Words = std::vector<std::string>;

[[noreturn]] void endWithUsage(const std::string& error) {
    command_line::endWithUsageError(dtvctl::commandLine(), error);
}

template <typename Number>
bool isAll(const std::string& word, Number& value) {
    const auto [end, failure] = std::from_chars(word.data(), word.data() + word.size(), value);
    return failure == std::errc() && end == word.data() + word.size();
}

/// Any signed or unsigned number of 64 bits. The service checks the range.
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

json osdRequest(const Words& operands) {
    if (operands[1] != "on" && operands[1] != "off") {
        endWithUsage("osd: \"" + operands[1] + "\" is neither on nor off");
    }
    return {{"command", "osd"}, {"layer", number("LAYER", operands[0])}, {"on", operands[1] == "on"}};
}

json caReplyRequest(const Words& operands) {
    json request = {
        {"command", "ca-reply"}, {"session", number("SESSION", operands[0])}, {"code", number("CODE", operands[1])}};
    if (operands.size() == 3) {
        request["text"] = operands[2];
    }
    return request;
}

/// The request of a command: its name, unless it is one of these.
json requestOf(const command_line::Verb& verb, const Words& operands) {
    static const std::map<std::string, std::function<json(const Words&)>> kRequests = {
        {"tune",
         [](const Words& words) {
             return json{{"command", "tune"}, {"triplet", words[0]}};
         }},
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
        {"engine", [](const Words& words) {
             return json{{"command", "engine"}, {"status", number("STATUS", words[0])}};
         }}};
    const auto found = kRequests.find(verb.name);
    return found == kRequests.end() ? json{{"command", verb.name}} : found->second(operands);
}

void printChannels(const json& channels) {
    for (const json& channel : channels) {
        const std::string triplet = channel["onid"].dump() + ":" + channel["tsid"].dump() + ":" + channel["sid"].dump();
        const std::string input = channel["input"].is_null() ? "no input" : "input " + channel["input"].dump();
        std::printf("%s %-20s  %s  %-5s  %-8s  %s\n", channel["presented"].get<bool>() ? "*" : " ", triplet.c_str(),
                    input.c_str(), channel["pmt"].get<bool>() ? "pmt" : "nopmt",
                    channel["hbbtv"].get<bool>() ? "hbbtv" : "no-hbbtv",
                    si::printable(channel["name"].get<std::string>()).c_str());
    }
}

/// Prints every other answer: one line for each value, and for each object of a list.
void printValues(const json& answer) {
    for (const auto& value : answer.items()) {
        if (value.key() == "ok") {
            continue;
        }
        const bool objects = value.value().is_array() && !value.value().empty() && value.value()[0].is_object();
        if (!objects) {
            const std::string text =
                value.value().is_string() ? value.value().get<std::string>() : value.value().dump(-1, ' ', true);
            std::printf("%-12s %s\n", value.key().c_str(), si::printable(text).c_str());
            continue;
        }
        for (const json& object : value.value()) {
            std::printf("%-12s", value.key().c_str());
            for (const auto& field : object.items()) {
                std::printf(" %s %s", field.key().c_str(), field.value().dump(-1, ' ', true).c_str());
            }
            std::printf("\n");
        }
    }
}

int run(int argc, char** argv) {
    const command_line::Arguments arguments = command_line::parseOrEnd(dtvctl::commandLine(), argc, argv);
    if (arguments.verb == nullptr) {
        endWithUsage("a command is needed");
    }
    const json request = requestOf(*arguments.verb, arguments.operands);
    std::string error;
    control::Connection connection = control::Connection::connectTo(control::defaultSocketPath(), error);
    if (!connection) {
        std::fprintf(stderr, "dtvctl: %s\n", error.c_str());
        return 1;
    }
    std::optional<std::string> line;
    if (connection.sendLine(request.dump(-1, ' ', false, json::error_handler_t::replace))) {
        line = connection.receiveLine();
    }
    const json answer = line ? json::parse(*line, nullptr, false) : json();
    if (!answer.is_object() || !answer.contains("ok")) {
        std::fprintf(stderr, "dtvctl: the service gave no answer\n");
        return 1;
    }
    if (!answer["ok"].get<bool>()) {
        std::fprintf(stderr, "dtvctl: %s\n", si::printable(answer.value("error", "refused")).c_str());
        return 1;
    }
    if (arguments.has("json")) {
        std::printf("%s\n", line->c_str());
    } else if (answer.contains("channels")) {
        printChannels(answer["channels"]);
    } else {
        printValues(answer);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "dtvctl: %s\n", error.what());
        return 1;
    }
}
