// From the broadcast's JSON to what the application manager takes.
// Threads: any.
// Blocks:  never.
// Fails:   never; what is absent keeps its default.
#pragma once

#include <nlohmann/json.hpp>
#include <vector>

#include "application.h"

namespace tvbrowser {

/// `list`: that of the broadcast's call `applications`.
std::vector<SignalledApplication> signalledApplications(const nlohmann::json& list);

}  // namespace tvbrowser
