// Runs a scenario in the service, and shows its steps.
// Threads: one.
// Blocks:  until the scenario has ended.
// Fails:   throws NoService, or Refused with the reason; runScenario() tells whether all steps were done.
#pragma once

#include <chrono>
#include <string>

#include "service_client.h"

namespace dtvctl {

/// A service that a scenario freezes answers later.
constexpr std::chrono::seconds kPatienceForScenarios{90};

/// The text of a scenario's file. Throws Refused if it cannot be read.
std::string scenarioText(const std::string& path);
/// Shows each step when it has been carried out. SIGINT and SIGTERM end the scenario. False if a step failed, or the
/// scenario was ended before its time.
bool runScenario(ServiceClient& client, const std::string& path, const std::string& text, bool asJson);

}  // namespace dtvctl
