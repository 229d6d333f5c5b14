// Which calls of a page are for the set, and what they return before the set has acted: by the rules of the application
// manager, which then acts by them.
// Threads: the broadcast's loop thread.
// Blocks:  never.
// Fails:   an argument of another type throws nlohmann::json::exception.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "broadcast.h"

namespace tvbrowser {

/// The set is told of each tune, because a tune may make an application broadcast-related.
constexpr const char* kTuneCall = "tune";
bool isTune(const std::string& name);

bool isCallOfTheSet(const std::string& name);
/// False for createApplication with a URL by which the set can start nothing.
bool mayCall(const std::string& name, const nlohmann::json& argument, Broadcast& broadcast);
/// The same for createApplication alone. `applications`: the value of the broadcast's call of this name.
bool canStart(const std::string& url, const nlohmann::json& applications);
/// Whether a place is inside of an application's boundary: `{place, url, boundaries}`.
bool isOfApplication(const nlohmann::json& argument);
/// The result in the page.
nlohmann::json answerOf(const std::string& name, const nlohmann::json& argument);

}  // namespace tvbrowser
