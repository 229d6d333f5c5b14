// A broadcast with a schedule, and the programme guide that it must give.
#pragma once

#include <nlohmann/json.hpp>

#include "broadcasts.h"
#include "si/calendar.h"

/// The sample with a schedule of more than a day.
inline tsmake::Multiplex scheduledBroadcast() {
    constexpr unsigned int kHour = 3600;
    constexpr std::uint16_t kMany = 30;
    tsmake::Multiplex multiplex = kSample;
    for (tsmake::Service& service : multiplex.services) {
        service.hasSchedule = true;
        for (std::uint16_t number = 1; number <= kMany; ++number) {
            const std::string text = std::to_string(service.serviceId) + "/" + std::to_string(number);
            service.events.push_back({number, "Later <" + text + ">", "About " + text, kHour});
        }
    }
    return multiplex;
}

/// Triplet, event_id, start and duration of each programme, in order.
inline std::vector<std::string> guideOf(const tsmake::Multiplex& multiplex) {
    std::vector<std::string> lines;
    for (const tsmake::Service& service : multiplex.services) {
        si::UtcSeconds start = multiplex.start;
        for (const tsmake::Event& event : service.events) {
            lines.push_back("1:1025:" + std::to_string(service.serviceId) + " " + std::to_string(event.eventId) + " " +
                            si::dateText(start) + "T" + si::clockText(start) + "Z " + std::to_string(event.duration));
            start += event.duration;
        }
    }
    return lines;
}

inline std::vector<std::string> guideOf(const nlohmann::json& services) {
    std::vector<std::string> lines;
    for (const nlohmann::json& service : services) {
        for (const nlohmann::json& programme : service.at("programmes")) {
            lines.push_back(service.at("onid").dump() + ":" + service.at("tsid").dump() + ":" +
                            service.at("sid").dump() + " " + programme.at("event_id").dump() + " " +
                            programme.at("start_time").get<std::string>() + " " +
                            programme.at("duration_seconds").dump());
        }
    }
    return lines;
}
