// The identifier of the set that pages of an origin see. Without the set's secret nobody can tell that identifiers of
// two origins are the same set's.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace tvbrowser {

/// The script's call for it. Its argument: {origin}.
constexpr const char* kDeviceIdCall = "deviceId";

/// 64 hexadecimal digits.
std::string deviceId(const std::string& secret, const nlohmann::json& argument);

}  // namespace tvbrowser
