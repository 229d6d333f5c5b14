// Compares answers.
#include "watch.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>

#include "print_answers.h"
#include "safe_json.h"

namespace dtvctl {

using nlohmann::json;

namespace {

constexpr const char* kErrors[] = {"continuity_errors",   "transport_errors",        "crc_errors",
                                   "incomplete_sections", "skipped_bytes",           "dropped_packets",
                                   "rtp_packets_lost",    "rtp_datagrams_unreadable"};
/// Numbers and lists that are compared as a whole.
constexpr const char* kValues[] = {"filters", "queue_drops", "osd_layers", "ca_slots", "drm_waiting"};

/// The value; null if there is no earlier answer, or it has none.
json valueOf(const json& object, const char* key) {
    return object.is_null() ? json() : object.value(key, json());
}

bool isNothing(const json& value) {
    return value.is_null() || value == 0 || value == json::array();
}

void addBrowsers(const json& before, const json& after, const char* event, std::vector<json>& changes) {
    for (const json& browser : after) {
        if (std::find(before.begin(), before.end(), browser) == before.end()) {
            changes.push_back({{"event", event}, {"browser", browser}});
        }
    }
}

/// The seconds in the reason of an input that gives nothing would be a change every second, so only its state counts,
/// and the reason of a failure.
bool isSameState(const json& before, const json& after) {
    return !before.is_null() && before.at("state") == after.at("state") &&
           before.at("service_count") == after.at("service_count") &&
           (after.at("state") != "failed" || before.at("reason") == after.at("reason"));
}

void addInput(const json& before, const json& after, std::vector<json>& changes) {
    if (!isSameState(before, after)) {
        json change = {{"event", "input"}};
        for (const char* const key : {"input", "source", "state", "reason", "bit_rate", "service_count"}) {
            change[key] = after.at(key);
        }
        changes.push_back(std::move(change));
    }
    json errors = {{"event", "errors"}, {"input", after.at("input")}};
    for (const char* const key : kErrors) {
        const json earlier = valueOf(before, key);
        if (after.at(key) != earlier && !(earlier.is_null() && isNothing(after.at(key)))) {
            errors[key] = after.at(key);
        }
    }
    if (errors.size() > 2) {
        changes.push_back(std::move(errors));
    }
}

std::string timeText() {
    const std::time_t seconds = std::time(nullptr);
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[16];
    std::strftime(text, sizeof text, "%H:%M:%S", &local);
    return text;
}

void print(json change, bool asJson) {
    if (asJson) {
        printJson(std::move(change));
    } else {
        std::printf("%s %s\n", timeText().c_str(), changeText(change).c_str());
    }
}

}  // namespace

std::vector<json> changesBetween(const json& before, const json& after) {
    std::vector<json> changes;
    if (before.is_null() || valueOf(before, "presented_service") != valueOf(after, "presented_service")) {
        json change = {{"event", "presented_service"}};
        if (after.contains("presented_service")) {
            change["presented_service"] = after["presented_service"];
        }
        changes.push_back(std::move(change));
    }
    const json& inputs = after.at("inputs");
    const json earlier = before.is_null() ? json::array() : before.at("inputs");
    for (std::size_t index = 0; index < inputs.size(); ++index) {
        addInput(index < earlier.size() ? earlier[index] : json(), inputs[index], changes);
    }
    const json browsers = before.is_null() ? json::array() : before.at("browsers");
    addBrowsers(browsers, after.at("browsers"), "browser_connected", changes);
    addBrowsers(after.at("browsers"), browsers, "browser_disconnected", changes);
    for (const char* const key : kValues) {
        const json was = valueOf(before, key);
        if (after.at(key) != was && !(was.is_null() && isNothing(after.at(key)))) {
            changes.push_back({{"event", key}, {key, after.at(key)}});
        }
    }
    return changes;
}

std::string changeText(const json& change) {
    const auto event = change.at("event").get<std::string>();
    if (event == "presented_service") {
        return "presented: " + presentedText(change);
    }
    if (event == "input") {
        return inputText(change);
    }
    if (event == "browser_connected" || event == "browser_disconnected") {
        return "browser " + change.at("browser").dump(-1, ' ', true) + event.substr(7).replace(0, 1, " ");
    }
    std::string values;
    for (const auto& value : change.items()) {
        if (value.key() != "event" && value.key() != "input") {
            std::string name = value.key();
            std::replace(name.begin(), name.end(), '_', ' ');
            values += (values.empty() ? "" : ", ") + name + " " + value.value().dump(-1, ' ', true);
        }
    }
    return (change.contains("input") ? "input " + change.at("input").dump(-1, ' ', true) + ": " : std::string()) +
           values;
}

void watch(ServiceClient& client, bool asJson) {
    json before;
    while (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        json after = client.ask({{"command", "status"}});
        for (json& change : changesBetween(before, after)) {
            print(std::move(change), asJson);
        }
        std::fflush(stdout);
        before = std::move(after);
        std::this_thread::sleep_for(std::chrono::seconds(1));  // how often a change is looked for
    }
}

}  // namespace dtvctl
