// Lays out the answers.
#include "print_answers.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "text/printable.h"

namespace dtvctl {

using nlohmann::json;

namespace {

/// A text as it is, any other value as JSON.
std::string shown(const json& value) {
    return value.is_string() ? text::printable(value.get<std::string>()) : value.dump(-1, ' ', true);
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string row(const std::string& name, const std::string& value) {
    constexpr std::size_t kNames = 13;
    return padded(name, kNames) + value + "\n";
}

/// The members of a list in one line.
std::string listText(const json& list) {
    std::string text;
    for (const json& value : list) {
        text += (text.empty() ? "" : ", ") + shown(value);
    }
    return text.empty() ? "none" : text;
}

/// A CA system's number in hexadecimal, any other value as it is.
std::string caSystemText(const json& system) {
    if (!system.is_number_unsigned()) {
        return shown(system);
    }
    char text[24];
    std::snprintf(text, sizeof text, "0x%04llX", system.get<unsigned long long>());
    return text;
}

std::string messageText(const json& message) {
    return "browser " + shown(message.at("browser")) + ", session " + shown(message.at("ca_session")) + ", CA system " +
           caSystemText(message.at("ca_system_id")) + ", " + shown(message.at("message_type")) + ", " +
           shown(message.at("length")) + " bytes: \"" + shown(message.at("message")) + "\"";
}

/// "browser 1, 28106:32, PID 320, version 2 in PATH"
std::string mountText(const json& mount) {
    std::string text = "browser " + shown(mount.at("browser")) + ", " + shown(mount.at("sid"));
    text += mount.contains("component_tag") ? ":" + shown(mount.at("component_tag")) : "";
    text += mount.contains("pid") ? ", PID " + shown(mount.at("pid")) : "";
    text += mount.contains("path") ? ", version " + shown(mount.at("versions")) + " in " + shown(mount.at("path"))
                                   : ", incomplete";
    if (mount.contains("modules") && mount.at("modules") != mount.at("modules_arrived")) {
        text += ", " + shown(mount.at("modules_arrived")) + " of " + shown(mount.at("modules")) + " modules of the " +
                (mount.contains("path") ? "next one" : "first one");
    }
    return text;
}

}  // namespace

std::string tripletText(const json& service) {
    return shown(service.at("onid")) + ":" + shown(service.at("tsid")) + ":" + shown(service.at("sid"));
}

std::string serviceText(const json& service) {
    const std::string name = shown(service.at("name"));
    return tripletText(service) + (name.empty() ? "" : " " + name);
}

std::string presentedText(const json& object) {
    const auto service = object.find("presented_service");
    return service == object.end() ? "none" : serviceText(*service);
}

std::string inputText(const json& input) {
    std::string text =
        "input " + shown(input.at("input")) + " (" + shown(input.at("source")) + "): " + shown(input.at("reason"));
    if (input.at("bit_rate") != 0) {
        char rate[32];
        std::snprintf(rate, sizeof rate, ", %.2f Mbit/s", input.at("bit_rate").get<double>() / 1e6);
        text += rate;
    }
    if (input.at("service_count") != 0) {
        text += ", " + shown(input.at("service_count")) + (input.at("service_count") == 1 ? " service" : " services");
    }
    return text;
}

std::string channelsText(const json& answer) {
    std::string text;
    for (const json& channel : answer.at("channels")) {
        text += (channel.at("presented").get<bool>() ? "* " : "  ") + padded(tripletText(channel), 20) + "  " +
                (channel.contains("input") ? "input " + shown(channel.at("input")) : "no input") + "  " +
                (channel.at("pmt").get<bool>() ? "pmt  " : "nopmt") + "  " +
                (channel.at("hbbtv").get<bool>() ? "hbbtv   " : "no-hbbtv") + "  " + shown(channel.at("name")) + "\n";
    }
    if (text.empty()) {
        text = "no services\n";
        for (const json& input : answer.at("inputs")) {
            text += "  " + inputText(input) + "\n";
        }
    }
    return text;
}

namespace {

std::string replayText(const json& replay) {
    std::string text = row("replay of", text::printable(replay.at("file").get<std::string>()));
    for (const json& browser : replay.at("replayed_browsers")) {
        text += "  browser " + shown(browser.at("browser")) + ": " + shown(browser.at("replayed_records")) + " of " +
                shown(browser.at("records")) + " records of recorded browser " + shown(browser.at("recorded_browser")) +
                "\n";
    }
    return text;
}

}  // namespace

std::string statusText(const json& answer) {
    if (answer.contains("replay")) {
        return replayText(answer.at("replay")) + row("browsers", listText(answer.at("browsers"))) +
               row("queue drops", shown(answer.at("queue_drops")));
    }
    std::string text = row("presented", presentedText(answer));
    text += row("browsers", listText(answer.at("browsers")));
    text += row("filters", shown(answer.at("filters")));
    text += row("queue drops", shown(answer.at("queue_drops")));
    if (answer.contains("stream_readers") && answer.contains("stream_drops")) {
        text += row("stream", shown(answer.at("stream_readers")) + " readers, " + shown(answer.at("stream_drops")) +
                                  " packets dropped");
    }
    text += row("carousels", shown(answer.at("mounts").size()));
    for (const json& mount : answer.at("mounts")) {
        text += "  " + mountText(mount) + "\n";
    }
    text += row("OSD layers", listText(answer.at("osd_layers")));
    text += row("CA slots", listText(answer.at("ca_slots")));
    text += row("DRM waiting", shown(answer.at("drm_waiting")));
    for (const json& message : answer.at("drm_messages")) {
        text += "  " + messageText(message) + "\n";
    }
    if (answer.contains("scenario")) {
        text += row("scenario", shown(answer["scenario"]));
    }
    for (const json& input : answer.at("inputs")) {
        text += inputText(input) + "\n";
    }
    return text;
}

std::string valuesText(const json& answer) {
    std::string text;
    for (const auto& value : answer.items()) {
        if (value.key() != "ok") {
            text += row(text::printable(value.key()), shown(value.value()));
        }
    }
    return text;
}

}  // namespace dtvctl
