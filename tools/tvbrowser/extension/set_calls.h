// Which calls of a page are for the set, and what they return before the set has acted.
// Threads: the broadcast's loop thread.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "broadcast.h"

namespace tvbrowser {

/// The set is told of each tune, because a tune may make an application broadcast-related.
constexpr const char* kTuneCall = "tune";
bool isTune(const std::string& name);

bool isCallOfTheSet(const std::string& name);
/// False for createApplication with the URL of an application that the presented service does not signal.
bool mayCall(const std::string& name, const nlohmann::json& argument, Broadcast& broadcast);
/// The result in the page.
nlohmann::json answerOf(const std::string& name, const nlohmann::json& argument);

}  // namespace tvbrowser
