// Answers of the service as text for people. All texts of the answer are made printable.
// Threads: any.
// Blocks:  never.
// Fails:   throws nlohmann::json::exception if the answer lacks a value.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace dtvctl {

/// The answer to `channels`. If there is no service, the state of each input instead.
std::string channelsText(const nlohmann::json& answer);
/// The answer to `status`.
std::string statusText(const nlohmann::json& answer);
/// The answer to `statistics`: for each input its sums, and a line for each PID.
std::string statisticsText(const nlohmann::json& answer);
/// Any other answer: one line for each value.
std::string valuesText(const nlohmann::json& answer);

/// "onid:tsid:sid" of a service.
std::string tripletText(const nlohmann::json& service);
/// The triplet and the name of a service.
std::string serviceText(const nlohmann::json& service);
/// The presented service of an answer or a change, or "none".
std::string presentedText(const nlohmann::json& object);
/// "input 1 (FILE): playing, 4.98 Mbit/s, 4 services"
std::string inputText(const nlohmann::json& input);

}  // namespace dtvctl
