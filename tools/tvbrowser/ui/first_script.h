// The first script of an application's pages: the objects of the broadcast, and what they are told at their start.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "application.h"
#include "set_description.h"

namespace tvbrowser {

/// `key`: of the natives.
std::string firstScript(const RunningApplication& application, const SetDescription& set, const std::string& key);

/// What an event `application` tells the page.
nlohmann::json stateOf(const RunningApplication& application);

}  // namespace tvbrowser
