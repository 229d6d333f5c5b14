// Asks for the programme guide and lays it out.
#include "epg.h"

#include <cstdio>
#include <thread>

#include "print_answers.h"
#include "text/printable.h"

namespace dtvctl {

using nlohmann::json;

namespace {

/// "2026-01-01 09:00" in UTC.
std::string startText(const json& programme) {
    constexpr std::size_t kMinutes = 16;
    std::string text = programme.value("start_time", std::string("no time"));
    std::replace(text.begin(), text.end(), 'T', ' ');
    text.resize(kMinutes, ' ');
    return text;
}

/// "1:30"
std::string durationText(const json& programme) {
    constexpr unsigned int kMinute = 60;
    const auto minutes = programme.at("duration_seconds").get<unsigned int>() / kMinute;
    char text[24];
    std::snprintf(text, sizeof text, "%2u:%02u", minutes / kMinute, minutes % kMinute);
    return text;
}

}  // namespace

json askForGuide(ServiceClient& client, const json& request, std::chrono::seconds collected) {
    const std::chrono::duration<double> wanted = collected;
    while (true) {
        json answer = client.ask(request);
        const std::chrono::duration<double> soFar(answer.at("collected_seconds").get<double>());
        if (soFar >= wanted) {
            return answer;
        }
        std::this_thread::sleep_for(wanted - soFar);
    }
}

std::string guideText(const json& answer) {
    std::string text;
    for (const json& service : answer.at("services")) {
        text += tripletText(service) + " " + text::printable(service.at("name").get<std::string>()) + "\n";
        for (const json& programme : service.at("programmes")) {
            text += "  " + startText(programme) + "  " + durationText(programme) + "  " +
                    text::printable(programme.at("event_name").get<std::string>()) + "\n";
        }
    }
    return text.empty() ? "no services\n" : text;
}

}  // namespace dtvctl
