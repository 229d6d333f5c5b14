// dtvctl: the operator's console of a running dtvserviced.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <nlohmann/json.hpp>
#include <vector>

#include "control_socket.h"
#include "si/printable.h"

namespace {

using nlohmann::json;
using Words = std::vector<std::string>;

constexpr int kUsageError = 2;

constexpr const char* kUsage =
    "usage: dtvctl [--json] COMMAND\n"
    "\n"
    "  channels                  the channel list, by network, transport stream and service\n"
    "  status                    what is presented, who is connected, what the operator has set\n"
    "  statistics                packets and errors of each input, filters, sections that were not read in time\n"
    "  tune ONID:TSID:SID        presents a service\n"
    "  osd LAYER on|off          shows or hides an on-screen display layer\n"
    "  ca insert|remove SLOT     a CA module comes or goes\n"
    "  ca reply SESSION CODE [TEXT]   answers a browser's message to the CA system\n"
    "  engine STATUS             tells browsers the HbbTV engine's status\n"
    "  stop-terminals            tells browsers that all terminals have stopped\n"
    "\n"
    "  --json                    print the service's answer unchanged\n";

[[noreturn]] void endWithUsage(const std::string& error) {
    std::fprintf(stderr, "dtvctl: %s\n%s", error.c_str(), kUsage);
    std::exit(kUsageError);
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

json caRequest(const Words& words) {
    if (words[1] == "reply" && (words.size() == 4 || words.size() == 5)) {
        json request = {
            {"command", "ca-reply"}, {"session", number("SESSION", words[2])}, {"code", number("CODE", words[3])}};
        if (words.size() == 5) {
            request["text"] = words[4];
        }
        return request;
    }
    if ((words[1] == "insert" || words[1] == "remove") && words.size() == 3) {
        return {{"command", "ca-" + words[1]}, {"slot", number("SLOT", words[2])}};
    }
    endWithUsage("ca takes insert SLOT, remove SLOT or reply SESSION CODE [TEXT]");
}

json osdRequest(const Words& words) {
    if (words[2] != "on" && words[2] != "off") {
        endWithUsage("osd: \"" + words[2] + "\" is neither on nor off");
    }
    return {{"command", "osd"}, {"layer", number("LAYER", words[1])}, {"on", words[2] == "on"}};
}

struct Command {
    const char* name;
    std::size_t fewest;  // words after the name
    std::size_t most;
    std::function<json(const Words&)> request;
};

const std::vector<Command>& commands() {
    const auto plain = [](const Words& words) { return json{{"command", words[0]}}; };
    static const std::vector<Command> kCommands = {
        {"channels", 0, 0, plain},
        {"status", 0, 0, plain},
        {"statistics", 0, 0, plain},
        {"stop-terminals", 0, 0, plain},
        {"tune", 1, 1,
         [](const Words& words) {
             return json{{"command", "tune"}, {"triplet", words[1]}};
         }},
        {"osd", 2, 2, osdRequest},
        {"ca", 2, 4, caRequest},
        {"engine", 1, 1, [](const Words& words) {
             return json{{"command", "engine"}, {"status", number("STATUS", words[1])}};
         }}};
    return kCommands;
}

json requestOf(const Words& words) {
    if (words.empty()) {
        endWithUsage("a command is needed");
    }
    for (const Command& command : commands()) {
        if (words[0] == command.name) {
            if (words.size() - 1 < command.fewest || words.size() - 1 > command.most) {
                endWithUsage(words[0] + ": too " + (words.size() - 1 < command.fewest ? "few" : "many") + " arguments");
            }
            return command.request(words);
        }
    }
    endWithUsage("unknown command " + words[0]);
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
    Words words(argv + 1, argv + argc);
    if (std::find(words.begin(), words.end(), "--help") != words.end()) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    const auto option = std::find(words.begin(), words.end(), "--json");
    const bool asJson = option != words.end();
    if (asJson) {
        words.erase(option);
    }
    if (!words.empty() && words[0].compare(0, 2, "--") == 0) {
        endWithUsage("unknown option " + words[0]);
    }
    const json request = requestOf(words);
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
    if (asJson) {
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
