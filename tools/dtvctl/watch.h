// Follows what changes in the service.
// Asks for the status once a second and compares: the service keeps nothing for its watchers, and a slow one delays
// nobody. So a change that is undone within a second is not seen.
// Threads: one.
// Blocks:  watch() until the service or the output goes.
// Fails:   watch() as ServiceClient::ask() does.
#pragma once

#include <nlohmann/json.hpp>
#include <vector>

#include "service_client.h"

namespace dtvctl {

/// What is different between two answers to `status`: an object for each change. Its "event" says what it is:
/// presented_service, input, errors, browser_connected, browser_disconnected, or the name of another changed value.
/// Without an earlier answer (null), all there is.
std::vector<nlohmann::json> changesBetween(const nlohmann::json& before, const nlohmann::json& after);

/// A change in words.
std::string changeText(const nlohmann::json& change);

/// Prints a line for each change. Returns when the output cannot be written.
void watch(ServiceClient& client, bool asJson);

}  // namespace dtvctl
